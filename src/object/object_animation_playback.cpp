#include "object/pose_player.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>

#include <platform/runtime/memory_scope.h>
#include <platform/scene/context.h>
#include <platform/scene/virtual_object.h>

#include <cmath>
#include <limits>

namespace TW2
{
namespace
{
// Frames per second, rounded to the nearest whole number, ties to even, as far as an int reaches.
int wholeFrameRate(float fps) noexcept
{
    constexpr auto LEAST = std::numeric_limits<int>::min();
    constexpr auto MOST = std::numeric_limits<int>::max();
    if (fps <= static_cast<float>(LEAST))
    {
        return LEAST;
    }
    return fps >= static_cast<float>(MOST) ? MOST : static_cast<int>(std::nearbyint(fps));
}

float secondsPerFrame(float fps) noexcept
{
    return fps != 0.0F ? 1.0F / fps : 0.0F;
}
}  // namespace

bool TW_ObjectAnimation::animateObject(int index, float time, TW_BoneGroupHandle* group)
{
    return animateObjectFrame(index, getAnimationFPS(index) * time, group);
}

bool TW_ObjectAnimation::animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group)
{
    return PosePlayer(*this, group).evaluate(index, frame, 1.0F, false);
}

bool TW_ObjectAnimation::subAnimateObject(int index, float time, float weight)
{
    PosePlayer player(*this, nullptr);
    const bool valid = player.approach(index, getAnimationFPS(index) * time, weight);
    player.correct();
    return valid;
}

void TW_ObjectAnimation::freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group)
{
    const S_MemoryScope scope("TW Memory Container");
    state->freeze(this, group);
}

void TW_ObjectAnimation::restoreAnimationState(TW_ObjectAnimationState* state)
{
    const S_MemoryScope scope("TW Memory Container");
    state->restore(this, 1.0F, false);
}

unsigned int TW_ObjectAnimation::getAnimationFrames(int index) const
{
    const ObjectAnimation* const record = getAnimation(index);
    return record ? record->m_uiFrames : 0;
}

float TW_ObjectAnimation::getAnimationFPS(int index) const
{
    const ObjectAnimation* const record = getAnimation(index);
    return record ? static_cast<float>(record->m_iFrameRate) : 0.0F;
}

float TW_ObjectAnimation::getAnimationLength(int index) const
{
    return secondsPerFrame(getAnimationFPS(index)) * static_cast<float>(getAnimationFrames(index));
}

unsigned int TW_ObjectAnimation::getAnimationLoopToFrame(int index) const
{
    const ObjectAnimation* const record = getAnimation(index);
    return record ? record->m_uiLoopToFrame : 0;
}

float TW_ObjectAnimation::getAnimationLoopToTime(int index) const
{
    return secondsPerFrame(getAnimationFPS(index)) * static_cast<float>(getAnimationLoopToFrame(index));
}

void TW_ObjectAnimation::setAnimationFPS(int index, float fps)
{
    ObjectAnimation* const record = accessAnimation(index);
    if (!record || std::isnan(fps))
    {
        return;
    }
    record->m_iFrameRate = wholeFrameRate(fps);
    for (TW_KeyframeAnimation* track : record->m_vecKeyframeAnimations)
    {
        if (track)
        {
            track->setFrameRate(record->m_iFrameRate);
        }
    }
}

float TW_ObjectAnimation::getBoundingRadius()
{
    return m_bUseManualBoundingSphere ? m_fManualBoundingSphereRadius : P_BaseObject::getBoundingRadius();
}

M_Vector3Template<float> TW_ObjectAnimation::getBoundingBoxMin()
{
    return m_bUseManualBoundingBox ? m_vManualBoundingBoxMin : P_BaseObject::getBoundingBoxMin();
}

M_Vector3Template<float> TW_ObjectAnimation::getBoundingBoxMax()
{
    return m_bUseManualBoundingBox ? m_vManualBoundingBoxMax : P_BaseObject::getBoundingBoxMax();
}

bool TW_ObjectAnimation::executeAlways()
{
    if (m_bUseManualBoundingSphere || m_bUseManualBoundingBox)
    {
        P_Context* const context = getContext();
        setInView(isInsideViewVolume(context ? context->getCurrentCamera() : nullptr));
    }
    return false;
}

void TW_ObjectAnimation::dump(bool details) const
{
    for (const P_VirtualObject* mesh : m_vecMeshes)
    {
        mesh->dump(details);
    }
    P_BaseObject::dump(details);
}
}  // namespace TW2
