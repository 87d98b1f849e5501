#include "actor.h"
#include "test_object.h"

#include <platform/runtime/exception.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/point_light.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/spot_light.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
class SceneWalk : public ::testing::Test
{
protected:
    SceneWalk() { m_context.setCurrentCamera(&m_camera); }

    std::unique_ptr<Actor> make(const char* name, P_ObjectContainer* container)
    {
        auto actor = std::make_unique<Actor>(m_calls, name);
        actor->addTo(container);
        return actor;
    }
    const std::vector<std::string>& walk()
    {
        m_calls.clear();
        m_scene.executeFrame();
        return m_calls;
    }
    std::vector<std::string> getVisible() const { return ::getVisible(m_scene); }
    /// Gives the object a sphere of that radius which the engine tests and never computes.
    static void setSphere(P_BaseObject& object, float radius)
    {
        object.setBoundingRadius(radius);
        object.setEngineFlag(P_BaseObject::FLAG_BOUNDING_SPHERE, true);
        object.setEngineFlag(P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME, true);
    }

    std::vector<std::string> m_calls;
    P_Context m_context;
    P_Camera m_camera;
    P_Scene m_scene{&m_context};
};
}  // namespace

TEST_F(SceneWalk, CallsParentsFirstAndThenWhatIsEnabledAndInView)
{
    const auto a = make("a", &m_scene);
    const auto b = make("b", a.get());
    const auto c = make("c", a.get());
    const auto d = make("d", &m_scene);
    EXPECT_THAT(m_calls, ElementsAre("link a", "link b", "link c", "link d"));
    EXPECT_EQ(b->getContext(), &m_context);
    a->enable(false);
    setSphere(*c, 1.0f);
    c->setPosition(0.0f, 0.0f, -5.0f);
    P_PointLight light;
    P_PointLight darkLight;
    light.addTo(c.get());
    darkLight.addTo(c.get());
    darkLight.enable(false);
    EXPECT_THAT(walk(), ElementsAre("always a", "always b", "always c", "always d", "visible b", "visible d"));
    EXPECT_THAT(getVisible(), ElementsAre("b", "d"));
    EXPECT_THAT(m_scene.getLights(), ElementsAre(&light));
    EXPECT_FALSE(c->isInView());
    d->remove();
    EXPECT_THAT(m_scene.getVisibleMeshes(), IsEmpty());
}

TEST_F(SceneWalk, AnObjectOutOfViewHidesItsSubtreeOnlyWhenItIsToldTo)
{
    const auto parent = make("parent", &m_scene);
    const auto child = make("child", parent.get());
    const auto grandchild = make("grandchild", child.get());
    setSphere(*parent, 1.0f);
    parent->setPosition(0.0f, 0.0f, -5.0f);
    walk();
    EXPECT_THAT(getVisible(), ElementsAre("child", "grandchild"));
    parent->setEngineFlag(P_BaseObject::FLAG_CULL_SUBTREE, true);
    child->m_bForcesItselfInView = true;
    walk();
    EXPECT_THAT(getVisible(), ElementsAre("child"));
    parent->m_bForcesItselfInView = true;
    walk();
    EXPECT_THAT(getVisible(), ElementsAre("parent", "child", "grandchild"));
    parent->m_bForcesItselfInView = false;
    parent->m_onAlways = [&] { parent->setInView(true); };
    walk();
    EXPECT_THAT(getVisible(), ElementsAre("parent", "child", "grandchild"));
}

TEST_F(SceneWalk, VisitsTheLevelOfDetailThatTheDistanceAsksFor)
{
    P_LODObject lod(3);
    lod.addTo(&m_scene);
    const auto near = make("near", nullptr);
    const auto middle = make("middle", nullptr);
    const auto far = make("far", nullptr);
    lod.setLODObject(0, near.get(), 10.0f);
    lod.setLODObject(1, middle.get(), 20.0f);
    lod.setLODObject(2, far.get(), 30.0f);
    EXPECT_EQ(lod.getUsedLODObject(), nullptr);
    const auto at = [&](float distance)
    {
        lod.setPosition(0.0f, 0.0f, distance);
        walk();
        return getVisible();
    };
    EXPECT_THAT(at(10.0f), ElementsAre("near"));
    EXPECT_THAT(at(10.5f), ElementsAre("middle"));
    EXPECT_THAT(at(-25.0f), ElementsAre("far"));
    EXPECT_THAT(at(31.0f), IsEmpty());
    EXPECT_EQ(lod.getUsedLevel(), -1);
    lod.removeLODObject(0);
    EXPECT_EQ(near->getContainer(), nullptr);
    EXPECT_EQ(lod.getRange(0), 10.0f);
    EXPECT_THAT(at(1.0f), ElementsAre("middle"));
    lod.setLODObject(2, middle.get(), 40.0f);
    EXPECT_EQ(lod.getLODObject(1), nullptr);
    EXPECT_EQ(far->getContainer(), nullptr);
    EXPECT_THAT(at(35.0f), ElementsAre("middle"));
    m_context.setCurrentCamera(nullptr);
    EXPECT_THAT(at(1000.0f), ElementsAre("middle"));
    EXPECT_THROW(lod.setLODObject(3, nullptr, 0.0f), P_SceneException);
    EXPECT_THROW((void)lod.getRange(-1), P_SceneException);
}

TEST_F(SceneWalk, ALevelWhoseObjectIsDestroyedOrHungElsewhereIsEmpty)
{
    auto lod = std::make_unique<P_LODObject>(2);
    auto first = make("first", nullptr);
    const auto second = make("second", nullptr);
    lod->setLODObject(0, first.get(), 10.0f);
    lod->setLODObject(1, second.get(), 20.0f);
    lod->calculateLOD();
    first.reset();
    EXPECT_EQ(lod->getLODObject(0), nullptr);
    EXPECT_EQ(lod->getUsedLODObject(), nullptr);
    EXPECT_THROW(lod->setLODObject(0, lod.get(), 1.0f), P_SceneException);
    lod->calculateLOD();
    EXPECT_EQ(lod->getUsedLODObject(), second.get());
    second->addTo(&m_scene);
    EXPECT_EQ(lod->getUsedLODObject(), nullptr);
    lod->setLODObject(1, second.get(), 20.0f);
    lod.reset();
    EXPECT_EQ(second->getContainer(), nullptr);
}

TEST_F(SceneWalk, ObjectsMayTakeThemselvesAndOthersOutOfTheScene)
{
    auto a = make("a", &m_scene);
    auto b = make("b", a.get());
    auto c = make("c", &m_scene);
    auto d = make("d", &m_scene);
    const auto e = make("e", &m_scene);
    std::unique_ptr<Actor> added;
    a->m_onAlways = [&]
    {
        a.reset();  // itself; b hangs under nothing then
        c.reset();  // one that waits
        added = make("added", &m_scene);
    };
    d->m_onVisible = [&]
    {
        d.reset();
        e->remove();
    };
    EXPECT_THAT(walk(), ElementsAre("always a", "link added", "always d", "always e", "visible d"));
    EXPECT_THAT(getVisible(), IsEmpty());
    EXPECT_EQ(b->getScene(), nullptr);
    EXPECT_THAT(walk(), ElementsAre("always added", "visible added"));
}

TEST_F(SceneWalk, AFailingCallLeavesTheSceneReadyForTheNextFrame)
{
    const auto a = make("a", &m_scene);
    const auto b = make("b", &m_scene);
    bool again = true;
    b->m_onAlways = [&]
    {
        if (again)
        {
            m_scene.executeFrame();  // a frame during a frame
        }
    };
    EXPECT_THROW(walk(), P_SceneException);
    EXPECT_THAT(m_scene.getVisibleMeshes(), IsEmpty());
    again = false;
    walk();
    EXPECT_THAT(getVisible(), ElementsAre("a", "b"));
}

TEST_F(SceneWalk, SurvivesRandomChangesInTheMiddleOfAFrame)
{
    Dice dice(3);
    std::vector<std::unique_ptr<Actor>> actors(12);
    std::set<std::string> visited;
    int number = 0;
    const auto anyContainer = [&]() -> P_ObjectContainer*
    {
        P_ObjectContainer* const actor = actors[dice.pick(actors.size())].get();
        return actor && dice.chance(0.7) ? actor : &m_scene;
    };
    std::function<void(std::size_t)> plant;
    const auto disturb = [&]
    {
        const std::size_t i = dice.pick(actors.size());
        if (!actors[i])
        {
            plant(i);
        }
        else if (dice.chance(0.3))
        {
            actors[i].reset();
        }
        else if (dice.chance(0.3))
        {
            actors[i]->remove();
        }
        else
        {
            try
            {
                actors[i]->addTo(anyContainer());
            }
            catch (const P_SceneException&)  // below itself
            {
            }
        }
    };
    plant = [&](std::size_t i)
    {
        const std::string name = std::to_string(number++);
        actors[i] = make(name.c_str(), anyContainer());
        actors[i]->m_onAlways = [&, name]
        {
            EXPECT_TRUE(visited.insert(name).second) << name << " was visited twice";
            disturb();
        };
        actors[i]->m_onVisible = disturb;
    };
    for (int frame = 0; frame < 2000; ++frame)
    {
        visited.clear();
        disturb();
        walk();
        for (const P_VirtualObject* mesh : m_scene.getVisibleMeshes())
        {
            ASSERT_EQ(mesh->getScene(), &m_scene);
        }
    }
}

TEST(Scene, ObjectsOutliveTheirSceneAndCamerasTheirPlaceInAContext)
{
    TestObject object;
    P_Context context;
    {
        P_Scene scene(&context);
        object.addTo(&scene);
        P_Camera camera;
        context.setCurrentCamera(&camera);
    }
    EXPECT_EQ(object.getContainer(), nullptr);
    EXPECT_EQ(object.getScene(), nullptr);
    EXPECT_EQ(context.getCurrentCamera(), nullptr);
    {
        P_Context other;
        P_Context::setDefault(&other);
        EXPECT_EQ(TestObject().getContext(), &other);
    }
    EXPECT_NE(P_Context::getDefault(), nullptr);
}

TEST(Scene, ObjectsMeetWhenEachOnesMaskNamesTheOthersGroup)
{
    TestObject a;
    TestObject b;
    EXPECT_TRUE(a.collidesWith(b));
    a.setCollisionGroup(31);
    b.setCollisionMask(1u << 31);
    EXPECT_TRUE(a.collidesWith(b));
    a.setCollisionMask(~1u);
    EXPECT_FALSE(a.collidesWith(b));
    EXPECT_FALSE(b.collidesWith(a));
    EXPECT_THROW(a.setCollisionGroup(32), P_SceneException);
}

TEST(Lights, ASpotLightKeepsItsInnerAngleOnlyWhenNoneIsGiven)
{
    P_SpotLight light;
    light.setFalloffAngle(40.0f, 20.0f);
    light.setFalloffAngle(50.0f, -1.0f);
    EXPECT_EQ(light.getFalloffAngle(), 50.0f);
    EXPECT_EQ(light.getHotspotAngle(), 20.0f);
    light.setFalloffAngle(50.0f, 0.0f);
    EXPECT_EQ(light.getHotspotAngle(), 0.0f);
}
