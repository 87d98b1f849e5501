#include <platform/scene/point_light.h>

#include <limits>

P_PointLight::P_PointLight() : m_fFalloffRange(std::numeric_limits<float>::max()) {}
P_PointLight::~P_PointLight() = default;

const char* P_PointLight::getObjectType() const
{
    return "P_PointLight";
}
