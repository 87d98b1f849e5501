#include <platform/math/math_init.h>

namespace
{
int s_iUsers = 0;
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
