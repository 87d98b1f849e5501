#include "convert/clip_sampler.h"
#include "tests/convert/collada_builder.h"
#include "tests/support/expectations.h"
#include "tests/support/gltf_character.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace
{
using namespace convert_test;
using support::length;
using support::Vec;
using TW2::convert::ClipSampler;

/// The local matrix of a node at a time, without the model's space.
Matrixd sample(const std::string& animations, int node, double seconds)
{
    const Model model = readCollada(makeCollada(animations));
    EXPECT_EQ(model.m_vecClips.size(), 1U);
    const Matrixd local = ClipSampler(model, model.m_vecClips.at(0)).sample(static_cast<std::size_t>(node), seconds);
    return node == 0 ? local * model.m_root.inverse() : local;
}
}  // namespace

TEST(Collada, EveryKindOfKeyMovesThePartThatItNames)
{
    // Row vectors: the first step of the file is the outermost.
    const auto expectTurn = [](const std::string& animation, double seconds, double degrees) {
        EXPECT_LT(largestDifference(sample(animation, 0, seconds), turnZ(degrees) * move(1, 2, -3)), 1e-9) << animation;
    };
    expectTurn(makeAnimation("arm/turn.ANGLE", "LINEAR", "0 90 30"), 0.5, 45.0);
    expectTurn(makeAnimation("arm/turn.ANGLE", "LINEAR", "0 +90,5 30,25"), 0.5, 45.25);
    expectTurn(makeAnimation("arm/turn.ANGLE", "STEP", "0 90 30"), 0.9, 0.0);
    expectTurn(makeAnimation("arm/turn.ANGLE", "STEP", "0 90 30"), 1.0, 90.0);
    expectTurn(makeAnimation("arm/turn", "LINEAR", "0 0 1 0  0 0 1 90  0 0 1 30", 4), 1.5, 60.0);
    // Slopes of 60 degrees per second: as control points in time and value, as values alone, and as slopes.
    const double hermite = 90.0 * 0.15625 + 60.0 * 0.09375;
    for (const auto& [seconds, degrees] : {std::pair(0.25, hermite), {1.25, 90.0 - 60.0 * 0.15625 + 60.0 * 0.09375}})
    {
        expectTurn(makeAnimation("arm/turn.ANGLE", "BEZIER", "0 90 30", 1,
                                 "-0.3333333333333 -20 0.6666666666667 70 1.6666666666667 10",
                                 "0.3333333333333 20 1.3333333333333 110 2.3333333333333 50"),
                   seconds, degrees);
    }
    expectTurn(makeAnimation("arm/turn.ANGLE", "BEZIER", "0 90 30", 1, "-20 70 10", "20 110 50"), 0.25, hermite);
    expectTurn(makeAnimation("arm/turn.ANGLE", "HERMITE", "0 90 30", 1, "60 60 60", "60 60 60"), 0.25, hermite);
}

TEST(Collada, WholeMatricesTurnTheShorterWayAndThoseWithShearGoStraight)
{
    struct Key
    {
        Vector3d m_vSize;  ///< negative where it mirrors
        double m_dDegrees;
        Vector3d m_vPlace;
    };
    const std::array<Key, 3> keys{
        {{{1, 1, 1}, 0, {5, 0, 0}}, {{2, 3, -4}, 90, {7, 1, 2}}, {{2, 1, -0.5}, -70, {7, 1, 6}}}};
    const auto make = [](const Key& key)
    {
        Matrixd matrix = turnZ(key.m_dDegrees);
        matrix.setRow(0, matrix.getRow(0) * key.m_vSize.x);
        matrix.setRow(1, matrix.getRow(1) * key.m_vSize.y);
        matrix.setRow(2, matrix.getRow(2) * key.m_vSize.z);
        matrix.setTranslation(key.m_vPlace);
        return matrix;
    };
    // The middle one is whole, leans in one of three planes, or is flat.
    for (const auto& [row, column, leans] : {std::tuple(3, 0, 0.0), {0, 0, 0.5}, {0, 2, 0.5}, {1, 2, 0.5}, {2, 2, 4.0}})
    {
        std::array<Matrixd, 3> matrices{make(keys[0]), make(keys[1]), make(keys[2])};
        matrices[1].m[row][column] += leans;
        std::string text;
        for (const Matrixd& m : matrices)
        {
            for (int i = 0; i < 12; ++i)
            {
                text += std::to_string(m.m[i % 4][i / 4]) + " ";
            }
            text += "0 0 0 1 ";
        }
        for (const double time : {-1.0, 0.0, 0.25, 1.0, 1.75, 2.0, 3.0})
        {
            const double part = std::clamp(time, 0.0, 2.0);
            const std::size_t first = part < 1.0 ? 0 : 1;
            const auto between = [&](const auto& a, const auto& b)
            { return a + (b - a) * (part - static_cast<double>(first)); };
            const auto& [a, b] = std::pair(keys[first], keys[first + 1]);
            Matrixd expected = make(
                {between(a.m_vSize, b.m_vSize), between(a.m_dDegrees, b.m_dDegrees), between(a.m_vPlace, b.m_vPlace)});
            for (int i = 0; leans != 0.0 && i < 12; ++i)
            {
                expected.data()[i] = between(matrices[first].data()[i], matrices[first + 1].data()[i]);
            }
            Matrixd mirror;
            mirror.m[2][2] = -1.0;
            EXPECT_LT(largestDifference(sample(makeAnimation("hand/matrix", "LINEAR", text, 16), 1, time),
                                        mirror * expected * mirror),
                      1e-5)
                << row << column << " at " << time;
        }
    }
}

namespace
{
struct Step
{
    std::string m_strKind;
    std::vector<double> m_vecNumbers;
};

double dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Where a step of a node's matrix takes a point of the file's space.
Vec apply(const Step& step, const Vec& p)
{
    const std::vector<double>& n = step.m_vecNumbers;
    const auto unit = [](const Vec& v) { return v * (1.0 / length(v)); };
    const auto cross = [](const Vec& a, const Vec& b) {
        return Vec{a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    };
    if (step.m_strKind == "matrix")
    {
        return {dot({n[0], n[1], n[2]}, p) + n[3], dot({n[4], n[5], n[6]}, p) + n[7],
                dot({n[8], n[9], n[10]}, p) + n[11]};
    }
    if (step.m_strKind == "rotate")
    {
        return support::turn(support::about({n[0], n[1], n[2]}, n[3]), p);
    }
    if (step.m_strKind == "scale")
    {
        return {p.x * n[0], p.y * n[1], p.z * n[2]};
    }
    if (step.m_strKind == "skew")
    {
        const Vec moved = unit({n[4], n[5], n[6]});
        const Vec turned{n[1], n[2], n[3]};
        return p +
               moved * (std::tan(n[0] * std::numbers::pi / 180.0) * dot(unit(turned - moved * dot(turned, moved)), p));
    }
    if (step.m_strKind == "lookat")
    {
        const Vec eye{n[0], n[1], n[2]};
        const Vec back = unit(eye - Vec{n[3], n[4], n[5]});
        const Vec right = unit(cross({n[6], n[7], n[8]}, back));
        return eye + right * p.x + cross(back, right) * p.y + back * p.z;
    }
    return p + Vec{n[0], n[1], n[2]};
}
}  // namespace

TEST(Collada, EveryNumberOfEveryStepOfANodesMatrixCountsAndMoves)
{
    std::vector<Step> steps{{"translate", {1, -2, 3}},
                            {"rotate", {1, 2, -0.5, 40}},
                            {"skew", {30, 1, 3, 4, 2, 0.5, 1}},
                            {"scale", {2, 3, -0.5}},
                            {"lookat", {1, 2, 3, 2, -1, 5, 0.2, 1, 0.1}},
                            {"matrix", {1, 0.5, 0, 4, -0.2, 2, 0.3, 5, 0, 1, 1.5, 6, 0, 0, 0, 1}}};
    for (std::size_t moved = 0; moved < steps.size(); ++moved)
    {
        const std::string kind = steps[moved].m_strKind;
        for (std::size_t number = 0; number < std::min<std::size_t>(steps[moved].m_vecNumbers.size(), 12); ++number)
        {
            std::rotate(steps.begin(), steps.begin() + (number % 2 == 0 ? 1 : 2), steps.end());
            std::string text;
            for (const Step& step : steps)
            {
                text += "<" + step.m_strKind + " sid='" + step.m_strKind + "'>";
                for (const double value : step.m_vecNumbers)
                {
                    text += std::to_string(value) + " ";
                }
                text += "</" + step.m_strKind + ">";
            }
            const std::string index = std::to_string(number);
            const std::string part = kind == "matrix"
                                         ? "(" + std::to_string(number % 4) + ")(" + std::to_string(number / 4) + ")"
                                     : kind == "skew" || kind == "lookat" ? "(" + index + ")"
                                     : number == 3                        ? std::string(".ANGLE")
                                                                          : std::string(".") + "xyz"[number];
            auto played = steps;
            double& value = std::ranges::find(played, kind, &Step::m_strKind)->m_vecNumbers[number];
            const std::string keys = std::to_string(value) + " " + std::to_string(value + 0.5) + " 9";
            const Model model = readCollada(makeCollada(makeAnimation("steps/" + kind + part, "LINEAR", keys), {},
                                                        "<node id='steps'>" + text + "</node>"));
            value += 0.25;
            const Matrixd back = model.m_root.inverse();
            const Matrixd local = ClipSampler(model, model.m_vecClips.at(0)).sample(2, 0.5) * back;
            for (const Vec& point : {Vec{}, Vec{1, 2, 3}, Vec{-2, 0.5, 1}, Vec{0.3, -1, 2}})
            {
                const auto expect = [&](const Matrixd& matrix, const std::vector<Step>& by)
                {
                    Vec expected = point;
                    for (std::size_t i = by.size(); i-- > 0;)
                    {
                        expected = apply(by[i], expected);
                    }
                    const Vector3d is = matrix.transformPoint({point.x, point.y, -point.z});
                    EXPECT_LT(length(Vec{is.x, is.y, -is.z} - expected), 1e-9) << kind << part;
                };
                expect(model.m_vecNodes.at(2).m_local * back, steps);
                expect(local, played);
            }
            std::rotate(steps.begin(), steps.end() - (number % 2 == 0 ? 1 : 2), steps.end());
        }
    }
}

TEST(Collada, AnimationsAreOneClipUnlessTheFileArrangesThem)
{
    const std::string both =
        makeAnimation("arm/turn.ANGLE", "LINEAR", "0 90 30") + makeAnimation("hand/matrix(3)(1)", "LINEAR", "0 4 8");
    const Model one = readCollada(makeCollada(both));
    ASSERT_EQ(one.m_vecClips.size(), 1U);
    EXPECT_EQ(one.m_vecClips[0].m_strName, "arm");
    EXPECT_EQ(one.m_vecClips[0].m_vecChannels.size(), 2U);
    EXPECT_DOUBLE_EQ(one.m_vecClips[0].m_dDuration, 2.0);

    EXPECT_TRUE(ClipSampler(one, one.m_vecClips[0]).findJumps(0).empty());
    EXPECT_THAT(readCollada(makeCollada(makeAnimation("arm/turn.ANGLE", "BSPLINE", "0 9 3") +
                                        makeAnimation("lens/xfov", "LINEAR", "0 9 3")))
                    .m_vecWarnings,
                testing::ElementsAre(testing::HasSubstr("keys of kind BSPLINE"), testing::HasSubstr("\"lens/xfov\"")));

    const std::string turn = makeAnimation("arm/turn.ANGLE", "STEP", "0 90 30");
    const std::size_t at = turn.find("id='") + 4;
    const std::string id = turn.substr(at, turn.find('\'', at) - at);
    const std::string clips =
        "<library_animation_clips><animation_clip id='c' name='wave' start='0.5' end='1.5'>"
        "<instance_animation url='#" +
        id + "'/></animation_clip></library_animation_clips>";
    const Model arranged = readCollada(makeCollada(turn, clips));
    ASSERT_EQ(arranged.m_vecClips.size(), 1U);
    EXPECT_EQ(arranged.m_vecClips[0].m_strName, "wave");
    EXPECT_DOUBLE_EQ(arranged.m_vecClips[0].m_dDuration, 1.0);
    const ClipSampler sampler(arranged, arranged.m_vecClips[0]);
    EXPECT_LT(largestDifference(sampler.sample(0, 0.75) * arranged.m_root.inverse(), turnZ(90.0) * move(1, 2, -3)),
              1e-9);
    EXPECT_EQ(sampler.findJumps(0), std::vector<double>{0.5});
}

TEST(Collada, NodesHaveTheirNamesAndTheSceneItsUpAxisAndUnit)
{
    const std::string keys = makeAnimation("arm/turn.ANGLE", "LINEAR", "0 90 30");
    // Where (1, 2, 3) is with y up, mirrored at z, and half as large.
    for (const auto& [up, place] : {std::pair("Y_UP", Vector3d(0.5, 1.0, -1.5)),
                                    {"Z_UP", Vector3d(0.5, 1.5, 1.0)},
                                    {"X_UP", Vector3d(-1.0, 0.5, -1.5)}})
    {
        const Model model = readCollada(makeCollada(keys, {}, {}, up));
        ASSERT_EQ(model.m_vecNodes.size(), 2U);
        EXPECT_EQ(model.m_vecNodes[0].m_strName, "upper arm");
        EXPECT_EQ(model.m_vecNodes[1].m_strName, "hand") << "the id where there is no name";
        EXPECT_LT((model.m_vecNodes[0].m_local.getTranslation() - place).length(), 1e-12) << up;
    }
}

TEST(Collada, SkinsMaterialsAndPolygonsAreThoseOfTheFile)
{
    // A polygon that bends inwards at its fourth corner and a triangle; bones with the sids of another skeleton.
    const std::string libraries =
        "<library_effects><effect id='fx'><profile_COMMON><technique><lambert><diffuse><color>1 0.5 0 "
        "1</color></diffuse>"
        "</lambert><extra><technique profile='x'><double_sided>1"
        "</double_sided></technique></extra></technique></profile_COMMON></effect></library_effects>"
        "<library_materials><material id='m' name='glass'><instance_effect url='#fx'/></material></library_materials>"
        "<library_geometries><geometry id='g' name='flag'><mesh>" +
        makeSource("gp", floats("0 0 0 4 0 0 4 4 0 1 1 0 0 4 0"), 3) +
        makeSource("gu", floats("9 9 0.25 1 0 0"), 2, 2) +
        makeSource("gn", floats("1 0 0 1 0 0 1 0 0 1 0 0 1 0 0"), 3) +
        "<vertices id='gv'><input semantic='POSITION' source='#gp'/></vertices>"
        "<polylist material='sym' count='2'><input semantic='VERTEX' source='#gv' offset='0'/>"
        "<input semantic='NORMAL' source='#gn' offset='0'/><input semantic='TEXCOORD' source='#gu' offset='1' "
        "set='2'/><vcount>5 3</vcount>"
        "<p>1 0 2 1 3 1 4 1 0 1  0 0 1 0 2 1</p></polylist></mesh></geometry></library_geometries>"
        "<library_controllers><controller id='c'><skin source='#g'>"
        "<bind_shape_matrix>2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1</bind_shape_matrix>" +
        makeSource("cj", "<Name_array>tip root</Name_array>") +
        makeSource("cb", floats("1 0 0 -1 0 1 0 -2 0 0 1 -3 0 0 0 1 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"), 16) +
        makeSource("cw", floats("1 0.25 0.75"), 1) +
        "<joints><input semantic='JOINT' source='#cj'/><input semantic='INV_BIND_MATRIX' source='#cb'/></joints>"
        "<vertex_weights count='5'><input semantic='JOINT' source='#cj' offset='0'/>"
        "<input semantic='WEIGHT' source='#cw' offset='1'/><vcount>2 1 1 1 1</vcount>"
        "<v>0 1 1 2 1 0 1 0 1 0 1 0</v></vertex_weights></skin></controller></library_controllers>";
    const std::string nodes =
        "<node id='other' name='other root' sid='root'><node id='t2' name='other tip' sid='tip'/></node>"
        "<node id='shown'><instance_controller url='#c'><skeleton>#other</skeleton><bind_material><technique_common>"
        "<instance_material symbol='sym' target='#m'/></technique_common></bind_material></instance_controller></node>";
    const Model model = readCollada(makeCollada({}, libraries, nodes));
    ASSERT_EQ(model.m_vecMeshes.size(), 1U);
    const Mesh& mesh = model.m_vecMeshes[0];
    ASSERT_EQ(mesh.m_vecIndices.size(), 12U);
    for (std::size_t i = 0; i < mesh.m_vecIndices.size(); i += 3)
    {
        const auto& a = mesh.m_vecPositions[mesh.m_vecIndices[i]];
        const auto& b = mesh.m_vecPositions[mesh.m_vecIndices[i + 1]];
        const auto& c = mesh.m_vecPositions[mesh.m_vecIndices[i + 2]];
        EXPECT_LT((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x), 0.0F) << "clockwise, and inside the outline";
    }
    ASSERT_EQ(mesh.m_vecCoordinates.size(), 1U);
    EXPECT_EQ(mesh.m_vecCoordinates[0][0].x, 0.25F);
    EXPECT_EQ(mesh.m_vecCoordinates[0][0].y, 0.0F) << "v counts downwards";
    EXPECT_EQ(mesh.m_vecNormals.at(0).x, 1.0F);

    ASSERT_EQ(model.m_vecSurfaces.size(), 1U);
    EXPECT_EQ(model.m_vecSurfaces[0].m_strName, "glass");
    EXPECT_EQ(model.m_vecSurfaces[0].m_diffuse.green, 127.5F);
    EXPECT_TRUE(model.m_vecSurfaces[0].m_bTwoSided);

    ASSERT_EQ(mesh.m_vecBones.size(), 2U);
    const TW2::convert::Bone& tip = mesh.m_vecBones[0];
    EXPECT_EQ(model.m_vecNodes.at(static_cast<std::size_t>(tip.m_iNode)).m_strName, "other tip")
        << "below the skeleton that the skin names";
    Matrixd twice;
    for (int row = 0; row < 3; ++row)
    {
        twice.m[row][row] = 2.0;
    }
    EXPECT_LT(largestDifference(tip.m_offset, twice * move(-1, -2, 3)), 1e-12);
    ASSERT_EQ(tip.m_vecWeights.size(), 2U) << "the point has two vertices, with other coordinates";
    EXPECT_EQ(tip.m_vecWeights[0].second, 0.25F);
}

TEST(Collada, PolygonsOfEveryKindAreTheirTrianglesWithWhatTheirCornersSay)
{
    // Five corners, of which each says four numbers: where its place, normal, coordinates and colour stand in the
    // lists.
    const std::vector<std::array<double, 3>> places{{0, 0, 0}, {4, 0, 1}, {5, 3, 2}, {2, 5, 1}, {-1, 3, 3}};
    const std::array<std::array<std::size_t, 4>, 5> corners{
        {{0, 2, 1, 0}, {1, 0, 2, 1}, {2, 1, 0, 2}, {3, 2, 2, 1}, {4, 1, 1, 2}}};
    const std::array<std::array<float, 3>, 3> normals{{{0, 0, 1}, {0.6F, 0, 0.8F}, {0, -0.8F, 0.6F}}};
    const std::array<std::array<float, 2>, 3> first{{{0, 0.25F}, {0.5F, 1}, {2, -1}}};
    const std::array<std::array<float, 2>, 3> second{{{3, 0}, {4, 0.5F}, {5, 0.75F}}};
    const std::array<std::array<int, 4>, 3> colors{{{255, 0, 51, 255}, {0, 102, 255, 51}, {153, 204, 0, 0}}};
    const auto list = [](const auto& rows, double factor = 1.0)
    {
        std::string text;
        for (const auto& row : rows)
        {
            for (const auto number : row)
            {
                text += std::to_string(static_cast<double>(number) * factor) + " ";
            }
        }
        return floats(text);
    };
    const auto p = [&corners](const std::vector<std::size_t>& chosen)
    {
        std::string text;
        for (const std::size_t corner : chosen)
        {
            for (const std::size_t index : corners[corner])
            {
                text += std::to_string(index) + " ";
            }
        }
        return "<p>" + text + "</p>";
    };
    struct Case
    {
        std::string m_strKind;
        std::string m_strLists;
        std::vector<std::array<std::size_t, 3>> m_vecTriangles;
        std::string m_strWarning = {};
    };
    const std::string thin = "what consists of points and lines";
    for (const Case& each :
         {Case{"triangles", p({0, 1, 2, 2, 3, 4}), {{0, 1, 2}, {2, 3, 4}}},
          Case{"trifans", p({0, 1, 2, 3}) + p({4, 0, 1}), {{0, 1, 2}, {0, 2, 3}, {4, 0, 1}}},
          Case{"tristrips", p({0, 1, 2, 3, 4}), {{0, 1, 2}, {2, 1, 3}, {2, 3, 4}}},
          Case{"polygons", p({0, 1, 2}) + p({3, 4}) + p({2, 3, 4}), {{0, 1, 2}, {2, 3, 4}}, thin},
          Case{"polygons", "<ph>" + p({1, 2, 3}) + "<h>0 0 0 0</h></ph>", {{1, 2, 3}}, "the holes of its polygons"},
          Case{"polylist",
               "<vcount>3 2 4</vcount>" + p({0, 1, 2, 3, 4, 0, 1, 2, 3}),
               {{0, 1, 2}, {0, 1, 2}, {0, 2, 3}},
               thin}})
    {
        const std::string libraries =
            "<library_geometries><geometry id='g'><mesh>" + makeSource("gp", list(places), 3) +
            makeSource("gn", list(normals, 2.0), 3) + makeSource("g0", list(first), 2) +
            makeSource("g1", list(second), 2) + makeSource("gc", list(colors, 1.0 / 255.0), 4) +
            "<vertices id='gv'><input semantic='POSITION' source='#gp'/></vertices><" + each.m_strKind +
            "><input semantic='TEXCOORD' source='#g1' offset='2' set='4'/><input semantic='VERTEX' source='#gv' "
            "offset='0'/>"
            "<input semantic='NORMAL' source='#gn' offset='1'/><input semantic='TEXCOORD' source='#g0' offset='2' "
            "set='1'/>"
            "<input semantic='COLOR' source='#gc' offset='3'/>" +
            each.m_strLists + "</" + each.m_strKind + "></mesh></geometry></library_geometries>";
        const Model model = readCollada(makeCollada({}, libraries, "<node><instance_geometry url='#g'/></node>"));
        const Mesh& mesh = model.m_vecMeshes.at(0);
        ASSERT_EQ(mesh.m_vecIndices.size(), 3 * each.m_vecTriangles.size()) << each.m_strKind;
        for (std::size_t i = 0; i < mesh.m_vecIndices.size(); ++i)
        {
            // Mirrored at z, triangles run the other way round.
            const auto& [place, normal, coordinates, color] = corners[each.m_vecTriangles[i / 3][(3 - i % 3) % 3]];
            const unsigned int vertex = mesh.m_vecIndices[i];
            SCOPED_TRACE(each.m_strKind + ", corner " + std::to_string(i));
            EXPECT_EQ(mesh.m_vecPositions.at(vertex),
                      TW2::convert::Vector3(static_cast<float>(places[place][0]), static_cast<float>(places[place][1]),
                                            static_cast<float>(-places[place][2])));
            EXPECT_LT((mesh.m_vecNormals.at(vertex) -
                       TW2::convert::Vector3(normals[normal][0], normals[normal][1], -normals[normal][2]))
                          .length(),
                      1e-6F);
            ASSERT_EQ(mesh.m_vecCoordinates.size(), 2U);
            EXPECT_EQ(mesh.m_vecCoordinates[0].at(vertex),
                      TW2::convert::Vector3(first[coordinates][0], 1.0F - first[coordinates][1], 0.0F));
            EXPECT_EQ(mesh.m_vecCoordinates[1].at(vertex),
                      TW2::convert::Vector3(second[coordinates][0], 1.0F - second[coordinates][1], 0.0F));
            for (std::size_t c = 0; c < 4; ++c)
            {
                EXPECT_EQ(mesh.m_vecColors.at(vertex)[c], colors[color][c]);
            }
        }
        EXPECT_THAT(model.m_vecWarnings, testing::SizeIs(each.m_strWarning.empty() ? 0 : 1));
        EXPECT_THAT(testing::PrintToString(model.m_vecWarnings), testing::HasSubstr(each.m_strWarning));
    }
}

TEST(Collada, CamerasAndLightsAreWhatTheFileSays)
{
    struct Case
    {
        std::string m_strKind;
        const char* m_szContent;
        const char* m_szExpected;
    };
    std::string libraries;
    std::string nodes;
    std::string expected;
    for (const auto& [kind, content, says] :
         {Case{"camera", "<perspective><xfov>50</xfov><znear>0.5</znear><zfar>100</zfar></perspective>",
               "camera of 2 along 0 0 1: 50 from 0.5 to 100"},
          Case{"camera", "<perspective><yfov>60</yfov><aspect_ratio>1.5</aspect_ratio></perspective>",
               "; camera of 3 along 0 0 1: 81.787 from 0 to 0"},
          Case{"camera", "<orthographic><xmag>1</xmag></orthographic>", ""},
          Case{"light", "<ambient><color>1 1 1</color></ambient>", ""},
          Case{"light", "<point><color>2 1 0.5</color><quadratic_attenuation>0.01</quadratic_attenuation></point>",
               "; point of 6 along 0 0 1: 255 127.5 63.75 times 2 up to 100"},
          Case{"light",
               "<spot><color>0.5 0 "
               "1</color><linear_attenuation>0.5</linear_attenuation><falloff_angle>60</falloff_angle>"
               "<falloff_exponent>2</falloff_exponent></spot>",
               "; spot of 7 along 0 0 1: 127.5 0 255 times 1 up to 200 in 0 to 60"},
          Case{"light", "<spot/>", "; spot of 8 along 0 0 1: 255 255 255 times 1 up to 1e+06 in 180 to 180"},
          Case{"light", "<directional><color>0 1 0</color></directional>",
               "; directional of 9 along 0 0 1: 0 255 0 times 1 up to 1e+06"}})
    {
        const std::string id = "s" + std::to_string(nodes.size());
        const std::string common = std::string("<technique_common>") + content + "</technique_common>";
        libraries += "<library_" + kind + "s><" + kind + " id='" + id + "'>" +
                     (kind == "camera" ? "<optics>" + common + "</optics>" : common) + "</" + kind + "></library_" +
                     kind + "s>";
        nodes += "<node><instance_" + kind + " url='#" + id + "'/></node>";
        expected += says;
    }
    const Model model =
        readCollada(makeCollada(makeAnimation("arm/turn.ANGLE", "LINEAR", "0 90 30"), libraries, nodes));
    EXPECT_EQ(describeStage(model), expected);
    EXPECT_THAT(model.m_vecWarnings, testing::ElementsAre(testing::HasSubstr("what is not seen in perspective")));
}

TEST(Collada, DamageIsToldWithItsPlace)
{
    struct Case
    {
        std::string m_strText;
        const char* m_szSaid;
    };
    const std::string keys = makeAnimation("arm/turn.ANGLE", "LINEAR", "0 90 30");
    std::string cut = makeCollada(keys);
    cut.resize(cut.size() - 20);
    for (const Case& each :
         {Case{makeCollada(makeAnimation("arm/turn.ANGLE", "LINEAR", "0 90")), "a value per time"},
          Case{makeCollada(makeAnimation("arm/turn.ANGLE", "LINEAR", "0 x 30")), "found \"x\""},
          Case{makeCollada(makeAnimation("arm/turn.ANGLE", "LINEAR", "0 1,2,3 4")), "found \"1,2,3\""},
          Case{cut, "is no XML"}, Case{makeCollada(makeAnimation("arm/turn.Q", "LINEAR", "0 9 3")), "arm/turn.Q"},
          Case{makeCollada(makeAnimation("hand/matrix(9)(9)", "LINEAR", "0 9 3")), "target"},
          Case{makeCollada({},
                           "<library_geometries><geometry id='g'><mesh><vertices id='v'/><triangles><p>0 1 2</p>"
                           "</triangles></mesh></geometry></library_geometries>",
                           "<node><instance_geometry url='#g'/></node>"),
               "an input VERTEX"},
          Case{makeCollada({}, {}, "<node><translate>1 2</translate></node>"), "3 numbers, found 2"},
          Case{"<x/>", "is no COLLADA"}})
    {
        EXPECT_THAT(support::complaintOf([&each] { (void)readCollada(each.m_strText); }),
                    testing::AllOf(testing::HasSubstr("arm.dae"), testing::HasSubstr(each.m_szSaid)));
    }
}
