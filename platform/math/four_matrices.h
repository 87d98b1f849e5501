#pragma once

#include <platform/math/float4.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/matrix_rows.h>

#include <cstddef>

/// Four matrices side by side: element [r][c] of all four is one vector of four floats, so that a formula on matrices
/// works on four of them at once, with the bits of the formula on one.
///
/// Float4 is M_Float4 except in tests.
template <typename Float4>
struct M_FourMatricesTemplate
{
    Float4 m[4][3];

    /// Brings four matrices (on any boundary) side by side. Pointers may be equal.
    void load(const float* const matrices[4]) noexcept
    {
        Float4 lanes[3][4];
        for (std::size_t third = 0; third < 3; ++third)
        {
            auto& l = lanes[third];
            for (std::size_t i = 0; i < 4; ++i)
            {
                l[i] = Float4::load(matrices[i] + 4 * third);
            }
            transpose(l[0], l[1], l[2], l[3]);
        }
        for (std::size_t e = 0; e < 12; ++e)
        {
            m[e / 3][e % 3] = lanes[e / 4][e % 4];
        }
    }

    /// The elements e to e + 3 (0, 4 or 8) of each matrix, in storage order.
    void getRun(std::size_t e, Float4 run[4]) const noexcept
    {
        for (std::size_t i = 0; i < 4; ++i)
        {
            run[i] = m[(e + i) / 3][(e + i) % 3];
        }
        transpose(run[0], run[1], run[2], run[3]);
    }

    /// Writes the first `count` (1 to 4) of them to where `matrices` point, as `write(place, value)` says for each run
    /// of four floats; `place` is a float*.
    template <typename Write>
    void store(float* const matrices[4], std::size_t count, Write write) const noexcept
    {
        for (std::size_t e = 0; e < 12; e += 4)
        {
            Float4 run[4];
            getRun(e, run);
            for (std::size_t i = 0; i < count; ++i)
            {
                write(matrices[i] + e, run[i]);
            }
        }
    }
    void store(float* const matrices[4], std::size_t count = 4) const noexcept
    {
        store(matrices, count, [](float* place, const Float4& value) { value.store(place); });
    }

    /// @name The basis rows; see M_Rows
    /// @{
    void normalizeRows() noexcept
    {
        changeRows([](M_Rows<Float4>& rows) { rows.normalize(); });
    }
    void orthonormalizeRows() noexcept
    {
        changeRows([](M_Rows<Float4>& rows) { rows.orthonormalize(); });
    }
    /// @}

private:
    template <typename Change>
    void changeRows(Change change) noexcept
    {
        M_Rows<Float4> rows{{{m[0][0], m[0][1], m[0][2]}, {m[1][0], m[1][1], m[1][2]}, {m[2][0], m[2][1], m[2][2]}}};
        change(rows);
        for (std::size_t r = 0; r < 3; ++r)
        {
            m[r][0] = rows.m_rows[r].x;
            m[r][1] = rows.m_rows[r].y;
            m[r][2] = rows.m_rows[r].z;
        }
    }
};
using M_FourMatrices = M_FourMatricesTemplate<M_Float4>;

/// result = a * b with four floats to an instruction and the bits of the plain product. The pointers are those of
/// matrices or of twelve floats in their order; `result` may be `a` or `b`.
template <typename Float4>
inline void M_multiply(const float* a, const float* b, float* result) noexcept
{
    // Rows of b; the fourth lane is the next row's first value and is never used. The last row is loaded one float
    // early, so that nothing behind the matrix is read.
    const Float4 b0 = Float4::load(b);
    const Float4 b1 = Float4::load(b + 3);
    const Float4 b2 = Float4::load(b + 6);
    const Float4 b3(b[9], b[10], b[11], 0.0F);
    const auto row = [&](std::size_t r)
    { return Float4(a[3 * r]) * b0 + Float4(a[3 * r + 1]) * b1 + Float4(a[3 * r + 2]) * b2; };
    const Float4 rows[4] = {row(0), row(1), row(2), row(3) + b3};
    // Each store's fourth lane is overwritten by the next.
    rows[0].store(result);
    rows[1].store(result + 3);
    rows[2].store(result + 6);
    float last[4];
    rows[3].store(last);
    result[9] = last[0];
    result[10] = last[1];
    result[11] = last[2];
}
inline void M_multiply(const M_Matrix4x3Template<float>& a, const M_Matrix4x3Template<float>& b,
                       M_Matrix4x3Template<float>& result) noexcept
{
    M_multiply<M_Float4>(a.data(), b.data(), result.data());
}
