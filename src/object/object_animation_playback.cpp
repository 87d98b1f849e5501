#include "core/memory_scope.h"
#include "core/nearest_int.h"
#include "keyframe/track_access.h"
#include "object/pose_player.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>

#include <platform/scene/context.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cmath>

namespace TW2
{
namespace
{
float secondsPerFrame(float fps) noexcept
{
    return fps != 0.0F ? 1.0F / fps : 0.0F;
}

/// False when the tracks were loaded without visibility; true when there are no tracks.
bool hasVisibility(const TW_TrackList& tracks)
{
    const auto isThere = [](const TW_KeyframeAnimation* track) { return track != nullptr; };
    const auto isVisible = [](const TW_KeyframeAnimation* track) { return track && track->getVisibilityContainer(); };
    return std::any_of(tracks.begin(), tracks.end(), isVisible) || std::none_of(tracks.begin(), tracks.end(), isThere);
}

using Matrix = M_Matrix4x3Template<float>;

// What moves the second pose rigidly so that its matrix `from` comes to lie on `to`. A singular `from` has no such
// motion: the identity.
Matrix alignment(const Matrix& from, const Matrix& to) noexcept
{
    return from.determinant() != 0.0F ? from.inverse() * to : Matrix::identity();
}

Matrix blend(const Matrix& a, float weight, const Matrix& b) noexcept
{
    Matrix first = a;
    Matrix second = b;
    first *= weight;
    second *= 1.0F - weight;
    return first += second;
}
}  // namespace

bool TW_ObjectAnimation::animateObject(int index, float time, TW_BoneGroupHandle* group)
{
    return animateObjectFrame(index, getAnimationFPS(index) * time, group);
}

bool TW_ObjectAnimation::animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    const bool valid = player.evaluate(index, frame, 1.0F, false);
    player.play();
    return valid;
}

bool TW_ObjectAnimation::subAnimateObject(int index, float time, float weight)
{
    PosePlayer player(*this, nullptr);
    const bool valid = player.approach(index, getAnimationFPS(index) * time, weight);
    player.correct();
    player.play();
    return valid;
}

void TW_ObjectAnimation::freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group)
{
    const MemoryScope scope;
    if (state)
    {
        state->freeze(this, group);
    }
}

void TW_ObjectAnimation::restoreAnimationState(TW_ObjectAnimationState* state)
{
    const MemoryScope scope;
    if (state)
    {
        state->restore(this, 1.0F, false);
    }
}

/// @name Cross-animation
/// A missing state leaves everything as it is.
/// @{
bool TW_ObjectAnimation::crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                                 TW_BoneGroupHandle* group)
{
    return PosePlayer(*this, group).blend({{index1, frame1, weight}, {index2, frame2, 1.0F - weight}});
}

bool TW_ObjectAnimation::crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                                 float weight2, int index3, float frame3, TW_BoneGroupHandle* group)
{
    return PosePlayer(*this, group)
        .blend({{index1, frame1, weight1}, {index2, frame2, weight2}, {index3, frame3, 1.0F - (weight1 + weight2)}});
}

bool TW_ObjectAnimation::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                                 TW_BoneGroupHandle* group)
{
    return state && PosePlayer(*this, group).blend({{*state, weight}, {index, frame, 1.0F - weight}});
}

bool TW_ObjectAnimation::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                 float frame1, float weight1, int index2, float frame2, float weight2,
                                                 TW_BoneGroupHandle* group)
{
    return state && PosePlayer(*this, group)
                        .blend({{*state, stateWeight}, {index1, frame1, weight1}, {index2, frame2, weight2}});
}

bool TW_ObjectAnimation::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                            TW_ObjectAnimationState* state2, TW_BoneGroupHandle* group)
{
    return state1 && state2 && PosePlayer(*this, group).blend({{*state1, weight}, {*state2, 1.0F - weight}});
}

bool TW_ObjectAnimation::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                            TW_ObjectAnimationState* state2, const TW_BoneHandle& reference,
                                            TW_BoneGroupHandle* group)
{
    if (!state1 || !state2)
    {
        return false;
    }
    PosePlayer player(*this, group);
    player.restore(*state1, 1.0F, false);
    player.play();
    if (!group)
    {
        return true;
    }
    const auto inBoth = [&](unsigned int bone)
    { return bone < state1->m_vecMatrices.size() && bone < state2->m_vecMatrices.size(); };
    const unsigned int pivot = reference.getBoneIndex();
    const Matrix aligned =
        inBoth(pivot) ? alignment(state2->m_vecMatrices[pivot], state1->m_vecMatrices[pivot]) : Matrix::identity();
    for (int handle = 0; handle < group->getTotalHandles(); ++handle)
    {
        P_VirtualObject* const mesh = group->getHandle(handle).getBoneObject();
        const unsigned int bone = group->getHandle(handle).getBoneIndex();
        if (mesh && inBoth(bone))
        {
            mesh->setMatrix(blend(state1->m_vecMatrices[bone], weight, state2->m_vecMatrices[bone] * aligned));
        }
    }
    player.correct();
    player.play();
    return true;
}

bool TW_ObjectAnimation::crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                                            TW_BoneGroupHandle* group)
{
    return crossAnimateObjectFrame(index1, getAnimationFPS(index1) * time1, weight, index2,
                                   getAnimationFPS(index2) * time2, group);
}

bool TW_ObjectAnimation::crossAnimateObject(int index1, float time1, float weight1, int index2, float time2,
                                            float weight2, int index3, float time3, TW_BoneGroupHandle* group)
{
    return crossAnimateObjectFrame(index1, getAnimationFPS(index1) * time1, weight1, index2,
                                   getAnimationFPS(index2) * time2, weight2, index3, getAnimationFPS(index3) * time3,
                                   group);
}

bool TW_ObjectAnimation::crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                                            TW_BoneGroupHandle* group)
{
    return crossAnimateObjectFrame(state, weight, index, getAnimationFPS(index) * time, group);
}

bool TW_ObjectAnimation::crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1,
                                            float weight1, int index2, float time2, float weight2,
                                            TW_BoneGroupHandle* group)
{
    return crossAnimateObjectFrame(state, stateWeight, index1, getAnimationFPS(index1) * time1, weight1, index2,
                                   getAnimationFPS(index2) * time2, weight2, group);
}
/// @}

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

TW_ObjectAnimation* TW_ObjectAnimation::getPlayedObject(unsigned int i) const
{
    return i == 0 ? const_cast<TW_ObjectAnimation*>(this) : nullptr;
}

void TW_ObjectAnimation::setAnimationFPS(int index, float fps)
{
    ObjectAnimation* const record = accessAnimation(index);
    if (!record || std::isnan(fps))
    {
        return;
    }
    record->m_iFrameRate = toNearestInt(fps);
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

/// @name Visibility
/// @{
bool TW_ObjectAnimation::updateVisibilityFrame(int index, float frame)
{
    const ObjectAnimation* const record = getAnimation(index);
    if (!record || !hasVisibility(record->m_vecKeyframeAnimations))
    {
        return false;
    }
    const std::size_t count = std::min(record->m_vecKeyframeAnimations.size(), m_vecMeshes.size());
    for (std::size_t mesh = 0; mesh < count; ++mesh)
    {
        const TW_KeyframeAnimation* const track = record->m_vecKeyframeAnimations[mesh];
        if (!track)
        {
            continue;
        }
        const bool visible = TrackAccess::getVisibility(*track, frame) > 0.0F;
        if (visible != m_vecMeshes[mesh]->isEnabled())
        {
            m_vecMeshes[mesh]->enable(visible);
        }
    }
    return true;
}
/// @}

/// @name Textures
/// They and their animations are the material manager's; an object that is not constructed has none.
/// @{
void TW_ObjectAnimation::uploadTextures()
{
    if (m_pMaterialManager)
    {
        m_pMaterialManager->addToTextureMemory();
    }
}

bool TW_ObjectAnimation::isValidTextureAnimationSet(const S_String& set) const
{
    return m_pMaterialManager && m_pMaterialManager->isValidAnimationSet(set);
}

bool TW_ObjectAnimation::isValidTextureAnimation(const S_String& set, int index) const
{
    return m_pMaterialManager && m_pMaterialManager->isValidAnimation(set, index);
}

unsigned int TW_ObjectAnimation::getTotalTextureAnimationSets() const
{
    return m_pMaterialManager ? m_pMaterialManager->getTotalTextureAnimationSets() : 0;
}

unsigned int TW_ObjectAnimation::getTotalTextureAnimations(const S_String& set) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTotalTextureAnimations(set) : 0;
}

unsigned int TW_ObjectAnimation::getTextureAnimationFrames(const S_String& set, int index) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationFrames(set, index) : 0;
}

float TW_ObjectAnimation::getTextureAnimationLength(const S_String& set, int index) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationLength(set, index) : 0.0F;
}

float TW_ObjectAnimation::getTextureAnimationFPS(const S_String& set, int index) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationFPS(set, index) : 0.0F;
}

void TW_ObjectAnimation::setTextureAnimationFPS(const S_String& set, int index, float fps)
{
    if (m_pMaterialManager)
    {
        m_pMaterialManager->setTextureAnimationFPS(set, index, fps);
    }
}

bool TW_ObjectAnimation::animateTexture(const S_String& set, float time)
{
    return m_pMaterialManager && m_pMaterialManager->animateTexture(set, time);
}

bool TW_ObjectAnimation::animateTextureFrame(const S_String& set, float frame)
{
    return m_pMaterialManager && m_pMaterialManager->animateTextureFrame(set, frame);
}

const char* TW_ObjectAnimation::getTextureAnimationSetName(int set) const
{
    return m_pMaterialManager ? m_pMaterialManager->getTextureAnimationSetName(set).c_str() : "";
}

bool TW_ObjectAnimation::animateTextureSet(std::string_view set, float time)
{
    return m_pMaterialManager && m_pMaterialManager->animateTexture(set, time);
}

bool TW_ObjectAnimation::animateTextureSetFrame(std::string_view set, float frame)
{
    return m_pMaterialManager && m_pMaterialManager->animateTextureFrame(set, frame);
}
/// @}
}  // namespace TW2
