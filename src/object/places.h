#pragma once

#include <cstddef>

namespace TW2
{
/// A short list of places (mesh indices) on the stack, worked off whenever it is full.
class Places
{
public:
    /// Appends; true when the list is full now and has to be taken before the next call.
    [[nodiscard]] bool add(unsigned int place) noexcept
    {
        m_uiPlaces[m_uiCount++] = place;
        return m_uiCount == CAPACITY;
    }
    /// The count; the list is empty afterwards, what `data` points to stays until the next `add`.
    [[nodiscard]] std::size_t take() noexcept
    {
        const std::size_t count = m_uiCount;
        m_uiCount = 0;
        return count;
    }
    [[nodiscard]] bool isEmpty() const noexcept { return m_uiCount == 0; }
    [[nodiscard]] const unsigned int* data() const noexcept { return m_uiPlaces; }

private:
    static constexpr std::size_t CAPACITY = 128;

    std::size_t m_uiCount = 0;
    unsigned int m_uiPlaces[CAPACITY];
};
}  // namespace TW2
