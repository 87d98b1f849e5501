#pragma once

#include <tw2/export.h>
#include <tw2/object/object_animation_mesh_callback.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/allocator.h>

namespace TW2
{
/// Builds the meshes of a skin: like those of any object animation, but their geometry follows the bones that the skin
/// data of a vertex animation name.
///
/// A mesh vertex with a vertex map takes its influences from the vertex that the map names in primitive 0 of the skin
/// data, in stored order; one without from the vertex of its own number in the primitive of its own number, largest
/// weight first.
class TW2_API TW_SkinMeshCallback : public TW_ObjectAnimationMeshCallback
{
public:
    /// `skin` receives the meshes. `vertexAnimation` must have its skeleton and its skin data by the first mesh and
    /// must outlive the callback. All meshes follow the skin data that it has then, which must outlive them.
    TW_SkinMeshCallback(TW_ObjectAnimation* skin, TW_VertexAnimation* vertexAnimation) noexcept;

    /// A skin mesh with the bones and weights of its vertices. Throws TW_Exception_InvalidGeometry, naming the mesh,
    /// when the skin data lack the primitive or a vertex that is asked for or contradict themselves, and when there is
    /// no skeleton or it has no meshes; P_DriverException_TooManyBonesPerVertex when a vertex follows more than 4
    /// bones.
    P_TriangleMesh* createTriangleMesh(P_VirtualObject* mesh, int primitive, int vertexFormatFlags, int triangleCount,
                                       int vertexCount, const S_Vector<int>& vertexMap) override;

    /// What the meshes follow; not constructed before the first of them.
    [[nodiscard]] const TW_VertexAnimation::Skin& getSkinData() const noexcept { return m_skinData; }

private:
    void takeSkinData(const P_VirtualObject& mesh);

    TW_VertexAnimation* m_pVertexAnimation;
    TW_VertexAnimation::Skin m_skinData;
    /// Per bone of the skin data: its mesh in the skeleton.
    S_Vector<unsigned int> m_vecBoneMap;
};
}  // namespace TW2
