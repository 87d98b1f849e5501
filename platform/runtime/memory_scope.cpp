#include <platform/runtime/memory_scope.h>

#include <cstring>

namespace
{
constexpr std::size_t s_nameLength = 63;
}

struct S_MemoryScope::Account
{
    char m_aName[s_nameLength + 1] = {};
    Usage m_usage;

    void setName(const char* name) noexcept { std::memcpy(m_aName, name, strnlen(name, s_nameLength)); }
};

S_MemoryScope::Account* S_MemoryScope::sm_pCurrent = nullptr;

S_MemoryScope::Account* S_MemoryScope::find(const char* name, bool create) noexcept
{
    // Fixed storage: booking must neither allocate nor depend on the order in which static objects are initialised.
    constexpr std::size_t limit = 64;
    static Account s_accounts[limit + 1];
    static std::size_t s_uCount = 0;

    for (std::size_t i = 0; i < s_uCount; ++i)
    {
        if (std::strncmp(s_accounts[i].m_aName, name, s_nameLength) == 0)
        {
            return &s_accounts[i];
        }
    }
    if (!create)
    {
        return nullptr;
    }
    if (s_uCount == limit)
    {
        s_accounts[s_uCount++].setName("other");
    }
    if (s_uCount > limit)
    {
        return &s_accounts[limit];
    }
    s_accounts[s_uCount].setName(name);
    return &s_accounts[s_uCount++];
}

S_MemoryScope::S_MemoryScope(const char* name) noexcept : m_pPrevious(sm_pCurrent)
{
    sm_pCurrent = find(name, true);
}

S_MemoryScope::~S_MemoryScope()
{
    sm_pCurrent = m_pPrevious;
}

S_MemoryScope::Usage S_MemoryScope::getUsage(const char* name) noexcept
{
    const Account* account = find(name, false);
    return account ? account->m_usage : Usage{};
}

const char* S_MemoryScope::getCurrentName() noexcept
{
    return sm_pCurrent ? sm_pCurrent->m_aName : nullptr;
}

void S_MemoryScope::book(std::size_t bytes) noexcept
{
    if (sm_pCurrent)
    {
        ++sm_pCurrent->m_usage.m_iBlocks;
        sm_pCurrent->m_usage.m_iBytes += static_cast<long long>(bytes);
    }
}
