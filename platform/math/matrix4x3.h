#pragma once

#include <platform/math/vector3.h>

#include <type_traits>

/// Affine transform of row vectors: three basis rows, then the translation row.
///
/// A point p maps to p·R + t, with R the 3x3 block in rows 0 to 2 and t row 3. A product A * B applies A first: its 3x3
/// block is A3·B3 and its translation t_A·B3 + t_B. Plain data: twelve values without padding, in storage order row by
/// row. A default-constructed matrix is the identity.
template <typename T>
struct M_Matrix4x3Template
{
    /// Row by row: three axes and the translation.
    T m[4][3] = {{T(1), T(0), T(0)}, {T(0), T(1), T(0)}, {T(0), T(0), T(1)}, {T(0), T(0), T(0)}};

    /// Changes no point.
    [[nodiscard]] static constexpr M_Matrix4x3Template identity() { return {}; }
    /// Twelve zeros, to add to.
    [[nodiscard]] static constexpr M_Matrix4x3Template zero()
    {
        M_Matrix4x3Template result;
        result *= T(0);
        return result;
    }
    /// Moves by `t` and turns nothing.
    [[nodiscard]] static constexpr M_Matrix4x3Template translation(const M_Vector3Template<T>& t)
    {
        M_Matrix4x3Template result;
        result.setTranslation(t);
        return result;
    }

    /// @name Rows
    /// @{

    /// Row 0, 1 or 2 of the 3x3 block, or the translation as row 3.
    [[nodiscard]] constexpr M_Vector3Template<T> getRow(int row) const { return {m[row][0], m[row][1], m[row][2]}; }
    constexpr void setRow(int row, const M_Vector3Template<T>& v)
    {
        m[row][0] = v.x;
        m[row][1] = v.y;
        m[row][2] = v.z;
    }
    /// Row 3.
    [[nodiscard]] constexpr M_Vector3Template<T> getTranslation() const { return getRow(3); }
    constexpr void setTranslation(const M_Vector3Template<T>& t) { setRow(3, t); }

    /// The twelve values in storage order.
    [[nodiscard]] constexpr const T* data() const { return &m[0][0]; }
    [[nodiscard]] constexpr T* data() { return &m[0][0]; }
    /// @}

    /// @name Transforming
    /// @{

    /// As a row vector from the left, with the translation.
    [[nodiscard]] constexpr M_Vector3Template<T> transformPoint(const M_Vector3Template<T>& p) const
    {
        return transformDirection(p) + getTranslation();
    }
    /// As a row vector from the left, without the translation.
    [[nodiscard]] constexpr M_Vector3Template<T> transformDirection(const M_Vector3Template<T>& d) const
    {
        return {d.x * m[0][0] + d.y * m[1][0] + d.z * m[2][0], d.x * m[0][1] + d.y * m[1][1] + d.z * m[2][1],
                d.x * m[0][2] + d.y * m[1][2] + d.z * m[2][2]};
    }
    /// @}

    /// @name Arithmetic on all twelve values
    /// @{

    /// Element by element, the translation included.
    constexpr M_Matrix4x3Template& operator+=(const M_Matrix4x3Template& other)
    {
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 3; ++c)
            {
                m[r][c] += other.m[r][c];
            }
        }
        return *this;
    }
    /// Element by element, the translation included.
    constexpr M_Matrix4x3Template& operator-=(const M_Matrix4x3Template& other)
    {
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 3; ++c)
            {
                m[r][c] -= other.m[r][c];
            }
        }
        return *this;
    }
    /// Every element, the translation included.
    constexpr M_Matrix4x3Template& operator*=(T factor)
    {
        for (auto& row : m)
        {
            for (T& value : row)
            {
                value *= factor;
            }
        }
        return *this;
    }
    /// Element by element; -0 equals 0, and what is not a number equals nothing.
    friend constexpr bool operator==(const M_Matrix4x3Template& a, const M_Matrix4x3Template& b)
    {
        for (int r = 0; r < 4; ++r)
        {
            if (a.getRow(r) != b.getRow(r))
            {
                return false;
            }
        }
        return true;
    }
    /// @}

    /// @name Product and inverse
    /// @{

    /// The transform that applies `a` first and then `b`. Each element is ((a0·b0 + a1·b1) + a2·b2) (+ b3), in that
    /// order of rounding; the vectorised products give the same bits.
    friend constexpr M_Matrix4x3Template operator*(const M_Matrix4x3Template& a, const M_Matrix4x3Template& b)
    {
        M_Matrix4x3Template result;
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 3; ++c)
            {
                result.m[r][c] = a.m[r][0] * b.m[0][c] + a.m[r][1] * b.m[1][c] + a.m[r][2] * b.m[2][c];
            }
        }
        for (int c = 0; c < 3; ++c)
        {
            result.m[3][c] += b.m[3][c];
        }
        return result;
    }

    /// Determinant of the 3x3 block.
    [[nodiscard]] constexpr T determinant() const { return getRow(0).dot(getRow(1).cross(getRow(2))); }

    /// The inverse of the 3x3 block by cofactors over the determinant, with the translation −t·R⁻¹.
    /// A singular block (determinant 0) gives the identity block and the translation −t, which keeps results finite.
    [[nodiscard]] constexpr M_Matrix4x3Template inverse() const
    {
        M_Matrix4x3Template result;
        const T det = determinant();
        if (det != T(0))
        {
            const M_Vector3Template<T> a = getRow(1).cross(getRow(2));
            const M_Vector3Template<T> b = getRow(2).cross(getRow(0));
            const M_Vector3Template<T> c = getRow(0).cross(getRow(1));
            result.setRow(0, {a.x / det, b.x / det, c.x / det});
            result.setRow(1, {a.y / det, b.y / det, c.y / det});
            result.setRow(2, {a.z / det, b.z / det, c.z / det});
        }
        result.setTranslation(-result.transformDirection(getTranslation()));
        return result;
    }
    /// @}
};

static_assert(std::is_trivially_copyable_v<M_Matrix4x3Template<float>> && sizeof(M_Matrix4x3Template<float>) == 48);
