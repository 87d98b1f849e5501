#include "object/pose_source.h"

#include "keyframe/track_evaluation.h"

#include <tw2/object/object_animation_state.h>

#include <platform/runtime/prefetch.h>

#include <algorithm>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

// What lanes point to for which something else is read, or nothing.
constexpr Matrix identityMatrix;
constexpr float noRotation[4] = {1.0F, 0.0F, 0.0F, 0.0F};
constexpr float noTranslation[4] = {};
constexpr RigidKeyFloats noKeys{noRotation, noRotation, noTranslation, noTranslation};

void setKeys(PoseStep::Rigid& rigid, std::size_t i, const RigidKeyFloats& floats) noexcept
{
    rigid.m_lowerRotation[i] = floats.m_pLowerRotation;
    rigid.m_upperRotation[i] = floats.m_pUpperRotation;
    rigid.m_lowerTranslation[i] = floats.m_pLowerTranslation;
    rigid.m_upperTranslation[i] = floats.m_pUpperTranslation;
}

void setPosition(PoseStep::Rigid& rigid, std::size_t i, float distance, float span) noexcept
{
    rigid.m_distance[i] = distance;
    rigid.m_span[i] = span;
}

// Entry i as one that the step leaves alone.
void setNothing(PoseStep& step, std::size_t i) noexcept
{
    PoseStep::Mixed& mixed = step.m_mixed;
    setPosition(step.m_rigid, i, 0.0F, 1.0F);
    setKeys(step.m_rigid, i, noKeys);
    mixed.m_lower[i] = identityMatrix.data();
    mixed.m_upper[i] = identityMatrix.data();
    mixed.m_isFull[i] = 0.0F;
    mixed.m_isNormalized[i] = 0.0F;
    mixed.m_isOrthonormalized[i] = 0.0F;
    mixed.m_isAbsent[i] = 1.0F;
}

void setFull(PoseStep& step, std::size_t i, const float* lower, const float* upper) noexcept
{
    step.m_mixed.m_lower[i] = lower;
    step.m_mixed.m_upper[i] = upper;
    step.m_mixed.m_isFull[i] = 1.0F;
    step.m_mixed.m_isAbsent[i] = 0.0F;
}

// Entry i of a mixed step as the pose of a track.
void setTrack(PoseStep& step, std::size_t i, const TrackEntry& track, KeyFinder& finder, unsigned int& hint,
              PoseScratch& scratch) noexcept
{
    const KeyPair& keys = finder.find(track, hint);
    if (track.m_kind == TrackEntry::Kind::Scaled)
    {
        Matrix pose;
        evaluateTrack(pose, track, keys, finder.getWrappedFrame());
        std::copy_n(pose.data(), TrackEntry::matrixFloats, scratch.m_matrices[i]);
        setFull(step, i, scratch.m_matrices[i], scratch.m_matrices[i]);
        return;
    }
    setPosition(step.m_rigid, i, keys.m_fDistance, keys.m_fSpan);
    if (track.m_kind == TrackEntry::Kind::Full)
    {
        setFull(step, i, track.getMatrix(keys.m_iLower), track.getMatrix(keys.m_iUpper));
    }
    else
    {
        setKeys(step.m_rigid, i, getKeyFloats(track, keys, scratch.m_keys[i]));
        step.m_mixed.m_isAbsent[i] = 0.0F;
    }
    step.m_mixed.m_isNormalized[i] = track.m_mode == InterpolationMode::Normalized ? 1.0F : 0.0F;
    step.m_mixed.m_isOrthonormalized[i] = track.m_mode == InterpolationMode::Orthonormalized ? 1.0F : 0.0F;
}
}  // namespace

PoseSource::PoseSource(const TrackSlots& tracks, float frame, const TrackSlots& rest, PoseWrite write,
                       float weight) noexcept
    : m_write(write), m_fWeight(weight), m_tracks(tracks), m_rest(rest), m_keys(frame), m_restKeys(0.0F)
{
}

PoseSource::PoseSource(const TW_ObjectAnimationState& state, std::size_t meshCount, PoseWrite write,
                       float weight) noexcept
    : m_write(write),
      m_fWeight(weight),
      m_pState(&state),
      m_uiStateCount(std::min({meshCount, state.m_vecMatrices.size(), state.m_vecStateFrozen.size()}))
{
}

bool PoseSource::reaches(std::size_t mesh) const noexcept
{
    return m_tracks.has(mesh) || m_rest.has(mesh) || (mesh < m_uiStateCount && m_pState->m_vecStateFrozen[mesh]);
}

void PoseSource::fill(PoseStep& step, const PoseMeshes& meshes, PoseScratch& scratch) noexcept
{
    step.m_write = m_write;
    step.m_fWeight = m_fWeight;
    if (isPacked(meshes))
    {
        fillPacked(step, meshes);
    }
    else if (m_tracks.m_bIsUniform)
    {
        fillUniform(step, meshes, scratch);
    }
    else
    {
        fillMixed(step, meshes, scratch);
    }
}

/// Whether the tracks of these meshes all lie side by side and have one mode.
bool PoseSource::isPacked(const PoseMeshes& meshes) const noexcept
{
    const std::size_t first = *meshes.m_puiMeshes;
    const std::size_t end = first + meshes.m_uiCount;
    if (!meshes.m_bSuccessive || end > m_tracks.m_uiCount)
    {
        return false;
    }
    for (std::size_t head = first; head < end; head += poseLanes)
    {
        if (!m_tracks.m_puiPackedGroups[head / poseLanes] ||
            m_tracks.m_pTracks[head].m_mode != m_tracks.m_pTracks[first].m_mode)
        {
            return false;
        }
    }
    return true;
}

void PoseSource::fillPacked(PoseStep& step, const PoseMeshes& meshes) noexcept
{
    const std::size_t first = *meshes.m_puiMeshes;
    step.m_form = PoseStep::Form::Packed;
    step.m_mode = m_tracks.m_pTracks[first].m_mode;
    for (std::size_t i = 0; i < meshes.m_uiCount; i += poseLanes)
    {
        const TrackEntry& track = m_tracks.m_pTracks[first + i];
        unsigned int* const hints = m_tracks.m_puiHints + first + i;
        const KeyPair& keys = m_keys.find(track, *hints);
        std::fill_n(hints, std::min(poseLanes, meshes.m_uiCount - i), *hints);
        step.m_packed[i / poseLanes] = {track.getRotation(keys.m_iLower), track.getRotation(keys.m_iUpper),
                                        track.getTranslation(keys.m_iLower), track.getTranslation(keys.m_iUpper),
                                        keys.getFraction()};
    }
}

void PoseSource::fillUniform(PoseStep& step, const PoseMeshes& meshes, PoseScratch& scratch) noexcept
{
    const TrackEntry* const tracks = m_tracks.m_pTracks;
    step.m_form = PoseStep::Form::Uniform;
    step.m_mode = tracks->m_mode;
    for (std::size_t i = 0; i < meshes.m_uiCount; ++i)
    {
        const unsigned int mesh = meshes.m_puiMeshes[i];
        const KeyPair& keys = m_keys.find(tracks[mesh], m_tracks.m_puiHints[mesh]);
        setPosition(step.m_rigid, i, keys.m_fDistance, keys.m_fSpan);
        setKeys(step.m_rigid, i, getKeyFloats(tracks[mesh], keys, scratch.m_keys[i]));
        S_prefetch(step.m_rigid.m_lowerTranslation[i]);
        S_prefetch(step.m_rigid.m_upperRotation[i]);
    }
    for (std::size_t i = meshes.m_uiCount; i % poseLanes != 0; ++i)
    {
        setPosition(step.m_rigid, i, 0.0F, 1.0F);
        setKeys(step.m_rigid, i, noKeys);
    }
}

void PoseSource::fillMixed(PoseStep& step, const PoseMeshes& meshes, PoseScratch& scratch) noexcept
{
    step.m_form = PoseStep::Form::Mixed;
    for (std::size_t i = 0; i < meshes.m_uiCount; ++i)
    {
        const unsigned int mesh = meshes.m_puiMeshes[i];
        setNothing(step, i);
        if (m_tracks.has(mesh))
        {
            setTrack(step, i, m_tracks.m_pTracks[mesh], m_keys, m_tracks.m_puiHints[mesh], scratch);
        }
        else if (m_rest.has(mesh))
        {
            setTrack(step, i, m_rest.m_pTracks[mesh], m_restKeys, m_rest.m_puiHints[mesh], scratch);
        }
        else if (mesh < m_uiStateCount && m_pState->m_vecStateFrozen[mesh])
        {
            const float* const frozen = m_pState->m_vecMatrices[mesh].data();
            setFull(step, i, frozen, frozen);
        }
    }
    for (std::size_t i = meshes.m_uiCount; i % poseLanes != 0; ++i)
    {
        setNothing(step, i);
    }
}
}  // namespace TW2
