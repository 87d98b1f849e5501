#pragma once

#include <platform/export.h>

#include <cstddef>
#include <functional>
#include <iterator>
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

/// Stands for the value of an element that is left as the memory is; see S_resizeUnfilled.
struct S_Unfilled
{
    template <typename T>
    operator T() const  // NOLINT(google-explicit-constructor): containers convert implicitly
    {
        return T();
    }
};

/// A sequence of S_Unfilled as a forward iterator.
class S_UnfilledElements
{
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = S_Unfilled;
    using difference_type = std::ptrdiff_t;
    using pointer = const S_Unfilled*;
    using reference = S_Unfilled;

    S_UnfilledElements() noexcept = default;
    explicit S_UnfilledElements(std::size_t index) noexcept : m_uIndex(index) {}

    S_Unfilled operator*() const noexcept { return {}; }
    S_UnfilledElements& operator++() noexcept
    {
        ++m_uIndex;
        return *this;
    }
    S_UnfilledElements operator++(int) noexcept { return S_UnfilledElements(m_uIndex++); }
    friend bool operator==(const S_UnfilledElements&, const S_UnfilledElements&) = default;

private:
    std::size_t m_uIndex = 0;
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

    /// All other elements are constructed as the language does.
    template <typename U>
    void construct(U*, const S_Unfilled&) noexcept
    {
    }

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
using S_Bytes = S_Vector<unsigned char>;
/// @}

/// Makes `list` hold `count` elements of which nothing is known, for a list that is filled right afterwards: large ones
/// are not gone through twice. T is a plain type.
template <typename T>
void S_resizeUnfilled(S_Vector<T>& list, std::size_t count)
{
    static_assert(std::is_trivially_copyable_v<T>);
    list.clear();  // what is left would be assigned to, not constructed
    list.assign(S_UnfilledElements(0), S_UnfilledElements(count));
}
