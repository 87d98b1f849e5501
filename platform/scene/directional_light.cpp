#include <platform/scene/directional_light.h>

P_DirectionalLight::P_DirectionalLight() = default;
P_DirectionalLight::~P_DirectionalLight() = default;

const char* P_DirectionalLight::getObjectType() const
{
    return "P_DirectionalLight";
}
