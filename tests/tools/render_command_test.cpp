#include "tests/support/object_files.h"
#include "tests/support/picture_files.h"
#include "tests/support/run_command.h"
#include "tests/support/temporary_directory.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/light/light_animation_chunks.h>

#include <platform/image/image.h>
#include <platform/runtime/memory_file_writer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#ifdef TW2_HAS_RENDER
namespace
{
using support::CommandResult;
using support::runTW2;
using support::Strings;
using support::operator+;

const std::string s_sample = TW2_SAMPLE "/sprout.script";

/// The command on the sample, drawn small; skips where there is no driver.
class RenderCommand : public testing::Test
{
protected:
    void SetUp() override
    {
        if (render({"--png", file("any.png")}).errors.find("No OpenGL driver") != std::string::npos)
        {
            GTEST_SKIP() << "no OpenGL driver";
        }
    }

    static CommandResult render(const Strings& how, const std::string& script = s_sample)
    {
        return runTW2(Strings{"render", script, "--size", "48x32"} + how);
    }

    /// The picture that such arguments give.
    G_Image draw(const Strings& how, const std::string& script = s_sample)
    {
        const CommandResult result = render(how + Strings{"--png", file("drawn.png")}, script);
        EXPECT_EQ(result.status, 0) << result.errors;
        return G_Image(file("drawn.png").c_str());
    }

    [[nodiscard]] std::string file(const std::string& name) const { return m_directory.file(name); }
    [[nodiscard]] bool exists(const std::string& name) const { return std::filesystem::exists(file(name)); }

    static bool isRefused(const Strings& how, const std::string& reason)
    {
        const CommandResult result = render(how);
        return result.status == 1 && result.errors.find(reason) != std::string::npos &&
               std::ranges::count(result.errors, '\n') == 1;
    }

    /// Puts chunks behind those of a file.
    void append(const std::string& name, const S_MemoryFileWriter& chunks) const
    {
        std::ofstream(file(name), std::ios::app | std::ios::binary)
            .write(reinterpret_cast<const char*>(chunks.getBytes().data()),
                   static_cast<std::streamsize>(chunks.getBytes().size()));
    }

    /// Eighteen long and one high.
    static TW2::MeshChunk makePlank()
    {
        TW2::MeshChunk plank = support::makeMesh("plank", "", {{4, 2}});
        plank.editVertices().positions = {
            {-9.0F, 0.0F, 0.0F}, {9.0F, 0.0F, 0.0F}, {-9.0F, 1.0F, 0.0F}, {9.0F, 1.0F, 0.0F}};
        return plank;
    }

    /// Pixels that differ by more than a little.
    static unsigned int countDifferent(const G_Image& a, const G_Image& b)
    {
        unsigned int count = 0;
        for (std::size_t i = 0; i < a.getSize(); i += 4)
        {
            bool same = true;
            for (std::size_t channel = 0; channel < 4; ++channel)
            {
                same &= std::abs(a.getPixels()[i + channel] - b.getPixels()[i + channel]) <= 6;
            }
            count += same ? 0 : 1;
        }
        return count;
    }

    support::TemporaryDirectory m_directory;
};
}  // namespace

TEST_F(RenderCommand, WritesEveryKindOfPicture)
{
    const CommandResult drawn = render({"--animation", "sway", "--from", "0.5", "--to", "0.7", "--fps", "10", "-o",
                                        file("one.png"), "-o", file("n##.png"), "--sheet", file("sheet.png"), "-o",
                                        file("sway.GIF"), "-o", file("sway.webp"), "--skeleton"});
    ASSERT_EQ(drawn.status, 0) << drawn.errors;
    for (const char* name : {"one.png", "n00.png", "n01.png", "n02.png"})
    {
        const G_Image picture(file(name).c_str());
        EXPECT_EQ(picture.getWidth(), 48U) << name;
        EXPECT_EQ(picture.getHeight(), 32U) << name;
        EXPECT_FALSE(picture.isUniform()) << name;
    }
    std::string told;
    for (const char* name : {"one.png", "n00.png", "n01.png", "n02.png", "sway.GIF", "sway.webp", "sheet.png"})
    {
        told += file(name) + "\n";
    }
    EXPECT_EQ(drawn.output, told);
    EXPECT_EQ(G_Image(file("sheet.png").c_str()).getWidth(), 2 + 3 * 50U) << "twelve pictures, about as wide as high";
    EXPECT_EQ(G_Image(file("sheet.png").c_str()).getHeight(), 2 + 4 * 34U);
    EXPECT_FALSE(exists("n03.png"));
    EXPECT_EQ(m_directory.read("sway.GIF").substr(0, 6), "GIF89a");
    EXPECT_EQ(m_directory.read("sway.webp").substr(8, 4), "WEBP");
}

TEST_F(RenderCommand, FadesEndInTheSecondAnimation)
{
    const Strings fixed{"--eye", "0", "4", "-20", "--target", "0", "4", "0", "--no-grid", "--no-shadow"};
    const auto fade = [&](const Strings& how) { return draw(fixed + Strings{"--time", "0.3"} + how); };
    const Strings blend{"--blend", "sway:dance", "--weight"};
    EXPECT_EQ(countDifferent(fade(blend + Strings{"1"}), fade({"--animation", "dance"})), 0U);
    EXPECT_EQ(countDifferent(fade({"--blend", "dance:0", "--weight", "1"}), fade({"--animation", "0"})), 0U);
    const G_Image half = fade(blend + Strings{"0.5"});
    EXPECT_GT(countDifferent(half, fade({"--animation", "dance"})), 10U);
    EXPECT_EQ(countDifferent(fade(blend + Strings{"0.5..0"}), half), 0U) << "a moment is the begin of its fade";
    ASSERT_EQ(
        render(fixed + blend + Strings{"0.2..0.8", "--from", "0.2", "--to", "0.4", "--fps", "10", "-o", file("f#.png")})
            .status,
        0);
    EXPECT_LT(countDifferent(G_Image(file("f1.png").c_str()), half), 3U) << "half of the range";
}

TEST_F(RenderCommand, ALoopIsShownOnceWithoutItsFirstPictureAgain)
{
    // The dance has 41 frames at 30 per second and loops to its first: it repeats after 40 frames.
    ASSERT_EQ(render({"--animation", "dance", "--fps", "15", "-o", file("n##.png")}).status, 0);
    EXPECT_TRUE(exists("n19.png"));
    EXPECT_FALSE(exists("n20.png")) << "40 frames at 30 per second are 20 pictures at 15 per second";
    const G_Image first(file("n00.png").c_str());
    EXPECT_GT(countDifferent(first, G_Image(file("n19.png").c_str())), 0U) << "the last picture is not the first one";
    // A range that is asked for is shown with its end.
    ASSERT_EQ(render({"--animation", "dance", "--fps", "15", "--to", "0.2", "-o", file("r##.png")}).status, 0);
    EXPECT_TRUE(exists("r03.png"));
    EXPECT_FALSE(exists("r04.png"));
    // Of two animations the longer one is shown: sway takes two seconds.
    ASSERT_EQ(render({"--blend", "dance:sway", "--fps", "2", "-o", file("b#.png")}).status, 0);
    EXPECT_TRUE(exists("b4.png"));
    EXPECT_FALSE(exists("b5.png"));
    // The pictures of a loop share its time evenly, whatever was asked for: 4/3 seconds by 19 pictures.
    for (const auto& [fps, pictures] : {std::pair("14", 19U), {"1", 2U}})
    {
        ASSERT_EQ(
            render({"--animation", "dance", "--fps", fps, "-o", file("dance.gif"), "-o", file("dance.webp")}).status,
            0);
        const std::vector<int> delays = support::readGIFDelays(m_directory.read("dance.gif"));
        EXPECT_EQ(delays.size(), pictures);
        EXPECT_EQ(std::accumulate(delays.begin(), delays.end(), 0), 133);
        const std::string webp = m_directory.read("dance.webp");
        int milliseconds = 0;
        for (std::size_t at = webp.find("ANMF"); at != std::string::npos; at = webp.find("ANMF", at + 1))
        {
            milliseconds += static_cast<unsigned char>(webp[at + 20]) + 256 * static_cast<unsigned char>(webp[at + 21]);
        }
        EXPECT_EQ(milliseconds, 1333);
    }
}

TEST_F(RenderCommand, PicturesOnASheetShareItsTimeHoweverLongItIs)
{
    struct Case
    {
        Strings m_vecRange;
        const char* m_szPictures;
        Strings m_vecTimes;
    };
    const Strings fixed{"--animation", "dance", "--eye", "0", "4",         "-20",
                        "--target",    "0",     "4",     "0", "--no-grid", "--no-shadow"};
    for (const Case& each : {Case{{}, "2", {"0", "0.6666667"}},
                             {{"--from", "0.1", "--to", "0.7"}, "3", {"0.1", "0.4", "0.7"}},
                             {{"--from", "0.1", "--to", "0.7"}, "1", {"0.1"}},
                             {{"--time", "0.4"}, "3", {"0.4"}},
                             {{"--to", "100000"}, "3", {"0", "50000", "100000"}}})
    {
        ASSERT_EQ(render(fixed + each.m_vecRange +
                         Strings{"--sheet", file("s.png"), "--sheet-pictures", each.m_szPictures, "--columns", "3"})
                      .status,
                  0);
        const G_Image sheet(file("s.png").c_str());
        ASSERT_EQ(sheet.getWidth(), 50 * each.m_vecTimes.size() + 2);
        for (std::size_t i = 0; i < each.m_vecTimes.size(); ++i)
        {
            G_Image picture(48, 32);
            for (unsigned int y = 0; y < 32; ++y)
            {
                std::copy_n(sheet.getPixel(2 + 50 * static_cast<unsigned int>(i), 2 + y), std::size_t{48} * 4,
                            picture.accessPixel(0, y));
            }
            EXPECT_LT(countDifferent(picture, draw(fixed + Strings{"--time", each.m_vecTimes[i]})), 8U)
                << each.m_vecTimes[i] << " of " << each.m_szPictures;
        }
    }
    EXPECT_TRUE(isRefused({"--to", "400", "--gif", file("long.gif")}, "10001 pictures, more than 10000"));
    EXPECT_TRUE(isRefused({"--to", "399.96", "--frames", file("none/#.png")}, "none/0.png")) << "as many are not";
}

TEST_F(RenderCommand, CountsThePicturesBeforeATerminalWhenTheyTakeLong)
{
    // A picture, three on a sheet, sixteen that the colours are chosen from, and two hundred: more than a second's
    // work.
    const auto begin = std::chrono::steady_clock::now();
    const CommandResult result =
        runTW2({"render", s_sample, "--turntable", "--fps", "50", "-o", file("p.png"), "-o", file("p.gif"), "--sheet",
                file("s.png"), "--sheet-pictures", "3", "--size", "320x240"},
               "sh -c 'script -qec \"$*\" /dev/null' sh ");
    ASSERT_EQ(result.status, 0) << result.output;
    const std::string last = "\rDrawing 220 of 220\r\x1B[K";
    EXPECT_TRUE(result.output.find(last + file("p.png")) != std::string::npos ||
                std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(1500))
        << result.output;
}

TEST_F(RenderCommand, SaysWhatIsWrongWithItsArguments)
{
    EXPECT_TRUE(isRefused({}, "say what to write"));
    for (const char* size : {"huge", "0x32", "48x0", "8193x32", "48x8193", "48x32x"})
    {
        EXPECT_NE(runTW2({"render", s_sample, "--png", "x.png", "--size", size}).errors.find("from 1x1 to 8192x8192"),
                  std::string::npos)
            << size;
    }
    EXPECT_TRUE(isRefused({"--frames", "x.png"}, "place for the number"));
    EXPECT_TRUE(isRefused({"--gif", "x.gif", "--from", "2", "--to", "1"}, "ends before it begins"));
    EXPECT_TRUE(isRefused({"-o", "x.jpg"}, ".png, .gif or .webp"));
    EXPECT_TRUE(isRefused({"--png", "x.jpg"}, "ends in .png\n"));
    EXPECT_TRUE(isRefused({"--gif", "x.png"}, "ends in .gif"));
    EXPECT_TRUE(isRefused({"-o", "x.png", "-o", "y.png"}, "same kind"));
    EXPECT_TRUE(isRefused({"-o", "x.gif", "--transparent"}, "half transparent"));
    EXPECT_TRUE(isRefused({"-o", "x.png", "--frames", "x.jpg"}, "ends in .png\n"));
    EXPECT_TRUE(isRefused({"-o", "x.png", "--camera", "side"}, "the files have none"));
    EXPECT_TRUE(isRefused({"-o", "x.png", "--blend", "sway"}, "two animations, such as 0:1, not \"sway\""));
    for (const char* weight : {"", "half", "0.5s", "0..", "..1", "0..1..2"})
    {
        EXPECT_TRUE(isRefused({"-o", "x.png", "--blend", "sway:dance", "--weight", weight},
                              "a range such as 0..1, not \"" + std::string(weight) + "\""))
            << weight;
    }
    for (const Strings& wrong : std::vector<Strings>{{"--camera", "side", "--turntable"},
                                                     {"--target", "0", "0", "0"},
                                                     {"--angle", "0.9"},
                                                     {"--angle", "171"},
                                                     {"--fps", "50.1"},
                                                     {"--sheet-pictures", "401"},
                                                     {"--weights"}})
    {
        EXPECT_EQ(render(Strings{"-o", "x.png"} + wrong).status, 2) << wrong.front();
    }
}

TEST_F(RenderCommand, LeavesTheBackgroundAndTheGridOutAsAsked)
{
    ASSERT_EQ(runTW2({"render", s_sample, "--size", "240x160", "--transparent", "--no-shadow", "--no-mesh", "--bounds",
                      "--png", file("v.png")})
                  .status,
              0);
    const G_Image volumes(file("v.png").c_str());
    EXPECT_FALSE(volumes.isUniform());
    for (unsigned int x = 0; x < volumes.getWidth(); ++x)
    {
        EXPECT_EQ(volumes.getPixel(x, 0)[3] + volumes.getPixel(x, volumes.getHeight() - 1)[3], 0)
            << "all of them is seen";
    }
    const G_Image transparent = draw({"--transparent", "--no-shadow", "--time", "0"});
    EXPECT_EQ(transparent.getPixel(0, 0)[3], 0);
    unsigned int opaque = 0;
    for (std::size_t i = 3; i < transparent.getSize(); i += 4)
    {
        opaque += transparent.getPixels()[i] == 255 ? 1 : 0;
    }
    EXPECT_GT(opaque, 20U) << "the object";
    EXPECT_LT(opaque, 48U * 32U / 2);
}

TEST_F(RenderCommand, GoesAroundWhatStandsStill)
{
    ASSERT_EQ(render({"--animation", "0", "--turntable", "--fps", "1", "-o", file("t#.png")}).status, 0);
    EXPECT_TRUE(exists("t3.png"));
    EXPECT_FALSE(exists("t4.png")) << "four seconds";
    // The sprout in its rest pose is round; the ground's grid, which is not drawn from the same side, tells the turn.
    EXPECT_GT(countDifferent(G_Image(file("t0.png").c_str()), G_Image(file("t1.png").c_str())), 20U);
    EXPECT_EQ(countDifferent(draw({"--turntable", "--time", "0.3", "--eye", "0", "4", "-20"}),
                             draw({"--time", "0.3", "--eye", "0", "4", "-20"})),
              0U)
        << "one moment is the begin of a turn";
    // The object turns to the left: as if the camera went to the right, a quarter with each picture.
    const Strings axes{"--animation", "0", "--axes", "--no-mesh", "--no-grid", "--no-shadow"};
    ASSERT_EQ(render(axes + Strings{"--turntable", "--fps", "1", "-o", file("a#.png")}).status, 0);
    const auto from = [&](int degrees) {
        return draw(axes + Strings{"--time", "0", "--azimuth", std::to_string(degrees)});
    };
    for (int quarter = 0; quarter < 4; ++quarter)
    {
        const G_Image turned(file("a" + std::to_string(quarter) + ".png").c_str());
        EXPECT_LE(countDifferent(turned, from(35 - 90 * quarter)), 6U) << quarter;
        EXPECT_GT(countDifferent(turned, from(35 + 90 * (quarter + 1))), 15U) << quarter;
    }
}

TEST_F(RenderCommand, SeesAllOfALongThingWhileItGoesAround)
{
    support::ObjectFiles files;
    files.addMesh(makePlank());
    const std::string script = files.writeScript();
    ASSERT_EQ(
        render({"--turntable", "--fps", "2", "--azimuth", "90", "--transparent", "-o", file("p#.png")}, script).status,
        0);
    unsigned int widest = 0;
    for (int i = 0; i < 8; ++i)
    {
        const G_Image picture(file("p" + std::to_string(i) + ".png").c_str());
        for (unsigned int x = 0; x < 48; ++x)
        {
            for (unsigned int y = 0; y < 32; ++y)
            {
                widest = picture.getPixel(x, y)[3] > 0 ? std::max(widest, std::max(x, 47 - x)) : widest;
            }
        }
    }
    EXPECT_GT(widest, 40U) << "in the middle from one side of the picture nearly to the other";
    EXPECT_LT(widest, 47U) << "and never beyond";
}

TEST_F(RenderCommand, HidesWhatIsHiddenAndPlaysAnimation0AsLongAsItIs)
{
    support::ObjectFiles files;
    files.addMesh(makePlank());
    TW2::KeyframeAnimationChunk track = support::makeTrack("plank", 1.0F, 11, 10);
    track.visibilityKeys = {{0, 1.0F}, {5, 0.0F}};
    files.addAnimation(0, {track});
    const std::string script = files.writeScript();
    ASSERT_EQ(render({"--fps", "10", "--animation", "0", "--transparent", "-o", file("p##.png")}, script).status, 0);
    EXPECT_FALSE(G_Image(file("p04.png").c_str()).isUniform());
    EXPECT_TRUE(G_Image(file("p05.png").c_str()).isUniform()) << "hidden";
    EXPECT_TRUE(exists("p10.png"));
    EXPECT_FALSE(exists("p11.png"));
    const CommandResult played = runTW2({"play", script, "--animation", "0", "--time", "0.5"});
    EXPECT_EQ(played.output,
              "0 plank\n  local  1 0 0 |  0 1 0 |  0 0 1 |  0.5 0 0\n  world  1 0 0 |  0 1 0 |  0 0 1 |  0.5 0 0\n");
    const CommandResult huge =
        runTW2({"render", script, "--sheet", file("s.png"), "--size", "1000x1001", "--sheet-pictures", "200"});
    EXPECT_NE(huge.errors.find("a sheet of 200 pictures of 1000x1001 is more than 200 million pixels"),
              std::string::npos)
        << huge.errors;
    support::ObjectFiles empty;
    empty.addMesh(support::makeMesh("nothing", "", {}));
    const CommandResult nothing = render({"-o", file("x.png")}, empty.writeScript());
    EXPECT_NE(nothing.errors.find("there is nothing to see"), std::string::npos) << nothing.errors;
    support::ObjectFiles bones;
    bones.addMesh(support::makeMesh("hip", "", {}));
    TW2::MeshChunk hand = support::makeMesh("hand", "hip", {});
    hand.transform.setTranslation({1.0F, 2.0F, 0.0F});
    bones.addMesh(hand);
    ASSERT_EQ(render({"--no-grid", "-o", file("x.png")}, bones.writeScript()).status, 0) << "what has bones alone";
    EXPECT_FALSE(G_Image(file("x.png").c_str()).isUniform());
}

TEST_F(RenderCommand, LightsThatTheFilesBringShineAndChangeWhenAskedFor)
{
    std::filesystem::copy(TW2_SAMPLE, file("sample"), std::filesystem::copy_options::recursive);
    TW2::PointLightChunk lamp;
    lamp.name = "lamp";
    lamp.transform.setTranslation({0.0F, 4.0F, -6.0F});
    lamp.color = {255, 255, 255};
    lamp.brightness = 1.0F;
    lamp.fallOff = 100.0F;
    TW2::PointLightAnimationChunk flicker;
    flicker.header = {"lamp", 10, false};
    flicker.totalFrameCount = 11;
    flicker.colorKeys = {{0, {0, 0, 0}}, {10, {255, 255, 255}}};
    S_MemoryFileWriter writer;
    writer << lamp << flicker;
    append("sample/sprout_skin.tw", writer);
    const auto shine = [&](const char* time, const Strings& more) {
        return draw(Strings{"--animation", "0", "--no-lights", "--time", time} + more, file("sample/sprout.script"));
    };
    EXPECT_EQ(countDifferent(shine("0", {"--file-lights"}), shine("0", {})), 0U) << "dark still";
    EXPECT_GT(countDifferent(shine("1", {"--file-lights"}), shine("1", {})), 20U);
}

TEST_F(RenderCommand, LooksThroughACameraOfTheFiles)
{
    std::filesystem::copy(TW2_SAMPLE, file("sample"), std::filesystem::copy_options::recursive);
    TW2::CameraChunk camera;
    camera.name = "Front";
    camera.transform.setTranslation({1.0F, 4.0F, -20.0F});
    camera.value0 = 60.0F;
    camera.value1 = 0.5F;
    camera.value2 = 100.0F;
    S_MemoryFileWriter writer;
    writer << camera;
    // One that hangs on a bone, which stands three above the ground, and one that sees nothing so near.
    camera.name = "Rider";
    camera.hasParent = true;
    camera.parentName = "stalk3";
    camera.transform.setTranslation({1.0F, 1.0F, -20.0F});
    writer << camera;
    camera.name = "Far";
    camera.value1 = 60.0F;
    writer << camera;
    // Some that say no planes, one that hangs on nothing, and one that sees more than is possible.
    camera.parentName = "branch";
    camera.name = "Lost";
    writer << camera;
    camera.hasParent = false;
    camera.transform.setTranslation({1.0F, 4.0F, -20.0F});
    for (const auto& [name, angle, nearest, farthest] :
         {std::tuple("Bare", 60.0F, 0.0F, 100.0F), {"Flat", 60.0F, 0.5F, 0.5F}, {"Wide", 200.0F, 0.5F, 100.0F}})
    {
        camera.name = name;
        camera.value0 = angle;
        camera.value1 = nearest;
        camera.value2 = farthest;
        writer << camera;
    }
    append("sample/sprout_skin.tw", writer);
    const std::string script = file("sample/sprout.script");
    // So many degrees from left to right in a picture of 3 to 2.
    for (const auto& [name, degrees] : {std::pair("front", 60.0), {"bare", 60.0}, {"flat", 60.0}, {"wide", 170.0}})
    {
        const double vertical = 360.0 / std::acos(-1.0) * std::atan(std::tan(degrees * std::acos(-1.0) / 360.0) / 1.5);
        const G_Image expected = draw(
            {"--eye", "1", "4", "-20", "--target", "1", "4", "0", "--angle", std::to_string(vertical), "--time", "0"});
        EXPECT_EQ(countDifferent(draw({"--camera", name, "--time", "0"}, script), expected), 0U) << name;
    }
    EXPECT_NE(render({"--camera", "lost", "-o", file("x.png")}, script).errors.find("under \"branch\", which is not"),
              std::string::npos);
    const Strings rest{"--animation", "0", "--time", "0", "--no-grid", "--no-shadow", "--camera"};
    const auto through = [&](const std::string& name, const Strings& more = {})
    { return draw(rest + Strings{name} + more, script); };
    EXPECT_LT(countDifferent(through("rider"), through("front")), 4U);
    EXPECT_GT(countDifferent(through("rider"), through("rider", {"--no-mesh"})), 20U);
    EXPECT_EQ(countDifferent(through("far"), through("far", {"--no-mesh"})), 0U) << "nearer than it sees";
    const CommandResult wrong = render({"--camera", "back", "-o", file("x.png")}, script);
    EXPECT_NE(wrong.errors.find("the cameras are: Front, Rider, Far, Lost, Bare, Flat, Wide"), std::string::npos)
        << wrong.errors;
}
#endif
