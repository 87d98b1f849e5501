#include "tests/support/expectations.h"

#include <tw2/keyframe/linearly_optimized_container.h>

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace
{
using FloatTrack = TW2::LinearlyOptimizedContainer<float>;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

struct Loop
{
    unsigned int frames;
    bool looping = false;
    unsigned int loopTo = 0;
    bool interpolation = false;
};

void fill(FloatTrack& track, const Loop& loop, const std::vector<std::pair<int, float>>& keys)
{
    track.construct(static_cast<unsigned int>(keys.size()));
    track.m_bLooping = loop.looping;
    track.m_bLoopInterpolation = loop.interpolation;
    track.m_uTotalFrameCount = loop.frames;
    track.m_uLoopToFrame = loop.loopTo;
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        track.m_vecFrames[i] = static_cast<std::int16_t>(keys[i].first);
        track.m_vecValues[i] = keys[i].second;
    }
}

float valueAt(const FloatTrack& track, float frame, int hint = 0)
{
    float value = -1000.0F;
    track.getValue(value, frame, hint);
    return value;
}

// A track whose value is the frame itself shows at which frame it was evaluated.
std::vector<std::pair<int, float>> clock(int frames)
{
    return {{0, 0.0F}, {frames - 1, static_cast<float>(frames - 1)}};
}
}  // namespace

TEST(Track, FramesOutsideWrapAsTheTrackLoops)
{
    const std::tuple<Loop, float, float> cases[] = {
        {{10}, 1e30F, 9.0F},
        {{10}, infinity, 9.0F},
        {{10}, -1e-20F, 0.0F},
        {{10}, notANumber, 0.0F},
        {{10}, -infinity, 0.0F},
        {{10, true, 3}, 9.0F, 0.0F},
        {{10, true, 3}, infinity, 0.0F},
        {{10, true, 9}, 12.0F, 9.0F},  // the loop has no length
        // The extra frame leads from the last key to the key at or after frame 3, which is the last key itself.
        {{10, true, 3, true}, 9.25F, 9.0F},
        {{10, true, 3, true}, 10.0F, 0.0F},
    };
    for (const auto& [loop, frame, expected] : cases)
    {
        FloatTrack track;
        fill(track, loop, clock(10));
        EXPECT_EQ(valueAt(track, frame), expected) << "frame " << frame << ", looping " << loop.looping;
    }
    FloatTrack track;
    fill(track, {10, true, 3, true}, {{0, 0.0F}, {3, 30.0F}, {9, 90.0F}});
    EXPECT_EQ(valueAt(track, 9.25F), 75.0F) << "a quarter of the way from 90 to 30";
    EXPECT_EQ(track.m_fLastLowerKey, 2.0F);
    EXPECT_EQ(track.m_fLastUpperKey, 1.0F);
}

TEST(Track, AFrameOnAKeyYieldsTheKeyAndTheHintPointsPastIt)
{
    FloatTrack track;
    fill(track, {31}, {{0, 0.0F}, {10, 1.0F}, {20, 5.0F}, {30, 2.0F}});
    EXPECT_EQ(valueAt(track, 2.5F), 0.25F);
    float lower = 0.0F;
    float upper = 0.0F;
    float fraction = 9.0F;
    EXPECT_EQ(track.getKeys(lower, fraction, upper, 10.0F, 0), 2);
    EXPECT_EQ(lower, 1.0F);
    EXPECT_EQ(upper, 5.0F);
    EXPECT_EQ(fraction, 0.0F);
    EXPECT_EQ(track.m_fLastLowerKey, 1.0F);
    EXPECT_EQ(track.m_fLastUpperKey, 2.0F);
    // Past the last key of a looping track that is longer than its keys.
    fill(track, {100, true}, {{5, 7.0F}, {10, 8.0F}});
    EXPECT_EQ(track.getKeys(lower, fraction, upper, 10.0F, 0), 1);
    EXPECT_EQ(fraction, 1.0F) << "exactly on the last key";
    EXPECT_EQ(track.getKeys(lower, fraction, upper, 50.0F, 1), 1);
    EXPECT_EQ(lower, 8.0F);
    EXPECT_EQ(track.getKeys(lower, fraction, upper, 2.0F, 1), 0);
    EXPECT_EQ(upper, 7.0F) << "before the first key";
    EXPECT_EQ(fraction, 0.0F);
    fill(track, {100, true, 40, true}, {{50, 3.0F}});
    for (const float frame : {-1.0F, 0.0F, 50.0F, 99.5F, 1000.0F, notANumber})
    {
        EXPECT_EQ(valueAt(track, frame), 3.0F) << "the only key, at " << frame;
    }
}

TEST(Track, AnyHintFindsTheSameKeysAsNone)
{
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round)
    {
        std::vector<std::pair<int, float>> keys;
        int frame = static_cast<int>(random() % 3);
        for (unsigned long k = 0, count = 1 + random() % 60; k < count; ++k)
        {
            keys.emplace_back(frame, static_cast<float>(random() % 100));
            frame += static_cast<int>(random() % 4);  // several keys at one frame now and then
        }
        const auto frames = static_cast<unsigned int>(frame) + 1;
        FloatTrack track;
        fill(track, {frames, random() % 2 == 0, frames / 3, random() % 2 == 0}, keys);
        int steady = 0;
        for (int step = 0; step < 200; ++step)
        {
            const float at = static_cast<float>(random() % (frames * 40)) / 10.0F - static_cast<float>(frames);
            float lower;
            float upper;
            float fraction;
            const int expected = track.getKeys(lower, fraction, upper, at, 0);
            const float value = valueAt(track, at);
            for (const int hint : {steady, static_cast<int>(keys.size()) - 1, static_cast<int>(random()), -1,
                                   std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
            {
                float hinted = 0.0F;
                EXPECT_EQ(track.getValue(hinted, at, hint), expected) << "frame " << at << ", hint " << hint;
                EXPECT_EQ(hinted, value);
            }
            steady = expected;
        }
    }
}

TEST(Track, DamagedTracksAreReadWithinTheirKeys)
{
    FloatTrack track;
    EXPECT_EQ(valueAt(track, 3.0F), 0.0F) << "never constructed";
    TW2::LinearlyOptimizedContainer<G_FColor> colors;
    G_FColor color(1.0F, 2.0F, 3.0F, 4.0F);
    EXPECT_EQ(colors.getValue(color, 3.0F, 7), 0);
    EXPECT_EQ(color, G_FColor(0.0F, 0.0F, 0.0F, 255.0F));

    std::mt19937 random(4);
    const unsigned int odd[] = {0, 1, 2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
    for (int round = 0; round < 20000; ++round)
    {
        std::vector<std::pair<int, float>> keys(1 + random() % 5);
        for (auto& key : keys)
        {
            key = {static_cast<int>(random() % 65536) - 32768, 0.5F};
        }
        fill(track,
             {odd[random() % std::size(odd)], random() % 2 == 0, odd[random() % std::size(odd)], random() % 2 == 0},
             keys);
        for (const float frame : {0.0F, -3.0F, 7.5F, 4e9F, -4e9F, 1e38F, notANumber, infinity, -infinity})
        {
            EXPECT_EQ(valueAt(track, frame, static_cast<int>(random())), 0.5F);
        }
    }
}

TEST(Track, ColoursAreInterpolatedInAllTheirPartsAndAKeyIsMetExactly)
{
    TW2::LinearlyOptimizedContainer<G_FColor> colors;
    colors.construct(2);
    EXPECT_EQ(colors.m_vecValues[1], G_FColor(0.0F, 0.0F, 0.0F, 255.0F));
    colors.m_uTotalFrameCount = 5;
    colors.m_vecFrames = {0, 4};
    colors.m_vecValues = {G_FColor(0.0F, 100.0F, 200.0F, 255.0F), G_FColor(100.0F, 0.0F, 40.0F, 55.0F)};
    G_FColor color;
    EXPECT_EQ(colors.getValue(color, 1.0F, 0), 1);
    EXPECT_EQ(color, G_FColor(25.0F, 75.0F, 160.0F, 205.0F));

    TW2::LinearlyOptimizedContainer<M_Matrix4x3Template<float>> matrices;
    matrices.construct(2);
    EXPECT_EQ(matrices.m_vecValues[0], M_Matrix4x3Template<float>());
    matrices.m_uTotalFrameCount = 5;
    matrices.m_vecFrames = {0, 4};
    M_Matrix4x3Template<float> matrix;
    // Exactly a key's value, although the difference to the next is too large for a float.
    matrices.m_vecValues[0].m[3][0] = 3e38F;
    matrices.m_vecValues[1].m[3][0] = -3e38F;
    matrices.getValue(matrix, 0.0F, 0);
    EXPECT_EQ(matrix, matrices.m_vecValues[0]);
}

TEST(Track, ConstructingAgainEmptiesItAndAFailedOneLeavesItEmpty)
{
    FloatTrack prepared;  // what is set before the keys are there stays
    prepared.m_uTotalFrameCount = 5;
    prepared.destruct();
    prepared.construct(1);
    EXPECT_EQ(prepared.m_uTotalFrameCount, 5u);
    support::expectNothingLeftByFailedAllocations(
        []
        {
            FloatTrack track;
            try
            {
                fill(track, {10, true, 3, true}, clock(10));
                (void)valueAt(track, 4.0F);
                track.construct(20);
                EXPECT_FALSE(track.m_bLooping || track.m_bLoopInterpolation);
                EXPECT_EQ(track.m_uLoopToFrame + track.m_uTotalFrameCount, 0u);
                EXPECT_EQ(track.m_fLastUpperKey, 0.0F);
            }
            catch (...)
            {
                EXPECT_FALSE(track.isConstructed());
                EXPECT_TRUE(track.m_vecFrames.empty() && track.m_vecValues.empty());
                EXPECT_EQ(track.m_uTotalFrameCount, 0u);
                throw;
            }
        });
}
