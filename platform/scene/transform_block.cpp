#include <platform/scene/base_object.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/transform_storage.h>

#include <algorithm>
#include <limits>

namespace
{
void checkCount(std::size_t count)
{
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        throw P_SceneException("A transform block cannot hold so many objects");
    }
}
}  // namespace

P_TransformBlock::~P_TransformBlock()
{
    release();
}

void P_TransformBlock::adopt(P_BaseObject* const* objects, std::size_t count)
{
    checkCount(count);
    std::size_t met = 0;
    while (met < count && !(objects[met] && objects[met]->m_bMet))
    {
        if (objects[met])
        {
            objects[met]->m_bMet = true;
        }
        ++met;
    }
    for (std::size_t i = 0; i < met; ++i)
    {
        if (objects[i])
        {
            objects[i]->m_bMet = false;
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
    P_TransformStorage* const storage = P_TransformStorage::create(count, this);
    release();
    useStorage(storage);
    m_uiCount = static_cast<unsigned int>(count);
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (objects[i])
        {
            takeIn(*objects[i], i);
        }
    }
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (m_ppObjects[i])
        {
            join(i);
        }
    }
    changed();
}

void P_TransformBlock::append(P_BaseObject& object)
{
    if (object.getTransformBlock() == this)
    {
        throw P_SceneException("A transform block was given the same object twice");
    }
    makeRoom(object);
    const unsigned int index = m_uiCount++;
    takeIn(object, index);
    join(index);
    if (m_piParents[index] >= 0)
    {
        countOutsideChild(static_cast<unsigned int>(m_piParents[index]), false);  // it was one until now
    }
    for (const P_BaseObject* child : object.getChildren())
    {
        if (child->getTransformBlock() == this)
        {
            setParent(child->m_uiPlace, static_cast<int>(index));
        }
    }
    changed();
}

void P_TransformBlock::takeNew(P_BaseObject& object)
{
    makeRoom(object);
    const unsigned int index = m_uiCount++;
    setObject(index, &object);
    ++m_uiMemberCount;
    m_pStates[index] = STATE_OUT_OF_DATE;
    object.m_pStorage = m_pStorage;
    object.m_uiPlace = index;
    object.m_bMember = true;
    setParent(index, PARENT_OUTSIDE);
    changed();
}

/// For `object` at the next index. One that does not lie in the row needs pointers.
void P_TransformBlock::makeRoom(const P_BaseObject& object)
{
    constexpr std::size_t least = 4;
    const std::size_t capacity = m_pStorage ? m_pStorage->m_uiCapacity : 0;
    if (m_uiCount == capacity)
    {
        reserve(std::max(least, 2 * capacity));
    }
    else if (!m_ppObjects && getRowPlace(m_uiCount) != &object)
    {
        move(capacity);
    }
}

void P_TransformBlock::reserve(std::size_t count)
{
    checkCount(count);
    if (!m_pStorage || count > m_pStorage->m_uiCapacity)
    {
        move(count);
    }
}

void P_TransformBlock::reserveRow(void* first, std::size_t distance, std::size_t count)
{
    if (m_uiCount != 0)
    {
        throw P_SceneException("Only an empty transform block can be told where its objects will be");
    }
    checkCount(count);
    useStorage(P_TransformStorage::create(count, this, P_TransformStorage::Pointers::No));
    m_pRow = static_cast<unsigned char*>(first);
    m_uiRowDistance = distance;
}

void P_TransformBlock::shrinkToFit()
{
    if (m_pStorage && m_uiCount > 0 && m_uiCount < m_pStorage->m_uiCapacity)
    {
        move(m_uiCount);
    }
}

/// Moves the members to a storage of another size.
void P_TransformBlock::move(std::size_t capacity)
{
    P_TransformStorage* const storage = P_TransformStorage::create(capacity, this);
    std::copy_n(m_pLocalMatrices, m_uiCount, storage->m_pLocal);
    std::copy_n(m_pWorldMatrices, m_uiCount, storage->m_pWorld);
    std::copy_n(m_piParents, m_uiCount, storage->m_piParents);
    std::copy_n(m_puiOutsideChildren, m_uiCount, storage->getOutsideChildren());
    std::copy_n(m_pStates, m_uiCount, storage->m_pStates);
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        storage->m_ppObjects[i] = getObject(i);
        if (storage->m_ppObjects[i])
        {
            storage->m_ppObjects[i]->m_pStorage = storage;
        }
    }
    useStorage(storage);
}

/// Lets go of the present storage; objects that have left the block may still use it.
void P_TransformBlock::useStorage(P_TransformStorage* storage) noexcept
{
    if (m_pStorage)
    {
        m_pStorage->m_pBlock = nullptr;
        P_TransformStorage::release(m_pStorage);
    }
    m_pStorage = storage;
    m_pLocalMatrices = storage ? storage->m_pLocal : nullptr;
    m_pWorldMatrices = storage ? storage->m_pWorld : nullptr;
    m_ppObjects = storage ? storage->m_ppObjects : nullptr;
    m_piParents = storage ? storage->m_piParents : nullptr;
    m_puiOutsideChildren = storage ? storage->getOutsideChildren() : nullptr;
    m_pStates = storage ? storage->m_pStates : nullptr;
}

void P_TransformBlock::setObject(unsigned int index, P_BaseObject* object) noexcept
{
    if (m_ppObjects)
    {
        m_ppObjects[index] = object;
    }
}

/// Moves the object's matrices here; who hangs under whom is found out when all are here.
void P_TransformBlock::takeIn(P_BaseObject& object, unsigned int index) noexcept
{
    if (P_TransformBlock* const before = object.getTransformBlock())
    {
        before->release(object);
    }
    setObject(index, &object);
    ++m_uiMemberCount;
    m_pLocalMatrices[index] = object.getMatrix();
    m_pWorldMatrices[index] = object.m_pStorage->m_pWorld[object.m_uiPlace];
    m_pStates[index] = object.getState();
    P_TransformStorage::release(object.m_pStorage);
    object.m_pStorage = m_pStorage;
    object.m_uiPlace = index;
    object.m_bMember = true;
    object.updateIdle();
}

/// Finds out whom a new member hangs under, and what hangs below it.
void P_TransformBlock::join(unsigned int index) noexcept
{
    const P_BaseObject& object = *locate(index);
    const P_BaseObject* const parent = object.getParent();
    const bool inside = parent && parent->getTransformBlock() == this;
    setParent(index, inside ? static_cast<int>(parent->m_uiPlace) : PARENT_OUTSIDE);
    for (unsigned int left = countOutsideChildren(object); left > 0; --left)
    {
        countOutsideChild(index, true);
    }
}

/// The object keeps its matrices where they are.
void P_TransformBlock::letGo(P_BaseObject& object) noexcept
{
    const unsigned int i = object.m_uiPlace;
    object.m_bMember = false;
    object.setState(m_pStates[i]);
    ++m_pStorage->m_iHolders;
    m_pStorage->m_uiChangeCount = m_uiChangeCount;
    object.updateIdle();
    setObject(i, nullptr);
    --m_uiMemberCount;
}

void P_TransformBlock::release() noexcept
{
    for (unsigned int i = 0; i < m_uiCount; ++i)
    {
        if (P_BaseObject* const object = getObject(i))
        {
            letGo(*object);
        }
    }
    useStorage(nullptr);
    m_uiCount = 0;
    m_uiOutsideChildTotal = 0;
    m_uiOutOfOrder = 0;
    m_uiTops = 0;
}

void P_TransformBlock::release(P_BaseObject& object) noexcept
{
    if (object.getTransformBlock() != this)
    {
        return;
    }
    const unsigned int i = object.m_uiPlace;
    const int parent = m_piParents[i];
    const unsigned int outsideChildren = countOutsideChildren(object);
    letGo(object);
    if (parent >= 0)
    {
        countOutsideChild(static_cast<unsigned int>(parent), true);
    }
    for (const P_BaseObject* child : object.getChildren())
    {
        if (child->getTransformBlock() == this)
        {
            setParent(child->m_uiPlace, PARENT_OUTSIDE);
        }
    }
    m_uiOutsideChildTotal -= outsideChildren;
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
    m_uiTops -= m_piParents[index] == PARENT_OUTSIDE ? 1U : 0U;
    m_uiTops += parent == PARENT_OUTSIDE ? 1U : 0U;
    m_piParents[index] = parent;
}

void P_TransformBlock::countOutsideChild(unsigned int index, bool comes) noexcept
{
    const unsigned int step = comes ? 1U : ~0U;
    m_uiOutsideChildTotal += step;
    unsigned char& counted = m_puiOutsideChildren[index];
    if (counted != std::numeric_limits<unsigned char>::max())
    {
        counted = static_cast<unsigned char>(counted + step);
    }
}

unsigned int P_TransformBlock::countOutsideChildren(const P_BaseObject& object) const noexcept
{
    const auto children = object.getChildren();
    return static_cast<unsigned int>(std::count_if(children.begin(), children.end(),
                                                   [this](const P_BaseObject* child)
                                                   { return child->getTransformBlock() != this; }));
}

void P_TransformBlock::childCame(const P_BaseObject& parent, P_BaseObject& child) noexcept
{
    P_TransformBlock* const block = parent.getTransformBlock();
    if (!block)
    {
        return;
    }
    if (child.getTransformBlock() == block)
    {
        block->setParent(child.m_uiPlace, static_cast<int>(parent.m_uiPlace));
    }
    else
    {
        block->countOutsideChild(parent.m_uiPlace, true);
    }
}

void P_TransformBlock::childLeft(const P_BaseObject& parent, P_BaseObject& child) noexcept
{
    P_TransformBlock* const block = parent.getTransformBlock();
    if (!block)
    {
        return;
    }
    if (child.getTransformBlock() == block)
    {
        block->setParent(child.m_uiPlace, PARENT_OUTSIDE);
    }
    else
    {
        block->countOutsideChild(parent.m_uiPlace, false);
    }
}
