#include "tests/support/gltf_reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using namespace support;

TEST(GltfFiles, BinaryAndTextAndFilesBesideThemAreTheSame)
{
    GltfText text;
    showPrimitive(text, "{" + addSquare(text) + "}");
    const auto corners = getCorners(read(text).m_vecMeshes.at(0));
    EXPECT_EQ(getCorners(read(text.makeBinary(), "model.glb").m_vecMeshes.at(0)), corners);
    EXPECT_TRUE(TW2::convert::isGltf("any.GLB"));

    const support::TemporaryDirectory directory;
    std::string content = text.make();
    const std::size_t from = content.find("data:");
    content.replace(from, content.find('"', from) - from, "my%20numbers.bin");
    const std::string file = directory.write("model.gltf", content);
    EXPECT_THAT([&file] { static_cast<void>(TW2::convert::importGltf(file, {})); },
                testing::Throws<S_Exception>(
                    testing::Property(&S_Exception::getErrorMessage,
                                      testing::AllOf(testing::HasSubstr("model.gltf: buffers[0]: there is no file"),
                                                     testing::HasSubstr("my numbers.bin")))));
    directory.write("my numbers.bin", std::string(text.getBytes().begin(), text.getBytes().end()));
    EXPECT_EQ(getCorners(TW2::convert::importGltf(file, {}).m_vecMeshes.at(0)), corners);
}

TEST(GltfFiles, SayWhereTheyAreDamaged)
{
    GltfText good;
    showPrimitive(good, "{" + addSquare(good) + "}");
    const int matrix = good.add(std::vector<std::uint8_t>(16, 1), GltfText::UNSIGNED_BYTE, "MAT4");
    good.set("skins", R"([{"joints":[0],"inverseBindMatrices":)" + number(matrix) + "}]");
    const std::string binary = good.makeBinary();

    struct Case
    {
        std::string m_strFrom;
        std::string m_strTo;
        const char* m_szSaid;
    };
    const std::vector<Case> cases{
        {R"("byteLength":48)", R"("byteLength":4800)", "bufferViews[0]"},
        {R"("byteOffset":0)", R"("byteOffset":999999)", "bufferViews[0]: ends 999999 + 48 bytes into buffers[0]"},
        {R"("count":4)", R"("count":5)", "accessors[0]: 5 elements of 12 bytes"},
        {R"("type":"VEC3")", R"("type":"VEC2")", "accessors[0]: has elements of 2 numbers"},
        {R"("POSITION":0)", R"("POSITION":17)", "names accessors[17], the file has 3"},
        {R"("mesh":0)", R"("mesh":3)", "nodes[0]: names meshes[3], the file has 1"},
        {R"("mesh":0)", R"("mesh":0,"children":[0])", "nodes[0]: hangs below itself"},
        {R"("nodes":[0])", R"("nodes":[9])", "scenes[0]: names nodes[9]"},
        {R"("mesh":0}])", R"("mesh":0,"children":[2]},{"children":[2]},{}])",
         "nodes[2]: hangs below nodes[0] and nodes[1]"},
        {R"("nodes":)", R"("nodes":[,)", "is no glTF file"},
        {R"("version":"2.0"})", R"("version":"2.0"},"extensionsRequired":["VENDOR_fold"])",
         "extensionsRequired: needs the extension VENDOR_fold"},
        {R"("version":"2.0"})", R"("version":"1.1"})", "asset.version: is version 1.1 of glTF, version 2.0 is read"},
        {R"("mesh":0})", R"("mesh":0,"skin":0})", "accessors[2]: has matrices of whole numbers"},
    };
    for (const Case& one : cases)
    {
        std::string content = good.make();
        const std::size_t at = content.find(one.m_strFrom);
        ASSERT_NE(at, std::string::npos) << one.m_strFrom;
        content.replace(at, one.m_strFrom.size(), one.m_strTo);
        EXPECT_THAT(getRefusal(content), testing::HasSubstr(one.m_szSaid)) << one.m_strFrom << " -> " << one.m_strTo;
    }
    GltfText beyond = good;
    const int wild = beyond.addIndices({0, 1, 4});
    std::string content = beyond.make();
    content.replace(content.find(R"("indices":1)"), 11, R"("indices":)" + number(wild));
    EXPECT_THAT(getRefusal(content), testing::HasSubstr("primitives[0].indices: index 2 names vertex 4 of 4"));
    EXPECT_THAT(getRefusal(R"({"nodes":{"node_1":{"children":[]}},"scenes":{"main":{"nodes":["node_1"]}}})"),
                testing::HasSubstr("asset.version: is version 1.0 of glTF"))
        << "files that old need not say it";
    EXPECT_THAT(getRefusal(std::string(100000, '[')), testing::HasSubstr("nested too deeply"));
    for (std::size_t size = 0; size < binary.size(); size += 7)
    {
        EXPECT_NE(getRefusal(binary.substr(0, size), "cut.glb"), "") << size << " bytes of " << binary.size();
    }
}

TEST(GltfFiles, NameTheExtensionsThatTheyAreReadWithout)
{
    GltfText text;
    showPrimitive(text, "{" + addSquare(text) + "}");
    text.set("extensionsUsed", R"(["KHR_materials_unlit","VENDOR_sparkle","KHR_techniques_webgl"])");
    // How surfaces look is no reason to refuse a model, even where it is said to be required.
    text.set("extensionsRequired", R"(["KHR_techniques_webgl","VENDOR_materials_fur"])");
    const Model model = read(text);
    EXPECT_THAT(model.m_vecWarnings,
                testing::ElementsAre(testing::HasSubstr("KHR_techniques_webgl"),
                                     testing::HasSubstr("VENDOR_materials_fur"), testing::HasSubstr("VENDOR_sparkle")));
    EXPECT_EQ(model.m_vecMeshes.size(), 1U);
}

}  // namespace
