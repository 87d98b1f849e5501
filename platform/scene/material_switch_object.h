#pragma once

#include <platform/export.h>

class P_Material;

/// Something to do each time before a material is drawn with. Never deleted by the engine.
class TW2_PLATFORM_API P_MaterialSwitchObject
{
public:
    /// Called before the first primitive is drawn with `material`.
    virtual void switchMaterial(P_Material* material) = 0;

protected:
    P_MaterialSwitchObject() noexcept = default;
    P_MaterialSwitchObject(const P_MaterialSwitchObject&) noexcept = default;
    P_MaterialSwitchObject& operator=(const P_MaterialSwitchObject&) noexcept = default;
    ~P_MaterialSwitchObject() = default;
};
