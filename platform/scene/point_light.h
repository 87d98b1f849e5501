#pragma once

#include <platform/export.h>
#include <platform/scene/light.h>

/// Shines from its position in all directions.
class TW2_PLATFORM_API P_PointLight : public P_Light
{
public:
    P_PointLight();
    ~P_PointLight() override;

    [[nodiscard]] Kind getLightKind() const override { return Kind::Point; }
    [[nodiscard]] const char* getObjectType() const override;

    /// Distance at which the light has faded to nothing; unlimited (the largest float) until set.
    void setFalloffRange(float range) noexcept { m_fFalloffRange = range; }
    [[nodiscard]] float getFalloffRange() const noexcept { return m_fFalloffRange; }

private:
    float m_fFalloffRange;
};
