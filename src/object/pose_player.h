#pragma once

#include "object/pose_source.h"

#include <tw2/object/object_animation.h>

#include <platform/math/matrix4x3.h>

#include <cstddef>
#include <initializer_list>

namespace TW2
{
/// Plays one call's worth of poses into the local matrices of an object's meshes, all of them or those of a group.
///
/// The steps of a call (evaluate, approach, restore, correct) are collected first; `play` then takes some meshes at a
/// time through all of them, so that each matrix is written once, and marks what it wrote as out of date. Nothing is
/// allocated, and nothing is looked up per mesh.
class PosePlayer
{
public:
    PosePlayer(TW_ObjectAnimation& object, const TW_BoneGroupHandle* group) noexcept;
    PosePlayer(const PosePlayer&) = delete;
    PosePlayer& operator=(const PosePlayer&) = delete;

    /// @name Steps, in the order in which they are to happen; up to three besides the correction
    /// @{

    /// weight x pose of animation `index` at `frame`, with `add` on top of what the meshes hold. Meshes without a track
    /// take animation 0 at frame 0, or stay. False, and no step is added, when there is no such animation.
    bool evaluate(int index, float frame, float weight, bool add) noexcept;
    /// Moves the meshes that have a track from where they are towards its pose: by `weight`, all the way from 1 on.
    bool approach(int index, float frame, float weight) noexcept;
    /// weight x matrix of the meshes that are frozen in `state`, with `add` on top of what they hold.
    void restore(const TW_ObjectAnimationState& state, float weight, bool add) noexcept;
    /// Corrects the matrices as the object's cross mode says, whether a step writes them or not.
    void correct() noexcept { m_correction = m_object.m_eCrossMode; }
    /// @}

    /// A pose that several are blended from: that of an animation, or what is frozen in a state.
    struct Part
    {
        Part(int index, float frame, float weight) noexcept : m_iIndex(index), m_fFrame(frame), m_fWeight(weight) {}
        Part(const TW_ObjectAnimationState& state, float weight) noexcept : m_pState(&state), m_fWeight(weight) {}

        const TW_ObjectAnimationState* m_pState = nullptr;
        int m_iIndex = 0;
        float m_fFrame = 0.0F;
        float m_fWeight;
    };
    /// Plays the weighted sum of some poses. The first animation that does not exist ends the sum, and false is
    /// returned; the correction follows in any case.
    bool blend(std::initializer_list<Part> parts) noexcept;

    /// Takes the meshes through the steps; the player has none afterwards.
    void play() noexcept;

    /// Stores the matrices of the meshes in `state` and marks them as frozen there, and all others as not frozen.
    void freeze(TW_ObjectAnimationState& state) const;

private:
    using Matrix = M_Matrix4x3Template<float>;

    [[nodiscard]] bool findSlots(int index, TrackSlots& slots) const noexcept;
    [[nodiscard]] bool isSelected(std::size_t mesh) const noexcept;
    [[nodiscard]] bool isReached(std::size_t mesh) const noexcept;
    [[nodiscard]] bool reachesAll() const noexcept;
    [[nodiscard]] Matrix& access(std::size_t mesh) const noexcept;
    /// @name The next meshes to play from `mesh` on, which moves behind the last one that was looked at; how many
    /// @{
    std::size_t collectAll(std::size_t& mesh, unsigned int (&meshes)[poseBatchSize]) const noexcept;
    std::size_t collectSelected(std::size_t& mesh, bool evenUnreached,
                                unsigned int (&meshes)[poseBatchSize]) const noexcept;
    /// @}
    void playBatch(const PoseMeshes& meshes) noexcept;
    void mark(const unsigned int* meshes, std::size_t count) noexcept;
    void markSelected() noexcept;

    TW_ObjectAnimation& m_object;
    const TW_BoneGroupHandle* m_pGroup;
    /// Byte per mesh, not 0 for the group's meshes; null without a group, or when the group has no mask for the object.
    const unsigned char* m_puiMask = nullptr;
    const TW_MeshList& m_meshes;
    std::size_t m_uiCount;
    /// The matrices side by side; null when the meshes have to be asked one by one.
    Matrix* m_pLocal = nullptr;
    InterpolationMode m_correction = InterpolationMode::Linear;
    std::size_t m_uiSteps = 0;
    PoseSource m_steps[PoseBatch::maximumSteps];
};
}  // namespace TW2
