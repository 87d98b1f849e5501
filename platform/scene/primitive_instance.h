#pragma once

#include <platform/export.h>
#include <platform/math/matrix4.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/triangle_mesh.h>

class P_Material;

/// How one object shows one of its primitives: with which geometry, which material, which texture matrices, or not at
/// all.
///
/// Copies share the geometry (by its reference count) and the material (not owned).
class TW2_PLATFORM_API P_PrimitiveInstance
{
public:
    P_PrimitiveInstance() noexcept = default;
    /// Shares the geometry; material, texture matrices and visibility are copied.
    P_PrimitiveInstance(const P_PrimitiveInstance& other);
    /// Takes everything over.
    P_PrimitiveInstance(P_PrimitiveInstance&& other) noexcept;
    P_PrimitiveInstance& operator=(const P_PrimitiveInstance&) = delete;
    ~P_PrimitiveInstance();

    /// @name Material
    /// @{

    /// Not owned; it must live as long as the primitive shows it. Null: none.
    void setMaterial(P_Material* material) noexcept { m_pMaterial = material; }
    /// Null when none is set.
    [[nodiscard]] P_Material* getMaterial() const noexcept { return m_pMaterial; }
    /// @}

    /// @name Texture matrices by texture coordinate layer
    /// @{

    /// Replaces the one that is set for the layer. Throws S_MemoryException_Allocation.
    void setTextureMatrix(int layer, const M_Matrix4Template<float>& matrix);
    /// Null when none is set for the layer.
    [[nodiscard]] const M_Matrix4Template<float>* getTextureMatrix(int layer) const noexcept;
    /// @}

    /// @name Visibility
    /// @{

    /// Visible until switched off; a mesh that is not enabled draws none of its primitives.
    void setVisible(bool visible) noexcept { m_bVisible = visible; }
    [[nodiscard]] bool isVisible() const noexcept { return m_bVisible; }
    /// @}

    /// @name Geometry
    /// @{

    /// Null while none is set.
    [[nodiscard]] P_TriangleMesh* getGeometry() const noexcept { return m_pGeometry; }
    /// Takes over the caller's hold on `geometry` and gives up the hold on the present one.
    void setGeometry(P_TriangleMesh* geometry) noexcept;
    /// @}

private:
    struct TextureMatrix
    {
        int m_iLayer;
        M_Matrix4Template<float> m_matrix;
    };

    P_TriangleMesh* m_pGeometry = nullptr;
    P_Material* m_pMaterial = nullptr;
    bool m_bVisible = true;
    S_Vector<TextureMatrix> m_vecTextureMatrices;
};
