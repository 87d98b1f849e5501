#include <platform/runtime/counter.h>
#include <platform/runtime/memory_scope.h>

#include <cstring>
#include <mutex>

namespace
{
constexpr std::size_t nameLength = 63;
}

struct S_MemoryScope::Account
{
    char m_aName[nameLength + 1] = {};
    S_Counter<long long> m_iBlocks;
    S_Counter<long long> m_iBytes;

    void setName(const char* name) noexcept { std::memcpy(m_aName, name, strnlen(name, nameLength)); }

    /// The account of the innermost scope of this thread.
    static thread_local Account* sm_pCurrent;
};

thread_local S_MemoryScope::Account* S_MemoryScope::Account::sm_pCurrent = nullptr;

S_MemoryScope::Account* S_MemoryScope::find(const char* name, bool create) noexcept
{
    // Fixed storage: booking must neither allocate nor depend on the order in which static objects are initialised.
    // Accounts never change their names, so those that are counted are looked through without a lock.
    constexpr std::size_t limit = 64;
    static constinit Account s_accounts[limit + 1];
    static constinit S_Counter<std::size_t> s_uCount;
    static std::mutex s_creation;  // made without code where the system can, else by the first that comes

    const auto findFrom = [name](std::size_t& i) -> Account*
    {
        for (const std::size_t count = s_uCount; i < count; ++i)
        {
            if (std::strncmp(s_accounts[i].m_aName, name, nameLength) == 0)
            {
                return &s_accounts[i];
            }
        }
        return nullptr;
    };
    std::size_t searched = 0;
    if (Account* account = findFrom(searched); account || !create)
    {
        return account;
    }
    const std::lock_guard lock(s_creation);
    if (Account* account = findFrom(searched))
    {
        return account;
    }
    if (searched > limit)
    {
        return &s_accounts[limit];
    }
    Account& account = s_accounts[searched];
    account.setName(searched == limit ? "other" : name);
    s_uCount = searched + 1;
    return &account;
}

S_MemoryScope::S_MemoryScope(const char* name) noexcept : m_pPrevious(Account::sm_pCurrent)
{
    Account::sm_pCurrent = find(name, true);
}

S_MemoryScope::~S_MemoryScope()
{
    Account::sm_pCurrent = m_pPrevious;
}

S_MemoryScope::Usage S_MemoryScope::getUsage(const char* name) noexcept
{
    const Account* account = find(name, false);
    return account ? Usage{account->m_iBlocks, account->m_iBytes} : Usage{};
}

const char* S_MemoryScope::getCurrentName() noexcept
{
    return Account::sm_pCurrent ? Account::sm_pCurrent->m_aName : nullptr;
}

void S_MemoryScope::book(std::size_t bytes) noexcept
{
    if (Account* account = Account::sm_pCurrent)
    {
        ++account->m_iBlocks;
        account->m_iBytes += static_cast<long long>(bytes);
    }
}
