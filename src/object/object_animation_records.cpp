#include "object/keyframe_animation_reference.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>

namespace TW2
{
using ObjectAnimation = TW_ObjectAnimation::ObjectAnimation;

ObjectAnimation::ObjectAnimation() noexcept = default;

ObjectAnimation::ObjectAnimation(int meshCount)
    : m_vecKeyframeAnimations(static_cast<std::size_t>(std::max(meshCount, 0))),
      m_vecLastFrames(m_vecKeyframeAnimations.size())
{
}

ObjectAnimation::ObjectAnimation(const ObjectAnimation&) = default;
ObjectAnimation::ObjectAnimation(ObjectAnimation&&) noexcept = default;
ObjectAnimation& ObjectAnimation::operator=(const ObjectAnimation&) = default;
ObjectAnimation& ObjectAnimation::operator=(ObjectAnimation&&) noexcept = default;
ObjectAnimation::~ObjectAnimation() = default;

const ObjectAnimation* TW_ObjectAnimation::getAnimation(int index) const noexcept
{
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

bool TW_ObjectAnimation::isValidAnimation(int index) const
{
    return m_mapAnimationIndices.contains(index);
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
    if (slot >= record->m_vecKeyframeAnimations.size())  // a mesh that was added after the animation
    {
        record->m_vecLastFrames.resize(m_vecMeshes.size());
        record->m_vecKeyframeAnimations.resize(m_vecMeshes.size());
    }
    animation->increaseObjectReferenceCount();  // before the slot lets go of what may be the same animation
    deleteAnimation(meshName, index);
    if (record->m_iKeyframeAnimationCount < 1)
    {
        record->m_iFrameRate = animation->getFrameRate();
        record->m_uiLoopToFrame = animation->getLoopToFrame();
    }
    record->m_uiFrames = std::max(record->m_uiFrames, animation->getTotalFrameCount());
    record->m_vecKeyframeAnimations[slot] = animation;
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
    S_Vector<TW_KeyframeAnimation*>& tracks = record->m_vecKeyframeAnimations;
    if (slot >= tracks.size() || !tracks[slot])
    {
        return;
    }
    if (--record->m_iKeyframeAnimationCount == 0)
    {
        record->m_iFrameRate = 0;
    }
    dropReference(tracks[slot]);
    tracks[slot] = nullptr;
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
    for (TW_KeyframeAnimation*& animation : record->m_vecKeyframeAnimations)
    {
        dropReference(animation);
        animation = nullptr;
    }
    record->m_iFrameRate = 0;
    record->m_uiFrames = 0;
    record->m_uiLoopToFrame = 0;
    record->m_iKeyframeAnimationCount = 0;
    m_mapAnimationIndices.erase(index);
}

void TW_ObjectAnimation::shareAnimation(int index, TW_ObjectAnimation* source)
{
    const ObjectAnimation* const original = source->getAnimation(index);
    if (!original || source == this)
    {
        return;
    }
    ObjectAnimation record(static_cast<int>(original->m_vecKeyframeAnimations.size()));
    record.m_iFrameRate = original->m_iFrameRate;
    record.m_uiFrames = original->m_uiFrames;
    record.m_uiLoopToFrame = original->m_uiLoopToFrame;
    record.m_iInstance = original->m_iInstance;
    record.m_iKeyframeAnimationCount = 1;
    record.m_vecKeyframeAnimations = original->m_vecKeyframeAnimations;

    m_vecAnimations.emplace_back();
    const int position = static_cast<int>(m_vecAnimations.size()) - 1;
    deleteAnimation(index);
    try
    {
        m_mapAnimationIndices.emplace(index, position);
    }
    catch (...)
    {
        m_vecAnimations.pop_back();
        throw;
    }
    m_vecAnimations.back() = std::move(record);
    for (const TW_KeyframeAnimation* animation : m_vecAnimations.back().m_vecKeyframeAnimations)
    {
        if (animation)
        {
            animation->increaseObjectReferenceCount();
        }
    }
    m_iMaximumAnimationIndex = std::max(m_iMaximumAnimationIndex, index);
}
}  // namespace TW2
