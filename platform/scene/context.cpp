#include <platform/scene/context.h>

#include <mutex>

namespace
{
std::atomic<P_Context*> s_pDefault = nullptr;  // null: the built-in one
P_Context* s_pFirst = nullptr;                 // all contexts, linked
std::mutex s_list;
}  // namespace

P_Context::P_Context() noexcept
{
    const std::lock_guard lock(s_list);
    m_pNext = s_pFirst;
    if (s_pFirst)
    {
        s_pFirst->m_pPrevious = this;
    }
    s_pFirst = this;
}

P_Context::~P_Context()
{
    const std::lock_guard lock(s_list);
    (m_pPrevious ? m_pPrevious->m_pNext : s_pFirst) = m_pNext;
    if (m_pNext)
    {
        m_pNext->m_pPrevious = m_pPrevious;
    }
    P_Context* self = this;
    s_pDefault.compare_exchange_strong(self, nullptr);
}

void P_Context::setDefault(P_Context* context) noexcept
{
    s_pDefault = context;
}

P_Context* P_Context::getDefault() noexcept
{
    static P_Context s_builtIn;
    P_Context* const context = s_pDefault;
    return context ? context : &s_builtIn;
}

void P_Context::addDebugLine(const M_Vector3Template<float>& from, const M_Vector3Template<float>& to,
                             const G_FColor& color)
{
    m_vecDebugLines.push_back({from, to, color});
}

void P_Context::forgetCamera(P_Camera* camera) noexcept
{
    const std::lock_guard lock(s_list);
    for (P_Context* context = s_pFirst; context; context = context->m_pNext)
    {
        P_Camera* current = camera;
        context->m_pCamera.compare_exchange_strong(current, nullptr);
    }
}
