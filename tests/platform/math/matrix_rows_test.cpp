#include <platform/math/matrix4.h>
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

TEST(Matrices, OfFourColumnsMultiplyAndProjectAsTextbooksSay)
{
    M_Matrix4x3Template<double> affine;
    M_Matrix4Template<double> a;
    M_Matrix4Template<double> b;
    for (int i = 0; i < 16; ++i)
    {
        affine.data()[i % 12] = std::sin(i + 1.0);
        a.data()[i] = std::cos(3.0 * i);
        b.data()[i] = std::sin(5.0 * i + 0.5);
        M_Matrix4Template<double> other = a;
        EXPECT_TRUE(other == a);
        other.data()[i] += 1.0;
        EXPECT_FALSE(other == a) << "element " << i;
    }
    const M_Matrix4Template<double> product = a * b;
    const M_Matrix4Template<double> wide(affine);
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k)
            {
                sum += a.m[row][k] * b.m[k][column];
            }
            EXPECT_NEAR(product.m[row][column], sum, 1e-12) << row << column;
            EXPECT_EQ(wide.m[row][column], column < 3 ? affine.m[row][column] : row < 3 ? 0.0 : 1.0) << row << column;
        }
    }
    const double point[4]{1.5, -2.0, 0.25, 1.0};
    const auto project = [&point](const M_Matrix4Template<double>& matrix, int column)
    {
        double sum = 0.0;
        for (int k = 0; k < 4; ++k)
        {
            sum += point[k] * matrix.m[k][column];
        }
        return sum;
    };
    for (const double w : {project(product, 3), 1.0})
    {
        M_Matrix4Template<double> matrix = product;
        for (int row = 0; row < 4 && w == 1.0; ++row)
        {
            matrix.m[row][3] = 0.0;
        }
        const M_Vector3Template<double> is = matrix.projectPoint({point[0], point[1], point[2]});
        EXPECT_NEAR(is.x, project(matrix, 0) / w, 1e-12) << w;
        EXPECT_NEAR(is.y, project(matrix, 1) / w, 1e-12) << w;
        EXPECT_NEAR(is.z, project(matrix, 2) / w, 1e-12) << w;
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
