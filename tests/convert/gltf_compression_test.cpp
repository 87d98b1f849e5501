#include "convert/pictures.h"
#include "tests/support/gltf_reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef TW2_HAS_DRACO
#include <draco/compression/encode.h>
#include <draco/mesh/triangle_soup_mesh_builder.h>
#endif
#ifdef TW2_HAS_MESHOPT
#include <meshoptimizer.h>
#endif
#ifdef TW2_HAS_WEBP
#include <webp/encode.h>
#endif

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace
{
using namespace support;

#ifdef TW2_HAS_WEBP
TEST(GltfCompression, WebPPicturesAreDecodedAndHaveTheirAlpha)
{
    const auto make = [](const std::vector<unsigned char>& bytes)
    {
        GltfText text;
        const int view = text.addView(bytes.data(), bytes.size());
        showPrimitive(text, R"({"material":0,)" + addSquare(text) + "}");
        text.set("images", R"([{"bufferView":)" + number(view) + R"(,"mimeType":"image/webp"}])");
        text.set("textures", R"([{"extensions":{"EXT_texture_webp":{"source":0}}}])");
        text.set("materials", R"([{"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}])");
        text.set("extensionsRequired", R"(["EXT_texture_webp"])");
        return text.make();
    };
    for (const std::uint8_t alpha : std::array<std::uint8_t, 2>{64, 255})
    {
        const std::vector<std::uint8_t> pixels{255, 0, 0, 255, 0, 255, 0, alpha};
        std::uint8_t* encoded = nullptr;
        const std::size_t size = WebPEncodeLosslessRGBA(pixels.data(), 2, 1, 8, &encoded);
        const std::vector<unsigned char> content(encoded, encoded + size);
        WebPFree(encoded);
        const Model model = read(make(content));
        ASSERT_EQ(model.m_vecPictures.size(), 1U);
        EXPECT_EQ(model.m_vecSurfaces.size(), 1U) << "no plain one that nothing has";
        EXPECT_EQ(model.m_vecPictures[0].m_bAlpha, alpha < 255);
        EXPECT_EQ(model.m_vecPictures[0].m_uiWidth, 2U);
        const G_Image image = TW2::convert::decodePicture(model.m_vecPictures[0]);
        EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), image.getPixels()));
        const Model damaged = read(make(std::vector<unsigned char>(content.begin(), content.end() - 6)));
        EXPECT_TRUE(damaged.m_vecPictures.empty());
        EXPECT_THAT(damaged.m_vecWarnings, testing::Contains(testing::HasSubstr("is left out")));
    }
}
#endif

#ifdef TW2_HAS_MESHOPT
TEST(GltfCompression, MeshoptimizersBytesAreUnpacked)
{
    // As packers write it: vertices of four shorts, which a node scales back, and triangles, both packed.
    const std::vector<std::int16_t> vertices{-100, -100, 0, 0, 100, -100, 0, 0, 100, 100, 0, 0, -100, 100, 0, 0};
    std::vector<unsigned char> packed(meshopt_encodeVertexBufferBound(4, 8));
    packed.resize(meshopt_encodeVertexBuffer(packed.data(), packed.size(), vertices.data(), 4, 8));
    std::vector<unsigned char> packedIndices(meshopt_encodeIndexBufferBound(6, 4));
    packedIndices.resize(meshopt_encodeIndexBuffer(packedIndices.data(), packedIndices.size(),
                                                   support::squareIndices.data(), support::squareIndices.size()));
    const auto make =
        [&vertices](const std::vector<unsigned char>& packedVertices, const std::vector<unsigned char>& indices)
    {
        GltfText text;
        text.addView(packedVertices.data(), packedVertices.size());
        text.addView(indices.data(), indices.size());
        const auto extension = [](std::size_t offset, std::size_t size, const std::string& more)
        {
            return R"(,"extensions":{"EXT_meshopt_compression":{"buffer":0,"byteOffset":)" + std::to_string(offset) +
                   R"(,"byteLength":)" + std::to_string(size) + more + "}}";
        };
        const std::size_t second = (packedVertices.size() + 3) / 4 * 4;
        const std::vector<unsigned char> nothing(32);
        const int view =
            text.addView(nothing.data(), 32,
                         R"(,"byteStride":8)" +
                             extension(0, packedVertices.size(), R"(,"byteStride":8,"count":4,"mode":"ATTRIBUTES")"));
        const int indexView = text.addView(
            nothing.data(), 12, extension(second, indices.size(), R"(,"byteStride":2,"count":6,"mode":"TRIANGLES")"));
        const int positions = text.addAccessor(view, GltfText::SHORT, vertices.size() / 4, "VEC3");
        const int corners = text.addAccessor(indexView, GltfText::UNSIGNED_SHORT, 6, "SCALAR");
        showPrimitive(text,
                      R"({"attributes":{"POSITION":)" + number(positions) + R"(},"indices":)" + number(corners) + "}");
        text.set("extensionsRequired", R"(["KHR_mesh_quantization","EXT_meshopt_compression"])");
        return text.make();
    };
    const Mesh mesh = read(make(packed, packedIndices)).m_vecMeshes.at(0);
    auto corners = getCorners(mesh);
    ASSERT_EQ(corners.size(), 6U);
    std::ranges::sort(corners);
    EXPECT_EQ(corners.front(), (std::array<float, 3>{-100, -100, 0}));
    EXPECT_EQ(corners.back(), (std::array<float, 3>{100, 100, 0}));
    expectFrontsOutside(mesh);
    std::vector<unsigned char> damaged(packed.begin(), packed.begin() + 5);
    EXPECT_THAT(getRefusal(make(damaged, packedIndices)),
                testing::HasSubstr("bufferViews[2]: its packed bytes are damaged"));
    for (const auto& [from, to, said] :
         {std::tuple(R"("count":6,"mode":"TRI)", R"("count":5,"mode":"TRI)", "packed indices that make no triangles"),
          {R"("byteStride":2,"count":6)", R"("byteStride":3,"count":6)", "packed indices that make no triangles"},
          {R"("count":4,"mode":"ATT)", R"("count":99999999,"mode":"ATT)", "packed bytes are 99999999 elements"},
          {R"(8,"count":4)", R"(6,"count":4)", "packed elements of 6 bytes"},
          {R"(8,"count":4)", R"(260,"count":4)", "packed elements of 260 bytes"},
          {R"("mode":"TRIANGLES")", R"("mode":"STRIPS")", "an unknown mode \"STRIPS\""},
          {R"("mode":"ATTRIBUTES")", R"("mode":"ATTRIBUTES","filter":"SHARP")", "a filter \"SHARP\" does not take"}})
    {
        std::string changed = make(packed, packedIndices);
        changed.replace(changed.find(from), std::string_view(from).size(), to);
        EXPECT_THAT(getRefusal(changed), testing::HasSubstr(said));
    }
}
#endif

#ifdef TW2_HAS_DRACO
TEST(GltfCompression, DracosTrianglesAllComeThrough)
{
    draco::TriangleSoupMeshBuilder builder;
    builder.Start(2);
    const int places = builder.AddAttribute(draco::GeometryAttribute::POSITION, 3, draco::DT_FLOAT32);
    const std::vector<std::array<float, 3>> square{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    for (std::size_t face = 0; face < 2; ++face)
    {
        const auto corner = [&square, face](std::size_t i)
        { return square[support::squareIndices[3 * face + i]].data(); };
        builder.SetAttributeValuesForFace(places, draco::FaceIndex(static_cast<std::uint32_t>(face)), corner(0),
                                          corner(1), corner(2));
    }
    const std::unique_ptr<draco::Mesh> source = builder.Finalize();
    draco::Encoder encoder;
    draco::EncoderBuffer packed;
    ASSERT_TRUE(encoder.EncodeMeshToBuffer(*source, &packed).ok());
    const auto make = [&packed](std::size_t size, const std::string& attributes = R"("POSITION":0)")
    {
        GltfText text;
        const int view = text.addView(packed.data(), size);
        const int positions = text.addAccessor(-1, GltfText::FLOAT, 4, "VEC3");
        const int flat = text.addAccessor(-1, GltfText::FLOAT, 4, "VEC2");
        const int indices = text.addAccessor(-1, GltfText::UNSIGNED_SHORT, 6, "SCALAR");
        showPrimitive(text, R"({"attributes":{"POSITION":)" + number(positions) + R"(,"TEXCOORD_0":)" + number(flat) +
                                R"(},"indices":)" + number(indices) +
                                R"(,"extensions":{"KHR_draco_mesh_compression":{"bufferView":)" + number(view) +
                                R"(,"attributes":{)" + attributes + "}}}}");
        text.set("extensionsRequired", R"(["KHR_draco_mesh_compression"])");
        return text.make();
    };
    const Mesh mesh = read(make(packed.size())).m_vecMeshes.at(0);
    EXPECT_EQ(mesh.m_vecIndices.size(), 6U);
    auto corners = getCorners(mesh);
    std::ranges::sort(corners);
    corners.erase(std::unique(corners.begin(), corners.end()), corners.end());
    ASSERT_EQ(corners.size(), 4U);
    EXPECT_EQ(corners.front(), (std::array<float, 3>{-1, -1, 0}));
    expectFrontsOutside(mesh);
    EXPECT_THAT(getRefusal(make(packed.size() / 2)),
                testing::HasSubstr("primitives[0].extensions.KHR_draco_mesh_compression"));
    EXPECT_THAT(getRefusal(make(packed.size(), R"("POSITION":7)")),
                testing::HasSubstr("no POSITION of 3 numbers in attribute 7"));
    EXPECT_THAT(getRefusal(make(packed.size(), R"("POSITION":0,"TEXCOORD_0":0)")),
                testing::HasSubstr("no TEXCOORD_0 of 2 numbers in attribute 0"));
}
#endif
}  // namespace
