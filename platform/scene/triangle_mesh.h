#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/scene/bone_matrices.h>
#include <platform/scene/bounds.h>
#include <platform/scene/triangle_mesh_base.h>

#include <cstddef>

class P_SkinMesh;

/// Rigid triangle geometry. Made by `P_VirtualObject::createTriangleMesh`.
class TW2_PLATFORM_API P_TriangleMesh : public P_TriangleMeshBase
{
public:
    /// Made with one holder: the caller.
    explicit P_TriangleMesh(const P_VertexFormat& format) noexcept : P_TriangleMeshBase(format) {}

    /// Makes room and puts all of it in use, dropping earlier content. `dynamic`: it will be rewritten often,
    /// which other engines may want to know. When memory runs out the earlier content stays.
    virtual void allocate(unsigned int triangles, unsigned int vertices, bool dynamic);
    /// A copy of its own with one holder: the caller.
    [[nodiscard]] virtual P_TriangleMesh* clone() const;
    /// This mesh as a skin mesh; null when it is none.
    [[nodiscard]] virtual const P_SkinMesh* asSkinMesh() const noexcept { return nullptr; }
    /// Adds what holds all vertices in use as they stand under `boneMatrices` (which rigid geometry does not look at),
    /// taken to where `transform` puts them. Takes the box of the vertices, not each of them.
    virtual void addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform,
                             const P_BoneMatrices& boneMatrices) const noexcept;

protected:
    P_TriangleMesh(const P_TriangleMesh&) = default;
    ~P_TriangleMesh() override;

    void verticesChanged() noexcept override;
    /// Whether what was found out about the vertices, when they changed last, holds for all that are in use now.
    [[nodiscard]] bool areVerticesKnown() const noexcept { return getVertexBuffer().getUsedCount() <= m_uiKnown; }

private:
    /// Around the vertices that were in use when they changed last, and how many those were.
    P_Box m_box;
    double m_fReachSquared = 0.0;
    unsigned int m_uiKnown = 0;
};
