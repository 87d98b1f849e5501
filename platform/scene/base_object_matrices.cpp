// World matrices of scene objects: marking as out of date and computing on demand.

#include <platform/math/matrix4x3_product.h>
#include <platform/runtime/counter.h>
#include <platform/scene/base_object.h>
#include <platform/scene/subtree.h>

#include <cstddef>

/// Threads take numbers in portions, so that they share nothing while they mark.
unsigned long long P_BaseObject::takeChangeNumber() noexcept
{
    constexpr unsigned long long portion = 0x10000;
    static constinit S_Counter<unsigned long long> s_uTaken;
    thread_local unsigned long long s_uLast = 0;
    thread_local unsigned long long s_uEnd = 0;
    if (s_uLast == s_uEnd)
    {
        s_uEnd = s_uTaken += portion;
        s_uLast = s_uEnd - portion;
    }
    return ++s_uLast;
}

/// Marks this object, or, through its block, it and everything below. Returns whether what hangs below is still to be
/// marked.
bool P_BaseObject::mark(unsigned long long change) noexcept
{
    P_TransformBlock* const block = getTransformBlock();
    if (block && getFirstChild() && block->markBelowTop(m_uiPlace, change))
    {
        return false;
    }
    setState(P_TransformBlock::STATE_OUT_OF_DATE);
    (block ? block->m_uiChangeCount : m_pStorage->m_uiChangeCount) = change;
    return true;
}

void P_BaseObject::markSubtree() noexcept
{
    const unsigned long long change = takeChangeNumber();
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
        M_multiply(getMatrix(), parent->m_pStorage->m_pWorld[parent->m_uiPlace], m_pStorage->m_pWorld[m_uiPlace]);
    }
    else
    {
        m_pStorage->m_pWorld[m_uiPlace] = getMatrix();
    }
    setState(P_TransformBlock::STATE_VALID);
}

void P_BaseObject::calculateObjectToWorldMatrix() const noexcept
{
    if (isObjectToWorldMatrixValid())
    {
        return;
    }
    // The uppermost objects of a long chain come first, as many at a time as the list has room for.
    constexpr std::size_t room = 256;
    const P_BaseObject* chain[room];
    do
    {
        std::size_t length = 0;
        for (const P_BaseObject* object = this; object && !object->isObjectToWorldMatrixValid();
             object = object->getParent())
        {
            chain[length++ % room] = object;
        }
        for (const std::size_t below = length > room ? length - room : 0; length > below; --length)
        {
            chain[(length - 1) % room]->computeWorldMatrix();
        }
    } while (!isObjectToWorldMatrixValid());
}
