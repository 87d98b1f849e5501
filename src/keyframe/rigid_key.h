#pragma once

#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_matrix.h>

#include <platform/math/float4.h>
#include <platform/math/four_matrices.h>
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

/// Four floats at a time.
constexpr std::size_t LANES = 4;

/// Four compact keys of tracks side by side. Their quaternions have a direction: one of the components is at least 1/2.
struct RigidKeys
{
    M_Vector3Template<M_Float4> m_translation;
    M_Float4 m_w;
    M_Vector3Template<M_Float4> m_v;

    [[nodiscard]] M_Rows<M_Float4> getRows() const noexcept { return toRows(m_w, m_v, getProductScale(m_w, m_v)); }
};

[[gnu::always_inline]] inline RigidKeys loadKeys(const TW_KeyframeMatrix* const keys[LANES]) noexcept
{
    // Seven floats each: translation and w, then w again and the vector.
    M_Float4 first[LANES];
    M_Float4 second[LANES];
    for (std::size_t i = 0; i < LANES; ++i)
    {
        const auto* const floats = reinterpret_cast<const float*>(keys[i]);
        first[i] = M_Float4::load(floats);
        second[i] = M_Float4::load(floats + 3);
    }
    transpose(first[0], first[1], first[2], first[3]);
    transpose(second[0], second[1], second[2], second[3]);
    return {{first[0], first[1], first[2]}, first[3], {second[1], second[2], second[3]}};
}

inline M_FourMatrices toMatrices(const M_Rows<M_Float4>& rows, const M_Vector3Template<M_Float4>& t) noexcept
{
    const auto& r = rows.m_rows;
    return {{{r[0].x, r[0].y, r[0].z}, {r[1].x, r[1].y, r[1].z}, {r[2].x, r[2].y, r[2].z}, {t.x, t.y, t.z}}};
}

/// The transforms between four pairs of keys: a + (b - a) · fraction on all twelve elements, and exactly a at fraction
/// 0.
struct RigidBlend
{
    M_Rows<M_Float4> m_rows;
    M_Vector3Template<M_Float4> m_translation;

    RigidBlend(const RigidKeys& a, const RigidKeys& b, const M_Float4& fraction) noexcept
        : m_rows(a.getRows()), m_translation(a.m_translation)
    {
        const M_Rows<M_Float4> rows = m_rows;
        const M_Rows<M_Float4> target = b.getRows();
        move(m_rows.m_rows[0], target.m_rows[0], fraction);
        move(m_rows.m_rows[1], target.m_rows[1], fraction);
        move(m_rows.m_rows[2], target.m_rows[2], fraction);
        move(m_translation, b.m_translation, fraction);
        // On a key the result is the key itself, also where the difference is too large for a float.
        const auto onKey = isEqual(fraction, M_Float4());
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
    using Vectors = M_Vector3Template<M_Float4>;

    static void move(Vectors& a, const Vectors& b, const M_Float4& fraction) noexcept
    {
        a = {(b.x - a.x) * fraction + a.x, (b.y - a.y) * fraction + a.y, (b.z - a.z) * fraction + a.z};
    }
    static void keep(Vectors& value, const Vectors& a, const M_Float4::Mask& mask) noexcept
    {
        value = {select(mask, a.x, value.x), select(mask, a.y, value.y), select(mask, a.z, value.z)};
    }
};

/// Four elements of a matrix between two: a + (b - a) · fraction, and exactly a at fraction 0.
inline M_Float4 between(const M_Float4& a, const M_Float4& b, const M_Float4& fraction) noexcept
{
    return select(isEqual(fraction, M_Float4()), a, (b - a) * fraction + a);
}
}  // namespace TW2
