#pragma once

#include <platform/math/float4.h>
#include <platform/math/matrix4x3.h>

#include <cstddef>

namespace TW2
{
/// A transform whose four rows lie in four-float registers, for products by it whose results are multiplied by in turn.
/// Lane 3 of each row means nothing. Wider than M_RightFactor, which keeps matrices packed, but without its turning of
/// rows: two products in a row take a fifth less time.
class TransformRows
{
public:
    using Matrix = M_Matrix4x3Template<float>;

    /// Floats that `store` writes and `load` reads.
    static constexpr std::size_t floatCount = 16;

    explicit TransformRows(const Matrix& matrix) noexcept
        : m_rows{M_Float4::load(matrix.m[0]), M_Float4::load(matrix.m[1]), M_Float4::load(matrix.m[2]),
                 M_Float4(matrix.m[3][0], matrix.m[3][1], matrix.m[3][2], 0.0F)}
    {
    }

    /// @name Sixteen floats that are nobody else's
    /// @{
    [[nodiscard]] static TransformRows load(const float* from) noexcept
    {
        return {M_Float4::load(from), M_Float4::load(from + 4), M_Float4::load(from + 8), M_Float4::load(from + 12)};
    }
    void store(float* to) const noexcept
    {
        for (const M_Float4& row : m_rows)
        {
            row.store(to);
            to += 4;
        }
    }
    /// @}

    /// matrix * transform, with the bits of the product of two matrices.
    friend TransformRows operator*(const Matrix& matrix, const TransformRows& transform) noexcept
    {
        return {transform.apply(matrix.m[0]), transform.apply(matrix.m[1]), transform.apply(matrix.m[2]),
                transform.apply(matrix.m[3]) + transform.m_rows[3]};
    }

    void write(Matrix& matrix) const noexcept
    {
        // Each row's fourth lane lands where the next row begins and is overwritten by it.
        m_rows[0].store(matrix.m[0]);
        m_rows[1].store(matrix.m[1]);
        m_rows[2].store(matrix.m[2]);
        float last[4];
        m_rows[3].store(last);
        matrix.m[3][0] = last[0];
        matrix.m[3][1] = last[1];
        matrix.m[3][2] = last[2];
    }

private:
    TransformRows(M_Float4 row0, M_Float4 row1, M_Float4 row2, M_Float4 row3) noexcept : m_rows{row0, row1, row2, row3}
    {
    }

    [[nodiscard]] M_Float4 apply(const float (&row)[3]) const noexcept
    {
        return M_Float4(row[0]) * m_rows[0] + M_Float4(row[1]) * m_rows[1] + M_Float4(row[2]) * m_rows[2];
    }

    M_Float4 m_rows[4];
};
}  // namespace TW2
