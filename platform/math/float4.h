#pragma once

#include <platform/compiler.h>

#include <cmath>
#include <cstddef>

#if defined(S_HAS_SSE2)
#include <platform/math/float4_sse2.h>
#elif defined(S_HAS_NEON)
#include <platform/math/float4_neon.h>
#else
#include <platform/math/float4_scalar.h>
#endif

/// Four floats that are worked on together, lane by lane: one of each of four matrices, tracks or keys.
///
/// Every operation rounds each lane as the same operation on one float does, so the bits are those of scalar code, on
/// every machine; where the processor has four-float registers it takes one instruction. There is no fused
/// multiply-add and no estimate among them.
///
///     M_Float4()                            four zeros
///     M_Float4(value)                       the same value in each lane
///     M_Float4(lane0, lane1, lane2, lane3)
///     M_Float4::load(from), store(to)       four floats in a row, on any boundary
///     + - * /  sqrt(a)                      lane by lane
///     isEqual(a, b), isLess(a, b)           a Mask: one answer per lane
///     both(mask, mask), any(mask)           where both masks hold; whether a mask holds in any lane
///     select(mask, value, otherwise)        lane by lane
///     whereNotZero(test, value, otherwise)  `value` where `test` is not 0 (a NaN is not 0), else `otherwise`
///     transpose(a, b, c, d)                 exchanges rows and columns of the square that the four make: afterwards
///                                           lane j of `a` is what lane 0 of the j-th was, and so on
#if defined(S_HAS_SSE2)
using M_Float4 = M_Float4Sse2;
#elif defined(S_HAS_NEON)
using M_Float4 = M_Float4Neon;
#else
using M_Float4 = M_Float4Scalar;
#endif

/// How many floats the classes above and their like (M_Float8Avx2) work on at a time is their constant `laneCount`.
///
/// Loads four floats in a row from behind `offset` floats of each of `laneCount` places, which may be equal, and sorts
/// them: lane i of values[k] is the k-th float of place i.
template <typename Float4>
inline void M_loadLanes(const float* const* from, std::size_t offset, Float4 (&values)[4]) noexcept
{
    for (std::size_t i = 0; i < Float4::laneCount; ++i)
    {
        values[i] = Float4::load(from[i] + offset);
    }
    transpose(values[0], values[1], values[2], values[3]);
}
/// The way back, to the first `count` (1 to `laneCount`) places.
template <typename Float4>
inline void M_storeLanes(const Float4 (&values)[4], float* const* to, std::size_t offset, std::size_t count) noexcept
{
    Float4 rows[4] = {values[0], values[1], values[2], values[3]};
    transpose(rows[0], rows[1], rows[2], rows[3]);
    for (std::size_t i = 0; i < count; ++i)
    {
        rows[i].store(to[i] + offset);
    }
}

/// The same words for one float, so that a formula can be written once for one and for four.
namespace M_OneFloat
{
using std::sqrt;

/// False when either is not a number.
[[nodiscard]] inline bool isEqual(float a, float b) noexcept
{
    return a == b;
}
/// False when either is not a number.
[[nodiscard]] inline bool isLess(float a, float b) noexcept
{
    return a < b;
}
/// Of two comparisons.
[[nodiscard]] inline bool both(bool a, bool b) noexcept
{
    return a && b;
}
/// `value` where the comparison holds, else `otherwise`.
[[nodiscard]] inline float select(bool mask, float value, float otherwise) noexcept
{
    return mask ? value : otherwise;
}
}  // namespace M_OneFloat
