#include "convert/track_reduction.h"

#include "convert/clip_sampler.h"
#include "convert/clip_writer.h"
#include "tests/convert/model_builder.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace
{
using namespace convert_test;
using TW2::convert::ClipSampler;
using TW2::convert::makeRecords;
using TW2::convert::makeSkeleton;
using TW2::convert::PlaybackMeter;
using TW2::convert::PoseError;
using TW2::convert::reduceClip;
using TW2::convert::ReducedClip;
using TW2::convert::Seam;
using TW2::convert::Skeleton;
using TW2::convert::SpareThreads;
using TW2::convert::Tolerance;
using TW2::convert::Track;

constexpr Tolerance s_tolerance{0.002, 0.1};

/// A model whose clip is reduced.
struct Reduced
{
    Model m_model;
    Clip m_clip;
    Skeleton m_skeleton;
    ReducedClip m_reduced;

    Reduced(Model model, Clip clip, int rate = 0) : m_model(std::move(model)), m_clip(std::move(clip))
    {
        std::vector<std::string> warnings;
        m_skeleton = makeSkeleton(m_model, warnings);
        SpareThreads none(0);
        m_reduced = reduceClip(m_model, m_skeleton, m_clip, s_tolerance, rate, none);
    }

    [[nodiscard]] std::size_t countKeys() const
    {
        std::size_t keys = 0;
        for (const Track& track : m_reduced.m_vecTracks)
        {
            keys += track.m_vecKeys.size();
        }
        return keys;
    }
    /// As the library plays it; without a time at which something jumps and a frame of the fastest rate around it.
    [[nodiscard]] PoseError measure(double jump = -1.0) const
    {
        std::vector<double> times;
        for (unsigned int i = 0; i <= (m_reduced.m_uiFrames - 1) * 4; ++i)
        {
            times.push_back(i / 4.0);
        }
        std::erase_if(times,
                      [&](double frame) { return std::abs(frame / m_reduced.m_iFrameRate - jump) < 1.1 / 960.0; });
        SpareThreads none(0);
        return PlaybackMeter(m_model, m_skeleton)
            .measure(m_clip, makeRecords(m_skeleton, m_reduced, m_reduced.m_eSeam), m_reduced.m_iFrameRate, times,
                     none);
    }
};

/// Rotations of every node of a chain of `nodes`, sampled at 30 keys a second.
Clip makeWaving(int nodes, double seconds, const std::function<double(int, double)>& degrees)
{
    Clip clip;
    clip.m_dDuration = seconds;
    for (int node = 0; node < nodes; ++node)
    {
        Channel channel;
        channel.m_iNode = node;
        for (int i = 0; i <= seconds * 30.0; ++i)
        {
            channel.m_rotations.m_vecTimes.push_back(i / 30.0);
            channel.m_rotations.m_vecValues.push_back(spinZ(degrees(node, i / 30.0)));
        }
        clip.m_vecChannels.push_back(std::move(channel));
    }
    return clip;
}
}  // namespace

TEST(Reduction, StaysWithinTheToleranceAtTheEndOfALongLimb)
{
    const auto wave = [](int node, double t) { return 10.0 * std::sin(t + node); };
    const Reduced reduced(makeChain(12), makeWaving(12, 4.0, wave));
    EXPECT_TRUE(reduced.measure().isWithin(s_tolerance))
        << reduced.measure().m_dDistance << " units, " << reduced.measure().m_dDegrees << " degrees";
    EXPECT_LT(reduced.countKeys(), reduced.m_reduced.m_uiSampledKeys / 2);
}

TEST(Reduction, NeverEndsWithMoreKeysThanWereSampled)
{
    // Rough motion, in which no key can be spared, at the file's rate and at one that does not fit its keys.
    const auto rough = [](int node, double t) { return 60.0 * std::sin(1e4 * (t + 1.0) * (node + 1)); };
    for (const int rate : {0, 30, 25})
    {
        const Reduced reduced(makeChain(6), makeWaving(3, 3.0, rough), rate);
        EXPECT_LE(reduced.countKeys(), reduced.m_reduced.m_uiSampledKeys) << "rate " << rate;
        for (const Track& track : reduced.m_reduced.m_vecTracks)
        {
            EXPECT_LE(track.m_vecKeys.size(), reduced.m_reduced.m_uiFrames);
        }
    }
}

TEST(Reduction, MotionThatBendsBetweenItsKeysGetsMoreFrames)
{
    // A turn of 120 degrees from one key to the next is nothing that straight blending of matrices gets right.
    const Reduced reduced(makeChain(2), makeWaving(1, 1.0, [](int, double t) { return 120.0 * 30.0 * t; }));
    EXPECT_GT(reduced.m_reduced.m_iFrameRate, 100);
    EXPECT_TRUE(reduced.measure().isWithin(s_tolerance)) << reduced.measure().m_dDegrees;
    // Asked for a rate, it keeps that and tells how wrong it is.
    const Reduced slow(makeChain(2), makeWaving(1, 1.0, [](int, double t) { return 120.0 * 30.0 * t; }), 30);
    EXPECT_EQ(slow.m_reduced.m_iFrameRate, 30);
    EXPECT_FALSE(slow.measure().isWithin(s_tolerance));
}

TEST(Reduction, LooksCloselyOnlyWhereAClipIsFast)
{
    // Slow, for a fifth of a second 60 degrees from key to key, and slow again.
    const auto hasty = [](int node, double t)
    { return 8.0 * std::sin(2.0 * t + node) + (node == 1 ? 1800.0 * std::clamp(t - 2.0, 0.0, 0.2) : 0.0); };
    // It may jump where it is slow: as good as on a frame of the rate that is tried first, beside those of faster ones.
    for (const double jump : {-1.0, (30.0 - 0.04) / 60.0})
    {
        Clip clip = makeWaving(4, 5.0, hasty);
        if (jump >= 0.0)
        {
            clip.m_vecChannels[3].m_positions =
                makeCurve<Vector3d>(Interpolation::Step, {{0.0, {1, 0, 0}}, {jump, {1, 0.5, 0}}});
        }
        const Reduced reduced(makeChain(4), clip);
        EXPECT_GT(reduced.m_reduced.m_iFrameRate, 100);
        const PoseError error = reduced.measure(jump);
        EXPECT_TRUE(error.isWithin(s_tolerance)) << error.m_dDistance << " units, " << error.m_dDegrees << " degrees";
        const std::vector<double>& times = reduced.m_reduced.m_vecLookedAt;
        EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
        EXPECT_EQ(times.front(), 0.0);
        EXPECT_EQ(times.back(), reduced.m_reduced.m_uiFrames - 1.0);
        EXPECT_LT(times.size(), 2 * reduced.m_reduced.m_uiFrames) << "the fast part alone needs four times as many";
    }
}

TEST(Reduction, WhatJumpsBetweenFramesJumpsAtTheFastestRate)
{
    Clip clip =
        moving(makeCurve<Vector3d>(Interpolation::Step, {{0.0, {0, 0, 0}}, {0.1037, {3, 0, 0}}, {1.5171, {-2, 0, 0}}}));
    clip.m_dDuration = 2.0;
    const Reduced reduced(makeChain(1), clip);
    EXPECT_GE(reduced.m_reduced.m_iFrameRate, 900);
    EXPECT_LE(reduced.countKeys(), 6U) << "two for each jump";
    EXPECT_GT(Reduced(makeChain(1), clip, 10).measure().m_dDistance, 1.0) << "and a rate that misses them is told";
    // What jumps where the clip begins, or is not played, asks for nothing.
    Clip part = moving(makeCurve<Vector3d>(Interpolation::Linear, {{0.13, {9, 0, 0}},
                                                                   {0.13, {8, 0, 0}},
                                                                   {0.5, {7, 0, 0}},
                                                                   {0.5, {0, 0, 0}},
                                                                   {1.5, {1, 0, 0}},
                                                                   {1.93, {5, 0, 0}},
                                                                   {1.93, {4, 0, 0}}}));
    part.m_dStart = 0.5;
    part.m_dDuration = 1.0;
    const Reduced slow(makeChain(3), part);
    EXPECT_EQ(slow.m_reduced.m_iFrameRate, 10);
    EXPECT_EQ(slow.countKeys(), 4U) << "the ends alone, and one for each joint that is not moved";
}

TEST(Reduction, StepsStayStepsAtTheRateOfTheirKeys)
{
    Clip clip = moving(makeCurve<Vector3d>(Interpolation::Step,
                                           {{0.0, {0, 0, 0}}, {0.5, {3, 0, 0}}, {1.5, {-2, 0, 0}}, {2.0, {0, 0, 0}}}));
    Channel& channel = clip.m_vecChannels.emplace_back();
    channel.m_iNode = 1;
    channel.m_positions = makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {0, 0, 0}}, {2.0, {1, 0, 0}}});
    const Reduced reduced(makeChain(2), clip);
    EXPECT_EQ(reduced.m_reduced.m_iFrameRate, 10) << "more frames would not make it any better";
    EXPECT_LT(reduced.measure().m_dDistance, 1e-5);
    // The library's own track, right before and at the jump.
    const auto records = makeRecords(reduced.m_skeleton, reduced.m_reduced, Seam::Open);
    const TW2::TW_KeyframeAnimation track(records[0], false);
    M_Matrix4x3Template<float> matrix;
    track.animateFrame(matrix, 4.99F);
    EXPECT_EQ(matrix.getTranslation().x, 0.0F);
    track.animateFrame(matrix, 5.0F);
    EXPECT_EQ(matrix.getTranslation().x, 3.0F);
}

TEST(Reduction, ScaleAndShearAreKept)
{
    // The parent grows along one axis while the child turns: in the scene the child is sheared.
    Clip clip = makeWaving(2, 1.0, [](int node, double t) { return node == 1 ? 90.0 * t : 0.0; });
    clip.m_vecChannels[0].m_scales = makeCurve<Vector3d>(Interpolation::Linear, {{0.0, {1, 1, 1}}, {1.0, {3, 1, 1}}});
    const Reduced reduced(makeChain(2), clip);
    EXPECT_TRUE(reduced.measure().isWithin(s_tolerance)) << reduced.measure().m_dDistance;
}

TEST(LoopSeam, IsFoundByTheClipsOwnPoses)
{
    const auto seamOf = [](const Clip& clip) { return Reduced(makeChain(3), clip).m_reduced.m_eSeam; };
    const auto turn = [](double degreesPerSecond)
    { return [degreesPerSecond](int node, double t) { return node == 0 ? degreesPerSecond * t : 0.0; }; };
    EXPECT_EQ(seamOf(makeWaving(1, 2.0, turn(180.0))), Seam::SameFrame) << "the last frame is the first one again";
    EXPECT_EQ(seamOf(makeWaving(1, 59.0 / 30.0, turn(180.0))), Seam::NextFrame) << "one step is missing";
    EXPECT_EQ(seamOf(makeWaving(1, 1.0, turn(180.0))), Seam::Open);
    Clip cut = makeWaving(1, 3.0, turn(180.0));
    cut.m_dDuration = 2.0;
    EXPECT_EQ(seamOf(cut), Seam::SameFrame) << "what is cut off says nothing";
    EXPECT_EQ(seamOf(makeWaving(1, 1.0 / 30.0, turn(180.0))), Seam::Open) << "too short to have a seam";
}

TEST(LoopSeam, SaysHowTheRecordsRepeat)
{
    const Reduced reduced(makeChain(1), makeWaving(1, 1.0, [](int, double t) { return 10.0 * t; }));
    const auto loops = [&reduced](Seam seam)
    {
        const auto record = makeRecords(reduced.m_skeleton, reduced.m_reduced, seam).front();
        return std::pair(record.header.looping, record.loopInterpolation);
    };
    EXPECT_EQ(loops(Seam::Open), std::pair(false, false));
    EXPECT_EQ(loops(Seam::SameFrame), std::pair(true, false));
    EXPECT_EQ(loops(Seam::NextFrame), std::pair(true, true));
}

TEST(PoseAtRest, AMirroredNodeStaysMirroredWhenItIsPlayed)
{
    Model model;
    Matrixd mirror = turnZ(30.0);
    mirror.setRow(2, {0.0, 0.0, -1.0});
    addNode(model, "mirror", -1, mirror);
    std::vector<std::string> warnings;
    const TW2::TW_KeyframeAnimation animation(TW2::convert::makeRestRecords(makeSkeleton(model, warnings)).at(0),
                                              false);
    M_Matrix4x3Template<float> played;
    animation.animate(played, 0.0F);
    Matrixd same;
    std::copy_n(played.data(), 12, same.data());
    EXPECT_LT(largestDifference(same, mirror), 3e-5);
}
