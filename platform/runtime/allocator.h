#pragma once

#include <platform/export.h>

#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <new>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// The counters behind every allocation of the library, and the switch that makes one fail.
///
/// Unguarded: one thread at a time.
class TW2_PLATFORM_API S_Memory
{
public:
    /// Allocations made and released so far. Equal counts mean that nothing is held.
    static long long sm_iNewCount;
    static long long sm_iDeleteCount;

    /// Bytes of storage with at least the given alignment (a power of two); counted in `sm_iNewCount` and under the
    /// innermost open S_MemoryScope. Throws S_MemoryException_Allocation when memory runs out or a failure was ordered.
    [[nodiscard]] static void* allocate(std::size_t bytes, std::size_t alignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    /// Returns storage that `allocate` gave with the same alignment; null is ignored.
    static void release(void* block, std::size_t alignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__) noexcept;

    /// Makes the n-th allocation from now fail (1: the next one) and no other; 0 takes the order back.
    static void failAllocation(long long n) noexcept;
    /// Whether an ordered failure has not happened yet.
    [[nodiscard]] static bool isFailurePending() noexcept;
    /// Allocations that are not yet released.
    [[nodiscard]] static long long getLiveCount() noexcept { return sm_iNewCount - sm_iDeleteCount; }
};

/// Base that makes `new` and `delete` of a class go through S_Memory: counted, and failing when a test says so.
class S_Allocated
{
public:
    static void* operator new(std::size_t bytes) { return S_Memory::allocate(bytes); }
    static void* operator new(std::size_t bytes, std::align_val_t alignment)
    {
        return S_Memory::allocate(bytes, static_cast<std::size_t>(alignment));
    }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept { S_Memory::release(block); }
    static void operator delete(void* block, std::align_val_t alignment) noexcept
    {
        S_Memory::release(block, static_cast<std::size_t>(alignment));
    }
    static void operator delete(void*, void*) noexcept {}
};

/// Standard allocator on S_Memory. Stateless: all instances are equal.
template <typename T>
class S_Allocator
{
public:
    using value_type = T;

    S_Allocator() noexcept = default;
    template <typename U>
    S_Allocator(const S_Allocator<U>&) noexcept  // NOLINT(google-explicit-constructor): rebinding is implicit
    {
    }

    [[nodiscard]] T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T))
        {
            throw std::bad_array_new_length();
        }
        return static_cast<T*>(S_Memory::allocate(count * sizeof(T), sm_alignment));
    }
    void deallocate(T* block, std::size_t) noexcept { S_Memory::release(block, sm_alignment); }

    template <typename U>
    friend bool operator==(const S_Allocator&, const S_Allocator<U>&) noexcept
    {
        return true;
    }

private:
    static constexpr std::size_t sm_alignment = alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__
                                                    ? alignof(T)
                                                    : __STDCPP_DEFAULT_NEW_ALIGNMENT__;
};

/// S_Allocator whose elements keep whatever the memory holds when a container grows without a value for them: for
/// buffers that are filled right afterwards.
template <typename T>
class S_RawAllocator : public S_Allocator<T>
{
public:
    S_RawAllocator() noexcept = default;
    template <typename U>
    S_RawAllocator(const S_RawAllocator<U>&) noexcept  // NOLINT(google-explicit-constructor): rebinding is implicit
    {
    }

    template <typename U>
    void construct(U* place) noexcept(std::is_nothrow_default_constructible_v<U>)
    {
        ::new (static_cast<void*>(place)) U;
    }
    template <typename U, typename... Arguments>
    void construct(U* place, Arguments&&... arguments)
    {
        ::new (static_cast<void*>(place)) U(std::forward<Arguments>(arguments)...);
    }
};

/// @name The library's containers
/// @{
using S_String = std::basic_string<char, std::char_traits<char>, S_Allocator<char>>;
template <typename T>
using S_Vector = std::vector<T, S_Allocator<T>>;
template <typename T>
using S_List = std::list<T, S_Allocator<T>>;
template <typename K, typename V, typename Less = std::less<K>>
using S_Map = std::map<K, V, Less, S_Allocator<std::pair<const K, V>>>;
template <typename T, typename Less = std::less<T>>
using S_Set = std::set<T, Less, S_Allocator<T>>;
/// Bytes; `resize` does not zero the new ones.
using S_Bytes = std::vector<unsigned char, S_RawAllocator<unsigned char>>;
/// @}
