#include <platform/math/float4.h>
#include <platform/math/float4_scalar.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace
{
using Lanes = std::array<float, 4>;

/// The same bits, or both not a number.
void expectSame(const Lanes& is, const Lanes& expected, const char* what)
{
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_TRUE(std::bit_cast<std::uint32_t>(is[i]) == std::bit_cast<std::uint32_t>(expected[i]) ||
                    (std::isnan(is[i]) && std::isnan(expected[i])))
            << what << " in lane " << i << ": " << is[i] << ", not " << expected[i];
    }
}

template <typename Float4>
Lanes getLanes(const Float4& value)
{
    Lanes lanes{};
    value.store(lanes.data());
    return lanes;
}

template <typename Operation>
Lanes makeLanes(Operation operation)
{
    return {operation(0), operation(1), operation(2), operation(3)};
}

template <typename Float4>
class FourFloats : public testing::Test
{
};
using Kinds = testing::Types<M_Float4, M_Float4Scalar>;
TYPED_TEST_SUITE(FourFloats, Kinds);
}  // namespace

TYPED_TEST(FourFloats, AreEachWhatOneWouldBe)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr std::array<float, 11> values{
        0.0F, 1.5F, -0.0F, 3e38F, -2.25F, 1e-40F, infinity, 0.3F, std::numeric_limits<float>::quiet_NaN(), 7.0F, 1.5F};
    const Lanes ones{1.0F, 2.0F, 3.0F, 4.0F};
    const Lanes others{5.0F, 6.0F, 7.0F, 8.0F};
    for (std::size_t first = 0; first < values.size(); ++first)
    {
        for (std::size_t second = 0; second < values.size(); ++second)
        {
            const Lanes x = makeLanes([&](std::size_t i) { return values[(first + i) % values.size()]; });
            const Lanes y = makeLanes([&](std::size_t i) { return values[(second + 3 * i) % values.size()]; });
            const auto a = TypeParam::load(x.data());
            const TypeParam b(y[0], y[1], y[2], y[3]);
            expectSame(getLanes(a + b), makeLanes([&](std::size_t i) { return x[i] + y[i]; }), "sum");
            expectSame(getLanes(a - b), makeLanes([&](std::size_t i) { return x[i] - y[i]; }), "difference");
            expectSame(getLanes(a * b), makeLanes([&](std::size_t i) { return x[i] * y[i]; }), "product");
            expectSame(getLanes(a / b), makeLanes([&](std::size_t i) { return x[i] / y[i]; }), "quotient");
            expectSame(getLanes(sqrt(a)), makeLanes([&](std::size_t i) { return std::sqrt(x[i]); }), "root");
            const auto expectMask = [&](const auto& mask, const auto& holds, const char* what)
            {
                const auto chosen = select(mask, TypeParam::load(ones.data()), TypeParam::load(others.data()));
                expectSame(getLanes(chosen), makeLanes([&](std::size_t i) { return holds(i) ? ones[i] : others[i]; }),
                           what);
                EXPECT_EQ(any(mask), holds(0) || holds(1) || holds(2) || holds(3)) << what;
            };
            const auto equal = [&](std::size_t i) { return x[i] == y[i]; };
            const auto less = [&](std::size_t i) { return x[i] < y[i]; };
            const auto positive = [&](std::size_t i) { return 0.0F < x[i]; };
            expectMask(isEqual(a, b), equal, "equality");
            expectMask(isLess(a, b), less, "order");
            expectMask(
                both(isLess(a, b), isLess(TypeParam(), a)), [&](std::size_t i) { return less(i) && positive(i); },
                "both");
            expectSame(getLanes(whereNotZero(a, TypeParam(9.0F), b)),
                       makeLanes([&](std::size_t i) { return x[i] != 0.0F ? 9.0F : y[i]; }), "zero");
        }
    }
}

TYPED_TEST(FourFloats, ComeFromFourPlacesAndGoBackToAsManyAsAsked)
{
    std::array<Lanes, 4> places{};
    std::array<std::array<float, 6>, 4> memory{};
    std::array<const float*, 4> from{};
    for (std::size_t i = 0; i < 4; ++i)
    {
        places[i] = makeLanes([i](std::size_t k) { return static_cast<float>(10 * i + k); });
        std::copy(places[i].begin(), places[i].end(), memory[i].begin() + 2);
        from[i] = memory[i].data();
    }
    TypeParam values[4];
    M_loadLanes(from.data(), 2, values);
    for (std::size_t k = 0; k < 4; ++k)
    {
        expectSame(getLanes(values[k]), makeLanes([&](std::size_t i) { return places[i][k]; }), "float of each place");
    }
    for (std::size_t count = 1; count <= 4; ++count)
    {
        std::array<std::array<float, 5>, 4> written{};
        std::array<float*, 4> to{written[0].data(), written[1].data(), written[2].data(), written[3].data()};
        M_storeLanes(values, to.data(), 1, count);
        for (std::size_t i = 0; i < 4; ++i)
        {
            EXPECT_EQ(written[i][0], 0.0F);
            expectSame({written[i][1], written[i][2], written[i][3], written[i][4]}, i < count ? places[i] : Lanes{},
                       "place");
        }
    }
}
