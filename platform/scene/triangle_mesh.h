#pragma once

#include <platform/export.h>
#include <platform/scene/triangle_mesh_base.h>

class P_SkinMesh;

/// Rigid triangle geometry. Made by `P_VirtualObject::createTriangleMesh`.
class TW2_PLATFORM_API P_TriangleMesh : public P_TriangleMeshBase
{
public:
    /// Made with one holder: the caller.
    explicit P_TriangleMesh(const P_VertexFormat& format) noexcept : P_TriangleMeshBase(format) {}

    /// Makes room and puts all of it in use, dropping earlier content. `dynamic`: it will be rewritten often. When
    /// memory runs out the earlier content stays.
    virtual void allocate(unsigned int triangles, unsigned int vertices, bool dynamic);
    /// A copy of its own with one holder: the caller.
    [[nodiscard]] virtual P_TriangleMesh* clone() const;
    /// This mesh as a skin mesh; null when it is none.
    [[nodiscard]] virtual const P_SkinMesh* asSkinMesh() const noexcept { return nullptr; }

protected:
    P_TriangleMesh(const P_TriangleMesh&) = default;
    ~P_TriangleMesh() override;
};
