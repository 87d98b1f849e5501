// The sample's walker moves as a person does: what its clips are used to show elsewhere is true of it.

#include <tw2/motion/animation_clock.h>
#include <tw2/motion/root_motion.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/file.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace TW2;
using Vector = M_Vector3Template<double>;

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
constexpr Vector s_toes{0.0, 0.0, 0.0};
constexpr Vector s_heel{0.0, -0.075, -0.080};  // from the ankle
}  // namespace

TEST(Walker, AFootThatHasComeDownStandsStillOnTheGround)
{
    const S_DirectoryGuard back;
    File.changeDirectory(TW2_SAMPLE);
    TW_ObjectAnimation walker("walker.script", "skeleton", nullptr, false);
    for (const Gait& gait : s_gaits)
    {
        const int clip = walker.findAnimation(gait.m_szName);
        const TW_RootMotion motion(walker, clip);
        const double round = static_cast<double>(walker.getAnimationPeriod(clip));
        EXPECT_NEAR(-motion.getLoopTravel().m_vTranslation.z / round, gait.m_dMetresPerSecond, 1e-3);
        const auto events = walker.getAnimationEvents(clip);
        ASSERT_EQ(events.size(), 2U);
        for (const TW_AnimationEvent& step : events)
        {
            const std::string side = &step == &events[0] ? "left" : "right";
            EXPECT_EQ(step.m_strName, ("step_" + side).c_str());
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
                    walker.animateObject(clip, static_cast<float>(std::fmod(time + round, round)), nullptr);
                    const auto bone =
                        TW_Travel::ofMatrix(walker.getMeshByName(phase.m_strBone.c_str())->getObjectToWorldMatrix());
                    return motion.getTravel(0.0, time).transformPoint(bone.transformPoint(phase.m_vPoint));
                };
                const Vector stands = pointAt(phase.m_dFrom);
                EXPECT_GT(pointAt(-0.06 / round).y, stands.y + 0.01) << "in the air before, " << phase.m_strBone;
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
