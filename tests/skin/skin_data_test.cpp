#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/load_callbacks.h"

#include <tw2/core/exceptions.h>
#include <tw2/core/static_data.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/skin/skin_mesh_callback.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/scene/driver_exception.h>
#include <platform/scene/skin_mesh.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <utility>

using namespace TW2;

namespace
{
using Skin = TW_VertexAnimation::Skin;

/// The message with which building a character from these files fails; nothing may be left of it.
std::string buildError(const support::CharacterFiles& files)
{
    const std::string script = files.write();
    TW_VertexAnimation character;
    support::messageOf([&] { character.construct(script.c_str(), "skeleton", "skin"); });  // the loader's records grow
    deleteStaticData();
    const long long live = S_Memory::getLiveCount();
    const std::string message = support::messageOf([&] { character.construct(script.c_str(), "skeleton", "skin"); });
    EXPECT_FALSE(character.isConstructed());
    EXPECT_EQ(character.getSkin(), nullptr);
    deleteStaticData();
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    return message;
}

/// Vertex 0: bone 2 by 0.25 and bone 5 by 0.75; vertex 1: three bones of equal weight; vertex 2: none.
SkinChunk makeThreeVertices()
{
    constexpr float third = 1 / 3.0f;
    return support::makeSkin({"BONE0", "BONE1", "BONE2", "BONE3", "BONE4", "BONE5", "BONE6", "BONE7"},
                             {{{{2, 0.25f}, {5, 0.75f}}, {{7, third}, {1, third}, {4, third}}, {}}});
}
}  // namespace

TEST(SkinData, AFileAnswersPerPrimitiveVertexAndInfluence)
{
    support::CharacterFiles files;
    files.m_skin.boneNames.push_back("Unused");
    files.write();
    const S_String name = files.getDirectory().file("body.skd").c_str();
    const long long live = S_Memory::getLiveCount();
    {
        const Skin skin(name);
        EXPECT_TRUE(skin.isConstructed() && skin.isSortedByPrimitive());
        EXPECT_EQ(skin.getSkinChunk(), files.m_skin);
        EXPECT_EQ(skin.getPrimitiveVertexCount(1), 60);
        // Vertex 3 of primitive 1 is vertex 63 of all: four influences, of bones 63, 66, 69 and 72 modulo 8.
        EXPECT_EQ(skin.getVertexBoneCount(1, 3), 4);
        EXPECT_EQ(skin.getVertexBoneCountList(1)[3], 4);
        EXPECT_EQ(skin.getVertexBone(1, 3, 2), 5);
        EXPECT_FLOAT_EQ(skin.getVertexWeight(1, 3, 2), 0.3f);
        EXPECT_TRUE(skin.boneHasVerticesWeighted("BONE0"));
        EXPECT_FALSE(skin.boneHasVerticesWeighted("unused"));
        EXPECT_FALSE(skin.boneHasVerticesWeighted("Bone"));

        Skin copy(skin);
        Skin other;
        EXPECT_FALSE(other.isConstructed());
        other = copy;
        copy.destruct();
        EXPECT_FALSE(copy.isConstructed());
        EXPECT_TRUE(other.isConstructed());
        EXPECT_EQ(Skin(copy).getSkinChunk(), files.m_skin);
        copy = Skin();
        EXPECT_EQ(other.getSkinChunk(), files.m_skin);
        EXPECT_EQ(copy.getSkinChunk(), SkinChunk());
    }
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    support::expectNothingLeftByFailedAllocations([&name] { const Skin skin(name); });
}

TEST(SkinData, ARecordOfAHostsIsTakenAsItIsAndAnswersFromTheListsThatItHas)
{
    SkinChunk chunk;
    chunk.boneNames = {"Hip", "Hand"};
    chunk.influenceBones = {0};
    Skin skin(chunk);
    EXPECT_TRUE(skin.boneHasVerticesWeighted("hip"));
    EXPECT_FALSE(skin.boneHasVerticesWeighted("Hand"));
    EXPECT_FALSE(skin.boneHasVerticesWeighted(static_cast<const char*>(nullptr)));

    chunk = makeThreeVertices();
    chunk.boneNames.clear();
    skin.construct(chunk);
    EXPECT_EQ(skin.getVertexBone(0, 1, 2), 4);
    EXPECT_TRUE(skin.isConstructed());
}

TEST(SkinData, AreCheckedAgainstACharacterThatIsConstructed)
{
    const support::CharacterFiles files;
    TW_VertexAnimation character(files.write().c_str(), "skeleton", "skin");
    const Skin skin(*character.getSkinData());
    EXPECT_NO_THROW(skin.checkDataValidity(&character));
    EXPECT_THROW(skin.checkDataValidity(nullptr), TW_Exception_InvalidGeometry);
    character.destruct();
    EXPECT_THROW(skin.checkDataValidity(&character), TW_Exception_InvalidGeometry);
}

TEST(SkinData, ThatAHostExchangesWhileTheSkinIsLoadedMoveNoMeshAndAreChecked)
{
    class Exchange : public support::LoadCallbacks
    {
        void act(Place) override {}
        bool take(MeshChunk& record) override
        {
            if (record.name == m_strAt)
            {
                m_character.getSkinData()->construct(m_chunk);
            }
            return true;
        }

    public:
        TW_VertexAnimation m_character;
        S_String m_strAt;
        SkinChunk m_chunk;
    };
    support::CharacterFiles files;
    files.m_skinMeshes.push_back(files.m_skinMeshes.front());
    files.m_skinMeshes.back().name = "cape";
    files.m_skin.objectNames.push_back("cape");
    const std::string script = files.write();
    Exchange exchange;
    exchange.m_chunk = files.m_skin;
    exchange.m_strAt = "cape";
    exchange.m_character.construct(script.c_str(), "skeleton", "skin");
    for (unsigned int mesh = 0; mesh < 2; ++mesh)
    {
        const P_SkinMesh& made = *exchange.m_character.getSkin()->getMesh(mesh)->getPrimitive(0)->asSkinMesh();
        EXPECT_EQ(made.getBoneCountList()[3], files.m_skin.vertexBoneCounts[3]) << "the record is kept for the meshes";
    }

    exchange.m_chunk.influenceBones[4] = 8;
    exchange.m_strAt = "body";
    EXPECT_EQ(support::messageOf([&] { exchange.m_character.construct(script.c_str(), "skeleton", "skin"); }),
              "TW2: Invalid Geometry: Skin mesh \"body\" has an SKD that contradicts itself: influence 4: bone 8 of 8 "
              "bones");
    EXPECT_FALSE(exchange.m_character.isConstructed());
}

TEST(SkinData, ThatDoNotFitTheCharacterAreNamed)
{
    using Files = support::CharacterFiles;
    const std::pair<const char*, std::function<void(support::CharacterFiles&)>> faults[] = {
        {"number of skin objects don't match(skin 1, skd 2)", [](Files& f) { f.m_skin.objectNames.push_back("cape"); }},
        {"objects' names and .SKD object names don't match(skin \"body\", skd \"Body\")",
         [](Files& f) { f.m_skin.objectNames[0] = "Body"; }},
        {", bone Tail)", [](Files& f) { f.m_skin.boneNames[3] = "Tail"; }},
        {"SKD refers to undefined skeleton bone (skeleton ",
         [](Files& f) { f.m_bones.clear(), f.m_animations.clear(); }},
        {"Skin mesh \"body\" needs skin data that the SKD lacks: primitive 1 of 1",
         [](Files& f) { f.m_skin.primitiveVertexCounts.pop_back(), f.m_skin.primitiveFirstVertices.pop_back(); }},
        {"Skin mesh \"body\" needs skin data that the SKD lacks: vertex 59 of 59 in primitive 0",
         [](Files& f) { f.m_skin.primitiveVertexCounts[0] = 59; }},
        {"names no SKD (key \"skindata\")", [](Files& f) { f.m_bNamesSkinData = false; }},
    };
    for (const auto& [expected, damage] : faults)
    {
        support::CharacterFiles files;
        damage(files);
        const std::string message = buildError(files);
        EXPECT_EQ(message.rfind("TW2: Invalid Geometry: ", 0), 0u) << message;
        EXPECT_THAT(message, testing::HasSubstr(expected));
    }

    support::CharacterFiles files;
    for (S_String& bone : files.m_skin.boneNames)
    {
        bone[0] = 'b';  // bone names may differ in case
    }
    std::swap(files.m_skin.boneNames.front(), files.m_skin.boneNames.back());  // and stand in any order
    EXPECT_NO_THROW(TW_VertexAnimation(files.write().c_str(), "skeleton", "skin"));
}

TEST(SkinMeshes, AVertexMayFollowFourBonesAndNoMore)
{
    support::CharacterFiles files;
    const TW_VertexAnimation character(files.write().c_str(), "skeleton", "skin");
    const P_TriangleMesh* primitive = character.getSkin()->getMesh(0)->getPrimitive(0);
    ASSERT_NE(primitive->asSkinMesh(), nullptr);
    EXPECT_EQ(primitive->asSkinMesh()->getSlotCount(), 4u);

    // The vertex before the last takes over the first influence of the last one: five.
    auto& skin = files.m_skin;
    skin.vertexBoneCounts[3] = 5;
    EXPECT_EQ(buildError(files), "DirectX allows only 4 bones per vertex");
}

TEST(SkinMeshes, SlotsAreSortedByWeightUnlessAVertexMapNamesTheVertices)
{
    support::CharacterFiles files;
    files.m_skin = makeThreeVertices();
    files.m_skinMeshes = {support::CharacterFiles::makeMesh("body", 1, 3)};
    TW_VertexAnimation character(files.write().c_str(), "skeleton", "skin");
    TW_SkinMeshCallback callback(character.getSkin(), &character);
    P_VirtualObject mesh(1);
    mesh.setName("hand-made");
    const auto make = [&](const S_Vector<int>& map) -> const P_SkinMesh&
    { return *callback.createTriangleMesh(&mesh, 0, 0x30, 1, 3, map)->asSkinMesh(); };

    const P_SkinMesh& sorted = make({});
    EXPECT_EQ(sorted.getSlotCount(), 3u);
    EXPECT_EQ(sorted.getBoneIndex(0, 0), 5u);
    EXPECT_EQ(sorted.getBoneWeight(0, 0), 0.75f);
    EXPECT_EQ(sorted.getBoneIndex(0, 1), 2u);
    EXPECT_EQ(sorted.getBoneWeight(0, 2), 0.0f);
    EXPECT_EQ(sorted.getBoneIndex(1, 0), 7u);  // equal weights keep their order
    EXPECT_EQ(sorted.getBoneIndex(1, 2), 4u);
    EXPECT_EQ(sorted.getBoneWeight(2, 0), 0.0f);
    EXPECT_EQ(sorted.getBoneCountList(), character.getSkinData()->getVertexBoneCountList(0));
    EXPECT_FALSE(sorted.isLocked());

    const P_SkinMesh& mapped = make({2, 0, 0});
    EXPECT_EQ(mapped.getSlotCount(), 2u);
    EXPECT_EQ(mapped.getBoneWeight(0, 0), 0.0f);
    EXPECT_EQ(mapped.getBoneIndex(1, 0), 2u);
    EXPECT_EQ(mapped.getBoneWeight(2, 1), 0.75f);

    EXPECT_EQ(make({2, 2, 2}).getSlotCount(), 0u);
    P_VirtualObject larger(2);
    EXPECT_EQ(callback.createTriangleMesh(&larger, 1, 0x30, 1, 3, {0, 1, 2})->asSkinMesh()->getBoneCountList(), nullptr)
        << "the skin data have no second primitive";
    P_VirtualObject unused(2);
    EXPECT_EQ(callback.createTriangleMesh(&unused, 1, 0x30, 0, 0, {})->asSkinMesh()->getSlotCount(), 0u)
        << "a material that no polygon has";
    for (const int vertex : {3, -1, INT_MAX})
    {
        for (const S_Vector<int>& map : {S_Vector<int>{vertex, 0, 0}, {0, 0, vertex}})
        {
            const std::string message = support::messageOf([&] { make(map); });
            EXPECT_THAT(message, testing::HasSubstr("Skin mesh \"hand-made\""));
            EXPECT_THAT(message, testing::HasSubstr("vertex " + std::to_string(vertex)));
        }
    }
    EXPECT_THAT(support::messageOf([&] { make({0}); }), testing::HasSubstr("a vertex map of 1 entries for 3 vertices"));
    TW_VertexAnimation empty;
    TW_SkinMeshCallback lost(character.getSkin(), &empty);
    EXPECT_THROW(lost.createTriangleMesh(&mesh, 0, 0x30, 1, 3, {}), TW_Exception_InvalidGeometry);
    TW_SkinMeshCallback none(character.getSkin(), nullptr);
    EXPECT_THROW(none.createTriangleMesh(&mesh, 0, 0x30, 1, 3, {}), TW_Exception_InvalidGeometry);
}
