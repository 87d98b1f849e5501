#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/every_kind.h>
#include <tests/support/json_check.h>
#include <tests/support/run_command.h>

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
    for (const char* line : {"0x10001 Camera, version 0, 91 bytes at 0: name \"camera\", value0 1, value1 2, value2 3\n"
                             "  0x10000 Node, version 1, 67 bytes at 12: name \"camera\"\n0x10002 Point light",
                             "Mesh, version 2",
                             "name \"mesh\", vertices 12, triangles 8, channels 1, materials \"brick\" \"plaster\"",
                             "  0x10006 Vertices, version 1",
                             "  0x10007 Faces, version 0",
                             ": triangles 8, groups 0\n    0x10008 Polygon",
                             "corners 3",
                             "  0x1000C Material names",
                             "  0x1000E Texture channel",
                             "Material list, version 0",
                             "texture path \"textures;maps\", materials 2",
                             "  0x10010 Material, version",
                             "name \"brick\", textures 1",
                             "    0x10011 Texture, version 0",
                             "files \"wall0.png\" \"wall1.png\"",
                             "  0x10013 Animation header, version 0",
                             "target \"mesh\", frames per second 30, looping no",
                             "frames 11, keys 2, visibility keys 1",
                             "first color \"#FF000000\"",
                             "name \"helper\", text \"spawn point\"",
                             "0x10014 Skin",
                             "objects \"mesh\", bones 2, vertices 1, influences 2"})
    {
        EXPECT_THAT(result.output, HasSubstr(line));
    }
    EXPECT_THAT(result.output, Not(HasSubstr("damaged")));
}

TEST_F(AnalyzeCommand, JsonIsValidWhateverTheNamesAre)
{
    const std::string odd = write("odd \"name\".tw",
                                  [](S_MemoryFileWriter& writer)
                                  {
                                      TW2::CameraChunk camera;
                                      camera.name = "quote \" backslash \\ newline \n bell \a";
                                      camera.extraString =
                                          "latin \xE4, cut \xC3, utf-8 \xC3\xA4, high \xF4\x90\x80\x80";
                                      camera.value0 = std::numeric_limits<float>::infinity();
                                      writer << camera;
                                  });
    const CommandResult result = runTW2({"analyze", "--json", "--tree", odd, writeAll()});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(JsonCheck::isValid(result.output)) << result.output;
    for (const char* text : {"odd \\\"name\\\".tw", R"("quote \" backslash \\ newline \n bell \u0007")",
                             "latin \xEF\xBF\xBD, cut \xEF\xBF\xBD, utf-8 \xC3\xA4, high", "\"value0\": null",
                             "\"kind\": \"Polygon\"", "\"materials\": [", "\"looping\": false"})
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
    EXPECT_THAT(result.output, HasSubstr("    0x10005 Mesh"));
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
    EXPECT_THAT(help.output, HasSubstr("analyze"));
}
