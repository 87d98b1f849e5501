#include "object/pose_player.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>

#include <platform/scene/virtual_object.h>

namespace TW2
{
namespace
{
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

// Every form runs its steps in order up to the first animation that does not exist; the correction follows in any case.

bool TW_ObjectAnimation::crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                                 TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    const bool complete =
        player.evaluate(index1, frame1, weight, false) && player.evaluate(index2, frame2, 1.0F - weight, true);
    player.correct();
    return complete;
}

bool TW_ObjectAnimation::crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2,
                                                 float weight2, int index3, float frame3, TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    const bool complete = player.evaluate(index1, frame1, weight1, false) &&
                          player.evaluate(index2, frame2, weight2, true) &&
                          player.evaluate(index3, frame3, 1.0F - (weight1 + weight2), true);
    player.correct();
    return complete;
}

bool TW_ObjectAnimation::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                                 TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    player.restore(*state, weight, false);
    const bool complete = player.evaluate(index, frame, 1.0F - weight, true);
    player.correct();
    return complete;
}

bool TW_ObjectAnimation::crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1,
                                                 float frame1, float weight1, int index2, float frame2, float weight2,
                                                 TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    player.restore(*state, stateWeight, false);
    const bool complete =
        player.evaluate(index1, frame1, weight1, true) && player.evaluate(index2, frame2, weight2, true);
    player.correct();
    return complete;
}

bool TW_ObjectAnimation::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                            TW_ObjectAnimationState* state2, TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    player.restore(*state1, weight, false);
    player.restore(*state2, 1.0F - weight, true);
    player.correct();
    return true;
}

bool TW_ObjectAnimation::crossAnimateObject(TW_ObjectAnimationState* state1, float weight,
                                            TW_ObjectAnimationState* state2, const TW_BoneHandle& reference,
                                            TW_BoneGroupHandle* group)
{
    PosePlayer player(*this, group);
    player.restore(*state1, 1.0F, false);
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
}  // namespace TW2
