#include "convert/clip_sampler.h"
#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using namespace convert_test;
using TW2::convert::ClipSampler;

/// A node of three numbers that curves may move: `kind` R or S.
std::string makeNode(int id, const char* kind, double x, double y, double z)
{
    std::ostringstream text;
    text << "\tAnimationCurveNode: " << id << ", \"AnimCurveNode::" << kind << "\", \"\" { Properties70: {\n"
         << "\t\tP: \"d|X\", \"Number\", \"\", \"A\"," << x << "\n\t\tP: \"d|Y\", \"Number\", \"\", \"A\"," << y
         << "\n\t\tP: \"d|Z\", \"Number\", \"\", \"A\"," << z << "\n\t} }\n";
    return text.str();
}

/// A curve whose keys are all of one kind, at whole seconds.
std::string makeCurve(int id, const std::vector<int>& values, const std::string& flags, const std::string& slopes,
                      const std::string& beyond = {})
{
    std::string times;
    std::string numbers;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        times += (i > 0 ? "," : "") + std::to_string(46186158000 * static_cast<long long>(i));
        numbers += (i > 0 ? "," : "") + std::to_string(values[i]);
    }
    const auto list = [](const char* name, const std::string& content)
    { return "\t\t" + std::string(name) + ": *9 { a: " + content + " }\n"; };
    return "\tAnimationCurve: " + std::to_string(id) + ", \"AnimCurve::\", \"\" {\n" + list("KeyTime", times) +
           list("KeyValueFloat", numbers) + list("KeyAttrFlags", flags) + list("KeyAttrDataFloat", slopes) +
           list("KeyAttrRefCount", std::to_string(values.size())) + beyond + "\t}\n";
}

/// A second layer.
std::string makeLayer(const std::string& properties)
{
    return "\tAnimationLayer: 21, \"AnimLayer::more\", \"\" { Properties70: {\n" + properties + "\n\t} }\n";
}

/// A triangle, object 20. `last`: its third corner.
std::string makeTriangle(const char* last = "-3")
{
    return std::string(R"(	Geometry: 20, "Geometry::", "Mesh" {
		Vertices: *9 { a: 0,0,0,1,0,0,0,1,0 }
		PolygonVertexIndex: *3 { a: 0,1,)") +
           last + " }\n\t}\n";
}

/// The weight of a layer that grows from 0 to 100 in a second: objects 24 and 25, and their links to it.
const std::string growingWeight =
    "\tAnimationCurveNode: 24, \"AnimCurveNode::Weight\", \"\" { }\n" + makeCurve(25, {0, 100}, "4", "0,0,0,0");
const std::string weightLinks = "\tC: \"OP\",24,21, \"Weight\"\n\tC: \"OO\",24,21\n\tC: \"OP\",25,24, \"d|Weight\"\n";
const std::string layerLinks = "\tC: \"OO\",21,10\n\tC: \"OO\",22,21\n\tC: \"OP\",22,2, \"Lcl Rotation\"\n";

/// What differs from file to file.
struct Fbx
{
    std::string m_strLower = {};  ///< properties of the lower node
    std::string m_strFlags = "4";
    std::string m_strSlopes = "0,0,0,0";
    std::string m_strBeyond = {};  ///< the keys
    std::string m_strObjects = {};
    std::string m_strLinks = {};
};

/// A text FBX with two nodes, "arm" below "arm", and one curve for the rotation of the lower one around z: 0 degrees at
/// 0 s, 90 at 1 s, 30 at 2 s.
std::string make(const Fbx& fbx)
{
    return R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
	FBXVersion: 7400
}
GlobalSettings:  {
	Properties70: { P: "UpAxis", "int", "Integer", "",1 }
}
Objects:  {
	Model: 1, "Model::arm", "Null" {
		Properties70:  {
			P: "Lcl Translation", "Lcl Translation", "", "A",1,2,3
			P: "InheritType", "enum", "", "",1
		}
	}
	Model: 2, "Model::arm", "LimbNode" {
		Properties70:  {
			P: "InheritType", "enum", "", "",1
)" + fbx.m_strLower +
           R"(
		}
	}
	AnimationStack: 10, "AnimStack::wave", "" {
		Properties70: { P: "LocalStop", "KTime", "Time", "",92372316000 }
	}
	AnimationLayer: 11, "AnimLayer::base", "" { }
)" + makeNode(12, "R", 0, 0, 0) +
           makeCurve(13, {0, 90, 30}, fbx.m_strFlags, fbx.m_strSlopes, fbx.m_strBeyond) + fbx.m_strObjects + R"(}
Connections:  {
	C: "OO",1,0
	C: "OO",2,1
	C: "OO",11,10
	C: "OO",12,11
	C: "OP",12,2, "Lcl Rotation"
	C: "OP",13,12, "d|Z"
)" + fbx.m_strLinks +
           "}\n";
}

Model readFbx(const std::string& text)
{
    const support::TemporaryDirectory directory;
    return TW2::convert::readModel(directory.write("wave.fbx", text), {});
}

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

/// Degrees a quarter of a second into a cubic of Hermite from 0 to 90 with these slopes.
constexpr double hermite(double leaving, double arriving)
{
    return 90.0 * 0.15625 + leaving * 0.140625 - arriving * 0.046875;
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
             Case{"straight from neighbour to neighbour", "8456", "0,0,0,0", 0.25, hermite(90.0, 15.0)},
             Case{"not beyond the keys' values", "24840", "0,0,0,0", 0.25, hermite(0.0, 0.0)},
             Case{"the numbers are no slopes", "24840", "60,60,0,0", 0.25, hermite(0.0, 0.0)},
             Case{"by how far away the neighbours are", "264", "0,0,0,0", 0.25, hermite(90.0, 15.0)},
             Case{"drawn half to what follows", "264", "50,-50,0,0", 0.25, hermite(90.0, -22.5)},
             Case{"as before where both sides differ", "264", "0,50,0,0", 0.25, hermite(90.0, 52.5)},
             Case{"with tension, continuity and bias of nothing", "520", "0,0,0,0", 0.25, hermite(90.0, 15.0)},
             Case{"with tension", "520", "0.5,0,0,0", 0.25, hermite(45.0, 7.5)},
             Case{"with slopes of the user", "1032", "60,60,0,0", 0.25, hermite(60.0, 60.0)},
         })
    {
        const Fbx fbx{.m_strFlags = one.m_szFlags, .m_strSlopes = one.m_szNumbers};
        EXPECT_LT(missTurn(fbx, one.m_dSeconds, one.m_dDegrees), 1e-9) << one.m_szWhat;
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
          Case{"R", 1, 5.0, 30.0}, Case{"R", 0, 2.5, 30.0}, Case{"A", -1, -0.5, 30.0, "Pre"},
          Case{"K", -1, -0.5, -45.0, "Pre"}})
    {
        const std::string beyond = "\t\t" + std::string(each.m_szSide) +
                                   "-Extrapolation: {\n\t\t\tType: " + each.m_szType +
                                   "\n\t\t\tRepetition: " + std::to_string(each.m_iTimes) + "\n\t\t}\n";
        EXPECT_LT(missTurn({.m_strBeyond = beyond}, each.m_dSeconds, each.m_dDegrees), 1e-9)
            << each.m_szType << " at " << each.m_dSeconds;
    }
}

TEST(Fbx, CamerasWithoutPerspectiveAreLeftOutAndTold)
{
    std::string objects;
    std::string links;
    for (const char* kind : {"0", "1"})
    {
        objects += std::string("\tModel: 4") + kind + ", \"Model::eye" + kind + "\", \"Camera\" {\n\t}\n" +
                   "\tNodeAttribute: 5" + kind + R"(, "NodeAttribute::", "Camera" {
		Properties70:  {
			P: "FieldOfView", "FieldOfView", "", "A",50
			P: "CameraProjectionType", "enum", "", "",)" +
                   kind + "\n\t\t}\n\t}\n";
        links += std::string("\tC: \"OO\",4") + kind + ",0\n\tC: \"OO\",5" + kind + ",4" + kind + "\n";
    }
    const Model model = readFbx(make({.m_strObjects = objects, .m_strLinks = links}));
    ASSERT_EQ(model.m_vecCameras.size(), 1U);
    EXPECT_EQ(model.m_vecCameras[0].m_fHorizontalAngle, 50.0F);
    EXPECT_THAT(model.m_vecWarnings, testing::ElementsAre(testing::HasSubstr("camera \"eye1\": left out")));
}

TEST(Fbx, PivotsAndPreRotationsArePartOfTheMatrix)
{
    const std::string pivots = R"(			P: "Lcl Translation", "Lcl Translation", "", "A",5,0,0
			P: "PreRotation", "Vector3D", "Vector", "",0,0,20
			P: "PostRotation", "Vector3D", "Vector", "",0,0,5
			P: "RotationPivot", "Vector3D", "Vector", "",1,0,0
			P: "RotationOffset", "Vector3D", "Vector", "",0,2,0)";
    const Matrixd expected =
        move(-1, 0, 0) * turnZ(-5.0) * turnZ(90.0) * turnZ(20.0) * move(1, 0, 0) * move(0, 2, 0) * move(5, 0, 0);
    EXPECT_LT(largestDifference(sampleLower(make({.m_strLower = pivots}), 1.0), expected), 1e-9);
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
    };
    // The first layer turns the node to 90 degrees in the first second; the second one says 40 degrees and a scale
    // of 4.
    for (const Case& one : {
             Case{"added", "", 1.0, 130.0, 4.0},
             Case{"added angle by angle", R"(P: "RotationAccumulationMode", "enum", "", "",1)", 1.0, 130.0, 4.0},
             Case{"half of it", R"(P: "Weight", "Number", "", "A",50)", 1.0, 110.0, 2.0},
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
         })
    {
        const bool grows = std::string_view(one.m_szLayer).find("A+") != std::string_view::npos;
        const std::string text = make({.m_strObjects = makeLayer(one.m_szLayer) + makeNode(22, "R", 0, 0, 40) +
                                                       makeNode(23, "S", 4, 4, 4) + growingWeight,
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
        for (const double middle : {90.0, 120.0})
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

TEST(Fbx, WhatNoBoneMovesHangsOnTheMeshsNodeAndBonesWithoutAMatrixAreBoundAtRest)
{
    const std::string objects = makeTriangle() + R"(	Model: 21, "Model::shown", "Mesh" {
		Properties70: { P: "Lcl Translation", "Lcl Translation", "", "A",7,0,0 }
	}
	Deformer: 30, "Deformer::", "Skin" { }
	Deformer: 31, "SubDeformer::", "Cluster" {
		Indexes: *1 { a: 1 }
		Weights: *1 { a: 0.5 }
	}
)";
    const std::string links =
        "\tC: \"OO\",21,0\n\tC: \"OO\",20,21\n\tC: \"OO\",30,20\n\tC: \"OO\",31,30\n\tC: \"OO\",2,31\n";
    const Model model = readFbx(make({.m_strObjects = objects, .m_strLinks = links}));
    const std::vector<Bone>& bones = model.m_vecMeshes.at(0).m_vecBones;
    ASSERT_EQ(bones.size(), 2U);
    EXPECT_EQ(bones[0].m_vecWeights.size(), 1U);
    EXPECT_LT(largestDifference(bones[0].m_offset, move(6, -2, 3)), 1e-12) << "(7, 0, 0) seen from (1, 2, -3)";
    EXPECT_EQ(model.m_vecNodes.at(static_cast<std::size_t>(bones[1].m_iNode)).m_strName, "shown");
    EXPECT_TRUE(bones[1].m_bHolder);
    EXPECT_EQ(bones[1].m_vecWeights.size(), 2U);
    EXPECT_LT(largestDifference(bones[1].m_offset, Matrixd()), 1e-12);
}

namespace
{
/// A model whose triangle has a material with these properties. Each of `maps` is what a texture is linked to, which
/// shows the picture red.png, one red pixel in the file.
Model readMaterial(const std::string& properties, const std::vector<std::string>& maps = {},
                   const std::string& texture = {})
{
    Fbx fbx{.m_strObjects = makeTriangle() + R"(	Model: 21, "Model::shown", "Mesh" { }
	Material: 22, "Material::skin", "" { Properties70: {
)" + properties + R"(
	} }
	LayeredTexture: 23, "LayeredTexture::", "" { }
	Texture: 24, "Texture::", "" {
		Properties70: {
)" + texture + R"(
		}
		FileName: "C:\nowhere\red.png"
		RelativeFilename: "red.png"
	}
	Video: 25, "Video::", "Clip" {
		Content: ,
 "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1Pe",
 "AAAADElEQVR4nGP4z8AAAAMBAQDJ/pLvAAAAAElFTkSuQmCC"
	}
)",
            .m_strLinks = R"(	C: "OO",21,0
	C: "OO",20,21
	C: "OO",22,21
	C: "OO",24,23
	C: "OO",25,24
)"};
    for (const std::string& map : maps)
    {
        // The first of several lies in layers.
        fbx.m_strLinks += "\tC: \"OP\"," + std::string(&map == maps.data() ? "23" : "24") + ",22, \"" + map + "\"\n";
    }
    return readFbx(make(fbx));
}

/// What a surface says, colours from 0 to 255.
std::string describe(const Model& model)
{
    const TW2::convert::Surface& surface = model.m_vecSurfaces.at(0);
    std::ostringstream text;
    text << std::setprecision(4);
    for (const auto& [name, color] : {std::pair("diffuse", surface.m_diffuse),
                                      {", specular", surface.m_specular},
                                      {", emissive", surface.m_emissive}})
    {
        text << name << ' ' << color.red << ' ' << color.green << ' ' << color.blue;
    }
    text << ", shininess " << surface.m_fShininess << ", opacity " << surface.m_fOpacity;
    for (const auto& [name, texture] : {std::pair("diffuse", &surface.m_diffuseTexture),
                                        {"opacity", &surface.m_opacityTexture},
                                        {"emissive", &surface.m_emissiveTexture}})
    {
        text << (texture->isUsed() ? std::string(", ") + name + " map" : "");
    }
    for (const std::string& warning : model.m_vecWarnings)
    {
        text << "; " << warning.substr(warning.rfind(": ") + 2);
    }
    return text.str();
}
}  // namespace

TEST(Fbx, ASurfaceIsWhatItsPropertiesAndMapsSay)
{
    const auto color = [](const std::string& name, const char* rgb)
    { return "P: \"" + name + "\", \"Color\", \"\", \"A\"," + rgb + "\n"; };
    const auto number = [](const std::string& name, const char* value)
    { return "P: \"" + name + "\", \"Number\", \"\", \"A\"," + value + "\n"; };
    struct Case
    {
        std::string m_strProperties;
        std::vector<std::string> m_vecMaps;
        std::string m_strExpected;
    };
    const std::string rest = ", specular 0 0 0, emissive 0 0 0, shininess 0, opacity 1";
    const std::string plain = "diffuse 204 204 204" + rest;
    std::vector<Case> cases{
        {"", {}, plain},
        {color("DiffuseColor", "1,0.8,0.4") + number("DiffuseFactor", "0.5"), {}, "diffuse 127.5 102 51" + rest},
        {color("SpecularColor", "1,0.8,0.4") + number("SpecularFactor", "0.25") + number("ShininessExponent", "20") +
             number("Shininess", "7") + color("EmissiveColor", "0.2,0.4,0.6") + number("EmissiveFactor", "0.5"),
         {},
         "diffuse 204 204 204, specular 63.75 51 25.5, emissive 25.5 51 76.5, shininess 20, opacity 1"},
        {number("Shininess", "7"), {}, "diffuse 204 204 204, specular 0 0 0, emissive 0 0 0, shininess 7, opacity 1"},
        {number("TransparencyFactor", "0.5"), {}, plain},
        {color("TransparentColor", "0.2,0.4,0.9"), {}, plain.substr(0, plain.size() - 1) + "0.5"},
        {color("TransparentColor", "0.2,0.4,0.9") + number("TransparencyFactor", "0.5"),
         {},
         plain.substr(0, plain.size() - 1) + "0.75"},
        {color("TransparentColor", "0.2,0.4,0.9") + number("Opacity", "0.25"),
         {},
         plain.substr(0, plain.size() - 1) + "0.25"},
        {color("DiffuseColor", "1,0,0"), {"DiffuseColor"}, "diffuse 255 255 255" + rest + ", diffuse map"},
        {color("EmissiveColor", "0,0,0"),
         {"EmissiveColor"},
         "diffuse 204 204 204, specular 0 0 0, emissive 255 255 255, shininess 0, opacity 1, emissive map"},
        {"", {"TransparentColor"}, plain + ", opacity map"},
        {"", {"TransparencyFactor"}, plain + ", opacity map"},
        {"",
         {"NormalMap", "Bump", "SpecularColor", "SpecularFactor", "ShininessExponent", "AmbientColor",
          "ReflectionColor", "DisplacementColor"},
         plain + "; the normal map; the bump map; the map of its highlights; the map of its shininess; the map of its "
                 "ambient "
                 "colour; the reflection map; the displacement map"}};
    for (const auto& [base, map] : {std::pair("Maya|base_color", "Maya|TEX_color_map"),
                                    {"Maya|baseColor", "Maya|baseColor"},
                                    {"3dsMax|Parameters|base_color", "3dsMax|Parameters|base_color_map"},
                                    {"3dsMax|main|basecolor", "3dsMax|main|base_color_map"},
                                    {"3dsMax|main|baseColor", "3dsMax|main|baseColorMap"}})
    {
        cases.push_back({color("DiffuseColor", "1,0,0") + color(base, "1,0.8,0.4"), {}, "diffuse 255 204 102" + rest});
        cases.push_back({"", {map}, "diffuse 255 255 255" + rest + ", diffuse map"});
    }
    for (const Case& each : cases)
    {
        EXPECT_EQ(describe(readMaterial(each.m_strProperties, each.m_vecMaps)), each.m_strExpected)
            << each.m_strProperties << testing::PrintToString(each.m_vecMaps);
    }
}

TEST(Fbx, PicturesInTheFileLieAsTheFileSays)
{
    const Model model = readMaterial("", {"DiffuseColor"}, R"(P: "WrapModeU", "enum", "", "",1
			P: "Scaling", "Vector", "", "A",2,4,1
			P: "Translation", "Vector", "", "A",0.5,0.25,0)");
    ASSERT_EQ(model.m_vecPictures.size(), 1U) << testing::PrintToString(model.m_vecWarnings);
    EXPECT_EQ(model.m_vecPictures[0].m_uiWidth, 1U);
    const TW2::convert::Texture& texture = model.m_vecSurfaces.at(0).m_diffuseTexture;
    EXPECT_EQ(texture.m_eWrapU, TW2::convert::Wrap::Clamp);
    EXPECT_EQ(texture.m_eWrapV, TW2::convert::Wrap::Repeat);
    const std::array<std::array<double, 2>, 3> lies{{{2.0, 0.0}, {0.0, 4.0}, {0.5, -3.25}}};
    EXPECT_EQ(texture.m_transform, lies) << "v counts downwards";
    const Model other = readMaterial("", {"DiffuseColor"}, R"(P: "WrapModeV", "enum", "", "",1
			P: "Rotation", "Vector", "", "A",0,0,9)");
    EXPECT_EQ(other.m_vecSurfaces.at(0).m_diffuseTexture.m_eWrapV, TW2::convert::Wrap::Clamp);
    EXPECT_THAT(other.m_vecWarnings, testing::ElementsAre(testing::HasSubstr("the rotation of its texture")));
}

TEST(Fbx, DamageIsToldWithItsPlace)
{
    const std::string good = make({});
    std::string old = good;
    old.replace(old.find("FBXVersion: 7400"), 16, "FBXVersion: 5800");
    const std::string cut = good.substr(0, good.find("Connections")) + "Connections:  {\n\tC: \"OO\n";
    for (const auto& [text, said] :
         {std::pair(old, std::string("wave.fbx: is FBX of version 5.8: version 6 and newer are read")),
          {make({.m_strObjects = makeTriangle("-4"), .m_strLinks = "\tC: \"OO\",20,2\n"}),
           "polygons between points that the geometry has"},
          {cut, "wave.fbx: line " + std::to_string(std::count(cut.begin(), cut.end(), '\n')) +
                    ": expected a closing quotation mark"}})
    {
        EXPECT_THAT(support::complaintOf([&text = text] { (void)readFbx(text); }), testing::HasSubstr(said));
    }
}
