#pragma once

#include <platform/math/float4.h>
#include <platform/math/matrix4x3.h>

#include <limits>

/// The three basis rows of a matrix made unit or orthonormal, for one matrix (T = float) or, lane by lane with the same
/// bits, for four side by side (T = M_Float4).
///
/// Every result is defined: a row whose squared length is 0 or too large for a float has no direction to keep and stays
/// as it is, and a projection on such a row is zero. Finite rows never become NaN. The translation is not touched.
///
///     M_Rows<float> rows = ...;
///     rows.orthonormalize();
template <typename T>
struct M_Rows
{
    M_Vector3Template<T> m_rows[3];

    /// Scales each row to length 1.
    void normalize() noexcept
    {
        for (auto& row : m_rows)
        {
            normalize(row);
        }
    }

    /// Gram-Schmidt in row order: row 0 keeps its direction, row 1 loses its projection on row 0, row 2 those on row 0
    /// and then on the new row 1; each is scaled to length 1.
    void orthonormalize() noexcept
    {
        orthonormalizeRow<0>();
        orthonormalizeRow<1>();
        orthonormalizeRow<2>();
    }
    /// One row of that, when those before it are done.
    template <int row>
    void orthonormalizeRow() noexcept
    {
        if constexpr (row > 0)
        {
            removeProjection(m_rows[row], m_rows[0]);
        }
        if constexpr (row > 1)
        {
            removeProjection(m_rows[row], m_rows[1]);
        }
        normalize(m_rows[row]);
    }

private:
    static constexpr float infinity = std::numeric_limits<float>::infinity();

    // Whether a squared length gives a direction, or something to divide by.
    static auto isPositiveFinite(const T& value) noexcept
    {
        using M_OneFloat::both, M_OneFloat::isLess;
        return both(isLess(T(0.0F), value), isLess(value, T(infinity)));
    }
    static auto isFinite(const T& value) noexcept
    {
        using M_OneFloat::both, M_OneFloat::isLess;
        return both(isLess(T(-infinity), value), isLess(value, T(infinity)));
    }

    static void normalize(M_Vector3Template<T>& row) noexcept
    {
        using M_OneFloat::select, M_OneFloat::sqrt;
        const T one(1.0F);
        const T lengthSquared = row.x * row.x + row.y * row.y + row.z * row.z;
        const T factor = select(isPositiveFinite(lengthSquared), one / sqrt(lengthSquared), one);
        row = {row.x * factor, row.y * factor, row.z * factor};
    }

    static void removeProjection(M_Vector3Template<T>& row, const M_Vector3Template<T>& on) noexcept
    {
        using M_OneFloat::both, M_OneFloat::select;
        const T zero(0.0F);
        const T onSquared = on.x * on.x + on.y * on.y + on.z * on.z;
        const T factor = (on.x * row.x + on.y * row.y + on.z * row.z) / onSquared;
        const auto isDefined = both(isPositiveFinite(onSquared), isFinite(factor));
        row = {row.x - select(isDefined, on.x * factor, zero), row.y - select(isDefined, on.y * factor, zero),
               row.z - select(isDefined, on.z * factor, zero)};
    }
};
