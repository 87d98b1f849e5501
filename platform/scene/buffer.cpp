#include <platform/runtime/str.h>
#include <platform/scene/buffer.h>
#include <platform/scene/scene_exception.h>

P_Buffer::~P_Buffer() = default;

void P_Buffer::setUsedCount(unsigned int count)
{
    if (count > m_uiCapacity)
    {
        throw P_SceneException(S_STR("A buffer with room for %u elements cannot use %u", m_uiCapacity, count));
    }
    m_uiUsed = count;
}

void P_Buffer::setCapacity(unsigned int capacity) noexcept
{
    m_uiCapacity = capacity;
    m_uiUsed = capacity;
}

void P_Buffer::throwBadWrite(unsigned int index) const
{
    if (!m_bLocked)
    {
        throw P_SceneException(S_STR("Element %u was written while its mesh is not locked", index));
    }
    throw P_SceneException(S_STR("Element %u was written into a buffer that uses %u", index, m_uiUsed));
}
