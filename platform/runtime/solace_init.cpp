#include <platform/runtime/counter.h>
#include <platform/runtime/solace_init.h>

#include <cstdio>

namespace
{
S_Counter<int> s_iUsers;
}

S_SolaceInit::S_SolaceInit()
{
    ++s_iUsers;
}

S_SolaceInit::~S_SolaceInit()
{
    if (--s_iUsers == 0)
    {
        // The log may still hold text of objects that were destroyed before this one.
        std::fflush(stdout);
    }
}

int S_SolaceInit::getUserCount() noexcept
{
    return s_iUsers;
}
