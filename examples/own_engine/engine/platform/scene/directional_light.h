#pragma once

#include <platform/scene/light.h>

class P_DirectionalLight : public P_Light
{
};
