#include "core/memory_scope.h"
#include "object/pose_player.h"

#include <tw2/core/exceptions.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/rollback.h>

namespace TW2
{
TW_ObjectAnimationState& TW_ObjectAnimationState::operator=(const TW_ObjectAnimationState& other)
{
    construct(other);
    return *this;
}

void TW_ObjectAnimationState::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_vecMatrices.clear();
    m_vecStateFrozen.clear();
}

void TW_ObjectAnimationState::construct(unsigned int meshCount)
{
    const MemoryScope scope;
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_vecMatrices.resize(meshCount);
    m_vecStateFrozen.resize(meshCount);
    m_bConstructed = true;
    rollback.keep();
}

void TW_ObjectAnimationState::construct(const TW_ObjectAnimation& object)
{
    construct(object.getTotalMeshes());
}

void TW_ObjectAnimationState::construct(const TW_VertexAnimation& object)
{
    construct(object.getTotalMeshes());
}

void TW_ObjectAnimationState::construct(const TW_ObjectAnimationLODs& object)
{
    construct(object.getTotalMeshes());
}

void TW_ObjectAnimationState::construct(const TW_VertexAnimationLODs& object)
{
    construct(object.getTotalMeshes());
}

void TW_ObjectAnimationState::construct(const TW_ObjectAnimation* object)
{
    if (!object)
    {
        destruct();
        throw TW_Exception_InvalidGeometry("A state is built for an object, and none is given");
    }
    construct(*object);
}

void TW_ObjectAnimationState::construct(const TW_ObjectAnimationState& other)
{
    if (&other == this)
    {
        return;
    }
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_vecMatrices = other.m_vecMatrices;
    m_vecStateFrozen = other.m_vecStateFrozen;
    m_bConstructed = other.m_bConstructed;
    rollback.keep();
}

const M_Matrix4x3Template<float>& TW_ObjectAnimationState::getMatrix(int meshIndex) const noexcept
{
    static constexpr M_Matrix4x3Template<float> identityMatrix;
    const auto index = static_cast<std::size_t>(meshIndex);  // a negative index is past every end
    return index < m_vecMatrices.size() ? m_vecMatrices[index] : identityMatrix;
}

void TW_ObjectAnimationState::freeze(TW_ObjectAnimation* object, TW_BoneGroupHandle* group)
{
    PosePlayer(*object, group).freeze(*this);
}

void TW_ObjectAnimationState::restore(TW_ObjectAnimation* object, TW_BoneGroupHandle* group, float weight,
                                      bool add) const
{
    PosePlayer player(*object, group);
    player.restore(*this, weight, add);
    player.play();
}
}  // namespace TW2
