#include "tests/support/character_files.h"
#include "tests/support/expectations.h"

#include <tw2/core/exceptions.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>

#include <platform/runtime/script.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <functional>
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

    TW_ObjectAnimationLODs copy(*object);
    EXPECT_EQ(copy.getName(), object->getName() + " (clone)");
    EXPECT_EQ(copy.getEngineLODObject()->getRange(1), 100.0f);
    EXPECT_NE(copy.getLODObject(1), object->getLODObject(1));
    copy = *&copy;
    copy = TW_ObjectAnimationLODs();
    EXPECT_FALSE(copy.isConstructed());
}

TEST_F(ObjectLevels, AnimatingReachesEveryLevel)
{
    const int blocks[] = {0, 0};
    const auto object = build(blocks);
    TW_ObjectAnimationState state(*object);
    const TW_BoneHandle handle = object->getBoneHandle("bone1");
    using Call = std::function<bool(TW_ObjectAnimationLODs&)>;
    const Call calls[] = {
        [](auto& o) { return o.animateObject(1, 0.3f, nullptr); },
        [](auto& o) { return o.animateObjectFrame(1, 5.0f, nullptr); },
        [](auto& o) { return o.crossAnimateObject(0, 0.1f, 0.2f, 1, 0.4f, nullptr); },
        [](auto& o) { return o.crossAnimateObject(0, 0.1f, 0.2f, 1, 0.4f, 0.3f, 0, 0.8f, nullptr); },
        [](auto& o) { return o.crossAnimateObjectFrame(0, 1.5f, 0.2f, 1, 4.5f, nullptr); },
        [](auto& o) { return o.crossAnimateObjectFrame(0, 1.5f, 0.2f, 1, 4.5f, 0.3f, 0, 8.5f, nullptr); },
        [&](auto& o) { return o.crossAnimateObject(&state, 0.4f, 1, 0.35f, nullptr); },
        [&](auto& o) { return o.crossAnimateObject(&state, 0.2f, 0, 0.1f, 0.3f, 1, 0.7f, 0.5f, nullptr); },
        [&](auto& o) { return o.crossAnimateObjectFrame(&state, 0.4f, 1, 4.5f, nullptr); },
        [&](auto& o) { return o.crossAnimateObjectFrame(&state, 0.2f, 0, 1.5f, 0.3f, 1, 7.5f, 0.5f, nullptr); },
    };
    for (const Call& call : calls)
    {
        const auto before = matrixOf(*object, 0, 1);
        EXPECT_TRUE(call(*object));
        EXPECT_NE(matrixOf(*object, 0, 1), before) << "call " << &call - calls;
        EXPECT_EQ(matrixOf(*object, 1, 1), matrixOf(*object, 0, 1)) << "call " << &call - calls;
    }
    TW_ObjectAnimationState other(*object->getLODObject(0));
    object->calculateLOD();
    object->freezeAnimationState(&state, nullptr);
    object->animateObjectFrame(0, 3.0f, nullptr);
    object->freezeAnimationState(&other, nullptr);
    EXPECT_TRUE(object->crossAnimateObject(&state, 0.5f, &other, nullptr));
    EXPECT_EQ(matrixOf(*object, 1, 1), matrixOf(*object, 0, 1));
    EXPECT_TRUE(object->crossAnimateObject(&state, 0.5f, &other, handle, nullptr));
    EXPECT_EQ(matrixOf(*object, 0, 1), state.accessMatrixVector()[1]);
    EXPECT_EQ(matrixOf(*object, 1, 1), matrixOf(*object, 0, 1));

    object->setAnimationFPS(1, 40.0f);
    EXPECT_EQ(object->getLODObject(1)->getAnimationFPS(1), 40.0f);
    object->getLODObject(0)->deleteAnimation(1);
    EXPECT_TRUE(object->animateObject(1, 0.3f, nullptr)) << "one level that has the animation is enough";
    EXPECT_FALSE(object->animateObject(2, 0.3f, nullptr));
    EXPECT_FALSE(object->animateTexture("flames", 0.0f) || object->animateTextureFrame("flames", 0.0f));
    EXPECT_NO_THROW(object->uploadTextures());
}

TEST_F(ObjectLevels, AskingIsAnsweredByTheLevelInUseTheLastOneOrTheFirst)
{
    const int blocks[] = {0, 1};
    const auto object = build(blocks);
    EXPECT_EQ(object->getUsedLODObject(), nullptr);
    EXPECT_EQ(object->getTotalMeshes(), 1u);
    EXPECT_EQ(object->getMesh(0)->getName(), "body");
    EXPECT_EQ(object->getMaximumAnimationIndex(), -1);
    EXPECT_EQ(object->getAnimationFrames(1), 0u);
    EXPECT_THROW(static_cast<void>(object->getBoneHandle("Bone1")), TW_Exception_BoneNotFound);
    EXPECT_TRUE(object->isValidAnimation(1));
    EXPECT_EQ(object->getAnimationLoopToFrame(1), object->getLODObject(0)->getAnimationLoopToFrame(1));

    TW_ObjectAnimationState state(8);
    object->freezeAnimationState(&state, nullptr);
    EXPECT_FALSE(state.accessStateFrozenVector()[0]) << "nothing is frozen while no level is in use";

    object->calculateLOD();
    EXPECT_EQ(object->getUsedLODObject(), object->getLODObject(0));
    EXPECT_EQ(object->getTotalMeshes(), 8u);
    EXPECT_EQ(object->getTotalAnimations(), 2u);
    EXPECT_EQ(object->getAnimationLength(1), 2.0f);
    EXPECT_EQ(object->getBoneHandle("bone1").getBoneIndex(), 1u);
    object->animateObjectFrame(1, 5.0f, nullptr);
    object->freezeAnimationState(&state, nullptr);
    EXPECT_TRUE(state.accessStateFrozenVector()[7]);
    const auto frozen = matrixOf(*object, 0, 1);
    object->animateObjectFrame(1, 9.0f, nullptr);
    object->restoreAnimationState(&state);
    EXPECT_EQ(matrixOf(*object, 0, 1), frozen);

    P_Scene scene;
    object->addTo(&scene);
    EXPECT_NO_THROW(scene.executeFrame());
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
        EXPECT_THROW(object.construct(&m_script, levels, blocks, false), TW_Exception_InvalidScriptParameter);
    }
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
