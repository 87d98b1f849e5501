#include "convert/clip_sampler.h"
#include "tests/convert/fbx_builder.h"
#include "tests/support/gltf_character.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

namespace
{
using namespace fbx_test;
using support::length;
using support::Vec;
using TW2::convert::ClipSampler;

/// A second layer.
std::string makeLayer(const std::string& properties)
{
    return "\tAnimationLayer: 21, \"AnimLayer::more\", \"\" { Properties70: {\n" + properties + "\n\t} }\n";
}

/// The weight of a layer that grows from 0 to 100 in a second: objects 24 and 25, and their links to it.
const std::string growingWeight =
    "\tAnimationCurveNode: 24, \"AnimCurveNode::Weight\", \"\" { }\n" + makeCurve(25, {0, 100}, "4", "0,0,0,0");
const std::string weightLinks = "\tC: \"OP\",24,21, \"Weight\"\n\tC: \"OO\",24,21\n\tC: \"OP\",25,24, \"d|Weight\"\n";
const std::string layerLinks = "\tC: \"OO\",21,10\n\tC: \"OO\",22,21\n\tC: \"OP\",22,2, \"Lcl Rotation\"\n";

/// The lower node's local matrix at a time.
Matrixd sampleLower(const std::string& text, double seconds)
{
    const Model model = readFbx(text);
    EXPECT_EQ(model.m_vecNodes.size(), 2U);
    EXPECT_EQ(model.m_vecNodes[1].m_strName, "arm") << "names are as in the file";
    EXPECT_EQ(model.m_vecClips.size(), 1U);
    return ClipSampler(model, model.m_vecClips.at(0)).sample(1, seconds);
}
/// How far the lower node is from a turn about z at a time, which is the same when z is mirrored.
double missTurn(const Fbx& fbx, double seconds, double degrees)
{
    return largestDifference(sampleLower(make(fbx), seconds), turnZ(degrees));
}

/// Degrees a quarter of the way along a cubic of Hermite with these slopes.
constexpr double hermite(double leaving, double arriving, double from = 0.0, double to = 90.0, double seconds = 1.0)
{
    return from + (to - from) * 0.15625 + seconds * (leaving * 0.140625 - arriving * 0.046875);
}
}  // namespace

TEST(Fbx, KeysOfEveryKindAreWhatTheFileMeans)
{
    struct Case
    {
        const char* m_szWhat;
        const char* m_szFlags;
        const char* m_szNumbers;
        double m_dSeconds;
        double m_dDegrees;
    };
    // The keys are 0 at 0 s, 90 at 1 s, 30 at 2 s.
    for (const Case& one : {
             Case{"straight", "4", "0,0,0,0", 0.5, 45.0},
             Case{"a step", "2", "0,0,0,0", 0.9, 0.0},
             Case{"a step at its key", "2", "0,0,0,0", 1.0, 90.0},
             Case{"a step to the next value", "258", "0,0,0,0", 0.1, 90.0},
             Case{"flags that no whole number is", "1e300", "0,0,0,0", 0.5, 45.0},
             Case{"a cubic", "8", "60,60,0,0", 0.5, 45.0},
             Case{"a cubic at a quarter", "8", "60,60,0,0", 0.25, hermite(60.0, 60.0)},
             // 60.0F, and weights of a third as two numbers of 16 bits in ten-thousandths.
             Case{"numbers that are the bits of floats", "8", "1114636288,1114636288,218434821,0", 0.25,
                  hermite(60.0, 60.0)},
             Case{"the numbers are no slopes", "24840", "60,60,0,0", 0.25, hermite(0.0, 0.0)},
             Case{"with slopes of the user", "1032", "60,60,0,0", 0.25, hermite(60.0, 60.0)},
         })
    {
        const Fbx fbx{.m_strFlags = one.m_szFlags, .m_strSlopes = one.m_szNumbers};
        EXPECT_LT(missTurn(fbx, one.m_dSeconds, one.m_dDegrees), 1e-9) << one.m_szWhat;
    }
}

TEST(Fbx, StepsAndKeysOfOneTimeJump)
{
    struct Case
    {
        const char* m_szFlags;
        std::vector<int> m_vecValues;
        std::vector<double> m_vecSeconds;
        std::vector<double> m_vecJumps;
    };
    for (const auto& [flags, values, seconds, jumps] :
         {Case{"4", {0, 90, 30}, {0, 1, 2}, {}}, Case{"2", {0, 90, 30}, {0, 1, 2}, {1, 2}},
          Case{"2", {0, 90, 90}, {0, 1, 2}, {1}}, Case{"258", {0, 90, 30}, {0, 1, 2}, {0, 1}},
          Case{"4", {0, 90, 30}, {0, 1, 1}, {1}}})
    {
        const Model model = readFbx(make({.m_strFlags = flags, .m_vecValues = values, .m_vecSeconds = seconds}));
        EXPECT_EQ(ClipSampler(model, model.m_vecClips.at(0)).findJumps(1), jumps) << flags;
        std::vector<double> times;
        TW2::convert::addKeyTimes(model.m_vecClips[0].m_vecChannels.at(0), times);
        EXPECT_EQ(times, seconds);
    }
    // What does not say how long it is goes from its first key to its last.
    std::string text = make({.m_vecSeconds = {1, 2, 4}});
    text.replace(text.find("\"LocalStop\""), 11, "\"Other\"");
    EXPECT_EQ(readFbx(text).m_vecClips.at(0).m_dDuration, 3.0);
    EXPECT_LT(largestDifference(sampleLower(text, 0.5), turnZ(45.0)), 1e-9);
}

TEST(Fbx, AnglesThatAFrameSaysInAnotherWayGoNoWayRound)
{
    // From 170 degrees to -170 within a frame, which is a turn of 20, within more, and by what may be meant.
    for (const auto& [to, seconds, at, degrees] : {std::tuple(-170, 0.05, 0.5, 85.0),
                                                   {-170, 0.05, 1.0, 170.0},
                                                   {-170, 0.05, 1.02, 178.0},
                                                   {-170, 0.05, 1.05, -170.0},
                                                   {-170, 0.08, 1.02, 85.0},
                                                   {60, 0.05, 1.02, 126.0}})
    {
        EXPECT_LT(missTurn({.m_vecValues = {0, 170, to}, .m_vecSeconds = {0, 1, 1 + seconds}}, at, degrees), 1e-6)
            << to << " at " << at;
    }
}

TEST(Fbx, SlopesThatAreLeftToTheProgramGoByTheKeysAroundThem)
{
    struct Case
    {
        const char* m_szFlags;  // 264: automatic, and 4096: level, 8192: whatever the times, 16384: within the values
        const char* m_szNumbers;
        std::array<double, 4> m_slopes;  // behind and before each of the two pieces' ends
        std::vector<int> m_vecValues{0, 90, 30};
    };
    // The keys are at 0 s, 1 s and 3 s.
    for (const Case& each :
         {Case{"264", "0,0,0,0", {90, 30, 30, -30}}, Case{"8456", "0,0,0,0", {90, 10, 10, -30}},
          Case{"264", "50,-50,0,0", {90, 0, 0, -30}}, Case{"264", "-50,50,0,0", {90, 60, 60, -30}},
          Case{"264", "50,50,0,0", {90, 60, 0, -30}}, Case{"264", "1,-1,0,0", {90, 29.4, 29.4, -30}},
          Case{"8456", "50,-50,0,0", {90, 10, 10, -30}}, Case{"264", "700,-700,0,0", {250, -550, -550, 130}},
          Case{"8456", "700,-700,0,0", {90, 10, 10, -30}}, Case{"264", "0,0,0,0", {90, 45, 45, 0}, {0, 90, 90}},
          Case{"4360", "0,0,0,0", {90, 0, 0, 0}, {0, 90, 90}}, Case{"4360", "0,0,0,0", {0, 0, 0, 30}, {30, 30, 90}},
          Case{"4360", "0,0,0,0", {90, 30, 30, -30}},
          Case{"24840", "0,0,0,0", {0, 100.0 / 3.0, 100.0 / 3.0, 0}, {0, 60, 100}},
          Case{"24840", "0,0,0,0", {0, 15, 15, 0}, {0, 90, 100}},
          Case{"24840", "0,0,0,0", {0, -15, -15, 0}, {0, -5, -100}}, Case{"24840", "0,0,0,0", {0, 0, 0, 0}},
          Case{"1288", "60,40,0,0", {60, 40, 60, 40}}, Case{"520", "0.5,0.25,0.2,0", {27, 12.75, 29.25, -13.5}}})
    {
        const auto& [from, middle, to] = std::tie(each.m_vecValues[0], each.m_vecValues[1], each.m_vecValues[2]);
        const auto& [leaving, arriving, then, last] = each.m_slopes;
        const Fbx fbx{.m_strFlags = each.m_szFlags,
                      .m_strSlopes = each.m_szNumbers,
                      .m_vecValues = each.m_vecValues,
                      .m_vecSeconds = {0, 1, 3}};
        EXPECT_LT(missTurn(fbx, 0.25, hermite(leaving, arriving, from, middle)), 1e-9)
            << each.m_szFlags << " with " << each.m_szNumbers << " to " << middle;
        EXPECT_LT(missTurn(fbx, 1.5, hermite(then, last, middle, to, 2.0)), 1e-9)
            << each.m_szFlags << " with " << each.m_szNumbers << " from " << middle;
    }
}

TEST(Fbx, ACurveGoesOnBeyondItsKeysAsTheFileSays)
{
    struct Case
    {
        const char* m_szType;
        int m_iTimes;
        double m_dSeconds;  // the keys are 0 at 0 s, 90 at 1 s, 30 at 2 s
        double m_dDegrees;
        const char* m_szSide = "Post";
    };
    for (const Case& each :
         {Case{"C", -1, 2.5, 30.0}, Case{"K", -1, 2.5, 0.0}, Case{"R", -1, 2.5, 45.0}, Case{"R", -1, 5.0, 90.0},
          Case{"M", -1, 2.5, 60.0}, Case{"M", -1, 4.5, 45.0}, Case{"A", -1, 2.5, 75.0}, Case{"A", -1, 5.0, 150.0},
          Case{"R", 1, 5.0, 30.0}, Case{"R", -2, 5.0, 90.0}, Case{"R", 0, 2.5, 30.0}, Case{"A", -1, -0.5, 30.0, "Pre"},
          Case{"K", -1, -0.5, -45.0, "Pre"}})
    {
        const std::string beyond =
            "\t\t" + std::string(each.m_szSide) + "-Extrapolation: {\n\t\t\tType: " + each.m_szType +
            (each.m_iTimes < -1 ? "" : "\n\t\t\tRepetition: " + std::to_string(each.m_iTimes)) + "\n\t\t}\n";
        EXPECT_LT(missTurn({.m_strBeyond = beyond}, each.m_dSeconds, each.m_dDegrees), 1e-9)
            << each.m_szType << " at " << each.m_dSeconds;
    }
}

TEST(Fbx, EveryPartOfANodesMatrixStandsWhereTheFormatPutsIt)
{
    const Vec translation{5, -1, 2};
    const Vec offset{0.5, 2, -0.25};
    const Vec pivot{1, 0.5, -2};
    const Vec before{20, -35, 50};
    const Vec after{5, 25, -15};
    const Vec scaling{2, 3, 0.5};
    const Vec scalingOffset{-1, 0.75, 0.5};
    const Vec scalingPivot{0.5, -2, 1.5};
    std::string lower;
    for (const auto& [name, v] : {std::pair("Lcl Translation", translation),
                                  {"RotationOffset", offset},
                                  {"RotationPivot", pivot},
                                  {"PreRotation", before},
                                  {"PostRotation", after},
                                  {"Lcl Scaling", scaling},
                                  {"ScalingOffset", scalingOffset},
                                  {"ScalingPivot", scalingPivot}})
    {
        std::ostringstream line;
        line << "P: \"" << name << "\", \"Vector3D\", \"Vector\", \"\"," << v.x << "," << v.y << "," << v.z << "\n";
        lower += line.str();
    }
    const auto turnAbout = [](Vec point, const Vec& degrees, const std::string& order)
    {
        for (const char axis : order)
        {
            point = axis == 'x'   ? turn(support::about({1, 0, 0}, degrees.x), point)
                    : axis == 'y' ? turn(support::about({0, 1, 0}, degrees.y), point)
                                  : turn(support::about({0, 0, 1}, degrees.z), point);
        }
        return point;
    };
    const std::array<std::string, 7> orders{"xyz", "xzy", "yzx", "yxz", "zxy", "zyx", "xyz"};
    for (std::size_t order = 0; order < orders.size(); ++order)
    {
        const Matrixd local =
            sampleLower(make({.m_strLower = lower + R"(P: "RotationOrder", "enum", "", "",)" + std::to_string(order),
                              .m_dX = 30,
                              .m_dY = -70}),
                        0.5);
        for (const Vec& point : {Vec{}, Vec{1, 2, 3}, Vec{-2, 0.5, 1}, Vec{0.3, -1, 2}})
        {
            const Vec centred = point - scalingPivot;
            Vec expected = Vec{centred.x * scaling.x, centred.y * scaling.y, centred.z * scaling.z} + scalingPivot +
                           scalingOffset - pivot;
            expected = turnAbout(expected, after * -1.0, "zyx");
            expected = turnAbout(expected, {30, -70, 45}, orders[order]);
            expected = turnAbout(expected, before, "xyz") + pivot + offset + translation;
            const Vector3d is = local.transformPoint({point.x, point.y, -point.z});
            EXPECT_LT(length(Vec{is.x, is.y, -is.z} - expected), 1e-9) << orders[order];
        }
    }
}

TEST(Fbx, FurtherLayersAreBlendedAsTheFileSays)
{
    struct Case
    {
        const char* m_szWhat;
        const char* m_szLayer;
        double m_dSeconds;
        double m_dDegrees;
        double m_dScale;
        double m_dBelow = 1.0;
        double m_dOwn = 4.0;
    };
    // The first layer turns the node to 90 degrees in the first second; the second one says 40 degrees and, unless
    // said otherwise, a scale of 4.
    for (const Case& one : {
             Case{"added", "", 1.0, 130.0, 4.0},
             Case{"added angle by angle", R"(P: "RotationAccumulationMode", "enum", "", "",1)", 1.0, 130.0, 4.0},
             Case{"half of it", R"(P: "Weight", "Number", "", "A",50)", 1.0, 110.0, 2.0},
             Case{"more than it", R"(P: "Weight", "Number", "", "A",150)", 1.0, 130.0, 4.0},
             Case{"scales added", R"(P: "ScaleAccumulationMode", "enum", "", "",1)", 1.0, 130.0, 5.0},
             Case{"covering", R"(P: "BlendMode", "enum", "", "",1)", 1.0, 40.0, 4.0},
             Case{"covering, whatever its weight", R"(P: "BlendMode", "enum", "", "",1
			P: "Weight", "Number", "", "A",25)",
                  1.0, 40.0, 4.0},
             Case{"covering half", R"(P: "BlendMode", "enum", "", "",2
			P: "Weight", "Number", "", "A",50)",
                  1.0, 65.0, 2.0},
             Case{"covering half, scales evenly", R"(P: "BlendMode", "enum", "", "",2
			P: "Weight", "Number", "", "A",50
			P: "ScaleAccumulationMode", "enum", "", "",1)",
                  1.0, 65.0, 2.5},
             Case{"not blended", R"(P: "BlendModeBypass", "ULongLong", "", "",16384
			P: "Weight", "Number", "", "A",25)",
                  1.0, 40.0, 4.0},
             Case{"other properties not blended", R"(P: "BlendModeBypass", "ULongLong", "", "",16760831)", 1.0, 130.0,
                  4.0},
             Case{"mute", R"(P: "Mute", "bool", "", "",1)", 1.0, 90.0, 1.0},
             Case{"alone", R"(P: "Solo", "bool", "", "",1)", 1.0, 40.0, 4.0},
             Case{"mute and alone", R"(P: "Solo", "bool", "", "",1
			P: "Mute", "bool", "", "",1)",
                  1.0, 90.0, 1.0},
             Case{"a weight that grows", R"(P: "Weight", "Number", "", "A+",7)", 0.5, 65.0, 2.0},
             Case{"mirrored", "", 1.0, 130.0, -4.0, 1.0, -4.0},
             Case{"mirrored below", "", 1.0, 130.0, -8.0, -2.0},
             Case{"mirrored twice", "", 1.0, 130.0, 8.0, -2.0, -4.0},
             Case{"covering half of what is mirrored", R"(P: "BlendMode", "enum", "", "",2
			P: "Weight", "Number", "", "A",50)",
                  1.0, 65.0, 2.0, -1.0},
             Case{"mirrored without weight", R"(P: "Weight", "Number", "", "A",0)", 1.0, 90.0, 1.0, 1.0, -4.0},
         })
    {
        const bool grows = std::string_view(one.m_szLayer).find("A+") != std::string_view::npos;
        const std::string below = std::to_string(one.m_dBelow);
        const std::string text =
            make({.m_strLower = R"(P: "Lcl Scaling", "Lcl Scaling", "", "A",)" + below + "," + below + "," + below,
                  .m_strObjects = makeLayer(one.m_szLayer) + makeNode(22, "R", 0, 0, 40) +
                                  makeNode(23, "S", one.m_dOwn, one.m_dOwn, one.m_dOwn) + growingWeight,
                  .m_strLinks = layerLinks + (grows ? weightLinks : "") +
                                "\tC: \"OO\",23,21\n\tC: \"OP\",23,2, \"Lcl Scaling\"\n"});
        EXPECT_LT(largestDifference(sampleLower(text, one.m_dSeconds), scale(one.m_dScale) * turnZ(one.m_dDegrees)),
                  1e-6)
            << one.m_szWhat;
    }
}

TEST(Fbx, ARotationThatALayerAddsComesBeforeTheOneBelowInEveryOrderOfAngles)
{
    // About x by 30 degrees, seen with z mirrored.
    Matrixd tilt;
    tilt.setRow(1, {0.0, std::cos(std::numbers::pi / 6.0), -0.5});
    tilt.setRow(2, {0.0, 0.5, std::cos(std::numbers::pi / 6.0)});
    for (int order = 0; order < 6; ++order)
    {
        const std::string text = make({.m_strLower = R"(P: "RotationOrder", "enum", "", "",)" + std::to_string(order),
                                       .m_strObjects = makeLayer("") + makeNode(22, "R", 30, 0, 0),
                                       .m_strLinks = layerLinks});
        EXPECT_LT(largestDifference(sampleLower(text, 0.5), tilt * turnZ(45.0)), 1e-6) << "order " << order;
    }
}

TEST(Fbx, ALayerThatCoversMoreAndMoreEndsInItsOwnAngles)
{
    // Over a second the second layer's angles take the place of the first one's. Of some the middle one is upright, of
    // others it is beyond that.
    const auto readLayer = [](int mode, int order, double middle)
    {
        return readFbx(make({.m_strLower = R"(P: "RotationOrder", "enum", "", "",)" + std::to_string(order),
                             .m_strObjects = makeLayer(R"(P: "BlendMode", "enum", "", "",)" + std::to_string(mode) +
                                                       "\n\t\tP: \"Weight\", \"Number\", \"\", \"A+\",7") +
                                             makeNode(22, "R", -45, middle, 0) + growingWeight,
                             .m_strLinks = layerLinks + weightLinks}));
    };
    for (int order = 0; order < 6; ++order)
    {
        for (const double middle : {90.0, 120.0, -90.0})
        {
            const Model blended = readLayer(2, order, middle);
            const Model covered = readLayer(1, order, middle);
            const ClipSampler sampler(blended, blended.m_vecClips.at(0));
            const Matrixd end = ClipSampler(covered, covered.m_vecClips.at(0)).sample(1, 1.0);
            EXPECT_LT(largestDifference(sampler.sample(1, 1.0), end), 1e-6) << "order " << order << ", " << middle;
            EXPECT_LT(largestDifference(sampler.sample(1, 0.9999), end), 0.03) << "order " << order << ", " << middle;
        }
    }
}

TEST(Fbx, ANodeWhoseRotationSpaceIsOffTurnsWithoutIt)
{
    const std::string space = R"(			P: "PreRotation", "Vector3D", "Vector", "",20,0,0
			P: "PostRotation", "Vector3D", "Vector", "",0,5,0
			P: "RotationOrder", "enum", "", "",5
)";
    for (const char* off :
         {R"(P: "RotationActive", "bool", "", "",0)", R"(P: "RotationSpaceForLimitOnly", "bool", "", "",1)"})
    {
        EXPECT_LT(missTurn({.m_strLower = space + off}, 1.0, 90.0), 1e-9) << off;
    }
    EXPECT_GT(missTurn({.m_strLower = space + R"(P: "RotationActive", "bool", "", "",1)"}, 1.0, 90.0), 0.1);
}

TEST(Fbx, ANodeWithoutItsParentsScaleStandsWhereThatPutsIt)
{
    // The later of two properties with one name holds.
    std::string text = make({.m_strLower = R"(			P: "InheritType", "enum", "", "",2
			P: "Lcl Translation", "Lcl Translation", "", "A",5,0,0
			P: "RotationPivot", "Vector3D", "Vector", "",1,0,0)"});
    const std::string upper = R"(P: "Lcl Translation", "Lcl Translation", "", "A",1,2,3)";
    text.replace(text.find(upper), upper.size(),
                 upper + "\n\t\t\tP: \"Lcl Scaling\", \"Lcl Scaling\", \"\", \"A\",2,4,8");
    const Matrixd whole = move(-1, 0, 0) * turnZ(90.0) * move(1, 0, 0) * move(5, 0, 0);
    Matrixd expected = whole;
    for (int row = 0; row < 3; ++row)
    {
        const Vector3d axis = whole.getRow(row);
        expected.setRow(row, {axis.x / 2.0, axis.y / 4.0, axis.z / 8.0});
    }
    EXPECT_LT(largestDifference(sampleLower(text, 1.0), expected), 1e-9);
}

TEST(Fbx, BelowAScaleThatBecomesUnevenRotationsComeFirstWhereTheFileSaysSo)
{
    const Matrixd lower =
        sampleLower(make({.m_strLower = R"(P: "InheritType", "enum", "", "",0)",
                          .m_strObjects = makeNode(22, "S", 1, 1, 1) + makeCurve(25, {1, 3}, "4", "0,0,0,0"),
                          .m_strLinks = "\tC: \"OO\",22,11\n\tC: \"OP\",22,1, \"Lcl Scaling\"\n"
                                        "\tC: \"OP\",25,22, \"d|X\"\n"}),
                    1.0);
    Matrixd wide;
    wide.m[0][0] = 3.0;
    EXPECT_LT(largestDifference(lower, wide * turnZ(90.0) * wide.inverse()), 1e-9);
}
