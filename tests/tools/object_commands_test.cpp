#include "tests/support/json_check.h"
#include "tests/support/run_command.h"
#include "tests/support/sanitized.h"
#include "tests/support/temporary_directory.h"

#include <platform/image/image.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
using support::CommandResult;
using support::runTW2;

const std::string s_sample = TW2_SAMPLE "/sprout.script";

/// Whether a failed run says why in one line.
testing::AssertionResult saysWhyInOneLine(const CommandResult& result, const std::string& reason)
{
    if (result.status != 1)
    {
        return testing::AssertionFailure() << "status " << result.status << ", errors: " << result.errors;
    }
    if (std::ranges::count(result.errors, '\n') != 1 || result.errors.find(reason) == std::string::npos)
    {
        return testing::AssertionFailure() << "expected one line with \"" << reason << "\", got: " << result.errors;
    }
    return testing::AssertionSuccess();
}
}  // namespace

TEST(InfoCommand, TellsWhatTheSampleIsMadeOf)
{
    const CommandResult text = runTW2({"info", s_sample});
    EXPECT_EQ(text.status, 0) << text.errors;
    for (const char* expected : {"skeleton: TW_ObjectAnimation", "7 stalk7", "skin: TW_VertexAnimation on skeleton",
                                 "leaf: textured, texture stripes", "2 sprout_dance.tw: 41 frames at 30 per second",
                                 "looping to frame 0, 8 tracks, 168 keys"})
    {
        EXPECT_NE(text.output.find(expected), std::string::npos) << expected << " in:\n" << text.output;
    }
    const CommandResult json = runTW2({"info", s_sample, "--json"});
    EXPECT_EQ(json.status, 0) << json.errors;
    EXPECT_TRUE(support::JsonCheck::isValid(json.output)) << json.output;
}

TEST(PlayCommand, PrintsThePoseOfAnAnimationByIndexOrName)
{
    // The rest pose stands upright: each bone a unit above the one below.
    const CommandResult rest = runTW2({"play", s_sample, "--animation", "0", "--bone", "STALK3"});
    EXPECT_EQ(rest.status, 0) << rest.errors;
    EXPECT_EQ(rest.output,
              "3 stalk3\n"
              "  local  1 0 0 |  0 1 0 |  0 0 1 |  0 1 0\n"
              "  world  1 0 0 |  0 1 0 |  0 0 1 |  0 3 0\n");
    const CommandResult byName = runTW2({"play", s_sample, "--animation", "dance", "--time", "0.4"});
    EXPECT_EQ(byName.output, runTW2({"play", s_sample, "--animation", "2", "--time", "0.4"}).output);
    EXPECT_NE(byName.output, runTW2({"play", s_sample, "--animation", "1", "--time", "0.4"}).output);
    EXPECT_TRUE(support::JsonCheck::isValid(runTW2({"play", s_sample, "--json"}).output));

    EXPECT_EQ(runTW2({"play", s_sample, "--animation", "sprout"}).status, 1) << "several animations fit";
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"play", s_sample, "--bone", "leg"}), "Bone \"leg\" not found"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"play", s_sample, "--block", "bison"}), "its blocks are: skeleton, skin"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"play", "/nowhere.script"}), "nowhere.script"));
    EXPECT_EQ(runTW2({"play"}).status, 2);
}

#ifdef TW2_HAS_RENDER
TEST(RenderCommand, WritesEveryKindOfPicture)
{
    const support::TemporaryDirectory directory;
    const CommandResult drawn = runTW2({"render",      s_sample,
                                        "--animation", "sway",
                                        "--from",      "0.5",
                                        "--to",        "0.7",
                                        "--fps",       "10",
                                        "--size",      "48x32",
                                        "--png",       directory.file("one.png"),
                                        "--frames",    directory.file("n##.png"),
                                        "--sheet",     directory.file("sheet.png"),
                                        "--gif",       directory.file("sway.gif"),
                                        "--skeleton"});
    if (drawn.errors.find("No OpenGL driver") != std::string::npos)
    {
        GTEST_SKIP() << drawn.errors;
    }
    ASSERT_EQ(drawn.status, 0) << drawn.errors;
    for (const char* name : {"one.png", "n00.png", "n01.png", "n02.png"})
    {
        const G_Image picture(directory.file(name).c_str());
        EXPECT_EQ(picture.getWidth(), 48U) << name;
        EXPECT_EQ(picture.getHeight(), 32U) << name;
        EXPECT_FALSE(picture.isUniform()) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(directory.file("n03.png")));
    EXPECT_TRUE(std::filesystem::exists(directory.file("sheet.png")));
    EXPECT_EQ(directory.read("sway.gif").substr(0, 6), "GIF89a");

    // A fade ends in the second animation.
    const auto draw = [&directory](const std::vector<std::string>& how)
    {
        std::vector<std::string> arguments{"render", s_sample, "--size", "48x32", "--eye",
                                           "0",      "4",      "-20",    "--png", directory.file("fade.png"),
                                           "--time", "0.3"};
        arguments.insert(arguments.end(), how.begin(), how.end());
        EXPECT_EQ(runTW2(arguments).status, 0);
        return directory.read("fade.png");
    };
    EXPECT_EQ(draw({"--blend", "sway:dance", "--weight", "1"}), draw({"--animation", "dance"}));
    EXPECT_NE(draw({"--blend", "sway:dance", "--weight", "0.5"}), draw({"--animation", "dance"}));
    EXPECT_EQ(draw({"--blend", "sway:dance", "--weight", "0..1"}), draw({"--animation", "sway"})) << "its begin";
}

TEST(RenderCommand, SaysWhatIsWrongWithItsArguments)
{
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"render", s_sample}), "--png, --frames, --sheet or --gif"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"render", s_sample, "--png", "x.png", "--size", "huge"}), "WIDTHxHEIGHT"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"render", s_sample, "--frames", "x.png"}), "place for the number"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"render", s_sample, "--gif", "x.gif", "--from", "2", "--to", "1"}),
                                 "ends before it begins"));
}
#endif

#ifdef TW2_HAS_CONVERT
namespace
{
constexpr const char* modelFolder = "/usr/share/assimp/models";

/// A model of its own making: a square with a picture that is not there.
std::string writeSquare(const support::TemporaryDirectory& directory)
{
    directory.write("square.mtl", "newmtl plain\nKd 1 0.5 0.25\nd 0\nmap_Kd gone.png\n");
    return directory.write("square.obj",
                           "mtllib square.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                           "usemtl plain\nf 1/1 2/2 3/3 4/4\n");
}
}  // namespace

TEST(ConvertCommand, WritesAnObjectThatTheOtherCommandsRead)
{
    const support::TemporaryDirectory directory;
    const CommandResult converted = runTW2({"convert", writeSquare(directory), "-o", directory.file("out")});
    ASSERT_EQ(converted.status, 0) << converted.errors;
    EXPECT_NE(converted.output.find("4 vertices, 2 triangles in 1 groups"), std::string::npos) << converted.output;
    EXPECT_NE(converted.errors.find("texture \"gone.png\" is left out"), std::string::npos) << converted.errors;
    EXPECT_NE(converted.errors.find("taken as opaque"), std::string::npos) << converted.errors;
    const CommandResult info = runTW2({"info", directory.file("out/square.script")});
    EXPECT_EQ(info.status, 0) << info.errors;
    EXPECT_NE(info.output.find("plain: general"), std::string::npos) << info.output;
}

TEST(ConvertCommand, SaysInOneLineWhyAFileCannotBeConverted)
{
    const support::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"convert", "/nowhere.fbx", "-o", out}), "there is no such file"));
    EXPECT_TRUE(
        saysWhyInOneLine(runTW2({"convert", directory.write("broken.x", "xof 0303txt"), "-o", out}), "broken.x"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"convert", directory.write("what.abc", "?"), "-o", out}), "what.abc"));
    const std::string points = directory.write("points.obj", "v 0 0 0\nv 1 0 0\np 1 2\n");
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"convert", points, "-o", out}), "points.obj"));
    EXPECT_FALSE(std::filesystem::exists(out)) << "a failed conversion writes nothing";
    EXPECT_EQ(runTW2({"convert", points}).status, 2);
    EXPECT_EQ(runTW2({"convert", points, "-o", out, "--tolerance", "1"}).status, 2);
}

TEST(ConvertCommand, TakesAnyTestModelOrSaysWhyNot)
{
    if (!std::filesystem::is_directory(modelFolder))
    {
        GTEST_SKIP() << "the models of the package assimp-testmodels are not installed";
    }
    // Large files take long and are the same code; the long motions are the business of another test.
    constexpr std::uintmax_t largestFile = 300'000;
    constexpr unsigned int everyNth = support::isSanitized ? 8 : 1;
    const support::TemporaryDirectory directory;
    unsigned int converted = 0;
    unsigned int number = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(modelFolder))
    {
        if (!entry.is_regular_file() || entry.file_size() > largestFile || ++number % everyNth != 0)
        {
            continue;
        }
        const std::string out = directory.file("m" + std::to_string(number));
        const CommandResult result =
            runTW2({"convert", entry.path().string(), "-o", out, "--name", "m", "--timeout", "3"});
        ASSERT_TRUE(result.status == 0 || saysWhyInOneLine(result, entry.path().filename().string()))
            << entry.path() << ": status " << result.status << ", " << result.errors;
        if (result.status != 0)
        {
            continue;
        }
        // One of eight is loaded again; loading all would take as long as everything else together.
        if (++converted % 8 == 0)
        {
            const CommandResult played = runTW2({"play", out + "/m.script"});
            EXPECT_EQ(played.status, 0) << entry.path() << ": " << played.errors;
        }
        std::filesystem::remove_all(out);
    }
    EXPECT_GT(converted, 250U / everyNth / 2);
}
#endif
