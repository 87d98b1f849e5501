#include <platform/scene/base_object.h>
#include <platform/scene/object_container.h>

P_ObjectContainer::ChildIterator& P_ObjectContainer::ChildIterator::operator++() noexcept
{
    m_pChild = m_pChild->getNextSibling();
    return *this;
}

P_ObjectContainer::~P_ObjectContainer() = default;

P_BaseObject* P_ObjectContainer::getLastChild() const noexcept
{
    return m_pFirstChild ? m_pFirstChild->m_pPreviousSibling : nullptr;
}

unsigned int P_ObjectContainer::getChildCount() const noexcept
{
    const Children children = getChildren();
    return static_cast<unsigned int>(std::distance(children.begin(), children.end()));
}

void P_ObjectContainer::detachChildren() noexcept
{
    while (m_pFirstChild)
    {
        m_pFirstChild->leaveContainer();
    }
}
