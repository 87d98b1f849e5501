#pragma once

#include <platform/export.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/index_buffer.h>
#include <platform/scene/vertex_buffer.h>

/// Geometry of a primitive: a vertex buffer and an index buffer, shared by reference count between the objects that
/// show it. The last holder deletes it.
class TW2_PLATFORM_API P_TriangleMeshBase : public S_Allocated
{
public:
    P_TriangleMeshBase& operator=(const P_TriangleMeshBase&) = delete;

    /// @name Sharing
    /// @{

    /// Adds a holder.
    void addReference() noexcept { ++m_iReferenceCount; }
    /// Takes one holder away; the last one deletes the geometry.
    void releaseReference() noexcept;
    [[nodiscard]] int getReferenceCount() const noexcept { return m_iReferenceCount; }
    /// @}

    /// @name Writing
    /// @{

    /// Opens the buffers for writing. Locks nest.
    void lock() noexcept;
    /// Closes what `lock` opened; after the last one the geometry counts as changed. Ignored when nothing is locked.
    void unlock() noexcept;
    [[nodiscard]] bool isLocked() const noexcept { return m_iLocks > 0; }
    /// Grows each time the geometry is allocated or its last lock is closed: a renderer that kept a copy compares it.
    [[nodiscard]] unsigned int getRevision() const noexcept { return m_uiRevision; }
    /// @}

    /// @name Buffers
    /// @{
    [[nodiscard]] P_VertexBuffer& getVertexBuffer() noexcept { return m_vertexBuffer; }
    [[nodiscard]] const P_VertexBuffer& getVertexBuffer() const noexcept { return m_vertexBuffer; }
    [[nodiscard]] P_IndexBuffer& getIndexBuffer() noexcept { return m_indexBuffer; }
    [[nodiscard]] const P_IndexBuffer& getIndexBuffer() const noexcept { return m_indexBuffer; }
    [[nodiscard]] const P_VertexFormat& getFormat() const noexcept { return m_format; }
    /// Whether the buffers were allocated to be rewritten often.
    [[nodiscard]] bool isDynamic() const noexcept { return m_bDynamic; }
    /// @}

    /// @name Drawn range of triangles
    /// @{

    /// Draws `count` triangles from `first` on, cut at the used count; a count of 0 draws all from `first` on.
    void setDrawnRange(unsigned int first, unsigned int count) noexcept;
    [[nodiscard]] unsigned int getFirstDrawn() const noexcept;
    [[nodiscard]] unsigned int getDrawnCount() const noexcept;
    /// @}

protected:
    explicit P_TriangleMeshBase(const P_VertexFormat& format) noexcept : m_format(format) {}
    /// A copy with one holder that is not locked.
    P_TriangleMeshBase(const P_TriangleMeshBase& other);
    virtual ~P_TriangleMeshBase();

    /// Drops the content and the drawn range; when memory runs out all is as before.
    void allocateBuffers(unsigned int triangles, unsigned int vertices, bool dynamic);
    /// Throws P_SceneException unless the mesh is locked.
    void checkLocked() const;

private:
    P_VertexFormat m_format;
    P_VertexBuffer m_vertexBuffer;
    P_IndexBuffer m_indexBuffer;
    unsigned int m_uiFirstDrawn = 0;
    unsigned int m_uiDrawnCount = 0;
    unsigned int m_uiRevision = 0;
    int m_iLocks = 0;
    int m_iReferenceCount = 1;
    bool m_bDynamic = false;
};
