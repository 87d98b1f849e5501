#include "tests/support/expectations.h"
#include "tests/support/load_callbacks.h"
#include "tests/support/mesh_builder.h"
#include "tests/support/object_files.h"

#include <tw2/core/exceptions.h>
#include <tw2/core/static_data.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/object/object_animation_mesh_callback.h>

#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <vector>

using namespace TW2;
using support::makeMesh;
using support::makeSolidMaterial;
using support::ObjectFiles;
using support::setChannel;
using support::setMaterials;

namespace
{
using Vector = M_Vector3Template<float>;

/// A picture on the coordinates of the mesh.
TWMaterialChunk makeTexturedMaterial(const std::string& name)
{
    TWMaterialChunk material = makeSolidMaterial(name);
    material.accessDiffuseTexture().name = "picture";
    material.accessDiffuseTexture().frameFiles = {"picture.png"};
    return material;
}

/// A material list whose pictures lie in the files' folder.
MaterialListChunk makeList(const ObjectFiles& files, const std::vector<TWMaterialChunk>& materials)
{
    G_Image(2, 2).writePNG(files.getDirectory().file("picture.png").c_str());
    MaterialListChunk list;
    list.texturePath = files.getDirectory().getPath().string();
    list.materials.assign(materials.begin(), materials.end());
    return list;
}

/// Notes what it is shown.
struct Host : support::LoadCallbacks
{
    void act(Place) override {}
    bool take(MeshChunk& record) override
    {
        if (record.name == m_damaged)
        {
            record.vertices.positions.pop_back();
        }
        return record.name != m_refused;
    }
    void operator()(TW_ObjectAnimation* object, P_VirtualObject* mesh) override
    {
        EXPECT_EQ(object->getMesh(object->getTotalMeshes() - 1), mesh);
        m_loaded.emplace_back(mesh->getName());
    }
    void operator()(P_VirtualObject* mesh, const S_String& parentName) override
    {
        EXPECT_EQ(mesh->getContainer(), nullptr);
        m_missingParents.emplace_back(parentName);
    }

    S_String m_refused;
    S_String m_damaged;
    std::vector<std::string> m_loaded;
    std::vector<std::string> m_missingParents;
};
}  // namespace

TEST(ObjectAnimationMeshes, EveryMaterialOfAMeshBecomesAPrimitiveWithItsVerticesAndTriangles)
{
    ObjectFiles files;
    files.addMaterials(makeList(files, {makeSolidMaterial("red"), makeSolidMaterial("blue"), makeSolidMaterial("x")}));
    MeshChunk mesh = makeMesh("coat", "", {{4, 2}, {0, 0}, {5, 3}});
    setMaterials(mesh, {"red", "blue", "x"});
    files.addMesh(mesh);
    const auto object = files.build();

    P_VirtualObject& coat = *object->getMesh(0);
    ASSERT_EQ(coat.getPrimitiveCount(), 3);
    const unsigned int vertices[] = {4, 0, 5};
    const unsigned int triangles[] = {2, 0, 3};
    const char* const names[] = {"red", "blue", "x"};
    float n = 0.0f;
    for (int g = 0; g < 3; ++g)
    {
        SCOPED_TRACE(g);
        ASSERT_NE(coat.getPrimitive(g), nullptr);
        P_TriangleMesh& geometry = *coat.getPrimitive(g);
        EXPECT_FALSE(geometry.isLocked());
        ASSERT_EQ(geometry.getVertexBuffer().getUsedCount(), vertices[g]);
        ASSERT_EQ(geometry.getIndexBuffer().getUsedCount(), triangles[g]);
        for (unsigned int j = 0; j < vertices[g]; ++j, n += 1.0f)
        {
            EXPECT_EQ(geometry.getVertexBuffer().getPosition(j), Vector(n, 2 * n, -n));
            EXPECT_EQ(geometry.getVertexBuffer().getNormal(j), Vector(0, 0, 1));
        }
        for (unsigned int t = 0; t < triangles[g]; ++t)
        {
            for (unsigned int corner = 0; corner < 3; ++corner)
            {
                EXPECT_EQ(geometry.getIndexBuffer().getIndex(t, corner), t + corner);
            }
        }
        EXPECT_EQ(coat.getPrimitiveInstance(g)->getMaterial(),
                  object->getMaterialManager()->findMaterial(names[g])->getMaterial());
    }
}

TEST(ObjectAnimationMeshes, TheMaterialDecidesWhatAVertexCarries)
{
    TWMaterialChunk pale = makeTexturedMaterial("pale");
    pale.vertexAlpha = true;
    pale.vertexAlphaValue = 0.5f;
    TWMaterialChunk tinted = makeTexturedMaterial("tinted");  // a picture over a plain colour
    tinted.shading = TWMaterialChunk::SHADING_CONSTANT;
    TWMaterialChunk shiny = makeTexturedMaterial("shiny");  // a reflection that is projected, with a texture matrix
    shiny.accessReflectionTexture() = *shiny.getDiffuseTexture();
    TWMaterialChunk hidden = makeSolidMaterial("hidden");
    hidden.invisibleGeometry = true;
    ObjectFiles files;
    files.addMaterials(makeList(files, {makeTexturedMaterial("plain"), pale, tinted, shiny, hidden}));

    const std::vector<std::string> names = {"plain", "pale", "tinted", "shiny", "hidden", "unknown"};
    MeshChunk mesh = makeMesh("all", "", std::vector<support::GroupSize>(names.size(), {3, 1}));
    setMaterials(mesh, names);
    setChannel(mesh, 0, 100.0f, {true, true, true, true, true, true});
    files.addMesh(mesh);
    files.addMesh(makeMesh("bare"));
    const auto object = files.build();
    P_VirtualObject& all = *object->getMesh(0);

    const struct
    {
        bool color;
        unsigned int layers;
        bool visible;
    } expected[] = {{false, 1, true}, {true, 1, true},  {true, 2, true},
                    {false, 1, true}, {true, 1, false}, {false, 0, true}};
    for (int g = 0; g < 6; ++g)
    {
        SCOPED_TRACE(names[static_cast<std::size_t>(g)]);
        const P_VertexFormat& format = all.getPrimitive(g)->getFormat();
        EXPECT_TRUE(format.hasPosition() && format.hasNormal());
        EXPECT_EQ(format.hasColor(), expected[g].color);
        EXPECT_EQ(format.getTextureLayerCount(), expected[g].layers);
        EXPECT_EQ(all.getPrimitiveInstance(g)->isVisible(), expected[g].visible);
    }
    EXPECT_EQ(object->getMesh(1)->getPrimitive(0)->getFormat().getOldVertexFormat(), 0x30u);
    EXPECT_EQ(all.getPrimitiveInstance(5)->getMaterial(), nullptr);

    const auto coordinate = [&](int g, unsigned int vertex, unsigned int layer)
    { return all.getPrimitive(g)->getVertexBuffer().getTextureU(vertex, layer); };
    EXPECT_EQ(coordinate(0, 1, 0), 101.0f);
    EXPECT_EQ(coordinate(1, 2, 0), 105.0f);
    EXPECT_EQ(all.getPrimitive(1)->getVertexBuffer().getColorAlpha(2), 127.5f);
    EXPECT_EQ(coordinate(2, 1, 0), 107.0f);
    EXPECT_EQ(coordinate(2, 1, 1), 0.0f);  // the plain colour
    EXPECT_EQ(coordinate(4, 1, 0), 0.0f);
    const TW_Material& material = *object->getMaterialManager()->findMaterial("shiny");
    ASSERT_EQ(material.getTextureMatrixCount(), 1);
    const int layer = material.getTextureMatrixTextureLayer(0);
    ASSERT_NE(all.getPrimitiveInstance(3)->getTextureMatrix(layer), nullptr);
    EXPECT_EQ(*all.getPrimitiveInstance(3)->getTextureMatrix(layer), material.getTextureMatrix(0));
}

TEST(ObjectAnimationMeshes, AChannelWithoutCoordinatesForAGroupIsAskedAgainForTheNextLayer)
{
    TWMaterialChunk two = makeTexturedMaterial("two");  // picture and a reflection that lies on the mesh
    two.accessReflectionTexture() = *two.getDiffuseTexture();
    two.reflectionMapping = 2;
    two.vertexAlpha = true;
    ObjectFiles files;
    files.addMaterials(makeList(files, {two}));
    MeshChunk mesh = makeMesh("a", "", {{3, 1}, {3, 1}});
    setMaterials(mesh, {"two", "two"});
    setChannel(mesh, 0, 10.0f, {false, true});
    setChannel(mesh, 1, 20.0f);
    files.addMesh(mesh);
    const auto object = files.build();
    ASSERT_EQ(object->getMesh(0)->getPrimitive(0)->getFormat().getTextureLayerCount(), 2u);
    const P_VertexBuffer& without = object->getMesh(0)->getPrimitive(0)->getVertexBuffer();
    EXPECT_EQ(without.getTextureU(1, 0), 0.0f);
    EXPECT_EQ(without.getTextureU(1, 1), 0.0f);
    const P_VertexBuffer& with = object->getMesh(0)->getPrimitive(1)->getVertexBuffer();
    EXPECT_EQ(with.getTextureU(1, 0), 14.0f);
    EXPECT_EQ(with.getTextureU(1, 1), 24.0f);
}

TEST(ObjectAnimationMeshes, MeshesOfOldFilesAreConvertedAlsoAfterTheWorkListsWereReleased)
{
    ObjectFiles files;
    files.addMesh("base");
    support::LegacyMesh cube = support::makeLegacyCube();
    files.addLegacyMesh(cube);
    long long live = 0;
    for (int round = 0; round < 3; ++round)
    {
        {
            const auto object = files.build();
            ASSERT_EQ(object->getTotalMeshes(), 2u);
            EXPECT_EQ(object->getMesh(1)->getPrimitive(0)->getVertexBuffer().getUsedCount(), 8u);
            EXPECT_EQ(object->getMesh(1)->getPrimitive(0)->getIndexBuffer().getUsedCount(), 12u);
        }
        const long long after = S_Memory::getLiveCount();
        deleteStaticData();  // finds nothing: the last object took the lists with it
        EXPECT_EQ(S_Memory::getLiveCount(), after);
        EXPECT_TRUE(round == 0 || after == live);
        live = after;
    }
}

TEST(ObjectAnimationMeshes, NamesFindTheFirstMeshExactlyOrWithoutRegardToCase)
{
    ObjectFiles files;
    files.addMesh("Hand");
    files.addMesh("HAND", "Hand");
    files.addMesh("Hand", "HAND");
    auto object = files.build();
    EXPECT_EQ(object->getTotalMeshes(), 3u);
    EXPECT_EQ(object->getMeshByName("hAnD"), object->getMesh(0));
    EXPECT_EQ(object->getMeshByName(S_String("HAND")), object->getMesh(0));
    EXPECT_EQ(object->getMeshByNameCaseSensitive("HAND"), object->getMesh(1));
    EXPECT_EQ(object->getMeshByNameCaseSensitive(S_String("Hand")), object->getMesh(0));
    EXPECT_EQ(object->getMeshByNameCaseSensitive("hand"), nullptr);
    EXPECT_EQ(object->getMeshByName("foot"), nullptr);
    EXPECT_EQ(object->getMesh(2)->getParent(), object->getMesh(1));
    EXPECT_EQ(object->getMeshIndex(object->getMesh(2)), 2);

    auto* const added = new P_VirtualObject(1);
    added->setName("Foot");
    object->addMesh(added);
    object->addMesh(added);
    EXPECT_EQ(object->getTotalMeshes(), 4u);
    EXPECT_EQ(object->getMeshByName("foot"), added);
    EXPECT_EQ(object->getMeshTransforms().getCount(), 4u);
    P_TransformBlock own;
    own.append(*added);
    const P_VirtualObject stranger(1);
    EXPECT_EQ(object->getMeshIndex(added), 3) << "what a host keeps in a block of its own";
    EXPECT_EQ(object->getMeshIndex(&stranger), -1);
}

TEST(ObjectAnimationMeshes, AnInstanceSharesGeometryAndHasItsOwnPlace)
{
    ObjectFiles files;
    files.addMesh("wheel");
    MeshChunk second;
    second.name = "wheel 2";
    second.transform = M_Matrix4x3Template<float>::translation({5, 0, 0});
    second.hasParent = true;
    second.parentName = "wheel";
    second.editInstanceName() = "wheel";
    files.addMesh(second);
    const auto object = files.build();
    ASSERT_EQ(object->getTotalMeshes(), 2u);
    EXPECT_EQ(object->getMesh(1)->getPrimitive(0), object->getMesh(0)->getPrimitive(0));
    EXPECT_EQ(object->getMesh(1)->getName(), "wheel 2");
    EXPECT_EQ(object->getMesh(1)->getParent(), object->getMesh(0));
    EXPECT_EQ(object->getMesh(1)->getMatrix().m[3][0], 5.0f);

    second.editInstanceName() = "Wheel";
    files.addMesh(second);
    EXPECT_THAT(support::messageOf([&] { files.build(); }), testing::HasSubstr("instance of unknown mesh \"Wheel\""));
}

TEST(ObjectAnimationMeshes, BonesWithoutGeometryAreMeshesWithAnEmptyPrimitive)
{
    ObjectFiles files;
    MeshChunk bone;
    bone.name = "bone";
    files.addMesh(bone);
    MeshChunk points = makeMesh("points");
    points.hasFaces = false;
    files.addMesh(points);
    files.addMesh("leaf", "bone");
    files.addAnimation(0, {support::makeTrack("bone", 10.0f)});
    const auto object = files.build();
    ASSERT_EQ(object->getMesh(0)->getPrimitiveCount(), 1);
    EXPECT_EQ(object->getMesh(0)->getPrimitive(0)->getVertexBuffer().getUsedCount(), 0u);
    EXPECT_EQ(object->getMesh(1)->getPrimitive(0)->getVertexBuffer().getUsedCount(), 0u);
    object->animateObjectFrame(0, 5.0f, nullptr);
    EXPECT_FLOAT_EQ(object->getMesh(2)->getObjectToWorldMatrix().m[3][0], 5.0f);
}

TEST(ObjectAnimationMeshes, TheHostRefusesMeshesSeesThemArriveAndHearsOfMissingParents)
{
    ObjectFiles files;
    files.addMesh("trunk");
    files.addMesh("branch", "trunk");
    files.addMesh("leaf", "branch");
    files.addMesh("moss", "trunk");
    Host host;
    host.m_refused = "branch";
    const auto object = files.build();
    EXPECT_EQ(host.m_loaded, (std::vector<std::string>{"trunk", "leaf", "moss"}));
    EXPECT_EQ(host.m_missingParents, std::vector<std::string>{"branch"});
    ASSERT_EQ(object->getTotalMeshes(), 3u);
    EXPECT_EQ(object->getMeshByName("leaf")->getContainer(), nullptr);
    EXPECT_EQ(object->getMeshByName("moss")->getParent(), object->getMeshByName("trunk"));

    host.m_damaged = "moss";
    EXPECT_THAT(support::messageOf([&] { files.build(); }), testing::HasSubstr("Mesh \"moss\" cannot be built"));
}

TEST(ObjectAnimationMeshes, RecordsThatAHostChangesAreBuiltOnlyWhenTheyStillFit)
{
    class Editor : public TW_ObjectAnimationMeshCallback
    {
    public:
        using TW_ObjectAnimationMeshCallback::TW_ObjectAnimationMeshCallback;
        void operator()(MeshChunk& record) override
        {
            MeshChunk edited(record);  // the loader's own keeps its slots for the loads after this one
            m_edit(edited);
            TW_ObjectAnimationMeshCallback::operator()(edited);
        }
        std::function<void(MeshChunk&)> m_edit;
    };
    const std::tuple<const char*, std::function<void(MeshChunk&)>, bool> edits[] = {
        {"nothing", [](MeshChunk&) {}, true},
        {"no triangles, wild vertices",
         [](MeshChunk& record)
         {
             record.hasFaces = false;
             record.vertices.groupOffsets.clear();
         },
         true},
        {"no vertex offsets", [](MeshChunk& record) { record.vertices.groupOffsets.clear(); }, false},
        {"vertices past the end", [](MeshChunk& record) { record.vertices.groupOffsets[1] = 4; }, false},
        {"one normal less", [](MeshChunk& record) { record.vertices.normals.pop_back(); }, false},
        {"short vertex map",
         [](MeshChunk& record) {
             record.vertices.vertexMap = {1, 2};
         },
         false},
        {"triangles past the end", [](MeshChunk& record) { record.faces.groupOffsets[1] = ~0u; }, false},
        {"one triangle too many", [](MeshChunk& record) { ++record.faces.groupCounts[0]; }, false},
        {"coordinates past the end", [](MeshChunk& record) { record.channels[0].groupOffsets[1] = -1; }, false},
        {"dropped channel of another size",
         [](MeshChunk& record)
         {
             record.channelUsed[0] = false;
             record.channels[0].groupCounts = {1, 3};
         },
         false},
        {"too few slots", [](MeshChunk& record) { record.channels.resize(1); }, false},
    };
    ObjectFiles files;
    files.addMaterials(makeList(files, {makeTexturedMaterial("plain")}));
    MeshChunk mesh = makeMesh("a", "", {{3, 1}, {3, 1}});
    setMaterials(mesh, {"plain", "plain"});
    setChannel(mesh, 0, 10.0f);
    files.addMesh(mesh);
    const std::string script = files.writeScript();
    for (const auto& [name, edit, fits] : edits)
    {
        SCOPED_TRACE(name);
        TW_ObjectAnimation object;
        Editor editor(&object);
        editor.m_edit = edit;
        const auto construct = [&] { object.construct(script.c_str(), "object", &editor, false); };
        if (fits)
        {
            construct();
            EXPECT_EQ(object.getTotalMeshes(), 1u);
            continue;
        }
        EXPECT_THAT(support::messageOf(construct), testing::HasSubstr("Mesh \"a\" cannot be built, expected "));
    }
}

TEST(ObjectAnimationMeshes, AHostsMeshCallbackBuildsGeometryItselfAndMayTakeTheObjectAwayMeanwhile)
{
    class Builder : public TW_ObjectAnimationMeshCallback
    {
    public:
        Builder(TW_ObjectAnimation* object, std::size_t takeAt)
            : TW_ObjectAnimationMeshCallback(object), m_object(object), m_uTakeAt(takeAt)
        {
        }
        P_TriangleMesh* createTriangleMesh(P_VirtualObject* mesh, int primitive, int flags, int triangles, int vertices,
                                           const S_Vector<int>& vertexMap) override
        {
            m_asked.push_back(vertices);
            EXPECT_TRUE(vertexMap.empty());
            if (m_asked.size() == m_uTakeAt)
            {
                m_object->destruct();
            }
            return TW_ObjectAnimationMeshCallback::createTriangleMesh(mesh, primitive, flags, triangles, vertices,
                                                                      vertexMap);
        }
        std::vector<int> m_asked;

    private:
        TW_ObjectAnimation* m_object;
        std::size_t m_uTakeAt;
    };
    ObjectFiles files;
    files.addMaterials(MaterialListChunk{"", {makeSolidMaterial("skin"), makeSolidMaterial("cloth")}});
    MeshChunk first = makeMesh("a", "", {{7, 2}, {3, 1}});
    MeshChunk second = makeMesh("b", "a", {{4, 1}, {5, 1}});
    for (MeshChunk* mesh : {&first, &second})
    {
        setMaterials(*mesh, {"skin", "cloth"});
        files.addMesh(*mesh);
    }
    const std::string script = files.writeScript();
    TW_ObjectAnimation object;
    for (std::size_t takeAt = 1; takeAt <= 4; ++takeAt)
    {
        Builder taker(&object, takeAt);
        EXPECT_THROW(object.construct(script.c_str(), "object", &taker, false), TW_Exception_InvalidGeometry) << takeAt;
        EXPECT_FALSE(object.isConstructed());
        EXPECT_EQ(object.getTotalMeshes(), 0u);
    }
    Builder builder(&object, 5);
    object.construct(script.c_str(), "object", &builder, false);
    EXPECT_EQ(builder.m_asked, (std::vector<int>{7, 3, 4, 5}));
    EXPECT_EQ(object.getTotalMeshes(), 2u);

    Builder nobodys(nullptr, 0);
    MeshChunk record = makeMesh("c", "", {{3, 1}});
    EXPECT_THROW(nobodys(record), TW_Exception_InvalidGeometry);
}
