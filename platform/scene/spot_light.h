#pragma once

#include <platform/export.h>
#include <platform/scene/light.h>

/// Shines from its position in a cone around the positive z axis of its own space.
class TW2_PLATFORM_API P_SpotLight : public P_Light
{
public:
    P_SpotLight();
    ~P_SpotLight() override;

    [[nodiscard]] Kind getLightKind() const override { return Kind::Spot; }
    [[nodiscard]] const char* getObjectType() const override;

    /// @name Range
    /// @{

    /// Distance at which the light has faded to nothing; unlimited (the largest float) until set.
    void setFalloffRange(float range) noexcept { m_fFalloffRange = range; }
    [[nodiscard]] float getFalloffRange() const noexcept { return m_fFalloffRange; }
    /// @}

    /// @name Cones: whole angles in degrees
    /// @{

    /// The cone outside of which there is no light (45 until set). `hotspotAngle` sets the inner cone as well; a
    /// negative one leaves it.
    void setFalloffAngle(float angle, float hotspotAngle = -1.0F) noexcept;
    [[nodiscard]] float getFalloffAngle() const noexcept { return m_fFalloffAngle; }
    /// The cone inside of which the light has its full strength (43 until set); it fades from there to the fall-off
    /// cone.
    void setHotspotAngle(float angle) noexcept { m_fHotspotAngle = angle; }
    [[nodiscard]] float getHotspotAngle() const noexcept { return m_fHotspotAngle; }
    /// @}

private:
    float m_fFalloffRange;
    float m_fFalloffAngle = 45.0F;
    float m_fHotspotAngle = 43.0F;
};
