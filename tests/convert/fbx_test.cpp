#include "convert/clip_sampler.h"
#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/temporary_directory.h"

#include <platform/runtime/exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
using namespace convert_test;
using TW2::convert::ClipSampler;

/// The weight of a layer that grows from 0 to 100 in a second: objects 24 and 25, to be linked to it.
const std::string growingWeight = R"(	AnimationCurveNode: 24, "AnimCurveNode::Weight", "" {
	}
	AnimationCurve: 25, "AnimCurve::", "" {
		KeyTime: *2 {
			a: 0,46186158000
		}
		KeyValueFloat: *2 {
			a: 0,100
		}
		KeyAttrFlags: *1 {
			a: 4
		}
		KeyAttrDataFloat: *4 {
			a: 0,0,0,0
		}
		KeyAttrRefCount: *1 {
			a: 2
		}
	}
)";

/// A text FBX with two nodes, "arm" below "arm", and one curve for the rotation of the lower one around z: 0 degrees at
/// 0 s, 90 at 1 s, 30 at 2 s.
std::string makeFbx(const std::string& propertiesOfLower, const std::string& flags, const std::string& slopes,
                    const std::string& beyond = {}, const std::string& objects = {}, const std::string& links = {})
{
    return R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
	FBXVersion: 7400
}
GlobalSettings:  {
	Properties70:  {
		P: "UpAxis", "int", "Integer", "",1
	}
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
)" + propertiesOfLower +
           R"(
		}
	}
	AnimationStack: 10, "AnimStack::wave", "" {
		Properties70:  {
			P: "LocalStop", "KTime", "Time", "",92372316000
		}
	}
	AnimationLayer: 11, "AnimLayer::base", "" {
	}
	AnimationCurveNode: 12, "AnimCurveNode::R", "" {
		Properties70:  {
			P: "d|X", "Number", "", "A",0
			P: "d|Y", "Number", "", "A",0
			P: "d|Z", "Number", "", "A",0
		}
	}
	AnimationCurve: 13, "AnimCurve::", "" {
		KeyTime: *3 {
			a: 0,46186158000,92372316000
		}
		KeyValueFloat: *3 {
			a: 0,90,30
		}
		KeyAttrFlags: *1 {
			a: )" +
           flags + R"(
		}
		KeyAttrDataFloat: *4 {
			a: )" +
           slopes + R"(
		}
		KeyAttrRefCount: *1 {
			a: 3
		}
)" + beyond +
           R"(	}
)" + objects +
           R"(}
Connections:  {
	C: "OO",1,0
	C: "OO",2,1
	C: "OO",11,10
	C: "OO",12,11
	C: "OP",12,2, "Lcl Rotation"
	C: "OP",13,12, "d|Z"
)" + links +
           "}\n";
}

/// The lower node's local matrix at a time.
Matrixd sampleLower(const std::string& text, double seconds)
{
    const support::TemporaryDirectory directory;
    const Model model = TW2::convert::readModel(directory.write("wave.fbx", text), {});
    EXPECT_EQ(model.m_vecNodes.size(), 2U);
    EXPECT_EQ(model.m_vecNodes[1].m_strName, "arm") << "names are as in the file";
    EXPECT_EQ(model.m_vecClips.size(), 1U);
    return ClipSampler(model, model.m_vecClips.at(0)).sample(1, seconds);
}
}  // namespace

TEST(Fbx, StraightSteppedAndCubicKeysAreWhatTheFileMeans)
{
    // A turn around z is the same when z is mirrored.
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "4", "0,0,0,0"), 0.5), turnZ(45.0)), 1e-9);
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "2", "0,0,0,0"), 0.9), turnZ(0.0)), 1e-9);
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "2", "0,0,0,0"), 1.0), turnZ(90.0)), 1e-9);
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "258", "0,0,0,0"), 0.1), turnZ(90.0)), 1e-9);
    // Slopes of 60 degrees per second at both ends: 0.125 * 60 - 0.125 * 60 + 45 in the middle; at a quarter the cubic
    // of Hermite says 90 * 0.15625 + 60 * (0.140625 - 0.046875).
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "8", "60,60,0,0"), 0.5), turnZ(45.0)), 1e-9);
    EXPECT_LT(
        largestDifference(sampleLower(makeFbx("", "8", "60,60,0,0"), 0.25), turnZ(90.0 * 0.15625 + 60.0 * 0.09375)),
        1e-9);
}

TEST(Fbx, SlopesOfATextFileAreTheBitsOfFloats)
{
    // 60.0F, and weights of a third as two numbers of 16 bits in ten-thousandths.
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "8", "1114636288,1114636288,218434821,0"), 0.25),
                                turnZ(90.0 * 0.15625 + 60.0 * 0.09375)),
              1e-9);
}

TEST(Fbx, ACurveGoesOnBeyondItsKeysAsTheFileSays)
{
    struct Case
    {
        const char* m_szType;
        int m_iTimes;
        double m_dSeconds;  // the keys are 0 at 0 s, 90 at 1 s, 30 at 2 s
        double m_dDegrees;
    };
    for (const Case& each :
         {Case{"C", -1, 2.5, 30.0}, Case{"K", -1, 2.5, 0.0}, Case{"R", -1, 2.5, 45.0}, Case{"R", -1, 5.0, 90.0},
          Case{"M", -1, 2.5, 60.0}, Case{"M", -1, 4.5, 45.0}, Case{"A", -1, 2.5, 75.0}, Case{"A", -1, 5.0, 150.0},
          Case{"R", 1, 5.0, 30.0}, Case{"R", 0, 2.5, 30.0}})
    {
        const std::string after = std::string("\t\tPost-Extrapolation:  {\n\t\t\tType: ") + each.m_szType +
                                  "\n\t\t\tRepetition: " + std::to_string(each.m_iTimes) + "\n\t\t}\n";
        EXPECT_LT(
            largestDifference(sampleLower(makeFbx("", "4", "0,0,0,0", after), each.m_dSeconds), turnZ(each.m_dDegrees)),
            1e-9)
            << each.m_szType << " at " << each.m_dSeconds;
    }
    const std::string before = "\t\tPre-Extrapolation:  {\n\t\t\tType: A\n\t\t\tRepetition: -1\n\t\t}\n";
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "4", "0,0,0,0", before), -0.5), turnZ(30.0)), 1e-9)
        << "60 in the turn before, which starts 30 lower";
}

TEST(Fbx, PicturesInTheFileAndTexturesOfLayersAreFound)
{
    // A PNG of one red pixel, cut in two pieces as text files have them.
    const std::string objects = R"(	Geometry: 20, "Geometry::", "Mesh" {
		Vertices: *9 {
			a: 0,0,0,1,0,0,0,1,0
		}
		PolygonVertexIndex: *3 {
			a: 0,1,-3
		}
	}
	Model: 21, "Model::shown", "Mesh" {
	}
	Material: 22, "Material::skin", "" {
		Properties70:  {
			P: "SpecularColor", "Color", "", "A",1,1,1
			P: "SpecularFactor", "Number", "", "A",0.25
			P: "ShininessExponent", "Number", "", "A",20
		}
	}
	LayeredTexture: 23, "LayeredTexture::", "" {
	}
	Texture: 24, "Texture::", "" {
		Properties70:  {
			P: "WrapModeU", "enum", "", "",1
			P: "Scaling", "Vector", "", "A",2,4,1
			P: "Translation", "Vector", "", "A",0.5,0.25,0
		}
		FileName: "C:\nowhere\red.png"
		RelativeFilename: "red.png"
	}
	Video: 25, "Video::", "Clip" {
		Content: ,
 "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1Pe",
 "AAAADElEQVR4nGP4z8AAAAMBAQDJ/pLvAAAAAElFTkSuQmCC"
	}
)";
    const std::string links = R"(	C: "OO",21,0
	C: "OO",20,21
	C: "OO",22,21
	C: "OP",23,22, "DiffuseColor"
	C: "OO",24,23
	C: "OO",25,24
)";
    const support::TemporaryDirectory directory;
    const Model model =
        TW2::convert::readModel(directory.write("red.fbx", makeFbx("", "4", "0,0,0,0", {}, objects, links)), {});
    ASSERT_EQ(model.m_vecSurfaces.size(), 1U);
    const TW2::convert::Surface& surface = model.m_vecSurfaces[0];
    ASSERT_EQ(model.m_vecPictures.size(), 1U) << testing::PrintToString(model.m_vecWarnings);
    EXPECT_EQ(model.m_vecPictures[0].m_uiWidth, 1U);
    EXPECT_TRUE(surface.m_diffuseTexture.isUsed());
    EXPECT_EQ(surface.m_diffuseTexture.m_eWrapU, TW2::convert::Wrap::Clamp);
    EXPECT_EQ(surface.m_diffuseTexture.m_eWrapV, TW2::convert::Wrap::Repeat);
    const std::array<std::array<double, 2>, 3> lies{{{2.0, 0.0}, {0.0, 4.0}, {0.5, -3.25}}};
    EXPECT_EQ(surface.m_diffuseTexture.m_transform, lies) << "v counts downwards";
    EXPECT_EQ(surface.m_specular.green, 0.25F * 255.0F);
    EXPECT_EQ(surface.m_fShininess, 20.0F);
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
    EXPECT_LT(largestDifference(sampleLower(makeFbx(pivots, "4", "0,0,0,0"), 1.0), expected), 1e-9);
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
             Case{"mute", R"(P: "Mute", "bool", "", "",1)", 1.0, 90.0, 1.0},
             Case{"alone", R"(P: "Solo", "bool", "", "",1)", 1.0, 40.0, 4.0},
             Case{"mute and alone", R"(P: "Solo", "bool", "", "",1
			P: "Mute", "bool", "", "",1)",
                  1.0, 90.0, 1.0},
             Case{"a weight that grows", R"(P: "Weight", "Number", "", "A+",7)", 0.5, 65.0, 2.0},
         })
    {
        const std::string weight = std::string_view(one.m_szLayer).find("A+") == std::string_view::npos ? "" : R"(
	C: "OP",24,21, "Weight"
	C: "OO",24,21
	C: "OP",25,24, "d|Weight")";
        const std::string objects = R"(	AnimationLayer: 21, "AnimLayer::more", "" {
		Properties70:  {
			)" + std::string(one.m_szLayer) +
                                    R"(
		}
	}
	AnimationCurveNode: 22, "AnimCurveNode::R", "" {
		Properties70:  {
			P: "d|X", "Number", "", "A",0
			P: "d|Y", "Number", "", "A",0
			P: "d|Z", "Number", "", "A",40
		}
	}
	AnimationCurveNode: 23, "AnimCurveNode::S", "" {
		Properties70:  {
			P: "d|X", "Number", "", "A",4
			P: "d|Y", "Number", "", "A",4
			P: "d|Z", "Number", "", "A",4
		}
	}
)" + growingWeight;
        const std::string links = R"(	C: "OO",21,10
	C: "OO",22,21
	C: "OP",22,2, "Lcl Rotation"
	C: "OO",23,21
	C: "OP",23,2, "Lcl Scaling")" +
                                  weight + "\n";
        const std::string text = makeFbx("", "4", "0,0,0,0", "", objects, links);
        EXPECT_LT(largestDifference(sampleLower(text, one.m_dSeconds), scale(one.m_dScale) * turnZ(one.m_dDegrees)),
                  1e-6)
            << one.m_szWhat;
    }
}

TEST(Fbx, ARotationThatALayerAddsComesBeforeTheOneBelowInEveryOrderOfAngles)
{
    const std::string objects = R"(	AnimationLayer: 21, "AnimLayer::more", "" {
	}
	AnimationCurveNode: 22, "AnimCurveNode::R", "" {
		Properties70:  {
			P: "d|X", "Number", "", "A",30
			P: "d|Y", "Number", "", "A",0
			P: "d|Z", "Number", "", "A",0
		}
	}
)";
    const std::string links = "\tC: \"OO\",21,10\n\tC: \"OO\",22,21\n\tC: \"OP\",22,2, \"Lcl Rotation\"\n";
    // About x by 30 degrees, seen with z mirrored.
    Matrixd tilt;
    tilt.setRow(1, {0.0, std::cos(std::numbers::pi / 6.0), -0.5});
    tilt.setRow(2, {0.0, 0.5, std::cos(std::numbers::pi / 6.0)});
    for (int order = 0; order < 6; ++order)
    {
        const std::string property = R"(P: "RotationOrder", "enum", "", "",)" + std::to_string(order);
        const std::string text = makeFbx(property, "4", "0,0,0,0", "", objects, links);
        EXPECT_LT(largestDifference(sampleLower(text, 0.5), tilt * turnZ(45.0)), 1e-6) << "order " << order;
    }
}

TEST(Fbx, ALayerThatCoversMoreAndMoreEndsInItsOwnAngles)
{
    // Over a second the second layer's angles take the place of the first one's. Of some the middle one is upright, of
    // others it is beyond that.
    const auto makeLayer = [](int mode, int order, double middle)
    {
        const std::string objects = R"(	AnimationLayer: 21, "AnimLayer::more", "" {
		Properties70:  {
			P: "BlendMode", "enum", "", "",)" +
                                    std::to_string(mode) + R"(
			P: "Weight", "Number", "", "A+",7
		}
	}
	AnimationCurveNode: 22, "AnimCurveNode::R", "" {
		Properties70:  {
			P: "d|X", "Number", "", "A",-45
			P: "d|Y", "Number", "", "A",)" +
                                    std::to_string(middle) + R"(
			P: "d|Z", "Number", "", "A",0
		}
	}
)" + growingWeight;
        const std::string links = R"(	C: "OO",21,10
	C: "OO",22,21
	C: "OP",22,2, "Lcl Rotation"
	C: "OP",24,21, "Weight"
	C: "OO",24,21
	C: "OP",25,24, "d|Weight"
)";
        return makeFbx(R"(P: "RotationOrder", "enum", "", "",)" + std::to_string(order), "4", "0,0,0,0", "", objects,
                       links);
    };
    for (int order = 0; order < 6; ++order)
    {
        for (const double middle : {90.0, 120.0})
        {
            const support::TemporaryDirectory directory;
            const Model blended =
                TW2::convert::readModel(directory.write("blended.fbx", makeLayer(2, order, middle)), {});
            const Model covered =
                TW2::convert::readModel(directory.write("covered.fbx", makeLayer(1, order, middle)), {});
            const ClipSampler sampler(blended, blended.m_vecClips.at(0));
            const Matrixd end = ClipSampler(covered, covered.m_vecClips.at(0)).sample(1, 1.0);
            EXPECT_LT(largestDifference(sampler.sample(1, 1.0), end), 1e-6) << "order " << order << ", " << middle;
            EXPECT_LT(largestDifference(sampler.sample(1, 0.9999), end), 0.03) << "order " << order << ", " << middle;
        }
    }
}

TEST(Fbx, SlopesThatTheFileLeavesToTheProgramComeFromTheKeysAround)
{
    struct Case
    {
        const char* m_szWhat;
        const char* m_szFlags;
        const char* m_szNumbers;
        double m_dFirst;   // slope behind the first key
        double m_dSecond;  // slope at the second
    };
    // The keys are 0 at 0 s, 90 at 1 s, 30 at 2 s.
    for (const Case& one : {
             Case{"straight from neighbour to neighbour", "8456", "0,0,0,0", 90.0, 15.0},
             Case{"not beyond the keys' values", "24840", "0,0,0,0", 0.0, 0.0},
             Case{"the numbers are no slopes", "24840", "60,60,0,0", 0.0, 0.0},
             Case{"by how far away the neighbours are", "264", "0,0,0,0", 90.0, 15.0},
             Case{"drawn half to what follows", "264", "50,-50,0,0", 90.0, -22.5},
             Case{"as before where both sides differ", "264", "0,50,0,0", 90.0, 52.5},
             Case{"with tension, continuity and bias of nothing", "520", "0,0,0,0", 90.0, 15.0},
             Case{"with tension", "520", "0.5,0,0,0", 45.0, 7.5},
             Case{"of the user", "1032", "60,60,0,0", 60.0, 60.0},
         })
    {
        const double degrees = 90.0 * 0.15625 + one.m_dFirst * 0.140625 - one.m_dSecond * 0.046875;
        const Matrixd lower = sampleLower(makeFbx("", one.m_szFlags, one.m_szNumbers), 0.25);
        EXPECT_LT(largestDifference(lower, turnZ(degrees)), 1e-9) << one.m_szWhat;
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
        EXPECT_LT(largestDifference(sampleLower(makeFbx(space + off, "4", "0,0,0,0"), 1.0), turnZ(90.0)), 1e-9) << off;
    }
    const std::string on = space + R"(P: "RotationActive", "bool", "", "",1)";
    EXPECT_GT(largestDifference(sampleLower(makeFbx(on, "4", "0,0,0,0"), 1.0), turnZ(90.0)), 0.1);
}

TEST(Fbx, ANodeWithoutItsParentsScaleStandsWhereThatPutsIt)
{
    // The later of two properties with one name holds.
    std::string text = makeFbx(R"(			P: "InheritType", "enum", "", "",2
			P: "Lcl Translation", "Lcl Translation", "", "A",5,0,0
			P: "RotationPivot", "Vector3D", "Vector", "",1,0,0)",
                               "4", "0,0,0,0");
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

TEST(Fbx, WhatNoBoneMovesHangsOnTheMeshsNodeAndBonesWithoutAMatrixAreBoundAtRest)
{
    const std::string objects = R"(	Geometry: 20, "Geometry::", "Mesh" {
		Vertices: *9 {
			a: 0,0,0,1,0,0,0,1,0
		}
		PolygonVertexIndex: *3 {
			a: 0,1,-3
		}
	}
	Model: 21, "Model::shown", "Mesh" {
		Properties70:  {
			P: "Lcl Translation", "Lcl Translation", "", "A",7,0,0
		}
	}
	Deformer: 30, "Deformer::", "Skin" {
	}
	Deformer: 31, "SubDeformer::", "Cluster" {
		Indexes: *1 {
			a: 1
		}
		Weights: *1 {
			a: 0.5
		}
	}
)";
    const std::string links =
        "\tC: \"OO\",21,0\n\tC: \"OO\",20,21\n\tC: \"OO\",30,20\n\tC: \"OO\",31,30\n\tC: \"OO\",2,31\n";
    const support::TemporaryDirectory directory;
    const Model model =
        TW2::convert::readModel(directory.write("skin.fbx", makeFbx("", "4", "0,0,0,0", "", objects, links)), {});
    const std::vector<Bone>& bones = model.m_vecMeshes.at(0).m_vecBones;
    ASSERT_EQ(bones.size(), 2U);
    EXPECT_EQ(bones[0].m_vecWeights.size(), 1U);
    EXPECT_LT(largestDifference(bones[0].m_offset, move(6, -2, 3)), 1e-12) << "(7, 0, 0) seen from (1, 2, -3)";
    EXPECT_EQ(model.m_vecNodes.at(static_cast<std::size_t>(bones[1].m_iNode)).m_strName, "shown");
    EXPECT_TRUE(bones[1].m_bHolder);
    EXPECT_EQ(bones[1].m_vecWeights.size(), 2U);
    EXPECT_LT(largestDifference(bones[1].m_offset, Matrixd()), 1e-12);
}

TEST(Fbx, NumbersThatNoWholeNumberIsAreNoFlags)
{
    EXPECT_LT(largestDifference(sampleLower(makeFbx("", "1e300", "0,0,0,0"), 0.5), turnZ(45.0)), 1e-9);
}

TEST(Fbx, DamageIsToldWithItsPlace)
{
    const support::TemporaryDirectory directory;
    std::string old = makeFbx("", "4", "0,0,0,0");
    old.replace(old.find("FBXVersion: 7400"), 16, "FBXVersion: 5800");
    EXPECT_THAT([&] { (void)TW2::convert::readModel(directory.write("old.fbx", old), {}); },
                testing::ThrowsMessage<S_Exception>(
                    testing::HasSubstr("old.fbx: is FBX of version 5.8: version 6 and newer are read")));
    const std::string beyond = makeFbx("", "4", "0,0,0,0", {}, R"(	Geometry: 20, "Geometry::", "Mesh" {
		Vertices: *9 {
			a: 0,0,0,1,0,0,0,1,0
		}
		PolygonVertexIndex: *3 {
			a: 0,1,-4
		}
	}
)",
                                       "\tC: \"OO\",20,2\n");
    EXPECT_THAT(
        [&] { (void)TW2::convert::readModel(directory.write("far.fbx", beyond), {}); },
        testing::ThrowsMessage<S_Exception>(testing::HasSubstr("polygons between points that the geometry has")));
    std::string text = makeFbx("", "4", "0,0,0,0");
    text.resize(text.find("Connections"));
    text += "Connections:  {\n\tC: \"OO\n";
    try
    {
        (void)TW2::convert::readModel(directory.write("bad.fbx", text), {});
        FAIL() << "was read";
    }
    catch (const S_Exception& exception)
    {
        EXPECT_THAT(exception.what(), testing::AllOf(testing::HasSubstr("bad.fbx"), testing::HasSubstr("line 56"),
                                                     testing::HasSubstr("a closing quotation mark")));
    }
}
