#include <platform/math/math_init.h>
#include <platform/runtime/counter.h>

namespace
{
S_Counter<int> s_iUsers;
}

M_MathInit::M_MathInit()
{
    ++s_iUsers;
}

M_MathInit::~M_MathInit()
{
    --s_iUsers;
}

int M_MathInit::getUserCount() noexcept
{
    return s_iUsers;
}
