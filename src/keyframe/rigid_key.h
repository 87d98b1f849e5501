#pragma once

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_matrix.h>

#include <platform/math/float4.h>
#include <platform/math/matrix_rows.h>

namespace TW2
{
/// A compact key, one (T = float) or four side by side (T = M_Float4). Every formula here rounds each lane alike.
template <typename T>
struct RigidKey
{
    M_Vector3Template<T> m_translation;
    T m_w;
    M_Vector3Template<T> m_v;
};

/// The basis rows of a quaternion of any length but 0; the identity for one that has no direction.
template <typename T>
inline M_Rows<T> toRows(const T& w, const M_Vector3Template<T>& v) noexcept
{
    using M_OneFloat::isEqual, M_OneFloat::select;
    const T one(1.0F);
    const T zero(0.0F);
    const T scale = T(2.0F) / (v.x * v.x + v.y * v.y + v.z * v.z + w * w);
    const T s = select(isEqual(scale - scale, zero), scale, zero);
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

/// The transform between two keys: a + (b - a) · fraction on all twelve elements, and exactly a at fraction 0.
template <typename T>
struct RigidBlend
{
    M_Rows<T> m_rows;
    M_Vector3Template<T> m_translation;

    RigidBlend(const RigidKey<T>& a, const RigidKey<T>& b, const T& fraction) noexcept
        : m_rows(toRows(a.m_w, a.m_v)), m_translation(a.m_translation)
    {
        const M_Rows<T> target = toRows(b.m_w, b.m_v);
        for (int r = 0; r < 3; ++r)
        {
            move(m_rows.m_rows[r], target.m_rows[r], fraction);
        }
        move(m_translation, b.m_translation, fraction);
    }

    void apply(InterpolationMode mode) noexcept
    {
        if (mode == InterpolationMode::Normalized)
        {
            m_rows.normalize();
        }
        else if (mode == InterpolationMode::Orthonormalized)
        {
            m_rows.orthonormalize();
        }
    }

private:
    static void move(M_Vector3Template<T>& a, const M_Vector3Template<T>& b, const T& fraction) noexcept
    {
        a = {between(a.x, b.x, fraction), between(a.y, b.y, fraction), between(a.z, b.z, fraction)};
    }
    static T between(const T& a, const T& b, const T& fraction) noexcept
    {
        using M_OneFloat::isEqual, M_OneFloat::select;
        return select(isEqual(fraction, T(0.0F)), a, (b - a) * fraction + a);
    }
};
}  // namespace TW2
