#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/base_object.h>
#include <platform/scene/primitive_instance.h>
#include <platform/scene/skin_mesh.h>
#include <platform/scene/triangle_mesh.h>

#include <cstddef>

class P_Bounds;
class P_Material;

/// A mesh in the scene: a fixed number of primitives, each a piece of geometry with a material. Bones and dummies are
/// meshes whose primitives have no geometry.
class TW2_PLATFORM_API P_VirtualObject : public P_BaseObject
{
public:
    /// @name Life
    /// @{

    /// No primitives.
    P_VirtualObject();
    /// `primitiveCount` primitives without geometry; throws P_SceneException for a negative count.
    explicit P_VirtualObject(int primitiveCount);
    /// A copy that shares the geometry and the materials; name, local matrix, flags and texture matrices are copied. It
    /// hangs under nothing and has no bone matrices.
    P_VirtualObject(const P_VirtualObject& other);
    P_VirtualObject& operator=(const P_VirtualObject&) = delete;
    ~P_VirtualObject() override;
    /// @}

    [[nodiscard]] P_Context* getContext() const override;
    [[nodiscard]] ObjectType getType() const override;
    [[nodiscard]] const char* getObjectType() const override;
    /// Becomes like `other`; of a P_VirtualObject also the primitives, with geometry of its own. When memory runs out
    /// the object is as before.
    void duplicate(const P_BaseObject& other) override;
    using P_BaseObject::duplicate;
    void dump(bool details) const override;

    /// @name Primitives
    /// @{
    [[nodiscard]] int getPrimitiveCount() const noexcept { return static_cast<int>(m_vecPrimitives.size()); }
    /// The geometry of a primitive; null when it has none or there is no such primitive.
    [[nodiscard]] P_TriangleMesh* getPrimitive(int primitive) const noexcept;
    /// Null when there is no such primitive. Valid as long as the object.
    [[nodiscard]] P_PrimitiveInstance* getPrimitiveInstance(int primitive) noexcept;
    [[nodiscard]] const P_PrimitiveInstance* getPrimitiveInstance(int primitive) const noexcept;
    /// Gives a primitive new geometry of that format, and the material (null: none). The mesh belongs to the object; it
    /// is empty until it is allocated. Throws P_SceneException when there is no such primitive.
    P_TriangleMesh* createTriangleMesh(int primitive, P_Material* material, const P_VertexFormat& format);
    /// The same with geometry that follows bones.
    P_SkinMesh* createSkinMesh(int primitive, P_Material* material, const P_VertexFormat& format);
    /// @}

    /// @name Bone matrices
    /// Bone i of the skin meshes moves by matrix i, which takes the mesh's rest position to its present one, both in
    /// this object's space.
    /// @{

    /// Takes over the list; the matrices stay the caller's and are read in place from now on, so they must outlive the
    /// object or a later call.
    void setBoneMatrices(const S_Vector<const M_Matrix4x3Template<float>*>& matrices);
    [[nodiscard]] std::size_t getBoneMatrixCount() const noexcept { return m_vecBoneMatrices.size(); }
    [[nodiscard]] const M_Matrix4x3Template<float>& getBoneMatrix(std::size_t bone) const noexcept
    {
        return *m_vecBoneMatrices[bone];
    }
    /// Where a vertex of a primitive with geometry stands now, in this object's space.
    [[nodiscard]] M_Vector3Template<float> getVertexPosition(int primitive, unsigned int vertex) const noexcept;
    /// @}

protected:
    void vertexNormalVisualization() override;

private:
    friend class P_BaseObject;
    /// The primitive's index as a place in the list; throws P_SceneException when there is no such primitive.
    [[nodiscard]] std::size_t checkPrimitive(int primitive) const;
    /// Adds every vertex as it stands now.
    void addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform) const noexcept;

    S_Vector<P_PrimitiveInstance> m_vecPrimitives;
    S_Vector<const M_Matrix4x3Template<float>*> m_vecBoneMatrices;
};
