#pragma once

#include "tests/support/character_files.h"
#include "tests/support/object_files.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/motion/motion.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>

/// The files of an object with tracks of every kind (compact, with scale, scale kept, with visibility) and of a skinned
/// character, and an object of each that nobody plays: threads copy them.
class Prototypes
{
public:
    static constexpr unsigned int meshCount = 9;

    explicit Prototypes()
    {
        for (unsigned int mesh = 0; mesh < meshCount; ++mesh)
        {
            m_files.addMesh(name(mesh), mesh == 0 ? "" : name(mesh - 1));
        }
        for (int animation = 0; animation < 3; ++animation)
        {
            m_files.addAnimation(animation, makeTracks());
        }
        object = m_files.build("orthonormalized", true);
        m_strSkinnedScript = m_skinnedFiles.write();
        skinned = makeSkinned();
        const int skins[] = {1, 2};
        S_Script script(m_strSkinnedScript.c_str());
        levels = std::make_unique<TW2::TW_VertexAnimationLODs>(&script, 0, 2, &script, skins);
    }

    static std::string name(unsigned int mesh) { return "bone" + std::to_string(mesh); }
    /// New ones, from the files.
    [[nodiscard]] std::unique_ptr<TW2::TW_ObjectAnimation> makeObject() const
    {
        return m_files.build("orthonormalized", true);
    }
    [[nodiscard]] std::unique_ptr<TW2::TW_VertexAnimation> makeSkinned() const
    {
        return std::make_unique<TW2::TW_VertexAnimation>(m_strSkinnedScript.c_str(), "skeleton", "skin");
    }

    std::unique_ptr<TW2::TW_ObjectAnimation> object;
    std::unique_ptr<TW2::TW_VertexAnimation> skinned;
    std::unique_ptr<TW2::TW_VertexAnimationLODs> levels;

private:
    std::vector<TW2::KeyframeAnimationChunk> makeTracks()
    {
        std::vector<TW2::KeyframeAnimationChunk> tracks;
        for (unsigned int mesh = 0; mesh < meshCount; ++mesh)
        {
            const support::TrackShape shape{.keys = 12,
                                            .looping = mesh % 2 == 0,
                                            .interpolationMode = static_cast<int>(mesh % 3),
                                            .scaled = mesh % 3 != 0,
                                            .keepScale = mesh % 3 == 2,
                                            .visibilityKeys = 8};
            tracks.push_back(support::makeTrack(m_random, shape, name(mesh).c_str()));
        }
        return tracks;
    }

    std::mt19937 m_random{7};
    support::ObjectFiles m_files;
    support::CharacterFiles m_skinnedFiles;
    std::string m_strSkinnedScript;
};

/// A number for all matrices that were seen so far, in their order.
class Sum
{
public:
    void see(const M_Matrix4x3Template<float>& matrix)
    {
        for (int i = 0; i < 12; ++i)
        {
            std::uint32_t bits = 0;
            std::memcpy(&bits, matrix.data() + i, sizeof(bits));
            see(bits);
        }
    }
    void see(std::uint32_t bits) { m_uSeen = (m_uSeen ^ bits) * 0x100000001B3u; }
    [[nodiscard]] std::uint64_t get() const { return m_uSeen; }

private:
    std::uint64_t m_uSeen = 0xCBF29CE484222325u;
};

/// Does with a copy of each prototype what a host does in a frame, and sums up what it sees.
class Player
{
public:
    explicit Player(const Prototypes& prototypes)
        : m_object(*prototypes.object), m_skinned(*prototypes.skinned), m_scene(&m_context), m_state(m_object)
    {
        TW2::TW_BoneHandle handles[] = {m_object.getBoneHandle("bone3"), m_object.getBoneHandle("bone5")};
        m_group.construct(2, handles);
        m_group.attach(&m_object);
        m_object.addTo(&m_scene);
        m_skinned.addTo(&m_scene);
    }

    void playFrame(unsigned int number)
    {
        const auto frame = static_cast<float>(number * 7 % 101) * 0.47F;
        m_object.animateObjectFrame(0, frame, nullptr);
        see(m_object);
        m_object.freezeAnimationState(&m_state, nullptr);
        m_object.crossAnimateObjectFrame(0, frame, 0.3F, 1, 60.0F - frame, nullptr);
        see(m_object);
        m_object.crossAnimateObjectFrame(&m_state, 0.6F, 2, frame + 3.5F, &m_group);
        see(m_object);
        m_object.crossAnimateObjectFrame(1, frame, 0.2F, 2, frame, 0.5F, 0, frame, nullptr);
        m_object.subAnimateObject(1, frame * 0.1F, 0.4F);
        see(m_object);
        m_object.restoreAnimationState(&m_state);
        m_object.updateVisibilityFrame(1, frame);
        see(m_object);

        m_skinned.crossAnimateObjectFrame(0, frame, 0.5F, 1, frame * 0.5F, nullptr);
        m_skinned.setPosition(frame, 0.0F, 1.0F);
        m_scene.executeFrame();
        for (int bone = 0; bone < m_skinned.getBoneMatrixCount(); ++bone)
        {
            m_sum.see(m_skinned.getBoneMatrix(bone));
        }
    }
    /// Frames `first` to `end` - 1, and what was seen so far.
    std::uint64_t play(unsigned int first, unsigned int end)
    {
        for (unsigned int number = first; number < end; ++number)
        {
            playFrame(number);
        }
        return m_sum.get();
    }

private:
    void see(const TW2::TW_ObjectAnimation& object)
    {
        for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
        {
            m_sum.see(object.getMesh(mesh)->getObjectToWorldMatrix());
            m_sum.see(object.getMesh(mesh)->isEnabled() ? 1U : 0U);
        }
    }

    TW2::TW_ObjectAnimation m_object;
    TW2::TW_VertexAnimation m_skinned;
    P_Context m_context;
    P_Scene m_scene;
    TW2::TW_ObjectAnimationState m_state;
    TW2::TW_BoneGroupHandle m_group;
    Sum m_sum;
};

/// Does what a game does with a character of its own: a mixer with layers and masks, hands and feet that reach, levels
/// of detail before a camera. Sums up what it sees.
class Mover
{
public:
    explicit Mover(const Prototypes& prototypes)
        : m_character(*prototypes.levels),
          m_mixer(m_character, 4),
          m_arm(m_character, "Bone0", "Bone3"),
          m_spine(m_character, "Bone0", "Bone7"),
          m_feet(m_character, "Bone0", {{"Bone1", "Bone7"}}),
          m_clock(m_character, 1),
          m_travel(m_character, 1)
    {
        m_context.setCurrentCamera(&m_camera);
        m_camera.addTo(&m_scene);
        m_character.addTo(&m_scene);
        m_mixer.addLayer({.mask = m_mixer.addMask(TW2::TW_BoneMask::below(m_character, "Bone1", 1))});
        m_mixer.addLayer({.additive = true, .weight = 0.5F});
    }

    void playFrame(unsigned int number)
    {
        if (number % 10 == 0)
        {
            m_mixer.play(number % 20 == 0 ? 1 : 0, {.fade = 0.3F, .sync = 1});
            m_mixer.play(1, {.fade = 0.1F, .loops = 1, .layer = 1, .fadeOut = 0.1F});
            m_mixer.play(1, {.layer = 2});
        }
        m_mixer.update(0.07);
        for (TW2::TW_MixerEvent event; m_mixer.nextEvent(event);)
        {
        }
        m_clock.advance(0.11);
        m_sum.see(m_travel.getTravel(m_clock.getLastStep()).toMatrix());
        const float t = 0.05F * static_cast<float>(number % 40);
        m_arm.reachTwoBones({.target = {t, 1.0F, 0.5F}, .weight = 0.7F});
        m_spine.aim({.target = {t, 1.0F, 5.0F}, .limit = 20.0F});
        m_spine.reach({.target = {0.5F, t, 1.0F}, .weight = 0.5F});
        m_feet.plant([t](const auto& foot) { return TW2::TW_GroundPoint{foot.x * t}; });
        m_character.setPosition(0.0F, 0.0F, number % 8 < 4 ? 5.0F : 150.0F);
        m_scene.executeFrame();
        for (int level = 0; level < m_character.getLevelCount(); ++level)
        {
            const TW2::TW_VertexAnimation& shown = *m_character.getLODObject(level);
            for (int bone = 0; bone < shown.getBoneMatrixCount(); ++bone)
            {
                m_sum.see(shown.getBoneMatrix(bone));
            }
        }
    }
    /// Frames `first` to `end` - 1, and what was seen so far.
    std::uint64_t play(unsigned int first, unsigned int end)
    {
        for (unsigned int number = first; number < end; ++number)
        {
            playFrame(number);
        }
        return m_sum.get();
    }

private:
    P_Context m_context;
    P_Camera m_camera;
    P_Scene m_scene{&m_context};
    TW2::TW_VertexAnimationLODs m_character;
    TW2::TW_AnimationMixer m_mixer;
    TW2::TW_BoneChain m_arm;
    TW2::TW_BoneChain m_spine;
    TW2::TW_FootPlanter m_feet;
    TW2::TW_AnimationClock m_clock;
    TW2::TW_RootMotion m_travel;
    Sum m_sum;
};
