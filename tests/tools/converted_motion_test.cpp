// Motion as it is converted, loaded and played, beside a model of the file in double precision.
#ifdef TW2_HAS_CONVERT
#include "tests/tools/converted_motion.h"

#include "tests/support/run_command.h"
#include "tests/support/temporary_directory.h"

#include <tw2/motion/root_motion.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace
{
using namespace support;

/// Along a circle, turning with it, up and down; a leg swings, and a target beside goes its own way.
GltfCharacter makeWalker()
{
    GltfCharacter walker;
    walker.m_bSkinned = false;
    walker.m_vecBones = {{"rig", -1, {0.2, 0.5, 0.1}, about({0, 1, 0}, 30)},
                         {"mixamorig:Hips", 0, {0, 0.5, 0}, about({1, 0, 0}, 90)},
                         {"leg", 1, {0.1, 0, 0.2}, about({0, 0, 1}, 10)},
                         {"target", -1, {0, 0, 1}, {}}};
    const auto move = [](std::size_t bone, double t, Vec& offset, Quat& q)
    {
        const double angle = 0.9 * t;
        if (bone == 1)
        {
            offset = {3 * std::sin(angle), 0.5 + 0.05 * std::sin(2 * s_pi * t), 3 - 3 * std::cos(angle)};
            q = about({0, 1, 0}, -angle * 180 / s_pi) * q;
        }
        else if (bone == 2)
        {
            q = q * about({1, 0, 0}, 30 * std::sin(2 * s_pi * t));
        }
        else if (bone == 3)
        {
            offset = {t, 0.1 * std::sin(2 * s_pi * t), 1};
        }
    };
    walker.m_vecClips = {
        {"walk", 2.0, move,
         R"(,"extras":{"events":[{"time":1.2,"name":"step \"right\""},{"time":0.4,"name":"left"}]})"},
        {"stand", 1.0, [](std::size_t, double, Vec&, Quat&) {}, R"(,"extras":{"events":[{"at":1},{"name":"when"}]})"}};
    return walker;
}
}  // namespace

TEST(ConvertedMotion, TravelPutBackIsTheClipAsItWas)
{
    GltfCharacter walker = makeWalker();
    walker.m_vecBones.push_back({"lamp", -1, {1, 0, 2}, about({1, 0, 0}, 20)});
    walker.m_vecBones.push_back({"light", 4, {0, 1, 0.5}, {}});
    const TemporaryDirectory directory;
    const std::string model = directory.write("walker.gltf", walker.make());
    struct Case
    {
        const char* m_pChoice;
        bool m_bTurns;
        bool m_bClimbs;
        double m_dTravel;  ///< how far the hips still go along x and z while the clip plays
    };
    for (const auto& [choice, turns, climbs, travel] :
         {Case{"mixamorig:Hips", true, false, 0.0}, Case{"mixamorig:Hips:xyz", false, true, 0.0},
          Case{"mixamorig:Hips:xz", false, false, 0.0}, Case{"mixamorig:Hips:yaw", true, false, 1.0}})
    {
        const std::string out = directory.file(std::string("out") + choice);
        const CommandResult converted =
            runTW2({"convert", model, "-o", out, "--root-motion", choice, "--tolerance", "0.002", "0.1", "--json"});
        ASSERT_EQ(converted.status, 0) << converted.errors;
        EXPECT_THAT(converted.output, testing::HasSubstr("\"travelFile\": \"walker_walk.travel.tw\""));
        const auto object = load(out + "/walker.script", "object");
        const int walk = object->findAnimation("walk");
        ASSERT_TRUE(object->getRootMotionTrack(walk)) << choice;
        EXPECT_FALSE(object->getRootMotionTrack(object->findAnimation("stand"))) << "nothing travels";
        const TW2::TW_RootMotion motion(*object, walk);
        double stays = 0.0;
        for (int frame = 0; frame <= 60; ++frame)
        {
            const double seconds = frame / 30.0;
            object->animateObject(walk, static_cast<float>(seconds), nullptr);
            const TW2::TW_Travel place = motion.getTravel(0.0, seconds);
            EXPECT_EQ(std::abs(place.m_vTranslation.y) > 0.01 && frame % 15 != 0, climbs && frame % 15 != 0) << frame;
            EXPECT_NEAR(place.m_rotation.getDegrees(), turns ? 0.9 * seconds * 180 / s_pi : 0.0, 0.1) << frame;
            const Vec here = getPoint(*object, "mixamorig:Hips", {});
            const Vec begin = walker.getPoint(0, 1, 0.0);
            stays = std::max(stays, std::hypot(here.x - begin.x, here.z - begin.z));
            for (const std::size_t bone : {1U, 2U, 3U, 5U})
            {
                const Vec played = getPoint(*object, walker.m_vecBones[bone].m_strName, {0.1, 0.2, 0.3});
                const auto put = place.transformPoint({played.x, played.y, -played.z});
                const Vec expected = walker.getPoint(0, bone, seconds, {0.1, 0.2, 0.3});
                EXPECT_LT(length(Vec{put.x, put.y, -put.z} - expected), 0.004) << choice << " " << frame << " " << bone;
            }
        }
        EXPECT_EQ(stays > 0.004, travel > 0.0) << choice << ": " << stays;
    }
}

TEST(ConvertedMotion, AWalkOnTheSpotRepeatsWithItsTravel)
{
    // On a straight line, and its last frame is its first one again but for the way.
    GltfCharacter walker = makeWalker();
    walker.m_vecBones.pop_back();
    walker.m_vecClips = {{"walk", 1.0,
                          [](std::size_t bone, double t, Vec& offset, Quat& q)
                          {
                              offset = bone == 1 ? Vec{0, 0.5 + 0.05 * std::sin(2 * s_pi * t), 1.4 * t} : offset;
                              q = bone == 2 ? q * about({1, 0, 0}, 30 * std::sin(2 * s_pi * t)) : q;
                          },
                          ""}};
    const TemporaryDirectory directory;
    const std::string model = directory.write("walker.gltf", walker.make());
    struct Case
    {
        const char* m_pLoop;
        bool m_bLooping;
        const char* m_pNode;
    };
    for (const auto& [option, looping, node] :
         {Case{"auto", true, "hips"}, Case{"never", false, "MIXAMORIG:hips"}, Case{"always", true, "hips:xz"}})
    {
        const std::string out = directory.file(option);
        const CommandResult converted = runTW2({"convert", model, "-o", out, "--root-motion", node, "--loop", option});
        ASSERT_EQ(converted.status, 0) << converted.errors;
        EXPECT_THAT(converted.output, testing::Not(testing::HasSubstr("more than allowed")))
            << "the rig above the hips is carried along and no error";
        EXPECT_THAT(converted.output, testing::EndsWith("\n     with travel, 0 events\n"));
        const auto object = load(out + "/walker.script", "object");
        EXPECT_EQ(object->isAnimationLooping(1), looping);
        const TW2::TW_RootMotion motion(*object, 1);
        EXPECT_NEAR(motion.getTravel(0.0, 10.0).m_vTranslation.length(), looping ? 14.0 : 1.4, 0.01);
    }
    EXPECT_THAT(runTW2({"convert", model, "-o", directory.file("x"), "--root-motion", "hips", "--rate", "2"}).output,
                testing::HasSubstr("more than allowed"))
        << "two frames a second cannot say it";
}

TEST(ConvertedMotion, ANodeOrPartsThatAreNotThereAreNamed)
{
    const TemporaryDirectory directory;
    const std::string model = directory.write("walker.gltf", makeWalker().make());
    const std::string out = directory.file("out");
    for (const auto& [choice, reason] :
         {std::pair{"Hip",
                    R"(no node "Hip" whose motion could be travel; the topmost nodes that its clips move: "rig")"},
          std::pair{"leg:xw", R"(expected parts such as "xz,yaw" behind the colon, not "xw")"},
          std::pair{"leg:", R"(behind the colon, not "")"}})
    {
        const CommandResult result = runTW2({"convert", model, "-o", out, "--root-motion", choice});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, testing::AllOf(testing::HasSubstr(reason), testing::HasSubstr("walker.gltf")));
        EXPECT_FALSE(std::filesystem::exists(out)) << "nothing half-written";
    }
}

TEST(ConvertedMotion, EventsComeFromTheFileAndFromBesideItAndStayWithTheirClip)
{
    const GltfCharacter walker = makeWalker();
    const TemporaryDirectory directory;
    const std::string model = directory.write("walker.gltf", walker.make());
    const std::string events = "# steps\nwalk 1.6 land   # here\n\nwalk\t2 \"the \\\"end\\\"\"\nstand 0.5 sigh\n";
    directory.write("walker.events", events);
    struct Case
    {
        Strings m_vecOptions;
        const char* m_pClip;
        std::vector<std::pair<std::string, double>> m_vecEvents;
    };
    const std::vector<Case> cases{
        {{}, "walk", {{"left", 0.4}, {"step \"right\"", 1.2}, {"land", 1.6}, {"the \"end\"", 2.0}}},
        {{}, "stand", {{"sigh", 0.5}}},
        {{"--clip", "walk=go:12-48"}, "go", {{"left", 0.0}, {"step \"right\"", 0.8}, {"land", 1.2}}},
        {{"--clip", "walk=go:30-60", "--clip", "stand", "--merge-clips"},
         "go",
         {{"step \"right\"", 0.2}, {"sigh", 0.5}, {"land", 0.6}, {"the \"end\"", 1.0}}},
        {{"--root-motion", "leg", "--rate", "15"},
         "walk",
         {{"left", 0.4}, {"step \"right\"", 1.2}, {"land", 1.6}, {"the \"end\"", 2.0}}}};
    for (std::size_t i = 0; i < cases.size(); ++i)
    {
        const std::string out = directory.file(std::to_string(i));
        const CommandResult converted =
            runTW2(Strings{"convert", model, "-o", out, "--tolerance", "0.002", "0.1"} + cases[i].m_vecOptions);
        ASSERT_EQ(converted.status, 0) << converted.errors;
        EXPECT_THAT(converted.errors, testing::HasSubstr("events without a name")) << "extras that are not events";
        EXPECT_THAT(converted.output, testing::HasSubstr((i == 4 ? "\n     with travel, " : "\n     ") +
                                                         std::to_string(cases[i].m_vecEvents.size()) + " events\n"));
        const auto object = load(out + "/walker.script", "object");
        const int index = object->findAnimation(cases[i].m_pClip);
        std::vector<std::pair<std::string, double>> found;
        for (const TW2::TW_AnimationEvent& event : object->getAnimationEvents(index))
        {
            const double seconds = event.m_dFrame / static_cast<double>(object->getAnimationFPS(index));
            found.emplace_back(event.m_strName.c_str(), std::round(seconds * 1000) / 1000);
        }
        EXPECT_EQ(found, cases[i].m_vecEvents) << i;
        if (cases[i].m_pClip == std::string_view("go"))
        {
            // Cut from frame 12 or 30 on, merged with another or not.
            object->animateObject(index, 0.5f, nullptr);
            const double seconds = 0.5 + (cases[i].m_vecOptions.size() > 2 ? 1.0 : 0.4);
            EXPECT_LT(length(getPoint(*object, "leg", {}) - walker.getPoint(0, 2, seconds)), 0.004) << i;
        }
    }
    for (const auto& [text, reason] :
         {std::pair{"walk 1.6\n", ":1: expected CLIP SECONDS NAME, found 2 words"},
          std::pair{"\nrun 1 step\n", R"(:2: the model has no clip "run"; its clips: "walk", "stand")"},
          std::pair{"walk soon step\n", R"(:1: expected seconds from the clip's beginning, found "soon")"},
          std::pair{"walk 1.6s step\n", R"(found "1.6s")"}, std::pair{"walk nan step\n", R"(found "nan")"},
          std::pair{"walk 1e999 step\n", R"(found "1e999")"},
          std::pair{"walk 2.5 step\n", R"(:1: clip "walk" goes from 0 to 2.000000 seconds, not to 2.5)"},
          std::pair{"walk 2 \"step\n", ":1: a quotation mark is missing"}})
    {
        directory.write("walker.events", std::string_view(text));
        const CommandResult result = runTW2({"convert", model, "-o", directory.file("bad")});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, testing::AllOf(testing::HasSubstr("walker.events:"), testing::HasSubstr(reason)));
    }
}

TEST(ConvertedMotion, BoundsHoldWhatIsDrawnAtAnyTimeAndLittleMore)
{
    for (const bool skinned : {false, true})
    {
        GltfCharacter walker = makeWalker();
        walker.m_bSkinned = skinned;
        const TemporaryDirectory directory;
        ASSERT_EQ(
            runTW2({"convert", directory.write("walker.gltf", walker.make()), "-o", directory.file("out")}).status, 0);
        // Low and high along each axis, of the corners of a box around each bone's triangle.
        std::array<double, 6> box{1e9, 1e9, 1e9, -1e9, -1e9, -1e9};
        double radius = 0.0;
        for (int i = 0; i < 61 * 2 * 4 * 4; ++i)
        {
            const int clip = i % 61 < 30 ? i / 61 % 2 : 0;  // the second one is half as long
            const Vec corner{i / 122 % 2 * 0.1, i / 244 % 2 * 0.1, 0.0};
            const Vec p = walker.getPoint(clip, static_cast<std::size_t>(i / 488), i % 61 / 30.0, corner);
            const std::array<double, 3> place{p.x, p.y, -p.z};
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                box[axis] = std::min(box[axis], place[axis]);
                box[axis + 3] = std::max(box[axis + 3], place[axis]);
            }
            radius = std::max(radius, length(p));
        }
        const double slack = 0.01 * length(Vec{box[3] - box[0], box[4] - box[1], box[5] - box[2]});
        const std::string script = directory.read("out/walker.script");
        std::array<double, 7> is{};
        ASSERT_EQ(std::sscanf(script.substr(script.find("boundingBoxMin")).c_str(),
                              "boundingBoxMin (%lf, %lf, %lf) boundingBoxMax (%lf, %lf, %lf) boundingSphereRadius %lf",
                              &is[0], &is[1], &is[2], &is[3], &is[4], &is[5], &is[6]),
                  7);
        for (std::size_t i = 0; i < 6; ++i)
        {
            EXPECT_NEAR(is[i], box[i] + (i < 3 ? -slack : slack), 0.005) << i << skinned;
        }
        EXPECT_NEAR(is[6], radius + slack, 0.005) << skinned;
    }
}

TEST(ConvertedMotion, TellsHowFarItIsStepByStep)
{
    const TemporaryDirectory directory;
    const std::string model = directory.write("walker.gltf", makeWalker().make());
    const CommandResult result = runTW2({"convert", model, "-o", directory.file("out"), "--quiet", "--progress", "1"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::StartsWith("0.000 reading walker.gltf\n0.300 clip "));
    std::istringstream lines(result.output);
    double before = -1.0;
    for (std::string line; std::getline(lines, line); before = std::stod(line))
    {
        EXPECT_GT(std::stod(line), before) << result.output;
        EXPECT_LT(std::stod(line), 1.0) << result.output;
    }
}
#endif
