#pragma once

#include <platform/math/matrix_rows.h>

namespace TW2
{
/// What the products of a quaternion's components are multiplied by, so that its length does not matter: not finite for
/// one that has no direction.
template <typename T>
inline T getProductScale(const T& w, const M_Vector3Template<T>& v) noexcept
{
    return T(2.0F) / (v.x * v.x + v.y * v.y + v.z * v.z + w * w);
}

/// The basis rows of a quaternion whose product scale is `s`.
template <typename T>
inline M_Rows<T> toRows(const T& w, const M_Vector3Template<T>& v, const T& s) noexcept
{
    const T one(1.0F);
    const T xs = v.x * s;
    const T ys = v.y * s;
    const T zs = v.z * s;
    const T wx = w * xs;
    const T wy = w * ys;
    const T wz = w * zs;
    const T xx = v.x * xs;
    const T xy = v.x * ys;
    const T xz = v.x * zs;
    const T yy = v.y * ys;
    const T yz = v.y * zs;
    const T zz = v.z * zs;
    return {{{one - (zz + yy), xy + wz, xz - wy},
             {xy - wz, one - (zz + xx), yz + wx},
             {xz + wy, yz - wx, one - (yy + xx)}}};
}
}  // namespace TW2
