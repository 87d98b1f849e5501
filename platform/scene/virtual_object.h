#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/runtime/handle.h>
#include <platform/scene/base_object.h>
#include <platform/scene/bone_matrices.h>
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
    /// Such a copy that is a member of `block` from the start, at its next index; its matrices need no memory of their
    /// own.
    P_VirtualObject(const P_VirtualObject& other, P_TransformBlock& block);
    P_VirtualObject& operator=(const P_VirtualObject&) = delete;
    /// Lets its geometry go.
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
    /// Copies share them until one is asked for a primitive that may be changed.
    /// @{

    /// Fixed when the object is made.
    [[nodiscard]] int getPrimitiveCount() const noexcept
    {
        return m_pShown ? static_cast<int>(m_pShown->m_vecPrimitives.size()) : 0;
    }
    /// The geometry of a primitive; null when it has none or there is no such primitive.
    [[nodiscard]] P_TriangleMesh* getPrimitive(int primitive) const noexcept;
    /// Whether no primitive has geometry with room for a vertex. Asked by what relies on it until it hears otherwise:
    /// empty geometry that gets room later counts as filled (`P_TriangleMeshBase::getFillCount`).
    [[nodiscard]] bool isTakenForEmpty() const noexcept;
    /// For changing; null when there is no such primitive. Valid as long as the object.
    [[nodiscard]] P_PrimitiveInstance* getPrimitiveInstance(int primitive);
    /// For reading, until the object is asked for one that may be changed.
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
    /// Bones of a skin's mesh; 0 for a mesh that is no skin.
    [[nodiscard]] std::size_t getBoneMatrixCount() const noexcept { return getBoneMatrices().size(); }
    /// Below `getBoneMatrixCount()`; read in place, so always as the character has it.
    [[nodiscard]] const M_Matrix4x3Template<float>& getBoneMatrix(std::size_t bone) const noexcept
    {
        return *getBoneMatrices()[bone];
    }
    /// All of them, in place.
    [[nodiscard]] P_BoneMatrices getBoneMatrices() const noexcept
    {
        return m_pShown ? m_pShown->m_boneMatrices : P_BoneMatrices();
    }
    /// Where a vertex of a primitive with geometry stands now, in this object's space.
    [[nodiscard]] M_Vector3Template<float> getVertexPosition(int primitive, unsigned int vertex) const noexcept;
    /// @}

protected:
    void vertexNormalVisualization() override;

private:
    friend class P_BaseObject;

    /// What the object shows; null for nothing.
    struct Shown : S_Allocated
    {
        S_Vector<P_PrimitiveInstance> m_vecPrimitives;
        /// Of one object alone: what has bone matrices is not shared.
        P_BoneMatrices m_boneMatrices;
        /// What they point to, unless the matrices lie side by side.
        S_Vector<const M_Matrix4x3Template<float>*> m_vecBonePointers;
        S_Counter<int> m_iReferenceCount{1};
    };

    [[nodiscard]] static S_Handle<Shown> share(const P_VirtualObject& other);
    [[nodiscard]] Shown& accessShown();
    /// The primitive's index as a place in the list; throws P_SceneException when there is no such primitive.
    [[nodiscard]] std::size_t checkPrimitive(int primitive) const;
    /// Adds what holds all vertices as they stand now.
    void addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform) const noexcept;

    S_Handle<Shown> m_pShown;
};
