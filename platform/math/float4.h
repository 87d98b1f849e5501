#pragma once

#include <cmath>

#if defined(__SSE2__)
#include <platform/math/float4_sse2.h>
#elif defined(__aarch64__) && defined(__ARM_NEON)
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
#if defined(__SSE2__)
using M_Float4 = M_Float4Sse2;
#elif defined(__aarch64__) && defined(__ARM_NEON)
using M_Float4 = M_Float4Neon;
#else
using M_Float4 = M_Float4Scalar;
#endif

/// The same words for one float, so that a formula can be written once for one and for four.
namespace M_OneFloat
{
using std::sqrt;

[[nodiscard]] inline bool isEqual(float a, float b) noexcept
{
    return a == b;
}
[[nodiscard]] inline bool isLess(float a, float b) noexcept
{
    return a < b;
}
[[nodiscard]] inline bool both(bool a, bool b) noexcept
{
    return a && b;
}
[[nodiscard]] inline float select(bool mask, float value, float otherwise) noexcept
{
    return mask ? value : otherwise;
}
}  // namespace M_OneFloat
