#include "convert/model_import.h"

#include "convert/clip_sampler.h"
#include "convert/model_reader.h"
#include "tests/convert/model_builder.h"
#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"

#include <platform/image/image.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

/// What is read by Assimp, from files of formats that nothing else reads here.
namespace
{
using namespace convert_test;
using TW2::convert::ClipSampler;

Model read(const std::string& name, const std::string& text)
{
    const support::TemporaryDirectory directory;
    return TW2::convert::readModel(directory.write(name, text), {});
}

std::size_t findNode(const Model& model, const std::string& name)
{
    return static_cast<std::size_t>(std::ranges::find(model.m_vecNodes, name, &Node::m_strName) -
                                    model.m_vecNodes.begin());
}
}  // namespace

TEST(AssimpFiles, MotionOfABvhIsThatOfItsChannels)
{
    const Model model = read("walk.bvh", R"(HIERARCHY
ROOT Hips
{
	OFFSET 0.0 0.0 0.0
	CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
	JOINT Knee
	{
		OFFSET 0.0 -10.0 0.0
		CHANNELS 3 Zrotation Xrotation Yrotation
		End Site { OFFSET 0.0 -10.0 0.0 }
	}
}
MOTION
Frames: 3
Frame Time: 0.5
1.0 2.0 3.0 0.0 0.0 0.0 0.0 0.0 0.0
1.0 2.0 4.0 30.0 0.0 0.0 45.0 0.0 0.0
1.0 2.0 5.0 60.0 0.0 0.0 90.0 0.0 0.0
)");
    const std::size_t hips = findNode(model, "Hips");
    const std::size_t knee = findNode(model, "Knee");
    ASSERT_LT(std::max(hips, knee), model.m_vecNodes.size());
    EXPECT_EQ(model.m_vecNodes[knee].m_iParent, static_cast<int>(hips));
    EXPECT_TRUE(model.m_vecMeshes.empty()) << "bones alone have no surface";
    ASSERT_EQ(model.m_vecClips.size(), 1U);
    EXPECT_NEAR(model.m_vecClips[0].m_dDuration, 1.0, 1e-6);
    const ClipSampler sampler(model, model.m_vecClips[0]);
    for (int frame = 0; frame < 3; ++frame)
    {
        // A turn about z stays what it is when z is mirrored; what lies along z changes its sign.
        EXPECT_LT(largestDifference(sampler.sample(hips, frame * 0.5), turnZ(30.0 * frame) * move(1, 2, -3 - frame)),
                  1e-5)
            << "frame " << frame;
        EXPECT_LT(largestDifference(sampler.sample(knee, frame * 0.5), turnZ(45.0 * frame) * move(0, -10, 0)), 1e-5)
            << "frame " << frame;
    }
}

TEST(AssimpFiles, VerticesKeepTheirColoursAndDamageIsToldWithItsFile)
{
    const support::TemporaryDirectory directory;
    directory.write("sign.mtl", "newmtl flat\nKd 1 0.5 0\nillum 0\nnewmtl lit\nKd 0 1 0\nd 0.25\nillum 2\n");
    const Model model = TW2::convert::readModel(
        directory.write("sign.obj",
                        "mtllib sign.mtl\nv 0 0 0 1 0.5 0\nv 1 0 0 0 1 0\nv 0 1 0 0 2 -1\nusemtl flat\nf 1 2 3\n"
                        "usemtl lit\nf 3 2 1\n"),
        {});
    ASSERT_EQ(model.m_vecMeshes.size(), 2U);
    const std::vector<TW2::convert::Color> colors{{255, 128, 0, 255}, {0, 255, 0, 255}, {0, 255, 0, 255}};
    EXPECT_THAT(model.m_vecMeshes[0].m_vecColors, testing::UnorderedElementsAreArray(colors));
    EXPECT_THAT(model.m_vecSources, testing::ElementsAre(testing::EndsWith("sign.mtl")));
    EXPECT_THAT(support::complaintOf([] { (void)read("bad.ply", "ply\nnonsense\n"); }),
                testing::AllOf(testing::HasSubstr("bad.ply: "), testing::Not(testing::HasSubstr("cannot be read"))));
}

TEST(AssimpFiles, ACameraSeesAsWideAndAsFarAsTheFileSays)
{
    const Model model = read("shot.ase", R"(*3DSMAX_ASCIIEXPORT	200
*CAMERAOBJECT {
	*NODE_NAME "eye"
	*CAMERA_TYPE Free
	*NODE_TM {
		*NODE_NAME "eye"
		*TM_ROW0 1.0 0.0 0.0 *TM_ROW1 0.0 1.0 0.0 *TM_ROW2 0.0 0.0 1.0 *TM_ROW3 1.0 2.0 3.0
	}
	*CAMERA_SETTINGS { *CAMERA_NEAR 2.0 *CAMERA_FAR 50.0 *CAMERA_FOV 1.0471976 *CAMERA_TDIST 10.0 }
}
*LIGHTOBJECT {
	*NODE_NAME "lamp"
	*LIGHT_TYPE Omni
	*LIGHT_SETTINGS { *LIGHT_COLOR 1.0 0.5 0.25 *LIGHT_INTENS 2.0 }
}
*LIGHTOBJECT {
	*NODE_NAME "beam"
	*LIGHT_TYPE Target
	*LIGHT_SETTINGS { *LIGHT_COLOR 0.5 0.5 1.0 *LIGHT_INTENS 1.0 *LIGHT_HOTSPOT 30.0 *LIGHT_FALLOFF 50.0 }
}
*GEOMOBJECT {
	*NODE_NAME "wall"
	*MESH {
		*MESH_NUMVERTEX 3
		*MESH_NUMFACES 1
		*MESH_VERTEX_LIST { *MESH_VERTEX 0 0.0 0.0 0.0 *MESH_VERTEX 1 1.0 0.0 0.0 *MESH_VERTEX 2 0.0 1.0 0.0 }
		*MESH_FACE_LIST { *MESH_FACE 0: A: 0 B: 1 C: 2 AB: 1 BC: 1 CA: 1 *MESH_SMOOTHING 0 *MESH_MTLID 0 }
	}
}
)");
    EXPECT_EQ(describeStage(model),
              "camera of 4 along 0 0 1: 60 from 2 to 50; point of 2 along 0 0 -1: 255 127.5 63.75 "
              "times 2 up to 100; spot of 3 along 0 0 -1: 127.5 127.5 255 times 1 up to 100 in 30 "
              "to 50");
}

TEST(AssimpFiles, ASurfaceIsWhatItsMaterialAndMapsSay)
{
    const support::TemporaryDirectory directory;
    directory.write("flag.png", G_Image(2, 2).encodePNG());
    for (const auto& [material, expected] :
         {std::pair(
              "Kd 1 0.6 0.2\nKs 0.4 0.8 1\nKe 0 0.2 0.6\nNs 10\nd 0.5\nillum 2\nmap_Ka flag.png\nmap_Ks "
              "flag.png\nmap_Ns flag.png\nbump flag.png\nnorm flag.png\ndisp flag.png\n",
              "diffuse 255 153 51, specular 102 204 255, emissive 0 51 153, shininess 10, opacity 0.5; the normal "
              "map; the bump map; the map of its highlights; the map of its shininess; the map of its ambient "
              "colour; the displacement map"),
          {"Kd 1 0.6 0.2\nillum 0\nmap_Kd -clamp on flag.png\nmap_d flag.png\nmap_Ke flag.png\n",
           "diffuse 255 153 51, specular 0 0 0, emissive 255 255 255, shininess 0, opacity 1, unlit, diffuse map, "
           "opacity map, emissive map"},
          {"Kd 1 0.6 0.2\nmap_Kd gone.png\nd 0\n",
           "diffuse 255 153 51, specular 0 0 0, emissive 0 0 0, shininess 0, opacity 1; was not found; is fully "
           "transparent in the file, taken as opaque"}})
    {
        directory.write("flag.mtl", std::string("newmtl cloth\n") + material);
        const Model model =
            TW2::convert::readModel(directory.write("flag.obj",
                                                    "mtllib flag.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nusemtl cloth\n"
                                                    "f 1/1 2/1 3/1\n"),
                                    {});
        EXPECT_EQ(describeSurface(model, 1), expected);
        const bool ends = model.m_vecSurfaces[1].m_diffuseTexture.m_eWrapU == TW2::convert::Wrap::Clamp;
        EXPECT_EQ(ends, std::string(material).find("clamp") != std::string::npos);
    }
}

TEST(AssimpFiles, SkinAndMotionOfAnXFileAreThoseOfItsNodesAndOthersAreTold)
{
    // Of this format's left-handed space, which is the one of the model.
    const std::string identity = "1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,";
    const auto weights = [&identity](const char* bone, const char* vertices, const char* values)
    {
        return std::string("  SkinWeights {\n   \"") + bone + "\";\n   3;\n   " + vertices + ";\n   " + values +
               ";\n   " + identity + "0.0,-2.0,0.0,1.0;;\n  }\n";
    };
    const auto moves = [](const char* bone)
    {
        return std::string(" Animation {\n  { ") + bone +
               " }\n  AnimationKey { 2; 2; 0; 3; 1.0, 2.0, 3.0;;, 20; 3; 3.0, 2.0, 3.0;;; }\n }\n";
    };
    const Model model = read(
        "flag.x", "xof 0303txt 0032\nAnimTicksPerSecond { 10; }\nFrame root {\n FrameTransformMatrix { " + identity +
                      "0.0,0.0,0.0,1.0;; }\n Frame bone {\n  FrameTransformMatrix { " + identity +
                      "1.0,2.0,3.0,1.0;; }\n }\n Mesh flag {\n  3;\n  0.0;0.0;0.0;,\n  0.0;1.0;0.0;,\n  1.0;0.0;0.0;;\n"
                      "  1;\n  3;0,1,2;;\n  XSkinMeshHeader { 2; 2; 2; }\n" +
                      weights("bone", "0,1,2", "0.25,1.0,0.0") + weights("ghost", "0,2,1", "0.75,1.0,0.0") +
                      " }\n}\nAnimationSet wave {\n" + moves("bone") + moves("phantom") + "}\n");
    const std::size_t node = findNode(model, "bone");
    ASSERT_LT(node, model.m_vecNodes.size());
    EXPECT_LT(largestDifference(model.m_vecNodes[node].m_local, move(1, 2, 3)), 1e-6);
    ASSERT_EQ(model.m_vecMeshes.size(), 1U);
    const Mesh& mesh = model.m_vecMeshes[0];
    const auto bone = std::ranges::find(mesh.m_vecBones, static_cast<int>(node), &Bone::m_iNode);
    ASSERT_NE(bone, mesh.m_vecBones.end());
    EXPECT_LT(largestDifference(bone->m_offset, move(0, -2, 0)), 1e-6);
    EXPECT_EQ(bone->m_vecWeights.size(), 2U);
    ASSERT_EQ(model.m_vecClips.size(), 1U);
    EXPECT_EQ(model.m_vecClips[0].m_strName, "wave");
    EXPECT_NEAR(model.m_vecClips[0].m_dDuration, 2.0, 1e-6);
    EXPECT_LT(largestDifference(ClipSampler(model, model.m_vecClips[0]).sample(node, 1.0), move(2, 2, 3)), 1e-6);
    EXPECT_THAT(testing::PrintToString(model.m_vecWarnings),
                testing::AllOf(testing::HasSubstr("ghost"), testing::HasSubstr("phantom")));
}
