#include "lod/levels.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>

// The animated-object interface: what moves moves on every level, what is asked is asked of the level in use.

namespace TW2
{
unsigned int TW_ObjectAnimationLODs::getTotalMeshes() const
{
    return getUsedOrLast().getTotalMeshes();
}

P_VirtualObject* TW_ObjectAnimationLODs::getMesh(unsigned int i) const
{
    return getUsedOrLast().getMesh(i);
}

unsigned int TW_ObjectAnimationLODs::getTotalAnimations() const
{
    return getUsedOrLast().getTotalAnimations();
}

int TW_ObjectAnimationLODs::getMaximumAnimationIndex() const
{
    return getUsedOrLast().getMaximumAnimationIndex();
}

bool TW_ObjectAnimationLODs::isValidAnimation(int index) const
{
    return m_vecLevels.front()->isValidAnimation(index);
}

unsigned int TW_ObjectAnimationLODs::getAnimationFrames(int index) const
{
    return getUsedOrLast().getAnimationFrames(index);
}

float TW_ObjectAnimationLODs::getAnimationLength(int index) const
{
    return getUsedOrLast().getAnimationLength(index);
}

float TW_ObjectAnimationLODs::getAnimationFPS(int index) const
{
    return getUsedOrLast().getAnimationFPS(index);
}

void TW_ObjectAnimationLODs::setAnimationFPS(int index, float fps)
{
    for (TW_ObjectAnimation* level : m_vecLevels)
    {
        level->setAnimationFPS(index, fps);
    }
}

bool TW_ObjectAnimationLODs::animateObject(int index, float time, TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level) { return level.animateObject(index, time, group); });
}

bool TW_ObjectAnimationLODs::animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level) { return level.animateObjectFrame(index, frame, group); });
}

void TW_ObjectAnimationLODs::freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group)
{
    if (TW_ObjectAnimation* used = getUsedLODObject())
    {
        used->freezeAnimationState(state, group);
    }
}

void TW_ObjectAnimationLODs::restoreAnimationState(TW_ObjectAnimationState* state)
{
    if (TW_ObjectAnimation* used = getUsedLODObject())
    {
        used->restoreAnimationState(state);
    }
}

TW_BoneHandle TW_ObjectAnimationLODs::getBoneHandle(const char* name)
{
    return getUsedOrLast().getBoneHandle(name);
}

bool TW_ObjectAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                float time1, float weight1, int index2, float time2, float weight2,
                                                TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels,
                 [&](TW_ObjectAnimation& level) {
                     return level.crossAnimateObject(state, stateWeight, index1, time1, weight1, index2, time2, weight2,
                                                     group);
                 });
}

bool TW_ObjectAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                                TW_ObjectAnimationState* state2, const TW_BoneHandle& reference,
                                                TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level)
                 { return level.crossAnimateObject(state1, weight, state2, reference, group); });
}

bool TW_ObjectAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                                TW_ObjectAnimationState* state2, TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels,
                 [&](TW_ObjectAnimation& level) { return level.crossAnimateObject(state1, weight, state2, group); });
}

bool TW_ObjectAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                                                TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level)
                 { return level.crossAnimateObject(state, weight, index, time, group); });
}

bool TW_ObjectAnimationLODs::crossAnimateObject(int index1, float time1, float weight1, int index2, float time2,
                                                float weight2, int index3, float time3, TW_BoneGroupHandle* group)
{
    return anyOf(
        m_vecLevels, [&](TW_ObjectAnimation& level)
        { return level.crossAnimateObject(index1, time1, weight1, index2, time2, weight2, index3, time3, group); });
}

bool TW_ObjectAnimationLODs::crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                                                TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level)
                 { return level.crossAnimateObject(index1, time1, weight, index2, time2, group); });
}

bool TW_ObjectAnimationLODs::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                     float frame1, float weight1, int index2, float frame2,
                                                     float weight2, TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels,
                 [&](TW_ObjectAnimation& level) {
                     return level.crossAnimateObjectFrame(state, stateWeight, index1, frame1, weight1, index2, frame2,
                                                          weight2, group);
                 });
}

bool TW_ObjectAnimationLODs::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index,
                                                     float frame, TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level)
                 { return level.crossAnimateObjectFrame(state, weight, index, frame, group); });
}

bool TW_ObjectAnimationLODs::crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                                     float weight2, int index3, float frame3, TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels,
                 [&](TW_ObjectAnimation& level) {
                     return level.crossAnimateObjectFrame(index1, frame1, weight1, index2, frame2, weight2, index3,
                                                          frame3, group);
                 });
}

bool TW_ObjectAnimationLODs::crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                                     TW_BoneGroupHandle* group)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level)
                 { return level.crossAnimateObjectFrame(index1, frame1, weight, index2, frame2, group); });
}

unsigned int TW_ObjectAnimationLODs::getAnimationLoopToFrame(int index) const
{
    return m_vecLevels.front()->getAnimationLoopToFrame(index);
}

float TW_ObjectAnimationLODs::getAnimationLoopToTime(int index) const
{
    return m_vecLevels.front()->getAnimationLoopToTime(index);
}

void TW_ObjectAnimationLODs::uploadTextures()
{
    for (TW_ObjectAnimation* level : m_vecLevels)
    {
        level->uploadTextures();
    }
}

bool TW_ObjectAnimationLODs::isValidTextureAnimationSet(const S_String& set) const
{
    return getUsedOrLast().isValidTextureAnimationSet(set);
}

bool TW_ObjectAnimationLODs::isValidTextureAnimation(const S_String& set, int index) const
{
    return getUsedOrLast().isValidTextureAnimation(set, index);
}

unsigned int TW_ObjectAnimationLODs::getTotalTextureAnimationSets() const
{
    return getUsedOrLast().getTotalTextureAnimationSets();
}

unsigned int TW_ObjectAnimationLODs::getTotalTextureAnimations(const S_String& set) const
{
    return getUsedOrLast().getTotalTextureAnimations(set);
}

unsigned int TW_ObjectAnimationLODs::getTextureAnimationFrames(const S_String& set, int index) const
{
    return getUsedOrLast().getTextureAnimationFrames(set, index);
}

float TW_ObjectAnimationLODs::getTextureAnimationLength(const S_String& set, int index) const
{
    return getUsedOrLast().getTextureAnimationLength(set, index);
}

float TW_ObjectAnimationLODs::getTextureAnimationFPS(const S_String& set, int index) const
{
    return getUsedOrLast().getTextureAnimationFPS(set, index);
}

void TW_ObjectAnimationLODs::setTextureAnimationFPS(const S_String& set, int index, float fps)
{
    for (TW_ObjectAnimation* level : m_vecLevels)
    {
        level->setTextureAnimationFPS(set, index, fps);
    }
}

bool TW_ObjectAnimationLODs::animateTexture(const S_String& set, float time)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level) { return level.animateTexture(set, time); });
}

bool TW_ObjectAnimationLODs::animateTextureFrame(const S_String& set, float frame)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level) { return level.animateTextureFrame(set, frame); });
}
}  // namespace TW2
