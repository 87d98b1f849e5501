#include <io/shared_bits.h>

#include <algorithm>
#include <bit>

namespace TW2
{
namespace
{
/// Pairs up to which making rows takes longer than comparing all pairs.
constexpr std::size_t s_pairByPair = 1u << 16;

unsigned int countPairs(unsigned int mask, std::span<const unsigned int> others)
{
    unsigned int result = 0;
    for (const unsigned int other : others)
    {
        result += (other & mask) != 0 ? 1u : 0u;
    }
    return result;
}

/// The number of set bits of each byte, in that byte.
std::uint64_t countBitsOfBytes(std::uint64_t bits)
{
    bits -= bits >> 1 & 0x5555555555555555u;
    bits = (bits & 0x3333333333333333u) + (bits >> 2 & 0x3333333333333333u);
    return (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
}
}  // namespace

void SharedBitCounter::add(std::span<const unsigned int> masks, std::span<const unsigned int> others,
                           std::span<unsigned int> counts)
{
    count(masks, others, counts, 1);
}

void SharedBitCounter::subtract(std::span<const unsigned int> masks, std::span<const unsigned int> others,
                                std::span<unsigned int> counts)
{
    count(masks, others, counts, ~0u);
}

void SharedBitCounter::count(std::span<const unsigned int> masks, std::span<const unsigned int> others,
                             std::span<unsigned int> counts, unsigned int sign)
{
    if (masks.size() * others.size() <= s_pairByPair)
    {
        for (std::size_t i = 0; i < masks.size(); ++i)
        {
            counts[i] += sign * countPairs(masks[i], others);
        }
        return;
    }
    for (std::size_t begin = 0; begin < others.size(); begin += s_blockSize)
    {
        makeRows(others.subspan(begin, std::min(s_blockSize, others.size() - begin)));
        for (std::size_t i = 0; i < masks.size(); ++i)
        {
            counts[i] += sign * countRows(masks[i]);
        }
    }
}

void SharedBitCounter::makeRows(std::span<const unsigned int> block)
{
    m_vecRows.assign(s_bytes * s_rowsPerByte * s_words, 0);
    for (std::size_t i = 0; i < block.size(); ++i)
    {
        for (unsigned int left = block[i]; left != 0; left &= left - 1)
        {
            const std::size_t bit = static_cast<std::size_t>(std::countr_zero(left));
            getRow(bit / 8, std::size_t(1) << bit % 8)[i / 64] |= std::uint64_t(1) << i % 64;
        }
    }
    for (std::size_t byte = 0; byte < s_bytes; ++byte)
    {
        for (std::size_t value = 1; value < s_rowsPerByte; ++value)
        {
            const std::uint64_t* rest = getRow(byte, value & (value - 1));
            const std::uint64_t* lowest = getRow(byte, value & ~(value - 1));
            std::uint64_t* row = getRow(byte, value);
            for (std::size_t word = 0; word < s_words; ++word)
            {
                row[word] = rest[word] | lowest[word];
            }
        }
    }
}

unsigned int SharedBitCounter::countRows(unsigned int mask) const
{
    const std::uint64_t* rows[s_bytes];
    for (std::size_t byte = 0; byte < s_bytes; ++byte)
    {
        rows[byte] = getRow(byte, mask >> 8 * byte & 0xFF);
    }
    std::uint64_t sums = 0;  // eight sums of at most 8 bits for each of the 16 words
    for (std::size_t word = 0; word < s_words; ++word)
    {
        sums += countBitsOfBytes(rows[0][word] | rows[1][word] | rows[2][word] | rows[3][word]);
    }
    const std::uint64_t pairs = (sums & 0x00FF00FF00FF00FFu) + (sums >> 8 & 0x00FF00FF00FF00FFu);
    return static_cast<unsigned int>(pairs * 0x0001000100010001u >> 48);
}
}  // namespace TW2
