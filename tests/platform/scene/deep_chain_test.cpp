// Trees as deep as a hundred thousand objects: nothing may recurse, and nothing may take time that grows with the
// square of the depth (which would be minutes here).

#include "test_object.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{
constexpr std::size_t s_uiDepth = 100'000;

class DeepChain : public ::testing::Test
{
protected:
    /// Objects one below the other, one unit apart, hung together from the top or from the bottom.
    void build(bool fromTop, P_ObjectContainer* root)
    {
        for (std::size_t i = 0; i < s_uiDepth; ++i)
        {
            m_chain.push_back(std::make_unique<TestObject>());
            m_chain.back()->setPosition(1.0f, 0.0f, 0.0f);
            if (fromTop)
            {
                m_chain[i]->addTo(i == 0 ? root : m_chain[i - 1].get());
            }
        }
        for (std::size_t i = fromTop ? 0 : s_uiDepth; i-- > 0;)
        {
            m_chain[i]->addTo(i == 0 ? root : m_chain[i - 1].get());
        }
    }

    std::vector<std::unique_ptr<TestObject>> m_chain;
};
}  // namespace

TEST_F(DeepChain, IsBuiltMovedWalkedAndTakenApartFromTheTop)
{
    P_Context context;
    P_Camera camera;
    context.setCurrentCamera(&camera);
    P_Scene scene(&context);
    build(true, &scene);
    EXPECT_EQ(m_chain.back()->getObjectToWorldMatrix().getTranslation().x, static_cast<float>(s_uiDepth));
    for (int i = 0; i < 100; ++i)
    {
        // The first marks the whole chain, the others stop at once.
        m_chain[static_cast<std::size_t>(i)]->invalidateMatrices();
    }
    m_chain[0]->setPosition(3.0f, 0.0f, 0.0f);
    EXPECT_EQ(m_chain.back()->getObjectToWorldMatrix().getTranslation().x, static_cast<float>(s_uiDepth + 2));
    m_chain[0]->setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, true);
    scene.executeFrame();
    EXPECT_THROW(m_chain[0]->addTo(m_chain.back().get()), P_SceneException);
    for (std::unique_ptr<TestObject>& object : m_chain)
    {
        object.reset();
    }
    EXPECT_EQ(scene.getChildCount(), 0u);
}

TEST_F(DeepChain, IsBuiltFromTheBottomAndTakenApartFromThere)
{
    P_Scene scene;
    build(false, &scene);
    EXPECT_EQ(m_chain.back()->getScene(), &scene);
    scene.executeFrame();
    while (!m_chain.empty())
    {
        m_chain.pop_back();
    }
}

TEST_F(DeepChain, HasItsVolumesComputedAndItsBlockUpdatedInAnyOrder)
{
    build(true, nullptr);
    P_VirtualObject mesh(1);
    P_VertexFormat format;
    format.constructFromOldVertexFormat(P_VertexFormat::POSITION);
    mesh.createTriangleMesh(0, nullptr, format)->allocate(0, 1, false);
    mesh.addTo(m_chain.back().get());
    EXPECT_EQ(m_chain[0]->getBoundingRadius(), static_cast<float>(s_uiDepth - 1));

    P_TransformBlock block;
    std::vector<P_BaseObject*> members(s_uiDepth);
    for (std::size_t i = 0; i < s_uiDepth; ++i)
    {
        members[i] = m_chain[s_uiDepth - 1 - i].get();
    }
    block.adopt(members.data(), members.size());
    EXPECT_FALSE(block.areParentsFirst());
    block.updateWorldMatrices();
    block.accessLocalMatrices()[s_uiDepth - 1].setTranslation({5.0f, 0.0f, 0.0f});
    const unsigned int top = static_cast<unsigned int>(s_uiDepth - 1);
    block.invalidate(&top, 1);
    EXPECT_FALSE(mesh.isObjectToWorldMatrixValid());
    block.updateWorldMatrices();
    EXPECT_EQ(mesh.getObjectToWorldMatrix().getTranslation().x, static_cast<float>(s_uiDepth + 4));
}
