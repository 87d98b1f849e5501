#include "tests/support/object_files.h"
#include "tests/support/sanitized.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>

#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <string>

using namespace TW2;
using support::makeTrack;

namespace
{
constexpr int callCount = support::isSanitized ? 200000 : 1000000;
constexpr std::size_t objectCount = 100;
constexpr int animationCount = 3;

/// Hosts a hundred objects of one kind and does something to one of them at every step.
class Crowd
{
public:
    Crowd()
    {
        MaterialListChunk materials;
        materials.materials = {support::makeSolidMaterial("red"), support::makeSolidMaterial("blue")};
        m_files.addMaterials(materials);
        for (const auto& [name, parent] : {std::pair("a", ""), {"b", "a"}, {"c", "b"}, {"d", "a"}})
        {
            MeshChunk mesh = support::makeMesh(name, parent, {{3, 1}, {3, 1}});
            support::setMaterials(mesh, {"red", "blue"});
            m_files.addMesh(mesh);
        }
        m_files.addAnimation(0, {makeTrack("a", 1.0f), makeTrack("b", 2.0f), makeTrack("c", 3.0f)});
        m_files.addAnimation(1, {makeTrack("c", 4.0f), makeTrack("d", 5.0f)});
        m_files.addAnimation(2, {makeTrack("b", 6.0f)});
        m_more = m_files.writeAnimation("more.tw", {makeTrack("d", 7.0f)}).c_str();
        m_script = std::make_unique<S_Script>(m_files.writeScript("normalized").c_str());
    }

    void step()
    {
        TW_ObjectAnimation& object = choose();
        switch (number(1000))
        {
            case 0:
                object.construct(m_script.get(), "object", nullptr, number(2) == 0);
                break;
            case 1:
                object.destruct();
                break;
            case 2:
                if (object.getTotalMeshes() > 0)
                {
                    object.appendSingleAnimation(number(animationCount), m_more, true);
                }
                break;
            case 3:
                object.loadMaterials(m_files.getDirectory().file("geometry.tw").c_str());
                break;
            default:
                stepOften(object);
        }
    }

private:
    void stepOften(TW_ObjectAnimation& object)
    {
        const int index = number(animationCount + 1);
        const int second = number(animationCount + 1);
        const auto time = static_cast<float>(number(300)) / 100.0f;
        switch (number(12))
        {
            case 0:
                if (number(10) == 0)
                {
                    object.construct(choose(), number(2) == 0, nullptr);
                }
                break;
            case 1:
                object.shareAnimation(index, &choose());
                break;
            case 2:
                if (number(20) == 0)
                {
                    object.deleteAnimation(index);
                }
                break;
            case 3:
                object.deleteAnimation("c", index);
                break;
            case 4:
                if (const TW_ObjectAnimation::ObjectAnimation* const record = choose().getAnimation(index);
                    record && record->m_vecKeyframeAnimations.size() > 1 && record->m_vecKeyframeAnimations[1])
                {
                    object.insertAnimation("d", second, record->m_vecKeyframeAnimations[1]);
                }
                break;
            case 5:
                object.freezeAnimationState(&m_state, nullptr);
                break;
            case 6:
                object.crossAnimateObject(&m_state, 0.3f, index, time, nullptr);
                break;
            case 7:
                object.crossAnimateObject(index, time, 0.4f, second, 0.5f * time, nullptr);
                break;
            case 8:
                playGroup(object, index, time);
                break;
            case 9:
                object.subAnimateObject(index, time, 0.5f);
                break;
            default:
                object.animateObject(index, time, nullptr);
        }
    }

    static void playGroup(TW_ObjectAnimation& object, int index, float time)
    {
        if (object.getTotalMeshes() == 0)
        {
            return;
        }
        const std::array handles = {object.getBoneHandle("B"), object.getBoneHandle("d")};
        TW_BoneGroupHandle group(2, handles.data());
        group.attach(&object);
        object.animateObject(index, time, &group);
        EXPECT_TRUE(std::isfinite(object.getMesh(1)->getObjectToWorldMatrix().m[3][0]));
    }

    int number(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }
    TW_ObjectAnimation& choose() { return m_objects[static_cast<std::size_t>(number(objectCount))]; }

    support::ObjectFiles m_files;
    S_String m_more;
    std::unique_ptr<S_Script> m_script;
    std::array<TW_ObjectAnimation, objectCount> m_objects;
    TW_ObjectAnimationState m_state{4u};
    std::mt19937 m_random{20261124};
};
}  // namespace

TEST(ObjectAnimationSoak, AMillionMixedCallsOnAHundredObjectsLeaveNothingBehind)
{
    const int objects = TW_VirtualObject::getLiveCount();
    // What stays for the whole process is there before blocks are counted.
    {
        Crowd warmUp;
        for (int i = 0; i < 3000; ++i)
        {
            warmUp.step();
        }
    }
    const long long live = S_Memory::getLiveCount();
    {
        Crowd crowd;
        EXPECT_EQ(TW_VirtualObject::getLiveCount(), objects + static_cast<int>(objectCount));
        for (int i = 0; i < callCount; ++i)
        {
            crowd.step();
        }
    }
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    EXPECT_EQ(TW_VirtualObject::getLiveCount(), objects);
}
