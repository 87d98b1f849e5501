#pragma once

#include <cstddef>
#include <iterator>

namespace TW2
{
/// Walks a list that hands out values by index, in order; for loops and for algorithms that read. Does not change the
/// list, which must outlive the iterator.
template <typename List, typename Value>
class TW_IndexIterator
{
public:
    using iterator_category = std::input_iterator_tag;  ///< one that hands out values
    using value_type = Value;                           ///< what it hands out
    using difference_type = std::ptrdiff_t;             ///< of two places
    using pointer = void;                               ///< there is nothing to point to
    using reference = Value;                            ///< nor to refer to

    /// Stands on a place of a list, or behind its last one.
    TW_IndexIterator(const List& list, std::size_t index) noexcept : m_pList(&list), m_uiIndex(index) {}
    /// What is at the place.
    [[nodiscard]] Value operator*() const noexcept { return (*m_pList)[m_uiIndex]; }
    /// Goes on to the next place.
    TW_IndexIterator& operator++() noexcept
    {
        ++m_uiIndex;
        return *this;
    }
    /// The same; returns where it stood.
    TW_IndexIterator operator++(int) noexcept
    {
        const TW_IndexIterator before = *this;
        ++m_uiIndex;
        return before;
    }
    friend bool operator==(const TW_IndexIterator&, const TW_IndexIterator&) = default;

private:
    const List* m_pList;
    std::size_t m_uiIndex;
};
}  // namespace TW2
