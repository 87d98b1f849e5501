#pragma once

#include "tests/support/character_files.h"
#include "tests/support/object_files.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

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
            see(m_skinned.getBoneMatrix(bone));
        }
    }
    /// Frames `first` to `end` - 1, and what was seen so far.
    std::uint64_t play(unsigned int first, unsigned int end)
    {
        for (unsigned int number = first; number < end; ++number)
        {
            playFrame(number);
        }
        return m_uSeen;
    }

private:
    void see(const M_Matrix4x3Template<float>& matrix)
    {
        for (int i = 0; i < 12; ++i)
        {
            std::uint32_t bits = 0;
            std::memcpy(&bits, matrix.data() + i, sizeof(bits));
            m_uSeen = (m_uSeen ^ bits) * 0x100000001B3u;
        }
    }
    void see(const TW2::TW_ObjectAnimation& object)
    {
        for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
        {
            see(object.getMesh(mesh)->getObjectToWorldMatrix());
            m_uSeen = m_uSeen * 2 + (object.getMesh(mesh)->isEnabled() ? 1 : 0);
        }
    }

    TW2::TW_ObjectAnimation m_object;
    TW2::TW_VertexAnimation m_skinned;
    P_Context m_context;
    P_Scene m_scene;
    TW2::TW_ObjectAnimationState m_state;
    TW2::TW_BoneGroupHandle m_group;
    std::uint64_t m_uSeen = 0xCBF29CE484222325u;
};
