#include "object/pose_player.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/memory_scope.h>

namespace TW2
{
TW_ObjectAnimationState::TW_ObjectAnimationState() noexcept
{
    initializeMembers();
}

TW_ObjectAnimationState::TW_ObjectAnimationState(unsigned int meshCount)
{
    initializeMembers();
    construct(meshCount);
}

TW_ObjectAnimationState::TW_ObjectAnimationState(const TW_ObjectAnimation& object)
{
    initializeMembers();
    construct(object);
}

TW_ObjectAnimationState::TW_ObjectAnimationState(const TW_VertexAnimation& object)
{
    initializeMembers();
    construct(object);
}

TW_ObjectAnimationState::TW_ObjectAnimationState(const TW_ObjectAnimationLODs& object)
{
    initializeMembers();
    construct(object);
}

TW_ObjectAnimationState::TW_ObjectAnimationState(const TW_VertexAnimationLODs& object)
{
    initializeMembers();
    construct(object);
}

TW_ObjectAnimationState::TW_ObjectAnimationState(const TW_ObjectAnimationState& other)
{
    initializeMembers();
    construct(other);
}

TW_ObjectAnimationState& TW_ObjectAnimationState::operator=(const TW_ObjectAnimationState& other)
{
    construct(other);
    return *this;
}

TW_ObjectAnimationState::~TW_ObjectAnimationState() = default;

void TW_ObjectAnimationState::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_vecMatrices.clear();
    m_vecStateFrozen.clear();
}

void TW_ObjectAnimationState::construct(unsigned int meshCount)
{
    const S_MemoryScope scope("TW Memory Container");
    destruct();
    try
    {
        m_vecMatrices.resize(meshCount);
        m_vecStateFrozen.resize(meshCount);
    }
    catch (...)
    {
        destruct();
        throw;
    }
    m_bConstructed = true;
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
    construct(*object);
}

void TW_ObjectAnimationState::construct(const TW_ObjectAnimationState& other)
{
    if (&other == this)
    {
        return;
    }
    destruct();
    try
    {
        m_vecMatrices = other.m_vecMatrices;
        m_vecStateFrozen = other.m_vecStateFrozen;
    }
    catch (...)
    {
        destruct();
        throw;
    }
    m_bConstructed = true;
}

void TW_ObjectAnimationState::destruct() noexcept
{
    initializeMembers();
}

const M_Matrix4x3Template<float>& TW_ObjectAnimationState::getMatrix(int meshIndex) const noexcept
{
    static constexpr M_Matrix4x3Template<float> IDENTITY;
    const auto index = static_cast<std::size_t>(meshIndex);  // a negative index is past every end
    return index < m_vecMatrices.size() ? m_vecMatrices[index] : IDENTITY;
}

void TW_ObjectAnimationState::freeze(TW_ObjectAnimation* object, TW_BoneGroupHandle* group)
{
    PosePlayer(*object, group).freeze(*this);
}

void TW_ObjectAnimationState::restore(TW_ObjectAnimation* object, TW_BoneGroupHandle* group, float weight,
                                      bool add) const
{
    PosePlayer(*object, group).restore(*this, weight, add);
}

void TW_ObjectAnimationState::restore(TW_ObjectAnimation* object, float weight, bool add) const
{
    restore(object, nullptr, weight, add);
}
}  // namespace TW2
