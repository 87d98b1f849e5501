#include <platform/scene/context.h>

namespace
{
P_Context* s_pDefault = nullptr;  // null: the built-in one
P_Context* s_pFirst = nullptr;    // all contexts, linked
}  // namespace

P_Context::P_Context() noexcept : m_pNext(s_pFirst)
{
    if (s_pFirst)
    {
        s_pFirst->m_pPrevious = this;
    }
    s_pFirst = this;
}

P_Context::~P_Context()
{
    (m_pPrevious ? m_pPrevious->m_pNext : s_pFirst) = m_pNext;
    if (m_pNext)
    {
        m_pNext->m_pPrevious = m_pPrevious;
    }
    if (s_pDefault == this)
    {
        s_pDefault = nullptr;
    }
}

void P_Context::setDefault(P_Context* context) noexcept
{
    s_pDefault = context;
}

P_Context* P_Context::getDefault() noexcept
{
    static P_Context s_builtIn;
    return s_pDefault ? s_pDefault : &s_builtIn;
}

void P_Context::addDebugLine(const M_Vector3Template<float>& from, const M_Vector3Template<float>& to,
                             const G_FColor& color)
{
    m_vecDebugLines.push_back({from, to, color});
}

void P_Context::forgetCamera(const P_Camera* camera) noexcept
{
    for (P_Context* context = s_pFirst; context; context = context->m_pNext)
    {
        if (context->m_pCamera == camera)
        {
            context->m_pCamera = nullptr;
        }
    }
}
