#include <platform/math/float4.h>
#include <platform/math/matrix4x3_product.h>
#include <platform/runtime/str.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/skin_mesh.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

/// Bones past this number have no box.
constexpr unsigned int maximumBoneBoxes = 65536;

/// Relative to the coordinates that are added up: more than rounding makes of them on the way to a vertex.
constexpr float boxRounding = 4e-6F;

/// The box and the sphere around boxes that were each taken through a matrix of their own.
class BoneBounds
{
public:
    void add(const P_Box& box, const Matrix& matrix) noexcept
    {
        const float* const m = matrix.data();
        const M_Float4 rows[] = {M_Float4::load(m), M_Float4::load(m + 3), M_Float4::load(m + 6)};
        const float center[] = {0.5F * (box.m_vMinimum.x + box.m_vMaximum.x),
                                0.5F * (box.m_vMinimum.y + box.m_vMaximum.y),
                                0.5F * (box.m_vMinimum.z + box.m_vMaximum.z)};
        const float half[] = {0.5F * (box.m_vMaximum.x - box.m_vMinimum.x),
                              0.5F * (box.m_vMaximum.y - box.m_vMinimum.y),
                              0.5F * (box.m_vMaximum.z - box.m_vMinimum.z)};
        M_Float4 middle(m[9], m[10], m[11], 0.0F);
        M_Float4 reach;
        for (int r = 0; r < 3; ++r)
        {
            middle = middle + M_Float4(center[r]) * rows[r];
            reach = reach + M_Float4(half[r]) * getAbsolute(rows[r]);
        }
        const M_Float4 low = middle - reach;
        const M_Float4 high = middle + reach;
        m_low = select(isLess(low, m_low), low, m_low);
        m_high = select(isLess(m_high, high), high, m_high);
        float far[4];
        (getAbsolute(middle) + reach).store(far);
        m_fReachSquared = std::max(m_fReachSquared, far[0] * far[0] + far[1] * far[1] + far[2] * far[2]);
        m_bAny = true;
    }

    /// Adds them to `bounds`, larger by `error` x their distance from where the origin went, at most.
    void addTo(P_Bounds& bounds, float error, const Vector& origin) const noexcept
    {
        if (!m_bAny)
        {
            return;
        }
        float low[4];
        float high[4];
        m_low.store(low);
        m_high.store(high);
        const float shift[] = {std::abs(origin.x), std::abs(origin.y), std::abs(origin.z)};
        for (int c = 0; c < 3; ++c)
        {
            const float margin = error * (std::max(std::abs(low[c]), std::abs(high[c])) + shift[c]);
            low[c] -= margin;
            high[c] += margin;
        }
        const float reach = std::sqrt(m_fReachSquared);
        const auto radius = static_cast<double>(reach + error * (reach + origin.length()));
        bounds.add({{low[0], low[1], low[2]}, {high[0], high[1], high[2]}}, radius * radius);
    }

private:
    static M_Float4 getAbsolute(M_Float4 values) noexcept
    {
        return select(isLess(values, M_Float4()), M_Float4() - values, values);
    }

    M_Float4 m_low{P_Box::farAway};
    M_Float4 m_high{-P_Box::farAway};
    float m_fReachSquared = 0.0F;
    bool m_bAny = false;
};
}  // namespace

P_SkinMesh::~P_SkinMesh() = default;

void P_SkinMesh::allocate(unsigned int triangles, unsigned int vertices, bool)
{
    const std::size_t slots = std::size_t{vertices} * getSlotCount();
    S_Vector<unsigned int> boneIndices(slots);
    S_Vector<float> boneWeights(slots);
    S_Vector<P_Box> boneBoxes(1);
    allocateBuffers(triangles, vertices);
    m_vecBoneIndices = std::move(boneIndices);
    m_vecBoneWeights = std::move(boneWeights);
    m_vecBoneBoxes = std::move(boneBoxes);
    m_uiBoneLimit = 0;
    verticesChanged();
}

P_TriangleMesh* P_SkinMesh::clone() const
{
    return new P_SkinMesh(*this);
}

void P_SkinMesh::setBoneIndex(unsigned int vertex, unsigned int slot, unsigned int bone)
{
    checkSlot(vertex, slot);
    if (bone >= m_vecBoneBoxes.size() && bone < maximumBoneBoxes)
    {
        m_vecBoneBoxes.resize(bone + 1);
    }
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
M_Vector3Template<float> P_SkinMesh::blend(unsigned int vertex, const P_BoneMatrices& boneMatrices,
                                           const M_Vector3Template<float>& rest, Transform transform) const noexcept
{
    M_Vector3Template<float> sum;
    bool weighted = false;
    for (unsigned int slot = 0; slot < getSlotCount(); ++slot)
    {
        const float weight = getBoneWeight(vertex, slot);
        if (weight == 0.0F)
        {
            continue;
        }
        weighted = true;
        const std::size_t bone = getBoneIndex(vertex, slot);
        const M_Matrix4x3Template<float>* const matrix = boneMatrices[bone];
        sum += (matrix ? transform(*matrix, rest) : rest) * weight;
    }
    return weighted ? sum : rest;
}

M_Vector3Template<float> P_SkinMesh::getSkinnedPosition(unsigned int vertex,
                                                        const P_BoneMatrices& boneMatrices) const noexcept
{
    const M_Vector3Template<float> rest = getVertexBuffer().getPosition(vertex);
    if (boneMatrices.empty())
    {
        return rest;
    }
    return blend(vertex, boneMatrices, rest,
                 [](const M_Matrix4x3Template<float>& matrix, const M_Vector3Template<float>& v)
                 { return matrix.transformPoint(v); });
}

M_Vector3Template<float> P_SkinMesh::getSkinnedNormal(unsigned int vertex,
                                                      const P_BoneMatrices& boneMatrices) const noexcept
{
    const M_Vector3Template<float> rest = getVertexBuffer().getNormal(vertex);
    if (boneMatrices.empty())
    {
        return rest;
    }
    return blend(vertex, boneMatrices, rest,
                 [](const M_Matrix4x3Template<float>& matrix, const M_Vector3Template<float>& v)
                 { return matrix.transformDirection(v); })
        .normalized();
}

void P_SkinMesh::verticesChanged() noexcept
{
    P_TriangleMesh::verticesChanged();
    std::fill(m_vecBoneBoxes.begin(), m_vecBoneBoxes.end(), P_Box());
    m_restBox = P_Box();
    m_fWeightError = 0.0F;
    m_bBoxesHold = true;
    for (unsigned int vertex = 0; vertex < getVertexBuffer().getUsedCount(); ++vertex)
    {
        addInfluences(vertex);
    }
}

void P_SkinMesh::addInfluences(unsigned int vertex) noexcept
{
    const Vector rest = getVertexBuffer().getPosition(vertex);
    float sum = 0.0F;
    bool weighted = false;
    for (unsigned int slot = 0; slot < getSlotCount(); ++slot)
    {
        const float weight = getBoneWeight(vertex, slot);
        const std::size_t bone = getBoneIndex(vertex, slot);
        if (weight == 0.0F)
        {
            continue;
        }
        weighted = true;
        sum += weight;
        if (!(weight > 0.0F) || bone >= m_vecBoneBoxes.size())
        {
            m_bBoxesHold = false;
            continue;
        }
        m_vecBoneBoxes[bone].add(rest);
    }
    if (!weighted)
    {
        m_restBox.add(rest);
        return;
    }
    m_fWeightError = std::max(m_fWeightError, std::abs(sum - 1.0F));
    m_bBoxesHold = m_bBoxesHold && std::isfinite(sum);
}

void P_SkinMesh::addToBounds(P_Bounds& bounds, const Matrix& transform,
                             const P_BoneMatrices& boneMatrices) const noexcept
{
    const unsigned int used = getVertexBuffer().getUsedCount();
    if (boneMatrices.empty())
    {
        P_TriangleMesh::addToBounds(bounds, transform, boneMatrices);
        return;
    }
    if (!m_bBoxesHold || !areVerticesKnown())
    {
        for (unsigned int vertex = 0; vertex < used; ++vertex)
        {
            bounds.add(transform.transformPoint(getSkinnedPosition(vertex, boneMatrices)));
        }
        return;
    }
    if (used == 0)
    {
        return;
    }
    const bool moved = transform != Matrix::identity();
    const M_RightFactor factor(transform);
    BoneBounds found;
    for (std::size_t bone = 0; bone < m_vecBoneBoxes.size(); ++bone)
    {
        const P_Box& box = m_vecBoneBoxes[bone];
        if (box.isEmpty())
        {
            continue;
        }
        const Matrix* matrix = boneMatrices[bone];
        Matrix product;
        if (moved && matrix)
        {
            factor.multiply(*matrix, product);
            matrix = &product;
        }
        found.add(box, matrix ? *matrix : transform);
    }
    if (!m_restBox.isEmpty())
    {
        found.add(m_restBox, transform);
    }
    found.addTo(bounds, m_fWeightError + boxRounding, transform.getTranslation());
}
