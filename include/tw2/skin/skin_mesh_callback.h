#pragma once

#include <tw2/export.h>
#include <tw2/object/object_animation_mesh_callback.h>

#include <platform/runtime/allocator.h>

namespace TW2
{
class TW_VertexAnimation;

/// Builds the meshes of a skin: like those of any object animation, but their geometry follows the bones that the skin
/// data of a vertex animation name.
///
/// A mesh vertex with a vertex map takes its influences from the vertex that the map names in primitive 0 of the skin
/// data, in stored order; one without from the vertex of its own number in the primitive of its own number, largest
/// weight first.
class TW2_API TW_SkinMeshCallback : public TW_ObjectAnimationMeshCallback
{
public:
    /// `skin` receives the meshes. `vertexAnimation` must have its skeleton and its skin data and must outlive the
    /// callback; the skin data must outlive the meshes.
    TW_SkinMeshCallback(TW_ObjectAnimation* skin, TW_VertexAnimation* vertexAnimation) noexcept;
    ~TW_SkinMeshCallback() override;

    /// A skin mesh with the bones and weights of its vertices. Throws TW_Exception_InvalidGeometry, naming the mesh,
    /// when the skin data lack the primitive or a vertex that is asked for, and when the skeleton has no meshes;
    /// P_DriverException_TooManyBonesPerVertex when a vertex follows more than 4 bones.
    P_TriangleMesh* createTriangleMesh(P_VirtualObject* mesh, int primitive, int vertexFormatFlags, int triangleCount,
                                       int vertexCount, const S_Vector<int>& vertexMap) override;

private:
    void mapBones();

    TW_VertexAnimation* m_pVertexAnimation;
    /// Per bone of the skin data: its mesh in the skeleton.
    S_Vector<unsigned int> m_vecBoneMap;
    bool m_bBonesMapped;
};
}  // namespace TW2
