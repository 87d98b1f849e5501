#include "tests/support/character_files.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace TW2;

namespace
{
/// Characters of every kind in a scene with a camera: skinned, with volumes that are computed and with volumes that are
/// given, some of them out of view; and skeletons alone.
class CharactersInAScene : public ::testing::Test
{
protected:
    CharactersInAScene()
    {
        m_files.m_skinKeys = "enableBoundingBox 1 enableBoundingSphere 1";
        m_script = std::make_unique<S_Script>(m_files.write().c_str());
        m_context.setCurrentCamera(&m_camera);
        m_camera.addTo(&m_scene);
        m_camera.lookAt({0.0f, 0.0f, -20.0f}, {0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
        for (int i = 0; i < 8; ++i)
        {
            if (i == 0 || i == 4)
            {
                m_characters.push_back(
                    i == 0 ? std::make_unique<TW_VertexAnimation>(m_script.get(), "skeleton", "skin")
                           : std::make_unique<TW_VertexAnimation>(m_script.get(), 0, m_script.get(), 1));
            }
            else
            {
                m_characters.push_back(std::make_unique<TW_VertexAnimation>(*m_characters[i < 4 ? 0 : 4]));
            }
            m_characters.back()->addTo(&m_scene);
            m_characters.back()->setPosition(0.0f, 0.0f, i % 2 == 0 ? 5.0f : -1000.0f);
        }
        m_characters[2]->getSkin()->setUseManualBoundingSphere(true);
        m_characters[3]->getSkin()->setUseManualBoundingSphere(true);
        for (int i = 0; i < 3; ++i)
        {
            m_skeletons.push_back(std::make_unique<TW_ObjectAnimation>(*m_characters[0]->getSkeleton()));
            m_skeletons.back()->addTo(&m_scene);
        }
    }

    void executeFrame(int frame)
    {
        const float time = 0.03f * static_cast<float>(frame);
        for (const auto& character : m_characters)
        {
            character->crossAnimateObject(0, time, 0.3f, 1, time, nullptr);
        }
        for (const auto& skeleton : m_skeletons)
        {
            skeleton->animateObject(1, time, nullptr);
        }
        m_scene.executeFrame();
        for (const auto& skeleton : m_skeletons)
        {
            skeleton->accessMeshTransforms().updateWorldMatrices();
        }
    }

    support::CharacterFiles m_files;
    std::unique_ptr<S_Script> m_script;
    P_Context m_context;
    P_Camera m_camera;
    P_Scene m_scene{&m_context};
    std::vector<std::unique_ptr<TW_VertexAnimation>> m_characters;
    std::vector<std::unique_ptr<TW_ObjectAnimation>> m_skeletons;
};
}  // namespace

TEST_F(CharactersInAScene, FramesAllocateNothing)
{
    executeFrame(0);
    const long long made = S_Memory::sm_iNewCount;
    const long long released = S_Memory::sm_iDeleteCount;
    for (int frame = 1; frame < 20; ++frame)
    {
        executeFrame(frame);
    }
    EXPECT_EQ(S_Memory::sm_iNewCount, made);
    EXPECT_EQ(S_Memory::sm_iDeleteCount, released);
}

TEST_F(CharactersInAScene, ASkinsVolumesHoldItInEveryPose)
{
    for (int frame = 0; frame < 40; ++frame)
    {
        executeFrame(3 * frame);
        for (const std::size_t i : {0u, 4u})
        {
            TW_ObjectAnimation& skin = *m_characters[i]->getSkin();
            P_VirtualObject& mesh = *skin.getMesh(0);
            ASSERT_TRUE(mesh.isEnabled());
            const float radius = skin.getBoundingRadius();
            const M_Vector3Template<float> low = skin.getBoundingBoxMin();
            const M_Vector3Template<float> high = skin.getBoundingBoxMax();
            for (int primitive = 0; primitive < mesh.getPrimitiveCount(); ++primitive)
            {
                for (unsigned int v = 0; v < mesh.getPrimitive(primitive)->getVertexBuffer().getUsedCount(); ++v)
                {
                    const M_Vector3Template<float> p =
                        mesh.getMatrix().transformPoint(mesh.getVertexPosition(primitive, v));
                    ASSERT_LE(p.length(), radius);
                    ASSERT_TRUE(low.x <= p.x && low.y <= p.y && low.z <= p.z) << frame << " vertex " << v;
                    ASSERT_TRUE(p.x <= high.x && p.y <= high.y && p.z <= high.z) << frame << " vertex " << v;
                }
            }
        }
    }
}
