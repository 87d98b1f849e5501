#include "convert/clip_selection.h"

#include "convert/clip_fitting.h"
#include "convert/clip_sampler.h"
#include "tests/convert/model_builder.h"
#include "tests/support/expectations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using namespace convert_test;
using TW2::convert::chooseClips;
using TW2::convert::ClipSampler;

/// A clip that moves one node along x by `speed` units a second, with ten keys a second.
Clip makeClip(const std::string& name, int node, double seconds, double speed)
{
    Clip clip;
    clip.m_strName = name;
    clip.m_dDuration = seconds;
    Channel channel;
    channel.m_iNode = node;
    for (int i = 0; i <= seconds * 10.0; ++i)
    {
        channel.m_positions.m_vecTimes.push_back(i / 10.0);
        channel.m_positions.m_vecValues.push_back({speed * i / 10.0, 0.0, 0.0});
    }
    clip.m_vecChannels.push_back(channel);
    return clip;
}
}  // namespace

TEST(ClipSelection, ChoosesRenamesAndCuts)
{
    const std::vector<Clip> clips{makeClip("walk", 0, 2.0, 1.0), makeClip("a=b", 0, 1.0, 2.0),
                                  makeClip("x:1-2", 0, 1.0, 3.0)};
    const std::vector<Clip> chosen = chooseClips(clips, {"walk=go:5-15", "a=b", "x:1-2", "a=b=c", "walk"}, 0, "model");
    ASSERT_EQ(chosen.size(), 5U);
    EXPECT_EQ(chosen[0].m_strName, "go");
    EXPECT_NEAR(chosen[0].m_dDuration, 1.0, 1e-12);
    const Model model = makeChain(1);
    EXPECT_NEAR(ClipSampler(model, chosen[0]).sample(0, 0.25).getTranslation().x, 0.75, 1e-12);
    EXPECT_EQ(chosen[1].m_strName, "a=b") << "what a clip is called as a whole is its name";
    EXPECT_EQ(chosen[2].m_strName, "x:1-2");
    EXPECT_EQ(chosen[3].m_strName, "c");
    EXPECT_EQ(chosen[4].m_dDuration, 2.0);
    EXPECT_NEAR(chooseClips(clips, {"walk:5-15"}, 20, "model")[0].m_dDuration, 0.5, 1e-12) << "frames of a given rate";
    const auto reasonOf = [&clips](const std::string& choice)
    { return support::complaintOf([&] { (void)chooseClips(clips, {choice}, 0, "model"); }); };
    EXPECT_THAT(reasonOf("run"), testing::HasSubstr("has no clip \"run\"; its clips: \"walk\", \"a=b\""));
    EXPECT_THAT(reasonOf("walk=go:5-21"),
                testing::HasSubstr("clip \"walk\" has the frames 0 to 20 at 10 per second, not 5 to 21"));
    EXPECT_THAT(reasonOf("walk:7-5"), testing::HasSubstr("not 7 to 5"));
}

TEST(ClipSelection, CutsAtTheLastFrameOfAFileThatRoundsTheLengthOfAFrame)
{
    Clip clip = makeClip("climb", 0, 0.0, 0.0);
    std::vector<double>& times = clip.m_vecChannels[0].m_positions.m_vecTimes;
    times.clear();
    for (int i = 0; i < 2752; ++i)
    {
        times.push_back(i * 0.0083333);
    }
    clip.m_vecChannels[0].m_positions.m_vecValues.resize(times.size());
    clip.m_dDuration = times.back();
    const std::vector<Clip> chosen = chooseClips({clip}, {"climb:1-2751"}, 0, "model");
    EXPECT_NEAR(chosen.front().m_dDuration, 2750 / 120.0, 1e-12);
}

TEST(ClipSelection, PartsOfOneMotionBecomeOneClip)
{
    std::vector<Clip> parts{makeClip("a", 0, 1.0, 1.0), makeClip("b", 1, 2.0, 1.0)};
    EXPECT_TRUE(TW2::convert::areParts(parts));
    std::vector<std::string> warnings;
    const Clip merged = TW2::convert::mergeClips(makeChain(2), parts, "all", warnings);
    EXPECT_EQ(merged.m_vecChannels.size(), 2U);
    EXPECT_EQ(merged.m_dDuration, 2.0);
    EXPECT_THAT(warnings, testing::IsEmpty());
    EXPECT_FALSE(TW2::convert::areParts({parts[0]})) << "one is no part of anything";
    // Parts that were cut out of their motions begin together, with the events that lie within them.
    parts[0].m_root = scale(0.5);  // from a file with another space
    parts[1].m_dStart = 0.45;
    parts[1].m_dDuration = 1.0;
    parts[1].m_vecEvents = {{0.25, "before"}, {0.75, "within"}, {1.75, "behind"}};
    parts[1].m_vecChannels[0].m_positions.m_eInterpolation = Interpolation::Step;
    const Clip cut = TW2::convert::mergeClips(makeChain(2), parts, "all", warnings);
    ASSERT_EQ(cut.m_vecEvents.size(), 1U);
    EXPECT_NEAR(cut.m_vecEvents[0].m_dTime, 0.3, 1e-12);
    const Model chain = makeChain(2);
    const ClipSampler sampler(chain, cut);
    EXPECT_NEAR(sampler.sample(0, 0.35).getTranslation().x, 0.175, 1e-9);
    EXPECT_NEAR(sampler.sample(1, 0.3).getTranslation().x, 0.7, 1e-9);
    const std::vector<double> jumps = sampler.findJumps(1);
    EXPECT_TRUE(std::any_of(jumps.begin(), jumps.end(), [](double time) { return std::abs(time - 0.05) < 1e-9; }));
    EXPECT_EQ(TW2::convert::chooseFrameRate(cut), 20) << "keys lie between the frames of ten per second";
    // An event on the last frame is within, however the sum of times is rounded.
    parts = {makeClip("a", 0, 1.0, 1.0), makeClip("b", 1, 2.0, 1.0)};
    parts[1].m_dStart = 0.7;
    parts[1].m_dDuration = 0.1;
    parts[1].m_vecEvents = {{0.7, "first"}, {0.8, "last"}};
    EXPECT_EQ(TW2::convert::mergeClips(makeChain(2), parts, "all", warnings).m_vecEvents.size(), 2U);
    parts.push_back(makeClip("c", 1, 1.0, 5.0));
    EXPECT_FALSE(TW2::convert::areParts(parts));
    (void)TW2::convert::mergeClips(makeChain(2), parts, "all", warnings);
    EXPECT_THAT(warnings, testing::ElementsAre(testing::HasSubstr("1 motions are left out")));
}

TEST(ClipSelection, ClipsOfAnotherFileAreMatchedByTheNamesOfNodes)
{
    const Model body = makeChain(3);
    Model other;
    addNode(other, "node2", -1, move(7, 0, 0));
    addNode(other, "node1", 0, move(3, 0, 0));
    addNode(other, "tail", 0, Matrixd());
    other.m_strName = "motion";
    other.m_vecClips = {makeClip("wave", 1, 1.0, 4.0)};
    other.m_vecClips[0].m_vecChannels.push_back(other.m_vecClips[0].m_vecChannels[0]);
    other.m_vecClips[0].m_vecChannels[1].m_iNode = 2;
    TW2::convert::MotionSource source;
    const std::vector<Clip> clips = TW2::convert::fitClips(body, other, {}, source);
    ASSERT_EQ(clips.size(), 1U);
    const ClipSampler sampler(body, clips[0]);
    EXPECT_NEAR(sampler.sample(1, 0.5).getTranslation().x, 2.0, 1e-12) << "its node is another number there";
    EXPECT_NEAR(sampler.sample(2, 0.5).getTranslation().x, 7.0, 1e-12) << "stands as the other file has it";
    EXPECT_FALSE(sampler.isMoved(0));
    EXPECT_THAT(source.m_vecLost, testing::ElementsAre("tail"));
    EXPECT_FALSE(source.m_bFitted);
}
