#pragma once

#include <tw2/export.h>
#include <tw2/io/loader_callbacks.h>

#include <platform/runtime/allocator.h>

class P_VirtualObject;

namespace TW2
{
class TW_ObjectAnimation;

/// Builds an engine mesh from every mesh record of a file and adds it to an object animation. A host that drives the
/// loader itself may register one; a derived class may make the geometry in its own way.
class TW2_API TW_ObjectAnimationMeshCallback : public TW_MeshCallback, public S_Allocated
{
public:
    /// `object` receives the meshes; it must have a material manager when the records name materials.
    explicit TW_ObjectAnimationMeshCallback(TW_ObjectAnimation* object) noexcept : m_pObject(object) {}
    virtual ~TW_ObjectAnimationMeshCallback() = default;
    TW_ObjectAnimationMeshCallback(const TW_ObjectAnimationMeshCallback&) = delete;
    TW_ObjectAnimationMeshCallback& operator=(const TW_ObjectAnimationMeshCallback&) = delete;

    /// Builds one mesh: geometry, materials, place in the hierarchy. A parent is looked for among the meshes already
    /// built. A material that the object does not have leaves its group without material; an instance of a mesh that
    /// the object does not have throws TW_Exception_InvalidGeometry, and so does a record, changed or made by a host,
    /// whose parts do not fit each other, and any record without an object.
    void operator()(MeshChunk& record) override;
    /// A rigid triangle mesh; the vertex map is not used.
    P_TriangleMesh* createTriangleMesh(P_VirtualObject* mesh, int primitive, int vertexFormatFlags, int triangleCount,
                                       int vertexCount, const S_Vector<int>& vertexMap) override;

    /// The object that the meshes are added to.
    [[nodiscard]] TW_ObjectAnimation* getObject() const noexcept { return m_pObject; }

private:
    TW_ObjectAnimation* m_pObject;
};
}  // namespace TW2
