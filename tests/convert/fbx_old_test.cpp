#include "convert/bezier.h"
#include "convert/clip_sampler.h"
#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
using namespace convert_test;
using TW2::convert::ClipSampler;

/// A text FBX of version 6: a square that bends inwards at one corner, half of each of two materials, bound to a bone
/// that one take turns. Lists run over lines as files of that time have them.
std::string makeOldFbx(const std::string& keys, int version)
{
    return R"(; FBX 6.1.0 project file
FBXHeaderExtension:  {
	FBXVersion: 6100
}
Objects:  {
	Model: "Model::skin", "Mesh" {
		Properties60:  {
			Property: "Lcl Translation", "Lcl Translation", "A+",0,0,0
			Property: "GeometricTranslation", "Vector3D", "",0,0,5
		}
		Vertices: 0,0,0,4,0,0,4
		,4,0,1,1,0,0,4,0
		PolygonVertexIndex: 1,2,3,4,-1,0,1,-3
		LayerElementUV: 0 {
			Name: "UVChannel_1"
			MappingInformationType: "ByPolygonVertex"
			ReferenceInformationType: "IndexToDirect"
			UV: 0,0,0.25,1
			UVIndex: 0,1,1,1,1,0,0,0
		}
		LayerElementMaterial: 0 {
			MappingInformationType: "ByPolygon"
			ReferenceInformationType: "IndexToDirect"
			Materials: 1,0
		}
	}
	Model: "Model::bone", "LimbNode" {
		Properties60: {
			Property: "Lcl Translation", "Lcl Translation", "A+",1,2,3
			Property: "kind", "KString", "U", "tail"
		}
	}
	Material: "Material::red", "" {
		Properties60:  {
			Property: "DiffuseColor", "ColorRGB", "",0.5,0,0
			Property: "DiffuseFactor", "double", "",0.5
			Property: "Opacity", "double", "",0.25
		}
	}
	Material: "Material::a &quot;word&quot;", "" { }
	Deformer: "Deformer::Skin", "Skin" { }
	Deformer: "SubDeformer::Cluster", "Cluster" {
		Indexes: 0,3,5,-1
		Weights: 1,0.5,1,1
		Transform: 1,0,0,0,0,1,0,0,0,0,1,0,-1,-2,-3,1
	}
	GlobalSettings:  {
		Properties60: { Property: "UpAxis", "int", "",1 }
	}
}
Connections:  {
	Connect: "OO", "Model::skin", "Model::Scene"
	Connect: "OO", "Model::bone", "Model::Scene"
	Connect: "OO", "Material::red", "Model::skin"
	Connect: "OO", "Material::a &quot;word&quot;", "Model::skin"
	Connect: "OO", "Deformer::Skin", "Model::skin"
	Connect: "OO", "SubDeformer::Cluster", "Deformer::Skin"
	Connect: "OO", "Model::bone", "SubDeformer::Cluster"
}
Takes:  {
	Take: "wave" {
		LocalTime: 0,92372316000
		Model: "Model::bone" {
			Channel: "Transform" {
				Channel: "T" { Channel: "X" { Default: 7 } }
				Channel: "R" {
					Channel: "Z" {
						Default: 0
						KeyVer: )" +
           std::to_string(version) + R"(
						KeyCount: 3
						Key: 
							)" +
           keys + R"(
					}
				}
				Channel: "S" { Channel: "Y" { Default: 2 } }
			}
			Channel: "Visibility" { Channel: "V" { KeyCount: 2 } }
			Channel: "Length" { KeyCount: 1 }
		}
	}
}
)";
}

constexpr int usual = 4005;

Model readOld(const std::string& keys, int version = usual)
{
    const support::TemporaryDirectory directory;
    return TW2::convert::readModel(directory.write("wave.fbx", makeOldFbx(keys, version)), {});
}

Matrixd sampleBone(const std::string& keys, double seconds, int version = usual)
{
    const Model model = readOld(keys, version);
    EXPECT_EQ(model.m_vecClips.size(), 1U);
    EXPECT_EQ(model.m_vecClips.at(0).m_dDuration, 2.0);
    EXPECT_EQ(model.m_vecClips.at(0).m_strName, "wave");
    EXPECT_THAT(model.m_vecWarnings, testing::Contains(testing::HasSubstr("Visibility"))) << keys;
    EXPECT_THAT(model.m_vecWarnings, testing::Not(testing::Contains(testing::HasSubstr("Length"))))
        << "one key is none";
    return ClipSampler(model, model.m_vecClips.at(0)).sample(1, seconds);
}

/// Twice the area of a mesh's triangles, all of which have to be clockwise around z.
double addAreas(const Mesh& mesh)
{
    double sum = 0.0;
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        const auto& a = mesh.m_vecPositions[mesh.m_vecIndices[i]];
        const auto& b = mesh.m_vecPositions[mesh.m_vecIndices[i + 1]];
        const auto& c = mesh.m_vecPositions[mesh.m_vecIndices[i + 2]];
        const auto area = static_cast<double>((b.y - a.y) * (c.x - a.x) - (b.x - a.x) * (c.y - a.y));
        EXPECT_GT(area, 0.0);
        sum += area;
    }
    return sum;
}
}  // namespace

TEST(OldFbx, KeysOfEveryKindAreWhatTheFileMeans)
{
    struct Case
    {
        const char* m_szKeys;
        double m_dSeconds;
        double m_dDegrees;
        int m_iVersion = usual;
    };
    // Hermite's cubic with slopes of 60 degrees per second at both ends; and with handles of half and a third.
    constexpr double cubic = 90.0 * 0.15625 + 60.0 * 0.09375;
    const double uneven = TW2::convert::blendBezier({0.0, 0.0}, {0.5, 30.0}, {2.0 / 3.0, 70.0}, {1.0, 90.0}, 0.25);
    const double other = TW2::convert::blendBezier({0.0, 0.0}, {1.0 / 3.0, 20.0}, {0.5, 60.0}, {1.0, 90.0}, 0.25);
    // A slope that the file leaves to the reader is level at the highest value, and here at the first.
    constexpr double level = 90.0 * 0.15625;
    // What arrives goes on as it leaves, unless the key before says otherwise.
    constexpr double fast = 90.0 * 0.84375 - 60.0 * 0.140625;
    constexpr double broken = 90.0 * 0.84375 + 60.0 * 0.046875 - 30.0 * 0.140625;
    for (const Case& each : {
             Case{"0,0,L,46186158000,90,L,92372316000,30,L", 0.5, 45.0},
             Case{"0,0,C,s,46186158000,90,C,n,92372316000,30,L", 0.9, 0.0},
             Case{"0,0,C,s,46186158000,90,C,n,92372316000,30,L", 1.1, 30.0},
             Case{"0,0,C,46186158000,90,C,92372316000,30,L", 0.9, 0.0, 4003},
             Case{"0,0,C,n,46186158000,90,C,s,92372316000,30,L", 0.9, 90.0, 4004},
             Case{"0,0,U,s,60,60,n,46186158000,90,L,92372316000,30,L", 0.25, cubic},
             Case{"0,0,U,b,60,60,c,46186158000,90,L,92372316000,30,L", 0.25, cubic, 4004},
             Case{"0,0,U,s,60,60,46186158000,90,L,92372316000,30,L", 0.25, cubic, 4003},
             Case{"0,0,U,s,60,60,a,0.333333333333,0.333333333333,46186158000,90,L", 0.25, cubic},
             Case{"0,0,U,s,60,60,r,0.5,46186158000,90,L", 0.25, uneven},
             Case{"0,0,U,s,60,60,a,0.5,0.333333333333,46186158000,90,L", 0.25, uneven},
             Case{"0,0,U,s,60,60,l,0.5,46186158000,90,L", 0.25, other},
             Case{"0,0,U,a,n,46186158000,90,U,a,n,92372316000,30,U,a,n", 0.5, 45.0},
             Case{"0,0,U,a,n,46186158000,90,U,a,n,92372316000,30,U,a,n", 1.5, 60.0},
             Case{"0,0,U,a,n,46186158000,90,U,a,n,92372316000,30,U,a,n", 0.25, level},
             Case{"0,0,U,a,46186158000,90,U,a,92372316000,30,U,a", 0.25, level, 4004},
             Case{"0,0,U,p,1,2,n,n,46186158000,90,U,q,3,4,n,n,92372316000,30,U,a,n", 0.25, level},
             Case{"0,0,U,p,1,2,n,46186158000,90,U,q,3,4,n,92372316000,30,U,a", 0.25, level, 4004},
             Case{"0,0,U,a,n,46186158000,90,U,s,60,20,n,92372316000,30,L", 0.75, fast},
             Case{"0,0,U,s,60,30,n,46186158000,90,U,s,60,20,n,92372316000,30,L", 0.75, broken},
             Case{"0,0,U,t,1,2,3,46186158000,90,U,d,1,n,92372316000,30,U,a,n", 0.25, level},
         })
    {
        Matrixd taller;  // as the take says of the bone's scale; of its place it says x alone
        taller.m[1][1] = 2.0;
        EXPECT_LT(largestDifference(sampleBone(each.m_szKeys, each.m_dSeconds, each.m_iVersion),
                                    taller * turnZ(each.m_dDegrees) * move(7, 2, -3)),
                  1e-9)
            << each.m_szKeys << " at " << each.m_dSeconds;
    }
}

TEST(OldFbx, SkinAndMaterialsAreThoseOfTheFile)
{
    const Model model = readOld("0,0,L");
    ASSERT_EQ(model.m_vecMeshes.size(), 2U);
    const Mesh& bent = model.m_vecMeshes[1];
    const Mesh& plain = model.m_vecMeshes[0];
    EXPECT_EQ(model.m_vecSurfaces.at(static_cast<std::size_t>(bent.m_iMaterial)).m_strName, "a \"word\"");
    const TW2::convert::Surface& red = model.m_vecSurfaces.at(static_cast<std::size_t>(plain.m_iMaterial));
    EXPECT_EQ(red.m_strName, "red");
    EXPECT_NEAR(red.m_diffuse.red, 0.25F * 255.0F, 0.01F);
    EXPECT_EQ(red.m_fOpacity, 0.25F);
    EXPECT_EQ(red.m_eAlpha, TW2::convert::Surface::Alpha::Blend);

    // A square of 16 without the triangle down to the corner that is bent in.
    EXPECT_EQ(bent.m_vecIndices.size(), 9U);
    EXPECT_NEAR(addAreas(bent), 20.0, 1e-6);
    EXPECT_NEAR(addAreas(plain), 16.0, 1e-6);
    for (const auto& position : bent.m_vecPositions)
    {
        EXPECT_EQ(position.z, -5.0F) << "the geometric translation, mirrored at z";
    }
    ASSERT_EQ(bent.m_vecCoordinates.size(), 1U);
    EXPECT_EQ(bent.m_vecCoordinates[0][0].y, 1.0F) << "v counts downwards";
    EXPECT_EQ(bent.m_vecCoordinates[0][1].x, 0.25F);
    EXPECT_EQ(bent.m_vecCoordinates[0][1].y, 0.0F);
    for (const auto& normal : plain.m_vecNormals)
    {
        EXPECT_NEAR(normal.z, -1.0F, 1e-6F) << "a file without normals gets them on the side that is seen";
    }

    ASSERT_EQ(bent.m_vecBones.size(), 2U);
    EXPECT_TRUE(bent.m_vecBones[1].m_bHolder) << "of the vertices that the bone does not move";
    EXPECT_EQ(model.m_vecNodes.at(static_cast<std::size_t>(bent.m_vecBones[0].m_iNode)).m_strName, "bone");
    EXPECT_EQ(model.m_vecNodes[static_cast<std::size_t>(bent.m_vecBones[0].m_iNode)].m_strNotes, "kind=tail\n");
    EXPECT_LT(largestDifference(bent.m_vecBones[0].m_offset, move(-1, -2, 3)), 1e-12);
    const std::vector<std::pair<unsigned int, float>> weights{{4, 1.0F}, {2, 0.5F}};
    EXPECT_EQ(bent.m_vecBones[0].m_vecWeights, weights);
}

TEST(OldFbx, KeysThatAreNoneAreAnErrorWithItsPlace)
{
    for (const char* keys : {"0,0,X", "0,0,U,z,n", "0,0,U,s,1", "0,0,U,s,1,1,w", "0,word,L"})
    {
        EXPECT_THAT(support::complaintOf([keys] { (void)readOld(keys); }),
                    testing::ContainsRegex("wave.fbx.*line.*expected keys"))
            << keys;
    }
}
