#pragma once

#include "keyframe/track_sampler.h"
#include "object/places.h"

#include <tw2/object/object_animation.h>

#include <platform/math/matrix4x3.h>
#include <platform/scene/transform_block.h>

#include <cstddef>

namespace TW2
{
/// Plays one call's worth of poses into the local matrices of an object's meshes, all of them or those of a group.
///
/// The steps of a call (evaluate, restore, correct) work on the matrices where they lie; what they wrote is marked as
/// out of date once, when the player goes. Nothing is allocated, and nothing is looked up per mesh.
class PosePlayer
{
public:
    PosePlayer(TW_ObjectAnimation& object, const TW_BoneGroupHandle* group) noexcept;
    ~PosePlayer() { flushMarks(); }
    PosePlayer(const PosePlayer&) = delete;
    PosePlayer& operator=(const PosePlayer&) = delete;

    /// weight x pose of animation `index` at `frame`, with `add` on top of what the meshes hold. Meshes without a track
    /// take animation 0 at frame 0, or stay. False, and nothing happens, when there is no such animation.
    bool evaluate(int index, float frame, float weight, bool add);
    /// Moves the meshes that have a track from where they are towards its pose: by `weight`, all the way from 1 on.
    bool approach(int index, float frame, float weight);
    /// weight x matrix of the meshes that are frozen in `state`, with `add` on top of what they hold.
    void restore(const TW_ObjectAnimationState& state, float weight, bool add);
    /// Stores the matrices of the meshes in `state` and marks them as frozen there, and all others as not frozen.
    void freeze(TW_ObjectAnimationState& state) const;
    /// Corrects the matrices as the object's cross mode says, written or not.
    void correct();

private:
    using Matrix = M_Matrix4x3Template<float>;

    // The tracks and hints of one animation, by mesh index, as far as its lists and the object's meshes reach.
    struct Slots
    {
        TW_KeyframeAnimation* const* tracks = nullptr;
        int* hints = nullptr;
        std::size_t count = 0;
        bool valid = false;  // there is such an animation

        [[nodiscard]] bool has(std::size_t mesh) const noexcept { return mesh < count && tracks[mesh]; }
    };

    // What is done with a sampled pose.
    struct Step
    {
        TrackWrite write;
        float weight;
    };

    [[nodiscard]] Slots findSlots(int index) const noexcept;
    // Samples the tracks at the given places (null: 0 to count - 1) into the meshes.
    void sample(const Slots& slots, float frame, const Step& step, const unsigned int* places,
                std::size_t count) noexcept;
    [[nodiscard]] bool isSelected(std::size_t mesh) const;
    [[nodiscard]] Matrix& access(std::size_t mesh) const noexcept;
    void mark(std::size_t mesh);
    void markSelected();
    void flushMarks();

    TW_ObjectAnimation& m_object;
    const TW_BoneGroupHandle* m_pGroup;
    /// Byte per mesh, not 0 for the group's meshes; null without a group, or when the group has no mask for the object.
    const unsigned char* m_puiMask = nullptr;
    P_VirtualObject* const* m_ppMeshes;
    std::size_t m_uiCount;
    /// The matrices side by side; null when the meshes have to be asked one by one.
    Matrix* m_pLocal = nullptr;
    bool m_bSelectedMarked = false;
    Places m_marks;
};
}  // namespace TW2
