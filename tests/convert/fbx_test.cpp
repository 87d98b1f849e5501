#include "tests/convert/fbx_builder.h"
#include "tests/support/expectations.h"

#include <platform/image/image.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using namespace fbx_test;

/// A triangle, object 20. `last`: its third corner.
std::string makeTriangle(const char* last = "-3")
{
    return std::string(R"(	Geometry: 20, "Geometry::", "Mesh" {
		Vertices: *9 { a: 0,0,0,1,0,0,0,1,0 }
		PolygonVertexIndex: *3 { a: 0,1,)") +
           last + " }\n\t}\n";
}
}  // namespace

TEST(Fbx, CamerasAndLightsAreWhatTheirPropertiesSay)
{
    struct Case
    {
        const char* m_szKind;
        const char* m_szProperties;  // each a name, a comma and its numbers
        const char* m_szExpected;
    };
    int number = 0;
    std::string objects;
    std::string links;
    std::string expected;
    for (const auto& [kind, properties, says] :
         {Case{"Camera", "FieldOfView,50;NearPlane,2;FarPlane,90", "camera of 2 along 1 0 0: 50 from 2 to 90"},
          Case{"Camera", "", "; camera of 3 along 1 0 0: 40 from 0 to 0"}, Case{"Camera", "CameraProjectionType,1", ""},
          Case{"Light", "", "; point of 5 along 0 -1 0: 255 255 255 times 1 up to 1e+06"},
          Case{"Light",
               "LightType,2;Color,1,0.5,0.25;Intensity,300;DecayType,2;DecayStart,20;InnerAngle,15;OuterAngle,65",
               "; spot of 6 along 0 -1 0: 255 127.5 63.75 times 3 up to 141.42 in 15 to 65"},
          Case{"Light", "LightType,2;Color,1,1,0;Intensity,50;Cone angle,30;DecayType,2",
               "; spot of 7 along 0 -1 0: 127.5 127.5 0 times 1 up to 1e+06 in 0 to 30"},
          Case{"Light", "LightType,1;DecayType,1;DecayStart,3",
               "; directional of 8 along 0 -1 0: 255 255 255 times 1 up to 150"}})
    {
        const std::string id = std::to_string(40 + number);
        const std::string attribute = std::to_string(60 + number++);
        objects += "\tModel: " + id + ", \"Model::" + id + "\", \"" + kind +
                   "\" {\n\t}\n\tNodeAttribute: " + attribute + ", \"NodeAttribute::\", \"" + kind +
                   "\" {\n\t\tProperties70:  {\n";
        std::istringstream lines(properties);
        for (std::string line; std::getline(lines, line, ';');)
        {
            const std::size_t comma = line.find(',');
            objects +=
                "\t\t\tP: \"" + line.substr(0, comma) + "\", \"Number\", \"\", \"A\"" + line.substr(comma) + "\n";
        }
        objects += "\t\t}\n\t}\n";
        links += "\tC: \"OO\"," + id + ",0\n\tC: \"OO\"," + attribute + "," + id + "\n";
        expected += says;
    }
    const Model model = readFbx(make({.m_strLower = R"(P: "kind", "KString", "", "A+U", "lamp"
			P: "made by", "KString", "", "A", "nobody"
			P: "empty", "KString", "", "U", "")",
                                      .m_strObjects = objects,
                                      .m_strLinks = links}));
    EXPECT_EQ(describeStage(model), expected);
    EXPECT_EQ(model.m_vecNodes.at(1).m_strNotes, "kind=lamp\n") << "what is text and the user's own";
    EXPECT_THAT(model.m_vecWarnings, testing::ElementsAre(testing::HasSubstr("camera \"42\": left out")));
}

TEST(Fbx, TheSceneStandsUprightWhateverAxesTheFileHas)
{
    struct Case
    {
        const char* m_szAxes;  // up, front and the one to the right, each with its sign
        Vector3d m_vExpected;  // of (1, 2, 3)
    };
    for (const auto& [axes, expected] :
         {Case{"1 1 2 1 0 1", {1, 2, -3}}, Case{"2 1 1 -1 0 1", {1, 3, 2}}, Case{"2 -1 1 1 0 1", {1, -3, -2}},
          Case{"2 1 0 1 1 1", {2, 3, -1}}, Case{"0 1 2 1 1 -1", {-2, 1, -3}}, Case{"2 1 2 1 0 1", {1, 2, -3}}})
    {
        std::istringstream numbers(axes);
        std::string settings;
        for (const char* name : {"UpAxis", "UpAxisSign", "FrontAxis", "FrontAxisSign", "CoordAxis", "CoordAxisSign"})
        {
            std::string value;
            numbers >> value;
            settings += std::string("P: \"") + name + "\", \"int\", \"Integer\", \"\"," + value + "\n";
        }
        std::string text = make({});
        const std::string usual = R"(P: "UpAxis", "int", "Integer", "",1)";
        text.replace(text.find(usual), usual.size(), "\n" + settings);
        const Model model = readFbx(text);
        EXPECT_EQ(model.m_vecNodes.at(0).m_local.getTranslation(), expected) << axes;
        // Points and axes go the same way.
        EXPECT_EQ(model.m_vecNodes[0].m_local.transformPoint({1, 2, -3}), expected * 2.0) << axes;
    }
}

TEST(Fbx, WhatCornersSayComesPerCornerPointPolygonOrOnceAndPlainOrByIndex)
{
    // A triangle and a square between five points; of each kind of values there are eight.
    const std::array<std::size_t, 7> points{0, 1, 2, 2, 1, 3, 4};
    const std::array<std::size_t, 9> triangles{0, 1, 2, 3, 4, 5, 3, 5, 6};
    const std::array<std::array<double, 3>, 5> places{{{0, 0, 1}, {1, 0, 2}, {0, 1, 1}, {3, 1, 2}, {3, 3, 1}}};
    std::array<std::vector<double>, 4> values;
    std::vector<std::size_t> indices;
    const auto list = [](const std::string& name, const auto& numbers)
    {
        std::ostringstream text;
        text << std::setprecision(17);
        for (const auto number : numbers)
        {
            text << (text.str().empty() ? "" : ",") << number;
        }
        return "\t\t" + name + ": *" + std::to_string(numbers.size()) + " { a: " + text.str() + " }\n";
    };
    for (std::size_t i = 0; i < 8; ++i)
    {
        const auto k = static_cast<double>(i);
        values[0].insert(values[0].end(), {std::sin(k), std::cos(k), 0.5});
        values[1].insert(values[1].end(), {k / 8.0, k / 4.0});
        values[2].insert(values[2].end(), {k / 2.0, 1.0 - k / 8.0});
        values[3].insert(values[3].end(), {k / 17.0, 1.0 - k / 51.0, 0.2, 0.6 + k / 51.0});
        indices.push_back((3 * i + 1) % 8);
    }
    for (const std::string per : {"ByPolygonVertex", "ByPolygon", "ByVertex", "ByVertice", "AllSame"})
    {
        for (const bool indexed : {false, true})
        {
            // A node that mirrors what it shows turns its triangles around.
            const double wide = indexed ? -2.0 : 2.0;
            const auto layer = [&](const std::string& kind, const std::string& name, std::size_t numbers)
            {
                return "\t\tLayerElement" + kind + ": 0 {\n\t\tMappingInformationType: \"" + per + "\"\n" +
                       list(name, values[numbers]) +
                       (indexed ? list((kind == "UV" || kind == "Normal" ? name : kind) + "Index", indices) : "") +
                       "\t\t}\n";
            };
            std::vector<double> vertices;
            for (const auto& place : places)
            {
                vertices.insert(vertices.end(), place.begin(), place.end());
            }
            const std::string objects = "\tGeometry: 20, \"Geometry::\", \"Mesh\" {\n" + list("Vertices", vertices) +
                                        list("PolygonVertexIndex", std::vector<int>{0, 1, -3, 2, 1, 3, -5}) +
                                        layer("Normal", "Normals", 0) + layer("UV", "UV", 1) + layer("UV", "UV", 2) +
                                        layer("Color", "Colors", 3) +
                                        "\t}\n\tModel: 21, \"Model::shown\", \"Mesh\" {\n\t\tProperties70: {\n"
                                        "\t\tP: \"GeometricTranslation\", \"Vector3D\", \"Vector\", \"\",1,2,3\n"
                                        "\t\tP: \"GeometricScaling\", \"Vector3D\", \"Vector\", \"\"," +
                                        std::to_string(wide) + ",1,3\n\t\t}\n\t}\n";
            const Model model =
                readFbx(make({.m_strObjects = objects, .m_strLinks = "\tC: \"OO\",21,0\n\tC: \"OO\",20,21\n"}));
            const Mesh& mesh = model.m_vecMeshes.at(0);
            ASSERT_EQ(mesh.m_vecIndices.size(), triangles.size());
            ASSERT_EQ(mesh.m_vecCoordinates.size(), 2U);
            for (std::size_t i = 0; i < triangles.size(); ++i)
            {
                SCOPED_TRACE(per + (indexed ? " by index, " : ", ") + std::to_string(i));
                const std::size_t corner = triangles[i / 3 * 3 + (wide < 0.0 ? i % 3 : (3 - i % 3) % 3)];
                const std::size_t polygon = corner < 3 ? 0 : 1;
                const std::size_t place = per == "ByPolygonVertex" ? corner
                                          : per == "ByPolygon"     ? polygon
                                          : per == "AllSame"       ? 0
                                                                   : points[corner];
                const std::size_t value = indexed ? indices[place] : place;
                const unsigned int vertex = mesh.m_vecIndices[i];
                const auto expectNear = [](const TW2::convert::Vector3& is, const Vector3d& expected)
                {
                    EXPECT_LT(
                        (Vector3d(static_cast<double>(is.x), static_cast<double>(is.y), static_cast<double>(is.z)) -
                         expected)
                            .length(),
                        1e-6);
                };
                const auto& [x, y, z] = places[points[corner]];
                expectNear(mesh.m_vecPositions.at(vertex), {x * wide + 1.0, y + 2.0, -3.0 * z - 3.0});
                const double* n = &values[0][3 * value];
                expectNear(mesh.m_vecNormals.at(vertex), Vector3d(n[0] / wide, n[1], -n[2] / 3.0).normalized());
                for (std::size_t set = 0; set < 2; ++set)
                {
                    const double* uv = &values[1 + set][2 * value];
                    expectNear(mesh.m_vecCoordinates[set].at(vertex), {uv[0], 1.0 - uv[1], 0.0});
                }
                for (std::size_t c = 0; c < 4; ++c)
                {
                    EXPECT_EQ(mesh.m_vecColors.at(vertex)[c], std::lround(255.0 * values[3][4 * value + c]));
                }
            }
        }
    }
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
        EXPECT_EQ(describeSurface(readMaterial(each.m_strProperties, each.m_vecMaps)), each.m_strExpected)
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
    EXPECT_THAT(readMaterial("", {"DiffuseColor"}, R"(P: "Rotation", "Vector", "", "A",0,0,9)").m_vecWarnings,
                testing::ElementsAre(testing::HasSubstr("the rotation of its texture")));
}

TEST(Fbx, WhatAModelIsSeenWithoutIsTold)
{
    // A skin of each kind; of the bones one is no node and one pulls at nothing.
    std::string links = "\tC: \"OO\",21,0\n";
    for (const auto& [from, to] :
         {std::pair(20, 21), {22, 21}, {23, 21}, {30, 20}, {31, 20}, {32, 20}, {33, 20}, {34, 30}, {35, 30}})
    {
        links += "\tC: \"OO\"," + std::to_string(from) + "," + std::to_string(to) + "\n";
    }
    const Model model = readFbx(make({.m_strObjects = makeTriangle() + R"(	Model: 21, "Model::shown", "Mesh" { }
	Geometry: 22, "Geometry::", "NurbsCurve" { }
	Geometry: 23, "Geometry::", "Mesh" { Vertices: *6 { a: 0,0,0,1,0,0 } PolygonVertexIndex: *2 { a: 0,-2 } }
	Deformer: 30, "Deformer::", "Skin" { SkinningType: "Linear" }
	Deformer: 31, "Deformer::", "Skin" { SkinningType: "DualQuaternion" }
	Deformer: 32, "Deformer::", "Skin" { SkinningType: "Blend" }
	Deformer: 33, "Deformer::", "BlendShape" { }
	Deformer: 34, "SubDeformer::lost", "Cluster" { Indexes: *1 { a: 1 } Weights: *1 { a: 1 } }
	Deformer: 35, "SubDeformer::idle", "Cluster" { }
)" + makeNode(36, "X", 0, 0, 0),
                                      .m_strLinks = links + "\tC: \"OO\",36,11\n\tC: \"OP\",36,2, \"Visibility\"\n"}));
    using testing::HasSubstr;
    EXPECT_THAT(model.m_vecWarnings,
                testing::UnorderedElementsAre(
                    HasSubstr("pull at it straight"), HasSubstr("pull at it straight"),
                    HasSubstr("mesh \"shown\": left out: morph targets"), HasSubstr("bone \"lost\" is no node"),
                    HasSubstr("left out: its NurbsCurve"), HasSubstr("what consists of points and lines"),
                    HasSubstr("the animation of \"Visibility\" is left out")));
    EXPECT_EQ(model.m_vecMeshes.at(0).m_strName, "shown");
}

TEST(Fbx, WhatObjectsDoNotSayIsTheirKindsTemplates)
{
    // Values that are not there are none; texture coordinates are called by the name of their set.
    std::string text = make({.m_strObjects = R"(	Geometry: 20, "Geometry::", "Mesh" {
		Vertices: *9 { a: 0,0,0,1,0,0,0,1,0 } PolygonVertexIndex: *3 { a: 0,1,-3 }
		LayerElementUV: 0 { Name: "first" }
		LayerElementUV: 1 { Name: "second"
			MappingInformationType: "ByPolygonVertex"
			UV: *4 { a: 0.25,0.5,0.75,1 } UVIndex: *2 { a: 1,2 } } }
	Model: 21, "Model::shown", "Mesh" { }
	Material: 22, "Material::", "" { Properties70: { P: "Shininess", "Number", "", "A",7 } }
	Texture: 24, "Texture::", "" { Properties70: { P: "UVSet", "KString", "", "", "second" }
		RelativeFilename: "gone.tga"
		FileName: "flag.png" }
	Texture: 26, "Texture::", "" { }
	Video: 25, "Video::", "Clip" { RelativeFilename: "flag.png" }
)",
                             .m_strLinks = R"(	C: "OO",21,0
	C: "OO",20,21
	C: "OO",22,21
	C: "OP",24,22, "DiffuseColor"
	C: "OP",26,22, "EmissiveColor"
	C: "OO",25,26
)"});
    text.insert(text.find("Objects:"), R"(Definitions:  {
	ObjectType: "Model" { PropertyTemplate: "" { Properties70: { P: "Lcl Translation", "", "", "A",4,5,6 } } }
	ObjectType: "Material" { PropertyTemplate: "" { Properties70: { P: "Shininess", "Number", "", "A",9
		P: "Opacity", "Number", "", "A",0.5 } } }
	ObjectType: "Texture" { PropertyTemplate: "" { Properties70: { P: "WrapModeV", "enum", "", "",1 } } }
}
)");
    const support::TemporaryDirectory directory;
    directory.write("flag.png", G_Image(2, 2).encodePNG());
    const Model model = TW2::convert::readModel(directory.write("wave.fbx", text), {});
    EXPECT_EQ(model.m_vecNodes.at(2).m_local.getTranslation(), Vector3d(4, 5, -6));
    EXPECT_EQ(describeSurface(model),
              "diffuse 255 255 255, specular 0 0 0, emissive 255 255 255, shininess 7, opacity "
              "0.5, diffuse map, emissive map");
    EXPECT_EQ(model.m_vecSurfaces[0].m_diffuseTexture.m_iSet, 1);
    EXPECT_EQ(model.m_vecSurfaces[0].m_diffuseTexture.m_eWrapV, TW2::convert::Wrap::Clamp);
    const TW2::convert::Vector3 none;
    EXPECT_THAT(model.m_vecMeshes.at(0).m_vecCoordinates.at(1),
                testing::ElementsAre(TW2::convert::Vector3(0.75F, 0.0F, 0.0F), none, none));
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
