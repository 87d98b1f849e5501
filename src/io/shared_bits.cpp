#include "io/shared_bits.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace TW2
{
namespace
{
/// Pairs up to which making rows takes longer than comparing all pairs.
constexpr std::size_t mostPairByPair = 1U << 16;

/// Whether `a` is better than `b`, as far as is known.
bool isBetter(const SharedBitCounter::Mask& a, const SharedBitCounter::Mask& b)
{
    return a.m_uiMissed != b.m_uiMissed ? a.m_uiMissed < b.m_uiMissed : a.m_uiPlace < b.m_uiPlace;
}

/// The number of set bits of each byte, in that byte.
std::uint64_t countBitsOfBytes(std::uint64_t bits)
{
    bits -= bits >> 1 & 0x5555555555555555U;
    bits = (bits & 0x3333333333333333U) + (bits >> 2 & 0x3333333333333333U);
    return (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0FU;
}
}  // namespace

unsigned int SharedBitCounter::countMissed(unsigned int mask, std::span<const unsigned int> others)
{
    unsigned int result = 0;
    for (const unsigned int other : others)
    {
        result += (other & mask) == 0 ? 1U : 0U;
    }
    return result;
}

SharedBitCounter::Mask SharedBitCounter::findBest(std::span<Mask> masks, std::span<const unsigned int> others)
{
    // A mask of many bits shares one with most others.
    Mask best = *std::max_element(masks.begin(), masks.end(),
                                  [](const Mask& a, const Mask& b)
                                  { return std::popcount(a.m_uiBits) < std::popcount(b.m_uiBits); });
    best.m_uiMissed = countMissed(best.m_uiBits, others);
    for (Mask& mask : masks)
    {
        mask.m_uiMissed = 0;
    }
    const bool pairByPair = masks.size() * others.size() <= mostPairByPair;
    std::size_t blocksToTrial = 1;
    for (std::size_t begin = 0; begin < others.size(); begin += blockSize)
    {
        const auto block = others.subspan(begin, std::min(blockSize, others.size() - begin));
        if (!pairByPair)
        {
            makeRows(block);
        }
        std::size_t left = 0;
        for (Mask& mask : masks)
        {
            mask.m_uiMissed += pairByPair ? countMissed(mask.m_uiBits, block)
                                          : static_cast<unsigned int>(block.size()) - countRows(mask.m_uiBits);
            if (!isBetter(best, mask))
            {
                std::swap(masks[left++], mask);
            }
        }
        masks = masks.first(left);
        if (--blocksToTrial == 0)
        {
            // The one that is ahead now may give up many others.
            Mask ahead = *std::min_element(masks.begin(), masks.end(), isBetter);
            ahead.m_uiMissed = countMissed(ahead.m_uiBits, others);
            best = isBetter(ahead, best) ? ahead : best;
            blocksToTrial = begin / blockSize + 1;
        }
    }
    return *std::min_element(masks.begin(), masks.end(), isBetter);
}

void SharedBitCounter::makeRows(std::span<const unsigned int> block)
{
    m_vecRows.assign(maskBytes, {});
    for (std::size_t i = 0; i < block.size(); ++i)
    {
        for (unsigned int left = block[i]; left != 0; left &= left - 1)
        {
            const std::size_t bit = static_cast<std::size_t>(std::countr_zero(left));
            m_vecRows[bit / 8][std::size_t(1) << bit % 8][i / 64] |= std::uint64_t(1) << i % 64;
        }
    }
    for (auto& rows : m_vecRows)
    {
        for (std::size_t value = 1; value < rowsPerByte; ++value)
        {
            const Row& rest = rows[value & (value - 1)];
            const Row& lowest = rows[value & ~(value - 1)];
            std::transform(rest.begin(), rest.end(), lowest.begin(), rows[value].begin(), std::bit_or<>());
        }
    }
}

unsigned int SharedBitCounter::countRows(unsigned int mask) const
{
    const auto rowOf = [&](std::size_t byte) { return m_vecRows[byte][mask >> 8 * byte & 0xFF].data(); };
    const std::uint64_t* const rows[maskBytes] = {rowOf(0), rowOf(1), rowOf(2), rowOf(3)};
    std::uint64_t sums = 0;  // eight sums of at most 8 bits for each of the 16 words
    for (std::size_t word = 0; word < rowWords; ++word)
    {
        sums += countBitsOfBytes(rows[0][word] | rows[1][word] | rows[2][word] | rows[3][word]);
    }
    const std::uint64_t pairs = (sums & 0x00FF00FF00FF00FFU) + (sums >> 8 & 0x00FF00FF00FF00FFU);
    return static_cast<unsigned int>(pairs * 0x0001000100010001U >> 48);
}
}  // namespace TW2
