#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"
#include "tests/support/lamps.h"
#include "tests/support/verbose_capture.h"

#include <tw2/io/chunk_id.h>
#include <tw2/light/directional_light_animation.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/point_light_animation.h>
#include <tw2/light/spot_light_animation.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>
#include <platform/scene/directional_light.h>
#include <platform/scene/point_light.h>
#include <platform/scene/spot_light.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace TW2;

using support::makeLamp;

TEST(LightAnimationFiles, WhatIsWrittenIsReadAgain)
{
    const auto expectTrip = [](const auto& chunk) { EXPECT_EQ(support::writeAndRead(chunk), chunk); };
    expectTrip(makeLamp<PointLightAnimationChunk>());
    expectTrip(makeLamp<DirectionalLightAnimationChunk>());
    expectTrip(makeLamp<SpotLightAnimationChunk>());
}

TEST(LightAnimationFiles, OldVersionsStoreTheLastFrameAndTheFirstNoLoopToFrame)
{
    for (unsigned int version = 0; version < 2; ++version)
    {
        const auto body = [version](S_MemoryFileWriter& w)
        {
            support::writeChunk(w, CHUNK_ANIMATION_HEADER, 9, "lamp", 25, true, "something that a later version added");
            w << 49 << false;
            w << 1 << 0u << 1.0f << 2.0f << 3.0f << 4.0f;  // colour
            w << 1 << 3u << 0.5f << 0 << 1 << 4u << 6.0f;  // brightness, no hot spot, fall-off
            w << 1 << 5u << 7.0f << 0;                     // and the same of angles, the other way round
            if (version > 0)
            {
                w << 12u;
            }
        };
        S_MemoryFileWriter writer;
        support::writeChunk(writer, CHUNK_SPOT_LIGHT_ANIMATION, version, body);
        const auto lamp = support::readWritten<SpotLightAnimationChunk>(writer);
        EXPECT_EQ(lamp.totalFrameCount, 50);
        EXPECT_EQ(lamp.loopToFrame, version > 0 ? 12u : 0u);
        EXPECT_TRUE(lamp.header.looping);
        EXPECT_EQ(lamp.colorKeys.front().color, G_FColor(1, 2, 3, 4));
        EXPECT_EQ(lamp.brightnessKeys.front(), (FloatKey{3, 0.5f}));
        EXPECT_TRUE(lamp.hotSpotKeys.empty() && lamp.fallOffAngleKeys.empty());
        EXPECT_EQ(lamp.fallOffKeys.front(), (FloatKey{4, 6.0f}));
        EXPECT_EQ(lamp.hotSpotAngleKeys.front(), (FloatKey{5, 7.0f}));
    }
}

TEST(LightAnimations, ASpotLightTakesColorTimesBrightnessRangeAndAngles)
{
    const TW_SpotLightAnimation lamp(makeLamp<SpotLightAnimationChunk>());
    P_SpotLight light;
    lamp.animateFrame(&light, 0.0f);
    EXPECT_EQ(light.getColor(), G_FColor(127.5f, 0, 0, 127.5f));
    lamp.animate(&light, 1.0f);  // frame 25 of keys at 0 and 49
    EXPECT_NEAR(light.getColor().green, 0.5 * 98 * 25 / 49.0, 1e-4);
    EXPECT_NEAR(light.getFalloffRange(), 35, 1e-4);
    EXPECT_NEAR(light.getHotspotAngle(), 45, 1e-4);
    EXPECT_NEAR(light.getFalloffAngle(), 55, 1e-4);
    // Back in time and past the end.
    lamp.animateFrame(&light, 10.0f);
    EXPECT_NEAR(light.getFalloffRange(), 20, 1e-4);
    EXPECT_EQ(lamp.getFallOffContainer()->m_fLastLowerKey, 0.0f);
    lamp.animate(&light, 2.0f);
    EXPECT_EQ(light.getFalloffRange(), 59.0f);
    EXPECT_EQ(lamp.getFallOffContainer()->m_fLastLowerKey, 1.0f);
}

TEST(LightAnimations, PointAndDirectionalLightsTakeWhatTheyHave)
{
    const TW_PointLightAnimation point(makeLamp<PointLightAnimationChunk>());
    P_PointLight pointLight;
    point.animate(&pointLight, 1.0f);
    EXPECT_NEAR(pointLight.getFalloffRange(), 35, 1e-4);
    EXPECT_EQ(point.getHotSpotContainer()->m_vecValues.back(), 2.0f);

    const TW_DirectionalLightAnimation sun(makeLamp<DirectionalLightAnimationChunk>());
    P_DirectionalLight sunLight;
    sun.animate(&sunLight, 1.0f);
    EXPECT_EQ(sunLight.getColor(), pointLight.getColor());

    // No light, nothing to change.
    point.animate(nullptr, 1.0f);
    sun.animateFrame(nullptr, 1.0f);
    TW_SpotLightAnimation(makeLamp<SpotLightAnimationChunk>()).animate(nullptr, 1.0f);

    support::VerboseCapture log;
    sun.dump();
    TW_SpotLightAnimation(makeLamp<SpotLightAnimationChunk>()).dump();
    EXPECT_EQ(log.getText(),
              "Point light animation for object: \"lamp\"\nFrame rate: 25\n"
              "Spot light animation for object: \"lamp\"\nFrame rate: 25\n");
}

TEST(LightAnimations, ALightKeepsWhatIsNotAnimated)
{
    auto chunk = makeLamp<PointLightAnimationChunk>();
    chunk.fallOffKeys.clear();
    chunk.brightnessKeys.clear();
    P_PointLight light;
    light.setFalloffRange(3.0f);
    TW_PointLightAnimation(chunk).animateFrame(&light, 0.0f);
    EXPECT_EQ(light.getColor(), G_FColor(255, 0, 0, 255));
    EXPECT_EQ(light.getFalloffRange(), 3.0f);

    auto spotChunk = makeLamp<SpotLightAnimationChunk>();
    spotChunk.hotSpotAngleKeys.clear();
    P_SpotLight spot;
    spot.setHotspotAngle(12.0f);
    TW_SpotLightAnimation(spotChunk).animateFrame(&spot, 0.0f);
    EXPECT_EQ(spot.getFalloffAngle(), 30.0f);
    EXPECT_EQ(spot.getHotspotAngle(), 12.0f);

    chunk = makeLamp<PointLightAnimationChunk>();
    chunk.colorKeys.clear();
    const G_FColor before = light.getColor();
    TW_PointLightAnimation(chunk).animateFrame(&light, 0.0f);
    TW_PointLightAnimation().animateFrame(&light, 0.0f);
    EXPECT_EQ(light.getColor(), before);
}

TEST(LightAnimations, OnlyALoopingAnimationContinuesAtItsLoopToFrame)
{
    auto chunk = makeLamp<PointLightAnimationChunk>();
    const TW_PointLightAnimation once(chunk);
    EXPECT_EQ(once.getColorContainer()->m_uLoopToFrame, 49u);
    EXPECT_FALSE(once.getFallOffContainer()->m_bLooping);
    chunk.header.looping = true;
    const TW_PointLightAnimation looping(chunk);
    for (const auto* track : {looping.getBrightnessContainer(), looping.getFallOffContainer()})
    {
        EXPECT_EQ(track->m_uLoopToFrame, 7u);
        EXPECT_EQ(track->m_uTotalFrameCount, 50u);
        EXPECT_TRUE(track->m_bLooping && track->m_bLoopInterpolation);
    }
}

TEST(LightAnimations, CopiesShareTheirTracksUntilTheLastGoes)
{
    const support::NothingLeft check;
    auto first = std::make_unique<TW_SpotLightAnimation>(makeLamp<SpotLightAnimationChunk>());
    TW_SpotLightAnimation second(*first);
    EXPECT_EQ(second.getColorContainer(), first->getColorContainer());
    second.setFrameRate(50);
    second.setAnimationTargetName("other lamp");
    EXPECT_EQ(first->getFrameRate(), 25);
    EXPECT_EQ(first->getAnimationTargetName(), "lamp");
    first.reset();
    P_SpotLight light;
    second.animate(&light, 0.5f);
    EXPECT_NEAR(light.getFalloffRange(), 35, 1e-4);
    second = *&second;
    EXPECT_TRUE(second.isConstructed());
    second.destruct();
    // Name and rate belong to each object, with tracks or without.
    second.setFrameRate(30);
    second.setAnimationTargetName("lamp to be");
    const TW_SpotLightAnimation third(second);
    EXPECT_FALSE(third.isConstructed());
    EXPECT_EQ(third.getFrameRate(), 30);
    EXPECT_EQ(third.getAnimationTargetName(), "lamp to be");
    second.construct(makeLamp<SpotLightAnimationChunk>());
    second.construct(makeLamp<SpotLightAnimationChunk>());  // in the place of what is there
    second.destruct();
    EXPECT_EQ(second.getFrameRate(), 0);
    EXPECT_EQ(second.getAnimationTargetName(), "");
}

TEST(LightAnimations, AFailedAllocationLeavesNothingBehind)
{
    const auto chunk = makeLamp<SpotLightAnimationChunk>("a name that does not fit into a string's own few bytes");
    support::expectNothingLeftByFailedAllocations(
        [&chunk]
        {
            const TW_SpotLightAnimation lamp(chunk);
            const TW_SpotLightAnimation copy(lamp);
        });
}
