#include "tests/object/character.h"
#include "tests/support/verbose_capture.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>

#include <limits>
#include <utility>

namespace
{
constexpr int NONE = 12345;

TEST(ObjectAnimationQueries, LengthsAndLoopsAreInSecondsOfTheFrameRate)
{
    Character character;
    EXPECT_EQ(character->getAnimationFrames(0), 31U);
    EXPECT_EQ(character->getAnimationFPS(0), 25.0F);
    EXPECT_FLOAT_EQ(character->getAnimationLength(0), 31.0F / 25.0F);
    const unsigned int loop = character->getAnimation(2)->m_vecKeyframeAnimations[0]->getLoopToFrame();
    EXPECT_EQ(character->getAnimationLoopToFrame(2), loop);
    EXPECT_FLOAT_EQ(character->getAnimationLoopToTime(2), static_cast<float>(loop) / 25.0F);
    EXPECT_EQ(character->getAnimationFrames(NONE), 0U);
    EXPECT_EQ(character->getAnimationFPS(NONE), 0.0F);
    EXPECT_EQ(character->getAnimationLength(NONE), 0.0F);
    EXPECT_EQ(character->getAnimationLoopToFrame(NONE), 0U);
    EXPECT_EQ(character->getAnimationLoopToTime(NONE), 0.0F);
}

TEST(ObjectAnimationQueries, FrameRatesAreRoundedToWholeOnesForEveryoneWhoSharesTheTracks)
{
    Character character;
    const TW2::TW_ObjectAnimation copy(*character);
    const float most = 2147483648.0F;
    const std::pair<float, float> cases[] = {{29.5F, 30.0F},
                                             {30.5F, 30.0F},
                                             {12.4F, 12.0F},
                                             {-24.6F, -25.0F},
                                             {std::numeric_limits<float>::quiet_NaN(), -25.0F},
                                             {1e30F, most},
                                             {-std::numeric_limits<float>::infinity(), -most},
                                             {0.25F, 0.0F}};
    for (const auto& [set, rate] : cases)
    {
        character->setAnimationFPS(2, set);
        EXPECT_EQ(character->getAnimationFPS(2), rate) << set;
        EXPECT_EQ(static_cast<float>(copy.getAnimation(2)->m_vecKeyframeAnimations[9]->getFrameRate()), rate) << set;
    }
    EXPECT_EQ(copy.getAnimationFPS(2), 25.0F);  // the record is the copy's own
    EXPECT_EQ(character->getAnimationLength(2), 0.0F);
    EXPECT_EQ(character->getAnimationLoopToTime(2), 0.0F);
    character->setAnimationFPS(NONE, 10.0F);
    EXPECT_FALSE(character->isValidAnimation(NONE));
}

TEST(ObjectAnimationVisibility, MeshesShowWhileTheirTrackIsAboveZero)
{
    Character character("linear", true);
    character->getMesh(10)->enable(false);  // has no track
    for (const float frame : {0.0F, 3.5F, 12.0F, 29.75F})
    {
        EXPECT_TRUE(character->updateVisibility(2, frame / 25.0F));
        for (unsigned int mesh = 0; mesh < 10; ++mesh)
        {
            const bool visible =
                support::TrackOracle(*character.model.animations[2][mesh]).getVisibility(static_cast<double>(frame)) >
                0.0;
            EXPECT_EQ(character->getMesh(mesh)->isEnabled(), visible) << "mesh " << mesh << ", frame " << frame;
        }
        EXPECT_FALSE(character->getMesh(10)->isEnabled());
    }
}

TEST(ObjectAnimationBounds, ManualVolumesDecideWhatIsInView)
{
    // Reaches the operation that the engine calls.
    class Object : public TW2::TW_ObjectAnimation
    {
    public:
        using TW_ObjectAnimation::executeAlways;
    } object;
    object.setBoundingRadius(3.0F);
    object.setEngineFlag(P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME, true);
    object.setManualBoundingSphereRadius(7.0F);
    object.setUseManualBoundingSphere(true);
    P_Camera camera;
    object.getContext()->setCurrentCamera(&camera);
    object.setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, true);
    for (const float distance : {-1e6F, 1e6F})  // one of the two lies behind the camera, both are out of range
    {
        object.setPosition(distance, distance, distance);
        object.setInView(true);
        EXPECT_FALSE(object.executeAlways());
        EXPECT_EQ(object.isInView(), object.isInsideViewVolume(&camera));
        EXPECT_FALSE(object.isInView());
        object.setUseManualBoundingSphere(false);  // then the flag is the engine's business
        object.setInView(true);
        EXPECT_FALSE(object.executeAlways());
        EXPECT_TRUE(object.isInView());
        object.setUseManualBoundingSphere(true);
    }
}

TEST(ObjectAnimationDump, ShowsTheMeshesInOrderAndThenTheObject)
{
    Character character;
    character->setName("soldier");
    support::VerboseCapture log;
    character->dump(false);
    std::size_t position = 0;
    for (std::size_t mesh = 0; mesh < Character::MESHES; ++mesh)
    {
        position = log.getText().find(Character::name(mesh), position);
        ASSERT_NE(position, std::string::npos) << log.getText();
    }
    EXPECT_NE(log.getText().find("soldier", position), std::string::npos) << log.getText();
}
}  // namespace
