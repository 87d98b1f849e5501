#include <platform/math/matrix4x3_product.h>
#include <platform/runtime/prefetch.h>
#include <platform/scene/base_object.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/transform_block.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

constexpr std::size_t s_uiStorageAlignment = S_CACHE_LINE;
// Matrices that are on their way into the near cache while one is worked on.
constexpr std::size_t s_uiMatricesAhead = 10;
constexpr unsigned int s_uiFewTops = 4;
}  // namespace

/// All arrays of a block in one piece of memory, the widest elements first.
struct P_TransformBlock::Storage
{
    explicit Storage(std::size_t count)
    {
        constexpr std::size_t place =
            2 * sizeof(Matrix) + sizeof(P_BaseObject*) + sizeof(int) + sizeof(unsigned int) + 1;
        m_pMemory = S_Memory::allocate(count * place, s_uiStorageAlignment);
        m_pLocal = new (m_pMemory) Matrix[2 * count];
        m_ppObjects = new (m_pLocal + 2 * count) P_BaseObject* [count] {};
        m_piParents = new (m_ppObjects + count) int[count];
        m_puiOutsideChildren = new (m_piParents + count) unsigned int[count]{};
        m_pStates = new (m_puiOutsideChildren + count) unsigned char[count]{};
        std::fill_n(m_piParents, count, static_cast<int>(PARENT_NONE));
    }

    void* m_pMemory;
    Matrix* m_pLocal;
    P_BaseObject** m_ppObjects;
    int* m_piParents;
    unsigned int* m_puiOutsideChildren;
    unsigned char* m_pStates;
};

P_TransformBlock::~P_TransformBlock()
{
    release();
}

void P_TransformBlock::adopt(P_BaseObject* const* objects, std::size_t count)
{
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        throw P_SceneException("A transform block cannot hold so many objects");
    }
    // An object's way down is only in use while world matrices are computed: meanwhile it tells who was met already.
    std::size_t met = 0;
    while (met < count && !(objects[met] && objects[met]->m_pWayDown == objects[met]))
    {
        if (objects[met])
        {
            objects[met]->m_pWayDown = objects[met];
        }
        ++met;
    }
    for (std::size_t i = 0; i < met; ++i)
    {
        if (objects[i])
        {
            objects[i]->m_pWayDown = nullptr;
        }
    }
    if (met < count)
    {
        throw P_SceneException("A transform block was given the same object twice");
    }

    if (count == 0)
    {
        release();
        return;
    }
    const Storage storage(count);
    release();
    m_pStorage = storage.m_pMemory;
    m_pLocalMatrices = storage.m_pLocal;
    m_pWorldMatrices = storage.m_pLocal + count;
    m_ppObjects = storage.m_ppObjects;
    m_piParents = storage.m_piParents;
    m_puiOutsideChildren = storage.m_puiOutsideChildren;
    m_pStates = storage.m_pStates;
    m_uiCount = static_cast<unsigned int>(count);
    takeIn(objects);
    changed();
}

/// Moves the objects' matrices here, then finds out who hangs under whom.
void P_TransformBlock::takeIn(P_BaseObject* const* objects) noexcept
{
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        P_BaseObject* object = objects[i];
        if (!object)
        {
            continue;
        }
        if (object->m_pBlock)
        {
            object->m_pBlock->release(*object);
        }
        m_ppObjects[i] = object;
        ++m_uiMemberCount;
        m_pLocalMatrices[i] = object->m_ownLocalMatrix;
        m_pWorldMatrices[i] = object->m_ownWorldMatrix;
        m_pStates[i] = object->m_ownState;
        object->m_pLocalMatrix = &m_pLocalMatrices[i];
        object->m_pWorldMatrix = &m_pWorldMatrices[i];
        object->m_pState = &m_pStates[i];
        object->m_pBlock = this;
        object->m_uiBlockIndex = i;
    }
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (!m_ppObjects[i])
        {
            continue;
        }
        const P_BaseObject* parent = m_ppObjects[i]->getParent();
        setParent(i, parent && parent->m_pBlock == this ? static_cast<int>(parent->m_uiBlockIndex) : PARENT_OUTSIDE);
        for (const P_BaseObject* child : m_ppObjects[i]->getChildren())
        {
            if (child->m_pBlock != this)
            {
                countOutsideChild(i, true);
            }
        }
    }
}

void P_TransformBlock::giveBack(P_BaseObject& object) noexcept
{
    const unsigned int i = object.m_uiBlockIndex;
    object.m_ownLocalMatrix = m_pLocalMatrices[i];
    object.m_ownWorldMatrix = m_pWorldMatrices[i];
    object.m_ownState = m_pStates[i];
    object.m_pLocalMatrix = &object.m_ownLocalMatrix;
    object.m_pWorldMatrix = &object.m_ownWorldMatrix;
    object.m_pState = &object.m_ownState;
    object.m_uiChangeCount = m_uiChangeCount;
    object.m_pBlock = nullptr;
    object.m_uiBlockIndex = 0;
    m_ppObjects[i] = nullptr;
    --m_uiMemberCount;
}

void P_TransformBlock::release() noexcept
{
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (m_ppObjects[i])
        {
            giveBack(*m_ppObjects[i]);
        }
    }
    S_Memory::release(m_pStorage, s_uiStorageAlignment);
    m_pStorage = nullptr;
    m_pLocalMatrices = nullptr;
    m_pWorldMatrices = nullptr;
    m_piParents = nullptr;
    m_pStates = nullptr;
    m_ppObjects = nullptr;
    m_puiOutsideChildren = nullptr;
    m_uiCount = 0;
    m_uiOutsideChildTotal = 0;
    m_uiOutOfOrder = 0;
    m_uiTops = 0;
}

void P_TransformBlock::release(P_BaseObject& object) noexcept
{
    if (object.m_pBlock != this)
    {
        return;
    }
    const unsigned int i = object.m_uiBlockIndex;
    const int parent = m_piParents[i];
    giveBack(object);
    if (parent >= 0)
    {
        countOutsideChild(static_cast<unsigned int>(parent), true);
    }
    for (const P_BaseObject* child : object.getChildren())
    {
        if (child->m_pBlock == this)
        {
            setParent(child->m_uiBlockIndex, PARENT_OUTSIDE);
        }
    }
    m_uiOutsideChildTotal -= m_puiOutsideChildren[i];
    m_puiOutsideChildren[i] = 0;
    setParent(i, PARENT_NONE);
    m_pStates[i] = STATE_VALID;
    changed();
}

void P_TransformBlock::setParent(unsigned int index, int parent) noexcept
{
    const int own = static_cast<int>(index);
    if (m_piParents[index] > own)
    {
        --m_uiOutOfOrder;
    }
    if (parent > own)
    {
        ++m_uiOutOfOrder;
    }
    m_uiTops -= m_piParents[index] == PARENT_OUTSIDE ? 1u : 0u;
    m_uiTops += parent == PARENT_OUTSIDE ? 1u : 0u;
    m_piParents[index] = parent;
}

void P_TransformBlock::countOutsideChild(unsigned int index, bool comes) noexcept
{
    const unsigned int step = comes ? 1u : ~0u;
    m_puiOutsideChildren[index] += step;
    m_uiOutsideChildTotal += step;
}

void P_TransformBlock::childCame(const P_BaseObject& parent, P_BaseObject& child) noexcept
{
    P_TransformBlock* block = parent.m_pBlock;
    if (!block)
    {
        return;
    }
    if (child.m_pBlock == block)
    {
        block->setParent(child.m_uiBlockIndex, static_cast<int>(parent.m_uiBlockIndex));
    }
    else
    {
        block->countOutsideChild(parent.m_uiBlockIndex, true);
    }
}

void P_TransformBlock::childLeft(const P_BaseObject& parent, P_BaseObject& child) noexcept
{
    P_TransformBlock* block = parent.m_pBlock;
    if (!block)
    {
        return;
    }
    if (child.m_pBlock == block)
    {
        block->setParent(child.m_uiBlockIndex, PARENT_OUTSIDE);
    }
    else
    {
        block->countOutsideChild(parent.m_uiBlockIndex, false);
    }
}

/// Marks a member whose parent is outside and everything below it in one pass over the block, without touching an
/// object. Returns false and does nothing where that cannot be, or would not pay: the member's parent is inside, the
/// order is not parents first, something outside hangs below, or there are many such members.
bool P_TransformBlock::markBelowTop(unsigned int index, unsigned long long change) noexcept
{
    if (m_piParents[index] != PARENT_OUTSIDE || m_uiOutOfOrder != 0 || m_uiOutsideChildTotal != 0 ||
        m_uiTops > s_uiFewTops)
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
        if (parent >= 0 && (m_pStates[parent] & STATE_WORLD_OUT_OF_DATE))
        {
            m_pStates[i] = STATE_OUT_OF_DATE;
        }
    }
}

void P_TransformBlock::changed() noexcept
{
    m_uiChangeCount = ++P_BaseObject::sm_uiChanges;
}

void P_TransformBlock::prefetch() const noexcept
{
    const std::size_t bytes = std::min<std::size_t>(m_uiCount, s_uiMatricesAhead) * sizeof(Matrix);
    for (std::size_t offset = 0; offset < bytes; offset += S_CACHE_LINE)
    {
        S_prefetchForWriting(m_pLocalMatrices, offset);
    }
    S_prefetchForWriting(m_ppObjects);
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
    if (m_ppObjects[0])
    {
        S_prefetch(&m_ppObjects[0]->m_pContainer);
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
    if (m_ppObjects[index])
    {
        m_ppObjects[index]->invalidateMatrices();
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
        if (m_puiOutsideChildren[i] == 0 || !(m_pStates[i] & STATE_WORLD_OUT_OF_DATE))
        {
            continue;
        }
        for (P_BaseObject* child : m_ppObjects[i]->getChildren())
        {
            if (child->m_pBlock != this)
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
        if (!(m_pStates[i] & STATE_WORLD_OUT_OF_DATE))
        {
            continue;
        }
        const int parent = m_piParents[i];
        S_prefetch(m_piParents + i, S_CACHE_LINE);
        S_prefetchForWriting(m_pWorldMatrices + i, s_uiMatricesAhead * sizeof(Matrix));
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
            m_pStates[i] = STATE_INVERSE_OUT_OF_DATE;
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
    const P_BaseObject* const parent = m_ppObjects[index]->getParent();
    if (parent && parent->isObjectToWorldMatrixValid())
    {
        M_multiply(m_pLocalMatrices[index], *parent->m_pWorldMatrix, m_pWorldMatrices[index]);
        m_pStates[index] = STATE_INVERSE_OUT_OF_DATE;
    }
    else
    {
        m_ppObjects[index]->calculateObjectToWorldMatrix();
    }
}

void P_TransformBlock::updateOutOfOrder() noexcept
{
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (m_ppObjects[i])
        {
            m_ppObjects[i]->calculateObjectToWorldMatrix();
        }
    }
}
