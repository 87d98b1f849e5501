#include <platform/scene/scene_exception.h>
#include <platform/scene/triangle_mesh_base.h>

#include <algorithm>
#include <utility>

std::atomic<unsigned int> P_TriangleMeshBase::sm_uiFills = 0;

P_TriangleMeshBase::P_TriangleMeshBase(const P_TriangleMeshBase& other)
    : m_format(other.m_format),
      m_vertexBuffer(other.m_vertexBuffer),
      m_indexBuffer(other.m_indexBuffer),
      m_uiFirstDrawn(other.m_uiFirstDrawn),
      m_uiDrawnCount(other.m_uiDrawnCount)
{
    m_vertexBuffer.m_bLocked = false;
    m_indexBuffer.m_bLocked = false;
}

P_TriangleMeshBase::~P_TriangleMeshBase() = default;

void P_TriangleMeshBase::releaseReference() noexcept
{
    if (--m_iReferenceCount == 0)
    {
        delete this;
    }
}

bool P_TriangleMeshBase::isTakenForEmpty() const noexcept
{
    const bool empty = m_vertexBuffer.getCapacity() == 0;
    if (empty)
    {
        m_bTakenForEmpty.store(true, std::memory_order_relaxed);
    }
    return empty;
}

void P_TriangleMeshBase::lock() noexcept
{
    ++m_iLocks;
    m_vertexBuffer.m_bLocked = true;
    m_indexBuffer.m_bLocked = true;
}

void P_TriangleMeshBase::unlock() noexcept
{
    if (m_iLocks == 0 || --m_iLocks > 0)
    {
        return;
    }
    m_vertexBuffer.m_bLocked = false;
    m_indexBuffer.m_bLocked = false;
    ++m_uiRevision;
    verticesChanged();
}

void P_TriangleMeshBase::setDrawnRange(unsigned int first, unsigned int count) noexcept
{
    m_uiFirstDrawn = first;
    m_uiDrawnCount = count;
}

unsigned int P_TriangleMeshBase::getFirstDrawn() const noexcept
{
    return std::min(m_uiFirstDrawn, m_indexBuffer.getUsedCount());
}

unsigned int P_TriangleMeshBase::getDrawnCount() const noexcept
{
    const unsigned int rest = m_indexBuffer.getUsedCount() - getFirstDrawn();
    return m_uiDrawnCount == 0 ? rest : std::min(m_uiDrawnCount, rest);
}

void P_TriangleMeshBase::allocateBuffers(unsigned int triangles, unsigned int vertices)
{
    P_VertexBuffer vertexBuffer;
    vertexBuffer.allocate(m_format, vertices);
    P_IndexBuffer indexBuffer;
    indexBuffer.allocate(triangles, vertices);

    m_vertexBuffer = std::move(vertexBuffer);
    m_indexBuffer = std::move(indexBuffer);
    m_vertexBuffer.m_bLocked = isLocked();
    m_indexBuffer.m_bLocked = isLocked();
    m_uiFirstDrawn = 0;
    m_uiDrawnCount = 0;
    ++m_uiRevision;
    if (vertices > 0 && m_bTakenForEmpty.exchange(false, std::memory_order_relaxed))
    {
        countFill();
    }
}

void P_TriangleMeshBase::checkLocked() const
{
    if (!isLocked())
    {
        throw P_SceneException("Geometry was written while it is not locked");
    }
}
