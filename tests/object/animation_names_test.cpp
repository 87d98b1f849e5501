#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/object_files.h"

#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace TW2;
using support::ObjectFiles;

namespace
{
/// An arm, and scripts whose animations are given as text.
struct AnimationNames : testing::Test
{
    AnimationNames()
    {
        m_files.addMesh("arm");
        m_walk = m_files.writeAnimation("walk.fast.tw", {makeLoop(0, false)});
        m_run = m_files.writeAnimation("run.tw", {makeLoop(0, true)});
    }

    /// 31 frames at 30 per second.
    static KeyframeAnimationChunk makeLoop(unsigned int loopToFrame, bool loopInterpolation)
    {
        KeyframeAnimationChunk track = support::makeTrack("arm", 1.0f, 31, 30);
        track.header.looping = true;
        track.loopInterpolation = loopInterpolation;
        track.loopToFrame = loopToFrame;
        return track;
    }

    std::unique_ptr<TW_ObjectAnimation> build(const std::string& animations)
    {
        ObjectFiles files;
        files.addMesh("arm");
        const std::string name = files.writeScript();
        auto object = std::make_unique<TW_ObjectAnimation>(name.c_str(), "object", nullptr, false);
        S_Script script = S_Script::fromText("moves.txt", ("moves {" + animations + "}").c_str());
        object->appendAnimations(&script, "moves", false);
        return object;
    }
    /// An "animation" block with further keys and blocks.
    std::string block(int index, const std::string& file, const std::string& more = "")
    {
        return "animation { index " + std::to_string(index) + " filename \"" + file + "\" " + more + "}\n";
    }

    ObjectFiles m_files;
    std::string m_walk;
    std::string m_run;
};
}  // namespace

TEST_F(AnimationNames, AnAnimationIsCalledAfterItsScriptOrItsFile)
{
    const auto object = build(block(4, m_walk) + block(-2, m_run, "name \"Run Away\" ") + block(7, m_run));
    EXPECT_STREQ(object->getAnimationName(4), "walk.fast");
    EXPECT_STREQ(object->getAnimationName(-2), "Run Away");
    EXPECT_STREQ(object->getAnimationName(1), "");
    EXPECT_EQ(object->findAnimation("walk.FAST"), 4);
    EXPECT_EQ(object->findAnimation("run away"), -2);
    object->appendSingleAnimation(3, m_run.c_str(), false);
    EXPECT_EQ(object->findAnimation("run"), 3) << "the smallest index of two";
    object->deleteAnimation(3);
    EXPECT_EQ(object->findAnimation("run"), 7);
    EXPECT_TRUE(object->hasAnimation("RUN"));
    object->deleteAnimation(7);
    EXPECT_FALSE(object->hasAnimation("run"));
    TW_ObjectAnimation other(*object);
    EXPECT_EQ(other.findAnimation("Run Away"), -2) << "copies know the names";
    other.shareAnimation(4, object.get());
    EXPECT_EQ(other.findAnimation("walk.fast"), 4);
}

TEST_F(AnimationNames, AnUnknownNameTellsTheObjectAndWhatThereIs)
{
    const auto object = build(block(0, m_walk) + block(1, m_run));
    object->setName("guard");
    EXPECT_EQ(support::messageOf([&] { (void)object->findAnimation("jump"); }),
              "TW2: Animation \"jump\" not found from object \"guard\"; its animations are: \"walk.fast\", \"run\"");
    EXPECT_THROW((void)TW_VertexAnimation().findAnimation("walk"), TW_Exception_AnimationNotFound);
}

TEST_F(AnimationNames, ThePeriodIsTheTimeAfterWhichTheTracksRepeat)
{
    const std::string late = m_files.writeAnimation("late.tw", {makeLoop(12, false)});
    const std::string once = m_files.writeAnimation("once.tw", {support::makeTrack("arm", 1.0f, 31, 30)});
    const auto object = build(block(0, m_walk) + block(1, m_run) + block(2, late) + block(3, once));
    EXPECT_FLOAT_EQ(object->getAnimationLength(0), 31.0f / 30.0f);
    const float periods[] = {1.0f, 31.0f / 30.0f, 18.0f / 30.0f, 1.0f, 0.0f};
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_FLOAT_EQ(object->getAnimationPeriod(i), periods[i]) << i;
        EXPECT_EQ(object->isAnimationLooping(i), i < 3) << i;
    }
    // The pose agrees: a period later everything stands as before.
    for (const int index : {0, 1, 2})
    {
        ASSERT_TRUE(object->animateObject(index, 0.75f, nullptr));
        const auto before = object->getMesh(0)->getMatrix();
        ASSERT_TRUE(object->animateObject(index, 0.75f + object->getAnimationPeriod(index), nullptr));
        EXPECT_NEAR(object->getMesh(0)->getMatrix().m[3][0], before.m[3][0], 1e-5f) << index;
    }
    object->setAnimationFPS(0, 15.0f);
    EXPECT_FLOAT_EQ(object->getAnimationPeriod(0), 2.0f);
    object->setAnimationFPS(0, 0.0f);
    EXPECT_EQ(object->getAnimationPeriod(0), 0.0f);
}

TEST_F(AnimationNames, EventsStandInTheOrderOfTheirTimesAndStayWithThePose)
{
    const auto object = build(block(0, m_walk,
                                    "event { time 0.9 name \"right step\" }\n event { time 0.4 name left }\n"
                                    "event { name \"end\" time 1 }\n"));
    const auto events = object->getAnimationEvents(0);
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0].m_strName, "left");
    EXPECT_NEAR(events[0].m_dFrame, 12.0, 1e-4);
    EXPECT_EQ(events[1].m_strName, "right step");
    EXPECT_EQ(events[2].m_dFrame, 30.0);
    object->setAnimationFPS(0, 60.0f);
    EXPECT_NEAR(object->getAnimationEvents(0)[0].m_dFrame, 12.0, 1e-4);
    EXPECT_TRUE(object->getAnimationEvents(1).empty());
    const TW_ObjectAnimation copy(*object);
    EXPECT_EQ(copy.getAnimationEvents(0).size(), 3u);
}

TEST_F(AnimationNames, WrongEventsAreErrorsThatNamePlaceAndRange)
{
    const auto messageOf = [&](const std::string& event)
    { return support::messageOf([&] { (void)build(block(0, m_walk, "name stride " + event)); }); };
    EXPECT_EQ(messageOf("event { time 1.2 name step }"),
              "TW2: Invalid parameter in moves.txt: moves: event \"step\" of animation \"stride\": expected a \"time\" "
              "from 0 to 1, the animation's end in seconds, not 1.2");
    EXPECT_THAT(messageOf("event { time -0.1 name step }"), testing::HasSubstr("not -0.1"));
    EXPECT_THAT(messageOf("event { time 0.1 }"), testing::HasSubstr("key \"name\": is missing"));
    EXPECT_THAT(messageOf("event { time 0.1 name a loud 1 }"), testing::HasSubstr("key \"loud\": is not known here"));
}

TEST_F(AnimationNames, EveryKindOfObjectAnswersForWhatItPlays)
{
    const support::CharacterFiles files;
    const std::string name = files.write();
    S_Script script(name.c_str());
    const int skins[] = {1, 2};
    const int blocks[] = {0, 0};
    const TW_VertexAnimation character(name.c_str(), "skeleton", "skin");
    const TW_VertexAnimationLODs skinned(&script, 0, 2, &script, skins);
    const TW_ObjectAnimationLODs levels(&script, 2, blocks, false);
    for (const TW_VirtualObject* object : std::vector<const TW_VirtualObject*>{&character, &skinned, &levels})
    {
        EXPECT_EQ(object->findAnimation("animation1"), 1) << object->getObjectType();
        EXPECT_FLOAT_EQ(object->getAnimationPeriod(1), character.getSkeleton()->getAnimationPeriod(1));
        ASSERT_TRUE(object->getPlayedObject(0));
    }
    EXPECT_EQ(character.getPlayedObject(0), character.getSkeleton());
    EXPECT_EQ(skinned.getPlayedObject(0), skinned.getSkeleton());
    EXPECT_EQ(skinned.getPlayedObject(1), nullptr);
    EXPECT_EQ(levels.getPlayedObject(1), levels.getLODObject(1));
    EXPECT_EQ(levels.getPlayedObject(2), nullptr);
}
