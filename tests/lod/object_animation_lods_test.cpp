#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/material_records.h"

#include <tw2/core/exceptions.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>

#include <platform/runtime/script.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/map.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

using namespace TW2;

namespace
{
/// Levels from the blocks of a character's script: 0 has eight meshes and two animations, 1 and 2 one mesh and none.
class ObjectLevels : public testing::Test
{
protected:
    template <std::size_t N>
    std::unique_ptr<TW_ObjectAnimationLODs> build(const int (&blocks)[N])
    {
        return std::make_unique<TW_ObjectAnimationLODs>(&m_script, static_cast<int>(N), blocks, false);
    }

    support::CharacterFiles m_files;
    S_Script m_script{m_files.write().c_str()};
};

M_Matrix4x3Template<float> matrixOf(TW_ObjectAnimationLODs& object, int level, unsigned int mesh)
{
    return object.getLODObject(level)->getMesh(mesh)->getMatrix();
}
}  // namespace

TEST_F(ObjectLevels, RangesComeFromTheScriptOrTheHostAndLastThroughCopies)
{
    const int blocks[] = {1, 2};
    const float distances[] = {5.0f, 50.0f};
    TW_ObjectAnimationLODs given(&m_script, 2, blocks, distances, false);
    EXPECT_EQ(given.getEngineLODObject()->getRange(1), 50.0f);

    const auto object = build(blocks);
    EXPECT_EQ(object->getName(), S_String("TW_ObjectAnimationLODs ") + m_script.getScriptName() + " skin");
    EXPECT_EQ(object->getEngineLODObject()->getRange(0), std::numeric_limits<float>::max());
    EXPECT_EQ(object->getEngineLODObject()->getRange(1), 100.0f);
    EXPECT_EQ(object->getLevelCount(), 2);
    EXPECT_EQ(object->getType(), P_BaseObject::ObjectType::ObjectLevels);
    EXPECT_FALSE(object->hasEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE));
    EXPECT_EQ(object->getFirstChild(), object->getEngineLODObject());

    object->setEngineFlag(P_BaseObject::FLAG_CULL_SUBTREE, true);
    TW_ObjectAnimationLODs copy(*object);
    EXPECT_EQ(copy.getEngineFlags(), object->getEngineFlags());
    EXPECT_EQ(copy.getName(), object->getName() + " (clone)");
    EXPECT_EQ(copy.getEngineLODObject()->getRange(1), 100.0f);
    EXPECT_NE(copy.getLODObject(1), object->getLODObject(1));
    EXPECT_EQ(copy.getLODObject(1)->getMesh(0)->getPrimitive(0), object->getLODObject(1)->getMesh(0)->getPrimitive(0));
    copy = *&copy;
    EXPECT_TRUE(copy.isConstructed());
}

TEST_F(ObjectLevels, MovingReachesEveryLevel)
{
    const int blocks[] = {0, 0};
    const auto object = build(blocks);
    const auto before = matrixOf(*object, 1, 1);
    EXPECT_TRUE(object->animateObjectFrame(1, 5.0f, nullptr));
    EXPECT_NE(matrixOf(*object, 1, 1), before);
    EXPECT_EQ(matrixOf(*object, 1, 1), matrixOf(*object, 0, 1));
    object->setAnimationFPS(1, 40.0f);
    EXPECT_EQ(object->getLODObject(0)->getAnimationFPS(1), 40.0f);
    EXPECT_EQ(object->getLODObject(1)->getAnimationFPS(1), 40.0f);
    object->getLODObject(0)->deleteAnimation(1);
    EXPECT_TRUE(object->animateObject(1, 0.3f, nullptr)) << "one level that has the animation is enough";
    EXPECT_FALSE(object->animateObject(2, 0.3f, nullptr));
}

TEST_F(ObjectLevels, TexturesAreThoseOfEveryLevelAndAskedOfTheOneInUse)
{
    support::TextureFolder pictures;
    pictures.add({"wave0.png", "wave1.png"});
    MaterialListChunk list;
    list.texturePath = pictures.getDirectory().getPath().string().c_str();
    list.materials.resize(1);
    list.materials[0].name = "water";
    support::fillTexture(list.materials[0].accessDiffuseTexture(), "wave", {"wave0.png", "wave1.png"});
    list.materials[0].accessDiffuseTexture().framesPerSecond = 10;
    m_files.m_materials = list;
    S_Script script(m_files.write().c_str());
    const int blocks[] = {1, 2};
    TW_ObjectAnimationLODs object(&script, 2, blocks, false);
    const auto getFrame = [&](int level)
    {
        const TW_MaterialManager& materials = *object.getLODObject(level)->getMaterialManager();
        const S_String& file = materials.getMaterial(0)->getMaterial()->getTexture(0)->getFilename();
        return file[file.size() - 5];
    };
    object.getLODObject(0)->setTextureAnimationFPS("wave", 0, 20.0f);
    EXPECT_EQ(object.getTextureAnimationFPS("wave", 0), 10.0f) << "of the last level, while none is in use";
    object.calculateLOD();
    EXPECT_EQ(object.getTextureAnimationFPS("wave", 0), 20.0f);
    object.setTextureAnimationFPS("wave", 0, 5.0f);
    EXPECT_EQ(object.getLODObject(1)->getTextureAnimationFPS("wave", 0), 5.0f);
    EXPECT_TRUE(object.animateTextureFrame("wave", 1.0f));
    EXPECT_EQ(getFrame(0), '1');
    EXPECT_EQ(getFrame(1), '1');

    const int plainFirst[] = {0, 1};  // only the second has textures
    TW_ObjectAnimationLODs mixed(&script, 2, plainFirst, false);
    mixed.uploadTextures();
    EXPECT_TRUE(
        mixed.getLODObject(1)->getMaterialManager()->getMaterial(0)->getMaterial()->getTexture(0)->isInTextureMemory());
}

TEST_F(ObjectLevels, AskingIsAnsweredByTheLevelInUseTheLastOneOrTheFirst)
{
    const int blocks[] = {0, 1};
    const auto object = build(blocks);
    EXPECT_EQ(object->getUsedLODObject(), nullptr);
    EXPECT_EQ(object->getTotalMeshes(), 1u);
    EXPECT_EQ(object->getMesh(0)->getName(), "body");
    EXPECT_THROW(static_cast<void>(object->getBoneHandle("Bone1")), TW_Exception_BoneNotFound);
    EXPECT_TRUE(object->isValidAnimation(1));
    EXPECT_EQ(object->getAnimationLoopToFrame(1), object->getLODObject(0)->getAnimationLoopToFrame(1));

    TW_ObjectAnimationState state(8);
    object->freezeAnimationState(&state, nullptr);
    EXPECT_FALSE(state.accessStateFrozenVector()[0]) << "nothing is frozen while no level is in use";

    object->calculateLOD();
    EXPECT_EQ(object->getUsedLODObject(), object->getLODObject(0));
    EXPECT_EQ(object->getTotalMeshes(), 8u);
    EXPECT_EQ(TW_ObjectAnimationState(*object).accessMatrixVector().size(), 8u);
    EXPECT_EQ(object->getBoneHandle("bone1").getBoneIndex(), 1u);
    object->animateObjectFrame(1, 5.0f, nullptr);
    object->freezeAnimationState(&state, nullptr);
    EXPECT_TRUE(state.accessStateFrozenVector()[7]);
    const auto frozen = matrixOf(*object, 0, 1);
    object->animateObjectFrame(1, 9.0f, nullptr);
    object->restoreAnimationState(&state);
    EXPECT_EQ(matrixOf(*object, 0, 1), frozen);

    P_VirtualObject plain;
    object->getEngineLODObject()->setLODObject(0, &plain, 1e9f);
    object->calculateLOD();
    EXPECT_EQ(object->getUsedLODObject(), nullptr) << "what a host has put there is no level";
    TW_ObjectAnimation other(*object->getLODObject(1));
    object->getEngineLODObject()->setLODObject(0, &other, 1e9f);
    object->calculateLOD();
    EXPECT_EQ(object->getUsedLODObject(), &other);
}

TEST_F(ObjectLevels, ManualVolumesOfLevelZeroAreThoseOfTheWhole)
{
    m_files.m_skinKeys = "boundingSphereRadius 77 boundingBoxMin (-5,-6,-7) boundingBoxMax (5,6,7)";
    S_Script script(m_files.write().c_str());
    for (const bool manualFirst : {true, false})
    {
        const int blocks[] = {manualFirst ? 1 : 2, manualFirst ? 2 : 1};
        TW_ObjectAnimationLODs object(&script, 2, blocks, false);
        EXPECT_EQ(object.getBoundingRadius() == 77.0f, manualFirst);
        EXPECT_EQ((object.getBoundingBoxMin() == M_Vector3Template<float>{-5, -6, -7}), manualFirst);
        EXPECT_EQ((object.getBoundingBoxMax() == M_Vector3Template<float>{5, 6, 7}), manualFirst);
    }
}

TEST_F(ObjectLevels, NoLevelIsAnErrorAndAFailedConstructionLeavesNothing)
{
    const int blocks[] = {0, 7};
    const float distances[] = {1.0f, 2.0f};
    TW_ObjectAnimationLODs object;
    for (const int levels : {0, -1})
    {
        const std::string message =
            support::messageOf([&] { object.construct(&m_script, levels, blocks, distances, false); });
        EXPECT_EQ(message, std::string("TW2: Invalid parameter in ") + m_script.getScriptName() + ": " +
                               std::to_string(levels) + " levels of detail; at least 1 is needed");
        const int one[] = {1};
        object.construct(&m_script, 1, one, false);
        EXPECT_THROW(object.construct(&m_script, levels, blocks, false), TW_Exception_InvalidScriptParameter);
        EXPECT_FALSE(object.isConstructed());
        EXPECT_EQ(object.getFirstChild(), nullptr);
    }
    EXPECT_EQ(
        support::messageOf([&] { object.construct(&m_script, 1, nullptr, false); }),
        std::string("TW2: Invalid parameter in ") + m_script.getScriptName() + ": no blocks for the levels of detail");
    EXPECT_THROW(object.construct(&m_script, 2, blocks, distances, false), S_ScriptException);
    EXPECT_FALSE(object.isConstructed());
    EXPECT_EQ(object.getBoundingRadius(), 0.0f);
    const int good[] = {1, 2};
    build(good);  // the script and the loader keep what they made
    support::expectNothingLeftByFailedAllocations(
        [&]
        {
            const auto levels = build(good);
            const TW_ObjectAnimationLODs copy(*levels);
        });
}
