// Marking the members of a block as out of date, and their world matrices.

#include <platform/math/matrix4x3_product.h>
#include <platform/runtime/prefetch.h>
#include <platform/scene/base_object.h>
#include <platform/scene/transform_block.h>

#include <algorithm>
#include <cstring>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

// Matrices that are on their way into the near cache while one is worked on.
constexpr std::size_t matricesAhead = 10;
constexpr unsigned int fewTops = 4;
}  // namespace

/// Marks a member whose parent is outside and everything below it in one pass over the block, without touching an
/// object. Returns false and does nothing where that cannot be, or would not pay: the member's parent is inside, the
/// order is not parents first, something outside hangs below, or there are many such members.
bool P_TransformBlock::markBelowTop(unsigned int index, unsigned long long change) noexcept
{
    if (m_piParents[index] != PARENT_OUTSIDE || m_uiOutOfOrder != 0 || m_uiOutsideChildTotal != 0 || m_uiTops > fewTops)
    {
        return false;
    }
    m_uiChangeCount = change;
    m_pStates[index] = STATE_OUT_OF_DATE;
    markChildren(index + 1);
    return true;
}

/// Marks the members from `first` on whose parent is marked.
void P_TransformBlock::markChildren(unsigned int first) noexcept
{
    for (unsigned int i = first; i < m_uiCount; ++i)
    {
        const int parent = m_piParents[i];
        if (parent >= 0 && m_pStates[parent] != STATE_VALID)
        {
            m_pStates[i] = STATE_OUT_OF_DATE;
        }
    }
}

void P_TransformBlock::changed() noexcept
{
    m_uiChangeCount = P_BaseObject::takeChangeNumber();
}

void P_TransformBlock::prefetch() const noexcept
{
    const std::size_t bytes = std::min<std::size_t>(m_uiCount, matricesAhead) * sizeof(Matrix);
    for (std::size_t offset = 0; offset < bytes; offset += S_CACHE_LINE)
    {
        S_prefetchForWriting(m_pLocalMatrices, offset);
    }
    S_prefetchForWriting(m_pStates);
}

void P_TransformBlock::invalidateAll() noexcept
{
    if (m_uiCount == 0)
    {
        return;
    }
    // What new world matrices ask for first.
    S_prefetch(m_piParents);
    if (const P_BaseObject* const first = locate(0))
    {
        S_prefetch(&first->m_pContainer);
    }
    std::memset(m_pStates, STATE_OUT_OF_DATE, m_uiCount);
    changed();
    invalidateOutsideChildren();
}

void P_TransformBlock::invalidate(const unsigned int* indices, std::size_t count) noexcept
{
    if (m_uiOutOfOrder != 0)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            invalidateMember(indices[i]);
        }
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
    {
        m_pStates[indices[i]] = STATE_OUT_OF_DATE;
    }
    spreadMarks();
}

void P_TransformBlock::invalidateMasked(const unsigned char* mask) noexcept
{
    if (m_uiOutOfOrder != 0)
    {
        for (unsigned int i = 0; i < m_uiCount; ++i)
        {
            if (mask[i])
            {
                invalidateMember(i);
            }
        }
        return;
    }
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        m_pStates[i] = static_cast<unsigned char>(m_pStates[i] | (mask[i] ? STATE_OUT_OF_DATE : STATE_VALID));
    }
    spreadMarks();
}

void P_TransformBlock::invalidateMember(unsigned int index) noexcept
{
    if (P_BaseObject* const object = getObject(index))
    {
        object->invalidateMatrices();
    }
}

/// After some states were set to out of date, parents standing first: sets those of everything below, first in the
/// block, then outside of it.
void P_TransformBlock::spreadMarks() noexcept
{
    changed();
    markChildren(0);
    invalidateOutsideChildren();
}

void P_TransformBlock::invalidateOutsideChildren() noexcept
{
    if (m_uiOutsideChildTotal == 0)
    {
        return;
    }
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (m_puiOutsideChildren[i] == 0 || m_pStates[i] == STATE_VALID)
        {
            continue;
        }
        for (P_BaseObject* child : locate(i)->getChildren())
        {
            if (child->getTransformBlock() != this)
            {
                child->invalidateMatrices();
            }
        }
    }
}

void P_TransformBlock::updateWorldMatrices() noexcept
{
    if (m_uiUpdatedCount == m_uiChangeCount)
    {
        return;
    }
    m_uiUpdatedCount = m_uiChangeCount;
    if (m_uiOutOfOrder != 0)
    {
        updateOutOfOrder();
        return;
    }
    // The parent of a bone is mostly the bone before it, or the one that was the parent just now: it stays in
    // registers.
    M_RightFactor parentWorld{Matrix()};
    int held = PARENT_NONE;
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (m_pStates[i] == STATE_VALID)
        {
            continue;
        }
        const int parent = m_piParents[i];
        S_prefetch(m_piParents + i, S_CACHE_LINE);
        S_prefetchForWriting(m_pWorldMatrices + i, matricesAhead * sizeof(Matrix));
        if (parent >= 0)
        {
            if (parent != held)
            {
                parentWorld = M_RightFactor(m_pWorldMatrices[parent]);
                held = parent;
            }
            const M_RightFactor world = parentWorld.multiply(m_pLocalMatrices[i], m_pWorldMatrices[i]);
            if (i + 1 < m_uiCount && m_piParents[i + 1] == static_cast<int>(i))
            {
                parentWorld = world;
                held = static_cast<int>(i);
            }
            m_pStates[i] = STATE_VALID;
        }
        else if (parent == PARENT_OUTSIDE)
        {
            updateBelowOutside(i);
        }
    }
}

/// The member's parent is not in the block; nearly always its world matrix is valid, or there is none.
void P_TransformBlock::updateBelowOutside(unsigned int index) noexcept
{
    const P_BaseObject& object = *locate(index);
    const P_BaseObject* const parent = object.getParent();
    if (parent && parent->isObjectToWorldMatrixValid())
    {
        M_multiply(m_pLocalMatrices[index], parent->getObjectToWorldMatrix(), m_pWorldMatrices[index]);
        m_pStates[index] = STATE_VALID;
    }
    else
    {
        object.calculateObjectToWorldMatrix();
    }
}

void P_TransformBlock::updateOutOfOrder() noexcept
{
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (const P_BaseObject* const object = getObject(i))
        {
            object->calculateObjectToWorldMatrix();
        }
    }
}
