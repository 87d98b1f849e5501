// Objects that a frame has nothing to do with, and how many children of a container are not of that kind.

#include <platform/scene/base_object.h>
#include <platform/scene/virtual_object.h>

#include <typeinfo>

/// Whether a frame calls nothing of the object. A derived class may have operations of its own that a frame calls. Its
/// objects become members of blocks only when they are complete, so that their type is known here. Types are told apart
/// by where their descriptions are: a class of a host that is built without RTTI has none to look into.
bool P_BaseObject::isPlain() const noexcept
{
    return m_bMember && m_eKind == Kind::Mesh && !(m_uiEngineFlags & (FLAG_BOUNDING_SPHERE | FLAG_BOUNDING_BOX)) &&
           !m_bVisualization && !m_bVertexNormalVisualization && &typeid(*this) == &typeid(P_VirtualObject);
}

/// Of a plain object, which is a mesh: whether there is something to draw.
bool P_BaseObject::isShown() const noexcept
{
    return m_bEnabled && !static_cast<const P_VirtualObject*>(this)->isTakenForEmpty();
}

void P_BaseObject::setIdle(bool idle) noexcept
{
    if (idle == m_bIdle)
    {
        return;
    }
    m_bInView = isInView();
    m_bIdle = idle;
    if (m_pContainer && m_uiBusyChildren == 0)
    {
        countBusyChild(m_pContainer, !idle);
    }
}

/// An idle object has no volume of its own, so it is out of view only for what is above it.
bool P_BaseObject::isHiddenFromAbove() const noexcept
{
    for (const P_BaseObject* object = getParent(); object; object = object->getParent())
    {
        if (object->hasEngineFlag(FLAG_CULL_SUBTREE) && !object->m_bIdle && !object->m_bInView)
        {
            return true;
        }
    }
    return false;
}

/// Goes up as long as it changes whether a frame has something to do at or below a container.
void P_BaseObject::countBusyChild(P_ObjectContainer* container, bool comes) noexcept
{
    while (container)
    {
        const unsigned int before = container->m_uiBusyChildren;
        container->m_uiBusyChildren = comes ? before + 1 : before - 1;
        if (container->m_eKind == Kind::Scene)
        {
            return;
        }
        const auto& object = static_cast<const P_BaseObject&>(*container);
        if (!object.m_bIdle || before != (comes ? 0U : 1U))
        {
            return;
        }
        container = object.m_pContainer;
    }
}
