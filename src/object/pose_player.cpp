#include "object/pose_player.h"

#include "keyframe/track_table.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation_state.h>

#include <platform/runtime/prefetch.h>
#include <platform/runtime/system.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <atomic>
#include <numeric>

namespace TW2
{
namespace
{
PoseWrite chooseWrite(float weight, bool add) noexcept
{
    if (add)
    {
        return PoseWrite::Add;
    }
    return weight != 1.0F ? PoseWrite::Scale : PoseWrite::Replace;
}

/// In debug builds, once: a group that is not attached moves nothing, which is allowed, and hardly ever meant.
void warnOfGroup([[maybe_unused]] bool attached) noexcept
{
#ifndef NDEBUG
    static std::atomic_flag s_warned;
    if (!attached && !s_warned.test_and_set(std::memory_order_relaxed))
    {
        Sys.verbose("TW2: a group of bones is used that is not attached to an object; it moves nothing\n");
    }
#endif
}
}  // namespace

PosePlayer::PosePlayer(TW_ObjectAnimation& object, const TW_BoneGroupHandle* group) noexcept
    : m_object(object), m_pGroup(group), m_meshes(object.m_vecMeshes), m_uiCount(m_meshes.size())
{
    if (group)
    {
        warnOfGroup(!group->m_setMeshes.empty() || group->getTotalHandles() == 0);
        m_puiMask = group->getMeshMask(m_meshes);
    }
    P_TransformBlock& block = object.m_meshTransforms;
    if (block.getCount() == m_uiCount && block.getMemberCount() == m_uiCount)
    {
        m_pLocal = block.accessLocalMatrices();
        block.prefetch();
    }
}

bool PosePlayer::findSlots(int index, TrackSlots& slots) const noexcept
{
    TW_ObjectAnimation::ObjectAnimation* const record = m_object.accessAnimation(index);
    if (!record)
    {
        return false;
    }
    const TW_TrackList& tracks = record->m_vecKeyframeAnimations;
    const TrackTable* const table = tracks.getTable();
    slots.m_uiReach = std::min({tracks.size(), record->m_vecLastFrames.size(), m_uiCount});
    if (!table)
    {
        return true;
    }
    slots.m_uiCount = slots.m_uiReach;
    slots.m_pTracks = table->getEntries();
    slots.m_puiPackedGroups = table->getPackedGroups();
    slots.m_puiHints = record->m_vecLastFrames.data();
    slots.m_bIsComplete = slots.m_uiCount == m_uiCount && table->isComplete();
    slots.m_bIsUniform = slots.m_bIsComplete && table->isUniform();
    return true;
}

bool PosePlayer::evaluate(int index, float frame, float weight, bool add) noexcept
{
    TrackSlots tracks;
    if (!findSlots(index, tracks))
    {
        return false;
    }
    TrackSlots rest;
    if (index != 0 && !tracks.m_bIsComplete)
    {
        (void)findSlots(0, rest);
        rest.m_uiCount = std::min(rest.m_uiCount, tracks.m_uiReach);
    }
    m_steps[m_uiSteps++] = PoseSource(tracks, frame, rest, chooseWrite(weight, add), weight);
    return true;
}

bool PosePlayer::approach(int index, float frame, float weight) noexcept
{
    TrackSlots tracks;
    if (!findSlots(index, tracks))
    {
        return false;
    }
    const PoseWrite write = weight < 1.0F ? PoseWrite::Blend : PoseWrite::Replace;
    m_steps[m_uiSteps++] = PoseSource(tracks, frame, TrackSlots(), write, weight);
    return true;
}

void PosePlayer::restore(const TW_ObjectAnimationState& state, float weight, bool add) noexcept
{
    m_steps[m_uiSteps++] = PoseSource(state, m_uiCount, chooseWrite(weight, add), weight);
}

bool PosePlayer::blend(std::initializer_list<Part> parts) noexcept
{
    bool complete = true;
    for (const Part* part = parts.begin(); part != parts.end() && complete; ++part)
    {
        const bool add = part != parts.begin();
        if (part->m_pState)
        {
            restore(*part->m_pState, part->m_fWeight, add);
        }
        else
        {
            complete = evaluate(part->m_iIndex, part->m_fFrame, part->m_fWeight, add);
        }
    }
    correct();
    play();
    return complete;
}

void PosePlayer::play() noexcept
{
    const bool writesAll = m_correction != InterpolationMode::Linear || reachesAll();
    for (std::size_t mesh = 0; mesh < m_uiCount;)
    {
        unsigned int meshes[poseBatchSize];
        const std::size_t count =
            writesAll && !m_pGroup ? collectAll(mesh, meshes) : collectSelected(mesh, writesAll, meshes);
        if (count != 0)
        {
            playBatch({meshes, count, writesAll && !m_pGroup});
        }
        if (!writesAll)
        {
            mark(meshes, count);
        }
    }
    if (writesAll)
    {
        markSelected();
    }
    m_correction = InterpolationMode::Linear;
    m_uiSteps = 0;
}

std::size_t PosePlayer::collectAll(std::size_t& mesh, unsigned int (&meshes)[poseBatchSize]) const noexcept
{
    const std::size_t count = std::min(poseBatchSize, m_uiCount - mesh);
    std::iota(meshes, meshes + count, static_cast<unsigned int>(mesh));
    mesh += count;
    return count;
}

std::size_t PosePlayer::collectSelected(std::size_t& mesh, bool evenUnreached,
                                        unsigned int (&meshes)[poseBatchSize]) const noexcept
{
    std::size_t count = 0;
    for (; mesh < m_uiCount && count < poseBatchSize; ++mesh)
    {
        if (isSelected(mesh) && (evenUnreached || isReached(mesh)))
        {
            meshes[count++] = static_cast<unsigned int>(mesh);
        }
    }
    return count;
}

void PosePlayer::playBatch(const PoseMeshes& meshes) noexcept
{
    PoseBatch batch;
    PoseScratch scratch[PoseBatch::maximumSteps];
    const std::size_t count = meshes.m_uiCount;
    batch.m_uiCount = count;
    batch.m_uiSteps = m_uiSteps;
    batch.m_bReadsMatrices = m_uiSteps == 0 || !m_steps[0].replacesAll();
    batch.m_correction = m_correction;
    for (std::size_t i = 0; i < count; ++i)
    {
        batch.m_matrices[i] = access(meshes.m_puiMeshes[i]).data();
        S_prefetchForWriting(batch.m_matrices[i]);
    }
    for (std::size_t i = count; i % poseLanes != 0; ++i)
    {
        batch.m_matrices[i] = batch.m_matrices[0];
    }
    for (std::size_t step = 0; step < m_uiSteps; ++step)
    {
        m_steps[step].fill(batch.m_steps[step], meshes, scratch[step]);
    }
    getPoseKernel()(batch);
}

void PosePlayer::freeze(TW_ObjectAnimationState& state) const
{
    const std::size_t count = std::min({m_uiCount, state.m_vecMatrices.size(), state.m_vecStateFrozen.size()});
    for (std::size_t mesh = 0; mesh < count; ++mesh)
    {
        const bool selected = isSelected(mesh);
        state.m_vecStateFrozen[mesh] = selected;
        if (selected)
        {
            state.m_vecMatrices[mesh] = access(mesh);
        }
    }
}

bool PosePlayer::isSelected(std::size_t mesh) const noexcept
{
    if (!m_pGroup)
    {
        return true;
    }
    return m_puiMask ? m_puiMask[mesh] != 0 : m_pGroup->hasMesh(m_meshes[mesh]);
}

bool PosePlayer::isReached(std::size_t mesh) const noexcept
{
    return std::any_of(m_steps, m_steps + m_uiSteps, [mesh](const PoseSource& step) { return step.reaches(mesh); });
}

bool PosePlayer::reachesAll() const noexcept
{
    return std::any_of(m_steps, m_steps + m_uiSteps, [](const PoseSource& step) { return step.reachesAll(); });
}

PosePlayer::Matrix& PosePlayer::access(std::size_t mesh) const noexcept
{
    return m_pLocal ? m_pLocal[mesh] : m_meshes[mesh]->accessMatrix();
}

void PosePlayer::mark(const unsigned int* meshes, std::size_t count) noexcept
{
    if (m_pLocal && count != 0)
    {
        m_object.m_meshTransforms.invalidate(meshes, count);
    }
    else if (!m_pLocal)
    {
        std::for_each(meshes, meshes + count, [this](unsigned int mesh) { m_meshes[mesh]->invalidateMatrices(); });
    }
}

void PosePlayer::markSelected() noexcept
{
    if (m_pLocal && !m_pGroup)
    {
        m_object.m_meshTransforms.invalidateAll();
        return;
    }
    if (m_pLocal && m_puiMask)
    {
        m_object.m_meshTransforms.invalidateMasked(m_puiMask);
        return;
    }
    for (unsigned int mesh = 0; mesh < m_uiCount; ++mesh)
    {
        if (isSelected(mesh))
        {
            m_meshes[mesh]->invalidateMatrices();
        }
    }
}
}  // namespace TW2
