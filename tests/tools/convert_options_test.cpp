// What the options of tw2 convert do, as a user would notice it.
#ifdef TW2_HAS_CONVERT
#include "tests/support/json_check.h"
#include "tests/support/picture_files.h"
#include "tests/support/run_command.h"
#include "tests/support/temporary_directory.h"
#include "tests/tools/converted_motion.h"

#include <platform/image/image.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

namespace
{
using namespace support;
using testing::HasSubstr;

/// A bone that sways to and fro in a second, and one that goes up in two.
GltfCharacter makeMover()
{
    GltfCharacter mover;
    mover.m_bSkinned = false;
    mover.m_vecBones = {{"base", -1, {}, {}}, {"top", 0, {0, 1, 0}, {}}};
    mover.m_vecClips = {{"sway", 1.0,
                         [](std::size_t bone, double t, Vec&, Quat& q) {
                             q = bone == 0 ? about({0, 0, 1}, 20 * std::sin(2 * s_pi * t)) : q;
                         },
                         ""},
                        {"rise", 2.0,
                         [](std::size_t bone, double t, Vec& offset, Quat&) {
                             offset = bone == 1 ? Vec{0, 1 + t * t, 0} : offset;
                         },
                         ""}};
    return mover;
}

/// The values of one member of a JSON text, in its order.
std::vector<std::string> findMembers(const std::string& text, const std::string& name)
{
    std::vector<std::string> values;
    const std::regex member("\"" + name + "\": \"?([^\",\n]*)");
    for (auto i = std::sregex_iterator(text.begin(), text.end(), member); i != std::sregex_iterator(); ++i)
    {
        values.push_back((*i)[1]);
    }
    return values;
}
}  // namespace

TEST(ConvertOptions, ClipsAreChosenRenamedCutMergedSampledAndRepeated)
{
    const TemporaryDirectory directory;
    const std::string model = directory.write("mover.gltf", makeMover().make());
    struct Case
    {
        Strings m_vecOptions;
        Strings m_vecNames;
        Strings m_vecFrames;
        Strings m_vecLooping;
        Strings m_vecRates;
    };
    const std::vector<Case> cases{
        {{}, {"sway", "rise"}, {"31", "61"}, {"true", "false"}, {"30", "30"}},
        {{"--clip", "rise"}, {"rise"}, {"61"}, {"false"}, {"30"}},
        {{"--clip", "rise=up:10-25", "--clip", "sway"}, {"up", "sway"}, {"16", "31"}, {"false", "true"}, {"30", "30"}},
        {{"--merge-clips"}, {"sway"}, {"61"}, {"true"}, {"30"}},
        {{"--clip", "rise:5-10", "--rate", "10"}, {"rise"}, {"6"}, {"false"}, {"10"}},
        {{"--loop", "always"}, {"sway", "rise"}, {"31", "61"}, {"true", "true"}, {"30", "30"}},
        {{"--loop", "never"}, {"sway", "rise"}, {"31", "61"}, {"false", "false"}, {"30", "30"}}};
    for (std::size_t i = 0; i < cases.size(); ++i)
    {
        const std::string out = directory.file(std::to_string(i));
        const CommandResult result =
            runTW2(Strings{"convert"} + cases[i].m_vecOptions + Strings{model, "-o", out, "--json"});
        ASSERT_EQ(result.status, 0) << result.errors;
        Strings names = findMembers(result.output, "name");
        EXPECT_EQ(names, cases[i].m_vecNames) << i;
        EXPECT_EQ(findMembers(result.output, "frames"), cases[i].m_vecFrames) << i;
        EXPECT_EQ(findMembers(result.output, "looping"), cases[i].m_vecLooping) << i;
        EXPECT_EQ(findMembers(result.output, "framesPerSecond"), cases[i].m_vecRates) << i;
        const auto object = load(out + "/mover.script", "object");
        for (std::size_t clip = 0; clip < names.size(); ++clip)
        {
            const int index = object->findAnimation(names[clip].c_str());
            EXPECT_EQ(index, static_cast<int>(clip) + 1) << i;
            EXPECT_EQ(std::to_string(object->getAnimationFrames(index)), cases[i].m_vecFrames[clip]) << i;
            EXPECT_EQ(object->isAnimationLooping(index), cases[i].m_vecLooping[clip] == "true") << i;
        }
    }
}

TEST(ConvertOptions, ScaleAndUpHoldForClipsToo)
{
    const GltfCharacter mover = makeMover();
    const TemporaryDirectory directory;
    const std::string model = directory.write("mover.gltf", mover.make());
    for (const char* up : {"x", "y", "z"})
    {
        const std::string out = directory.file(up);
        ASSERT_EQ(runTW2({"convert", model, "-o", out, "--scale", "2", "--up", up, "--name", "New Name"}).status, 0);
        const auto object = load(out + "/new_name.script", "object");
        for (const int clip : {0, 1})
        {
            object->animateObject(clip + 1, 0.3f, nullptr);
            const Vec played = getPoint(*object, "top", {0, 0, 0.5});
            // What points up in the file points where y does here; z up: its y points back.
            const Vec p = mover.getPoint(clip, 1, 0.3, {0, 0, 0.5}) * 2.0;
            const Vec expected = *up == 'x' ? Vec{-p.y, p.x, p.z} : *up == 'y' ? p : Vec{p.x, p.z, -p.y};
            EXPECT_LT(length(played - expected), 0.01) << up << clip;
        }
    }
}

TEST(ConvertOptions, TheSummaryForProgramsHasAllMembersADocumentPerObject)
{
    const TemporaryDirectory directory;
    const std::string model = directory.write("mover.gltf", makeMover().make());
    const std::string other = directory.write("other.gltf", makeMover().make());
    const CommandResult one = runTW2({"convert", model, "-o", directory.file("out"), "--json"});
    EXPECT_TRUE(JsonCheck::isValid(one.output)) << one.output;
    for (const char* member :
         {"script",          "files",    "sources", "skinned",       "nodes",        "vertices", "triangles",  "groups",
          "materials",       "textures", "cameras", "lights",        "allowedError", "clips",    "index",      "file",
          "framesPerSecond", "frames",   "looping", "sampledKeys",   "keys",         "bytes",    "travelFile", "events",
          "largestError",    "units",    "degrees", "motionSources", "warnings"})
    {
        EXPECT_THAT(one.output, HasSubstr("\"" + std::string(member) + "\": ")) << member;
    }
    EXPECT_EQ(findMembers(one.output, "script"), Strings{directory.file("out/mover.script")});
    EXPECT_EQ(findMembers(one.output, "nodes"), Strings{"2"});
    EXPECT_EQ(findMembers(one.output, "vertices"), Strings{"3"});
    const CommandResult two = runTW2({"convert", model, other, "-o", directory.file("two"), "--json"});
    EXPECT_EQ(findMembers(two.output, "script"),
              (Strings{directory.file("two/mover.script"), directory.file("two/other.script")}));
    const std::size_t second = two.output.find("{\n  \"script\"", 1);
    ASSERT_NE(second, std::string::npos);
    EXPECT_TRUE(JsonCheck::isValid(two.output.substr(0, second)));
    EXPECT_TRUE(JsonCheck::isValid(two.output.substr(second)));
}

TEST(ConvertOptions, TheSummaryCountsWhatWasWritten)
{
    // Two squares, each with a material, and one material more; five cameras and a light: each number is there once.
    GltfText text;
    const std::string square = addSquare(text) + "}";
    text.set("materials", R"([{"name":"a"},{"name":"b"},{"name":"c"}])");
    text.set("meshes", R"([{"primitives":[{"material":0,)" + square + R"(,{"material":1,)" + square + "]}]");
    text.set("cameras", R"([{"type":"perspective","perspective":{"yfov":1,"znear":1}}])");
    text.set("extensions", R"({"KHR_lights_punctual":{"lights":[{"type":"directional"}]}})");
    text.set("extensionsUsed", R"(["KHR_lights_punctual"])");
    std::string nodes = R"({"name":"wall","mesh":0},{"extensions":{"KHR_lights_punctual":{"light":0}}})";
    for (int camera = 0; camera < 5; ++camera)
    {
        nodes += R"(,{"camera":0})";
    }
    text.set("nodes", "[" + nodes + "]");
    const TemporaryDirectory directory;
    const std::string model = directory.write("room.gltf", text.make());
    const CommandResult told = runTW2({"convert", model, "-o", directory.file("out")});
    EXPECT_EQ(told.output, directory.file("out/room.script") +
                               "\n  object of 7 nodes, 8 vertices, 4 triangles in 2 groups, 3 materials, 0 textures, "
                               "5 cameras, 1 lights\n")
        << told.errors;
    const std::string json =
        runTW2({"convert", "--tolerance", "0.002", "0.1", model, "-o", directory.file("out"), "--json"}).output;
    for (const auto& [member, value] : {std::pair("nodes", "7"),
                                        {"vertices", "8"},
                                        {"triangles", "4"},
                                        {"groups", "2"},
                                        {"materials", "3"},
                                        {"textures", "0"},
                                        {"cameras", "5"},
                                        {"lights", "1"},
                                        {"skinned", "false"},
                                        {"units", "0.002"},
                                        {"degrees", "0.1"}})
    {
        const std::vector<std::string> found = findMembers(json, member);
        ASSERT_FALSE(found.empty()) << member;
        EXPECT_EQ(std::stod("0" + std::string(found[0] == "false" ? "" : found[0])),
                  std::stod("0" + std::string(value == std::string("false") ? "" : value)))
            << member;
    }
    // A clip is told with the keys that it had and that it has, and with what its file takes.
    const std::string mover = directory.write("mover.gltf", makeMover().make());
    const CommandResult moved = runTW2({"convert", mover, "-o", directory.file("out")});
    std::smatch line;
    ASSERT_TRUE(std::regex_match(
        moved.output, line,
        std::regex("\\S+/mover.script\n  object of 2 nodes, 3 vertices, 1 triangles in 1 groups, \\d materials, 0 "
                   "textures\n  animations \\(0 is the pose at rest\\), allowed error \\S+ units, 0.1 degrees:\n"
                   "  1  sway: 31 frames at 30 per second, looping, keys (\\d+) -> (\\d+), (\\d+) bytes, largest error "
                   "\\S+ units, \\S+ degrees\n  2  rise: 61 frames at 30 per second, keys [^\n]+ degrees\n")))
        << moved.output;
    EXPECT_GT(std::stoi(line[1]), std::stoi(line[2]));
    EXPECT_EQ(std::stoul(line[3]), std::filesystem::file_size(directory.file("out/mover_sway.anim.tw")));
    const CommandResult strict =
        runTW2({"convert", mover, "-o", directory.file("out"), "--rate", "2", "--tolerance", "1e-6", "1e-6"});
    EXPECT_THAT(strict.output, HasSubstr("degrees (more than allowed)")) << "two frames a second cannot say it";
    EXPECT_EQ(moved.output.find("more than allowed"), std::string::npos);
    EXPECT_EQ(strict.output.find("longer"), std::string::npos);
    GltfCharacter shorter = makeMover();
    shorter.m_vecClips[0].m_dSeconds = 0.7;
    const std::string brief = directory.write("shorter.gltf", shorter.make());
    EXPECT_THAT(runTW2({"convert", brief, "-o", directory.file("out"), "--rate", "2"}).output,
                HasSubstr("\n     0.3 s longer than in the file"));
    const std::vector<std::string> seconds = findMembers(
        runTW2({"convert", brief, "-o", directory.file("out"), "--rate", "2", "--json"}).output, "secondsLonger");
    ASSERT_EQ(seconds.size(), 2U);
    EXPECT_NEAR(std::stod(seconds[0]), 0.3, 1e-6);
    EXPECT_EQ(seconds[1], "0");
}

TEST(ConvertOptions, WhatTakesTooLongIsGivenUp)
{
    const TemporaryDirectory directory;
    ASSERT_EQ(mkfifo(directory.file("never.bin").c_str(), 0600), 0);
    const std::string model =
        directory.write("model.gltf", R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":9,"uri":"never.bin"}]})");
    const CommandResult result = runTW2({"convert", model, "-o", directory.file("out"), "--timeout", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tw2: " + model + ": takes longer than 1 seconds\n");
}

// A limit on the size of files ends the process that writes one, as a crash of an importer would.
TEST(ConvertOptions, ACrashIsToldAndLeavesNothingHalfWritten)
{
    const TemporaryDirectory directory;
    const std::string model = directory.write("mover.gltf", makeMover().make());
    for (const Strings& to :
         {Strings{"-o", directory.file("out")}, Strings{"--onto", directory.file("made/mover.script")}})
    {
        ASSERT_EQ(runTW2({"convert", model, "-o", directory.file("made"), "--clip", "rise"}).status, 0);
        const CommandResult result =
            runTW2(Strings{"convert", model, "--clip", "sway", "--rate", "960", "--tolerance", "1e-9", "1e-9"} + to,
                   "sh -c 'ulimit -f 8; \"$@\"' sh ");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "tw2: " + model + ": the importer crashed on it (File size limit exceeded)\n");
        EXPECT_TRUE(std::filesystem::is_empty(directory.file("out")));
        for (const auto& each : std::filesystem::directory_iterator(directory.file("made")))
        {
            EXPECT_FALSE(each.is_directory()) << each.path();
        }
    }
}

TEST(ConvertOptions, QuietKeepsWarningsAndPicturesAreFoundInOtherFolders)
{
    const TemporaryDirectory directory;
    const std::vector<unsigned char> picture = encodePicture(G_Image(4, 4), PictureFormat::PNG);
    directory.write("pictures/skin.png",
                    std::string_view(reinterpret_cast<const char*>(picture.data()), picture.size()));
    std::string text = makeMover().make();
    const std::string mesh = R"({"attributes":{"POSITION":)";
    text.replace(text.find(mesh), mesh.size(), R"({"material":0,)" + mesh.substr(1));
    text.insert(text.size() - 1,
                R"(,"materials":[{"name":"m","pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],)"
                R"("textures":[{"source":0}],"images":[{"uri":"C:\\art\\Skin.tga"}])");
    const std::string model = directory.write("mover.gltf", text);
    const CommandResult without = runTW2({"convert", model, "-o", directory.file("a"), "--quiet"});
    EXPECT_EQ(without.status, 0);
    EXPECT_EQ(without.output, "");
    EXPECT_THAT(without.errors, HasSubstr("Skin.tga"));
    const CommandResult with =
        runTW2({"convert", "--textures", directory.file("pictures"), model, "-o", directory.file("b"), "--quiet"});
    EXPECT_EQ(with.status, 0);
    EXPECT_THAT(with.errors, testing::Not(HasSubstr("Skin.tga")));
    EXPECT_EQ(directory.read("b/textures/skin.png"), directory.read("pictures/skin.png"));
}

TEST(ConvertOptions, TheDepfileNamesAllThatWasReadAsMakeWritesNames)
{
    const TemporaryDirectory directory;
    GltfText text;
    const std::vector<float> corners{0, 0, 0, 1, 0, 0, 0, 1, 0};
    text.set("meshes",
             R"([{"primitives":[{"attributes":{"POSITION":)" + number(text.addFloats(corners, "VEC3")) + "}}]}]");
    text.set("nodes", R"([{"mesh":0}])");
    std::string content = text.make();
    const std::size_t data = content.find("data:");
    content.replace(data, content.find('"', data) - data, "bytes%20%24.bin");
    const std::string model = directory.write("the #1.gltf", content);
    directory.write("bytes $.bin",
                    std::string_view(reinterpret_cast<const char*>(text.getBytes().data()), text.getBytes().size()));
    const CommandResult result =
        runTW2({"convert", model, "-o", directory.file("out"), "--depfile", directory.file("deps.d")});
    ASSERT_EQ(result.status, 0) << result.errors;
    const std::string folder = directory.getPath().string();
    const std::string escapedModel = folder + "/the\\ \\#1.gltf";
    const std::string escapedBytes = folder + "/bytes\\ $$.bin";
    EXPECT_EQ(directory.read("deps.d"), folder + "/out/the__1.script: \\\n  " + escapedModel + " \\\n  " +
                                            escapedBytes + "\n\n" + escapedModel + ":\n\n" + escapedBytes + ":\n");
    EXPECT_EQ(runTW2({"convert", model, model, "-o", directory.file("x"), "--depfile", directory.file("d")}).status, 1)
        << "one depfile is for one object";
    directory.write("flag.mtl", "newmtl red\nKd 1 0 0\n");
    const std::string flag =
        directory.write("flag.obj", "mtllib flag.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl red\nf 1 2 3\n");
    if (runTW2({"convert", flag, "-o", directory.file("out"), "--depfile", directory.file("flag.d")}).status == 0)
    {
        EXPECT_THAT(directory.read("flag.d"), HasSubstr("flag.mtl"));
    }
}

TEST(ConvertOptions, ManyAtOnceAreToldInTheirOrderAndOneThatFailsStopsNoOther)
{
    const TemporaryDirectory directory;
    Strings arguments{"convert", "-o", directory.file("out"), "-j", "3"};
    std::string expected;
    for (int i = 0; i < 8; ++i)
    {
        const std::string name = "m" + std::to_string(7 - i);
        arguments.push_back(directory.write(name + ".gltf", i == 4 ? "{" : makeMover().make()));
        expected += i == 4 ? "" : directory.file("out/" + name + ".script") + "\n";
    }
    const CommandResult result = runTW2(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("m3.gltf"));
    std::string told;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);)
    {
        told += line.ends_with(".script") ? line + "\n" : "";
    }
    EXPECT_EQ(told, expected);
    EXPECT_FALSE(std::filesystem::exists(directory.file("out/m3.script")));
    EXPECT_TRUE(std::filesystem::exists(directory.file("out/m0.script")));
    const std::string twin = directory.write("other/M1.gltf", makeMover().make());
    const std::string model = directory.file("m1.gltf");
    for (const auto& [more, reason] : {std::pair(Strings{twin, "-o", "x"}, "two of the models are called \"m1\""),
                                       {{twin, "-o", "x", "--name", "m"}, "--name and --depfile are for one object"},
                                       {{"-o", model}, "is a file; expected a folder"}})
    {
        const CommandResult refused = runTW2(Strings{"convert", model} + more);
        EXPECT_EQ(refused.status, 1);
        EXPECT_THAT(refused.errors, HasSubstr(reason));
    }
}

TEST(ConvertOptions, BeingInterruptedEndsAllThatIsAtWorkAndLeavesNothingHalfWritten)
{
    // Buffers that never come: both conversions wait for theirs.
    std::signal(SIGPIPE, SIG_IGN);
    for (const int signal : {SIGTERM, SIGINT})
    {
        const TemporaryDirectory directory;
        Strings arguments{"convert", "-o", directory.file("out"), "-j", "2"};
        Strings pipes;
        for (const char* name : {"a", "b", "c"})
        {
            pipes.push_back(directory.file(std::string(name) + ".bin"));
            ASSERT_EQ(mkfifo(pipes.back().c_str(), 0600), 0);
            arguments.push_back(directory.write(
                std::string(name) + ".gltf",
                std::string(R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":9,"uri":")") + name + ".bin\"}]}"));
        }
        const pid_t process = fork();
        ASSERT_GE(process, 0);
        if (process == 0)
        {
            std::vector<char*> list{const_cast<char*>(TW2_COMMAND)};
            for (std::string& argument : arguments)
            {
                list.push_back(argument.data());
            }
            list.push_back(nullptr);
            execv(TW2_COMMAND, list.data());
            _exit(127);
        }
        std::array<int, 2> ends{-1, -1};
        for (std::size_t i = 0; i < ends.size(); ++i)
        {
            // Opens once somebody waits at the other end.
            constexpr int mostTries = 6000;
            for (int tries = 0; ends[i] < 0 && tries < mostTries; ++tries)
            {
                ends[i] = open(pipes[i].c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
                usleep(ends[i] < 0 ? 10000 : 0);
            }
            ASSERT_GE(ends[i], 0) << "the conversion never came to its buffer";
        }
        EXPECT_EQ(open(pipes[2].c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC), -1) << "only two work at once";
        kill(process, signal);
        int status = 0;
        ASSERT_EQ(waitpid(process, &status, 0), process);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        for (const int end : ends)
        {
            EXPECT_TRUE(write(end, "x", 1) == -1 && errno == EPIPE) << "nobody is at work any more";
            close(end);
        }
        EXPECT_FALSE(std::filesystem::exists(directory.file("out")));
    }
    std::signal(SIGPIPE, SIG_DFL);
}
#endif
