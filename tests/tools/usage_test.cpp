#include "tests/support/run_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

/// What a person gets who does not know the command yet.
namespace
{
TEST(Usage, WrongWordsAreToldWithWhatWouldBeRight)
{
    const support::TemporaryDirectory folder;
    const std::string model = folder.file("hero.GLB");
    std::ofstream(model) << "glTF";
    struct Case
    {
        std::vector<std::string> m_vecArguments;
        int m_iStatus;
        std::string m_strSaid;
    };
    const std::vector<Case> cases{
        {{"inf", "x"}, 2, "there is no command \"inf\"; the nearest is \"info\""},
        {{"analyse"}, 2, "the nearest is \"analyze\""},
        {{"rendr"}, 2, "the nearest is \"render\""},
        {{"pplay"}, 2, "the nearest is \"play\""},
        {{"render", "x", "--wierframe=1"},
         2,
         "no option \"--wierframe\"; the nearest is \"--wireframe\", and tw2 render"},
        {{"render", "x", "y"}, 2, "y"},
        {{"convert", TW2_SAMPLE "/walker.script", "-o", "x"}, 1, "is what the library loads"},
        {{"render", "x", "--sheet", "s.png", "--weight", "1"}, 2, "--blend"},
        {{"xview"}, 2, "the nearest is \"view\""},
        {{"covnert"}, 2, "the nearest is \"convert\""},
        {{"info", model}, 1, "is a model, not a script: \"tw2 convert " + model + " -o FOLDER\""},
        {{"play", model}, 1, "is a model, not a script"},
        {{"info", TW2_SAMPLE}, 1, " is a folder, not a script; in it: sprout.script, walker.script"},
        {{"info", TW2_SAMPLE "/textures"}, 1, "/textures is a folder, not a script; in it: no script"},
    };
    for (const Case& each : cases)
    {
        const support::CommandResult result = support::runTW2(each.m_vecArguments);
        EXPECT_EQ(result.status, each.m_iStatus) << each.m_vecArguments.front();
        EXPECT_NE(result.errors.find(each.m_strSaid), std::string::npos) << result.errors;
        EXPECT_TRUE(result.output.empty()) << result.output;
    }
    // A reason stands on one line, and a result that has no place to go is told.
    const support::CommandResult broken = support::runTW2({"info", folder.file("two\nlines.script")});
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(std::count(broken.errors.begin(), broken.errors.end(), '\n'), 1) << broken.errors;
    for (const char* format : {"--json", "--tree"})
    {
        const support::CommandResult full =
            support::runTW2({"analyze", TW2_SAMPLE "/sprout_skin.tw", format}, "sh -c '\"$@\" >/dev/full' sh ");
        EXPECT_EQ(full.status, 1) << format;
        EXPECT_EQ(full.errors, "tw2: cannot write to standard output\n") << format;
    }
    const support::CommandResult version = support::runTW2({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("tw2 ")) << version.output;
}

#if defined(TW2_HAS_CONVERT) && defined(TW2_HAS_WINDOW)
TEST(Usage, NumbersAreTakenFromTheirLeastToTheirMost)
{
    struct Case
    {
        const char* m_szCommand;
        const char* m_szOption;
        std::vector<const char*> m_vecTaken;
        std::vector<const char*> m_vecRefused;
    };
    for (const Case& each :
         {Case{"convert", "--rate", {"1", "960"}, {"0", "961"}}, Case{"convert", "-j", {"1", "256"}, {"0", "257"}},
          Case{"convert", "--progress", {"0", "1048576"}, {"-1", "1048577"}},
          Case{"convert", "--scale", {"0.000001"}, {"0", "-1", "large"}},
          Case{"view", "--scale", {"0.5", "4"}, {"0.49", "4.1"}},
          Case{"render", "--angle", {"1", "170"}, {"0.9", "170.1"}},
          Case{"render", "--fps", {"1", "50"}, {"0.9", "50.1"}},
          Case{"render", "--sheet-pictures", {"1", "400"}, {"0", "401"}},
          Case{"render", "--size", {"1x1", "8192x8192"}, {}}, Case{"view", "--size", {"480x320", "8192x8192"}, {}}})
    {
        const auto run = [&each](const char* value)
        {
            std::vector<std::string> arguments{each.m_szCommand, "none", each.m_szOption, value};
            arguments.insert(arguments.end(), {"-o", "none.png"});
            arguments.resize(std::string(each.m_szCommand) == "view" ? 4 : 6);
            return support::runTW2(arguments, "env -u DISPLAY -u WAYLAND_DISPLAY ");
        };
        for (const char* value : each.m_vecTaken)
        {
            const support::CommandResult result = run(value);
            EXPECT_EQ(result.status, 1) << each.m_szCommand << each.m_szOption << value << " is taken";
            EXPECT_EQ(result.errors.find("--size"), std::string::npos) << result.errors;
        }
        for (const char* value : each.m_vecRefused)
        {
            EXPECT_EQ(run(value).status, 2) << each.m_szCommand << each.m_szOption << value << " is refused";
        }
    }
}
#endif

#if defined(TW2_HAS_CONVERT)
TEST(Usage, AToleranceOfNothingIsAnsweredWithOneThatIsSomething)
{
    const support::CommandResult result =
        support::runTW2({"convert", "hero.glb", "-o", "out", "--tolerance", "0", "0.1"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE((result.output + result.errors).find("must be a number above 0, such as 0.000001"), std::string::npos)
        << result.errors;
}
#endif
}  // namespace
