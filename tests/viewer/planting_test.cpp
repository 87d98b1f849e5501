#include "tests/motion/moving_files.h"
#include "tests/viewer/showing.h"
#include "viewer/render_command.h"
#include "viewer/viewer.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace
{
using TW2::viewer::Planting;
using TW2::viewer::Viewer;
using Vector = M_Vector3Template<float>;

/// The sample's walker, one and three quarters high, with legs from thigh_left to foot_left and on the right.
class ViewerPlanting : public testing::Test
{
protected:
    void run(const std::vector<std::string>& lines) { m_viewer.run(lines); }
    Vector placeOf(const char* bone)
    {
        const auto index = static_cast<unsigned int>(m_viewer.getObject()->findBone(bone));
        return m_viewer.getObject()->getSkeleton().getMesh(index)->getObjectToWorldMatrix().getTranslation();
    }
    std::array<Vector, 2> getFeet() { return {placeOf("foot_left"), placeOf("foot_right")}; }
    std::vector<support::Matrix> getPose() { return support::takePose(m_viewer.getObject()->getObject()); }
    float heightAboveGround(const Vector& place)
    {
        const float rise = std::tan(m_viewer.getSlope().m_fDegrees * 0.0174532925F);
        const float towards = m_viewer.getSlope().m_fTowards * 0.0174532925F;
        return place.y - rise * (std::sin(towards) * place.x - std::cos(towards) * place.z);
    }

    support::Showing m_viewer{{}, TW2_SAMPLE "/walker.script"};
};

TEST_F(ViewerPlanting, FeetAreAsHighAboveASlopeAsTheyWereAboveFlatGround)
{
    for (const char* clip : {"clip walk", "clip run", "clip idle"})
    {
        for (const char* seek : {"seek 0", "seek 0.15", "seek 0.4", "seek 0.6"})
        {
            run({clip, seek, "plant off", "slope 0"});
            const std::array<Vector, 2> flat = getFeet();
            for (const char* slope : {"slope 10 0", "slope -12 0", "slope 8 70"})
            {
                run({slope, "plant on"});
                const std::array<Vector, 2> feet = getFeet();
                for (std::size_t i = 0; i < feet.size(); ++i)
                {
                    EXPECT_NEAR(heightAboveGround(feet[i]), flat[i].y, 2e-3F) << clip << ", " << seek << ", " << slope;
                    EXPECT_LT(m_viewer.getPlanting().getLeft(i), 2e-3F);
                }
                run({"plant off"});
            }
        }
    }
}

TEST_F(ViewerPlanting, FlatGroundChangesNothingAndHalfTheWeightGoesHalfTheWay)
{
    run({"clip walk", "seek 0.3"});
    const auto pose = getPose();
    const float hips = placeOf("hips").y;
    run({"plant on"});
    EXPECT_LT(support::getDifference(getPose(), pose), 1e-4F);
    run({"slope 15 0"});
    const float all = placeOf("hips").y - hips;
    EXPECT_LT(all, -0.02F) << "the hips go with the lower foot";
    EXPECT_FLOAT_EQ(m_viewer.getPlanting().getPelvisShift(), all);
    run({"plant-weight 0.5"});
    EXPECT_NEAR(placeOf("hips").y - hips, 0.5F * all, 1e-4F);
    run({"plant off"});
    EXPECT_TRUE(support::isSame(getPose(), pose)) << "the slope alone poses nobody";
}

TEST(FootHeights, AreThoseOfTheLowestMomentOfTheFirstAnimation)
{
    support::ObjectFiles files;
    files.addMesh("hips", "", support::Matrix::translation({0, 3, 0}));
    files.addMesh("thigh", "hips");
    files.addMesh("shin", "thigh", support::Matrix::translation({0, -1, -0.2F}));
    files.addMesh("foot", "shin", support::Matrix::translation({0, -1, 0.2F}));
    TW2::KeyframeAnimationChunk down = support::makeTrack("hips", 0.0F);
    down.keys[0].matrix.setTranslation({0, 2.6F, 0});
    down.keys[1].matrix.setTranslation({0, 2.1F, 0});
    files.addAnimation(0, {down});
    support::Showing viewer({}, files.writeScript());
    for (const char* seek : {"seek 0", "seek 0.5", "seek 1"})
    {
        viewer.run({"plant off", seek});
        const auto pose = support::takePose(viewer.getObject()->getObject());
        viewer.run({"plant on"});
        EXPECT_LT(support::getDifference(support::takePose(viewer.getObject()->getObject()), pose), 1e-4F) << seek;
    }
}

TEST_F(ViewerPlanting, WhatTravelsGoesUpTheSlopeWithItsFeetOnIt)
{
    run({"play on", "clip walk", "mixer on", "plant on", "slope 10", "crowd 3", "travel on"});
    for (int i = 0; i < 60; ++i)
    {
        m_viewer.update(1.0 / 30.0);
    }
    const Vector place = m_viewer.getObject()->getObject().getPosition();
    EXPECT_LT(place.z, -1.0F);
    EXPECT_NEAR(heightAboveGround(place), 0.0F, 1e-4F);
    EXPECT_GT(m_viewer.getCamera().m_vTarget.y, 0.7F + 0.9F * place.y) << "the eye goes up with it";
    for (const auto& copy : m_viewer.getCrowd().getCopies())
    {
        EXPECT_NEAR(heightAboveGround(copy->getPosition()), 0.0F, 1e-5F);
    }
    const std::array<Vector, 2> feet = getFeet();
    EXPECT_LT(std::min(heightAboveGround(feet[0]), heightAboveGround(feet[1])), 0.12F);
    run({"plant off", "plant on"});
    EXPECT_NEAR(getFeet()[0].y, feet[0].y, 1e-4F) << "measured up there";
    run({"mixer off"});
    EXPECT_EQ(m_viewer.getObject()->getObject().getPosition().y, 0.0F);
}

TEST_F(ViewerPlanting, AFileLoadedAgainKeepsItsFeetOnTheGroundAndAnotherOneBeginsOnFlatGround)
{
    run({"leg foot_left", "leg foot_left", "slope 9 45", "reload"});
    ASSERT_EQ(m_viewer.getPlanting().getLegs(), (std::vector<Planting::Leg>{{"thigh_left", "foot_left"}}));
    EXPECT_EQ(m_viewer.getSlope().m_fDegrees, 9.0F);
    EXPECT_EQ(listWhatRenderLeavesOut(m_viewer), "the feet on the ground, the slope of the ground");
    m_viewer.open(TW2_SAMPLE "/sprout.script");
    EXPECT_FALSE(m_viewer.getPlanting().isOn());
    EXPECT_EQ(m_viewer.getSlope().m_fDegrees, 0.0F);
}

TEST_F(ViewerPlanting, TheWalkersLegsAreFound)
{
    run({"plant"});
    EXPECT_EQ(m_viewer.getPlanting().getLegs(),
              (std::vector<Planting::Leg>{{"thigh_left", "foot_left"}, {"thigh_right", "foot_right"}}));
    EXPECT_EQ(m_viewer.getPlanting().getPelvis(), "hips");
    run({"plant"});
    EXPECT_FALSE(m_viewer.getPlanting().isOn());
}

/// Bones in the order of their list, each "name<parent".
std::vector<Planting::Leg> findLegs(const std::vector<std::string>& bones)
{
    support::ObjectFiles files;
    for (const std::string& bone : bones)
    {
        const std::size_t sign = bone.find('<');
        files.addMesh(bone.substr(0, sign), bone.substr(sign + 1), support::Matrix::translation({0, 1, 0}));
    }
    Viewer viewer;
    viewer.open(files.writeScript());
    return Planting::findLegs(*viewer.getObject());
}

TEST(Legs, AreFoundByTheNamesThatToolsGive)
{
    using Legs = std::vector<Planting::Leg>;
    EXPECT_EQ(findLegs({"Hips<", "LeftUpLeg<Hips", "LeftLeg<LeftUpLeg", "LeftFoot<LeftLeg", "LeftToeBase<LeftFoot"}),
              (Legs{{"LeftUpLeg", "LeftFoot"}}));
    EXPECT_EQ(findLegs({"pelvis<", "thigh_l<pelvis", "thigh_twist_l<thigh_l", "calf_l<thigh_l", "foot_l<calf_l",
                        "ball_l<foot_l", "ik_foot_root<pelvis", "ik_foot_l<ik_foot_root"}),
              (Legs{{"thigh_l", "foot_l"}}));
    EXPECT_EQ(findLegs({"Hip<", "RightHip<Hip", "RightKnee<RightHip", "RightAnkle<RightKnee", "RightFoot<RightAnkle"}),
              (Legs{{"RightHip", "RightAnkle"}}))
        << "the first of two, two bones below its leg's";
    EXPECT_TRUE(findLegs({"root<", "foot<root", "spine<root", "hand<spine"}).empty());
}
}  // namespace
