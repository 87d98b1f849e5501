// The sample's walker moves as a person does: what its clips are used to show elsewhere is true of it.

#include "tests/sample/sample_walker.h"

#include <tw2/motion/animation_clock.h>
#include <tw2/motion/root_motion.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

using namespace TW2;
using support::SampleWalker;
using Vector = SampleWalker::Vector;

namespace
{
/// A clip that goes somewhere, and how long a foot bears, as parts of a round after its step.
struct Gait
{
    const char* m_szName;
    double m_dMetresPerSecond;
    double m_dHeelEnd;    ///< until then it stands on its heel
    double m_dToesEnd;    ///< until then on its toes
    double m_dLooseness;  ///< metres that a foot may move between two keys
};
constexpr Gait s_gaits[] = {{"walk", 1.12, 0.085, 0.595, 0.0015}, {"run", 2.64, 0.035, 0.335, 0.003}};
constexpr const char* s_clips[] = {"idle", "walk", "run", "wave"};
constexpr Vector s_toes{0.0, 0.0, 0.0};
constexpr Vector s_heel{0.0, -0.075, -0.080};  // from the ankle
}  // namespace

TEST(Walker, AFootThatBearsStandsStillOnTheGround)
{
    SampleWalker walker;
    for (const Gait& gait : s_gaits)
    {
        const int clip = walker.find(gait.m_szName);
        const TW_RootMotion motion(walker.m_object, clip);
        const double round = static_cast<double>(walker.m_object.getAnimationPeriod(clip));
        EXPECT_NEAR(-motion.getLoopTravel().m_vTranslation.z / round, gait.m_dMetresPerSecond, 1e-3);
        for (const TW_AnimationEvent& step : walker.m_object.getAnimationEvents(clip))
        {
            const std::string side(step.m_strName.begin() + 5, step.m_strName.end());
            struct Phase
            {
                std::string m_strBone;
                Vector m_vPoint;
                double m_dFrom;
                double m_dTo;
            };
            for (const Phase& phase : {Phase{"foot_" + side, s_heel, 0.0, gait.m_dHeelEnd},
                                       Phase{"toes_" + side, s_toes, gait.m_dHeelEnd, gait.m_dToesEnd}})
            {
                const auto pointAt = [&](double part)
                {
                    const double time = step.m_dFrame / 60.0 + part * round;
                    walker.pose(clip, std::fmod(time, round));
                    const Vector inObject = walker.getPoint(phase.m_strBone, phase.m_vPoint);
                    return motion.getTravel(0.0, time).transformPoint(inObject);
                };
                const Vector stands = pointAt(phase.m_dFrom);
                for (double part = phase.m_dFrom; part < phase.m_dTo; part += 0.004)
                {
                    const Vector there = pointAt(part);
                    EXPECT_LT((there - stands).length(), gait.m_dLooseness)
                        << gait.m_szName << ' ' << phase.m_strBone << ' ' << part << ": " << there.x - stands.x << ' '
                        << there.y - stands.y << ' ' << there.z - stands.z;
                }
            }
        }
    }
}

TEST(Walker, AStepIsMarkedWhenTheFootComesDown)
{
    SampleWalker walker;
    for (const Gait& gait : s_gaits)
    {
        const int clip = walker.find(gait.m_szName);
        const auto events = walker.m_object.getAnimationEvents(clip);
        ASSERT_EQ(events.size(), 2U);
        EXPECT_EQ(events[0].m_strName, "step_left");
        EXPECT_EQ(events[1].m_strName, "step_right");
        for (const TW_AnimationEvent& step : events)
        {
            const std::string foot = "foot_" + std::string(step.m_strName.begin() + 5, step.m_strName.end());
            const double time = step.m_dFrame / 60.0;
            walker.pose(clip, time - 0.06);
            EXPECT_GT(walker.getLowest(foot), 0.012) << gait.m_szName << ' ' << foot;
            walker.pose(clip, time);
            EXPECT_NEAR(walker.getLowest(foot), 0.0, 0.006) << gait.m_szName << ' ' << foot;
        }
    }
}

TEST(Walker, NothingSinksIntoTheGround)
{
    SampleWalker walker;
    for (const char* name : s_clips)
    {
        const int clip = walker.find(name);
        const double length = static_cast<double>(walker.m_object.getAnimationPeriod(clip));
        for (double time = 0.0; time < length; time += 1.0 / 45.0)
        {
            walker.pose(clip, time);
            const double lowest = std::min(walker.getLowest("foot_left"), walker.getLowest("foot_right"));
            EXPECT_GT(lowest, -0.006) << name << ' ' << time;
            EXPECT_TRUE(lowest < 0.006 || name == std::string("run")) << name << ' ' << time << ": " << lowest;
        }
    }
}

TEST(Walker, ALoopGoesOnWithoutAJerk)
{
    SampleWalker walker;
    for (const char* name : s_clips)
    {
        const int clip = walker.find(name);
        const int frames = static_cast<int>(walker.m_object.getAnimationCourse(clip).m_dEndFrame);
        const auto poseAt = [&](int frame)
        {
            walker.m_object.animateObjectFrame(clip, static_cast<float>(frame), nullptr);
            return walker.getTurns();
        };
        const auto first = poseAt(0);
        const auto last = poseAt(frames);
        for (std::size_t bone = 0; bone < first.size(); ++bone)
        {
            EXPECT_LT((first[bone] * last[bone].inverse()).getDegrees(), 1e-3) << name << ' ' << bone;
        }
        // How much a bone's turn from frame to frame differs from the one before: over the seam as little as elsewhere.
        double most = 0.0;
        double atSeam = 0.0;
        for (int frame = 0; frame < frames; ++frame)
        {
            const auto before = poseAt((frame + frames - 1) % frames);
            const auto now = poseAt(frame);
            const auto after = poseAt(frame + 1);
            for (std::size_t bone = 0; bone < now.size(); ++bone)
            {
                const double bend =
                    (now[bone].inverse() * after[bone] * (before[bone].inverse() * now[bone]).inverse()).getDegrees();
                (frame == 0 ? atSeam : most) = std::max(frame == 0 ? atSeam : most, bend);
            }
        }
        EXPECT_LE(atSeam, most) << name;
    }
}

TEST(Walker, TheSkinIsNotTornByAnyMotion)
{
    SampleWalker walker;
    const std::vector<double> rest = walker.getSideLengths();
    for (const char* name : s_clips)
    {
        const int clip = walker.find(name);
        const double length = static_cast<double>(walker.m_object.getAnimationPeriod(clip));
        for (double time = 0.0; time < length; time += length / 16.0)
        {
            walker.pose(clip, time);
            const std::vector<double> now = walker.getSideLengths();
            double most = 1.0;
            for (std::size_t side = 0; side < rest.size(); ++side)
            {
                most = std::max(most, rest[side] < 0.004 ? 1.0 : now[side] / rest[side]);
            }
            EXPECT_LT(most, 2.5) << name << ' ' << time;
        }
    }
}
