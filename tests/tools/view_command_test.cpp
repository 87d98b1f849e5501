#include "render/scene_renderer.h"
#include "tests/support/picture_files.h"
#include "tests/support/run_command.h"
#include "tests/support/with_driver.h"
#include "tests/viewer/showing.h"
#include "viewer/pictures.h"

#include <platform/image/image.h>
#include <platform/runtime/file.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

/// The window, opened on a display without a screen: driven by commands, by keys, and given files that are no good.
#if defined(TW2_HAS_WINDOW)
namespace
{
const std::string s_sample = TW2_SAMPLE "/sprout.script";
/// What stands before a program in the shell's line to give it a display of its own.
const std::string s_display = "'" TW2_SCRIPTS "/with_display.sh' ";
/// The search fails, or waits for ever, where a window goes away under it, as those do in which drivers are tried out.
const std::string s_focus =
    "until timeout 5 xdotool search --sync --onlyvisible --name \"tw2 view\" windowfocus --sync; do sleep 0.05; done; ";

bool hasProgram(const char* name)
{
    return std::system(("command -v " + std::string(name) + " >/dev/null 2>&1").c_str()) == 0;
}

class ViewCommand : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!hasProgram("Xvfb"))
        {
            GTEST_SKIP() << "Xvfb was not found";
        }
    }

    std::vector<unsigned char> look(const std::vector<std::string>& lines, const std::string& file = s_sample)
    {
        std::vector<std::string> arguments{"view", "--no-settings", "--size", "640x480", "--pictures", "3"};
        const std::vector<std::string> more{"--seconds-per-picture", "0.05", "--window-picture",
                                            m_folder.file("w.png")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        for (const std::string& line : lines)
        {
            arguments.insert(arguments.end(), {"--do", line});
        }
        arguments.push_back(file);
        const support::CommandResult result = support::runTW2(arguments, s_display);
        EXPECT_EQ(result.status, 0) << result.errors;
        return readPicture();
    }

    /// The part of the window between the panels, whose figures are other ones each time.
    std::vector<unsigned char> readPicture() const
    {
        const G_Image picture(m_folder.file("w.png").c_str());
        EXPECT_EQ(picture.getWidth(), 640U);
        EXPECT_EQ(picture.getHeight(), 480U);
        std::vector<unsigned char> middle;
        for (std::size_t y = 40; y < 400; ++y)
        {
            const unsigned char* row = picture.getPixels() + (y * 640 + 180) * G_Image::bytesPerPixel;
            middle.insert(middle.end(), row, row + std::size_t{280} * G_Image::bytesPerPixel);
        }
        return middle;
    }

    support::TemporaryDirectory m_folder;
};

TEST_F(ViewCommand, ShowsWhatItsCommandsSayAtAFixedPace)
{
    const auto plain = look({});
    EXPECT_TRUE(look({}) == plain) << "the clock does not depend on how fast the machine is";
    EXPECT_TRUE(look({"show skeleton on"}) != plain);
    EXPECT_TRUE(look({"clip sprout_dance"}) != plain);
    EXPECT_TRUE(look({}, TW2_SAMPLE) == plain) << "the folder of the script";
}

TEST_F(ViewCommand, WritesHowItHasLookedAndWaitsBetweenCommands)
{
    const auto plain = look({});
    EXPECT_TRUE(look({"wait 50", "show skeleton on"}) == plain) << "not yet";
    EXPECT_TRUE(look({"wait 1", "show skeleton on"}) != plain);
    const support::CommandResult result =
        support::runTW2({"view", s_sample, "--no-settings", "--size", "480x320", "--pictures", "4",
                         "--seconds-per-picture", "0.1", "--window-picture", m_folder.file("w.gif")},
                        s_display);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(support::readGIFDelays(m_folder.read("w.gif")), std::vector<int>(4, 10)) << "a tenth of a second each";
}

TEST_F(ViewCommand, RemembersWhatWasShownUnlessItIsToldNotTo)
{
    const std::string settings = "XDG_CONFIG_HOME='" + m_folder.getPath().string() + "' " + s_display;
    const auto run = [&](std::vector<std::string> more)
    {
        more.insert(more.begin(), {"view", s_sample, "--size", "480x320", "--pictures", "2"});
        EXPECT_EQ(support::runTW2(more, settings).status, 0);
        std::ifstream file(m_folder.file("tw2/view"));
        return std::string{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    };
    EXPECT_EQ(run({"--no-settings", "--do", "show skeleton on"}), "");
    EXPECT_NE(run({}).find("show skeleton off"), std::string::npos);
    EXPECT_NE(run({"--do", "show skeleton on"}).find("show skeleton on"), std::string::npos);
    EXPECT_NE(run({}).find("show skeleton on"), std::string::npos) << "as it was left";
    EXPECT_NE(run({"--no-settings", "--do", "show skeleton off"}).find("show skeleton on"), std::string::npos);
}

/// Each thing that a hand can do before the window, and what it does to the viewer.
class ViewInput : public support::WithDriver
{
protected:
    struct Step
    {
        std::vector<const char*> m_vecHand;  ///< xdotool's words; the window has drawn a picture before the next
        std::function<void(TW2::viewer::Viewer&, float)> m_do;  ///< with the height of the picture
    };
    static auto line(const char* text)
    {
        return [text](TW2::viewer::Viewer& viewer, float) { TW2::viewer::execute(viewer, text); };
    }
};

TEST_F(ViewInput, MouseAndKeysDoWhatTheirCommandsDo)
{
    if (!hasProgram("Xvfb") || !hasProgram("xdotool"))
    {
        GTEST_SKIP() << "Xvfb or xdotool was not found";
    }
    const auto pan = [](TW2::viewer::Viewer& viewer, float height)
    { viewer.getCamera().pan(-20.0F / height, -30.0F / height); };
    const auto zoom = [](float steps)
    { return [steps](TW2::viewer::Viewer& viewer, float) { viewer.getCamera().zoom(std::pow(0.88F, steps)); }; };
    const std::vector<Step> steps{
        {{"key h"}, {}},
        {{"key s"}, line("show skeleton")},
        {{"key S"}, line("show skeleton")},
        {{"key oe", "key q", "key ctrl"}, {}},  // the number of oe ends as that of S
        {{"key w"}, line("wire")},
        {{"key Right", "key Right"}, line("step 2")},
        {{"key Left"}, line("back")},
        {{"key n"}, line("next")},
        {{"key Right"}, line("step 1")},
        {{"key Home"}, line("seek 0")},
        {{"key space", "key Right", "key Home", "key Right"}, line("step 1")},
        {{"mousemove 300 200", "mousedown 1", "mousemove 340 220", "mouseup 1"},
         [](TW2::viewer::Viewer& viewer, float height)
         { viewer.getCamera().orbit(-40.0F / height * 250.0F, 20.0F / height * 250.0F); }},
        {{"mousemove 300 200", "mousedown 2", "mousemove 320 170", "mouseup 2"}, pan},
        {{"mousemove 300 200", "keydown shift", "mousedown 1", "mousemove 320 170", "mouseup 1", "keyup shift"}, pan},
        {{"mousemove 300 200", "keydown ctrl", "mousedown 1", "mousemove 340 220", "mouseup 1", "keyup ctrl"},
         [](TW2::viewer::Viewer& viewer, float height) { viewer.moveTarget(40.0F / height, -20.0F / height); }},
        {{"click 4"}, zoom(1.0F)},
        {{"click 5", "click 5"}, zoom(-2.0F)},
        {{"mousemove 300 200", "mousedown 3", "mousemove 320 170", "mouseup 3"}, pan},
        {{"key f"}, line("frame")},
        {{"key s"}, line("show skeleton")},
        // The stem in the picture, which has the menu above it.
        {{"mousemove 320 330", "mousedown 1", "mouseup 1"},
         [](TW2::viewer::Viewer& viewer, float height) { viewer.pick(0.0F, 1.0F - 2.0F * (330.0F - 20.0F) / height); }},
        {{"mousemove 30 60", "mousedown 1", "mouseup 1"}, line("bone none")},
    };
    const support::TemporaryDirectory folder;
    std::string hand = "cd '" + folder.getPath().string() +
                       "'; picture() { for i in 1 2; do xdotool key F2; n=$((n + 1)); " +
                       "until [ -s sprout-$n.png ]; do sleep 0.02; done; done; }; n=1; " + s_focus +
                       "xdotool key F2; until [ -s sprout.png ]; do sleep 0.1; done; ";
    std::vector<int> last{1};  // picture of each step
    for (const Step& step : steps)
    {
        // Letters count after the keys of a picture: the second of two shows what they did.
        last.push_back(last.back() + 2 * static_cast<int>(step.m_vecHand.size()));
        for (const char* words : step.m_vecHand)
        {
            hand += std::string("xdotool ") + words + "; picture; ";
        }
    }
    const support::CommandResult result = support::runTW2(
        {"view", s_sample, "--no-settings", "--size", "640x480", "--do", "play off", "--do", "reach look 4", "--do",
         "target 0.5 3 -1"},
        s_display + "timeout 100 sh -c 'cd \"" + folder.getPath().string() + "\"; \"$@\" & " +
            std::regex_replace(hand, std::regex("'"), "\"") +
            "xdotool key F3; until [ -s sprout.gif ]; do sleep 0.1; done; xdotool key ctrl+q; wait $!' sh ");
    ASSERT_EQ(result.status, 0) << result.errors;
    TW2::render::SceneRenderer renderer;
    support::Showing viewer({"reach look 4", "target 0.5 3 -1"});
    const auto countDifferent = [](const G_Image& a, const G_Image& b)
    {
        int different = 0;
        for (std::size_t byte = 0; byte < a.getSize(); ++byte)
        {
            different += std::abs(a.getPixels()[byte] - b.getPixels()[byte]) > 24 ? 1 : 0;
        }
        return different;
    };
    std::optional<G_Image> before;
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        const G_Image seen(folder.file("sprout-" + std::to_string(last[i + 1]) + ".png").c_str());
        ASSERT_EQ(seen.getWidth(), 640U) << "the panels are hidden";
        if (steps[i].m_do)
        {
            steps[i].m_do(viewer, static_cast<float>(seen.getHeight()));
        }
        viewer.update(0.0);
        const G_Image expected = TW2::viewer::takePicture(viewer, renderer, 640, seen.getHeight());
        EXPECT_LT(countDifferent(seen, expected), 200) << testing::PrintToString(steps[i].m_vecHand);
        if (before && steps[i].m_do)
        {
            EXPECT_GT(countDifferent(*before, expected), 200) << "seen " << testing::PrintToString(steps[i].m_vecHand);
        }
        before = expected;
    }
}

TEST_F(ViewCommand, LeavesNothingOfAModelWhenItIsInterrupted)
{
    const std::string folder = (m_folder.getPath() / "temporary").string();
    std::filesystem::create_directory(folder);
    const support::CommandResult result =
        support::runTW2({"view", "--no-settings", m_folder.write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")},
                        s_display + "env TMPDIR='" + folder + "' timeout 60 sh -c '\"$@\" & until ls \"" + folder +
                            "\" | grep -q tw2-view; do sleep 0.02; done; kill -TERM $!; wait $!' sh ");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(ViewCommand, KeysOpenAndCloseWhatTheWindowSays)
{
    if (!hasProgram("xdotool"))
    {
        GTEST_SKIP() << "xdotool was not found";
    }
    const auto press = [this](const std::string& file, const std::string& line, const std::string& keys)
    {
        // One name for all, since a note tells it.
        const std::filesystem::path folder = m_folder.getPath() / "written";
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        const support::CommandResult result = support::runTW2(
            {"view", file, "--no-settings", "--size", "640x480", "--window-picture", m_folder.file("w.png"), "--do",
             "play off", "--do", line},
            s_display + "timeout 60 sh -c 'cd \"" + folder.string() +
                // A key that goes by a window which is not ready yet is pressed again.
                "\"; \"$@\" & picture() { xdotool key F2; tries=0; until [ -s sprout$1.png ]; do sleep 0.02; "
                "tries=$((tries + 1)); if [ $((tries % 400)) = 0 ]; then " +
                s_focus + "xdotool key F2; fi; done; }; " + s_focus + keys + " ctrl+q; wait $!' sh ");
        EXPECT_EQ(result.status, 0) << keys << ": " << result.errors;
        EXPECT_FALSE(std::filesystem::exists(folder / ".png")) << "of an empty window";
        return readPicture();
    };
    // What a key opens is seen a picture later, at the latest in the second that is written; a note at once.
    struct Case
    {
        const char* m_szLine;
        std::string m_strKeys;
        const char* m_szLast;
        bool m_bPlain;
    };
    const std::string none = "true";
    const auto plain = press(s_sample, "", "picture; picture -2; picture -3; xdotool key");
    for (const Case& each :
         {Case{"", none, "ctrl", true}, Case{"", none, "F4", false}, Case{"", "xdotool key F1", "", false},
          Case{"", "xdotool key F1 F1", "", true}, Case{"clip nothing", none, "", false},
          Case{"clip nothing", "xdotool key Escape", "", true}, Case{"clip nothing", "xdotool key r", "", true}})
    {
        const auto seen =
            press(s_sample, each.m_szLine,
                  "picture; " + each.m_strKeys + "; picture -2; picture -3; xdotool key " + each.m_szLast);
        EXPECT_EQ(seen == plain, each.m_bPlain)
            << each.m_strKeys << ", " << each.m_szLast << " after " << each.m_szLine;
    }
    press("", "", "xdotool key F2");
}

#if defined(TW2_HAS_CONVERT) && defined(TW2_HAS_ASSIMP)
TEST_F(ViewCommand, ShowsAModelAsItsConvertedScript)
{
    const std::string model =
        m_folder.write("roof.obj", std::string_view("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 1\nf 1 2 3\nf 1 3 4\n"));
    EXPECT_EQ(support::runTW2({"convert", model, "-o", m_folder.file("made")}).status, 0);
    EXPECT_TRUE(look({"play off"}, model) == look({"play off"}, m_folder.file("made")));
}
#endif

TEST_F(ViewCommand, SaysWhyAFileCannotBeShownAndThatThereIsNoDisplay)
{
    struct Case
    {
        std::string m_strFile;
        const char* m_szSaid;
    };
    std::ofstream(m_folder.file("broken.script")) << "skeleton { geometry { exportdata \"nothing.tw\" } }";
    std::ofstream(m_folder.file("text.glb")) << "this is no model";
    for (const Case& each :
         {Case{m_folder.file("broken.script"), "nothing.tw"}, Case{m_folder.file("none.script"), "no such file"},
          Case{m_folder.getPath().string() + "/empty", "no such file"}, Case{m_folder.file("text.glb"), "text.glb"}})
    {
        const support::CommandResult result =
            support::runTW2({"view", each.m_strFile, "--no-settings", "--pictures", "2"}, s_display);
        EXPECT_EQ(result.status, 1) << each.m_strFile;
        EXPECT_NE(result.errors.find(each.m_szSaid), std::string::npos) << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
    for (const char* size : {"479x400", "480x319"})
    {
        const support::CommandResult refused = support::runTW2({"view", s_sample, "--size", size});
        EXPECT_EQ(refused.status, 1) << size;
        EXPECT_NE(refused.errors.find("from 480x320 to 8192x8192"), std::string::npos) << refused.errors;
    }
    const support::CommandResult blind =
        support::runTW2({"view", s_sample, "--no-settings"}, "env -u DISPLAY -u WAYLAND_DISPLAY ");
    EXPECT_EQ(blind.status, 1);
    EXPECT_NE(blind.errors.find("no window"), std::string::npos) << blind.errors;
}
}  // namespace
#endif
