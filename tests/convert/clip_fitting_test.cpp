#include "convert/clip_fitting.h"

#include "convert/clip_sampler.h"
#include "convert/rotation.h"
#include "convert/travel.h"
#include "tests/convert/model_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{
using namespace convert_test;
using TW2::convert::ClipSampler;
using TW2::convert::toMatrix;

/// The same rotation for other numbers, far from any axis.
Quaternion turnBy(double number)
{
    return normalized(
        Quaternion{1.0, 0.7 * std::sin(number), 0.6 * std::cos(2.0 * number), 0.5 * std::sin(3.0 * number)});
}

/// Hips with a leg and an arm of four bones, of which the second may be mirrored; all places `size` times as far away.
Model makeFigure(double size, bool mirrored)
{
    Model model;
    const auto add = [&](const char* name, int parent, const Vector3d& place)
    {
        const auto number = static_cast<double>(model.m_vecNodes.size());
        Matrixd local = toMatrix(turnBy(number));
        if (mirrored && number == 2.0)
        {
            local.setRow(0, -local.getRow(0));
        }
        local.setTranslation(place * size);
        addNode(model, name, parent, local);
    };
    add("hips", -1, {0.5, 2.0, 0.25});
    add("upper", 0, {1.0, 0.5, 0.0});
    add("lower", 1, {0.5, 1.0, 0.25});
    add("hand", 2, {1.0, 0.0, 0.5});
    add("foot", 0, {-0.5, -2.0, 0.5});
    add("finger", 3, {0.25, 0.5, -0.5});
    return model;
}

Matrixd getWorld(const Model& model, const ClipSampler& sampler, std::size_t node, double seconds)
{
    Matrixd world;
    for (int at = static_cast<int>(node); at >= 0; at = model.m_vecNodes[static_cast<std::size_t>(at)].m_iParent)
    {
        world = world * sampler.sample(static_cast<std::size_t>(at), seconds);
    }
    return world;
}
}  // namespace

TEST(ClipFitting, ALargerBodyTurnsStretchesAndShiftsAsTheModelDoesWhicheverIsMirrored)
{
    for (const auto& [bodyMirrored, mirrored] : {std::pair(false, false), {true, true}, {true, false}, {false, true}})
    {
        const Model body = makeFigure(2.0, bodyMirrored);
        Model other = makeFigure(1.0, mirrored);
        Clip& clip = other.m_vecClips.emplace_back();
        clip.m_dDuration = 2.0;
        for (std::size_t node = 0; node < other.m_vecNodes.size(); ++node)
        {
            Channel& channel = clip.m_vecChannels.emplace_back();
            channel.m_iNode = static_cast<int>(node);
            const auto number = static_cast<double>(node);
            for (const double time : {0.0, 1.0, 2.0})
            {
                channel.m_rotations.m_vecTimes.push_back(time);
                channel.m_rotations.m_vecValues.push_back(turnBy(number + 0.4 * time));
                if (node == 0 || node == 3)
                {
                    channel.m_positions.m_vecTimes.push_back(time);
                    channel.m_positions.m_vecValues.push_back(other.m_vecNodes[node].m_local.getTranslation() +
                                                              Vector3d(0.1, -0.2, 0.3) * time);
                }
                if (node == 1 || node == 3)
                {
                    const double grown = 1.0 + 0.25 * time * number;
                    channel.m_scales.m_vecTimes.push_back(time);
                    channel.m_scales.m_vecValues.push_back({grown, grown, grown});
                }
            }
        }
        TW2::convert::MotionSource source;
        const std::vector<Clip> clips = TW2::convert::fitClips(body, other, {}, source);
        ASSERT_EQ(clips.size(), 1U);
        EXPECT_TRUE(source.m_bFitted);
        EXPECT_NEAR(source.m_dRatio, 2.0, 1e-12);
        const ClipSampler played(body, clips[0]);
        const ClipSampler own(other, clip);
        for (std::size_t node = 0; node < body.m_vecNodes.size(); ++node)
        {
            for (const double time : {0.0, 0.3, 1.0, 1.7})
            {
                const Matrixd is = getWorld(body, played, node, time);
                Matrixd expected = getWorld(other, own, node, time);
                expected.setTranslation(expected.getTranslation() * 2.0);
                const double off = mirrored == bodyMirrored
                                       ? largestDifference(is, expected)
                                       : (is.getTranslation() - expected.getTranslation()).length();
                EXPECT_LT(off, 1e-9) << body.m_vecNodes[node].m_strName << " at " << time << ", mirrored "
                                     << bodyMirrored << mirrored;
            }
        }
    }
}

TEST(ClipFitting, ALimbThatPointsTheOtherWayAtRestIsTurnedAround)
{
    for (const Vector3d& limb : {Vector3d(0.5, 0.0, 0.0), Vector3d(0.5, 0.0, 1e-8), Vector3d(0.25, 0.5, -0.25)})
    {
        Model body;
        Model other;
        for (Model* model : {&body, &other})
        {
            addNode(*model, "hips", -1, move(0, 2, 0));
            addNode(*model, "foot", 0, move(0, -2, 0));
            addNode(*model, "arm", 0, move(1, 0, 0));
            const Vector3d hand = model == &body ? limb : Vector3d(-limb.x, -limb.y, limb.x < 0.5 ? -limb.z : 0.0);
            addNode(*model, "hand", 2, move(hand.x, hand.y, hand.z));
        }
        Clip& clip = other.m_vecClips.emplace_back();
        clip.m_dDuration = 1.0;
        clip.m_vecChannels.emplace_back().m_iNode = 2;
        clip.m_vecChannels[0].m_rotations =
            makeCurve<Quaternion>(Interpolation::Linear, {{0.0, Quaternion()}, {1.0, turnBy(1.0)}});
        TW2::convert::MotionSource source;
        const std::vector<Clip> clips = TW2::convert::fitClips(body, other, {}, source);
        for (const double time : {0.0, 0.5, 1.0})
        {
            const Vector3d is = getWorld(body, ClipSampler(body, clips.at(0)), 3, time).getTranslation();
            const Vector3d expected = getWorld(other, ClipSampler(other, clip), 3, time).getTranslation();
            EXPECT_LT((is - expected).length(), 1e-7) << limb.x << " at " << time;
        }
    }
}

TEST(NodeMatch, NamesThatAreSpelledOtherwiseAreOneAndOthersAreNot)
{
    Model body;
    for (const char* name : {"Bip01", "Bip01 Pelvis", "Bip01 L UpperArm", "Bip01 R UpperArm", "Bip01 Spine1",
                             "Bip01 Head", "Bip01 Toe10", "Ponytail Tip", "Bip01 LeftEye"})
    {
        addNode(body, name, body.m_vecNodes.empty() ? -1 : 0, Matrixd());
    }
    const std::vector<std::pair<std::string, int>> names{
        {"bip_1", 0},  {"rig:pelvis", 1}, {"upper_arm.L", 2},  {"UpperArmRight", 3}, {"spine_001", 4},
        {"HEAD", 5},   {"toe_010", 6},    {"tip", -1},         {"l-eye", 8},         {"eye", -1},
        {"spine", -1}, {"Toe1", -1},      {"rgt UpperLeg", -1}};
    Model other;
    for (const auto& [name, to] : names)
    {
        addNode(other, name, other.m_vecNodes.empty() ? -1 : 0, Matrixd());
        EXPECT_EQ(TW2::convert::findNode(body, name), to) << name;
    }
    const TW2::convert::NodeMatch match = TW2::convert::matchNodes(body, other, {});
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        EXPECT_EQ(match.m_vecTo[i], names[i].second) << names[i].first;
    }
    EXPECT_EQ(match.m_counts.m_uiBySpelling, 8U);
    EXPECT_EQ(match.m_vecFrom[7], -1);
}

TEST(TurnShortest, GoesEvenlyAlsoByHalfATurnAboutAnyAxis)
{
    for (const Vector3d& about : {Vector3d(1, 0, 0), Vector3d(0, -1, 0), Vector3d(0, 0, 1), Vector3d(1, 3, -2)})
    {
        for (const double degrees : {0.0, 40.0, 179.0, 180.0})
        {
            const Matrixd from = toMatrix(turnBy(1.0));
            const double half = degrees * std::numbers::pi / 360.0;
            const Vector3d n = about.normalized() * std::sin(half);
            const Matrixd turn = toMatrix({std::cos(half), n.x, n.y, n.z});
            const Matrixd part = from.inverse() * TW2::convert::turnShortest(from, from * turn, 0.5);
            EXPECT_LT(largestDifference(part * part, turn), 1e-6) << degrees;
            EXPECT_NEAR(part.m[0][0] + part.m[1][1] + part.m[2][2], 1.0 + 2.0 * std::cos(half), 1e-6) << degrees;
        }
    }
}

TEST(Travel, CarriesEveryNodeOnceAndJumpsWhereTheClipDoes)
{
    // A lamp with a light stands beside the rig of the hips that travel.
    Model model;
    addNode(model, "lamp", -1, move(1, 0, 2));
    addNode(model, "light", 0, move(0, 1, 0.5));
    addNode(model, "rig", -1, turnZ(20.0) * move(0.2, 0.5, 0));
    addNode(model, "hips", 2, move(0, 0.5, 0));
    Clip clip;
    clip.m_dStart = 0.5;
    clip.m_dDuration = 2.0;
    for (const auto& [node, time, shift] : {std::tuple(1, 1.25, 1.0), {2, 1.0, 3.0}, {3, 2.5, 0.5}})
    {
        const Vector3d place = model.m_vecNodes[static_cast<std::size_t>(node)].m_local.getTranslation();
        clip.m_vecChannels.emplace_back().m_iNode = node;
        clip.m_vecChannels.back().m_positions = makeCurve<Vector3d>(
            Interpolation::Step, {{0.0, place}, {time, place + Vector3d(shift, 0.5 * shift, 2.0 * shift)}});
    }
    for (const std::string choice : {"hips", "hips:xyz", "lamp:z"})
    {
        const auto travel =
            std::make_shared<const TW2::convert::Travel>(model, clip, TW2::convert::chooseTravel(model, choice, ""));
        const Clip standing = TW2::convert::makeStandingClip(travel);
        const ClipSampler is(model, standing);
        for (const double seconds : {0.0, 0.6, 1.0, 2.0})
        {
            for (const std::size_t node : {1U, 3U})
            {
                EXPECT_LT(largestDifference(getWorld(model, is, node, seconds) * travel->at(seconds),
                                            getWorld(model, ClipSampler(model, clip), node, seconds)),
                          1e-9)
                    << choice << ": " << node << " at " << seconds;
            }
        }
        EXPECT_EQ(travel->isFartherThan(7.0, 1.0), choice != "lamp:z") << "at the very end";
        EXPECT_EQ(is.findJumps(1), std::vector<double>{0.75}) << choice;
        EXPECT_EQ(is.findJumps(0), choice == "lamp:z" ? std::vector<double>() : std::vector<double>({0.5, 2.0}));
    }
}
