#pragma once

#include <platform/scene/light.h>

class P_SpotLight : public P_Light
{
public:
    void setFalloffRange(float range) noexcept;
    void setFalloffAngle(float angle, float hotspotAngle) noexcept;
    void setHotspotAngle(float angle) noexcept;
};
