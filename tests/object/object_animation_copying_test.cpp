#include "tests/support/expectations.h"
#include "tests/support/object_files.h"

#include <tw2/core/exceptions.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

using namespace TW2;
using support::makeSolidMaterial;
using support::makeTrack;
using support::ObjectFiles;

namespace
{
MaterialListChunk makeList(const std::vector<std::string>& names, const G_FColor& color = {})
{
    MaterialListChunk list;
    for (const std::string& name : names)
    {
        list.materials.push_back(makeSolidMaterial(name, color));
    }
    return list;
}

/// Two meshes, the second below the first, in two materials.
struct ObjectAnimationCopying : testing::Test
{
    ObjectAnimationCopying()
    {
        m_files.addMaterials(makeList({"skin", "cloth"}));
        MeshChunk body = support::makeMesh("body", "", {{3, 1}, {4, 2}});
        support::setMaterials(body, {"skin", "cloth"});
        m_files.addMesh(body);
        MeshChunk head = support::makeMesh("head", "body");
        support::setMaterials(head, {"skin"});
        m_files.addMesh(head);
        m_files.addAnimation(2, {makeTrack("head", 10.0f)});
        m_object = m_files.build("orthonormalized");
    }

    /// A file with other materials of these names.
    [[nodiscard]] std::string writeMaterials(const std::vector<std::string>& names) const
    {
        return m_files.getDirectory().write("materials.tw", support::toBytes(makeList(names, {0, 255, 0})));
    }
    static P_Material* getMaterial(TW_ObjectAnimation& object, unsigned int mesh, int primitive)
    {
        return object.getMesh(mesh)->getPrimitiveInstance(primitive)->getMaterial();
    }
    static P_Material* findMaterial(TW_ObjectAnimation& object, const char* name)
    {
        return object.getMaterialManager()->findMaterial(name)->getMaterial();
    }

    ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST_F(ObjectAnimationCopying, ACopySharesGeometryAndTracksAndOutlivesItsSource)
{
    m_object->setUseManualBoundingSphere(true);
    m_object->setManualBoundingSphereRadius(12.0f);
    m_object->setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, false);
    TW_ObjectAnimation copy(*m_object);
    TW_ObjectAnimation deep;
    deep.construct(*m_object, true, nullptr);
    const P_TriangleMesh* const geometry = m_object->getMesh(0)->getPrimitive(1);
    EXPECT_EQ(copy.getName(), m_object->getName() + " (clone)");
    EXPECT_EQ(copy.getMesh(0)->getPrimitive(1), geometry);
    EXPECT_NE(deep.getMesh(0)->getPrimitive(1), geometry);
    EXPECT_EQ(m_object->getAnimation(2)->m_vecKeyframeAnimations[1]->getObjectReferenceCount(), 3);
    EXPECT_EQ(copy.getAnimation(2)->m_iInstance, m_object->getAnimation(2)->m_iInstance);
    m_object.reset();

    for (TW_ObjectAnimation* object : {&copy, &deep})
    {
        EXPECT_EQ(object->getCrossMode(), InterpolationMode::Orthonormalized);
        EXPECT_EQ(object->getBoundingRadius(), 12.0f);
        EXPECT_FALSE(object->hasEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE));
        EXPECT_EQ(object->getMaximumAnimationIndex(), 2);
        EXPECT_EQ(object->getContainer(), nullptr);
        ASSERT_EQ(object->getTotalMeshes(), 2u);
        EXPECT_EQ(object->getMesh(0)->getParent(), static_cast<P_BaseObject*>(object));
        EXPECT_EQ(object->getMesh(1)->getParent(), object->getMesh(0));
        EXPECT_EQ(object->getMeshTransforms().getCount(), 2u);
        ASSERT_EQ(object->getMesh(0)->getPrimitive(1)->getVertexBuffer().getUsedCount(), 4u);
        EXPECT_EQ(object->getMesh(0)->getPrimitive(1)->getVertexBuffer().getPosition(0).x, 3.0f);
        EXPECT_EQ(getMaterial(*object, 0, 1), findMaterial(*object, "cloth"));
        EXPECT_EQ(getMaterial(*object, 1, 0), findMaterial(*object, "skin"));
        object->animateObjectFrame(2, 5.0f, nullptr);
        EXPECT_FLOAT_EQ(object->getMesh(1)->getMatrix().m[3][0], 5.0f);
        ASSERT_NE(object->getMeshByName("HEAD"), nullptr);
    }
}

TEST_F(ObjectAnimationCopying, CopyingOntoItselfOrFromNothingIsHarmless)
{
    TW_ObjectAnimation& same = *m_object;
    *m_object = same;
    EXPECT_EQ(m_object->getTotalMeshes(), 2u);
    const TW_ObjectAnimation nothing;
    *m_object = nothing;
    EXPECT_FALSE(m_object->isConstructed());
    EXPECT_EQ(m_object->getTotalMeshes(), 0u);

    m_object = m_files.build();
    m_object->setName("");
    TW_ObjectAnimation copy(*m_object);
    EXPECT_EQ(copy.getName(), "TW_ObjectAnimation clone(no name)");
    copy.construct(*m_object, false, copy.getMaterialManager());
    EXPECT_EQ(getMaterial(copy, 0, 1), findMaterial(copy, "cloth"));
}

TEST_F(ObjectAnimationCopying, ACopyMayHaveOtherMaterialsOfTheSameNames)
{
    TW_MaterialManager materials;
    TW_ObjectAnimation::loadMaterials(&materials, writeMaterials({"skin", "fur"}).c_str());
    TW_ObjectAnimation copy;
    copy.construct(*m_object, false, &materials);
    EXPECT_EQ(getMaterial(copy, 1, 0), findMaterial(copy, "skin"));
    EXPECT_NE(getMaterial(copy, 1, 0), getMaterial(*m_object, 1, 0));
    // There is no other "cloth", and the source's may go at any time.
    EXPECT_EQ(getMaterial(copy, 0, 1), nullptr);
    EXPECT_NE(getMaterial(*m_object, 0, 1), nullptr);
}

TEST_F(ObjectAnimationCopying, LoadedMaterialsReplaceThoseOfTheSameNames)
{
    m_object->loadMaterials(writeMaterials({"cloth", "skin"}).c_str());
    ASSERT_EQ(m_object->getMaterialManager()->getMaterialCount(), 2u);
    EXPECT_EQ(m_object->getMaterialManager()->getMaterial(0)->getSolidColor().green, 255.0f);
    EXPECT_EQ(getMaterial(*m_object, 0, 0), findMaterial(*m_object, "skin"));
    EXPECT_EQ(getMaterial(*m_object, 0, 1), findMaterial(*m_object, "cloth"));

    const std::string without = m_files.writeAnimation("none.tw", {makeTrack("head", 1.0f)});
    EXPECT_EQ(support::messageOf([&] { m_object->loadMaterials(without.c_str()); }),
              "TW2: File \"" + without + "\" didn't contain any materials");
    EXPECT_EQ(getMaterial(*m_object, 0, 1), findMaterial(*m_object, "cloth"));
}

TEST_F(ObjectAnimationCopying, MaterialsThatCannotBeReplacedStay)
{
    const P_Material* const before = getMaterial(*m_object, 0, 0);
    TW_MaterialManager materials;
    TW_ObjectAnimation::loadMaterials(&materials, writeMaterials({"cloth", "skin"}).c_str());
    const TW_MaterialManager* const manager = m_object->getMaterialManager();
    support::expectUnchangedByFailedAllocations([&] { m_object->remapMaterials(&materials); },
                                                [&]
                                                {
                                                    EXPECT_EQ(m_object->getMaterialManager(), manager);
                                                    EXPECT_EQ(getMaterial(*m_object, 0, 0), before);
                                                    EXPECT_EQ(getMaterial(*m_object, 1, 0), before);
                                                });
    EXPECT_NE(getMaterial(*m_object, 0, 0), before);
}

// What copies share until one of them changes.
TEST_F(ObjectAnimationCopying, CopiesAndTheirSourceChangeWithoutEachOther)
{
    auto copy = std::make_unique<TW_ObjectAnimation>(*m_object);
    const TW_ObjectAnimation third(*copy);
    auto added = std::make_unique<P_VirtualObject>();
    added->setName("Hat");
    P_VirtualObject* const hat = added.get();
    copy->addMesh(added.release());
    copy->addMesh(copy->getMesh(0));  // is one already
    copy->getMesh(1)->setName("skull");
    EXPECT_EQ(copy->getTotalMeshes(), 3u);
    EXPECT_EQ(copy->getMeshIndex(hat), 2);
    EXPECT_EQ(copy->getMeshByName("hAT"), hat);
    EXPECT_EQ(copy->getMeshByNameCaseSensitive("head"), copy->getMesh(1)) << "a mesh keeps the name it was added under";
    EXPECT_EQ(copy->getBoneHandle("skull").getBoneIndex(), 1u);
    for (const TW_ObjectAnimation* other : {static_cast<const TW_ObjectAnimation*>(m_object.get()), &third})
    {
        EXPECT_EQ(other->getMeshByName("hat"), nullptr);
        EXPECT_EQ(other->getMesh(1)->getName(), "head");
        EXPECT_EQ(other->getMeshIndex(hat), -1);
    }
    EXPECT_EQ(m_object->getMeshIndex(copy->getMesh(0)), -1);

    P_PrimitiveInstance& primitive = *copy->getMesh(0)->getPrimitiveInstance(1);
    primitive.setVisible(false);
    primitive.setTextureMatrix(0, M_Matrix4Template<float>());
    copy->getMesh(0)->setCollisionGroup(3);
    const P_PrimitiveInstance& original = *std::as_const(*m_object->getMesh(0)).getPrimitiveInstance(1);
    EXPECT_TRUE(original.isVisible());
    EXPECT_EQ(original.getTextureMatrix(0), nullptr);
    EXPECT_EQ(m_object->getMesh(0)->getCollisionGroup(), 0);

    // A copy knows its meshes by the names that they have now.
    TW_ObjectAnimation renamed(*copy);
    EXPECT_EQ(renamed.getMeshByName("head"), nullptr);
    ASSERT_EQ(renamed.getMeshByNameCaseSensitive("skull"), renamed.getMesh(1));
    EXPECT_EQ(renamed.getMesh(1)->getParent(), renamed.getMesh(0));
    EXPECT_EQ(renamed.getMesh(2)->getParent(), static_cast<P_BaseObject*>(&renamed));
    EXPECT_FALSE(std::as_const(*renamed.getMesh(0)).getPrimitiveInstance(1)->isVisible());

    copy.reset();
    m_object.reset();
    EXPECT_EQ(third.getMesh(1)->getName(), "head");
    EXPECT_EQ(third.getMesh(1)->getParent(), third.getMesh(0));
    EXPECT_EQ(renamed.getMeshByName("HAT"), renamed.getMesh(2));
}

TEST(CharacterMemory, OneMoreCharacterTakesAFractionOfWhatItsMeshesAre)
{
    ObjectFiles files;
    for (int bone = 0; bone < 64; ++bone)
    {
        files.addMesh("a bone of a longer name " + std::to_string(bone),
                      bone > 0 ? "a bone of a longer name " + std::to_string((bone - 1) / 2) : "");
    }
    files.addAnimation(0, {makeTrack("a bone of a longer name 7", 1.0f)});
    const auto character = files.build();
    const S_MemoryScope::Usage before = S_MemoryScope::getUsage("TW Memory Container");
    const TW_ObjectAnimation copy(*character);
    const S_MemoryScope::Usage after = S_MemoryScope::getUsage("TW Memory Container");
    EXPECT_LT(after.m_iBytes - before.m_iBytes, 20'000);
    EXPECT_LT(after.m_iBlocks - before.m_iBlocks, 32);
}

TEST(CharacterMemory, AMeshThatCannotBeAddedIsStillTheCallersAndNotFound)
{
    TW_ObjectAnimation object;
    const auto make = [](const char* name)
    {
        auto mesh = std::make_unique<P_VirtualObject>();
        mesh->setName(name);
        return mesh;
    };
    object.addMesh(make("the first mesh of a long name").release());
    auto second = make("the second mesh of a long name");
    support::expectUnchangedByFailedAllocations([&] { object.addMesh(second.get()); },
                                                [&]
                                                {
                                                    EXPECT_EQ(object.getTotalMeshes(), 1U);
                                                    EXPECT_EQ(object.getMeshByName(second->getName()), nullptr);
                                                    EXPECT_EQ(object.getMeshByNameCaseSensitive(second->getName()),
                                                              nullptr);
                                                });
    EXPECT_EQ(object.getMesh(1), second.release());
}

TEST(CharacterMemory, MeshesAreAddedOneByOneWithoutMovingTheOthersEachTime)
{
    TW_ObjectAnimation object;
    long long moves = 0;
    const M_Matrix4x3Template<float>* place = nullptr;
    for (int i = 0; i < 1000; ++i)
    {
        auto mesh = std::make_unique<P_VirtualObject>();
        mesh->setName(std::to_string(i).c_str());
        mesh->setMatrix(M_Matrix4x3Template<float>::translation({static_cast<float>(i), 0.0f, 0.0f}));
        object.addMesh(mesh.get());
        (void)mesh.release();
        moves += &object.getMesh(0)->getMatrix() != place;
        place = &object.getMesh(0)->getMatrix();
    }
    EXPECT_LT(moves, 12);
    for (unsigned int i = 0; i < 1000; ++i)
    {
        ASSERT_EQ(object.getMeshByName(std::to_string(i).c_str()), object.getMesh(i));
        ASSERT_EQ(object.getMeshIndex(object.getMesh(i)), static_cast<int>(i));
        ASSERT_EQ(object.getMesh(i)->getMatrix().m[3][0], static_cast<float>(i));
    }
}
