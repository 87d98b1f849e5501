#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"

#include <platform/math/vector3.h>
#include <platform/runtime/file.h>
#include <platform/runtime/script.h>

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <utility>

using support::messageOf;

namespace
{
constexpr const char* s_soldier = R"(
// A soldier and a hat.
soldier
{
    geometry
    {
        exportdata "models\soldier \"A\"\\.tw" /* quoted,
                                                  with a path */
        crossmode normalized   size (1, -2.5 ,.5e1)
    }
    animation { index -3 filename idle.tw }   // two pairs in a line
    animation { index +12  filename "" speed 1e-3 }
}
"red hat" {}
soldier { animation { index 7 filename a/*...*/ } }
)";

/// The keys of an animation block, read at once.
struct Animation
{
    int m_iIndex = -99;
    S_String m_strFilename = "untouched";
    float m_fSpeed = -99;

    void parse(const S_Script& script, unsigned int occurrence)
    {
        const S_Script::Variables table[] = {{"index", S_Script::t_int, &m_iIndex, nullptr},
                                             {"filename", S_Script::t_string, &m_strFilename, nullptr},
                                             {"speed", S_Script::t_float, &m_fSpeed, "0.5"},
                                             {nullptr, S_Script::t_int, nullptr, nullptr}};
        script.parse(table, "animation", occurrence, true);
    }
};

/// The message of reading `text`, then of `read` on it.
template <typename Read>
std::string complaint(const std::string& text, Read&& read)
{
    return messageOf(
        [&]
        {
            S_Script script = S_Script::fromText("a.txt", text.c_str());
            read(script);
        });
}

std::string complaint(const std::string& text)
{
    return complaint(text, [](S_Script&) {});
}
}  // namespace

TEST(Script, BlocksAreFoundByNameOccurrenceAndIndexAtEveryLevel)
{
    S_Script script = S_Script::fromText("army.txt", s_soldier);
    EXPECT_EQ(script.getBlockCount(), 3u);
    EXPECT_EQ(script.count("soldier"), 2u);
    EXPECT_EQ(script.count("Soldier"), 0u);
    EXPECT_STREQ(script.getBlockName(1), "red hat");
    EXPECT_STREQ(script.staticNesting(), "army.txt");
    {
        const S_ScriptLockGuard guard(script);
        script.lock("soldier", 0);
        EXPECT_EQ(script.count("animation"), 2u);
        script.lock(0);
        EXPECT_STREQ(script.staticNesting(), "army.txt: soldier: geometry");
        EXPECT_EQ(script.getBlockCount(), 0u);
    }
    EXPECT_EQ(script.getDepth(), 0u);
    script.lock("soldier", 1);
    EXPECT_EQ(script.count("animation"), 1u);
    script.unlock();
    EXPECT_EQ(script.count("animation"), 0u);
    S_Script moved = std::move(script);
    EXPECT_STREQ(moved.getScriptName(), "army.txt");
}

TEST(Script, LinesOfKeysAndTheFolderAreToldForMessages)
{
    support::TemporaryDirectory directory;
    directory.write("scripts/army.txt", s_soldier);
    directory.enter();
    S_Script script("scripts/army.txt");
    File.changeDirectory("scripts");
    EXPECT_EQ(script.getFolder(), directory.file("scripts/"));
    EXPECT_STREQ(script.getScriptName(), "scripts/army.txt");
    script.lock("soldier", 0);
    EXPECT_EQ(script.getKeyLine("geometry", 0, "exportdata"), 7u);
    EXPECT_EQ(script.getKeyLine("geometry", 0, "size"), 9u);
    EXPECT_EQ(script.getKeyLine("geometry", 0, "skindata"), 5u);  // the block's
    EXPECT_EQ(script.getKeyLine("animation", 1, "filename"), 12u);
    EXPECT_THROW((void)script.getKeyLine("animation", 2, "filename"), S_ScriptException);
}

TEST(Script, ValuesOfEveryFormatAreReadAndMissingKeysGetTheirDefaults)
{
    S_Script script = S_Script::fromText("army.txt", s_soldier);
    script.lock("soldier", 0);
    S_String file;
    S_String mode;
    S_String skin = "before";
    M_Vector3Template<float> size;
    M_Vector3Template<float> corner;
    float distance = 9;
    const S_Script::Variables table[] = {
        {"exportdata", S_Script::t_string, &file, nullptr}, {"skindata", S_Script::t_string, &skin, ""},
        {"crossmode", S_Script::t_string, &mode, "linear"}, {"distance", S_Script::t_float, &distance, "0.0"},
        {"size", S_Script::t_float3, &size, nullptr},       {"corner", S_Script::t_float3, &corner, "(-1,\t-1\t,-1)"},
        {nullptr, S_Script::t_int, nullptr, nullptr}};
    script.parse(table, "geometry", 0, true);
    EXPECT_EQ(file, "models\\soldier \"A\"\\.tw");
    EXPECT_EQ(skin, "");
    EXPECT_EQ(mode, "normalized");
    EXPECT_EQ(distance, 0.0f);
    EXPECT_EQ(size, M_Vector3Template<float>(1, -2.5f, 5));
    EXPECT_EQ(corner, M_Vector3Template<float>(-1, -1, -1));

    Animation animation;
    animation.parse(script, 0);
    EXPECT_EQ(animation.m_iIndex, -3);
    EXPECT_EQ(animation.m_strFilename, "idle.tw");
    EXPECT_EQ(animation.m_fSpeed, 0.5f);
    animation.parse(script, 1);
    EXPECT_EQ(animation.m_iIndex, 12);
    EXPECT_EQ(animation.m_strFilename, "");
    EXPECT_EQ(animation.m_fSpeed, 1e-3f);
    script.unlock();
    script.lock("soldier", 1);
    animation.parse(script, 0);
    EXPECT_EQ(animation.m_strFilename, "a") << "a comment ends a word";
}

TEST(Script, DamagedTextIsRefusedWithItsLine)
{
    const std::pair<const char*, const char*> cases[] = {
        {"a {\n b {\n\n",
         "4, block \"a: b\": expected } for the block that begins in line 2, found the end of the script"},
        {"a\n{\n}\n}", "4, top level: expected a block name, found } without an open block"},
        {"a {\r\n {} }", "2, block \"a\": expected a block name, a key or }, found {"},
        {"a {\r\n\r (1,2,3) 4 }", "3, block \"a\": expected a block name, a key or }, found \"(1,2,3)\""},
        {"a {\n key\n value 1\n}",
         "2, block \"a\", key \"key\": expected a value in the same line, or { for a block of this name"},
        {"a { key }", "1, block \"a\", key \"key\": expected a value in the same line, or { for a block of this name"},
        {"\n\nkey 1",
         "3, top level, key \"key\": expected keys inside blocks only; a block is written as: name { key value }"},
        {"a {\n key \"open\n \"}", "2, block \"a\": expected a closing quotation mark in the same line"},
        {"a { key (1, 2\n, 3) }", "1, block \"a\": expected ) in the same line"},
        {"a { key 1) }", "1, block \"a\": expected ( before )"},
        {"a {}\n/* b {\n}\n", "2, top level: expected */ for the comment that begins here"},
        {"a {\n\x01 1 }", "2, block \"a\": expected text, found a byte of value 0x01"},
        {"a {\n\x7F 1 }", "2, block \"a\": expected text, found a byte of value 0x7F"},
        {"a { \"\" 1 }", "1, block \"a\": expected a block name, a key or }, found \"\""},
    };
    for (const auto& [text, message] : cases)
    {
        EXPECT_EQ(complaint(text), std::string("Script \"a.txt\", line ") + message);
    }
    std::string deep;
    for (int i = 0; i < 100000; ++i)
    {
        deep += "a{\n";
    }
    const std::string message = complaint(deep);
    EXPECT_NE(message.find("line 65,"), std::string::npos) << message;
    EXPECT_NE(message.find("expected blocks nested at most 64 deep"), std::string::npos) << message;
}

TEST(Script, ValuesThatDoNotFitAreRefusedWithTheirKeyAndNothingIsWritten)
{
    const std::string head = "Script \"a.txt\", line 2, block \"animation\", key ";
    const std::pair<const char*, const char*> cases[] = {
        {"index 1 filename x\n index 2", "\"index\": is given a second time; line 2 has the first"},
        {"index 1 filename x Speed 2", "\"Speed\": is not known here; known are: \"index\", \"filename\", \"speed\""},
        {"index 2.5 filename x", "\"index\": expected a whole number, found 2.5"},
        {"index 0x10 filename x", "\"index\": expected a whole number, found 0x10"},
        {"index \"1\" filename x", "\"index\": expected a whole number, found 1"},
        {"index 2147483648 filename x",
         "\"index\": expected a whole number from -2147483648 to 2147483647, found 2147483648"},
        {"index 1 filename (1,2,3)", "\"filename\": expected a word or a \"quoted string\", found (1,2,3)"},
        {"index 1 filename x speed 1,5", "\"speed\": expected a number, found 1,5"},
        {"index 1 filename x speed nan", "\"speed\": expected a number, found nan"},
        {"index 1 filename x speed -inf", "\"speed\": expected a number, found -inf"},
        {"index 1 filename x speed +-1", "\"speed\": expected a number, found +-1"},
        {"index 1 filename x speed 1e39",
         "\"speed\": expected a number of at most 3.4e38 and, unless 0, at least 1.4e-45 in magnitude, found 1e39"},
    };
    for (const auto& [keys, complained] : cases)
    {
        Animation animation;
        const std::string message = complaint(std::string("animation {\n ") + keys + " }",
                                              [&](const S_Script& script) { animation.parse(script, 0); });
        std::string expected = head + complained;
        if (expected.find("second time") != std::string::npos)
        {
            expected.replace(expected.find("line 2"), 6, "line 3");
        }
        EXPECT_EQ(message, expected);
        EXPECT_EQ(animation.m_iIndex, -99);
        EXPECT_EQ(animation.m_strFilename, "untouched");
    }
    EXPECT_EQ(complaint("\nanimation {\n index 1 }", [](const S_Script& script) { Animation().parse(script, 0); }),
              "Script \"a.txt\", line 2, block \"animation\", key \"filename\": is missing; expected a word or a "
              "\"quoted string\"");

    for (const char* vector : {"(1, 2)", "(1, 2, 3, 4)", "(1,, 3)", "(1, 2, x)", "()", "1", "((1,2,3)", "(1, 1e39, 2)"})
    {
        const bool isLarge = vector == std::string("(1, 1e39, 2)");
        M_Vector3Template<float> value;
        const S_Script::Variables table[] = {{"v", S_Script::t_float3, &value, nullptr},
                                             {nullptr, S_Script::t_int, nullptr, nullptr}};
        EXPECT_EQ(complaint(std::string("a { v ") + vector + " }",
                            [&](const S_Script& script) { script.parse(table, "a", 0, false); }),
                  std::string("Script \"a.txt\", line 1, block \"a\", key \"v\": expected ") +
                      (isLarge ? "a number of at most 3.4e38 and, unless 0, at least 1.4e-45 in magnitude"
                               : "three numbers as (x, y, z)") +
                      ", found " + vector);
    }
}

TEST(Script, KeysThatATableDoesNotNameAreLeftAloneUnlessItIsStrict)
{
    const S_Script script = S_Script::fromText("a.txt", "a { x 1 other 2 other 3 }");
    int x = 0;
    const S_Script::Variables table[] = {{"x", S_Script::t_int, &x, nullptr},
                                         {nullptr, S_Script::t_int, nullptr, nullptr}};
    script.parse(table, "a", 0, false);
    EXPECT_EQ(x, 1);
    EXPECT_THROW(script.parse(table, "a", 0, true), S_ScriptException);
    const S_Script::Variables wrong[] = {{"y", S_Script::t_int, &x, "one"},
                                         {nullptr, S_Script::t_int, nullptr, nullptr}};
    EXPECT_EQ(messageOf([&] { script.parse(wrong, "a", 0, false); }),
              "Script \"a.txt\", line 1, block \"a\", key \"y\": expected a whole number, found the default one");
}

TEST(Script, BlocksAreCountedAgainstATable)
{
    const S_Script::Blocks table[] = {{"geometry", 1, 1}, {"animation", 0, -1}, {nullptr, 0, 0}};
    const auto check = [&](const char* text, bool strict)
    {
        return complaint(text,
                         [&](S_Script& script)
                         {
                             script.lock("a", 0);
                             script.blockCheck(table, strict);
                         });
    };
    S_Script right = S_Script::fromText("a.txt", "geometry {} animation {} animation {}");
    EXPECT_NO_THROW(right.blockCheck(table, true));
    EXPECT_EQ(
        check("\na {\n animation {} Geometry {} }", false),
        "Script \"a.txt\", line 2, block \"a\": expected at least 1 block(s) \"geometry\", found 0; the blocks here "
        "are: \"Geometry\", \"animation\"");
    EXPECT_EQ(check("a {\n geometry {}\n geometry {}\n geometry {} }", false),
              "Script \"a.txt\", line 3, block \"a\": expected at most 1 block(s) \"geometry\", found 3");
    EXPECT_EQ(check("a {\n key 1 geometry {} }", true),
              "Script \"a.txt\", line 2, block \"a\", key \"key\": is not known here; only blocks are: \"geometry\", "
              "\"animation\"");
    std::string ten = "a {";
    for (char name = 'a'; name <= 'j'; ++name)
    {
        ten += std::string(" ") + name + " {}";
    }
    EXPECT_TRUE(check((ten + " }").c_str(), false).ends_with("\"i\", \"j\""));
    EXPECT_TRUE(check((ten + " k {} }").c_str(), false).ends_with("\"i\", \"j\", ..."));
    EXPECT_EQ(check("a {\n geometry {}\n animaton {} }", true),
              "Script \"a.txt\", line 3, block \"a\": block \"animaton\" is not known here; known are: \"geometry\", "
              "\"animation\"");
    EXPECT_EQ(complaint("a {} b {} b {}", [](S_Script& script) { script.lock("b", 2); }),
              "Script \"a.txt\", line 1, top level: expected at least 3 block(s) \"b\", found 2; the blocks here are: "
              "\"a\", \"b\"");
    EXPECT_EQ(complaint("a {} b {}", [](S_Script& script) { script.lock(2); }),
              "Script \"a.txt\", line 1, top level: expected a block index below 2, the number of blocks here, not 2");
    EXPECT_EQ(complaint("a {}", [](S_Script& script) { script.unlock(); }),
              "Script \"a.txt\", line 1, top level: expected a locked block to unlock");
}

TEST(Script, NumbersReadTheSameInEveryLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"})
    {
        std::setlocale(LC_ALL, locale);  // most machines have one of these or none
    }
    const S_Script script = S_Script::fromText("a.txt", "animation {\f index 1 filename\vx speed 2.25 }");
    Animation animation;
    EXPECT_NO_THROW(animation.parse(script, 0));
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(animation.m_fSpeed, 2.25f);
}

TEST(Script, AFileIsReadWithOrWithoutByteOrderMark)
{
    support::TemporaryDirectory directory;
    const std::string name = directory.write("Army.txt",
                                             "\xEF\xBB\xBF"
                                             "a { /*/ } */ animation { index 1 filename \xC3\xA4.tw } }");
    S_Script script(directory.file("army.TXT").c_str());
    script.lock("a", 0);
    Animation animation;
    animation.parse(script, 0);
    EXPECT_EQ(animation.m_strFilename, "\xC3\xA4.tw");
    EXPECT_THROW(S_Script("missing.txt"), S_FileException);
}
