#include "actor.h"
#include "skinned_geometry.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

/// A scene of plain meshes ("bones") and actors, its bones in a block or not. What is done at random depends on the
/// seed alone, so that two worlds live through the same.
class World
{
public:
    World(bool inBlock, unsigned int seed) : m_bInBlock(inBlock), m_dice(seed)
    {
        m_context.setCurrentCamera(&m_camera);
        m_root.setName("root");
        m_root.addTo(&m_scene);
        m_lod.addTo(&m_scene);
        for (std::size_t i = 0; i < s_uiBones; ++i)
        {
            m_bones.push_back(makeBone());
        }
        for (std::size_t i = 0; i < s_uiActors; ++i)
        {
            m_actors.push_back(std::make_unique<Actor>(m_calls, "actor" + std::to_string(i)));
            m_actors[i]->m_onAlways = m_actors[i]->m_onVisible = [this]
            {
                if (m_bEventful && m_dice.chance(0.5))
                {
                    move();
                }
            };
            m_actors[i]->addTo(anyContainer());
        }
        regroup();
    }

    /// Hangs a bone or an actor elsewhere, or destroys a bone and makes another one.
    void move()
    {
        const std::size_t i = m_dice.pick(s_uiBones);
        if (m_dice.chance(0.1))
        {
            m_bones[i] = makeBone();
            return;
        }
        P_BaseObject* object = m_bones[i].get();
        if (m_dice.chance(0.5))
        {
            object = m_actors[m_dice.pick(s_uiActors)].get();
        }
        P_ObjectContainer* const container = m_dice.chance(0.1) ? nullptr : anyContainer();
        try
        {
            if (object->getParent() != &m_lod)
            {
                object->addTo(container);
            }
        }
        catch (const P_SceneException&)  // below itself
        {
        }
    }

    /// What decides whether a bone is idle.
    void change()
    {
        P_VirtualObject& bone = *m_bones[m_dice.pick(s_uiBones)];
        const bool on = m_dice.chance(0.3);
        switch (m_dice.pick(7))
        {
            case 0:
                bone.getPrimitive(0)->allocate(0, on ? 1 : 0, false);
                break;
            case 1:
                bone.duplicate(static_cast<const P_BaseObject&>(*m_bones[m_dice.pick(s_uiBones)]));
                break;
            case 2:
                bone.createTriangleMesh(0, nullptr, makeFormat(0x10));
                break;
            case 3:
                bone.setEngineFlags(on ? P_BaseObject::FLAG_BOUNDING_SPHERE | P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME |
                                             P_BaseObject::FLAG_CULL_SUBTREE
                                       : P_BaseObject::FLAG_CULL_SUBTREE);
                break;
            case 4:
                bone.setPosition(0.0f, 0.0f, on ? -5.0f : 5.0f);
                break;
            case 5:
                bone.enableVisualization(on);
                break;
            default:
                m_lod.setLODObject(0, on ? &bone : nullptr, 100.0f);
        }
    }

    /// In the world with a block: the bones leave it and come again, but for one.
    void regroup()
    {
        if (m_bInBlock)
        {
            std::vector<P_BaseObject*> members(s_uiBones);
            for (std::size_t i = 1; i < s_uiBones; ++i)
            {
                members[i] = m_bones[i].get();
            }
            m_block.adopt(members.data(), members.size());
        }
    }

    void execute(bool eventful)
    {
        m_calls.clear();
        m_bEventful = eventful;
        m_scene.executeFrame();
        m_bEventful = false;
    }

    /// What was called and found: meshes that show something, and who is in view.
    [[nodiscard]] std::vector<std::string> getResult(bool withViews) const
    {
        std::vector<std::string> result = m_calls;
        for (const P_VirtualObject* mesh : m_scene.getVisibleMeshes())
        {
            if (mesh->getPrimitiveCount() == 0 || mesh->getPrimitive(0)->getVertexBuffer().getCapacity() > 0)
            {
                result.push_back("mesh " + std::string(mesh->getName().c_str()));
            }
        }
        for (const auto& bone : m_bones)
        {
            if (withViews && bone->getScene() == &m_scene && !isBelowLevels(*bone))
            {
                result.push_back(std::string(bone->getName().c_str()) + (bone->isInView() ? " in" : " out"));
            }
        }
        result.push_back(std::to_string(m_context.getDebugLines().size()) + " lines");
        return result;
    }
    [[nodiscard]] std::size_t countIdle() const
    {
        std::size_t count = 0;
        for (const auto& bone : m_bones)
        {
            count += bone->isIdle();
        }
        return count;
    }

private:
    static constexpr std::size_t s_uiBones = 16;
    static constexpr std::size_t s_uiActors = 5;

    std::unique_ptr<P_VirtualObject> makeBone()
    {
        auto bone = std::make_unique<P_VirtualObject>(1);
        bone->createTriangleMesh(0, nullptr, makeFormat(0x10));
        bone->setName(("bone" + std::to_string(m_iNumber++)).c_str());
        bone->addTo(anyContainer());
        return bone;
    }
    P_ObjectContainer* anyContainer()
    {
        const std::size_t i = m_dice.pick(s_uiBones + 4);
        if (i < m_bones.size() && m_bones[i])
        {
            return m_bones[i].get();
        }
        return m_dice.chance(0.7) ? static_cast<P_ObjectContainer*>(&m_root) : &m_scene;
    }
    static bool isBelowLevels(const P_BaseObject& object)
    {
        const P_BaseObject* at = &object;
        while (at && at->getType() != P_BaseObject::ObjectType::LevelOfDetail)
        {
            at = at->getParent();
        }
        return at;
    }

    bool m_bInBlock;
    Dice m_dice;
    std::vector<std::string> m_calls;
    P_Context m_context;
    P_Camera m_camera;
    P_Scene m_scene{&m_context};
    P_VirtualObject m_root;
    P_LODObject m_lod{1};
    std::vector<std::unique_ptr<P_VirtualObject>> m_bones;
    std::vector<std::unique_ptr<Actor>> m_actors;
    P_TransformBlock m_block;
    bool m_bEventful = false;
    int m_iNumber = 0;
};

/// Two bones, the second below the first, in a block and in a scene.
class IdleBones : public ::testing::Test
{
protected:
    IdleBones()
    {
        m_pTop->addTo(&m_scene);
        m_pEnd->addTo(m_pTop.get());
        P_BaseObject* const members[] = {m_pTop.get(), m_pEnd.get()};
        m_block.adopt(members, 2);
        EXPECT_THAT(walk(), IsEmpty());
        EXPECT_TRUE(m_pTop->isIdle());
    }

    static std::unique_ptr<P_VirtualObject> makeBone(const char* name)
    {
        auto bone = std::make_unique<P_VirtualObject>(1);
        bone->createTriangleMesh(0, nullptr, makeFormat(0x10));
        bone->setName(name);
        return bone;
    }
    std::vector<std::string> walk()
    {
        m_scene.executeFrame();
        return getVisible(m_scene);
    }

    P_Scene m_scene;
    std::unique_ptr<P_VirtualObject> m_pTop = makeBone("top");
    std::unique_ptr<P_VirtualObject> m_pEnd = makeBone("end");
    P_TransformBlock m_block;
};
}  // namespace

TEST(IdleObjects, AFrameDoesWhatItWouldDoIfItVisitedThem)
{
    std::size_t idle = 0;
    for (unsigned int seed = 0; seed < 300; ++seed)
    {
        World passing(true, seed);
        World visiting(false, seed);
        for (int frame = 0; frame < 40; ++frame)
        {
            const bool eventful = frame % 3 != 0;
            for (World* world : {&passing, &visiting})
            {
                world->move();
                world->change();
                if (frame % 5 == 0)
                {
                    world->regroup();
                }
                world->execute(eventful);
            }
            idle += passing.countIdle();
            ASSERT_EQ(passing.getResult(!eventful), visiting.getResult(!eventful)) << seed << " frame " << frame;
            ASSERT_EQ(visiting.countIdle(), 0u);
        }
    }
    EXPECT_GT(idle, 50'000u);  // of 192,000
}

TEST_F(IdleBones, AreShownOnceTheyHaveSomethingToShow)
{
    P_VirtualObject copy(*m_pEnd);
    copy.addTo(&m_scene);
    EXPECT_THAT(walk(), ElementsAre("end"));  // the copy is in no block
    copy.remove();
    copy.getPrimitive(0)->allocate(0, 3, false);  // geometry that the copy and the bone share
    EXPECT_THAT(walk(), ElementsAre("end"));
    EXPECT_TRUE(m_pTop->isIdle());
    m_pEnd->getPrimitive(0)->allocate(0, 0, false);
    EXPECT_THAT(walk(), ElementsAre("end"));  // as long as nobody asks again
    m_pEnd->createTriangleMesh(0, nullptr, makeFormat(0x10));
    EXPECT_THAT(walk(), IsEmpty());
    m_pEnd->getPrimitive(0)->allocate(0, 3, false);
    EXPECT_THAT(walk(), ElementsAre("end"));

    P_VirtualObject empty;
    m_pEnd->duplicate(static_cast<const P_BaseObject&>(empty));
    EXPECT_THAT(walk(), IsEmpty());
    m_block.release(*m_pTop);
    EXPECT_THAT(walk(), ElementsAre("top"));
}

TEST_F(IdleBones, HaveWhatHangsBelowThemVisited)
{
    P_VirtualObject weapon;
    weapon.setName("weapon");
    weapon.addTo(m_pEnd.get());
    EXPECT_THAT(walk(), ElementsAre("weapon"));
    m_pEnd->remove();
    EXPECT_THAT(walk(), IsEmpty());
    m_pEnd->addTo(&m_scene);
    m_pTop->addTo(m_pEnd.get());
    weapon.addTo(m_pTop.get());
    EXPECT_THAT(walk(), ElementsAre("weapon"));
    m_pTop.reset();
    EXPECT_THAT(walk(), IsEmpty());
}

TEST_F(IdleBones, AreFilledWhileTheyAreInNoScene)
{
    m_pTop->remove();
    m_pEnd->getPrimitive(0)->allocate(0, 3, false);
    m_scene.executeFrame();
    m_pTop->addTo(&m_scene);
    EXPECT_THAT(walk(), ElementsAre("end"));
}
