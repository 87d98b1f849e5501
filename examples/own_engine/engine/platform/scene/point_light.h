#pragma once

#include <platform/scene/light.h>

class P_PointLight : public P_Light
{
public:
    void setFalloffRange(float range) noexcept;
};
