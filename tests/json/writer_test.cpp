#include "json/writer.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

using TW2::json::Writer;

TEST(JsonWriter, TextIsEscapedAndWhatIsNoUTF8Replaced)
{
    // The first and the last character of each length, and those around what two halves would make.
    const std::string characters =
        "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\xED\x9F\xBF\xEE\x80\x80";
    EXPECT_EQ(Writer::quote(characters), '"' + characters + '"');
    EXPECT_EQ(Writer::quote("\"\\\n\r\t\b\x1F ~\x7F"), R"("\"\\\n\r\t\u0008\u001F ~\u007F")");
    EXPECT_EQ(Writer::quote(std::string_view("\xC3\xA4", 1)), "\"\xEF\xBF\xBD\"") << "cut";
    // Each of these bytes alone: overlong, halves, too large, begun by no first byte, and a second one that is none.
    for (const std::string wrong : {"\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                    "\xF5\x80\x80\x80", "\x80", "\xE2\x82"})
    {
        std::string expected;
        for (std::size_t i = 0; i < wrong.size(); ++i)
        {
            expected += "\xEF\xBF\xBD";
        }
        EXPECT_EQ(Writer::quote(wrong + "x\xC3\xC3\xA4"), '"' + expected + "x\xEF\xBF\xBD\xC3\xA4\"");
    }
}

TEST(JsonWriter, AValueAloneIsADocumentWithItsLineEnd)
{
    std::ostringstream stream;
    Writer writer(stream);
    writer.value("text");
    writer.value(true);
    writer.value(7);
    writer.value(0.5);
    writer.null();
    EXPECT_EQ(stream.str(), "\"text\"\ntrue\n7\n0.5\nnull\n");
}

TEST(JsonWriter, ValuesStandInLinesOfTheirDepthAndNumbersReadBackAsTheyWere)
{
    std::ostringstream stream;
    Writer writer(stream);
    writer.beginObject();
    writer.member("a \"name\"", "text");
    writer.list("numbers", std::vector<double>{1.0 / 3.0, -1e300, std::numeric_limits<double>::infinity()});
    writer.member("float", 0.1F);
    writer.member("byte", static_cast<unsigned char>('A'));
    writer.list("none", std::vector<int>());
    writer.objects("each", std::vector<bool>{true, false}, [&](bool each) { writer.member("is", each); });
    writer.endObject();
    EXPECT_EQ(stream.str(), R"({
  "a \"name\"": "text",
  "numbers": [
    0.33333333333333331,
    -1.0000000000000001e+300,
    null
  ],
  "float": 0.100000001,
  "byte": 65,
  "none": [],
  "each": [
    {
      "is": true
    },
    {
      "is": false
    }
  ]
}
)");
}
