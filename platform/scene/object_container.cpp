#include <platform/scene/base_object.h>
#include <platform/scene/object_container.h>

P_ObjectContainer::ChildIterator& P_ObjectContainer::ChildIterator::operator++() noexcept
{
    m_pChild = m_pChild->getNextSibling();
    return *this;
}

P_ObjectContainer::~P_ObjectContainer() = default;

void P_ObjectContainer::detachChildren() noexcept
{
    while (m_pFirstChild)
    {
        m_pFirstChild->leaveContainer();
    }
}
