#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/triangle_mesh.h>

#include <cstddef>

/// Triangle geometry whose vertices follow bones. Made by `P_VirtualObject::createSkinMesh`.
///
/// Each vertex has as many slots as the format has bones per vertex (0 to 4); a slot holds a bone index and a weight,
/// both 0 until written. A vertex stands at the sum over its slots of weight x (position x bone matrix); the weights of
/// a vertex are expected to add up to 1. A vertex without any weight, or a mesh without bones, stays where it was
/// written.
///
/// Bounds are those of one box per bone, around what the bone moves: a vertex stands between the places where its bones
/// would each put it alone.
class TW2_PLATFORM_API P_SkinMesh : public P_TriangleMesh
{
public:
    /// An empty mesh whose format says how many bones a vertex has.
    explicit P_SkinMesh(const P_VertexFormat& format) noexcept : P_TriangleMesh(format) {}

    void allocate(unsigned int triangles, unsigned int vertices, bool dynamic) override;
    [[nodiscard]] P_TriangleMesh* clone() const override;
    [[nodiscard]] const P_SkinMesh* asSkinMesh() const noexcept override { return this; }
    /// Goes through the vertices one by one only where a weight is negative or not finite, or a bone has a number past
    /// 65535.
    void addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform,
                     const P_BoneMatrices& boneMatrices) const noexcept override;

    /// @name Writing, between lock and unlock
    /// Throws P_SceneException outside a lock or for a vertex or slot that does not exist.
    /// @{

    /// `bone`: a number in the mesh's list of bone matrices.
    void setBoneIndex(unsigned int vertex, unsigned int slot, unsigned int bone);
    /// Weights of a vertex are used as they are; they usually add up to 1.
    void setBoneWeight(unsigned int vertex, unsigned int slot, float weight);
    /// @}

    /// @name Reading
    /// @{

    /// Slots per vertex.
    [[nodiscard]] unsigned int getSlotCount() const noexcept { return getFormat().getBonesPerVertex(); }
    /// 0 where none was set.
    [[nodiscard]] unsigned int getBoneIndex(unsigned int vertex, unsigned int slot) const noexcept
    {
        return m_vecBoneIndices[std::size_t{vertex} * getSlotCount() + slot];
    }
    /// 0 where none was set.
    [[nodiscard]] float getBoneWeight(unsigned int vertex, unsigned int slot) const noexcept
    {
        return m_vecBoneWeights[std::size_t{vertex} * getSlotCount() + slot];
    }
    /// All bone indices, `getSlotCount()` per vertex; null when there are no slots.
    [[nodiscard]] const unsigned int* getBoneIndexData() const noexcept { return m_vecBoneIndices.data(); }
    /// All weights, `getSlotCount()` per vertex; null when there are no slots.
    [[nodiscard]] const float* getBoneWeightData() const noexcept { return m_vecBoneWeights.data(); }
    /// The largest bone index written so far plus 1; 0 before the first.
    [[nodiscard]] unsigned int getBoneLimit() const noexcept { return m_uiBoneLimit; }
    /// @}

    /// @name Bone counts
    /// @{

    /// Notes the list of bone counts, one per vertex, kept by the caller. This engine weighs all slots and never reads
    /// the list; an engine that stops at a vertex's count reads it in place.
    void setBoneCountList(const int* counts) noexcept { m_piBoneCounts = counts; }
    [[nodiscard]] const int* getBoneCountList() const noexcept { return m_piBoneCounts; }
    /// @}

    /// @name Skinning under the given bone matrices
    /// None, a null one or a bone past their count: the identity.
    /// @{

    /// Where a vertex stands.
    [[nodiscard]] M_Vector3Template<float> getSkinnedPosition(unsigned int vertex,
                                                              const P_BoneMatrices& boneMatrices) const noexcept;
    /// Where its normal points: the weighted directions, scaled to length 1.
    [[nodiscard]] M_Vector3Template<float> getSkinnedNormal(unsigned int vertex,
                                                            const P_BoneMatrices& boneMatrices) const noexcept;
    /// @}

protected:
    P_SkinMesh(const P_SkinMesh&) = default;
    ~P_SkinMesh() override;

    void verticesChanged() noexcept override;

private:
    void checkSlot(unsigned int vertex, unsigned int slot) const;
    template <typename Transform>
    [[nodiscard]] M_Vector3Template<float> blend(unsigned int vertex, const P_BoneMatrices& boneMatrices,
                                                 const M_Vector3Template<float>& rest,
                                                 Transform transform) const noexcept;

    void addInfluences(unsigned int vertex) noexcept;

    S_Vector<unsigned int> m_vecBoneIndices;
    S_Vector<float> m_vecBoneWeights;
    /// Around what each bone moves, at rest, and around what no bone moves.
    S_Vector<P_Box> m_vecBoneBoxes;
    P_Box m_restBox;
    /// By how much the weights of a vertex miss the sum 1, at most.
    float m_fWeightError = 0.0F;
    /// Whether every vertex stands between the places where its bones would put it.
    bool m_bBoxesHold = true;
    const int* m_piBoneCounts = nullptr;
    unsigned int m_uiBoneLimit = 0;
};
