#include "tests/support/json_check.h"
#include "tests/support/run_command.h"
#include "tests/support/sanitized.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
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
    // All eight bones, at the begin, of the animation that the viewer begins with.
    const CommandResult all = runTW2({"play", s_sample});
    EXPECT_EQ(std::ranges::count(all.output, '\n'), 8 * 3);
    EXPECT_EQ(all.output, runTW2({"play", s_sample, "--block", "skeleton", "--animation", "1", "--time", "0"}).output);
    const std::string json =
        runTW2({"play", s_sample, "--animation", "0", "--time", "0.5", "--bone", "stalk3", "--json"}).output;
    EXPECT_EQ(std::regex_replace(json, std::regex("\n *"), ""),
              R"({"animation": 0,"time": 0.5,"bones": [{"index": 3,"name": "stalk3",)"
              R"("local": [1,0,0,0,1,0,0,0,1,0,1,0],"world": [1,0,0,0,1,0,0,0,1,0,3,0]}]})");
    EXPECT_TRUE(support::JsonCheck::isValid(runTW2({"play", s_sample, "--json"}).output));

    EXPECT_EQ(runTW2({"play", s_sample, "--animation", "sprout"}).status, 1) << "several animations fit";
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"play", s_sample, "--bone", "leg"}), "Bone \"leg\" not found"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"play", s_sample, "--block", "bison"}), "its blocks are: skeleton, skin"));
    EXPECT_TRUE(saysWhyInOneLine(runTW2({"play", "/nowhere.script"}), "nowhere.script"));
    EXPECT_EQ(runTW2({"play"}).status, 2);
}

#ifdef TW2_HAS_CONVERT
#ifdef TW2_HAS_ASSIMP
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
#endif

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

#ifdef TW2_HAS_ASSIMP
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
#endif
