#include "tests/support/threads.h"

#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/handle.h>
#include <platform/runtime/memory_scope.h>
#include <platform/runtime/rollback.h>

#include <gtest/gtest.h>

#include <utility>

namespace
{
using support::runOnThreads;

constexpr int threadCount = 4;
constexpr int rounds = 20000;

struct Shared : S_Allocated
{
    explicit Shared(int& deletions) noexcept : m_iDeletions(deletions) {}
    ~Shared() { ++m_iDeletions; }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    int& m_iDeletions;
    S_Counter<int> m_iReferenceCount{1};
};

TEST(Handles, TheLastHolderDeletes)
{
    int deletions = 0;
    const long long before = S_Memory::getLiveCount();
    S_Handle first(new Shared(deletions));
    EXPECT_TRUE(first.isOnlyHolder());
    S_Handle second = first;
    EXPECT_EQ(first->m_iReferenceCount, 2);
    EXPECT_FALSE(first.isOnlyHolder());
    S_Handle<Shared> third;
    EXPECT_FALSE(third);
    EXPECT_FALSE(third.isOnlyHolder()) << "nothing is held";
    third = std::move(second);
    EXPECT_EQ(first->m_iReferenceCount, 2) << "a moved handle is no further holder";
    EXPECT_EQ(third, first);
    S_Handle<Shared>& same = third;
    third = same;
    EXPECT_EQ(first->m_iReferenceCount, 2);
    first = nullptr;
    EXPECT_EQ(deletions, 0);
    EXPECT_TRUE(third.isOnlyHolder());
    third = S_Handle(new Shared(deletions));
    EXPECT_EQ(deletions, 1) << "what a handle held before is let go";
    third = nullptr;
    EXPECT_EQ(deletions, 2);
    EXPECT_EQ(S_Memory::getLiveCount(), before);
}

TEST(Handles, AreCopiedAndDroppedOnSeveralThreadsAtOnce)
{
    int deletions = 0;
    S_Handle shared(new Shared(deletions));
    runOnThreads(threadCount,
                 [shared](unsigned int)
                 {
                     for (int i = 0; i < rounds; ++i)
                     {
                         const S_Handle<Shared> copy = shared;
                         ASSERT_TRUE(copy);
                     }
                 });
    EXPECT_EQ(shared->m_iReferenceCount, 1);
    EXPECT_EQ(deletions, 0);
    shared = nullptr;
    EXPECT_EQ(deletions, 1);
}

TEST(Counters, CountWhatSeveralThreadsCount)
{
    S_Counter<int> up;
    S_Counter<long long> balance(5);
    runOnThreads(threadCount,
                 [&](unsigned int)
                 {
                     for (int i = 0; i < rounds; ++i)
                     {
                         ++up;
                         balance += 3;
                         --balance;
                     }
                 });
    EXPECT_EQ(up, threadCount * rounds);
    EXPECT_EQ(balance, 5 + 2LL * threadCount * rounds);
    EXPECT_EQ(++up, threadCount * rounds + 1) << "counting gives the new value";
    EXPECT_EQ(--up, threadCount * rounds);
    S_Counter<int> copy = up;
    --up;
    EXPECT_EQ(copy, threadCount * rounds) << "a copy counts on its own";
}

TEST(Allocations, OfAllThreadsAreCountedAndBooked)
{
    const char* const name = "scope of several threads";
    const long long made = S_Memory::sm_iNewCount;
    const long long released = S_Memory::sm_iDeleteCount;
    const auto usage = S_MemoryScope::getUsage(name);
    const S_MemoryScope outside("scope of the first thread");
    runOnThreads(threadCount,
                 [name](unsigned int)
                 {
                     EXPECT_EQ(S_MemoryScope::getCurrentName(), nullptr) << "a scope is its thread's own";
                     const S_MemoryScope scope(name);
                     for (int i = 0; i < rounds; ++i)
                     {
                         S_Memory::release(S_Memory::allocate(10));
                     }
                 });
    EXPECT_EQ(S_Memory::sm_iNewCount - made, threadCount * rounds);
    EXPECT_EQ(S_Memory::sm_iDeleteCount - released, threadCount * rounds);
    EXPECT_EQ(S_MemoryScope::getUsage(name).m_iBlocks - usage.m_iBlocks, threadCount * rounds);
    EXPECT_EQ(S_MemoryScope::getUsage(name).m_iBytes - usage.m_iBytes, 10LL * threadCount * rounds);
    EXPECT_STREQ(S_MemoryScope::getCurrentName(), "scope of the first thread");
}

TEST(Allocations, FailExactlyWhenOrdered)
{
    for (const long long ordered : {1, 2, 5})
    {
        S_Memory::failAllocation(ordered);
        const long long made = S_Memory::sm_iNewCount;
        for (long long i = 1; i <= 6; ++i)
        {
            EXPECT_EQ(S_Memory::isFailurePending(), i <= ordered);
            try
            {
                S_Memory::release(S_Memory::allocate(1));
                EXPECT_NE(i, ordered);
            }
            catch (const S_MemoryException_Allocation&)
            {
                EXPECT_EQ(i, ordered);
            }
        }
        EXPECT_EQ(S_Memory::sm_iNewCount - made, 5) << "the one that failed does not count";
    }
    S_Memory::release(nullptr);
    S_Memory::failAllocation(1);
    S_Memory::failAllocation(0);
    EXPECT_NO_THROW(S_Memory::release(S_Memory::allocate(1))) << "the order was taken back";
}

TEST(Rollbacks, TakeBackUnlessKept)
{
    int taken = 0;
    {
        S_Rollback rollback([&taken]() noexcept { ++taken; });
        EXPECT_EQ(taken, 0);
    }
    EXPECT_EQ(taken, 1);
    {
        S_Rollback rollback([&taken]() noexcept { ++taken; });
        rollback.keep();
    }
    EXPECT_EQ(taken, 1);
}
}  // namespace
