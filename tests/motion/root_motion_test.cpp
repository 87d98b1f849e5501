#include "tests/support/expectations.h"
#include "tests/support/object_files.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/root_motion.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>
#include <random>
#include <string>

using namespace TW2;
using Complex = std::complex<double>;

namespace
{
constexpr double s_degree = 3.14159265358979323846 / 180.0;

M_Matrix4x3Template<float> placeAt(double x, double z, double yaw)
{
    return TW_Travel{TW_Rotation::aboutAxis({0, 1, 0}, yaw), {x, 0, z}}.toMatrix();
}

/// A walk that goes forward and turns by `yaw` degrees per loop, with keys at every frame of a circle's arc.
struct Walk
{
    /// `space`: what the track's places are in.
    explicit Walk(double yaw, unsigned int loopTo = 0, const M_Matrix4x3Template<float>& space = {})
    {
        m_files.addMesh("hip");
        KeyframeAnimationChunk pose = support::makeTrack("hip", 0.0f, 31, 30);
        pose.header.looping = true;
        pose.loopToFrame = loopTo;
        KeyframeAnimationChunk travel = support::makeTrack("travel", 0.0f, 31, 30);
        travel.interpolationMode = 2;
        travel.keys.clear();
        for (unsigned int f = 0; f <= 30; ++f)
        {
            const Complex place = getPlace(f, yaw);
            travel.keys.push_back({f, placeAt(place.imag(), place.real(), yaw * f / 30.0) * space});
        }
        const std::string file = m_files.writeAnimation("travel.tw", {travel});
        m_files.addAnimation(1, {pose}, "name walk rootmotion \"" + file + "\"");
        m_files.addAnimation(2, {pose}, "name stand");
        m_object = m_files.build();
    }

    /// z + ix on the arc: forward is z, and a turn about y goes from z to x.
    static Complex getPlace(double frame, double yaw)
    {
        const double angle = yaw * s_degree * frame / 30.0;
        const double radius = 1.3 / (yaw * s_degree);
        return {radius * std::sin(angle), radius * (1.0 - std::cos(angle))};
    }

    support::ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST(RootMotion, AThousandLoopsArriveWhereTheirSumSays)
{
    const double yaw = 0.05;
    const Walk walk(yaw);
    const TW_RootMotion motion(*walk.m_object, 1);
    std::mt19937 random(5);
    TW_AnimationClock clock(*walk.m_object, 1);
    TW_Travel place;
    while (clock.getMoment().m_iLoop < 1000)
    {
        clock.advance(std::uniform_real_distribution<double>(0.0, 0.04)(random));
        place = motion.getTravel(clock.getLastStep()) * place;
    }
    // Up to the beginning of the last loop: the rest lies within it.
    place = motion.getTravel(clock.getMoment(), {0.0, 1000}) * place;
    const Complex turn = std::polar(1.0, yaw * s_degree);
    const Complex sum = Walk::getPlace(30.0, yaw) * (1.0 - std::pow(turn, 1000)) / (1.0 - turn);
    EXPECT_NEAR(place.m_vTranslation.z, sum.real(), 1e-4 * 1300.0);
    EXPECT_NEAR(place.m_vTranslation.x, sum.imag(), 1e-4 * 1300.0);
    EXPECT_NEAR(place.m_rotation.getDegrees(), 50.0, 1e-3);
    const TW_Travel direct = motion.getTravel(0.0, 1000.0);
    EXPECT_NEAR(direct.m_vTranslation.z, place.m_vTranslation.z, 1e-6);
    EXPECT_NEAR(direct.m_vTranslation.x, place.m_vTranslation.x, 1e-6);
}

TEST(RootMotion, TravelsComposeOverAnyMomentsForwardsAndBackwards)
{
    for (const unsigned int loopTo : {0u, 11u})
    {
        const Walk walk(40.0, loopTo, placeAt(2.0, -1.0, 30.0));
        const TW_RootMotion motion(*walk.m_object, 1);
        std::mt19937 random(1);
        std::uniform_real_distribution<double> anyTime(-9.0, 9.0);
        for (int i = 0; i < 200; ++i)
        {
            const double a = anyTime(random);
            const double b = anyTime(random);
            const double c = anyTime(random);
            const TW_Travel there = motion.getTravel(b, c) * motion.getTravel(a, b);
            const TW_Travel direct = motion.getTravel(a, c);
            EXPECT_LT((there.m_vTranslation - direct.m_vTranslation).length(), 1e-9) << a << " " << b << " " << c;
            EXPECT_LT((there.m_rotation * direct.m_rotation.inverse()).getDegrees(), 1e-9);
            const TW_Travel back = motion.getTravel(b, a) * motion.getTravel(a, b);
            EXPECT_LT(back.m_vTranslation.length(), 1e-9);
        }
        // On the arc every loop goes on where the one before ended.
        const Complex place = Walk::getPlace(77.0, 40.0);
        const TW_Travel travel = motion.getTravel(0.0, 77.0 / 30.0);
        EXPECT_NEAR(travel.m_vTranslation.z, place.real(), 1e-5);
        EXPECT_NEAR(travel.m_vTranslation.x, place.imag(), 1e-5);
        const Complex before = Walk::getPlace(-77.0, 40.0);
        const TW_Travel back = motion.getTravel(0.0, -77.0 / 30.0);
        EXPECT_NEAR(back.m_vTranslation.z, before.real(), 1e-5);
        EXPECT_NEAR(back.m_vTranslation.x, before.imag(), 1e-5);
    }
}

TEST(RootMotion, AnAnimationWithoutTravelStaysWhereItIs)
{
    const Walk walk(40.0);
    for (const int index : {2, 9})
    {
        const TW_RootMotion motion(*walk.m_object, index);
        EXPECT_FALSE(motion.isMoving());
        EXPECT_EQ(motion.getTravel(0.1, 55.5), TW_Travel());
    }
    const TW_ObjectAnimation copy(*walk.m_object);
    EXPECT_TRUE(TW_RootMotion(copy, 1).isMoving()) << "copies travel as well";
}

TEST(RootMotion, WhatLoopsToItsLastFrameEndsThere)
{
    EXPECT_TRUE(Walk(40.0, 29).m_object->getAnimationCourse(1).m_bLooping);
    EXPECT_FALSE(Walk(40.0, 30).m_object->getAnimationCourse(1).m_bLooping);
}

TEST(RootMotion, ATravelFileIsOneTrackOfAtLeastOneFrame)
{
    const auto build = [](const std::vector<KeyframeAnimationChunk>& travel)
    {
        support::ObjectFiles files;
        files.addMesh("hip");
        const std::string file = files.writeAnimation("travel.tw", travel);
        files.addAnimation(1, {support::makeTrack("hip", 1.0f)}, "rootmotion \"" + file + "\"");
        return files.build();
    };
    KeyframeAnimationChunk track = support::makeTrack("travel", 1.0f);
    EXPECT_THROW((void)build({track, track}), TW_Exception_InvalidAnimationChunk);
    track.totalFrameCount = 1;
    track.keys.resize(1);
    EXPECT_NE(build({track}), nullptr);
    track.totalFrameCount = 0;
    track.keys.clear();
    EXPECT_THROW((void)build({track}), TW_Exception_InvalidScriptParameter);
}
