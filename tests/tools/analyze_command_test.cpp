#include "tests/support/every_kind.h"
#include "tests/support/json_check.h"
#include "tests/support/run_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using support::CommandResult;
using support::JsonCheck;
using support::runTW2;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using WriteChunk = S_MemoryFileWriter::Chunk;

namespace
{
class AnalyzeCommand : public testing::Test
{
protected:
    std::string writeAll() { return write("all.tw", support::writeEveryKind); }

    template <typename Write>
    std::string write(const char* name, Write&& writeChunks)
    {
        S_MemoryFileWriter writer;
        writeChunks(writer);
        return m_directory.write(name, writer.getBytes());
    }

    support::TemporaryDirectory m_directory;
};
}  // namespace

TEST_F(AnalyzeCommand, PrintsTheReportOfEachFile)
{
    const std::string helper = write("helper.tw", [](S_MemoryFileWriter& w) { w << TW2::HelperChunk(); });
    const CommandResult one = runTW2({"analyze", helper});
    EXPECT_EQ(one.status, 0) << one.errors;
    EXPECT_EQ(one.output, "Helper\n: size 77, version 0\n");
    EXPECT_THAT(one.errors, IsEmpty());

    const CommandResult two = runTW2({"analyze", helper, helper});
    EXPECT_EQ(two.output, helper + ":\n" + one.output + helper + ":\n" + one.output);
}

TEST_F(AnalyzeCommand, TheTreeShowsNestedChunksAndWhatIsInThem)
{
    const CommandResult result = runTW2({"analyze", "--tree", writeAll()});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output,
              R"(0x10001 Camera, version 0, 91 bytes at 0: name "camera", value0 1, value1 2, value2 3
  0x10000 Node, version 1, 67 bytes at 12: name "camera"
0x10002 Point light, version 0, 106 bytes at 103: name "point", brightness 0.5
  0x10000 Node, version 1, 66 bytes at 115: name "point"
0x10003 Directional light, version 0, 104 bytes at 221: name "directional", brightness 0.75
  0x10000 Node, version 1, 72 bytes at 233: name "directional"
0x10004 Spot light, version 0, 113 bytes at 337: name "spot", brightness 1.5
  0x10000 Node, version 1, 65 bytes at 349: name "spot"
0x1000F Material list, version 0, 339 bytes at 462: texture path "textures;maps", materials 2
  0x10010 Material, version 2, 182 bytes at 495: name "brick", textures 1
    0x10011 Texture, version 0, 60 bytes at 602: name "wall", files "wall0.png" "wall1.png"
  0x10010 Material, version 2, 112 bytes at 689: name "plaster", textures 0
0x10005 Mesh, version 2, 681 bytes at 813: name "mesh", vertices 12, triangles 8, channels 1, materials "brick" "plaster"
  0x10000 Node, version 1, 65 bytes at 825: name "mesh"
  0x1000C Material names, version 1, 24 bytes at 902: names "brick" "plaster"
  0x10006 Vertices, version 1, 304 bytes at 938: vertices 12, groups 2
  0x10007 Faces, version 1, 64 bytes at 1254: triangles 8, groups 2
  0x1000E Texture channel, version 1, 164 bytes at 1330: channel 1, coordinates 12, groups 2
0x10005 Mesh, version 0, 1032 bytes at 1506: name "field", vertices 12, triangles 8, channels 1, materials "ground"
  0x10000 Node, version 1, 66 bytes at 1518: name "field"
  0x10006 Vertices, version 0, 112 bytes at 1596: vertices 9, groups 0
  0x10007 Faces, version 0, 236 bytes at 1720: triangles 8, groups 0
    0x10008 Polygon, version 0, 16 bytes at 1736: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1764: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1792: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1820: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1848: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1876: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1904: corners 3
    0x10008 Polygon, version 0, 16 bytes at 1932: corners 3
  0x1000B Smoothing groups, version 0, 36 bytes at 1968: masks 8
  0x1000C Material names, version 0, 50 bytes at 2016: names "ground"
  0x1000E Texture channel, version 0, 460 bytes at 2078: channel 1, coordinates 18, groups 0
    0x10008 Polygon, version 0, 16 bytes at 2098: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2126: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2154: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2182: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2210: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2238: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2266: corners 3
    0x10008 Polygon, version 0, 16 bytes at 2294: corners 3
0x10012 Keyframe animation, version 5, 163 bytes at 2550: target "mesh", frames per second 30, looping no, frames 11, keys 2, visibility keys 1
  0x10013 Animation header, version 0, 13 bytes at 2562: target "mesh", frames per second 30, looping no
0x10015 Environment, version 0, 8 bytes at 2725: first color "#80FF4020", second color "#FF102030"
0x10016 Helper, version 0, 94 bytes at 2745: name "helper", text "spawn point"
  0x10000 Node, version 1, 67 bytes at 2757: name "helper"
0x10017 Point light animation, version 2, 67 bytes at 2851: target "point", frames per second 24, looping yes, frames 6, color keys 0, brightness keys 2
  0x10013 Animation header, version 0, 14 bytes at 2863: target "point", frames per second 24, looping yes
0x10018 Directional light animation, version 2, 49 bytes at 2930: target "directional", frames per second 0, looping no, frames 0, color keys 0, brightness keys 0
  0x10013 Animation header, version 0, 20 bytes at 2942: target "directional", frames per second 0, looping no
0x10019 Spot light animation, version 2, 78 bytes at 2991: target "spot", frames per second 0, looping no, frames 0, color keys 1, brightness keys 0
  0x10013 Animation header, version 0, 13 bytes at 3003: target "spot", frames per second 0, looping no
0x10000 Node, version 1, 65 bytes at 3081: name "node"
0x10014 Skin, version 1, 118 bytes at 3158: objects "mesh", bones 2, vertices 1, influences 2, primitives 1
)");
}

TEST_F(AnalyzeCommand, TheTreeShowsEveryTextureOfAMaterial)
{
    TW2::MaterialListChunk list;
    TW2::TWMaterialChunk& material = list.materials.emplace_back();
    material.name = "all";
    int number = 0;
    for (TW2::MaterialTextureChunk* texture :
         {&material.accessDiffuseTexture(), &material.accessReflectionTexture(), &material.accessSpecularTexture(),
          &material.accessOpacityTexture(), &material.accessGlossTexture()})
    {
        texture->name = ("t" + std::to_string(number++)).c_str();
    }
    const CommandResult result =
        runTW2({"analyze", "--tree", write("list.tw", [&list](S_MemoryFileWriter& writer) { writer << list; })});
    EXPECT_THAT(result.output, HasSubstr("name \"all\", textures 5\n"));
    for (const char* name : {"t0", "t1", "t2", "t3", "t4"})
    {
        EXPECT_THAT(result.output, HasSubstr("\n    0x10011 Texture, ")) << result.output;
        EXPECT_THAT(result.output, HasSubstr(std::string(": name \"") + name + "\", files none\n"));
    }
}

TEST_F(AnalyzeCommand, TheTreeShowsWhatChunksHangOnAndShare)
{
    const auto writeTwin = [](S_MemoryFileWriter& writer)
    {
        TW2::MeshChunk twin;
        twin.name = "twin";
        twin.hasParent = true;
        twin.parentName = "hip";
        twin.extraString = "left";
        twin.editInstanceName() = "mesh";
        writer << twin;
    };
    const CommandResult result = runTW2({"analyze", "--tree", write("twin.tw", writeTwin)});
    EXPECT_EQ(
        result.output,
        R"(0x10005 Mesh, version 2, 104 bytes at 0: name "twin", parent "hip", extra "left", instance of "mesh", )"
        R"(vertices 0, triangles 0, channels 0, materials none
  0x10000 Node, version 1, 72 bytes at 12: name "twin", parent "hip", extra "left"
  0x1001A Instance, version 0, 8 bytes at 96: instance of "mesh"
)");
}

TEST_F(AnalyzeCommand, JsonIsValidWhateverTheNamesAre)
{
    const std::string odd = write("odd \"name\".tw",
                                  [](S_MemoryFileWriter& writer)
                                  {
                                      TW2::CameraChunk camera;
                                      camera.name = "quote \" backslash \\ newline \n bell \a";
                                      camera.value0 = std::numeric_limits<float>::infinity();
                                      writer << camera;
                                  });
    const CommandResult result = runTW2({"analyze", "--json", "--tree", odd, writeAll()});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(JsonCheck::isValid(result.output)) << result.output;
    for (const char* text : {"odd \\\"name\\\".tw", R"("quote \" backslash \\ newline \n bell \u0007")",
                             "\"value0\": null", "\"kind\": \"Polygon\"", "\"materials\": [", "\"looping\": false"})
    {
        EXPECT_THAT(result.output, HasSubstr(text));
    }
    const CommandResult flat = runTW2({"analyze", "--json", odd});
    EXPECT_TRUE(JsonCheck::isValid(flat.output));
    EXPECT_THAT(flat.output, Not(HasSubstr("content")));
}

TEST_F(AnalyzeCommand, ADamagedFileShowsWhatIsReadableAndThenTheError)
{
    const std::string damaged = write("damaged.tw",
                                      [](S_MemoryFileWriter& writer)
                                      {
                                          {
                                              const WriteChunk mesh(writer, 0x10005, 2);
                                              TW2::NodeChunk node;
                                              node.name = "broken";
                                              writer << node;
                                              const WriteChunk vertices(writer, 0x10006, 1);
                                              writer << 1000u;
                                          }
                                          TW2::HelperChunk helper;
                                          helper.name = "after";
                                          writer << helper << 1 << 2;  // half a header
                                      });
    const CommandResult report = runTW2({"analyze", damaged});
    EXPECT_EQ(report.status, 1);
    EXPECT_THAT(report.output, HasSubstr("Mesh\n: size 95, version 2\nHelper\n"));
    EXPECT_THAT(report.errors, StartsWith("tw2: File \""));
    EXPECT_THAT(report.errors, HasSubstr("top level, byte"));
    EXPECT_EQ(std::count(report.errors.begin(), report.errors.end(), '\n'), 1);

    const CommandResult tree = runTW2({"analyze", "--tree", damaged});
    EXPECT_EQ(tree.status, 1);
    EXPECT_THAT(tree.output, HasSubstr("Node, version 1, 67 bytes at 12: name \"broken\""));
    EXPECT_THAT(tree.output, HasSubstr("Vertices, version 1, 4 bytes at 91\n    damaged: File"));
    EXPECT_THAT(tree.output, HasSubstr("name \"after\""));
    EXPECT_THAT(tree.output, HasSubstr("\ndamaged: File"));
    EXPECT_THAT(tree.errors, HasSubstr("chunk 0x10006"));

    const CommandResult json = runTW2({"analyze", "--tree", "--json", damaged});
    EXPECT_EQ(json.status, 1);
    EXPECT_TRUE(JsonCheck::isValid(json.output)) << json.output;
    EXPECT_THAT(json.output, HasSubstr("\"error\": \"File"));
    // One bad file among good ones is a failure, wherever it stands.
    EXPECT_EQ(runTW2({"analyze", "--json", damaged, writeAll()}).status, 1);
    EXPECT_EQ(runTW2({"analyze", "--json", writeAll(), damaged}).status, 1);
}

TEST_F(AnalyzeCommand, DamageInsideOfChunksInsideIsToldOnceWhereItIs)
{
    S_MemoryFileWriter writer;
    support::writeEveryKind(writer);
    S_Bytes bytes = writer.getBytes();
    // The polygons stand in the faces, the faces in the mesh. One is to have more corners than there are bytes.
    const S_Bytes polygon{0x08, 0x00, 0x01, 0x00};
    const auto found = std::search(bytes.begin(), bytes.end(), polygon.begin(), polygon.end());
    ASSERT_NE(found, bytes.end());
    std::fill_n(found + 12, 3, static_cast<unsigned char>(0xFF));
    const CommandResult tree = runTW2({"analyze", "--tree", m_directory.write("inside.tw", bytes)});
    EXPECT_EQ(tree.status, 1);
    const std::size_t first = tree.output.find("damaged:");
    EXPECT_NE(first, std::string::npos) << tree.output;
    EXPECT_EQ(first, tree.output.rfind("damaged:")) << tree.output;
    EXPECT_THAT(tree.output, HasSubstr("      damaged:"));
}

// As deep as the file says would be deeper than the program's stack.
TEST_F(AnalyzeCommand, ChunksInChunksWithoutEndAreNotFollowed)
{
    const std::string deep = write("deep.tw",
                                   [](S_MemoryFileWriter& writer)
                                   {
                                       constexpr unsigned int depth = 200000;
                                       for (unsigned int i = depth; i-- > 0;)
                                       {
                                           writer << 0x10005u << 2u << 12 * i;
                                       }
                                   });
    const CommandResult result = runTW2({"analyze", "--tree", deep});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(std::ranges::count(result.output, '\n'), 4) << "no chunk has more than three above it";
}

TEST_F(AnalyzeCommand, FailuresAndUsageErrorsHaveTheirOwnStatus)
{
    const std::string missing = m_directory.file("missing.tw");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"analyze", missing}, {"analyze", "--tree", missing}, {"analyze", "--json", missing}})
    {
        const CommandResult result = runTW2(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr("missing.tw"));
    }
    EXPECT_EQ(runTW2({}).status, 2);
    EXPECT_EQ(runTW2({"analyze"}).status, 2);
    EXPECT_EQ(runTW2({"analyze", "--nonsense", missing}).status, 2);
    EXPECT_EQ(runTW2({"nonsense"}).status, 2);
    const CommandResult help = runTW2({"--help"});
    EXPECT_EQ(help.status, 0);
    // Every command once, in the order of the names.
    std::size_t before = 0;
    for (const char* command : {"\n  analyze ", "\n  info ", "\n  play "})
    {
        const std::size_t place = help.output.find(command);
        ASSERT_NE(place, std::string::npos) << help.output;
        EXPECT_GT(place, before) << command;
        before = place;
    }
}
