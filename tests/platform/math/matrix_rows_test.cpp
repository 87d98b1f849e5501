#include <platform/math/matrix_rows.h>

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using Vector = M_Vector3Template<float>;

void expectNear(const Vector& actual, const Vector& expected)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-6F);
    EXPECT_NEAR(actual.y, expected.y, 1e-6F);
    EXPECT_NEAR(actual.z, expected.z, 1e-6F);
}
}  // namespace

TEST(MatrixRows, ASkewedFrameBecomesOrthonormalAroundItsFirstRow)
{
    M_Rows<float> rows{{{0.0F, 3.0F, 4.0F}, {5.0F, 1.0F, 0.0F}, {1.0F, 2.0F, -7.0F}}};
    rows.orthonormalize();
    expectNear(rows.m_rows[0], {0.0F, 0.6F, 0.8F});
    // (5, 1, 0) less 0.6 of the first row is (5, 0.64, -0.48), of length sqrt(25.64).
    const float length = std::sqrt(25.64F);
    expectNear(rows.m_rows[1], {5.0F / length, 0.64F / length, -0.48F / length});
    expectNear(rows.m_rows[2], rows.m_rows[0].cross(rows.m_rows[1]));
}

TEST(Matrices, AnInverseUndoesAndThatOfASingularBlockStaysFinite)
{
    M_Matrix4x3Template<double> matrix;
    matrix.setRow(0, {2.0, 0.5, -1.0});
    matrix.setRow(1, {0.0, 3.0, 0.25});
    matrix.setRow(2, {1.0, -1.0, 0.5});
    matrix.setTranslation({7.0, -8.0, 9.0});
    const M_Matrix4x3Template<double> product = matrix * matrix.inverse();
    for (int i = 0; i < 12; ++i)
    {
        EXPECT_NEAR(product.data()[i], M_Matrix4x3Template<double>().data()[i], 1e-12) << "element " << i;
    }
    matrix.setRow(2, matrix.getRow(1));
    M_Matrix4x3Template<double> back;
    back.setTranslation({-7.0, 8.0, -9.0});
    EXPECT_EQ(matrix.inverse(), back);
    for (int i = 0; i < 12; ++i)
    {
        M_Matrix4x3Template<double> other = back;
        other.data()[i] += 1.0;
        EXPECT_FALSE(other == back) << "element " << i;
    }
}

TEST(MatrixRows, RowsWithoutDirectionStayAsTheyAreAndSpoilNoOther)
{
    struct Case
    {
        Vector rows[3];
        Vector expected[3];
    };
    const Case cases[] = {
        {{{}, {0.0F, 2.0F, 0.0F}, {0.0F, 1.0F, 1.0F}}, {{}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}},
        // Row 1 vanishes when its projection on row 0 goes.
        {{{2.0F, 0.0F, 0.0F}, {4.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 5.0F}}, {{1.0F, 0.0F, 0.0F}, {}, {0.0F, 0.0F, 1.0F}}},
        {{{}, {}, {}}, {{}, {}, {}}},
        // Too long for its squared length to be a float.
        {{{3e38F, 0.0F, 0.0F}, {1.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 0.5F}},
         {{3e38F, 0.0F, 0.0F}, {std::sqrt(0.5F), std::sqrt(0.5F), 0.0F}, {0.0F, 0.0F, 1.0F}}},
    };
    for (const Case& c : cases)
    {
        M_Rows<float> rows{{c.rows[0], c.rows[1], c.rows[2]}};
        rows.orthonormalize();
        for (int r = 0; r < 3; ++r)
        {
            expectNear(rows.m_rows[r], c.expected[r]);
        }
    }
    M_Rows<float> rows{{{}, {0.0F, 0.0F, 9.0F}, {1e-30F, 0.0F, 0.0F}}};
    rows.normalize();
    EXPECT_EQ(rows.m_rows[0], Vector());
    EXPECT_EQ(rows.m_rows[1], Vector(0.0F, 0.0F, 1.0F));
    EXPECT_EQ(rows.m_rows[2], Vector(1e-30F, 0.0F, 0.0F));
}
