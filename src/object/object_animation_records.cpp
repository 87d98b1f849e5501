#include "object/keyframe_animation_reference.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/rollback.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
using ObjectAnimation = TW_ObjectAnimation::ObjectAnimation;

ObjectAnimation::ObjectAnimation(int meshCount)
    : m_vecKeyframeAnimations(static_cast<std::size_t>(std::max(meshCount, 0))),
      m_vecLastFrames(m_vecKeyframeAnimations.size())
{
}

TW_AnimationCourse ObjectAnimation::getCourse() const noexcept
{
    const TW_KeyframeAnimation* longest = nullptr;
    for (const TW_KeyframeAnimation* track : m_vecKeyframeAnimations)
    {
        if (track && (!longest || track->getTotalFrameCount() > longest->getTotalFrameCount()))
        {
            longest = track;
        }
    }
    TW_AnimationCourse course;
    if (!longest || longest->getTotalFrameCount() == 0)
    {
        return course;
    }
    course.m_dEndFrame = static_cast<double>(longest->getTotalFrameCount()) - (longest->isLoopInterpolating() ? 0 : 1);
    if (longest->isLooping() && longest->getLoopToFrame() < course.m_dEndFrame)
    {
        course.m_bLooping = true;
        course.m_dLoopToFrame = longest->getLoopToFrame();
    }
    return course;
}

const ObjectAnimation* TW_ObjectAnimation::getAnimation(int index) const noexcept
{
    // Mostly animations are numbered in the order in which they come; in a crowd the map is in far memory.
    const auto guess = static_cast<std::size_t>(index);
    if (guess < m_vecAnimations.size() && index >= 0 && m_vecAnimations[guess].m_iIndex == index)
    {
        return &m_vecAnimations[guess];
    }
    const int* const position = m_mapAnimationIndices.find(index);
    return position ? &m_vecAnimations[static_cast<std::size_t>(*position)] : nullptr;
}

ObjectAnimation* TW_ObjectAnimation::accessAnimation(int index) noexcept
{
    return const_cast<ObjectAnimation*>(getAnimation(index));
}

unsigned int TW_ObjectAnimation::getTotalAnimations() const
{
    return static_cast<unsigned int>(m_vecAnimations.size());
}

bool TW_ObjectAnimation::insertAnimation(const char* meshName, int index, TW_KeyframeAnimation* animation)
{
    ObjectAnimation* const record = accessAnimation(index);
    const P_VirtualObject* const mesh = getMeshByNameCaseSensitive(meshName);
    if (!record || !mesh || !animation)
    {
        return false;
    }
    const auto slot = static_cast<std::size_t>(getMeshIndex(mesh));
    TW_TrackList& tracks = record->m_vecKeyframeAnimations;
    // Meshes may have been added after the animation, and hosts may have shortened the hints.
    const std::size_t slots = slot < tracks.size() ? tracks.size() : m_vecMeshes.size();
    if (record->m_vecLastFrames.size() < slots)
    {
        record->m_vecLastFrames.resize(slots);
    }
    tracks.resize(slots);
    tracks.makeOwn();
    animation->increaseObjectReferenceCount();  // before the slot lets go of what may be the same animation
    deleteAnimation(meshName, index);
    if (record->m_iKeyframeAnimationCount < 1)
    {
        record->m_iFrameRate = animation->getFrameRate();
        record->m_uiLoopToFrame = animation->getLoopToFrame();
    }
    record->m_uiFrames = std::max(record->m_uiFrames, animation->getTotalFrameCount());
    tracks.set(slot, animation);
    record->m_vecLastFrames[slot] = 0;
    ++record->m_iKeyframeAnimationCount;
    return true;
}

void TW_ObjectAnimation::deleteAnimation(const char* meshName, int index)
{
    ObjectAnimation* const record = accessAnimation(index);
    const P_VirtualObject* const mesh = getMeshByNameCaseSensitive(meshName);
    if (!record || !mesh)
    {
        return;
    }
    const auto slot = static_cast<std::size_t>(getMeshIndex(mesh));
    TW_TrackList& tracks = record->m_vecKeyframeAnimations;
    if (slot >= tracks.size() || !tracks[slot])
    {
        return;
    }
    TW_KeyframeAnimation* const animation = tracks[slot];
    tracks.set(slot, nullptr);
    if (--record->m_iKeyframeAnimationCount == 0)
    {
        record->m_iFrameRate = 0;
    }
    dropReference(animation);
    record->m_uiFrames = 0;
    for (const TW_KeyframeAnimation* track : tracks)
    {
        record->m_uiFrames = std::max(record->m_uiFrames, track ? track->getTotalFrameCount() : 0);
    }
}

void TW_ObjectAnimation::deleteAnimation(int index)
{
    ObjectAnimation* const record = accessAnimation(index);
    if (!record)
    {
        return;
    }
    const TW_TrackList tracks = record->m_vecKeyframeAnimations;
    record->m_vecKeyframeAnimations.reset();
    for (TW_KeyframeAnimation* const animation : tracks)
    {
        dropReference(animation);
    }
    record->m_iFrameRate = 0;
    record->m_uiFrames = 0;
    record->m_uiLoopToFrame = 0;
    record->m_iKeyframeAnimationCount = 0;
    record->m_pDescription.reset();
    record->m_iIndex = -1;
    m_mapAnimationIndices.erase(index);
}

void TW_ObjectAnimation::shareAnimation(int index, TW_ObjectAnimation* source)
{
    const ObjectAnimation* const original = source ? source->getAnimation(index) : nullptr;
    if (!original || source == this)
    {
        return;
    }
    ObjectAnimation record(*original);
    record.m_vecLastFrames.assign(record.m_vecKeyframeAnimations.size(), 0);
    record.m_iKeyframeAnimationCount = 1;
    record.m_iIndex = index;

    m_vecAnimations.emplace_back();
    const int position = static_cast<int>(m_vecAnimations.size()) - 1;
    S_Rollback rollback([this]() noexcept { m_vecAnimations.pop_back(); });
    deleteAnimation(index);
    m_mapAnimationIndices.emplace(index, position);
    rollback.keep();
    m_vecAnimations.back() = std::move(record);
    holdTracks(m_vecAnimations.back().m_vecKeyframeAnimations);
    m_iMaximumAnimationIndex = std::max(m_iMaximumAnimationIndex, index);
}
}  // namespace TW2
