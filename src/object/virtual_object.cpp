// Names, clocks and events of animations, for every kind of animated object.

#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>
#include <tw2/core/static_data.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/virtual_object.h>

#include <platform/runtime/hash_map.h>
#include <platform/runtime/str.h>

namespace TW2
{
namespace
{
const TW_ObjectAnimation::ObjectAnimation* findRecord(const TW_VirtualObject& object, int index) noexcept
{
    const TW_ObjectAnimation* const played = object.getPlayedObject(0);
    return played ? played->getAnimation(index) : nullptr;
}

const TW_AnimationDescription* findDescription(const TW_VirtualObject& object, int index) noexcept
{
    const TW_ObjectAnimation::ObjectAnimation* const record = findRecord(object, index);
    return record ? record->m_pDescription.get() : nullptr;
}
}  // namespace

TW_VirtualObject::TW_VirtualObject()
{
    ++sm_iLiveCount;
}

TW_VirtualObject::~TW_VirtualObject()
{
    if (--sm_iLiveCount == 0)
    {
        deleteStaticData();
    }
}

bool TW_VirtualObject::animateTextureSetFrame(std::string_view set, float frame)
{
    return animateTextureFrame(S_String(set), frame);
}

const int* TW_VirtualObject::findAnimationIndex(const char* name) const noexcept
{
    const TW_ObjectAnimation* const played = getPlayedObject(0);
    if (!played)
    {
        return nullptr;
    }
    for (const auto& [index, position] : played->m_mapAnimationIndices)
    {
        if (S_CaselessNameEqual()(getAnimationName(index), orEmpty(name)))
        {
            return &index;
        }
    }
    return nullptr;
}

int TW_VirtualObject::findAnimation(const char* name) const
{
    if (const int* const index = findAnimationIndex(name))
    {
        return *index;
    }
    S_String names;
    if (const TW_ObjectAnimation* const played = getPlayedObject(0))
    {
        for (const auto& [index, position] : played->m_mapAnimationIndices)
        {
            names += S_STR("%s\"%s\"", names.empty() ? "" : ", ", getAnimationName(index));
        }
    }
    throw TW_Exception_AnimationNotFound(orEmpty(name), getName().c_str(), names.empty() ? "none" : names.c_str());
}

const char* TW_VirtualObject::getAnimationName(int index) const
{
    const TW_AnimationDescription* const description = findDescription(*this, index);
    return description ? description->m_strName.c_str() : "";
}

TW_AnimationCourse TW_VirtualObject::getAnimationCourse(int index) const
{
    const TW_ObjectAnimation::ObjectAnimation* const record = findRecord(*this, index);
    return record ? record->getCourse() : TW_AnimationCourse();
}

bool TW_VirtualObject::isAnimationLooping(int index) const
{
    return getAnimationCourse(index).m_bLooping;
}

float TW_VirtualObject::getAnimationPeriod(int index) const
{
    const TW_ObjectAnimation::ObjectAnimation* const record = findRecord(*this, index);
    if (!record || record->m_iFrameRate <= 0)
    {
        return 0.0F;
    }
    const TW_AnimationCourse course = record->getCourse();
    return static_cast<float>((course.m_dEndFrame - course.m_dLoopToFrame) / record->m_iFrameRate);
}

std::span<const TW_AnimationEvent> TW_VirtualObject::getAnimationEvents(int index) const
{
    const TW_AnimationDescription* const description = findDescription(*this, index);
    return description ? std::span<const TW_AnimationEvent>(description->m_vecEvents)
                       : std::span<const TW_AnimationEvent>();
}

const TW_KeyframeAnimation* TW_VirtualObject::getRootMotionTrack(int index) const
{
    const TW_AnimationDescription* const description = findDescription(*this, index);
    return description && description->m_rootMotion.isConstructed() ? &description->m_rootMotion : nullptr;
}
}  // namespace TW2
