#pragma once

#include <platform/math/matrix4x3.h>

#include <type_traits>

/// 4x4 matrix of row vectors, used for texture coordinates and projections.
///
/// Storage order is row by row; row 3 is the translation row. A default-constructed matrix is the identity.
template <typename T>
struct M_Matrix4Template
{
    /// Row by row.
    T m[4][4] = {
        {T(1), T(0), T(0), T(0)}, {T(0), T(1), T(0), T(0)}, {T(0), T(0), T(1), T(0)}, {T(0), T(0), T(0), T(1)}};

    constexpr M_Matrix4Template() = default;
    /// The affine transform as a 4x4 matrix (last column 0, 0, 0, 1).
    explicit constexpr M_Matrix4Template(const M_Matrix4x3Template<T>& affine)
    {
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 3; ++c)
            {
                m[r][c] = affine.m[r][c];
            }
        }
    }

    /// Ones on the diagonal, zeros elsewhere.
    [[nodiscard]] static constexpr M_Matrix4Template identity() { return {}; }
    /// The sixteen values in storage order.
    [[nodiscard]] constexpr const T* data() const { return &m[0][0]; }
    [[nodiscard]] constexpr T* data() { return &m[0][0]; }

    /// The transform that applies `a` first and then `b`.
    friend constexpr M_Matrix4Template operator*(const M_Matrix4Template& a, const M_Matrix4Template& b)
    {
        M_Matrix4Template result;
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 4; ++c)
            {
                result.m[r][c] =
                    a.m[r][0] * b.m[0][c] + a.m[r][1] * b.m[1][c] + a.m[r][2] * b.m[2][c] + a.m[r][3] * b.m[3][c];
            }
        }
        return result;
    }
    /// Element by element.
    friend constexpr bool operator==(const M_Matrix4Template& a, const M_Matrix4Template& b)
    {
        for (int i = 0; i < 16; ++i)
        {
            if (a.data()[i] != b.data()[i])
            {
                return false;
            }
        }
        return true;
    }

    /// Affine point (w = 1) after the division by w; a point that maps to w = 0 is returned undivided.
    [[nodiscard]] constexpr M_Vector3Template<T> projectPoint(const M_Vector3Template<T>& p) const
    {
        T out[4] = {};
        for (int c = 0; c < 4; ++c)
        {
            out[c] = p.x * m[0][c] + p.y * m[1][c] + p.z * m[2][c] + m[3][c];
        }
        const T w = out[3] != T(0) ? out[3] : T(1);
        return {out[0] / w, out[1] / w, out[2] / w};
    }
};

static_assert(std::is_trivially_copyable_v<M_Matrix4Template<float>> && sizeof(M_Matrix4Template<float>) == 64);
