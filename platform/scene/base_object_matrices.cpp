// World matrices of scene objects: marking as out of date and computing on demand.

#include <platform/math/matrix4x3_product.h>
#include <platform/scene/base_object.h>
#include <platform/scene/subtree.h>

unsigned long long P_BaseObject::sm_uiChanges = 0;

/// Marks this object, or, through its block, it and everything below. Returns whether what hangs below is still to be
/// marked.
bool P_BaseObject::mark(unsigned long long change) noexcept
{
    if (m_pBlock && getFirstChild() && m_pBlock->markBelowTop(m_uiBlockIndex, change))
    {
        return false;
    }
    *m_pState = P_TransformBlock::STATE_OUT_OF_DATE;
    (m_pBlock ? m_pBlock->m_uiChangeCount : m_uiChangeCount) = change;
    return true;
}

void P_BaseObject::markSubtree() noexcept
{
    const unsigned long long change = ++sm_uiChanges;
    P_BaseObject* object = nextInSubtree(*this, this, mark(change));
    while (object)
    {
        const bool descend = object->isObjectToWorldMatrixValid() && object->mark(change);
        object = nextInSubtree(*this, object, descend);
    }
}

void P_BaseObject::computeWorldMatrix() const noexcept
{
    if (const P_BaseObject* parent = getParent())
    {
        M_multiply(*m_pLocalMatrix, *parent->m_pWorldMatrix, *m_pWorldMatrix);
    }
    else
    {
        *m_pWorldMatrix = *m_pLocalMatrix;
    }
    *m_pState &= static_cast<unsigned char>(~P_TransformBlock::STATE_WORLD_OUT_OF_DATE);
}

void P_BaseObject::calculateObjectToWorldMatrix() const noexcept
{
    if (isObjectToWorldMatrixValid())
    {
        return;
    }
    const P_BaseObject* object = this;
    m_pWayDown = nullptr;
    for (const P_BaseObject* parent = getParent(); parent && !parent->isObjectToWorldMatrixValid();
         parent = parent->getParent())
    {
        parent->m_pWayDown = object;
        object = parent;
    }
    for (; object; object = object->m_pWayDown)
    {
        object->computeWorldMatrix();
    }
}

const M_Matrix4x3Template<float>& P_BaseObject::getWorldToObjectMatrix() const noexcept
{
    const M_Matrix4x3Template<float>& world = getObjectToWorldMatrix();
    if (*m_pState & P_TransformBlock::STATE_INVERSE_OUT_OF_DATE)
    {
        m_worldToObjectMatrix = world.inverse();
        *m_pState = P_TransformBlock::STATE_VALID;
    }
    return m_worldToObjectMatrix;
}
