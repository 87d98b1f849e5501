#include "viewer/playback.h"

#include "viewer/failure.h"
#include "viewer/loaded_object.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <memory>

namespace
{
using TW2::viewer::Failure;
using TW2::viewer::LoadedObject;
using TW2::viewer::Playback;
using Matrix = M_Matrix4x3Template<float>;

constexpr int sway = 1;
constexpr int dance = 2;

/// The project's sample under a playback: 61 frames of "sway", 41 of "dance", both at 30 per second.
class PlaybackTest : public testing::Test
{
protected:
    void SetUp() override { m_playback.reset(m_object.getClips()); }

    /// The local matrix of a bone after `apply`.
    Matrix pose(unsigned int bone, double offset = 0.0)
    {
        m_playback.apply(m_object.getObject(), offset);
        return m_object.getObject().getMesh(bone)->getMatrix();
    }

    /// What the library itself gives.
    Matrix played(unsigned int bone, int animation, float time)
    {
        m_object.getObject().animateObject(animation, time, nullptr);
        return m_object.getObject().getMesh(bone)->getMatrix();
    }

    LoadedObject m_object{TW2_SAMPLE "/sprout.script"};
    Playback m_playback;
};

TEST_F(PlaybackTest, BeginsWithTheFirstClipThatMovesAndComesRoundAfterItsPeriod)
{
    EXPECT_EQ(m_playback.getMainAnimation(), sway);
    EXPECT_DOUBLE_EQ(m_playback.getPeriod(), 2.0);
    m_playback.seek(1.75);
    m_playback.update(0.5);
    EXPECT_NEAR(m_playback.getTime(), 0.25, 1e-12);
    m_playback.setSpeed(-1.0);
    m_playback.update(0.5);
    EXPECT_NEAR(m_playback.getTime(), 1.75, 1e-12) << "backwards over the seam";
    m_playback.setPlaying(false);
    m_playback.update(0.5);
    EXPECT_NEAR(m_playback.getTime(), 1.75, 1e-12) << "paused";
}

TEST_F(PlaybackTest, WithoutLoopingStopsAtTheEndAndBeginsAgainWhenPlayed)
{
    m_playback.setLooping(false);
    m_playback.seek(1.9);
    m_playback.update(0.5);
    EXPECT_DOUBLE_EQ(m_playback.getTime(), 2.0);
    EXPECT_FALSE(m_playback.isPlaying());
    m_playback.setPlaying(true);
    EXPECT_DOUBLE_EQ(m_playback.getTime(), 0.0);
    m_playback.setSpeed(-2.0);
    m_playback.setPlaying(true);
    EXPECT_DOUBLE_EQ(m_playback.getTime(), 2.0) << "backwards it begins at the end";
    m_playback.update(0.25);
    EXPECT_DOUBLE_EQ(m_playback.getTime(), 1.5);
    EXPECT_TRUE(m_playback.isPlaying());
    m_playback.step(100);
    EXPECT_NEAR(m_playback.getFrame(), 60.0, 1e-6);
    m_playback.step(-100);
    EXPECT_NEAR(m_playback.getFrame(), 0.0, 1e-6);
}

TEST_F(PlaybackTest, AnotherObjectIsPlayedAsTheOneBeforeAndAnotherClipAlone)
{
    m_playback.setPlaying(false);
    m_playback.setLooping(false);
    m_playback.setSpeed(99.0);
    EXPECT_EQ(m_playback.getSpeed(), 10.0);
    m_playback.seek(1.0);
    m_playback.setSlot(1, dance, 1.0F);
    m_playback.setSlot(2, 0, 1.0F);
    m_playback.setClip(dance, true);
    EXPECT_EQ(m_playback.getTime(), 1.0);
    EXPECT_EQ(m_playback.getMainAnimation(), dance);
    EXPECT_EQ(m_playback.getSlots()[1].m_iAnimation, -1);
    EXPECT_EQ(m_playback.getSlots()[2].m_iAnimation, -1);
    m_playback.setClip(sway);
    EXPECT_EQ(m_playback.getTime(), 0.0);
    m_playback.seek(1.0);
    m_playback.reset(m_object.getClips());
    EXPECT_FALSE(m_playback.isPlaying());
    EXPECT_FALSE(m_playback.isLooping());
    EXPECT_EQ(m_playback.getSpeed(), 10.0);
    EXPECT_EQ(m_playback.getTime(), 0.0);
    m_playback.setSpeed(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(m_playback.getSpeed(), 1.0);
    m_playback.setLooping(true);
    m_playback.seek(2.0);
    EXPECT_EQ(m_playback.getTime(), 2.0) << "the end itself can be asked for";
    m_playback.seek(-0.5);
    EXPECT_EQ(m_playback.getTime(), 1.5);
    EXPECT_EQ(pose(4, 0.75), played(4, sway, 0.25F)) << "a copy that is ahead comes round earlier";
    EXPECT_EQ(pose(4), played(4, sway, 1.5F));
}

TEST_F(PlaybackTest, StepsFromWholeFrameToWholeFrame)
{
    struct Case
    {
        double m_dFrom;  // frames
        int m_iSteps;
        double m_dTo;
    };
    for (const Case& each :
         {Case{4.0, 1, 5.0}, Case{4.4, 1, 5.0}, Case{4.4, -1, 4.0}, Case{4.0, -1, 3.0}, Case{3.9999, 1, 5.0},
          Case{4.0001, -1, 3.0}, Case{0.0, -1, 59.0}, Case{59.0, 1, 0.0}, Case{1.0, -65, 56.0}})
    {
        m_playback.seek(each.m_dFrom / 30.0);
        m_playback.step(each.m_iSteps);
        EXPECT_NEAR(m_playback.getFrame(), each.m_dTo, 1e-6) << each.m_dFrom << " + " << each.m_iSteps;
        EXPECT_FALSE(m_playback.isPlaying());
    }
    m_playback.setClip(0);
    m_playback.step(1);
    EXPECT_EQ(m_playback.getTime(), 0.0) << "a frame alone is followed by none";
}

TEST_F(PlaybackTest, BlendsByWeightsWhateverTheirSum)
{
    m_playback.seek(0.3);
    m_playback.setSlot(0, sway, 0.5F);
    m_playback.setSlot(1, dance, 1.5F);
    const Matrix blended = pose(4);
    m_object.getObject().crossAnimateObject(sway, 0.3F, 0.25F, dance, 0.3F, nullptr);
    EXPECT_EQ(blended, m_object.getObject().getMesh(4)->getMatrix());

    m_playback.setSlot(2, 0, 2.0F);
    const Matrix three = pose(4);
    m_object.getObject().crossAnimateObject(sway, 0.3F, 0.125F, dance, 0.3F, 0.375F, 0, 0.3F, nullptr);
    EXPECT_EQ(three, m_object.getObject().getMesh(4)->getMatrix());

    // What has no weight plays no part, whichever it is.
    for (const auto& [weights, alone] : {std::pair(std::array{0.5F, 0.0F, 0.0F}, sway),
                                         {{0.0F, 0.5F, 0.0F}, dance},
                                         {{0.0F, 0.0F, 0.5F}, 0},
                                         {{0.0F, 0.0F, 0.0F}, sway}})
    {
        for (std::size_t slot = 0; slot < weights.size(); ++slot)
        {
            m_playback.setSlot(static_cast<int>(slot), std::array{sway, dance, 0}[slot], weights[slot]);
        }
        EXPECT_EQ(pose(4), played(4, alone, 0.3F)) << testing::PrintToString(weights);
    }
    m_playback.setSlot(0, sway, 1.0F);
    m_playback.setSlot(1, -1, 1.0F);
    m_playback.setSlot(2, dance, 1.0F);
    const Matrix outer = pose(4);
    m_object.getObject().crossAnimateObject(sway, 0.3F, 0.5F, dance, 0.3F, nullptr);
    EXPECT_EQ(outer, m_object.getObject().getMesh(4)->getMatrix()) << "the middle one is empty";
    EXPECT_THROW(m_playback.setSlot(3, sway, 1.0F), Failure);
    EXPECT_THROW(m_playback.setSlot(1, 77, 1.0F), Failure);
    EXPECT_THROW(m_playback.setSlot(0, -1, 1.0F), Failure);
}

TEST_F(PlaybackTest, FadesAFrozenPoseOutAndThenPlaysAsBefore)
{
    const Matrix frozen = played(5, dance, 0.7F);
    m_playback.freeze(m_object.getObject());
    m_playback.seek(0.4);
    m_playback.setPlaying(false);
    const Matrix shown = pose(5);
    for (int row = 0; row < 4; ++row)
    {
        EXPECT_LT((shown.getRow(row) - frozen.getRow(row)).length(), 1e-6F) << "row " << row;
    }
    m_playback.fadeOut(2.0);
    m_playback.update(0.5);
    EXPECT_NEAR(m_playback.getFrozenWeight(), 0.75F, 1e-6F);
    EXPECT_NE(pose(5), frozen);
    m_playback.update(1.6);
    EXPECT_EQ(m_playback.getFrozenWeight(), 0.0F);
    EXPECT_EQ(pose(5), played(5, sway, 0.4F));
    m_playback.freeze(m_object.getObject());
    m_playback.setFrozenWeight(0.5F);
    m_playback.fadeOut(2.0);
    m_playback.update(1.0);
    EXPECT_NEAR(m_playback.getFrozenWeight(), 0.25F, 1e-6F) << "from what it is";
    m_playback.freeze(m_object.getObject());
    m_playback.update(1.0);
    EXPECT_EQ(m_playback.getFrozenWeight(), 1.0F) << "a new one does not go on fading";
    m_playback.fadeOut(0.0);
    EXPECT_EQ(m_playback.getFrozenWeight(), 0.0F);
}

TEST_F(PlaybackTest, AGroupPlaysSomethingElseOnEveryObjectThatIsPosed)
{
    const std::unique_ptr<TW2::TW_VirtualObject> copy = m_object.copy();
    m_playback.seek(0.5);
    const Matrix above = played(1, sway, 0.5F);
    const Matrix inside = played(6, dance, 0.5F);
    m_playback.setGroup(3, dance);
    EXPECT_EQ(pose(1), above);
    EXPECT_EQ(pose(6), inside);
    m_playback.apply(*copy);
    EXPECT_EQ(copy->getMesh(6)->getMatrix(), inside);
    EXPECT_EQ(copy->getMesh(1)->getMatrix(), above);
    EXPECT_THROW(m_playback.setGroup(3, 77), Failure);
    m_playback.setGroup(6, dance);
    EXPECT_EQ(pose(3), played(3, sway, 0.5F)) << "another group, which begins higher";
    m_playback.setGroup(0, dance);
    EXPECT_EQ(pose(0), played(0, dance, 0.5F));
    m_playback.clearGroup();
    EXPECT_EQ(pose(6), played(6, sway, 0.5F));
    m_playback.forgetObjects();
}
}  // namespace
