#include <platform/runtime/str.h>
#include <platform/scene/driver.h>
#include <platform/scene/driver_exception.h>

namespace
{
constinit P_Driver s_builtInDriver;

void requireRenderState(unsigned int state)
{
    if (state >= P_Driver::renderStateCount)
    {
        throw P_DriverException(S_STR("there is no render state %u", state));
    }
}
}  // namespace

P_Driver* P_Driver::m_initializedDriver = &s_builtInDriver;

void P_Driver::setRenderState(unsigned int state, unsigned int value)
{
    requireRenderState(state);
    m_renderStates[state] = value;
}

unsigned int P_Driver::getRenderState(unsigned int state) const
{
    requireRenderState(state);
    return m_renderStates[state];
}
