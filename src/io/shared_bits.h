#pragma once

#include <platform/runtime/allocator.h>

#include <cstdint>
#include <span>

namespace TW2
{
/// Counts, for each of many masks, how many of many others share a bit with it.
///
/// A block of the others becomes one row of bits per value of each of a mask's four bytes: who shares a bit with that
/// byte. The four rows of a mask, united, are those who share a bit with it, 64 to a word. Small tasks are counted pair
/// by pair.
class SharedBitCounter
{
public:
    /// Adds the number of `others` that share a bit with `masks[i]` to `counts[i]`. The sum may wrap around, so that
    /// counts can also be taken back.
    void add(std::span<const unsigned int> masks, std::span<const unsigned int> others, std::span<unsigned int> counts);
    /// Takes the same number back.
    void subtract(std::span<const unsigned int> masks, std::span<const unsigned int> others,
                  std::span<unsigned int> counts);

private:
    static constexpr std::size_t s_words = 16;  // of a row
    static constexpr std::size_t s_blockSize = 64 * s_words;
    static constexpr std::size_t s_rowsPerByte = 256;
    static constexpr std::size_t s_bytes = sizeof(unsigned int);

    void count(std::span<const unsigned int> masks, std::span<const unsigned int> others,
               std::span<unsigned int> counts, unsigned int sign);
    void makeRows(std::span<const unsigned int> block);
    [[nodiscard]] unsigned int countRows(unsigned int mask) const;
    [[nodiscard]] std::uint64_t* getRow(std::size_t byte, std::size_t value)
    {
        return m_vecRows.data() + (byte * s_rowsPerByte + value) * s_words;
    }
    [[nodiscard]] const std::uint64_t* getRow(std::size_t byte, std::size_t value) const
    {
        return m_vecRows.data() + (byte * s_rowsPerByte + value) * s_words;
    }

    S_Vector<std::uint64_t> m_vecRows;
};
}  // namespace TW2
