#pragma once

#include <platform/export.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/buffer.h>
#include <platform/scene/vertex_format.h>

#include <cstddef>

/// The vertices of a triangle mesh, one row of floats each as P_VertexFormat lays it out.
///
/// Positions, normals and texture coordinates start as 0, colours as opaque white (255, 255, 255, 255). Writing what
/// the format does not carry throws P_SceneException.
class TW2_PLATFORM_API P_VertexBuffer : public P_Buffer
{
public:
    /// What each vertex carries.
    [[nodiscard]] const P_VertexFormat& getFormat() const noexcept { return m_format; }

    /// @name Writing vertex `vertex`
    /// @{

    /// In the mesh's own space.
    void setPosition(unsigned int vertex, const M_Vector3Template<float>& position);
    /// Of length 1, for light to be right.
    void setNormal(unsigned int vertex, const M_Vector3Template<float>& normal);
    /// U from left to right, v from top to bottom, 0 to 1 across the picture.
    void setTextureCoordinate(unsigned int vertex, unsigned int layer, float u, float v);
    /// Components 0 to 255.
    void setColor(unsigned int vertex, float red, float green, float blue, float alpha);
    /// 0 (transparent) to 255 (opaque).
    void setColorAlpha(unsigned int vertex, float alpha);
    /// @}

    /// @name Reading vertex `vertex`, below the capacity; what the format does not carry reads as its start value
    /// @{

    /// In the mesh's own space.
    [[nodiscard]] M_Vector3Template<float> getPosition(unsigned int vertex) const noexcept;
    /// As it was set.
    [[nodiscard]] M_Vector3Template<float> getNormal(unsigned int vertex) const noexcept;
    /// Texture coordinate from left to right.
    [[nodiscard]] float getTextureU(unsigned int vertex, unsigned int layer) const noexcept;
    /// Texture coordinate from top to bottom.
    [[nodiscard]] float getTextureV(unsigned int vertex, unsigned int layer) const noexcept;
    /// 0 to 255.
    [[nodiscard]] float getColorAlpha(unsigned int vertex) const noexcept;
    /// All vertices: `getFormat().getStride()` floats each.
    [[nodiscard]] const float* getData() const noexcept { return m_vecData.data(); }
    /// @}

private:
    friend class P_TriangleMeshBase;

    void allocate(const P_VertexFormat& format, unsigned int vertices);
    [[nodiscard]] float* access(unsigned int vertex, bool carried, unsigned int offset);
    [[nodiscard]] const float* at(unsigned int vertex, unsigned int offset) const noexcept
    {
        return m_vecData.data() + std::size_t{vertex} * m_format.getStride() + offset;
    }

    P_VertexFormat m_format;
    S_Vector<float> m_vecData;
};
