#pragma once

#include <platform/export.h>
#include <platform/scene/light.h>

/// Shines everywhere in one direction: along the positive z axis of its own space.
class TW2_PLATFORM_API P_DirectionalLight : public P_Light
{
public:
    P_DirectionalLight();
    ~P_DirectionalLight() override;

    [[nodiscard]] Kind getLightKind() const override { return Kind::Directional; }
    [[nodiscard]] const char* getObjectType() const override;
};
