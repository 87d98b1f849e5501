#pragma once

#include "tests/support/character_files.h"
#include "tests/support/object_files.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/script.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TW2::bench
{
/// How tracks and blends are corrected.
struct Style
{
    std::string name;
    std::string crossMode;
    int mode;
};

constexpr unsigned int CLIP_FRAMES = 301;

inline std::string boneName(unsigned int bone)
{
    return "bone" + std::to_string(bone);
}

/// A clip of ten seconds with a key at every frame: each bone swings about an axis of its own, the first one walks.
inline std::vector<KeyframeAnimationChunk> makeClip(const Style& style, unsigned int bones, int clip)
{
    std::vector<KeyframeAnimationChunk> tracks(bones);
    for (unsigned int bone = 0; bone < bones; ++bone)
    {
        KeyframeAnimationChunk& track = tracks[bone];
        track.header.targetName = boneName(bone).c_str();
        track.header.frameRate = 30;
        track.header.looping = true;
        track.totalFrameCount = CLIP_FRAMES;
        track.interpolationMode = style.mode;
        for (unsigned int frame = 0; frame < CLIP_FRAMES; ++frame)
        {
            const double turn = 6.283185307 * frame / (CLIP_FRAMES - 1);
            const double angle = 0.6 * std::sin(3.0 * turn + bone + 7 * clip);
            MatrixKey key;
            key.frame = frame;
            key.matrix = support::rotation(1.0 + bone % 3, bone % 5, 0.5 + clip, angle);
            key.matrix.setTranslation({0.0F, 0.0F, bone == 0 ? 0.01F * static_cast<float>(frame) : 0.1F});
            track.keys.push_back(key);
        }
    }
    return tracks;
}

/// A character of a binary tree of bones with two clips, and copies of it.
class Character
{
public:
    Character(const Style& style, unsigned int bones)
    {
        for (unsigned int bone = 0; bone < bones; ++bone)
        {
            m_files.addMesh(boneName(bone), bone == 0 ? "" : boneName((bone - 1) / 2));
        }
        for (int clip = 0; clip < 2; ++clip)
        {
            m_files.addAnimation(clip, makeClip(style, bones, clip));
        }
        m_pFirst = m_files.build(style.crossMode);
    }

    [[nodiscard]] std::vector<std::unique_ptr<TW_ObjectAnimation>> makeCrowd(std::size_t count) const
    {
        std::vector<std::unique_ptr<TW_ObjectAnimation>> crowd(count);
        std::generate(crowd.begin(), crowd.end(), [this] { return std::make_unique<TW_ObjectAnimation>(*m_pFirst); });
        return crowd;
    }

    /// A file of a clip; its full name.
    [[nodiscard]] std::string writeClip(const Style& style, unsigned int bones) const
    {
        return m_files.writeAnimation("clip.tw", makeClip(style, bones, 2));
    }

private:
    support::ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_pFirst;
};

/// Who says how large a skin is.
enum class Volumes
{
    Given,    ///< a sphere in the script
    Computed  ///< from the skin, each frame
};

/// The same with a skin of 300 vertices and volumes around it.
class Skinned
{
public:
    static constexpr unsigned int BONES = 64;

    /// A character whose frame can be executed without a scene around it.
    class Character : public TW_VertexAnimation
    {
    public:
        using TW_VertexAnimation::executeAlways;
        using TW_VertexAnimation::TW_VertexAnimation;
    };

    explicit Skinned(const Style& style, Volumes volumes = Volumes::Given)
        : m_files({.bones = BONES, .vertices = 300, .primitives = 1, .animations = 2, .frames = CLIP_FRAMES}),
          m_script(write(style, volumes).c_str()),
          m_pFirst(std::make_unique<Character>(&m_script, 0, &m_script, 1))
    {
    }

    [[nodiscard]] std::vector<std::unique_ptr<Character>> makeCrowd(std::size_t count) const
    {
        std::vector<std::unique_ptr<Character>> crowd(count);
        std::generate(crowd.begin(), crowd.end(), [this] { return std::make_unique<Character>(*m_pFirst); });
        return crowd;
    }

private:
    std::string write(const Style& style, Volumes volumes)
    {
        m_files.m_skeletonKeys = "crossmode \"" + style.crossMode + "\"";
        m_files.m_skinKeys = volumes == Volumes::Given ? " enableBoundingSphere 1 boundingSphereRadius 100 "
                                                       : " enableBoundingBox 1 enableBoundingSphere 1 ";
        for (unsigned int clip = 0; clip < m_files.m_animations.size(); ++clip)
        {
            auto tracks = makeClip(style, BONES, static_cast<int>(clip));
            for (unsigned int bone = 0; bone < BONES; ++bone)
            {
                tracks[bone].header.targetName = m_files.m_bones[bone].name;
            }
            m_files.m_animations[clip] = std::move(tracks);
        }
        return m_files.write();
    }

    support::CharacterFiles m_files;
    S_Script m_script;
    std::unique_ptr<Character> m_pFirst;
};
}  // namespace TW2::bench
