#include <platform/runtime/str.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/skin_mesh.h>

#include <algorithm>
#include <utility>

P_SkinMesh::~P_SkinMesh() = default;

void P_SkinMesh::allocate(unsigned int triangles, unsigned int vertices, bool dynamic)
{
    const std::size_t slots = std::size_t{vertices} * getSlotCount();
    S_Vector<unsigned int> boneIndices(slots);
    S_Vector<float> boneWeights(slots);
    P_TriangleMesh::allocate(triangles, vertices, dynamic);
    m_vecBoneIndices = std::move(boneIndices);
    m_vecBoneWeights = std::move(boneWeights);
    m_uiBoneLimit = 0;
}

P_TriangleMesh* P_SkinMesh::clone() const
{
    return new P_SkinMesh(*this);
}

void P_SkinMesh::setBoneIndex(unsigned int vertex, unsigned int slot, unsigned int bone)
{
    checkSlot(vertex, slot);
    m_vecBoneIndices[std::size_t{vertex} * getSlotCount() + slot] = bone;
    m_uiBoneLimit = std::max(m_uiBoneLimit, bone + 1);
}

void P_SkinMesh::setBoneWeight(unsigned int vertex, unsigned int slot, float weight)
{
    checkSlot(vertex, slot);
    m_vecBoneWeights[std::size_t{vertex} * getSlotCount() + slot] = weight;
}

void P_SkinMesh::checkSlot(unsigned int vertex, unsigned int slot) const
{
    checkLocked();
    if (vertex >= getVertexBuffer().getCapacity() || slot >= getSlotCount())
    {
        throw P_SceneException(S_STR("Bone slot %u of vertex %u was written in a mesh of %u vertices with %u slots",
                                     slot, vertex, getVertexBuffer().getCapacity(), getSlotCount()));
    }
}

template <typename Transform>
M_Vector3Template<float> P_SkinMesh::blend(unsigned int vertex, const M_Matrix4x3Template<float>* const* boneMatrices,
                                           std::size_t boneMatrixCount, const M_Vector3Template<float>& rest,
                                           Transform transform) const noexcept
{
    M_Vector3Template<float> sum;
    bool weighted = false;
    for (unsigned int slot = 0; slot < getSlotCount(); ++slot)
    {
        const float weight = getBoneWeight(vertex, slot);
        if (weight == 0.0f)
        {
            continue;
        }
        weighted = true;
        const std::size_t bone = getBoneIndex(vertex, slot);
        const M_Matrix4x3Template<float>* matrix = bone < boneMatrixCount ? boneMatrices[bone] : nullptr;
        sum += (matrix ? transform(*matrix, rest) : rest) * weight;
    }
    return weighted ? sum : rest;
}

M_Vector3Template<float> P_SkinMesh::getSkinnedPosition(unsigned int vertex,
                                                        const M_Matrix4x3Template<float>* const* boneMatrices,
                                                        std::size_t boneMatrixCount) const noexcept
{
    const M_Vector3Template<float> rest = getVertexBuffer().getPosition(vertex);
    if (!boneMatrices || boneMatrixCount == 0)
    {
        return rest;
    }
    return blend(vertex, boneMatrices, boneMatrixCount, rest,
                 [](const M_Matrix4x3Template<float>& matrix, const M_Vector3Template<float>& v)
                 { return matrix.transformPoint(v); });
}

M_Vector3Template<float> P_SkinMesh::getSkinnedNormal(unsigned int vertex,
                                                      const M_Matrix4x3Template<float>* const* boneMatrices,
                                                      std::size_t boneMatrixCount) const noexcept
{
    const M_Vector3Template<float> rest = getVertexBuffer().getNormal(vertex);
    if (!boneMatrices || boneMatrixCount == 0)
    {
        return rest;
    }
    return blend(vertex, boneMatrices, boneMatrixCount, rest,
                 [](const M_Matrix4x3Template<float>& matrix, const M_Vector3Template<float>& v)
                 { return matrix.transformDirection(v); })
        .normalized();
}
