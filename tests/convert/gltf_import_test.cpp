#include "convert/gltf_import.h"

#include "convert/clip_sampler.h"
#include "tests/convert/model_builder.h"
#include "tests/support/gltf_reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace
{
using namespace support;
using TW2::convert::Vector3d;

TEST(GltfGeometry, WithoutNormalsIsFlatAndLooksTheWayItDoesWithThem)
{
    GltfText missing;
    showPrimitive(missing, "{" + addSquare(missing) + "}");
    GltfText given;
    const int normals = given.addFloats({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}, "VEC3");
    showPrimitive(given, "{" + addSquare(given, R"(,"NORMAL":)" + number(normals)) + "}");
    const Model without = read(missing);
    const Model with = read(given);
    ASSERT_EQ(without.m_vecMeshes.size(), 1U);
    expectFrontsOutside(without.m_vecMeshes[0]);
    expectFrontsOutside(with.m_vecMeshes[0]);
    EXPECT_EQ(getCorners(without.m_vecMeshes[0]), getCorners(with.m_vecMeshes[0]));
    EXPECT_EQ(without.m_vecMeshes[0].m_vecPositions.size(), 4U) << "triangles of one plane share their vertices";
}

TEST(GltfGeometry, EdgesBetweenPlanesAreSharpWithoutNormals)
{
    GltfText text;
    const int positions = text.addFloats({0, 0, 0, 0, 1, 0, -1, 0, 1, 1, 0, 1}, "VEC3");
    showPrimitive(text, R"({"attributes":{"POSITION":)" + number(positions) + R"(},"indices":)" +
                            number(text.addIndices({0, 1, 2, 1, 0, 3})) + "}");
    const Model model = read(text);
    expectFrontsOutside(model.m_vecMeshes[0]);
    EXPECT_EQ(model.m_vecMeshes[0].m_vecPositions.size(), 6U);
}

TEST(GltfGeometry, StripsAndFansAreTheSameTrianglesAsLists)
{
    struct Case
    {
        int m_iMode;
        std::vector<std::uint16_t> m_vecIndices;
        std::vector<std::uint16_t> m_vecList;
    };
    const std::vector<Case> cases{{4, {0, 1, 2, 3, 4}, {0, 1, 2}},
                                  {5, {0, 1, 2, 3, 4}, {0, 1, 2, 2, 1, 3, 2, 3, 4}},
                                  {5, {0, 1, 2, 2, 3, 3, 4, 1}, {0, 1, 2, 3, 1, 4}},
                                  {6, {0, 1, 2, 3, 4}, {0, 1, 2, 0, 2, 3, 0, 3, 4}}};
    const std::vector<float> places{0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 2, 0, 0, 3, 1};
    const auto readAs = [&places](int mode, const std::vector<std::uint16_t>& indices)
    {
        GltfText text;
        const int positions = text.addFloats(places, "VEC3");
        showPrimitive(text, R"({"mode":)" + number(mode) + R"(,"attributes":{"POSITION":)" + number(positions) +
                                R"(},"indices":)" + number(text.addIndices(indices)) + "}");
        auto corners = getCorners(read(text).m_vecMeshes.at(0));
        // Each triangle begins at the smallest of its corners: where it begins means nothing.
        for (auto first = corners.begin(); first != corners.end(); first += 3)
        {
            std::rotate(first, std::min_element(first, first + 3), first + 3);
        }
        return corners;
    };
    for (const Case& one : cases)
    {
        EXPECT_EQ(readAs(one.m_iMode, one.m_vecIndices), readAs(4, one.m_vecList)) << "mode " << one.m_iMode;
    }
}

TEST(GltfGeometry, NumbersAreReadAsTheFileMeansThem)
{
    GltfText text;
    const std::vector<float> zeros(9, 0.0F);
    const std::vector<std::uint8_t> places{1, 0, 2, 0};
    const int indexView = text.addView(places.data(), 2);
    const std::vector<float> values{4, 5, 6, 7, 8, 9};
    const int valueView = text.addView(values.data(), values.size() * sizeof(float));
    // Elements 1 and 0 (bytes 1, 0) are replaced; there is nothing else.
    const int positions =
        text.addAccessor(-1, GltfText::FLOAT, 3, "VEC3",
                         R"(,"sparse":{"count":2,"indices":{"bufferView":)" + number(indexView) +
                             R"(,"componentType":5121},"values":{"bufferView":)" + number(valueView) + "}}");
    const int coordinates = text.add(std::vector<std::uint16_t>{0, 65535, 32768, 0, 65535, 65535},
                                     GltfText::UNSIGNED_SHORT, "VEC2", R"(,"normalized":true)");
    // Two signed bytes of each four are coordinates, the rest belongs to nobody.
    const std::vector<std::int8_t> strided{9, 9, 9, 9, 127, -128, 9, 9, -127, 0, 9, 9, 64, 1, 9, 9};
    const int stridedView = text.addView(strided.data(), strided.size(), R"(,"byteStride":4)");
    const int second = text.addAccessor(stridedView, GltfText::BYTE, 3, "VEC2", R"(,"byteOffset":4,"normalized":true)");
    showPrimitive(text, R"({"attributes":{"POSITION":)" + number(positions) + R"(,"TEXCOORD_0":)" +
                            number(coordinates) + R"(,"TEXCOORD_1":)" + number(second) + "}}");
    const Mesh mesh = read(text).m_vecMeshes.at(0);
    ASSERT_EQ(mesh.m_vecIndices.size(), 3U);
    const auto corner = [&mesh](std::size_t original)
    {
        constexpr std::array<std::size_t, 3> mirrored{0, 2, 1};
        return mesh.m_vecIndices[mirrored[original]];
    };
    EXPECT_EQ(mesh.m_vecPositions[corner(0)], Vector3(7, 8, -9));
    EXPECT_EQ(mesh.m_vecPositions[corner(1)], Vector3(4, 5, -6));
    EXPECT_EQ(mesh.m_vecPositions[corner(2)], Vector3(0, 0, 0));
    ASSERT_EQ(mesh.m_vecCoordinates.size(), 2U);
    EXPECT_EQ(mesh.m_vecCoordinates[0][corner(0)], Vector3(0, 1, 0));
    EXPECT_NEAR(mesh.m_vecCoordinates[0][corner(1)].x, 32768.0F / 65535.0F, 1e-6F);
    EXPECT_EQ(mesh.m_vecCoordinates[1][corner(0)], Vector3(1, -1, 0)) << "-128 is no less than -1";
    EXPECT_EQ(mesh.m_vecCoordinates[1][corner(1)], Vector3(-1, 0, 0));
    EXPECT_NEAR(mesh.m_vecCoordinates[1][corner(2)].x, 64.0F / 127.0F, 1e-6F);
}

TEST(GltfGeometry, MorphTargetsStandAtTheirWeightUnlessTheyMove)
{
    const auto readWith = [](const std::string& nodeMembers, bool moving)
    {
        GltfText text;
        const int positions = text.addFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
        const int normals = text.addFloats({0, 0, 1, 0, 0, 1, 0, 0, 1}, "VEC3");
        const int changes = text.addFloats({0, 0, 2, 0, 0, 2, 0, 0, 2}, "VEC3");
        text.set("meshes", R"([{"weights":[0.5],"primitives":[{"attributes":{"POSITION":)" + number(positions) +
                               R"(,"NORMAL":)" + number(normals) + R"(},"targets":[{"POSITION":)" + number(changes) +
                               R"(,"NORMAL":)" + number(changes) + "}]}]}]");
        text.set("nodes", R"([{"mesh":0)" + nodeMembers + "}]");
        if (moving)
        {
            const int times = text.addFloats({0, 1}, "SCALAR");
            const int weights = text.addFloats({0, 1}, "SCALAR");
            text.set("animations", R"([{"samplers":[{"input":)" + number(times) + R"(,"output":)" + number(weights) +
                                       R"(}],"channels":[{"sampler":0,"target":{"node":0,"path":"weights"}}]}])");
        }
        const Model model = read(text);
        EXPECT_THAT(model.m_vecWarnings, testing::Contains(testing::HasSubstr("the motion of morph targets")));
        const float moved = model.m_vecMeshes.at(0).m_vecPositions.at(0).z;
        EXPECT_FLOAT_EQ(model.m_vecMeshes.at(0).m_vecNormals.at(0).z, moved - 1.0F) << "normals go the same way";
        return moved;
    };
    EXPECT_FLOAT_EQ(readWith("", false), -1.0F);
    EXPECT_FLOAT_EQ(readWith(R"(,"weights":[0.25])", false), -0.5F) << "a node's own weights";
    EXPECT_FLOAT_EQ(readWith("", true), 0.0F) << "what moves is left out as a whole";
    GltfText text;
    const int positions = text.addFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
    text.set("meshes", R"([{"weights":[1],"primitives":[{"attributes":{"POSITION":)" + number(positions) +
                           R"(},"targets":[{"POSITION":)" + number(text.addFloats({0, 0, 2}, "VEC3")) + "}]}]}]");
    text.set("nodes", R"([{"mesh":0}])");
    EXPECT_THAT(getRefusal(text.make()), testing::HasSubstr("targets[0].POSITION: has 1 elements for 3 vertices"));
}

TEST(GltfGeometry, PointsAndLinesAreNamedAndLeftOut)
{
    GltfText text;
    const std::string square = addSquare(text);
    showPrimitive(text, "{" + square + R"(},{"mode":1,)" + square + "}");
    const Model model = read(text);
    EXPECT_EQ(model.m_vecMeshes.size(), 1U);
    EXPECT_THAT(model.m_vecWarnings, testing::Contains(testing::HasSubstr("points and lines")));
    text.set("textures", "[{}]");
    text.set("materials", R"([{"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}])");
    showPrimitive(text, R"({"material":0,)" + square + "}");
    const Model bare = read(text);
    EXPECT_THAT(bare.m_vecWarnings, testing::Contains(testing::HasSubstr("textures[0] is left out: it has no")));
    EXPECT_FALSE(bare.m_vecSurfaces.at(0).m_diffuseTexture.isUsed());
}

/// A model whose one node is moved along x by one curve.
GltfText makeCurve(const std::string& interpolation, const std::vector<float>& times, const std::vector<float>& values,
                   const std::string& path = "translation", const std::string& nodeMembers = "")
{
    GltfText text;
    const int input = text.addFloats(times, "SCALAR");
    const int output = text.addFloats(values, path == "rotation" ? "VEC4" : "VEC3");
    text.set("nodes", R"([{"name":"twin"},{"name":"twin")" + nodeMembers + "}]");
    text.set("animations", R"([{"name":"go","samplers":[{"input":)" + number(input) + R"(,"output":)" + number(output) +
                               R"(,"interpolation":")" + interpolation +
                               R"("}],"channels":[{"sampler":0,"target":{"node":1,"path":")" + path + R"("}}]}])");
    return text;
}

double playX(const Model& model, double seconds)
{
    const TW2::convert::ClipSampler sampler(model, model.m_vecClips.at(0));
    return sampler.sample(1, seconds).getTranslation().x;
}

TEST(GltfMotion, FollowsTheFilesCurves)
{
    const Model step = read(makeCurve("STEP", {0, 1, 2}, {0, 0, 0, 3, 0, 0, 5, 0, 0}));
    EXPECT_DOUBLE_EQ(playX(step, 0.99), 0.0);
    EXPECT_DOUBLE_EQ(playX(step, 1.01), 3.0);
    EXPECT_DOUBLE_EQ(step.m_vecClips[0].m_dDuration, 2.0);
    ASSERT_EQ(step.m_vecClips[0].m_vecChannels.size(), 1U);
    EXPECT_EQ(step.m_vecClips[0].m_vecChannels[0].m_iNode, 1) << "not the one of the same name";
    EXPECT_EQ(step.m_vecNodes[0].m_strName, step.m_vecNodes[1].m_strName);
    // Arriving slope, value and leaving slope of two keys that are 2 seconds apart.
    const Model cubic = read(makeCurve("CUBICSPLINE", {1, 3}, {9, 0, 0, 1, 0, 0, 2, 0, 0, -3, 0, 0, 4, 0, 0, 9, 0, 0}));
    for (const double t : {0.0, 0.25, 0.5, 0.9, 1.0})
    {
        const double expected = (2 * t * t * t - 3 * t * t + 1) * 1 + 2 * (t * t * t - 2 * t * t + t) * 2 +
                                (-2 * t * t * t + 3 * t * t) * 4 + 2 * (t * t * t - t * t) * -3;
        EXPECT_NEAR(playX(cubic, 1.0 + 2.0 * t), expected, 1e-9) << t;
    }
}

TEST(GltfMotion, AMirroredNodeThatPlaysWhatItIsAtRestStaysAsItIsAndOneWithoutSizeGrowsTurned)
{
    const Model grown =
        read(makeCurve("LINEAR", {0, 1}, {0, 0, 0, 2, 2, 2}, "scale", R"(,"scale":[0,0,0],"rotation":[0,0,0.6,0.8])"));
    EXPECT_LT(convert_test::largestDifference(TW2::convert::ClipSampler(grown, grown.m_vecClips.at(0)).sample(1, 1.0),
                                              convert_test::scale(2.0) * convert_test::turnZ(73.7397953)),
              1e-7);
    for (const Model& model :
         {read(makeCurve("LINEAR", {0, 1}, {0, 0, 0, 1, 0, 0, 0, 1}, "rotation",
                         R"(,"scale":[-1,-2,-1],"translation":[1,2,3])")),
          read(makeCurve("LINEAR", {0, 1}, {-1, -2, -1, -1, -2, -1}, "scale",
                         R"(,"scale":[-1,-2,-1],"rotation":[0,0,0.6,0.8],"translation":[1,2,3])"))})
    {
        const TW2::convert::ClipSampler sampler(model, model.m_vecClips.at(0));
        EXPECT_LT(convert_test::largestDifference(sampler.sample(1, 0.5), model.m_vecNodes[1].m_local), 1e-7);
    }
}

TEST(GltfScenes, TheOneThatTheFileNamesIsShownWithItsSurfaces)
{
    GltfText text;
    const std::string attributes = addSquare(text);
    text.set("materials", R"([{"name":"red"},{"name":"red"}])");
    text.set("meshes", R"([{"primitives":[{)" + attributes + R"(},{"material":1,)" + attributes + "}]}]");
    text.set("nodes", R"([{"name":"first","mesh":0},{"name":"second","mesh":0,"extras":{"kind":"door","size":3}},{}])");
    text.set("scenes", R"([{"name":"old","nodes":[0]},{"nodes":[1]}])");
    text.set("scene", "1");
    const Model model = read(text);
    ASSERT_EQ(model.m_vecNodes.size(), 1U);
    EXPECT_EQ(model.m_vecNodes[0].m_strName, "second");
    EXPECT_EQ(model.m_vecNodes[0].m_strNotes, "kind=door\n") << "what is text";
    EXPECT_THAT(model.m_vecWarnings, testing::Contains(testing::HasSubstr("scene \"old\"")));
    ASSERT_EQ(model.m_vecSurfaces.size(), 3U) << "what has no material has a plain one";
    EXPECT_NE(model.m_vecSurfaces[0].m_strName, model.m_vecSurfaces[1].m_strName);
    EXPECT_EQ(model.m_vecSurfaces[2].m_strName, "plain");
    for (const TW2::convert::Surface& surface : model.m_vecSurfaces)
    {
        EXPECT_EQ(Vector3(surface.m_diffuse.red, surface.m_diffuse.green, surface.m_diffuse.blue),
                  Vector3(255, 255, 255));
    }
    EXPECT_EQ(model.m_vecMeshes.at(0).m_iMaterial, 2);
    EXPECT_EQ(model.m_vecMeshes.at(1).m_iMaterial, 1);
}

TEST(GltfGeometry, AMeshMayHaveItsSecondCoordinatesAlone)
{
    GltfText text;
    const int second = text.addFloats(squareCoordinates, "VEC2");
    showPrimitive(text, "{" + addSquare(text, R"(,"TEXCOORD_1":)" + number(second)) + "}");
    const Mesh mesh = read(text).m_vecMeshes.at(0);
    ASSERT_EQ(mesh.m_vecCoordinates.size(), 2U);
    EXPECT_TRUE(mesh.m_vecCoordinates[0].empty());
    EXPECT_EQ(mesh.m_vecCoordinates[1].size(), mesh.m_vecPositions.size());
}

TEST(GltfMotion, CurvesThatCannotBeFollowedAreToldAndThoseOfNoNodeAreNone)
{
    const auto getReason = [](const std::vector<float>& times, const std::vector<float>& values)
    { return getRefusal(makeCurve("LINEAR", times, values).make()); };
    EXPECT_EQ(getReason({0, 1}, {0, 0, 0, 1, 0, 0}), "");
    EXPECT_THAT(getReason({1, 0}, {0, 0, 0, 1, 0, 0}), testing::HasSubstr("input: its times do not ascend"));
    EXPECT_THAT(getReason({0, 1}, {0, 0, 0}), testing::HasSubstr("has 1 values for 2 times, 2 are needed"));
    EXPECT_THAT(getReason({0, 1}, {0, 0, 0, 1, INFINITY, 0}), testing::HasSubstr("not finite"));
    GltfText text;
    const int times = text.addFloats({0, 1}, "SCALAR");
    const int places = text.addFloats({0, 0, 0, 1, 2, 3}, "VEC3");
    const std::string sampler = R"({"input":)" + number(times) + R"(,"output":)" + number(places) + "}";
    text.set("nodes", R"([{"name":"a"}])");
    text.set("animations", R"([{"samplers":[)" + sampler +
                               R"(],"channels":[{"sampler":0,"target":{"path":"translation"}},)"
                               R"({"sampler":0,"target":{"node":0,"path":"translation"}}]}])");
    const Model model = read(text);
    ASSERT_EQ(model.m_vecClips.at(0).m_vecChannels.size(), 1U);
    EXPECT_EQ(TW2::convert::ClipSampler(model, model.m_vecClips[0]).sample(0, 1.0).getTranslation(),
              Vector3d(1, 2, -3));
}

TEST(GltfSkins, CallTheirJointsByIndexAndSayWhichIsWrong)
{
    const auto make = [](std::uint8_t joint, int node = 2, std::uint8_t last = 255)
    {
        GltfText text;
        const int positions = text.addFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
        const int joints = text.add(std::vector<std::uint8_t>{0, joint, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0},
                                    GltfText::UNSIGNED_BYTE, "VEC4");
        const int weights = text.add(std::vector<std::uint8_t>{51, 204, 0, 0, 255, 0, 0, 0, last, 0, 0, 0},
                                     GltfText::UNSIGNED_BYTE, "VEC4", R"(,"normalized":true)");
        std::vector<float> matrices(32, 0.0F);
        for (std::size_t i : {0U, 5U, 10U, 15U, 16U, 21U, 26U, 31U})
        {
            matrices[i] = 1.0F;
        }
        matrices[30] = -4.0F;  // the second joint was bound at z = 4
        const int binds = text.addFloats(matrices, "MAT4");
        text.set("meshes", R"([{"primitives":[{"attributes":{"POSITION":)" + number(positions) + R"(,"JOINTS_0":)" +
                               number(joints) + R"(,"WEIGHTS_0":)" + number(weights) + "}}]}]");
        text.set("nodes", R"([{"mesh":0,"skin":0},{"name":"bone","children":[2]},{"name":"bone"}])");
        text.set("skins", R"([{"joints":[1,)" + number(node) + R"(],"inverseBindMatrices":)" + number(binds) + "}]");
        return text.make();
    };
    const Model model = read(make(1));
    const std::vector<TW2::convert::Bone>& bones = model.m_vecMeshes.at(0).m_vecBones;
    ASSERT_EQ(bones.size(), 2U);
    EXPECT_NE(bones[0].m_iNode, bones[1].m_iNode);
    EXPECT_EQ(bones[1].m_offset.getTranslation(), Vector3d(0, 0, 4));
    ASSERT_EQ(bones[1].m_vecWeights.size(), 3U);
    EXPECT_FLOAT_EQ(bones[1].m_vecWeights[0].second, 0.8F);
    EXPECT_THAT(bones[0].m_vecWeights, testing::ElementsAre(testing::Pair(0U, testing::FloatEq(0.2F))));
    const Model unweighted = read(make(1, 2, 0));
    const std::vector<TW2::convert::Bone>& all = unweighted.m_vecMeshes.at(0).m_vecBones;
    ASSERT_EQ(all.size(), 2U) << "a vertex without weights goes with its first joint, not with the mesh's node";
    EXPECT_THAT(all[1].m_vecWeights, testing::Contains(testing::Pair(2U, 1.0F)));
    EXPECT_THAT(getRefusal(make(2)), testing::HasSubstr("meshes[0].primitives[0].attributes.JOINTS_0: names joint 2"));
    // No scene names the nodes of this file: nothing looked at the joints before the skin does.
    EXPECT_THAT(getRefusal(make(1, 3)), testing::HasSubstr("skins[0]"));
    EXPECT_THAT(getRefusal(make(1, -1)), testing::HasSubstr("skins[0]"));
}

TEST(GltfSkins, OfWhatHasNoPositionsAreLeftOutWithIt)
{
    GltfText text;
    const int positions = text.addFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
    const std::vector<std::uint8_t> weights(12, 255);
    std::string bones;
    for (std::uint8_t set = 0; set < 2; ++set)
    {
        const std::vector<std::uint8_t> joints(12, set);
        bones += (set > 0 ? ",\"JOINTS_" : "\"JOINTS_") + std::to_string(set) +
                 "\":" + number(text.add(joints, GltfText::UNSIGNED_BYTE, "VEC4")) + ",\"WEIGHTS_" +
                 std::to_string(set) +
                 "\":" + number(text.add(weights, GltfText::UNSIGNED_BYTE, "VEC4", R"(,"normalized":true)"));
    }
    text.set("meshes", R"([{"name":"shape","primitives":[{"attributes":{)" + bones +
                           R"(}},{"attributes":{"POSITION":)" + number(positions) + "," + bones + "}}]}]");
    text.set("nodes", R"([{"mesh":0,"skin":0},{"name":"bone"},{"name":"bone of the second set"}])");
    text.set("skins", R"([{"joints":[1,2]}])");
    const Model model = read(text);
    ASSERT_EQ(model.m_vecMeshes.size(), 1U);
    ASSERT_EQ(model.m_vecMeshes[0].m_vecBones.size(), 2U);
    EXPECT_FALSE(model.m_vecMeshes[0].m_vecBones[1].m_vecWeights.empty());
    EXPECT_THAT(model.m_vecWarnings, testing::Contains(testing::HasSubstr("what has no positions")));
}

TEST(GltfSurfaces, CoordinatesAreTurnedScaledAndMovedAsFarAsTheFileSays)
{
    for (int members = 0; members < 8; ++members)
    {
        const double turn = (members & 1) != 0 ? 0.4 : 0.0;
        const std::array<double, 2> scale{(members & 2) != 0 ? 2.0 : 1.0, (members & 2) != 0 ? -3.0 : 1.0};
        const std::array<double, 2> offset{(members & 4) != 0 ? 0.25 : 0.0, (members & 4) != 0 ? 0.75 : 0.0};
        const std::string transform = std::string((members & 1) != 0 ? R"(,"rotation":0.4)" : "") +
                                      ((members & 2) != 0 ? R"(,"scale":[2,-3])" : "") +
                                      ((members & 4) != 0 ? R"(,"offset":[0.25,0.75])" : "");
        GltfText text;
        showPrimitive(text, R"({"material":0,)" + addSquare(text) + "}");
        text.set("extensionsUsed", R"(["KHR_texture_transform"])");
        text.set("images", R"([{"uri":"none.png"}])");
        text.set("textures", R"([{"source":0}])");
        text.set("materials", R"([{"pbrMetallicRoughness":{"baseColorTexture":{"index":0,"extensions":{)"
                              R"("KHR_texture_transform":{"texCoord":1)" +
                                  transform + "}}}}}]");
        const TW2::convert::Texture texture = read(text).m_vecSurfaces.at(0).m_diffuseTexture;
        EXPECT_EQ(texture.m_iSet, 1);
        // First scaled, then turned, then moved; v runs downwards.
        const double u = 0.3 * scale[0];
        const double v = 0.8 * scale[1];
        const std::array<double, 2> expected{std::cos(turn) * u + std::sin(turn) * v + offset[0],
                                             std::cos(turn) * v - std::sin(turn) * u + offset[1]};
        for (std::size_t axis = 0; axis < 2; ++axis)
        {
            const auto& t = texture.m_transform;
            EXPECT_NEAR(0.3 * t[0][axis] + 0.8 * t[1][axis] + t[2][axis], expected[axis], 1e-12) << transform;
        }
    }
}

TEST(GltfStage, CamerasAndLightsStandInTheirNodesSpace)
{
    GltfText text;
    text.set("meshes", R"([{"primitives":[{)" + addSquare(text) + "}]}]");
    text.set("extensionsUsed", R"(["KHR_lights_punctual"])");
    text.set("extensions", R"({"KHR_lights_punctual":{"lights":[
        {"type":"spot","intensity":314.15927,"color":[1,0.5,0],"spot":{"innerConeAngle":0.5,"outerConeAngle":0.7853982}},
        {"type":"directional","intensity":3.1415927},
        {"type":"point","intensity":314.15927,"range":20},
        {"type":"point","intensity":314.15927,"range":5}]}})");
    text.set("cameras",
             R"([{"type":"perspective","perspective":{"yfov":1.5707963,"aspectRatio":1,"znear":0.5,"zfar":50}},
                            {"name":"flat","type":"orthographic","orthographic":{"xmag":1,"ymag":1,"zfar":9,"znear":1}},
                            {"type":"perspective","perspective":{"yfov":1.5707963,"znear":0.5}}])");
    text.set("nodes", R"([{"camera":0},{"mesh":0},{"camera":1},{"extensions":{"KHR_lights_punctual":{"light":0}}},
                          {"extensions":{"KHR_lights_punctual":{"light":1}}},
                          {"camera":2,"extensions":{"KHR_lights_punctual":{"light":2}}},
                          {"extensions":{"KHR_lights_punctual":{"light":3}}}])");
    const Model model = read(text);
    ASSERT_EQ(model.m_vecCameras.size(), 2U);
    EXPECT_NEAR(std::tan(model.m_vecCameras[1].m_fHorizontalAngle * std::acos(-1.0) / 360.0), 16.0 / 9.0, 1e-5)
        << "most screens' shape where the file says none";
    EXPECT_FLOAT_EQ(model.m_vecCameras[0].m_fFar, 50.0F);
    EXPECT_EQ(model.m_vecCameras[0].m_iNode, 0);
    EXPECT_NEAR(model.m_vecCameras[0].m_fHorizontalAngle, 90.0F, 1e-3F);
    EXPECT_FLOAT_EQ(model.m_vecCameras[0].m_fNear, 0.5F);
    EXPECT_EQ(model.m_vecCameras[0].m_vForward, Vector3d(0, 0, 1)) << "-z of the file, which is mirrored";
    EXPECT_THAT(model.m_vecWarnings, testing::Contains(testing::HasSubstr("camera \"flat\"")));
    EXPECT_EQ(model.m_vecNodes.at(3).m_strName, "nodes[3]") << "what has no name is called by its place";
    ASSERT_EQ(model.m_vecLights.size(), 4U);
    EXPECT_NEAR(model.m_vecLights[3].m_fBrightness, 10.0F, 1e-3F) << "what ends before it would be full is bright";
    EXPECT_EQ(model.m_vecLights[2].m_eKind, TW2::convert::Light::Kind::Point);
    EXPECT_NEAR(model.m_vecLights[2].m_fRange, 20.0F, 1e-3F);
    EXPECT_NEAR(model.m_vecLights[2].m_fBrightness * (1.0F - 10.0F / 20.0F), 1.0F, 1e-4F);
    const TW2::convert::Light& spot = model.m_vecLights[0];
    EXPECT_EQ(spot.m_iNode, 3);
    EXPECT_NEAR(spot.m_color.green, 187.5F, 1.0F) << "half the light";
    EXPECT_NEAR(spot.m_fOuterAngle, 90.0F, 1e-3F);
    EXPECT_NEAR(spot.m_fInnerAngle, 57.29578F, 1e-3F);
    // 100 pi candela light white fully at a distance of 10; a hundredth of that is left at 100.
    EXPECT_NEAR(spot.m_fRange, 100.0F, 1e-2F);
    EXPECT_NEAR(spot.m_fBrightness * (1.0F - 10.0F / spot.m_fRange), 1.0F, 1e-4F);
    EXPECT_NEAR(model.m_vecLights[1].m_fBrightness, 1.0F, 1e-5F);
}
}  // namespace
