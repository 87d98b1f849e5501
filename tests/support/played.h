#pragma once

#include <tw2/tw2.h>

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <functional>
#include <iterator>
#include <utility>
#include <vector>

namespace support
{
constexpr const char* waterName = "a set of pictures whose name is longer than a string has room for in itself";

/// What is called in a frame, by what a reader calls it. The time is in seconds.
using Calls = std::vector<std::pair<const char*, std::function<void(float time)>>>;

/// An object that is built from a character of at least 12 bones or copied, with handles, groups, states and movers of
/// it, in a scene with a camera: whatever a host calls from frame to frame.
template <typename Object>
class Played
{
public:
    template <typename... Arguments>
    explicit Played(Arguments&&... arguments)
        : m_object(std::forward<Arguments>(arguments)...),
          m_pose(m_object),
          m_part(m_object),
          m_group(TW2::TW_BoneGroupHandle::below(m_object, "Bone1")),
          m_mixer(m_object, 4),
          m_arm(m_object, "Bone0", "Bone3"),
          m_spine(m_object, "Bone0", "Bone7"),
          m_feet(m_object, "Bone0", {{"Bone1", "Bone7"}, {"Bone2", "Bone11"}}),
          m_clock(m_object, 1),
          m_travel(m_object, 1)
    {
        m_context.setCurrentCamera(&m_camera);
        m_camera.addTo(&m_scene);
        m_camera.lookAt({0.0F, 0.0F, -20.0F}, {0.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F});
        m_object.addTo(&m_scene);
        const int mask = m_mixer.addMask(TW2::TW_BoneMask::below(m_object, "Bone1", 1));
        m_iOver = m_mixer.addLayer({.mask = mask});
        m_iAdded = m_mixer.addLayer({.additive = true});
        m_mixerState.reserve(4096);
        m_scene.executeFrame(m_inTurn);  // its lists grow to their size
    }

    Played(const Played&) = delete;
    Played& operator=(const Played&) = delete;

    Object& getObject() { return m_object; }

    /// Every call that changes nothing which copies share.
    Calls listCalls()
    {
        Calls calls = listBlends();
        for (Calls more : {listQuestions(), listMotion()})
        {
            std::move(more.begin(), more.end(), std::back_inserter(calls));
        }
        return calls;
    }

private:
    Calls listBlends()
    {
        Object& o = m_object;
        TW2::TW_BoneGroupHandle* const all = nullptr;
        TW2::TW_BoneGroupHandle* const some = &m_group;
        return {
            {"one animation", [&o, all](float t) { o.animateObject(1, t, all); }},
            {"one frame", [&o, some](float t) { o.animateObjectFrame(0, 10.0F * t, some); }},
            {"freeze", [this, all](float) { m_object.freezeAnimationState(&m_pose, all); }},
            {"freeze some", [this, some](float) { m_object.freezeAnimationState(&m_part, some); }},
            {"restore", [this](float) { m_object.restoreAnimationState(&m_pose); }},
            {"two", [&o, some](float t) { o.crossAnimateObject(0, t, 0.3F, 1, t, some); }},
            {"two frames", [&o, all](float t) { o.crossAnimateObjectFrame(0, t, 0.3F, 1, t, all); }},
            {"three", [&o, all](float t) { o.crossAnimateObject(0, t, 0.3F, 1, t, 0.2F, 0, t, all); }},
            {"three frames", [&o, some](float t) { o.crossAnimateObjectFrame(0, t, 0.3F, 1, t, 0.2F, 0, t, some); }},
            {"pose and one", [this, all](float t) { m_object.crossAnimateObject(&m_pose, 0.5F, 1, t, all); }},
            {"pose and frame", [this, some](float t) { m_object.crossAnimateObjectFrame(&m_part, 0.5F, 1, t, some); }},
            {"pose and two",
             [this, all](float t) { m_object.crossAnimateObject(&m_part, 0.5F, 0, t, 0.2F, 1, t, 0.3F, all); }},
            {"pose and two frames",
             [this, all](float t) { m_object.crossAnimateObjectFrame(&m_pose, 0.5F, 0, t, 0.2F, 1, t, 0.3F, all); }},
            {"two poses", [this, some](float) { m_object.crossAnimateObject(&m_pose, 0.5F, &m_part, some); }},
            {"two poses at a bone",
             [this, some](float) { m_object.crossAnimateObject(&m_pose, 0.5F, &m_part, m_group.getHandle(0), some); }},
            {"what is not there", [&o, all](float t) { o.crossAnimateObject(7, t, 0.3F, 1, t, all); }},
            {"visibility", [&o](float t) { o.updateVisibility(1, t); }},
            {"visibility of a frame", [&o](float t) { o.updateVisibilityFrame(1, t); }},
            {"textures", [this](float t) { m_object.animateTexture(m_water, t); }},
            {"textures of a frame", [this](float t) { m_object.animateTextureFrame(m_water, t); }},
            {"textures by name", [&o](float t) { o.animateTextureSet(waterName, t); }},
            {"textures of a frame by name", [&o](float t) { o.animateTextureSetFrame(waterName, t); }},
            {"move", [&o](float t) { o.setPosition(t, 0.0F, 0.0F); }},
            {"scene", [this](float) { m_scene.executeFrame(); }},
            {"scene on threads",
             [this](float)
             {
                 m_object.animateObject(1, 0.2F, nullptr);
                 m_scene.executeFrame(m_inTurn);
             }},
        };
    }

    Calls listQuestions()
    {
        Object& o = m_object;
        return {
            {"animations",
             [&o](float)
             {
                 (void)o.findAnimation("animation1");
                 (void)o.hasAnimation("an animation whose name is longer than a string has room for in itself");
                 (void)o.getAnimationName(1);
                 (void)o.getAnimationCourse(1);
                 (void)o.getAnimationEvents(1);
                 (void)o.getAnimationPeriod(1);
                 (void)o.getAnimationLoopToTime(1);
                 (void)o.getRootMotionTrack(1);
             }},
            {"textures",
             [this](float)
             {
                 (void)m_object.isValidTextureAnimation(m_water, 0);
                 (void)m_object.getTextureAnimationLength(m_water, 0);
                 (void)m_object.getTextureAnimationSetName(0);
             }},
            {"meshes",
             [&o](float)
             {
                 for (unsigned int mesh = 0; mesh < o.getTotalMeshes(); ++mesh)
                 {
                     (void)o.getMesh(mesh)->getObjectToWorldMatrix();
                 }
                 o.getPlayedObject(0)->accessMeshTransforms().updateWorldMatrices();
                 (void)o.getPlayedObject(0)->getMeshByName(
                     "a mesh whose name is longer than a string has room for in itself");
             }},
            {"handles",
             [this](float)
             {
                 (void)m_group.getHandle(0).getMatrix();
                 (void)m_group.getHandle(0).getWorldMatrix();
             }},
            {"volumes",
             [&o](float)
             {
                 (void)o.getBoundingRadius();
                 (void)o.getBoundingBoxMin();
                 (void)o.getBoundingBoxMax();
             }},
        };
    }

    Calls listMotion()
    {
        return {
            {"mixer plays",
             [this](float)
             {
                 m_uiPlay = m_mixer.play(m_uiPlays++ % 2, {.fade = 0.2F, .sync = 1});
                 m_mixer.play(1, {.fade = 0.1F, .loops = 2, .layer = m_iOver, .fadeOut = 0.1F});
                 m_mixer.play(1, {.layer = m_iAdded});
                 m_mixer.setWeight(m_uiPlay, 0.8F, 0.1F);
                 m_mixer.setSpeed(m_uiPlay, 1.5F);
                 m_mixer.setLayerWeight(m_iAdded, 0.5F);
             }},
            {"mixer steps",
             [this](float)
             {
                 m_mixer.update(0.1);
                 for (TW2::TW_MixerEvent event; m_mixer.nextEvent(event);)
                 {
                 }
                 (void)m_mixer.getMoment(m_uiPlay);
                 (void)m_mixer.findPlay("animation1");
             }},
            {"mixer seeks and stops",
             [this](float t)
             {
                 m_mixer.seek(m_uiPlay, t);
                 m_mixer.update(0.0);
                 m_mixer.stop(m_uiPlay, 0.2F);
                 m_mixer.stopLayer(m_iOver, 0.1F);
             }},
            {"mixer state", [this](float) { m_mixer.saveState(m_mixerState); }},
            {"mixer state back", [this](float) { m_mixer.restoreState(m_mixerState); }},
            {"clock",
             [this](float t)
             {
                 m_clock.advance(2.0 * static_cast<double>(t) - 1.0);
                 for (TW2::TW_EventIterator events(m_clock.getLastStep(), m_events); events.next();)
                 {
                 }
                 for (TW2::TW_EventIterator events = m_clock.getEvents(); events.next();)
                 {
                 }
                 (void)m_travel.getTravel(m_clock.getLastStep());
                 const TW2::TW_AnimationClock fresh(m_object, 0, 0.5, 3);
                 const TW2::TW_RootMotion travel(m_object, 0);
                 (void)travel.getTravel(0.0, 7.0);
             }},
            {"reach with two bones",
             [this](float t) {
                 m_arm.reachTwoBones({.target = {t, 1.0F, 0.5F}, .weight = 0.7F});
             }},
            {"look",
             [this](float t) {
                 m_spine.aim({.target = {t, 1.0F, 5.0F}, .limit = 20.0F});
             }},
            {"reach with a chain",
             [this](float t) {
                 m_spine.reach({.target = {0.5F, t, 1.0F}});
             }},
            {"turn and move",
             [this](float t)
             {
                 m_spine.turnTip(TW2::TW_Rotation::aboutAxis({0.0, 1.0, 0.0}, static_cast<double>(t)));
                 m_spine.moveBase({0.0, 0.01, 0.0});
                 (void)m_spine.getTipPosition();
             }},
            {"feet",
             [this](float t) { m_feet.plant([t](const auto& foot) { return TW2::TW_GroundPoint{foot.x * t}; }); }},
        };
    }

    P_Context m_context;
    P_Camera m_camera;
    P_Scene m_scene{&m_context};
    Object m_object;
    TW2::TW_ObjectAnimationState m_pose;
    TW2::TW_ObjectAnimationState m_part;
    TW2::TW_BoneGroupHandle m_group;
    TW2::TW_AnimationMixer m_mixer;
    TW2::TW_BoneChain m_arm;
    TW2::TW_BoneChain m_spine;
    TW2::TW_FootPlanter m_feet;
    TW2::TW_AnimationClock m_clock;
    TW2::TW_RootMotion m_travel;
    const S_String m_water = waterName;
    const P_ParallelFor m_inTurn = [](std::size_t count, const std::function<void(std::size_t)>& body)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            body(i);
        }
    };
    S_Vector<TW2::TW_AnimationEvent> m_events = {{"left", 2.0}, {"right", 7.5}};
    S_Bytes m_mixerState;
    unsigned int m_uiPlay = 0;
    int m_uiPlays = 0;
    int m_iOver = 0;
    int m_iAdded = 0;
};
}  // namespace support
