#include "tests/support/run_command.h"

#include <platform/image/image.h>
#include <platform/runtime/file.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// The window, opened on a display without a screen: driven by commands, by keys, and given files that are no good.
#if defined(TW2_HAS_WINDOW)
namespace
{
const std::string s_sample = TW2_SAMPLE "/sprout.script";
/// What stands before a program in the shell's line to give it a display of its own.
const std::string s_display = "'" TW2_SCRIPTS "/with_display.sh' ";

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
        std::vector<std::string> arguments{"view",
                                           file,
                                           "--no-settings",
                                           "--size",
                                           "640x480",
                                           "--pictures",
                                           "3",
                                           "--seconds-per-picture",
                                           "0.05",
                                           "--window-picture",
                                           m_folder.file("w.png")};
        for (const std::string& line : lines)
        {
            arguments.insert(arguments.end(), {"--do", line});
        }
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
    std::ifstream file(m_folder.file("w.gif"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    EXPECT_EQ(bytes.substr(0, 6), "GIF89a");
    // Each picture is announced by a control block that tells how long it stands: a tenth of a second.
    std::size_t pictures = 0;
    for (std::size_t at = bytes.find("\x21\xF9\x04"); at != std::string::npos; at = bytes.find("\x21\xF9\x04", at + 1))
    {
        pictures += bytes[at + 4] == 10 && bytes[at + 5] == 0 ? 1 : 0;
    }
    EXPECT_EQ(pictures, 4U);
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

TEST_F(ViewCommand, KeysDoWhatTheHelpSays)
{
    if (!hasProgram("xdotool"))
    {
        GTEST_SKIP() << "xdotool was not found";
    }
    const auto shown = [this](const std::string& keys)
    {
        const std::string before = s_display +
                                   "timeout 60 "
                                   "sh -c '\"$@\" & "
                                   "xdotool search --sync --onlyvisible --name \"tw2 view\" windowfocus; sleep 1; "
                                   "for key in " +
                                   keys + "; do xdotool key $key; sleep 0.3; done; xdotool key ctrl+q; wait $!' sh ";
        const support::CommandResult result =
            support::runTW2({"view", s_sample, "--no-settings", "--size", "640x480", "--do", "play off",
                             "--window-picture", m_folder.file("w.png")},
                            before);
        EXPECT_EQ(result.status, 0) << result.errors;
        return readPicture();
    };
    const auto plain = shown("Escape");
    EXPECT_TRUE(shown("s") != plain) << "S: skeleton";
    EXPECT_TRUE(shown("s s") == plain) << "S again: as before";
    EXPECT_TRUE(shown("Right") != plain) << "Right: one frame on";
    EXPECT_TRUE(shown("h") != plain) << "H: panels";
}

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
    for (const char* size : {"479x400", "480x319", "8193x400", "480", "480x320x"})
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
