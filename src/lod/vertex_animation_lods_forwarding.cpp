#include "lod/levels.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/bone_handle.h>
#include <tw2/skin/vertex_animation.h>

// The animated-object interface: animation belongs to level 0, whose skeleton moves all levels; textures to every
// level.

namespace TW2
{
unsigned int TW_VertexAnimationLODs::getTotalMeshes() const
{
    return m_vecLevels.front()->getTotalMeshes();
}

P_VirtualObject* TW_VertexAnimationLODs::getMesh(unsigned int i) const
{
    return m_vecLevels.front()->getMesh(i);
}

unsigned int TW_VertexAnimationLODs::getTotalAnimations() const
{
    return m_vecLevels.front()->getTotalAnimations();
}

int TW_VertexAnimationLODs::getMaximumAnimationIndex() const
{
    return m_vecLevels.front()->getMaximumAnimationIndex();
}

bool TW_VertexAnimationLODs::isValidAnimation(int index) const
{
    return m_vecLevels.front()->isValidAnimation(index);
}

unsigned int TW_VertexAnimationLODs::getAnimationFrames(int index) const
{
    return m_vecLevels.front()->getAnimationFrames(index);
}

float TW_VertexAnimationLODs::getAnimationLength(int index) const
{
    return m_vecLevels.front()->getAnimationLength(index);
}

float TW_VertexAnimationLODs::getAnimationFPS(int index) const
{
    return m_vecLevels.front()->getAnimationFPS(index);
}

void TW_VertexAnimationLODs::setAnimationFPS(int index, float fps)
{
    m_vecLevels.front()->setAnimationFPS(index, fps);
}

bool TW_VertexAnimationLODs::animateObject(int index, float time, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->animateObject(index, time, group);
}

bool TW_VertexAnimationLODs::animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->animateObjectFrame(index, frame, group);
}

void TW_VertexAnimationLODs::freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group)
{
    m_vecLevels.front()->freezeAnimationState(state, group);
}

void TW_VertexAnimationLODs::restoreAnimationState(TW_ObjectAnimationState* state)
{
    m_vecLevels.front()->restoreAnimationState(state);
}

TW_BoneHandle TW_VertexAnimationLODs::getBoneHandle(const char* name)
{
    return m_vecLevels.front()->getBoneHandle(name);
}

bool TW_VertexAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                float time1, float weight1, int index2, float time2, float weight2,
                                                TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObject(state, stateWeight, index1, time1, weight1, index2, time2, weight2,
                                                   group);
}

bool TW_VertexAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                                TW_ObjectAnimationState* state2, const TW_BoneHandle& reference,
                                                TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObject(state1, weight, state2, reference, group);
}

bool TW_VertexAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                                TW_ObjectAnimationState* state2, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObject(state1, weight, state2, group);
}

bool TW_VertexAnimationLODs::crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                                                TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObject(state, weight, index, time, group);
}

bool TW_VertexAnimationLODs::crossAnimateObject(int index1, float time1, float weight1, int index2, float time2,
                                                float weight2, int index3, float time3, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObject(index1, time1, weight1, index2, time2, weight2, index3, time3,
                                                   group);
}

bool TW_VertexAnimationLODs::crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                                                TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObject(index1, time1, weight, index2, time2, group);
}

bool TW_VertexAnimationLODs::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                     float frame1, float weight1, int index2, float frame2,
                                                     float weight2, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObjectFrame(state, stateWeight, index1, frame1, weight1, index2, frame2,
                                                        weight2, group);
}

bool TW_VertexAnimationLODs::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index,
                                                     float frame, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObjectFrame(state, weight, index, frame, group);
}

bool TW_VertexAnimationLODs::crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                                     float weight2, int index3, float frame3, TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObjectFrame(index1, frame1, weight1, index2, frame2, weight2, index3,
                                                        frame3, group);
}

bool TW_VertexAnimationLODs::crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                                     TW_BoneGroupHandle* group)
{
    return m_vecLevels.front()->crossAnimateObjectFrame(index1, frame1, weight, index2, frame2, group);
}

unsigned int TW_VertexAnimationLODs::getAnimationLoopToFrame(int index) const
{
    return m_vecLevels.front()->getAnimationLoopToFrame(index);
}

float TW_VertexAnimationLODs::getAnimationLoopToTime(int index) const
{
    return m_vecLevels.front()->getAnimationLoopToTime(index);
}

void TW_VertexAnimationLODs::uploadTextures()
{
    for (TW_VertexAnimation* level : m_vecLevels)
    {
        level->uploadTextures();
    }
}

bool TW_VertexAnimationLODs::isValidTextureAnimationSet(const S_String& set) const
{
    return getUsedOrLast().isValidTextureAnimationSet(set);
}

bool TW_VertexAnimationLODs::isValidTextureAnimation(const S_String& set, int index) const
{
    return getUsedOrLast().isValidTextureAnimation(set, index);
}

unsigned int TW_VertexAnimationLODs::getTotalTextureAnimationSets() const
{
    return getUsedOrLast().getTotalTextureAnimationSets();
}

unsigned int TW_VertexAnimationLODs::getTotalTextureAnimations(const S_String& set) const
{
    return getUsedOrLast().getTotalTextureAnimations(set);
}

unsigned int TW_VertexAnimationLODs::getTextureAnimationFrames(const S_String& set, int index) const
{
    return getUsedOrLast().getTextureAnimationFrames(set, index);
}

float TW_VertexAnimationLODs::getTextureAnimationLength(const S_String& set, int index) const
{
    return getUsedOrLast().getTextureAnimationLength(set, index);
}

float TW_VertexAnimationLODs::getTextureAnimationFPS(const S_String& set, int index) const
{
    return getUsedOrLast().getTextureAnimationFPS(set, index);
}

void TW_VertexAnimationLODs::setTextureAnimationFPS(const S_String& set, int index, float fps)
{
    for (TW_VertexAnimation* level : m_vecLevels)
    {
        level->setTextureAnimationFPS(set, index, fps);
    }
}

bool TW_VertexAnimationLODs::animateTexture(const S_String& set, float time)
{
    return anyOf(m_vecLevels, [&](TW_VertexAnimation& level) { return level.animateTexture(set, time); });
}

bool TW_VertexAnimationLODs::animateTextureFrame(const S_String& set, float frame)
{
    return anyOf(m_vecLevels, [&](TW_VertexAnimation& level) { return level.animateTextureFrame(set, frame); });
}
}  // namespace TW2
