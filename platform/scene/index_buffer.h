#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/buffer.h>

#include <cstddef>

/// The triangles of a triangle mesh, three vertex indices each; counts are triangles.
///
/// Seen from its front, a triangle's corners run clockwise in a left-handed coordinate system.
class TW2_PLATFORM_API P_IndexBuffer : public P_Buffer
{
public:
    /// Writes a triangle. An index for which the mesh has no vertex throws P_SceneException.
    void setTriangle(unsigned int triangle, unsigned int a, unsigned int b, unsigned int c);
    /// Corner 0, 1 or 2 of a triangle below the capacity.
    [[nodiscard]] unsigned int getIndex(unsigned int triangle, unsigned int corner) const noexcept
    {
        return m_vecIndices[std::size_t{3} * triangle + corner];
    }
    /// All indices, three per triangle.
    [[nodiscard]] const unsigned int* getData() const noexcept { return m_vecIndices.data(); }

private:
    friend class P_TriangleMeshBase;

    void allocate(unsigned int triangles, unsigned int vertices);

    S_Vector<unsigned int> m_vecIndices;
    unsigned int m_uiVertexCapacity = 0;
};
