#pragma once

#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>

#include <gtest/gtest.h>

#include <string>

namespace support
{
/// The message of the S_Exception that `action` throws; a test failure and the empty text when it throws none.
template <typename Action>
std::string messageOf(Action&& action)
{
    try
    {
        action();
    }
    catch (const S_Exception& exception)
    {
        return exception.getErrorMessage();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// What an exception of the class Exception that `action` throws tells people, hints included.
template <typename Exception = S_Exception, typename Action>
std::string complaintOf(Action&& action)
{
    try
    {
        action();
    }
    catch (const Exception& exception)
    {
        return exception.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// Expects of its scope's end that no more is allocated then than now.
class NothingLeft
{
public:
    NothingLeft() = default;
    ~NothingLeft() { EXPECT_EQ(S_Memory::getLiveCount(), m_iLive) << "blocks were left behind"; }
    NothingLeft(const NothingLeft&) = delete;
    NothingLeft& operator=(const NothingLeft&) = delete;

private:
    long long m_iLive = S_Memory::getLiveCount();
};

/// Runs `action` with its first allocation failing, then its second and so on until it succeeds, and checks that each
/// failure arrives as S_MemoryException_Allocation and leaves nothing allocated; `check` looks at what it leaves as it
/// was.
template <typename Action, typename Check>
void expectUnchangedByFailedAllocations(Action&& action, Check&& check)
{
    constexpr long long limit = 100000;
    for (long long n = 1; n < limit; ++n)
    {
        const long long live = S_Memory::getLiveCount();
        bool failed = false;
        S_Memory::failAllocation(n);
        try
        {
            action();
        }
        catch (const S_MemoryException_Allocation&)
        {
            failed = true;
        }
        const bool done = S_Memory::isFailurePending();
        S_Memory::failAllocation(0);
        EXPECT_EQ(failed, !done) << "the failure of allocation " << n << " did not arrive";
        if (done)
        {
            return;
        }
        EXPECT_EQ(S_Memory::getLiveCount(), live) << "blocks were left behind by the failure of allocation " << n;
        check();
        if (testing::Test::HasFailure())
        {
            return;
        }
    }
    ADD_FAILURE() << "more than " << limit << " allocations";
}

/// The same with an action that takes no state from run to run and leaves nothing when it succeeds.
template <typename Action>
void expectNothingLeftByFailedAllocations(Action&& action)
{
    const long long live = S_Memory::getLiveCount();
    expectUnchangedByFailedAllocations(action, [] {});
    EXPECT_EQ(S_Memory::getLiveCount(), live) << "blocks were left behind by the run that succeeded";
}
}  // namespace support
