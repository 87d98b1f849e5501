#pragma once

#include "tests/support/character_files.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/played.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <bit>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

/// The files of a skinned character whose second animation has tracks of every kind (compact, with scale, scale kept,
/// with visibility), and an object of each class that nobody plays: threads copy them.
class Prototypes
{
public:
    Prototypes()
    {
        std::mt19937 random(7);
        m_files.m_skeletonKeys = "crossmode orthonormalized";
        for (std::size_t bone = 0; bone < m_files.m_bones.size(); ++bone)
        {
            const support::TrackShape shape{.keys = 12,
                                            .looping = bone % 2 == 0,
                                            .interpolationMode = static_cast<int>(bone % 3),
                                            .scaled = bone % 3 != 0,
                                            .keepScale = bone % 3 == 2,
                                            .visibilityKeys = 8};
            m_files.m_animations[1][bone] = support::makeTrack(random, shape, m_files.m_bones[bone].name.c_str());
        }
        m_strScript = m_files.write();
        object = makeObject();
        skinned = makeSkinned();
        const int skins[] = {1, 2};
        S_Script script(m_strScript.c_str());
        levels = std::make_unique<TW2::TW_VertexAnimationLODs>(&script, 0, 2, &script, skins);
    }

    /// New ones, from the files.
    [[nodiscard]] std::unique_ptr<TW2::TW_ObjectAnimation> makeObject() const
    {
        return std::make_unique<TW2::TW_ObjectAnimation>(m_strScript.c_str(), "skeleton", nullptr, true);
    }
    [[nodiscard]] std::unique_ptr<TW2::TW_VertexAnimation> makeSkinned() const
    {
        return std::make_unique<TW2::TW_VertexAnimation>(m_strScript.c_str(), "skeleton", "skin");
    }

    std::unique_ptr<TW2::TW_ObjectAnimation> object;
    std::unique_ptr<TW2::TW_VertexAnimation> skinned;
    std::unique_ptr<TW2::TW_VertexAnimationLODs> levels;

private:
    support::CharacterFiles m_files{{.bones = 16}};
    std::string m_strScript;
};

/// Does with a copy of each prototype what a host does in a frame, and sums up what it sees.
class Player
{
public:
    explicit Player(const Prototypes& prototypes)
        : m_object(*prototypes.object), m_skinned(*prototypes.skinned), m_levels(*prototypes.levels)
    {
    }

    /// Frames `first` to `end` - 1, and a number for all matrices that were seen so far, in their order.
    std::uint64_t play(unsigned int first, unsigned int end)
    {
        play(m_object, first, end);
        play(m_skinned, first, end);
        play(m_levels, first, end);
        return m_uSeen;
    }

private:
    template <typename Object>
    void play(support::Played<Object>& played, unsigned int first, unsigned int end)
    {
        const support::Calls calls = played.listCalls();
        for (unsigned int frame = first; frame < end; ++frame)
        {
            for (const auto& call : calls)
            {
                call.second(0.13F * static_cast<float>(frame));
                see(*played.getObject().getPlayedObject(0));
            }
            if constexpr (requires { played.getObject().getBoneMatrixCount(); })
            {
                for (int bone = 0; bone < played.getObject().getBoneMatrixCount(); ++bone)
                {
                    see(played.getObject().getBoneMatrix(bone));
                }
            }
        }
    }
    void see(const TW2::TW_ObjectAnimation& object)
    {
        for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
        {
            see(object.getMesh(mesh)->getObjectToWorldMatrix());
            see(object.getMesh(mesh)->isEnabled() ? 1U : 0U);
        }
    }
    void see(const M_Matrix4x3Template<float>& matrix)
    {
        for (int i = 0; i < 12; ++i)
        {
            see(std::bit_cast<std::uint32_t>(matrix.data()[i]));
        }
    }
    void see(std::uint32_t bits) { m_uSeen = (m_uSeen ^ bits) * 0x100000001B3u; }

    support::Played<TW2::TW_ObjectAnimation> m_object;
    support::Played<TW2::TW_VertexAnimation> m_skinned;
    support::Played<TW2::TW_VertexAnimationLODs> m_levels;
    std::uint64_t m_uSeen = 0xCBF29CE484222325u;
};
