#pragma once

#include <platform/export.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/scene/index_buffer.h>
#include <platform/scene/vertex_buffer.h>

#include <atomic>

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
    /// Primitives and others that hold the geometry.
    [[nodiscard]] int getReferenceCount() const noexcept { return m_iReferenceCount; }
    /// @}

    /// @name Writing
    /// @{

    /// Opens the buffers for writing. Locks nest.
    void lock() noexcept;
    /// Closes what `lock` opened; after the last one the geometry counts as changed. Ignored when nothing is locked.
    void unlock() noexcept;
    /// Whether a `lock` is open.
    [[nodiscard]] bool isLocked() const noexcept { return m_iLocks > 0; }
    /// Grows each time the geometry is allocated or its last lock is closed: a renderer that kept a copy compares it.
    [[nodiscard]] unsigned int getRevision() const noexcept { return m_uiRevision; }
    /// @}

    /// @name Buffers
    /// @{

    /// The vertices; writing needs a lock.
    [[nodiscard]] P_VertexBuffer& getVertexBuffer() noexcept { return m_vertexBuffer; }
    [[nodiscard]] const P_VertexBuffer& getVertexBuffer() const noexcept { return m_vertexBuffer; }
    /// The triangles; writing needs a lock.
    [[nodiscard]] P_IndexBuffer& getIndexBuffer() noexcept { return m_indexBuffer; }
    [[nodiscard]] const P_IndexBuffer& getIndexBuffer() const noexcept { return m_indexBuffer; }
    /// What each vertex carries.
    [[nodiscard]] const P_VertexFormat& getFormat() const noexcept { return m_format; }
    /// @}

    /// @name Room
    /// What shows empty geometry has nothing to show, until the geometry is given room.
    /// @{

    /// Whether there is no room for a vertex. Remembers that somebody relies on it when that is so.
    [[nodiscard]] bool isTakenForEmpty() const noexcept;
    /// Grows whenever geometry that was taken for empty gets room, or takes the place of nothing in a primitive.
    [[nodiscard]] static unsigned int getFillCount() noexcept { return sm_uiFills.load(std::memory_order_relaxed); }
    /// A geometry that was empty has got room.
    static void countFill() noexcept { sm_uiFills.fetch_add(1, std::memory_order_relaxed); }
    /// @}

    /// @name Drawn range of triangles
    /// @{

    /// Draws `count` triangles from `first` on, cut at the used count; a count of 0 draws all from `first` on.
    void setDrawnRange(unsigned int first, unsigned int count) noexcept;
    /// The triangle that drawing begins with.
    [[nodiscard]] unsigned int getFirstDrawn() const noexcept;
    /// Triangles that are drawn, cut at those in use.
    [[nodiscard]] unsigned int getDrawnCount() const noexcept;
    /// @}

protected:
    /// Empty geometry with one holder.
    explicit P_TriangleMeshBase(const P_VertexFormat& format) noexcept : m_format(format) {}
    /// A copy with one holder that is not locked.
    P_TriangleMeshBase(const P_TriangleMeshBase& other);
    virtual ~P_TriangleMeshBase();

    /// Called when the vertices are as they will be read: after an allocation and after the last lock is closed.
    virtual void verticesChanged() noexcept = 0;
    /// Drops the content and the drawn range; when memory runs out all is as before.
    void allocateBuffers(unsigned int triangles, unsigned int vertices);
    /// Throws P_SceneException unless the mesh is locked.
    void checkLocked() const;

private:
    static std::atomic<unsigned int> sm_uiFills;

    P_VertexFormat m_format;
    P_VertexBuffer m_vertexBuffer;
    P_IndexBuffer m_indexBuffer;
    unsigned int m_uiFirstDrawn = 0;
    unsigned int m_uiDrawnCount = 0;
    unsigned int m_uiRevision = 0;
    int m_iLocks = 0;
    S_Counter<int> m_iReferenceCount{1};
    /// Objects that share the geometry may find out at the same time.
    mutable std::atomic<bool> m_bTakenForEmpty = false;
};
