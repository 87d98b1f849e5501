#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/memory_scope.h>

S_Counter<long long> S_Memory::sm_iNewCount;
S_Counter<long long> S_Memory::sm_iDeleteCount;

namespace
{
S_Counter<long long> s_iAllocationsToFailure;  // 0: none ordered
}

void* S_Memory::allocate(std::size_t bytes, std::size_t alignment)
{
    if (s_iAllocationsToFailure > 0 && --s_iAllocationsToFailure == 0)
    {
        throw S_MemoryException_Allocation();
    }
    void* block = alignment > __STDCPP_DEFAULT_NEW_ALIGNMENT__
                      ? ::operator new(bytes, std::align_val_t(alignment), std::nothrow)
                      : ::operator new(bytes, std::nothrow);
    if (!block)
    {
        throw S_MemoryException_Allocation();
    }
    ++sm_iNewCount;
    S_MemoryScope::book(bytes);
    return block;
}

void S_Memory::release(void* block, std::size_t alignment) noexcept
{
    if (!block)
    {
        return;
    }
    ++sm_iDeleteCount;
    if (alignment > __STDCPP_DEFAULT_NEW_ALIGNMENT__)
    {
        ::operator delete(block, std::align_val_t(alignment));
    }
    else
    {
        ::operator delete(block);
    }
}

void S_Memory::failAllocation(long long n) noexcept
{
    s_iAllocationsToFailure = n;
}

bool S_Memory::isFailurePending() noexcept
{
    return s_iAllocationsToFailure > 0;
}
