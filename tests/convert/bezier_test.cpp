#include "convert/bezier.h"

#include "convert/key_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using TW2::convert::bezier;
using TW2::convert::blendBezier;
using TW2::convert::findKeyBehind;

TEST(Cubic, IsWhereItsParameterSaysAtItsOwnTimes)
{
    // Even handles, long and short ones, upright tangents at the ends and in the middle.
    const double handles[][2]{{1.0 / 3.0, 2.0 / 3.0}, {0.9, 0.95}, {0.01, 0.02}, {0.0, 1.0}, {1.0, 0.0}, {1.0, 1.0}};
    for (const auto& [leaving, arriving] : handles)
    {
        for (int i = 0; i <= 100; ++i)
        {
            const double s = i / 100.0;
            const double time = bezier(s, 0.0, leaving, arriving, 1.0);
            const double value = blendBezier({0.0, 3.0}, {leaving, -2.0}, {arriving, 7.0}, {1.0, 4.0}, time);
            // Where the time hardly moves, its last bits say little about the value.
            const bool upright = s > 0.49 && s < 0.51;
            EXPECT_NEAR(value, bezier(s, 3.0, -2.0, 7.0, 4.0), upright ? 1e-3 : 1e-6)
                << leaving << ", " << arriving << " at " << s;
        }
    }
}

TEST(KeySearch, FindsTheSameKeyWhetherKeysLieEvenlyOrNot)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> gap(0.0, 1.0);
    for (int round = 0; round < 50; ++round)
    {
        std::vector<double> times{-1.0};
        for (int i = 0; i < round; ++i)
        {
            const double even = 0.25;
            times.push_back(times.back() + (round % 2 == 0 ? even : i % 5 == 0 ? 0.0 : gap(random)));
        }
        std::vector<double> asked = times;
        for (const double time : times)
        {
            asked.push_back(time - 1e-9);
            asked.push_back(time + 1e-9);
            asked.push_back(time + 0.1);
        }
        for (const double time : asked)
        {
            const auto expected = std::upper_bound(times.begin(), times.end(), time) - times.begin();
            EXPECT_EQ(findKeyBehind(times, time), static_cast<std::size_t>(expected)) << round << " keys, " << time;
        }
    }
    EXPECT_EQ(findKeyBehind({}, 1.0), 0U);
}
