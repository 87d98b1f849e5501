#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/memory_scope.h>

// The animated-object interface: animation belongs to the skeleton, textures to the skin.

namespace TW2
{
unsigned int TW_VertexAnimation::getTotalMeshes() const
{
    return getSkeleton()->getTotalMeshes();
}

P_VirtualObject* TW_VertexAnimation::getMesh(unsigned int i) const
{
    return getSkeleton()->getMesh(i);
}

unsigned int TW_VertexAnimation::getTotalAnimations() const
{
    return getSkeleton()->getTotalAnimations();
}

int TW_VertexAnimation::getMaximumAnimationIndex() const
{
    return getSkeleton()->getMaximumAnimationIndex();
}

bool TW_VertexAnimation::isValidAnimation(int index) const
{
    return getSkeleton()->isValidAnimation(index);
}

unsigned int TW_VertexAnimation::getAnimationFrames(int index) const
{
    return getSkeleton()->getAnimationFrames(index);
}

float TW_VertexAnimation::getAnimationLength(int index) const
{
    return getSkeleton()->getAnimationLength(index);
}

float TW_VertexAnimation::getAnimationFPS(int index) const
{
    return getSkeleton()->getAnimationFPS(index);
}

void TW_VertexAnimation::setAnimationFPS(int index, float fps)
{
    getSkeleton()->setAnimationFPS(index, fps);
}

bool TW_VertexAnimation::animateObject(int index, float time, TW_BoneGroupHandle* group)
{
    return getSkeleton()->animateObject(index, time, group);
}

bool TW_VertexAnimation::animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group)
{
    return getSkeleton()->animateObjectFrame(index, frame, group);
}

void TW_VertexAnimation::freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group)
{
    getSkeleton()->freezeAnimationState(state, group);
}

void TW_VertexAnimation::restoreAnimationState(TW_ObjectAnimationState* state)
{
    getSkeleton()->restoreAnimationState(state);
}

TW_BoneHandle TW_VertexAnimation::getBoneHandle(const char* name)
{
    const S_MemoryScope scope("TW Memory Container");
    return getSkeleton()->getBoneHandle(name);
}

bool TW_VertexAnimation::crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1,
                                            float weight1, int index2, float time2, float weight2,
                                            TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObject(state, stateWeight, index1, time1, weight1, index2, time2, weight2, group);
}

bool TW_VertexAnimation::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                            TW_ObjectAnimationState* state2, const TW_BoneHandle& reference,
                                            TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObject(state1, weight, state2, reference, group);
}

bool TW_VertexAnimation::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                            TW_ObjectAnimationState* state2, TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObject(state1, weight, state2, group);
}

bool TW_VertexAnimation::crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                                            TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObject(state, weight, index, time, group);
}

bool TW_VertexAnimation::crossAnimateObject(int index1, float time1, float weight1, int index2, float time2,
                                            float weight2, int index3, float time3, TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObject(index1, time1, weight1, index2, time2, weight2, index3, time3, group);
}

bool TW_VertexAnimation::crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                                            TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObject(index1, time1, weight, index2, time2, group);
}

bool TW_VertexAnimation::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                 float frame1, float weight1, int index2, float frame2, float weight2,
                                                 TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObjectFrame(state, stateWeight, index1, frame1, weight1, index2, frame2, weight2,
                                                  group);
}

bool TW_VertexAnimation::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                                 TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObjectFrame(state, weight, index, frame, group);
}

bool TW_VertexAnimation::crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                                 float weight2, int index3, float frame3, TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObjectFrame(index1, frame1, weight1, index2, frame2, weight2, index3, frame3,
                                                  group);
}

bool TW_VertexAnimation::crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                                 TW_BoneGroupHandle* group)
{
    return getSkeleton()->crossAnimateObjectFrame(index1, frame1, weight, index2, frame2, group);
}

unsigned int TW_VertexAnimation::getAnimationLoopToFrame(int index) const
{
    return getSkeleton()->getAnimationLoopToFrame(index);
}

float TW_VertexAnimation::getAnimationLoopToTime(int index) const
{
    return getSkeleton()->getAnimationLoopToTime(index);
}

void TW_VertexAnimation::uploadTextures()
{
    m_pSkin->uploadTextures();
}

bool TW_VertexAnimation::isValidTextureAnimationSet(const S_String& set) const
{
    return m_pSkin->isValidTextureAnimationSet(set);
}

bool TW_VertexAnimation::isValidTextureAnimation(const S_String& set, int index) const
{
    return m_pSkin->isValidTextureAnimation(set, index);
}

unsigned int TW_VertexAnimation::getTotalTextureAnimationSets() const
{
    return m_pSkin->getTotalTextureAnimationSets();
}

unsigned int TW_VertexAnimation::getTotalTextureAnimations(const S_String& set) const
{
    return m_pSkin->getTotalTextureAnimations(set);
}

unsigned int TW_VertexAnimation::getTextureAnimationFrames(const S_String& set, int index) const
{
    return m_pSkin->getTextureAnimationFrames(set, index);
}

float TW_VertexAnimation::getTextureAnimationLength(const S_String& set, int index) const
{
    return m_pSkin->getTextureAnimationLength(set, index);
}

float TW_VertexAnimation::getTextureAnimationFPS(const S_String& set, int index) const
{
    return m_pSkin->getTextureAnimationFPS(set, index);
}

void TW_VertexAnimation::setTextureAnimationFPS(const S_String& set, int index, float fps)
{
    m_pSkin->setTextureAnimationFPS(set, index, fps);
}

bool TW_VertexAnimation::animateTexture(const S_String& set, float time)
{
    return m_pSkin->animateTexture(set, time);
}

bool TW_VertexAnimation::animateTextureFrame(const S_String& set, float frame)
{
    return m_pSkin->animateTextureFrame(set, frame);
}
}  // namespace TW2
