#pragma once

#include <platform/scene/driver_caps.h>

class P_Driver
{
public:
    enum RenderState : unsigned int
    {
        RENDER_STATE_SPECULAR_ENABLE = 29
    };
    static P_Driver* m_initializedDriver;

    const P_DriverCaps& getDriverCaps() const noexcept;
    void setRenderState(unsigned int state, unsigned int value);
};
