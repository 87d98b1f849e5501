#include "convert/clip_sampler.h"

#include "tests/convert/model_builder.h"

#include <gtest/gtest.h>

namespace
{
using namespace convert_test;
using TW2::convert::chooseFrameRate;
using TW2::convert::ClipSampler;

double xAt(const Clip& clip, double seconds)
{
    const Model model = makeChain(1);
    return ClipSampler(model, clip).sample(0, seconds).getTranslation().x;
}
}  // namespace

TEST(ClipSampler, StepsHoldTheirValueUntilTheNextKey)
{
    const Clip clip =
        moving(makeCurve<Vector3d>(Interpolation::Step, {{0.5, {1, 0, 0}}, {1.0, {5, 0, 0}}, {2.0, {5, 0, 0}}}));
    EXPECT_EQ(xAt(clip, 0.0), 1.0) << "before the first key it is the first key's";
    EXPECT_EQ(xAt(clip, 0.999), 1.0);
    EXPECT_EQ(xAt(clip, 1.0), 5.0);
    EXPECT_EQ(xAt(clip, 9.0), 5.0);
    const Model model = makeChain(1);
    EXPECT_EQ(ClipSampler(model, clip).findJumps(0), std::vector<double>{1.0}) << "a step to the same value is none";
    Model chain = makeChain(2);
    chain.m_vecNodes.pop_back();
    EXPECT_EQ(ClipSampler(chain, clip).sample(1, 0.0), Matrixd()) << "what is no node of the file stays";
    Clip other = moving(makeCurve<Vector3d>(Interpolation::Linear, {{0.5, {}}, {1.5, {1, 0, 0}}, {1.5, {5, 0, 0}}}));
    other.m_vecChannels[0].m_rotations =
        makeCurve<Quaternion>(Interpolation::Step, {{0.0, Quaternion()}, {2.0, {0.6, 0.8, 0.0, 0.0}}});
    EXPECT_EQ(ClipSampler(model, other).findJumps(0), (std::vector<double>{1.5, 2.0})) << "two keys of one time";
}

TEST(ClipSampler, RotationsTurnTheShorterWayAtEvenSpeed)
{
    const Model model = makeChain(1);
    Clip clip;
    const Quaternion other = spinZ(300.0);  // the same as -60 degrees
    clip.m_vecChannels.emplace_back().m_rotations =
        makeCurve<Quaternion>(Interpolation::Linear, {{0.0, spinZ(0.0)}, {1.0, other}});
    const ClipSampler sampler(model, clip);
    EXPECT_LT(largestDifference(sampler.sample(0, 0.25), turnZ(-15.0)), 1e-12);
    EXPECT_LT(largestDifference(sampler.sample(0, 0.75), turnZ(-45.0)), 1e-12);
}

TEST(ClipSampler, WhatAChannelHasNoKeysForStaysAsAtRest)
{
    const auto stretch = [](double x, double y, double z)
    {
        Matrixd result;
        result.m[0][0] = x;
        result.m[1][1] = y;
        result.m[2][2] = z;
        return result;
    };
    // What has no size at rest has no rotation either.
    for (const auto& [size, turn] : {std::pair(stretch(3, 2, 0.5), 30.0), {stretch(-3, 2, 0.5), 30.0}, {scale(0), 0.0}})
    {
        Model model;
        addNode(model, "top", -1, size * turnZ(turn) * move(4.0, 5.0, 6.0));
        std::vector<std::pair<Channel, Matrixd>> cases(3);
        cases[0].first.m_positions = makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {1, 2, 3}}});
        cases[0].second = size * turnZ(turn) * move(1, 2, 3);
        cases[1].first.m_rotations = makeCurve<Quaternion>(Interpolation::Linear, {{0.0, spinZ(-10.0)}});
        cases[1].second = size * turnZ(-10.0) * move(4, 5, 6);
        const double mirror = size.m[0][0] < 0.0 ? -1.0 : 1.0;
        cases[2].first.m_scales = makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {mirror, 2, 4}}});
        cases[2].second = stretch(mirror, 2, 4) * turnZ(turn) * move(4, 5, 6);
        for (const auto& [channel, expected] : cases)
        {
            Clip clip;
            clip.m_vecChannels = {channel};
            EXPECT_LT(largestDifference(ClipSampler(model, clip).sample(0, 0.0), expected), 1e-12)
                << size.m[0][0] << ", case " << &channel - &cases[0].first;
        }
    }
}

TEST(FrameRate, IsTheSmallestOnWhoseFramesAllKeysLie)
{
    const auto rateOf = [](double step, int keys)
    {
        Clip clip = moving(makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {}}}));
        for (int i = 1; i < keys; ++i)
        {
            clip.m_vecChannels[0].m_positions.m_vecTimes.push_back(i * step);
            clip.m_vecChannels[0].m_positions.m_vecValues.emplace_back();
        }
        clip.m_dDuration = (keys - 1) * step;
        return chooseFrameRate(clip);
    };
    EXPECT_EQ(rateOf(1.0 / 24.0, 50), 24);
    EXPECT_EQ(rateOf(0.033333, 100), 30) << "rounded as files round it";
    EXPECT_EQ(rateOf(0.0083333, 4000), 120);
    EXPECT_EQ(rateOf(1.0, 5), 10) << "slow clips get ten";
    EXPECT_EQ(rateOf(0.0127, 300), 60) << "no rate fits";
    // Keys of a scale count as those of any other curve.
    Clip clip = moving(makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {}}, {1.0, {}}}));
    clip.m_vecChannels[0].m_scales = makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {}}, {1.0 / 24.0, {}}});
    EXPECT_EQ(chooseFrameRate(clip), 24);
}
