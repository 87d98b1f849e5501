#include <platform/math/inverse_sqrt.h>
#include <platform/math/math_init.h>
#include <platform/runtime/solace_init.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

TEST(FastInverseSqrt, IsWithin20MillionthsOfTheTruthOverTheWholeRange)
{
    double worst = 0.0;
    for (std::uint32_t bits = 0x00800000; bits < 0x7F800000; bits += 4093)
    {
        const auto x = std::bit_cast<float>(bits);
        worst = std::max(worst, std::fabs(M_fastInverseSqrt(x) * std::sqrt(static_cast<double>(x)) - 1.0));
    }
    EXPECT_LT(worst, 2e-5);
    EXPECT_TRUE(std::isfinite(M_fastInverseSqrt(0.0F)));
    EXPECT_TRUE(std::isfinite(M_fastInverseSqrt(std::numeric_limits<float>::denorm_min())));
    EXPECT_TRUE(std::isfinite(M_fastInverseSqrt(std::numeric_limits<float>::max())));
}

TEST(FastInverseSqrt, EachTableEntryIsTheStartOfAnExactResultOfItsBucket)
{
    for (std::uint32_t i = 0; i < 256; ++i)
    {
        // Exponent field 127 is odd and 128 even; the lowest exponent bit is bit 7 of the index.
        const std::uint32_t first = ((i < 128 ? 128u : 127u) << 23) | ((i & 127u) << 16);
        const auto byteOf = [](std::uint32_t bits)
        {
            const double exact = 1.0 / std::sqrt(static_cast<double>(std::bit_cast<float>(bits)));
            return static_cast<int>(std::min(exact * 2.0 - 1.0, 0.999) * 256.0);
        };
        EXPECT_LE(M_LUTInverseSqrt[i], byteOf(first)) << i;
        EXPECT_GE(M_LUTInverseSqrt[i], byteOf(first + 0xFFFF)) << i;
    }
}

TEST(FastInverseSqrt, TheZeroVectorHasLengthZero)
{
    EXPECT_EQ(M_fastLength({}), 0.0F);
    EXPECT_EQ(M_fastLength({1e-30F, 0.0F, 0.0F}), 0.0F);
    EXPECT_NEAR(M_fastLength({2.0F, -3.0F, 6.0F}), 7.0F, 1.4e-4F);
}

template <typename Init>
void expectRunsWhileAnObjectLives()
{
    const int before = Init::getUserCount();
    EXPECT_GT(before, 0) << "the library's";
    {
        const Init init;
        EXPECT_EQ(Init::getUserCount(), before + 1);
    }
    EXPECT_EQ(Init::getUserCount(), before);
}

TEST(MathInit, TheLayersRunWhileAnInitObjectLives)
{
    expectRunsWhileAnObjectLives<M_MathInit>();
    expectRunsWhileAnObjectLives<S_SolaceInit>();
}
