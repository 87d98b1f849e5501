#include <platform/math/float4_scalar.h>
#include <platform/math/four_matrices.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace
{
using Matrix = M_Matrix4x3Template<float>;
using ScalarMatrices = M_FourMatricesTemplate<M_Float4Scalar>;

// Ordinary values mixed with the ones at which instruction sets might differ.
float anyValue(std::mt19937& random)
{
    static constexpr float odd[] = {0.0F, -0.0F, 1e-45F, -1e-38F, 1.0F, -1.0F, 3e38F, -1e20F, 1e-20F};
    if (random() % 4 == 0)
    {
        return odd[random() % std::size(odd)];
    }
    return std::uniform_real_distribution<float>(-2.0F, 2.0F)(random);
}

std::array<Matrix, 4> anyMatrices(std::mt19937& random)
{
    std::array<Matrix, 4> matrices;
    for (Matrix& matrix : matrices)
    {
        for (std::size_t e = 0; e < 12; ++e)
        {
            matrix.data()[e] = anyValue(random);
        }
        // Equal and zero rows have no orthonormal completion.
        if (random() % 8 == 0)
        {
            matrix.setRow(1, matrix.getRow(0));
        }
        if (random() % 8 == 0)
        {
            matrix.setRow(static_cast<int>(random() % 3), {});
        }
    }
    return matrices;
}

// The same bits; one NaN is like another.
void expectSameBits(const Matrix& actual, const Matrix& expected, const char* what)
{
    for (std::size_t e = 0; e < 12; ++e)
    {
        const float a = actual.data()[e];
        const float b = expected.data()[e];
        EXPECT_TRUE(std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)))
            << what << ", element " << e << ": " << a << " instead of " << b;
    }
}

// Runs one operation of M_FourMatrices on four matrices.
template <typename Four, typename Operation>
std::array<Matrix, 4> apply(std::array<Matrix, 4> matrices, Operation operation)
{
    float* const places[4] = {matrices[0].data(), matrices[1].data(), matrices[2].data(), matrices[3].data()};
    Four four;
    four.load(places);
    operation(four);
    four.store(places);
    return matrices;
}

Matrix correctedAlone(Matrix matrix, bool orthonormal)
{
    M_Rows<float> rows{{matrix.getRow(0), matrix.getRow(1), matrix.getRow(2)}};
    if (orthonormal)
    {
        rows.orthonormalize();
    }
    else
    {
        rows.normalize();
    }
    for (int r = 0; r < 3; ++r)
    {
        matrix.setRow(r, rows.m_rows[r]);
    }
    return matrix;
}
}  // namespace

TEST(FourMatrices, FourAtATimeGiveTheBitsOfOneAtATimeAndOfPlainCode)
{
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round)
    {
        const auto matrices = anyMatrices(random);
        for (const bool orthonormal : {false, true})
        {
            const auto change = [orthonormal](auto& four)
            { orthonormal ? four.orthonormalizeRows() : four.normalizeRows(); };
            const auto fast = apply<M_FourMatrices>(matrices, change);
            const auto plain = apply<ScalarMatrices>(matrices, change);
            for (std::size_t i = 0; i < 4; ++i)
            {
                expectSameBits(fast[i], plain[i], "plain code");
                expectSameBits(fast[i], correctedAlone(matrices[i], orthonormal), "one at a time");
            }
        }
        Matrix fast;
        Matrix plain;
        M_multiply(matrices[0], matrices[1], fast);
        M_multiply<M_Float4Scalar>(matrices[0].data(), matrices[1].data(), plain.data());
        expectSameBits(fast, matrices[0] * matrices[1], "product");
        expectSameBits(plain, matrices[0] * matrices[1], "plain product");
        for (const int operand : {0, 1})
        {
            auto inPlace = matrices;
            M_multiply(inPlace[0], inPlace[1], inPlace[static_cast<std::size_t>(operand)]);
            expectSameBits(inPlace[static_cast<std::size_t>(operand)], fast, "product in place");
        }
    }
}

TEST(FourMatrices, MasksAndZeroTestsAgreeWithPlainCode)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float a[4] = {0.0F, -0.0F, nan, 2.0F};
    const float b[4] = {1.0F, 0.0F, nan, 1.0F};
    const auto answers = [&]<typename Float4>(Float4)
    {
        std::array<float, 16> result{};
        const auto x = Float4::load(a);
        const auto y = Float4::load(b);
        whereNotZero(x, y, Float4(7.0F)).store(result.data());
        select(isEqual(x, y), Float4(1.0F), Float4(2.0F)).store(result.data() + 4);
        select(isLess(x, y), Float4(3.0F), Float4(4.0F)).store(result.data() + 8);
        select(both(isEqual(x, x), isLess(y, x)), Float4(5.0F), Float4(6.0F)).store(result.data() + 12);
        result[2] = any(isEqual(x, y)) && !any(isLess(x, x)) ? 1.0F : 0.0F;
        return result;
    };
    const std::array<float, 16> expected = {7, 7, 1, 1, 2, 1, 2, 2, 3, 4, 4, 4, 6, 6, 6, 5};
    EXPECT_EQ(answers(M_Float4()), expected);
    EXPECT_EQ(answers(M_Float4Scalar()), expected);
}

TEST(FourMatrices, ALastGroupOfFewerThanFourLeavesTheOthersAlone)
{
    std::array<Matrix, 4> matrices;
    const float* const from[4] = {matrices[0].data(), matrices[0].data(), matrices[0].data(), matrices[0].data()};
    M_FourMatrices four;
    four.load(from);
    for (Matrix& matrix : matrices)
    {
        matrix.setTranslation({9.0F, 9.0F, 9.0F});
    }
    float* const to[4] = {matrices[0].data(), matrices[1].data(), matrices[2].data(), matrices[3].data()};
    four.store(to, 2);
    EXPECT_EQ(matrices[1], Matrix());
    EXPECT_EQ(matrices[2].getTranslation(), (M_Vector3Template<float>{9.0F, 9.0F, 9.0F}));
}
