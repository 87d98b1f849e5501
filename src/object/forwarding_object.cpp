#include "core/memory_scope.h"
#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/forwarding_object.h>
#include <tw2/object/object_animation.h>

namespace TW2
{
/// @name How operations reach parts
/// @{

/// Calls an operation on every part, in order; whether any call returned true.
template <typename... Arguments, typename Object>
bool TW_ForwardingObject::onEvery(Operations operations, bool (Object::*operation)(Arguments...),
                                  Arguments... arguments)
{
    bool any = false;
    for (unsigned int i = 0; Object* const part = getPart(operations, i); ++i)
    {
        any = (part->*operation)(arguments...) || any;
    }
    return any;
}

/// What the first part answers; null, false or 0 without one.
template <typename Result, typename... Arguments, typename... Given>
Result TW_ForwardingObject::ask(Operations operations, Result (TW_VirtualObject::*operation)(Arguments...) const,
                                const Given&... arguments) const
{
    const TW_VirtualObject* const part = getPart(operations, 0);
    return part ? (part->*operation)(arguments...) : Result();
}

TW_ObjectAnimation* TW_ForwardingObject::getPlayedObject(unsigned int i) const
{
    return getPart(Operations::Move, i);
}

TW_ObjectAnimation* TW_ForwardingObject::findManualVolume(bool (TW_ObjectAnimation::*isUsed)() const noexcept) const
{
    unsigned int i = 0;
    TW_ObjectAnimation* part = getPart(Operations::Bounds, i);
    while (part && !(part->*isUsed)())
    {
        part = getPart(Operations::Bounds, ++i);
    }
    return part;
}
/// @}

/// @name Loading
/// @{
TW_ForwardingObject::LoadScope::~LoadScope()
{
    if (--m_object.m_iLoads == 0 && m_object.m_bGivenUp)
    {
        m_object.destruct();
    }
}

void TW_ForwardingObject::LoadScope::requireObject() const
{
    TW2::requireObject(!m_object.m_bGivenUp);
}

void TW_ForwardingObject::destruct() noexcept
{
    m_bGivenUp = isLoading();
    if (m_bConstructed && !m_bGivenUp)
    {
        takeApart();
        m_bConstructed = false;
    }
}

void TW_ForwardingObject::forgetBoundingVolumes()
{
    setEngineFlag(FLAG_BOUNDING_SPHERE, false);
    if (hasEngineFlag(FLAG_FIXED_BOUNDING_VOLUME))
    {
        setEngineFlag(FLAG_FIXED_BOUNDING_VOLUME, false);
        setEngineFlag(FLAG_BOUNDING_BOX, false);
        setEngineFlag(FLAG_CULL_SUBTREE, false);
        setBoundingRadius(0.0F);
        setBoundingBox({}, {});
    }
}

bool TW_ForwardingObject::isToCopy(const TW_ForwardingObject& source) noexcept
{
    const bool isComplete = source.m_bConstructed && !source.isLoading();
    if (&source != this && !isComplete)
    {
        destruct();
    }
    return &source != this && isComplete;
}
/// @}

/// @name Animations
/// @{
unsigned int TW_ForwardingObject::getTotalMeshes() const
{
    return ask(Operations::Ask, &TW_VirtualObject::getTotalMeshes);
}

P_VirtualObject* TW_ForwardingObject::getMesh(unsigned int mesh) const
{
    return ask(Operations::Ask, &TW_VirtualObject::getMesh, mesh);
}

unsigned int TW_ForwardingObject::getTotalAnimations() const
{
    return ask(Operations::Ask, &TW_VirtualObject::getTotalAnimations);
}

int TW_ForwardingObject::getMaximumAnimationIndex() const
{
    const TW_ObjectAnimation* const part = getPart(Operations::Ask, 0);
    return part ? part->getMaximumAnimationIndex() : -1;
}

bool TW_ForwardingObject::isValidAnimation(int index) const
{
    return ask(Operations::AskForIndex, &TW_VirtualObject::isValidAnimation, index);
}

unsigned int TW_ForwardingObject::getAnimationFrames(int index) const
{
    return ask(Operations::Ask, &TW_VirtualObject::getAnimationFrames, index);
}

float TW_ForwardingObject::getAnimationLength(int index) const
{
    return ask(Operations::Ask, &TW_VirtualObject::getAnimationLength, index);
}

float TW_ForwardingObject::getAnimationFPS(int index) const
{
    return ask(Operations::Ask, &TW_VirtualObject::getAnimationFPS, index);
}

void TW_ForwardingObject::setAnimationFPS(int index, float fps)
{
    for (unsigned int i = 0; TW_ObjectAnimation* const part = getPart(Operations::Move, i); ++i)
    {
        part->setAnimationFPS(index, fps);
    }
}

unsigned int TW_ForwardingObject::getAnimationLoopToFrame(int index) const
{
    return ask(Operations::AskForIndex, &TW_VirtualObject::getAnimationLoopToFrame, index);
}

float TW_ForwardingObject::getAnimationLoopToTime(int index) const
{
    return ask(Operations::AskForIndex, &TW_VirtualObject::getAnimationLoopToTime, index);
}
/// @}

/// @name Playing and blending
/// @{
bool TW_ForwardingObject::animateObject(int index, float time, TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::animateObject, index, time, group);
}

bool TW_ForwardingObject::animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::animateObjectFrame, index, frame, group);
}

bool TW_ForwardingObject::updateVisibility(int index, float time)
{
    return onEvery(Operations::Show, &TW_ObjectAnimation::updateVisibility, index, time);
}

bool TW_ForwardingObject::updateVisibilityFrame(int index, float frame)
{
    return onEvery(Operations::Show, &TW_ObjectAnimation::updateVisibilityFrame, index, frame);
}

void TW_ForwardingObject::freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group)
{
    if (TW_ObjectAnimation* const part = getPart(Operations::Freeze, 0))
    {
        part->freezeAnimationState(state, group);
    }
}

void TW_ForwardingObject::restoreAnimationState(TW_ObjectAnimationState* state)
{
    if (TW_ObjectAnimation* const part = getPart(Operations::Freeze, 0))
    {
        part->restoreAnimationState(state);
    }
}

TW_BoneHandle TW_ForwardingObject::getBoneHandle(const char* name)
{
    const MemoryScope scope;
    TW_ObjectAnimation* const part = getPart(Operations::Ask, 0);
    if (!part)
    {
        throw TW_Exception_BoneNotFound(orEmpty(name), getName().c_str());
    }
    return part->getBoneHandle(name);
}

bool TW_ForwardingObject::crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1,
                                             float weight1, int index2, float time2, float weight2,
                                             TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObject, state, stateWeight, index1, time1, weight1,
                   index2, time2, weight2, group);
}

bool TW_ForwardingObject::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                             TW_ObjectAnimationState* state2, const TW_BoneHandle& reference,
                                             TW_BoneGroupHandle* group)
{
    return onEvery<TW_ObjectAnimationState*, float, TW_ObjectAnimationState*, const TW_BoneHandle&,
                   TW_BoneGroupHandle*>(Operations::Move, &TW_VirtualObject::crossAnimateObject, state1, weight, state2,
                                        reference, group);
}

bool TW_ForwardingObject::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                             TW_ObjectAnimationState* state2, TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObject, state1, weight, state2, group);
}

bool TW_ForwardingObject::crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                                             TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObject, state, weight, index, time, group);
}

bool TW_ForwardingObject::crossAnimateObject(int index1, float time1, float weight1, int index2, float time2,
                                             float weight2, int index3, float time3, TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObject, index1, time1, weight1, index2, time2,
                   weight2, index3, time3, group);
}

bool TW_ForwardingObject::crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                                             TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObject, index1, time1, weight, index2, time2,
                   group);
}

bool TW_ForwardingObject::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                  float frame1, float weight1, int index2, float frame2, float weight2,
                                                  TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObjectFrame, state, stateWeight, index1, frame1,
                   weight1, index2, frame2, weight2, group);
}

bool TW_ForwardingObject::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                                  TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObjectFrame, state, weight, index, frame, group);
}

bool TW_ForwardingObject::crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                                  float weight2, int index3, float frame3, TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObjectFrame, index1, frame1, weight1, index2,
                   frame2, weight2, index3, frame3, group);
}

bool TW_ForwardingObject::crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                                  TW_BoneGroupHandle* group)
{
    return onEvery(Operations::Move, &TW_VirtualObject::crossAnimateObjectFrame, index1, frame1, weight, index2, frame2,
                   group);
}
/// @}

/// @name Textures
/// @{
void TW_ForwardingObject::uploadTextures()
{
    for (unsigned int i = 0; TW_ObjectAnimation* const part = getPart(Operations::Texture, i); ++i)
    {
        part->uploadTextures();
    }
}

bool TW_ForwardingObject::isValidTextureAnimationSet(const S_String& set) const
{
    return ask<bool, const S_String&>(Operations::AskTexture, &TW_VirtualObject::isValidTextureAnimationSet, set);
}

bool TW_ForwardingObject::isValidTextureAnimation(const S_String& set, int index) const
{
    return ask<bool, const S_String&, int>(Operations::AskTexture, &TW_VirtualObject::isValidTextureAnimation, set,
                                           index);
}

unsigned int TW_ForwardingObject::getTotalTextureAnimationSets() const
{
    return ask(Operations::AskTexture, &TW_VirtualObject::getTotalTextureAnimationSets);
}

unsigned int TW_ForwardingObject::getTotalTextureAnimations(const S_String& set) const
{
    return ask<unsigned int, const S_String&>(Operations::AskTexture, &TW_VirtualObject::getTotalTextureAnimations,
                                              set);
}

unsigned int TW_ForwardingObject::getTextureAnimationFrames(const S_String& set, int index) const
{
    return ask<unsigned int, const S_String&, int>(Operations::AskTexture, &TW_VirtualObject::getTextureAnimationFrames,
                                                   set, index);
}

float TW_ForwardingObject::getTextureAnimationLength(const S_String& set, int index) const
{
    return ask<float, const S_String&, int>(Operations::AskTexture, &TW_VirtualObject::getTextureAnimationLength, set,
                                            index);
}

float TW_ForwardingObject::getTextureAnimationFPS(const S_String& set, int index) const
{
    return ask<float, const S_String&, int>(Operations::AskTexture, &TW_VirtualObject::getTextureAnimationFPS, set,
                                            index);
}

void TW_ForwardingObject::setTextureAnimationFPS(const S_String& set, int index, float fps)
{
    for (unsigned int i = 0; TW_ObjectAnimation* const part = getPart(Operations::Texture, i); ++i)
    {
        part->setTextureAnimationFPS(set, index, fps);
    }
}

bool TW_ForwardingObject::animateTexture(const S_String& set, float time)
{
    return onEvery<const S_String&, float>(Operations::Texture, &TW_VirtualObject::animateTexture, set, time);
}

bool TW_ForwardingObject::animateTextureFrame(const S_String& set, float frame)
{
    return onEvery<const S_String&, float>(Operations::Texture, &TW_VirtualObject::animateTextureFrame, set, frame);
}

const char* TW_ForwardingObject::getTextureAnimationSetName(int set) const
{
    const TW_ObjectAnimation* const part = getPart(Operations::AskTexture, 0);
    return part ? part->getTextureAnimationSetName(set) : "";
}

bool TW_ForwardingObject::animateTextureSet(std::string_view set, float time)
{
    return onEvery(Operations::Texture, &TW_VirtualObject::animateTextureSet, set, time);
}

bool TW_ForwardingObject::animateTextureSetFrame(std::string_view set, float frame)
{
    return onEvery(Operations::Texture, &TW_VirtualObject::animateTextureSetFrame, set, frame);
}
/// @}

/// @name Bounding volumes
/// @{
float TW_ForwardingObject::getBoundingRadius()
{
    const TW_ObjectAnimation* const part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingSphere);
    return part ? part->getManualBoundingSphereRadius() : P_BaseObject::getBoundingRadius();
}

M_Vector3Template<float> TW_ForwardingObject::getBoundingBoxMin()
{
    const TW_ObjectAnimation* const part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingBox);
    return part ? part->getManualBoundingBoxMin() : P_BaseObject::getBoundingBoxMin();
}

M_Vector3Template<float> TW_ForwardingObject::getBoundingBoxMax()
{
    const TW_ObjectAnimation* const part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingBox);
    return part ? part->getManualBoundingBoxMax() : P_BaseObject::getBoundingBoxMax();
}
/// @}
}  // namespace TW2
