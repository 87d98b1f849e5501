#include <platform/scene/spot_light.h>

#include <limits>

P_SpotLight::P_SpotLight() : m_fFalloffRange(std::numeric_limits<float>::max()) {}
P_SpotLight::~P_SpotLight() = default;

const char* P_SpotLight::getObjectType() const
{
    return "P_SpotLight";
}

void P_SpotLight::setFalloffAngle(float angle, float hotspotAngle) noexcept
{
    m_fFalloffAngle = angle;
    if (hotspotAngle >= 0.0F)
    {
        m_fHotspotAngle = hotspotAngle;
    }
}
