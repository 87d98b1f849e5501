// What the example prints about the walker on its way is what happens there.

#ifdef TW2_WALK_ALONG_PATH
#include "tests/support/run_command.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace
{
/// A line of the example.
struct Step
{
    double m_dSeconds = 0.0;
    std::string m_strEvent;
    std::string m_strAnimation;
    double m_dWeight = 0.0;  // percent
    double m_dX = 0.0;
    double m_dY = 0.0;
    double m_dZ = 0.0;
    double m_dAstray = 0.0;  // degrees
};

std::vector<Step> readSteps(const std::string& output)
{
    std::vector<Step> steps;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
    {
        Step step;
        std::string word;
        std::istringstream words(line);
        words >> step.m_dSeconds >> word >> step.m_strEvent >> step.m_strAnimation >> step.m_dWeight >> word >> word >>
            step.m_dX >> step.m_dY >> step.m_dZ >> word >> word >> word >> word >> step.m_dAstray;
        EXPECT_TRUE(words) << line;
        steps.push_back(step);
    }
    return steps;
}
}  // namespace

TEST(WalkAlongPath, ItsStepsAlternateOnTheGroundUpToTheEnd)
{
    const support::CommandResult result = support::runProgram(TW2_WALK_ALONG_PATH, {TW2_SAMPLE "/walker.script"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const std::vector<Step> steps = readSteps(result.output);
    ASSERT_GT(steps.size(), 18U) << result.output;
    int both = 0;
    double weight = steps[0].m_dWeight;
    for (std::size_t i = 1; i < steps.size(); ++i)
    {
        const Step& last = steps[i - 1];
        const Step& step = steps[i];
        EXPECT_NEAR(step.m_dY, 0.15 * step.m_dX, 0.006) << "on the ground, " << i;
        if (step.m_dSeconds == last.m_dSeconds)
        {
            // Within the fade both animations step, at once and with the same foot.
            ++both;
            EXPECT_EQ(step.m_strEvent, last.m_strEvent);
            EXPECT_NE(step.m_strAnimation, last.m_strAnimation);
            weight += step.m_dWeight;
            continue;
        }
        EXPECT_NEAR(weight, 100.0, 1.0);
        weight = step.m_dWeight;
        EXPECT_NE(step.m_strEvent, last.m_strEvent) << "left and right, " << i;
        EXPECT_TRUE(last.m_strAnimation == "walk" || step.m_strAnimation == "run") << "it goes on running";
        const double length = std::hypot(step.m_dX - last.m_dX, step.m_dZ - last.m_dZ);
        const double seconds = step.m_dSeconds - last.m_dSeconds;
        if (step.m_strAnimation == last.m_strAnimation && step.m_dWeight + last.m_dWeight == 200.0)
        {
            // Half a round; a corner shortens it, a step falls on the next frame.
            const bool walks = step.m_strAnimation == "walk";
            EXPECT_NEAR(seconds, walks ? 0.5 : 1.0 / 3.0, 0.021) << i;
            EXPECT_LE(length, (walks ? 0.56 : 0.88) + 0.06) << i;
            EXPECT_GE(length, (walks ? 0.45 : 0.75)) << i;
        }
        else
        {
            EXPECT_GT(seconds, 0.33) << i;
            EXPECT_LT(seconds, 0.51) << i;
        }
    }
    EXPECT_GE(both, 1) << "it fades from walk to run in step";
    EXPECT_EQ(steps.front().m_strAnimation, "walk");
    EXPECT_EQ(steps.back().m_strAnimation, "run");
    EXPECT_NEAR(steps.back().m_dX, 11.0, 1.2) << "up to the end of the path";
    EXPECT_NEAR(steps.back().m_dZ, -7.0, 0.1);
    for (const Step& step : steps)
    {
        // In front of it what it looks at is seen; the neck turns only so far.
        EXPECT_TRUE(step.m_dX > 4.5 || step.m_dAstray < 1.0) << step.m_dX << ": " << step.m_dAstray;
    }
    EXPECT_GT(steps.back().m_dAstray, 30.0);
}
#endif
