#pragma once

#include "keyframe/key_finder.h"
#include "keyframe/pose_batch.h"

#include <cstddef>

namespace TW2
{
class TW_ObjectAnimationState;

/// The tracks and hints of one numbered animation, by mesh index, as far as its lists and the object's meshes reach.
struct TrackSlots
{
    const TrackEntry* m_pTracks = nullptr;
    const unsigned char* m_puiPackedGroups = nullptr;  ///< see TrackTable::getPackedGroups
    unsigned int* m_puiHints = nullptr;
    std::size_t m_uiReach = 0;   ///< meshes that the animation was made for, moved or not
    std::size_t m_uiCount = 0;   ///< the same; 0 when it moves none
    bool m_bIsComplete = false;  ///< every mesh of the object has a track
    bool m_bIsUniform = false;   ///< and all of them are rigid and of the first one's mode

    [[nodiscard]] bool has(std::size_t mesh) const noexcept
    {
        return mesh < m_uiCount && m_pTracks[mesh].m_kind != TrackEntry::Kind::Absent;
    }
};

/// Meshes of one batch, in ascending order.
struct PoseMeshes
{
    const unsigned int* m_puiMeshes;
    std::size_t m_uiCount;  ///< at least 1
    bool m_bSuccessive;     ///< there are no gaps, and the first one is a multiple of poseLanes
};

/// What the entries of a step may point to; nothing needs to be in it.
struct PoseScratch
{
    float m_matrices[poseBatchSize][12];
    float m_keys[poseBatchSize][16];
};

/// Where one step of a playing call takes its poses from, and what it does with them.
class PoseSource
{
public:
    PoseSource() noexcept = default;
    /// Tracks at `frame`; meshes that they do not move take `rest` at frame 0.
    PoseSource(const TrackSlots& tracks, float frame, const TrackSlots& rest, PoseWrite write, float weight) noexcept;
    /// The frozen matrices of a state, as far as they reach.
    PoseSource(const TW_ObjectAnimationState& state, std::size_t meshCount, PoseWrite write, float weight) noexcept;

    /// Whether the step does something with a mesh.
    [[nodiscard]] bool reaches(std::size_t mesh) const noexcept;
    [[nodiscard]] bool reachesAll() const noexcept { return m_tracks.m_bIsComplete; }
    /// Whether the step alone determines every matrix that it is used on.
    [[nodiscard]] bool replacesAll() const noexcept
    {
        return m_tracks.m_bIsComplete && (m_write == PoseWrite::Replace || m_write == PoseWrite::Scale);
    }

    /// Writes what the step does with these meshes. The scratch is in use as long as `step`.
    void fill(PoseStep& step, const PoseMeshes& meshes, PoseScratch& scratch) noexcept;

private:
    [[nodiscard]] bool isPacked(const PoseMeshes& meshes) const noexcept;
    void fillPacked(PoseStep& step, const PoseMeshes& meshes) noexcept;
    void fillUniform(PoseStep& step, const PoseMeshes& meshes, PoseScratch& scratch) noexcept;
    void fillMixed(PoseStep& step, const PoseMeshes& meshes, PoseScratch& scratch) noexcept;

    PoseWrite m_write;
    float m_fWeight;
    TrackSlots m_tracks;
    TrackSlots m_rest;
    const TW_ObjectAnimationState* m_pState = nullptr;
    std::size_t m_uiStateCount = 0;
    KeyFinder m_keys;
    KeyFinder m_restKeys;
};
}  // namespace TW2
