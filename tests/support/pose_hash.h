#pragma once

#include "tests/support/character_files.h"
#include "tests/support/object_files.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace support
{
/// A number that sums up a long sequence of poses played in every way that there is: two builds of the library, or two
/// instruction sets in one, give the same number exactly when every bit of every pose is the same.
///
/// All numbers come from whole-number arithmetic, +, -, x, / and the square root, which are the same on every machine;
/// sines and their like are not.
class PoseHash
{
public:
    using Matrix = M_Matrix4x3Template<float>;

    /// The hash of a whole run. Each of its characters plays `rounds` calls of each kind.
    static std::uint64_t run(unsigned int rounds)
    {
        PoseHash hash;
        for (const char* const crossMode : {"linear", "normalized", "orthonormalized"})
        {
            for (unsigned int kind = 0; kind < KINDS; ++kind)
            {
                hash.play(crossMode, kind, rounds);
            }
        }
        hash.playSkinned(rounds);
        return hash.m_uHash;
    }

private:
    /// Of characters: what their tracks are like, see `makeTrack`.
    static constexpr unsigned int KINDS = 6;
    static constexpr std::array<unsigned int, KINDS> BONES = {43, 40, 29, 71, 25, 46};
    static constexpr int ANIMATIONS = 4;

    /// @name Numbers
    /// @{
    std::uint32_t draw(std::uint32_t below)
    {
        m_uRandom = m_uRandom * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>(m_uRandom >> 33) % below;
    }
    bool drawOnceIn(std::uint32_t count) { return draw(count) == 0; }
    /// -1 to 1.
    float drawSigned() { return (static_cast<float>(draw(20001)) - 10000.0F) / 10000.0F; }
    float drawWeight()
    {
        constexpr std::array<float, 5> SPECIAL = {0.0F, 1.0F, -0.5F, 1.5F, 0.5F};
        return drawOnceIn(3) ? SPECIAL[draw(SPECIAL.size())] : static_cast<float>(draw(1000)) / 1000.0F;
    }
    float drawFrame()
    {
        constexpr std::array<float, 6> SPECIAL = {
            0.0F, -1.0F, 39.0F, 1e9F, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
        };
        switch (draw(8))
        {
            case 0:
                return SPECIAL[draw(SPECIAL.size())];
            case 1:
                return static_cast<float>(draw(60));
            case 2:
                return 100.0F * drawSigned();
            default:
                m_fFrame = m_fFrame > 90.0F ? 0.0F : m_fFrame + 0.37F;
                return m_fFrame;
        }
    }
    void add(std::uint32_t value) { m_uHash = (m_uHash ^ value) * 1099511628211ULL; }
    void add(const Matrix& matrix)
    {
        for (std::size_t i = 0; i < 12; ++i)
        {
            const float value = matrix.data()[i];
            add(std::isnan(value) ? 0x7FC00000u : std::bit_cast<std::uint32_t>(value));
        }
    }
    /// @}

    /// A rotation about any axis, from a quaternion, and a translation.
    Matrix drawPose(float translation)
    {
        float w = 1.0F;
        float x = drawSigned();
        float y = drawSigned();
        float z = drawSigned();
        const float length = std::sqrt(w * w + x * x + y * y + z * z);
        w /= length;
        x /= length;
        y /= length;
        z /= length;
        Matrix pose;
        pose.setRow(0, {1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)});
        pose.setRow(1, {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)});
        pose.setRow(2, {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)});
        pose.setTranslation({translation * drawSigned(), translation * drawSigned(), translation * drawSigned()});
        return pose;
    }

    static std::string name(unsigned int bone) { return "bone" + std::to_string(bone); }

    /// Kinds: 0 linear, 1 normalized and 2 orthonormalized tracks of the same frames, as converters write them; 3 full
    /// matrices now and then; 4 and 5 everything mixed: frames, modes, loops, scale.
    TW2::KeyframeAnimationChunk makeTrack(unsigned int bone, int animation, unsigned int kind)
    {
        const bool mixed = kind >= 4;
        TW2::KeyframeAnimationChunk track;
        track.header.targetName = name(bone).c_str();
        track.header.frameRate = 30;
        track.header.looping = mixed ? !drawOnceIn(3) : animation != 1;
        track.totalFrameCount = mixed && drawOnceIn(4) ? 10 + draw(40) : 40;
        track.loopToFrame = mixed ? draw(9) : 0;
        track.loopInterpolation = mixed ? drawOnceIn(3) : animation == 2;
        track.interpolationMode = static_cast<int>(kind < 3 ? kind : draw(mixed ? 3 : 1));
        track.keepScale = mixed && drawOnceIn(6);
        const bool scaled = kind >= 3 && drawOnceIn(3);
        const bool still = !drawOnceIn(3);  // the bone turns only
        const Matrix first = drawPose(2.0F);
        for (unsigned int frame = 0; frame < track.totalFrameCount; frame += mixed ? 1 + draw(9) : 3)
        {
            TW2::MatrixKey& key = track.keys.emplace_back();
            key.frame = frame;
            key.matrix = drawPose(2.0F);
            if (still)
            {
                key.matrix.setTranslation(first.getTranslation());
            }
            for (int row = 0; scaled && row < 3; ++row)
            {
                key.matrix.setRow(row, key.matrix.getRow(row) * (1.25F + drawSigned()));
            }
            if (mixed && drawOnceIn(12))
            {
                break;
            }
        }
        for (unsigned int frame = 0; frame < 30; frame += 7)
        {
            track.visibilityKeys.push_back({frame, drawSigned()});
        }
        return track;
    }

    /// A binary tree of bones; animations move all of them, or most.
    std::unique_ptr<TW2::TW_ObjectAnimation> makeCharacter(const char* crossMode, unsigned int kind)
    {
        ObjectFiles files;
        for (unsigned int bone = 0; bone < m_uBones; ++bone)
        {
            files.addMesh(name(bone), bone == 0 ? "" : name((bone - 1) / 2), drawPose(1.0F));
        }
        for (int animation = 0; animation < ANIMATIONS; ++animation)
        {
            std::vector<TW2::KeyframeAnimationChunk> tracks;
            for (unsigned int bone = 0; bone < m_uBones; ++bone)
            {
                if (kind < 3 && animation < 2 ? true : !drawOnceIn(animation == 0 ? 9 : 4))
                {
                    tracks.push_back(makeTrack(bone, animation, kind));
                }
            }
            files.addAnimation(animation, tracks);
        }
        return files.build(crossMode, true);
    }

    static std::unique_ptr<TW2::TW_BoneGroupHandle> makeGroup(TW2::TW_ObjectAnimation& object, unsigned int step)
    {
        std::vector<std::size_t> bones;
        for (unsigned int bone = 0; bone < object.getTotalMeshes(); bone += step)
        {
            bones.push_back(bone);
        }
        return support::makeGroup(object, bones);
    }

    void play(const char* crossMode, unsigned int kind, unsigned int rounds)
    {
        m_uBones = BONES[kind];
        const auto object = makeCharacter(crossMode, kind);
        const std::unique_ptr<TW2::TW_BoneGroupHandle> groups[] = {nullptr, makeGroup(*object, 2),
                                                                   makeGroup(*object, 5)};
        TW2::TW_ObjectAnimationState states[] = {TW2::TW_ObjectAnimationState(*object),
                                                 TW2::TW_ObjectAnimationState(m_uBones - 3)};
        for (unsigned int round = 0; round < rounds; ++round)
        {
            for (unsigned int call = 0; call < CALLS; ++call)
            {
                add(static_cast<std::uint32_t>(
                    playOnce(*object, call, drawOnceIn(3) ? groups[1 + draw(2)].get() : nullptr, states)));
                addPose(*object);
            }
            if (round == rounds / 2)
            {
                changeTracks(*object, kind);
            }
        }
    }

    /// A skinned character whose frames can be executed without a scene.
    class Skinned : public TW2::TW_VertexAnimation
    {
    public:
        using TW2::TW_VertexAnimation::executeAlways;
        using TW2::TW_VertexAnimation::TW_VertexAnimation;
    };

    /// The bone matrices of a character that moves, and whose skeleton is moved beside its skin.
    void playSkinned(unsigned int rounds)
    {
        CharacterFiles files({.bones = m_uBones, .vertices = 30, .primitives = 1, .animations = 1});
        files.m_skinMeshes.front().transform = drawPose(1.0F);
        files.m_animations.front().clear();
        for (unsigned int bone = 0; bone < m_uBones; ++bone)
        {
            files.m_bones[bone].transform = drawPose(1.0F);
            auto& track = files.m_animations.front().emplace_back(makeTrack(bone, 0, 3));
            track.header.targetName = files.m_bones[bone].name;
        }
        Skinned character(files.write().c_str(), "skeleton", "skin");
        for (unsigned int round = 0; round < 10 * rounds; ++round)
        {
            add(static_cast<std::uint32_t>(character.animateObjectFrame(0, drawFrame(), nullptr)));
            character.getSkeleton()->setMatrix(drawPose(5.0F));
            character.executeAlways();
            const P_VirtualObject& mesh = *character.getSkin()->getMesh(0);
            for (std::size_t bone = 0; bone < mesh.getBoneMatrixCount(); ++bone)
            {
                add(mesh.getBoneMatrix(bone));
            }
        }
    }

    static constexpr unsigned int CALLS = 11;

    bool playOnce(TW2::TW_ObjectAnimation& object, unsigned int call, TW2::TW_BoneGroupHandle* group,
                  TW2::TW_ObjectAnimationState (&states)[2])
    {
        const auto index = [&] { return drawOnceIn(25) ? 99 : static_cast<int>(draw(ANIMATIONS)); };
        const int a = index();
        const int b = index();
        const int c = index();
        const float frameA = drawFrame();
        const float frameB = drawFrame();
        const float frameC = drawFrame();
        const float weightA = drawWeight();
        const float weightB = drawWeight();
        const float weightC = drawWeight();
        TW2::TW_ObjectAnimationState* const state = &states[draw(2)];
        switch (call)
        {
            case 0:
                return object.animateObjectFrame(a, frameA, group);
            case 1:
                return object.animateObject(a, frameA / 30.0F, group);
            case 2:
                return object.subAnimateObject(a, frameA / 30.0F, weightA);
            case 3:
                return object.crossAnimateObjectFrame(a, frameA, weightA, b, frameB, group);
            case 4:
                return object.crossAnimateObjectFrame(a, frameA, weightA, b, frameB, weightB, c, frameC, group);
            case 5:
                return object.crossAnimateObjectFrame(state, weightA, a, frameA, group);
            case 6:
                return object.crossAnimateObjectFrame(state, weightA, a, frameA, weightB, b, frameB, weightC, group);
            case 7:
                return object.crossAnimateObject(&states[0], weightA, &states[1], group);
            case 8:
                return object.crossAnimateObject(&states[0], weightA, &states[1],
                                                 object.getBoneHandle(name(draw(m_uBones)).c_str()), group);
            case 9:
                object.freezeAnimationState(state, group);
                object.restoreAnimationState(&states[draw(2)]);
                return true;
            default:
                return object.updateVisibilityFrame(a, frameA);
        }
    }

    /// The local matrices, now and then the world matrices, what is shown, and where the tracks were found.
    void addPose(TW2::TW_ObjectAnimation& object)
    {
        for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
        {
            add(object.getMesh(mesh)->getMatrix());
            add(static_cast<std::uint32_t>(object.getMesh(mesh)->isEnabled()));
        }
        if (drawOnceIn(3))
        {
            for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
            {
                add(object.getMesh(mesh)->getObjectToWorldMatrix());
            }
        }
        for (int animation = 0; animation < ANIMATIONS; ++animation)
        {
            const auto* const record = object.getAnimation(animation);
            for (const unsigned int hint : record ? record->m_vecLastFrames : S_Vector<unsigned int>())
            {
                add(hint);
            }
        }
    }

    /// Tracks come, go and are built anew; a mesh joins that no animation knows.
    void changeTracks(TW2::TW_ObjectAnimation& object, unsigned int kind)
    {
        object.deleteAnimation(name(3).c_str(), 1);
        const auto* const record = object.getAnimation(2);
        for (const unsigned int bone : {5u, 6u, 20u})
        {
            if (TW2::TW_KeyframeAnimation* const track = record->m_vecKeyframeAnimations[bone])
            {
                track->construct(makeTrack(bone, 3, kind), true);
                object.insertAnimation(name(bone + 1).c_str(), 1, track);
            }
        }
        auto mesh = std::make_unique<P_VirtualObject>();
        mesh->setName("late");
        mesh->addTo(&object);
        object.addMesh(mesh.release());
    }

    std::uint64_t m_uHash = 14695981039346656037ULL;
    std::uint64_t m_uRandom = 1;
    float m_fFrame = 0.0F;
    unsigned int m_uBones = 0;
};
}  // namespace support
