#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/records.h"

#include <tw2/core/exceptions.h>
#include <tw2/core/static_data.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace TW2;

namespace
{
const int skins[] = {1, 2};

class SkinnedLevels : public testing::Test
{
protected:
    support::CharacterFiles m_files;
    S_Script m_script{m_files.write().c_str()};
};
}  // namespace

TEST_F(SkinnedLevels, AllLevelsFollowOneSkeletonThatHangsBelowTheWrapper)
{
    P_Context context;
    P_Scene scene(&context);
    P_Camera camera;
    camera.addTo(&scene);
    context.setCurrentCamera(&camera);
    const float distances[] = {10.0f, 100.0f};
    TW_VertexAnimationLODs object(&m_script, 0, 2, &m_script, skins, distances);
    object.addTo(&scene);
    const std::string script = m_script.getScriptName();
    EXPECT_EQ(std::string(object.getName()), "TW_VertexAnimationLODs " + script + ", skeleton; " + script + ", skin");
    EXPECT_EQ(std::string(object.getLODObject(0)->getName()), "TW_VertexAnimationLODs 0 " + script + ", skin");
    EXPECT_EQ(object.getType(), P_BaseObject::ObjectType::SkinnedLevels);
    EXPECT_EQ(object.getLODObject(1)->getSkeleton(), object.getSkeleton());
    EXPECT_EQ(object.getSkeleton()->getParent(), &object);
    EXPECT_EQ(object.getFirstChild(), object.getEngineLODObject());

    // Whichever level is shown, its skin stands where that of a character without levels does.
    TW_VertexAnimation reference(&m_script, 0, &m_script, 1);
    reference.addTo(&scene);
    for (const float distance : {5.0f, 50.0f, 5.0f})
    {
        object.setPosition(0, 0, distance);
        EXPECT_TRUE(object.animateObjectFrame(1, distance, nullptr));
        reference.animateObjectFrame(1, distance, nullptr);
        scene.executeFrame();
        TW_VertexAnimation* const used = object.getUsedLODObject();
        ASSERT_EQ(used, object.getLODObject(distance < 10 ? 0 : 1));
        for (unsigned int v = 0; v < 60; ++v)
        {
            const auto found = used->getSkin()->getMesh(0)->getVertexPosition(0, v);
            const auto expected = reference.getSkin()->getMesh(0)->getVertexPosition(0, v);
            EXPECT_LT((found - expected).length(), 1e-5f) << "vertex " << v << " at " << distance;
        }
    }
}

TEST_F(SkinnedLevels, AnimationIsThatOfLevelZeroAndTexturesThoseOfTheLevelInUse)
{
    TW_VertexAnimationLODs object(&m_script, 0, 2, &m_script, skins);
    EXPECT_EQ(object.getEngineLODObject()->getRange(0), std::numeric_limits<float>::max());
    EXPECT_EQ(object.getEngineLODObject()->getRange(1), 100.0f);
    EXPECT_EQ(object.getLevelCount(), 2);
    EXPECT_EQ(object.getUsedLODObject(), nullptr);
    EXPECT_EQ(object.getMesh(2), object.getSkeleton()->getMesh(2));
    EXPECT_TRUE(object.isValidAnimation(1));
    EXPECT_FALSE(object.animateObject(5, 0.0f, nullptr));
    object.setAnimationFPS(1, 20.0f);
    EXPECT_EQ(object.getSkeleton()->getAnimationFPS(1), 20.0f);
    EXPECT_EQ(object.getAnimationLength(1), 1.0f);
    TW_ObjectAnimationState state(object);
    EXPECT_EQ(state.accessMatrixVector().size(), 8u);
    object.animateObjectFrame(1, 4.0f, nullptr);
    object.freezeAnimationState(&state, nullptr);
    const auto frozen = object.getMesh(1)->getMatrix();
    EXPECT_TRUE(object.crossAnimateObject(0, 0.1f, 0.2f, 1, 0.4f, nullptr));
    EXPECT_NE(object.getMesh(1)->getMatrix(), frozen);
    object.restoreAnimationState(&state);
    EXPECT_EQ(object.getMesh(1)->getMatrix(), frozen);

    EXPECT_FALSE(object.isValidTextureAnimationSet("flames") || object.animateTexture("flames", 0.0f));
    EXPECT_NO_THROW(object.uploadTextures());
}

TEST_F(SkinnedLevels, CopiesHaveTheSameRangesAndASkeletonOfTheirOwn)
{
    TW_VertexAnimation(&m_script, 0, &m_script, 1);  // what the loader keeps for the next file is there from here on
    deleteStaticData();
    const support::NothingLeft check;
    const TW_VertexAnimation source(&m_script, 0, &m_script, 1);
    const TW_VertexAnimationLODs object(*source.getSkeleton(), 2, &m_script, skins);
    TW_VertexAnimationLODs copy(object);
    EXPECT_EQ(copy.getName(), object.getName() + " (clone)");
    EXPECT_EQ(copy.getEngineLODObject()->getRange(1), 100.0f);
    EXPECT_NE(copy.getSkeleton(), object.getSkeleton());
    EXPECT_EQ(copy.getSkeleton()->getParent(), &copy);
    EXPECT_EQ(copy.getLODObject(1)->getSkeleton(), copy.getSkeleton());
    EXPECT_EQ(copy.getEngineFlags(), object.getEngineFlags());
    copy.construct(object, object.getLODObject(0)->getSkin()->getMaterialManager());
    EXPECT_TRUE(copy.isConstructed());
}

TEST_F(SkinnedLevels, TheyCanBeRebuiltFromTheirOwnParts)
{
    TW_VertexAnimationLODs object(&m_script, 0, 2, &m_script, skins);
    const S_String name = object.getSkeleton()->getName();
    const int nearAndFarAndFar[] = {1, 2, 2};
    object.construct(*object.getSkeleton(), 3, &m_script, nearAndFarAndFar);
    EXPECT_EQ(object.getLevelCount(), 3);
    EXPECT_EQ(object.getSkeleton()->getName(), name + " (clone)");
    EXPECT_EQ(object.getFirstChild(), object.getEngineLODObject());
    EXPECT_EQ(object.getSkeleton()->getParent(), &object);
    EXPECT_TRUE(object.animateObjectFrame(1, 4.0f, nullptr));

    const TW_VertexAnimationLODs source(&m_script, 0, 2, &m_script, skins);
    object.construct(source, object.getLODObject(2)->getSkin()->getMaterialManager());
    EXPECT_EQ(object.getLevelCount(), 2);
    object.construct(*object.getLODObject(1)->getSkeleton(), 1, &m_script, skins);
    EXPECT_EQ(object.getLevelCount(), 1);
    EXPECT_EQ(object.getLODObject(0)->getSkin()->getName(), source.getLODObject(0)->getSkin()->getName());
    const int missing[] = {1, 9};
    EXPECT_THROW(object.construct(*object.getSkeleton(), 2, &m_script, missing), S_ScriptException);
    EXPECT_FALSE(object.isConstructed());
    EXPECT_EQ(object.getFirstChild(), nullptr);
}

TEST_F(SkinnedLevels, MaterialsAreThoseOfEveryLevel)
{
    m_files.m_materials.materials = {support::makeSolidMaterial("material0"), support::makeSolidMaterial("material1")};
    S_Script script(m_files.write().c_str());
    TW_VertexAnimationLODs object(&script, 0, 2, &script, skins);
    const auto expectMaterials = [](const TW_VertexAnimationLODs& levels, const TW_MaterialManager& manager)
    {
        for (int level = 0; level < levels.getLevelCount(); ++level)
        {
            P_VirtualObject& body = *levels.getLODObject(level)->getSkin()->getMesh(0);
            for (int i = 0; i < 2; ++i)
            {
                EXPECT_EQ(body.getPrimitiveInstance(i)->getMaterial(),
                          manager.findMaterial("material" + std::to_string(i))->getMaterial())
                    << "level " << level;
            }
        }
    };
    const auto getManager = [](const TW_VertexAnimationLODs& levels, int level)
    { return levels.getLODObject(level)->getSkin()->getMaterialManager(); };
    const std::string body = m_files.getDirectory().file("body.tw");
    TW_MaterialManager other;
    TW_ObjectAnimation::loadMaterials(&other, body.c_str());
    object.remapMaterials(&other);
    expectMaterials(object, other);
    TW_MaterialManager another;
    TW_ObjectAnimation::loadMaterials(&another, body.c_str());
    TW_VertexAnimationLODs copy;
    copy.construct(object, &another);
    expectMaterials(copy, another);
    expectMaterials(object, other);

    // With the materials of one of their own levels.
    for (const int level : {0, 1})
    {
        copy.loadMaterials(body.c_str());
        copy.remapMaterials(getManager(copy, level));
        expectMaterials(copy, *getManager(copy, 0));
        copy.construct(object, getManager(copy, level));
        expectMaterials(copy, *getManager(copy, 1));
    }
}

TEST_F(SkinnedLevels, TheSkeletonsManualVolumesAreThoseOfTheWhole)
{
    EXPECT_NE(TW_VertexAnimationLODs(&m_script, 0, 2, &m_script, skins).getBoundingRadius(), 77.0f);
    m_files.m_skeletonKeys = "boundingSphereRadius 66 enableBoundingBox 0";
    S_Script sphereOnly(m_files.write().c_str());
    EXPECT_EQ(TW_VertexAnimationLODs(&sphereOnly, 0, 2, &sphereOnly, skins).getBoundingRadius(), 66.0f);
    m_files.m_skeletonKeys = "boundingSphereRadius 77 boundingBoxMin (-5,-6,-7) boundingBoxMax (5,6,7)";
    S_Script script(m_files.write().c_str());
    TW_VertexAnimationLODs object(&script, 0, 2, &script, skins);
    EXPECT_EQ(object.getBoundingRadius(), 77.0f);
    EXPECT_EQ(object.getBoundingBoxMin(), (M_Vector3Template<float>{-5, -6, -7}));
    EXPECT_EQ(object.getBoundingBoxMax(), (M_Vector3Template<float>{5, 6, 7}));
}

TEST_F(SkinnedLevels, NoLevelIsAnErrorAndAFailedConstructionLeavesNothing)
{
    TW_VertexAnimationLODs(&m_script, 0, 2, &m_script, skins);  // the script and the loader keep what they made
    deleteStaticData();
    support::expectNothingLeftByFailedAllocations(
        [&]
        {
            const TW_VertexAnimationLODs levels(&m_script, 0, 2, &m_script, skins);
            const TW_VertexAnimationLODs copy(levels);
        });

    TW_VertexAnimationLODs object;
    const std::string message = support::messageOf([&] { object.construct(&m_script, 0, 0, &m_script, skins); });
    EXPECT_THAT(message, testing::HasSubstr("0 levels of detail; at least 1 is needed"));
    m_files.m_skin.objectNames[0] = "other";
    S_Script damaged(m_files.write().c_str());
    EXPECT_THROW(object.construct(&damaged, 0, 2, &damaged, skins), TW_Exception_InvalidGeometry);
    EXPECT_FALSE(object.isConstructed());
}
