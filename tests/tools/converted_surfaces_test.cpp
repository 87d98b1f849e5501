// What a file says about a surface, seen on the picture: converted, loaded and drawn as anybody would.
#ifdef TW2_HAS_CONVERT
#ifdef TW2_HAS_RENDER
#include "tests/support/gltf_text.h"
#include "tests/support/picture_files.h"
#include "tests/support/run_command.h"
#include "tests/support/temporary_directory.h"

#include <platform/image/image.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace
{
using support::GltfText;
using support::number;
using support::runTW2;

/// Four pixels: red and green above, blue and white below.
G_Image makeQuarters()
{
    G_Image image(64, 64);
    const std::array<support::Pixel, 4> colors{support::Pixel{255, 0, 0, 255}, support::Pixel{0, 255, 0, 255},
                                               support::Pixel{0, 0, 255, 255}, support::Pixel{255, 255, 255, 255}};
    for (unsigned int y = 0; y < 64; ++y)
    {
        for (unsigned int x = 0; x < 64; ++x)
        {
            std::copy_n(colors[(y < 32 ? 0U : 2U) + (x < 32 ? 0U : 1U)].data(), 4, image.accessPixel(x, y));
        }
    }
    return image;
}

std::string toUri(const std::vector<unsigned char>& content)
{
    return "\"data:image/png;base64," + GltfText::encode(content) + "\"";
}

std::string toUri(const G_Image& image)
{
    return toUri(support::encodePicture(image, support::PictureFormat::PNG));
}

struct Square
{
    std::string m_strMaterial;        ///< members of the material
    std::string m_strImage;           ///< a URI
    std::string m_strSampler = "{}";  ///< used where the texture says so
    std::vector<float> m_vecCoordinates = support::squareCoordinates;
    std::vector<float> m_vecSecondCoordinates = support::squareCoordinates;
    std::vector<float> m_vecColors = {};  ///< red, green, blue, alpha per vertex, or none
    bool m_bTurnedAway = false;
};

constexpr unsigned int side = 64;  // of a square's picture, in pixels

/// Draws squares beside one another in front of a black wall, each 64 x 64 pixels from edge to edge.
G_Image draw(const std::vector<Square>& squares, std::string* errors = nullptr)
{
    GltfText text;
    const int positions = text.addFloats(support::squarePositions, "VEC3");
    const int indices = text.addIndices(support::squareIndices);
    std::string meshes;
    std::string nodes;
    std::string materials;
    std::string images;
    std::string samplers;
    std::string textures;
    for (std::size_t i = 0; i < squares.size(); ++i)
    {
        const Square& square = squares[i];
        const std::string own = std::to_string(i);
        std::string attributes = R"("POSITION":)" + number(positions) + R"(,"TEXCOORD_0":)" +
                                 number(text.addFloats(square.m_vecCoordinates, "VEC2")) + R"(,"TEXCOORD_1":)" +
                                 number(text.addFloats(square.m_vecSecondCoordinates, "VEC2"));
        if (!square.m_vecColors.empty())
        {
            attributes += R"(,"COLOR_0":)" + number(text.addFloats(square.m_vecColors, "VEC4"));
        }
        meshes += R"({"primitives":[{"material":)" + own + R"(,"attributes":{)" + attributes + R"(},"indices":)" +
                  number(indices) + "}]},";
        nodes += R"({"mesh":)" + own + R"(,"translation":[)" + std::to_string(2 * i) + ",0,0]" +
                 (square.m_bTurnedAway ? R"(,"rotation":[0,1,0,0])" : "") + "},";
        std::string material = square.m_strMaterial;
        for (std::size_t at = 0; (at = material.find(R"("index":0)", at)) != std::string::npos; ++at)
        {
            material.replace(at, 9, R"("index":)" + own);
        }
        materials += R"({"name":"shown",)" + material + "},";
        images += R"({"uri":)" + (square.m_strImage.empty() ? R"("none.png")" : square.m_strImage) + "},";
        samplers += square.m_strSampler + ",";
        textures += R"({"source":)" + own + R"(,"sampler":)" + own + "},";
    }
    const std::string wall = std::to_string(squares.size());
    text.set("meshes", "[" + meshes + R"({"primitives":[{"material":)" + wall + R"(,"attributes":{"POSITION":)" +
                           number(positions) + R"(},"indices":)" + number(indices) + "}]}]");
    text.set("nodes", "[" + nodes + R"({"mesh":)" + wall + R"(,"translation":[0,0,-1],"scale":[99,99,1]}])");
    text.set("materials", "[" + materials + R"({"extensions":{"KHR_materials_unlit":{}},)" +
                              R"("pbrMetallicRoughness":{"baseColorFactor":[0,0,0,1]}}])");
    text.set("extensionsUsed", R"(["KHR_materials_unlit","KHR_texture_transform","KHR_materials_emissive_strength"])");
    const auto close = [](std::string list) { return "[" + list.substr(0, list.size() - 1) + "]"; };
    text.set("images", close(images));
    text.set("samplers", close(samplers));
    text.set("textures", close(textures));
    const support::TemporaryDirectory directory;
    const std::string model = directory.write("square.gltf", text.make());
    const support::CommandResult converted = runTW2({"convert", model, "-o", directory.file("out")});
    EXPECT_EQ(converted.status, 0) << converted.errors;
    if (errors)
    {
        *errors = converted.errors;
    }
    const std::string middle = std::to_string(squares.size() - 1);
    const support::CommandResult drawn =
        runTW2({"render", directory.file("out/square.script"), "--png", directory.file("picture.png"), "--size",
                std::to_string(side * squares.size()) + "x" + std::to_string(side), "--no-grid", "--no-lights",
                "--angle", "2", "--eye", middle, "0", "-57.29", "--target", middle, "0", "0"});
    EXPECT_EQ(drawn.status, 0) << drawn.errors;
    return G_Image(directory.file("picture.png").c_str());
}

/// The pixel at a place of a square's picture, from 0 to 1; x from 1 on is in those beside it.
std::array<int, 3> getColor(const G_Image& image, double x, double y)
{
    const unsigned char* pixel =
        image.getPixel(static_cast<unsigned int>(x * side), static_cast<unsigned int>(y * side));
    return {pixel[0], pixel[1], pixel[2]};
}

void expectColor(const G_Image& image, double x, double y, const std::array<int, 3>& expected, const std::string& what)
{
    const std::array<int, 3> color = getColor(image, x, y);
    for (std::size_t c = 0; c < 3; ++c)
    {
        EXPECT_NEAR(color[c], expected[c], 3) << what << ", channel " << c << " at " << x << ", " << y;
    }
}

constexpr const char* unlit = R"("extensions":{"KHR_materials_unlit":{}},"pbrMetallicRoughness":)";
constexpr std::array<int, 3> red{255, 0, 0};
constexpr std::array<int, 3> green{0, 255, 0};
constexpr std::array<int, 3> blue{0, 0, 255};
constexpr std::array<int, 3> white{255, 255, 255};

TEST(ConvertedSurfaces, ShowFactorsAsLightWithAndWithoutTexture)
{
    const std::string factor = R"("baseColorFactor":[0.5,1,0,1])";
    const G_Image image =
        draw({{R"("extensions":{"KHR_materials_unlit":{},"KHR_materials_pbrSpecularGlossiness":)"
               R"({"diffuseFactor":[0.5,1,0,1]}})",
               ""},
              {std::string(unlit) + "{" + factor + R"(,"baseColorTexture":{"index":0}})", toUri(makeQuarters())}});
    expectColor(image, 0.5, 0.5, {188, 255, 0}, "plain, as it used to be said");
    expectColor(image, 1.25, 0.25, {188, 0, 0}, "red quarter");
    expectColor(image, 1.75, 0.25, green, "green quarter");
    expectColor(image, 1.25, 0.75, {0, 0, 0}, "blue quarter");
    expectColor(image, 1.75, 0.75, {188, 255, 0}, "white quarter");
}

TEST(ConvertedSurfaces, AreOpaqueCutOutOrBlendedAsTheFileSays)
{
    G_Image fading(4, 1);
    for (unsigned int x = 0; x < 4; ++x)
    {
        const support::Pixel pixel{255, 255, 255, static_cast<unsigned char>(51 * (x + 1))};  // 0.2, 0.4, 0.6, 0.8
        std::copy_n(pixel.data(), 4, fading.accessPixel(x, 0));
    }
    struct Case
    {
        std::string m_strAlpha;
        double m_dFactor;
        std::array<int, 4> m_shown;
    };
    const std::vector<Case> cases{{R"("alphaMode":"OPAQUE")", 0.5, {255, 255, 255, 255}},
                                  {R"("alphaMode":"MASK","alphaCutoff":0.7)", 1.0, {0, 0, 0, 255}},
                                  {R"("alphaMode":"MASK","alphaCutoff":0.3)", 1.0, {0, 255, 255, 255}},
                                  {R"("alphaMode":"MASK","alphaCutoff":0.28)", 0.5, {0, 0, 255, 255}},
                                  {R"("alphaMode":"MASK")", 1.0, {0, 0, 255, 255}},
                                  {R"("alphaMode":"BLEND")", 1.0, {51, 102, 153, 204}},
                                  {R"("alphaMode":"BLEND")", 0.5, {26, 51, 77, 102}}};
    std::vector<Square> squares;
    for (const Case& one : cases)
    {
        squares.push_back({std::string(unlit) + R"({"baseColorFactor":[1,1,1,)" + std::to_string(one.m_dFactor) +
                               R"(],"baseColorTexture":{"index":0}},)" + one.m_strAlpha,
                           toUri(fading), R"({"magFilter":9728})"});
    }
    squares.push_back({std::string(unlit) + R"({"baseColorFactor":[1,1,1,0.25]},"alphaMode":"BLEND")", ""});
    const G_Image image = draw(squares);
    for (std::size_t i = 0; i < cases.size(); ++i)
    {
        for (std::size_t column = 0; column < 4; ++column)
        {
            const int shown = cases[i].m_shown[column];
            const double x = static_cast<double>(i) + 0.125 + 0.25 * static_cast<double>(column);
            expectColor(image, x, 0.5, {shown, shown, shown}, cases[i].m_strAlpha);
        }
    }
    expectColor(image, static_cast<double>(cases.size()) + 0.5, 0.5, {64, 64, 64}, "without texture");
}

TEST(ConvertedSurfaces, GoOnBeyondTheEdgesOfTheirPicture)
{
    // The picture lies in the middle; three times it fits in each direction.
    const std::vector<float> wide{-1, 2, 2, 2, 2, -1, -1, -1};
    std::vector<Square> squares;
    for (const int wrap : {10497, 33648, 33071})
    {
        squares.push_back({std::string(unlit) + R"({"baseColorTexture":{"index":0}})", toUri(makeQuarters()),
                           R"({"wrapS":)" + number(wrap) + R"(,"wrapT":)" + number(wrap) + "}", wide});
    }
    squares.push_back({std::string(unlit) + R"({"baseColorTexture":{"index":0}})", toUri(makeQuarters()),
                       R"({"wrapS":33071,"wrapT":33648})", wide});
    const G_Image image = draw(squares);
    struct Place
    {
        int m_iSquare;
        double m_dX;  // in pictures
        double m_dY;
        std::array<int, 3> m_color;
    };
    const std::vector<Place> places{
        {0, 0.25, 0.25, red},  {0, 0.75, 0.25, green},                                                // repeat
        {1, 0.75, 1.25, red},  {1, 0.25, 1.25, green}, {1, 1.25, 2.75, red},                          // mirror
        {2, 0.9, 1.25, red},   {2, 0.2, 1.25, red},    {2, 2.8, 0.2, green},  {2, 2.8, 1.75, white},  // clamp
        {2, 1.25, 2.9, blue},  {2, 1.75, 1.25, green}, {2, 1.25, 1.75, blue}, {3, 0.2, 0.75, red},
        {3, 2.8, 0.25, white}, {3, 0.2, 2.75, red}};  // each its own
    for (const Place& place : places)
    {
        expectColor(image, place.m_iSquare + place.m_dX / 3.0, place.m_dY / 3.0, place.m_color,
                    "square " + number(place.m_iSquare));
    }
}

TEST(ConvertedSurfaces, TakeTheCoordinatesThatAreMeant)
{
    const auto transformed = [](const std::string& transform)
    {
        return Square{std::string(unlit) + R"({"baseColorTexture":{"index":0,"extensions":{"KHR_texture_transform":)" +
                          transform + "}}}",
                      toUri(makeQuarters())};
    };
    Square second{std::string(unlit) + R"({"baseColorTexture":{"index":0,"texCoord":1}})", toUri(makeQuarters())};
    second.m_vecSecondCoordinates = {0.5F, 1, 1, 1, 1, 0.5F, 0.5F, 0.5F};
    Square moved = transformed(R"({"texCoord":1})");
    moved.m_vecSecondCoordinates = second.m_vecSecondCoordinates;
    Square older{R"("emissiveFactor":[0,0,0],"extensions":{"KHR_materials_unlit":{},)"
                 R"("KHR_materials_pbrSpecularGlossiness":{"diffuseFactor":[1,0,1,1],)"
                 R"("diffuseTexture":{"index":0,"texCoord":1}}})",
                 toUri(makeQuarters())};
    older.m_vecSecondCoordinates = second.m_vecSecondCoordinates;
    const G_Image image = draw({second, transformed(R"({"scale":[0.5,0.5],"offset":[0.5,0.25]})"),
                                transformed(R"({"rotation":1.5707963})"), moved, older});
    expectColor(image, 3.25, 0.25, white, "the set that the transform names");
    expectColor(image, 4.25, 0.25, {255, 0, 255}, "an older way to say it");
    expectColor(image, 0.25, 0.25, white, "second set");
    expectColor(image, 1.25, 0.25, green, "the right half of the middle");
    expectColor(image, 1.25, 0.75, white, "the right half of the middle");
    // A quarter turn takes u to -v: the picture's left column lies along the lower edge.
    expectColor(image, 2.25, 0.25, blue, "turned");
    expectColor(image, 2.75, 0.25, red, "turned");
    expectColor(image, 2.75, 0.75, green, "turned");
}

TEST(ConvertedSurfaces, ShowTheColorsOfVertices)
{
    // From black on the left to white on the right: half the light in the middle.
    const std::vector<float> run{0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1};
    const std::string textured = std::string(unlit) + R"({"baseColorTexture":{"index":0}})";
    const std::string plain = std::string(unlit) + R"({"baseColorFactor":[1,1,0,1]})";
    std::vector<Square> squares{{plain, ""},
                                {textured, toUri(makeQuarters())},
                                {textured, toUri(makeQuarters())},
                                {plain + R"(,"alphaMode":"BLEND")", ""}};
    squares[0].m_vecColors = run;
    squares[1].m_vecColors = run;
    squares[2].m_vecColors = {1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1};
    squares[3].m_vecColors = {1, 1, 1, 0.5F, 1, 1, 1, 0.5F, 1, 1, 1, 0.5F, 1, 1, 1, 0.5F};
    const G_Image image = draw(squares);
    const std::array<int, 3> middle = getColor(image, 0.5, 0.3);
    EXPECT_NEAR(middle[0], 188, 8);
    EXPECT_EQ(middle[2], 0);
    EXPECT_LT(getColor(image, 0.03, 0.5)[0], 60);
    EXPECT_GT(getColor(image, 0.97, 0.5)[0], 245);
    EXPECT_NEAR(getColor(image, 1.75, 0.25)[1], 225, 8) << "0.75 of the light";
    expectColor(image, 1.98, 0.75, {252, 252, 252}, "textured");
    expectColor(image, 2.75, 0.75, red, "one colour at all vertices");
    expectColor(image, 3.5, 0.5, {128, 128, 0}, "their alpha");
}

TEST(ConvertedSurfaces, ShineByThemselves)
{
    const std::string black = R"("pbrMetallicRoughness":{"baseColorFactor":[0,0,0,1]},)";
    Square glow{black + R"("emissiveFactor":[0.1,0.1,0.1],"extensions":{"KHR_materials_emissive_strength":)" +
                    R"({"emissiveStrength":5}},"emissiveTexture":{"index":0,"texCoord":1})",
                toUri(makeQuarters())};
    glow.m_vecCoordinates.assign(8, 0.25F);
    const G_Image image = draw({{black + R"("emissiveFactor":[0.5,0,1])", ""}, glow});
    expectColor(image, 0.5, 0.5, {188, 0, 255}, "plain");
    expectColor(image, 1.25, 0.25, {188, 0, 0}, "texture");
    expectColor(image, 1.75, 0.75, {188, 188, 188}, "texture");
}

TEST(ConvertedSurfaces, HaveOneSideUnlessTheFileSaysTwo)
{
    Square away{std::string(unlit) + R"({"baseColorFactor":[1,0,0,1]})", ""};
    away.m_bTurnedAway = true;
    Square both = away;
    both.m_strMaterial += R"(,"doubleSided":true)";
    const G_Image image = draw({away, both});
    expectColor(image, 0.5, 0.5, {0, 0, 0}, "one side");
    expectColor(image, 1.5, 0.5, red, "two sides");
}

TEST(ConvertedSurfaces, NameWhatTheyAreSeenWithout)
{
    std::string errors;
    static_cast<void>(draw({{R"("pbrMetallicRoughness":{"metallicFactor":1},"normalTexture":{"index":0},)"
                             R"("occlusionTexture":{"index":0})",
                             toUri(makeQuarters())},
                            {R"("pbrMetallicRoughness":{"baseColorTexture":{"index":0}})", R"("nowhere.png")"}},
                           &errors));
    for (const char* what : {"the normal map", "the occlusion map", "metalness and roughness"})
    {
        EXPECT_THAT(errors, testing::HasSubstr(std::string("material \"shown\": left out: ") + what));
    }
    EXPECT_THAT(errors, testing::HasSubstr("material \"shown\": texture \"nowhere.png\" is left out: was not found"));
}

}  // namespace
#endif
#endif
