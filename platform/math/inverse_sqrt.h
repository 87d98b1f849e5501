#pragma once

#include <platform/bit_cast.h>
#include <platform/math/vector3.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace M_InverseSqrtDetail
{
/// 1 / sqrt(x) for x in [1, 4], by Newton's method in doubles.
constexpr double inverseSqrt(double x)
{
    double y = 0.75;
    for (int step = 0; step < 8; ++step)
    {
        y = y * (1.5 - 0.5 * x * y * y);
    }
    return y;
}

/// The eight highest mantissa bits of 1 / sqrt(x), for the values x that share an exponent parity and their seven
/// highest mantissa bits. Of the bytes that values of the bucket have, the one that is nearest to the bucket's middle.
constexpr unsigned char entry(unsigned int index)
{
    // A set highest index bit is an odd exponent field, such as that of [1, 2); a clear one, such as that of [2, 4).
    const double scale = index < 128 ? 2.0 : 1.0;
    const double low = scale * (1.0 + (index % 128) / 128.0);
    const double high = low + scale / 128.0;
    // Results lie in (0.5, 1]; doubled, their mantissa is what exceeds 1. Only x = 1 itself gives 1, which the table's
    // exponent cannot hold.
    const double most = std::min((2.0 * inverseSqrt(low) - 1.0) * 256.0, 255.0);
    const double least = (2.0 * inverseSqrt(high) - 1.0) * 256.0;
    const int middle = static_cast<int>((most + least) / 2.0 + 0.5);
    return static_cast<unsigned char>(std::clamp(middle, static_cast<int>(least), static_cast<int>(most)));
}

/// The first guesses, one for each odd or even exponent and seven bits of mantissa.
constexpr std::array<unsigned char, 256> makeTable()
{
    std::array<unsigned char, 256> table{};
    for (unsigned int i = 0; i < table.size(); ++i)
    {
        table[i] = entry(i);
    }
    return table;
}
}  // namespace M_InverseSqrtDetail

/// Start values of the fast inverse square root: the eight highest mantissa bits, by the lowest exponent bit and the
/// seven highest mantissa bits of the argument.
inline constexpr std::array<unsigned char, 256> M_LUTInverseSqrt = M_InverseSqrtDetail::makeTable();

/// About 1 / sqrt(x), with a relative error below 2e-5, for normal x above 0: a table and one Newton-Raphson step.
/// Finite for every finite x.
[[nodiscard]] constexpr float M_fastInverseSqrt(float x) noexcept
{
    const auto bits = S_bitCast<std::uint32_t>(x);
    const std::uint32_t exponent = ((0xBE7FFFFFU - bits) >> 1) & 0xFF800000U;
    const std::uint32_t mantissa = static_cast<std::uint32_t>(M_LUTInverseSqrt[(bits >> 16) & 0xFFU]) << 15;
    const auto y = S_bitCast<float>(exponent | mantissa);
    return 1.5F * y - (0.5F * x) * y * y * y;
}

/// About the length of `v`, with the same error where its square is a normal number; 0 for the zero vector.
[[nodiscard]] constexpr float M_fastLength(const M_Vector3Template<float>& v) noexcept
{
    const float lengthSquared = v.lengthSquared();
    return lengthSquared == 0.0F ? 0.0F : lengthSquared * M_fastInverseSqrt(lengthSquared);
}
