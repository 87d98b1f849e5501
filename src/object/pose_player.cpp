#include "object/pose_player.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation_state.h>

#include <platform/math/float4.h>
#include <platform/math/four_matrices.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

// target = weight x pose (+ target). A weight of exactly 1 leaves the pose's bits alone.
void writeWeighted(Matrix& target, const Matrix& pose, float weight, bool add) noexcept
{
    const M_Float4 factor(weight);
    for (std::size_t i = 0; i < 12; i += 4)
    {
        M_Float4 values = M_Float4::load(pose.data() + i);
        if (weight != 1.0F)
        {
            values = values * factor;
        }
        if (add)
        {
            values = values + M_Float4::load(target.data() + i);
        }
        values.store(target.data() + i);
    }
}

// Corrects the first `count` of four matrices.
void correctFour(InterpolationMode mode, float* const matrices[4], std::size_t count) noexcept
{
    M_FourMatrices four;
    four.load(matrices);
    if (mode == InterpolationMode::Normalized)
    {
        four.normalizeRows();
    }
    else
    {
        four.orthonormalizeRows();
    }
    four.store(matrices, count);
}

}  // namespace

PosePlayer::PosePlayer(TW_ObjectAnimation& object, const TW_BoneGroupHandle* group) noexcept
    : m_object(object), m_pGroup(group), m_ppMeshes(object.m_vecMeshes.data()), m_uiCount(object.m_vecMeshes.size())
{
    if (group)
    {
        m_puiMask = group->getMeshMask(object.m_uiMeshListNumber, m_ppMeshes, m_uiCount);
    }
    P_TransformBlock& block = object.m_meshTransforms;
    if (block.getCount() == m_uiCount && block.getMemberCount() == m_uiCount)
    {
        m_pLocal = block.accessLocalMatrices();
        block.prefetch();
    }
}

PosePlayer::Slots PosePlayer::findSlots(int index) const noexcept
{
    TW_ObjectAnimation::ObjectAnimation* const record = m_object.accessAnimation(index);
    if (!record)
    {
        return {};
    }
    const std::size_t count =
        std::min({record->m_vecKeyframeAnimations.size(), record->m_vecLastFrames.size(), m_uiCount});
    // The sampler keeps its hints as int, the records as unsigned int: the same storage, which both may use.
    return {record->m_vecKeyframeAnimations.data(), reinterpret_cast<int*>(record->m_vecLastFrames.data()), count,
            true};
}

bool PosePlayer::evaluate(int index, float frame, float weight, bool add)
{
    const Slots slots = findSlots(index);
    if (!slots.valid)
    {
        return false;
    }
    const Slots rest = index == 0 ? Slots{} : findSlots(0);
    const Step step{add ? TrackWrite::Add : weight != 1.0F ? TrackWrite::Scale : TrackWrite::Replace, weight};
    if (!m_pGroup)
    {
        sample(slots, frame, step, nullptr, slots.count);
    }
    bool allMoved = slots.count == m_uiCount;
    Places moved;
    Places rested;
    for (unsigned int mesh = 0; mesh < slots.count; ++mesh)
    {
        if (!isSelected(mesh))
        {
            continue;
        }
        if (slots.has(mesh))
        {
            if (m_pGroup && moved.add(mesh))
            {
                sample(slots, frame, step, moved.data(), moved.take());
            }
        }
        else if (!rest.has(mesh))
        {
            allMoved = false;
        }
        else if (rested.add(mesh))
        {
            sample(rest, 0.0F, step, rested.data(), rested.take());
        }
    }
    sample(slots, frame, step, moved.data(), moved.take());
    sample(rest, 0.0F, step, rested.data(), rested.take());
    if (allMoved)
    {
        markSelected();
        return true;
    }
    for (unsigned int mesh = 0; mesh < slots.count; ++mesh)
    {
        if (isSelected(mesh) && (slots.has(mesh) || rest.has(mesh)))
        {
            mark(mesh);
        }
    }
    return true;
}

bool PosePlayer::approach(int index, float frame, float weight)
{
    const Slots slots = findSlots(index);
    if (!slots.valid)
    {
        return false;
    }
    sample(slots, frame, {weight < 1.0F ? TrackWrite::Blend : TrackWrite::Replace, weight}, nullptr, slots.count);
    for (unsigned int mesh = 0; mesh < slots.count; ++mesh)
    {
        if (slots.has(mesh))
        {
            mark(mesh);
        }
    }
    return true;
}

void PosePlayer::sample(const Slots& slots, float frame, const Step& step, const unsigned int* places,
                        std::size_t count) noexcept
{
    if (m_pLocal)
    {
        sampleTracks({slots.tracks, slots.hints, m_pLocal, count, places}, frame, step.write, step.weight);
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::size_t mesh = places ? places[i] : i;
        if (slots.tracks[mesh])
        {
            alignas(16) Matrix pose = m_ppMeshes[mesh]->getMatrix();
            sampleTracks({slots.tracks + mesh, slots.hints + mesh, &pose, 1}, frame, step.write, step.weight);
            m_ppMeshes[mesh]->accessMatrix() = pose;
        }
    }
}

void PosePlayer::restore(const TW_ObjectAnimationState& state, float weight, bool add)
{
    const std::size_t count = std::min({m_uiCount, state.m_vecMatrices.size(), state.m_vecStateFrozen.size()});
    for (std::size_t mesh = 0; mesh < count; ++mesh)
    {
        if (state.m_vecStateFrozen[mesh] && isSelected(mesh))
        {
            Matrix& target = access(mesh);
            // With `add` a weight of 1 multiplies as any other does: the bits are the same.
            writeWeighted(target, state.m_vecMatrices[mesh], weight, add);
            mark(mesh);
        }
    }
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

void PosePlayer::correct()
{
    const InterpolationMode mode = m_object.m_eCrossMode;
    if (mode == InterpolationMode::Linear)
    {
        return;
    }
    float* batch[4];
    std::size_t count = 0;
    for (std::size_t mesh = 0; mesh < m_uiCount; ++mesh)
    {
        if (isSelected(mesh))
        {
            batch[count++] = access(mesh).data();
        }
        if (count == 4)
        {
            correctFour(mode, batch, count);
            count = 0;
        }
    }
    if (count > 0)
    {
        std::fill(batch + count, batch + 4, batch[0]);
        correctFour(mode, batch, count);
    }
    markSelected();
}

bool PosePlayer::isSelected(std::size_t mesh) const
{
    if (!m_pGroup)
    {
        return true;
    }
    return m_puiMask ? m_puiMask[mesh] != 0 : m_pGroup->hasMesh(m_ppMeshes[mesh]);
}

Matrix& PosePlayer::access(std::size_t mesh) const noexcept
{
    return m_pLocal ? m_pLocal[mesh] : m_ppMeshes[mesh]->accessMatrix();
}

void PosePlayer::mark(std::size_t mesh)
{
    if (!m_pLocal)
    {
        m_ppMeshes[mesh]->invalidateMatrices();
        return;
    }
    if (m_marks.add(static_cast<unsigned int>(mesh)))
    {
        m_object.m_meshTransforms.invalidate(m_marks.data(), m_marks.take());
    }
}

void PosePlayer::markSelected()
{
    const bool allAtOnce = m_pLocal && (!m_pGroup || m_puiMask);
    if (allAtOnce)
    {
        m_bSelectedMarked = true;
        return;
    }
    for (std::size_t mesh = 0; mesh < m_uiCount; ++mesh)
    {
        if (isSelected(mesh))
        {
            mark(mesh);
        }
    }
}

void PosePlayer::flushMarks()
{
    P_TransformBlock& block = m_object.m_meshTransforms;
    if (m_bSelectedMarked && m_puiMask)
    {
        block.invalidateMasked(m_puiMask);
    }
    else if (m_bSelectedMarked)
    {
        block.invalidateAll();
    }
    else if (!m_marks.isEmpty())
    {
        block.invalidate(m_marks.data(), m_marks.take());
    }
}
}  // namespace TW2
