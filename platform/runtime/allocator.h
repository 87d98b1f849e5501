#pragma once

#include <platform/compiler.h>
#include <platform/export.h>
#include <platform/runtime/counter.h>

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
/// Any number of threads may allocate and release.
class TW2_PLATFORM_API S_Memory
{
public:
    /// Allocations made so far.
    static S_Counter<long long> sm_iNewCount;
    /// Allocations released so far. When it equals the other count, nothing is held.
    static S_Counter<long long> sm_iDeleteCount;

    /// Bytes of storage with at least the given alignment (a power of two); counted in `sm_iNewCount` and under the
    /// innermost open S_MemoryScope. Throws S_MemoryException_Allocation when memory runs out or a failure was ordered.
    [[nodiscard]] static void* allocate(std::size_t bytes, std::size_t alignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    /// Returns storage that `allocate` gave with the same alignment; null is ignored.
    static void release(void* block, std::size_t alignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__) noexcept;

    /// Makes the n-th allocation from now fail (1: the next one) and no other, whichever thread makes it;
    /// 0 takes the order back.
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
    /// Counts, and throws S_MemoryException_Allocation when there is no memory.
    static void* operator new(std::size_t bytes) { return S_Memory::allocate(bytes); }
    /// The same for types of a larger alignment.
    static void* operator new(std::size_t bytes, std::align_val_t alignment)
    {
        return S_Memory::allocate(bytes, static_cast<std::size_t>(alignment));
    }
    /// Makes an object in a place that is there already; counts nothing.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    /// Counts; null is allowed.
    static void operator delete(void* block) noexcept { S_Memory::release(block); }
    /// The same for types of a larger alignment.
    static void operator delete(void* block, std::align_val_t alignment) noexcept
    {
        S_Memory::release(block, static_cast<std::size_t>(alignment));
    }
    /// For an object whose making in a place failed; does nothing.
    static void operator delete(void*, void*) noexcept {}
};

/// A count with storage of its own, for owners that hold several things together under one count.
class S_OwnCounter : public S_Counter<int>, public S_Allocated
{
public:
    /// From a number; 0 by default.
    using S_Counter::S_Counter;
};

/// Stands for the value of an element that is left as the memory is; see S_resizeUnfilled.
struct S_Unfilled
{
    /// An element whose value nobody has set.
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
    /// As the standard library asks of iterators.
    using iterator_category = std::forward_iterator_tag;
    /// As the standard library asks of iterators.
    using value_type = S_Unfilled;
    /// As the standard library asks of iterators.
    using difference_type = std::ptrdiff_t;
    /// As the standard library asks of iterators.
    using pointer = const S_Unfilled*;
    /// As the standard library asks of iterators.
    using reference = S_Unfilled;

    S_UnfilledElements() noexcept = default;
    /// Stands before element `index`.
    explicit S_UnfilledElements(std::size_t index) noexcept : m_uIndex(index) {}

    /// Every element is unfilled.
    S_Unfilled operator*() const noexcept { return {}; }
    /// Goes on to the next element.
    S_UnfilledElements& operator++() noexcept
    {
        ++m_uIndex;
        return *this;
    }
    /// Goes on to the next element.
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
    /// As the standard library asks of allocators.
    using value_type = T;
    /// All allocators are equal, so memory may change hands.
    using propagate_on_container_move_assignment = std::true_type;
    /// All allocators are equal.
    using is_always_equal = std::true_type;

    S_Allocator() noexcept = default;
    /// There is no state to take over.
    template <typename U>
    S_Allocator(const S_Allocator<U>&) noexcept  // NOLINT(google-explicit-constructor): rebinding is implicit
    {
    }

    /// Room for `count` objects; throws S_MemoryException_Allocation when there is none.
    [[nodiscard]] T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T))
        {
            throw std::bad_array_new_length();
        }
        return static_cast<T*>(S_Memory::allocate(count * sizeof(T), blockAlignment));
    }
    /// Gives back what `allocate` of any such allocator gave.
    void deallocate(T* block, std::size_t) noexcept { S_Memory::release(block, blockAlignment); }

    /// All other elements are constructed as the language does.
    template <typename U>
    void construct(U*, const S_Unfilled&) noexcept
    {
    }

    /// Always.
    template <typename U>
    friend bool operator==(const S_Allocator&, const S_Allocator<U>&) noexcept
    {
        return true;
    }

private:
    static constexpr std::size_t blockAlignment = alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__
                                                      ? alignof(T)
                                                      : __STDCPP_DEFAULT_NEW_ALIGNMENT__;
};

/// @name The library's containers
/// @{

/// Text, UTF-8 where it names a file.
using S_String = std::basic_string<char, std::char_traits<char>, S_Allocator<char>>;
/// A list side by side in memory.
template <typename T>
using S_Vector = std::vector<T, S_Allocator<T>>;
/// A list whose elements stay where they are.
template <typename T>
using S_List = std::list<T, S_Allocator<T>>;
/// Values by key, in the order of the keys.
template <typename K, typename V, typename Less = std::less<K>>
using S_Map = std::map<K, V, Less, S_Allocator<std::pair<const K, V>>>;
/// Keys in their order.
template <typename T, typename Less = std::less<T>>
using S_Set = std::set<T, Less, S_Allocator<T>>;
/// Bytes; what `resize` adds may be anything.
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
