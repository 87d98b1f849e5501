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

/// The transform between two keys: a + (b - a) · fraction on all twelve elements, and exactly a at fraction 0. The keys
/// are those of tracks, whose quaternions have a direction: one of their components is at least 1/2.
template <typename T>
struct RigidBlend
{
    M_Rows<T> m_rows;
    M_Vector3Template<T> m_translation;

    RigidBlend(const RigidKey<T>& a, const RigidKey<T>& b, const T& fraction) noexcept
        : m_rows(toRows(a)), m_translation(a.m_translation)
    {
        using M_OneFloat::any, M_OneFloat::isEqual;
        const M_Rows<T> rows = m_rows;
        const M_Rows<T> target = toRows(b);
        move(m_rows.m_rows[0], target.m_rows[0], fraction);
        move(m_rows.m_rows[1], target.m_rows[1], fraction);
        move(m_rows.m_rows[2], target.m_rows[2], fraction);
        move(m_translation, b.m_translation, fraction);
        // On a key the result is the key itself, also where the difference is too large for a float.
        const auto onKey = isEqual(fraction, T(0.0F));
        if (any(onKey))
        {
            keep(m_rows.m_rows[0], rows.m_rows[0], onKey);
            keep(m_rows.m_rows[1], rows.m_rows[1], onKey);
            keep(m_rows.m_rows[2], rows.m_rows[2], onKey);
            keep(m_translation, a.m_translation, onKey);
        }
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
    static M_Rows<T> toRows(const RigidKey<T>& key) noexcept
    {
        return TW2::toRows(key.m_w, key.m_v, getProductScale(key.m_w, key.m_v));
    }
    static void move(M_Vector3Template<T>& a, const M_Vector3Template<T>& b, const T& fraction) noexcept
    {
        a = {(b.x - a.x) * fraction + a.x, (b.y - a.y) * fraction + a.y, (b.z - a.z) * fraction + a.z};
    }
    template <typename Mask>
    static void keep(M_Vector3Template<T>& value, const M_Vector3Template<T>& a, const Mask& mask) noexcept
    {
        using M_OneFloat::select;
        value = {select(mask, a.x, value.x), select(mask, a.y, value.y), select(mask, a.z, value.z)};
    }
};
}  // namespace TW2
