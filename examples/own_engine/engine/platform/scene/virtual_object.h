#pragma once

#include <platform/scene/base_object.h>
#include <platform/scene/primitive_instance.h>
#include <platform/scene/skin_mesh.h>

class P_VirtualObject : public P_BaseObject
{
public:
    P_VirtualObject();
    explicit P_VirtualObject(int primitiveCount);
    P_VirtualObject(const P_VirtualObject& other);
    P_VirtualObject(const P_VirtualObject& other, P_TransformBlock& block);
    P_Context* getContext() const override;

    int getPrimitiveCount() const noexcept;
    P_PrimitiveInstance* getPrimitiveInstance(int primitive) noexcept;
    const P_PrimitiveInstance* getPrimitiveInstance(int primitive) const noexcept;
    P_TriangleMesh* createTriangleMesh(int primitive, P_Material* material, const P_VertexFormat& format);
    P_SkinMesh* createSkinMesh(int primitive, P_Material* material, const P_VertexFormat& format);
    void setBoneMatrices(const S_Vector<const M_Matrix4x3Template<float>*>& matrices);
};
