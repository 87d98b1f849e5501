#pragma once

#include <platform/runtime/allocator.h>

#include <array>
#include <cstdint>
#include <span>

namespace TW2
{
/// Finds, among many masks, the one that shares a bit with the most of many others.
///
/// A block of the others becomes one row of bits per value of each of a mask's four bytes: who shares a bit with that
/// byte. The four rows of a mask, united, are those who share a bit with it, 64 to a word. A mask is given up as soon
/// as it has missed more of the others than a good one misses in all, so most are compared with few of them.
class SharedBitCounter
{
public:
    struct Mask
    {
        unsigned int m_uiBits;
        unsigned int m_uiPlace;   ///< of several masks that are equally good the one of the lowest place is the best
        unsigned int m_uiMissed;  ///< while the best is looked for: others found that share no bit with it
    };

    /// The best of `masks`, which come out in another order. There must be one.
    [[nodiscard]] Mask findBest(std::span<Mask> masks, std::span<const unsigned int> others);
    /// With how many of `others` a mask shares no bit.
    [[nodiscard]] static unsigned int countMissed(unsigned int mask, std::span<const unsigned int> others);

private:
    static constexpr std::size_t rowWords = 16;  // of a row
    static constexpr std::size_t blockSize = 64 * rowWords;
    static constexpr std::size_t rowsPerByte = 256;
    static constexpr std::size_t maskBytes = sizeof(unsigned int);

    void makeRows(std::span<const unsigned int> block);
    [[nodiscard]] unsigned int countRows(unsigned int mask) const;

    using Row = std::array<std::uint64_t, rowWords>;

    /// For each byte of a mask the row of each of its values.
    S_Vector<std::array<Row, rowsPerByte>> m_vecRows;
};
}  // namespace TW2
