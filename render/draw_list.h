#pragma once

#include "render/gl_handle.h"
#include "render/matrix_texture.h"
#include "render/view.h"

#include <cstddef>
#include <vector>

class P_Camera;
class P_Material;
class P_PrimitiveInstance;
class P_Scene;
class P_TriangleMesh;

namespace TW2::render
{
/// What a picture draws and in which order, with the matrices that go with it.
///
/// Primitives are drawn by sort priority; of equal priority the opaque ones first, then the blended ones from far to
/// near. Opaque ones that show the same geometry with the same material, as in a crowd, are one batch: one call draws
/// them all. Batches stand in the order in which the scene first has them.
class DrawList
{
public:
    struct Batch
    {
        const P_PrimitiveInstance* m_pInstance;  ///< the first one of the batch
        P_TriangleMesh* m_pGeometry;
        unsigned int m_uiSlots;  ///< bones per vertex
        bool m_bBlended;
        bool m_bMirrored;
        bool m_bPicked;         ///< the view's picked mesh
        std::size_t m_uiFirst;  ///< its objects in the buffer of first matrices
        std::size_t m_uiCount;
    };

    DrawList();

    /// Finds what the scene's last frame showed.
    void collect(const P_Scene& scene, const P_Camera& camera, const View& view);
    /// Hands the matrices to the driver. Throws RenderException when they are too many.
    void upload();

    [[nodiscard]] const std::vector<Batch>& getBatches() const noexcept { return m_vecBatches; }
    /// For each drawn object the number of its first matrix: unsigned integers in the order of the batches.
    [[nodiscard]] const GLBuffer& getFirstMatrices() const noexcept { return m_firstMatrices; }

private:
    struct Item
    {
        const P_PrimitiveInstance* m_pInstance;
        P_TriangleMesh* m_pGeometry;
        const P_Material* m_pMaterial;
        unsigned int m_uiPriority;
        unsigned int m_uiFirstMatrix;
        std::size_t m_uiGroup;
        float m_fDepth;
        bool m_bBlended;
        bool m_bMirrored;
        bool m_bPicked;
    };
    void addMesh(P_VirtualObject& mesh, const P_Camera& camera, const View& view);
    unsigned int addMatrices(const P_VirtualObject& mesh);
    void sort();
    void makeBatches();

    std::vector<Item> m_vecItems;
    std::vector<Batch> m_vecBatches;
    std::vector<GLuint> m_vecFirstMatrices;
    GLBuffer m_firstMatrices;
    MatrixTexture m_matrices;
};
}  // namespace TW2::render
