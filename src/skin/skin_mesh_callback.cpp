#include "skin/skeleton_bone.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/skin_mesh_callback.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/rollback.h>
#include <platform/runtime/str.h>
#include <platform/scene/driver_exception.h>
#include <platform/scene/vertex_format.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstddef>

namespace TW2
{
namespace
{
constexpr int maximumBonesPerVertex = static_cast<int>(P_VertexFormat::maximumBonesPerVertex);

/// Which vertices of the skin data the vertices of one mesh primitive take their influences from.
class SkinVertices
{
public:
    /// Throws unless the skin data hold all of them. A mesh's material that no polygon has makes a primitive of none.
    SkinVertices(const TW_VertexAnimation::Skin& skin, const P_VirtualObject& mesh, int primitive, int vertexCount,
                 const S_Vector<int>& vertexMap)
        : m_vertexMap(vertexMap), m_iPrimitive(vertexMap.empty() ? primitive : 0)
    {
        if (vertexCount <= 0)
        {
            return;
        }
        const SkinChunk& chunk = skin.getSkinChunk();
        const auto primitives = static_cast<int>(chunk.primitiveVertexCounts.size());
        if (m_iPrimitive < 0 || m_iPrimitive >= primitives)
        {
            fail(mesh, S_STR("primitive %d of %d", m_iPrimitive, primitives));
        }
        if (!vertexMap.empty() && vertexMap.size() < static_cast<std::size_t>(vertexCount))
        {
            fail(mesh, S_STR("a vertex map of %zu entries for %d vertices", vertexMap.size(), vertexCount));
        }
        const int vertices = skin.getPrimitiveVertexCount(m_iPrimitive);
        for (int v = 0; v < vertexCount; ++v)
        {
            if ((*this)(v) < 0 || (*this)(v) >= vertices)
            {
                fail(mesh, S_STR("vertex %d of %d in primitive %d", (*this)(v), vertices, m_iPrimitive));
            }
        }
    }

    [[nodiscard]] int getPrimitive() const noexcept { return m_iPrimitive; }
    /// The vertex of that primitive for vertex `v` of the mesh.
    [[nodiscard]] int operator()(int v) const noexcept
    {
        return m_vertexMap.empty() ? v : m_vertexMap[static_cast<std::size_t>(v)];
    }
    [[nodiscard]] bool isInStoredOrder() const noexcept { return !m_vertexMap.empty(); }

private:
    [[noreturn]] static void fail(const P_VirtualObject& mesh, const char* missing)
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Skin mesh \"%s\" needs skin data that the SKD lacks: %s", mesh.getName().c_str(), missing));
    }

    const S_Vector<int>& m_vertexMap;
    int m_iPrimitive;
};

struct Influence
{
    unsigned int bone;
    float weight;
};

/// Largest weight first; equal weights keep their order.
void sortByWeight(Influence* first, int count)
{
    const auto isHeavier = [](const Influence& a, const Influence& b) { return a.weight > b.weight; };
    for (Influence* next = first; next != first + count; ++next)
    {
        std::rotate(std::upper_bound(first, next, *next, isHeavier), next, next + 1);
    }
}

void writeInfluences(P_SkinMesh& skinMesh, const TW_VertexAnimation::Skin& skin, const SkinVertices& vertices,
                     int vertexCount, const S_Vector<unsigned int>& boneMap)
{
    skinMesh.lock();
    const S_Rollback unlock([&skinMesh]() noexcept { skinMesh.unlock(); });
    for (int v = 0; v < vertexCount; ++v)
    {
        Influence influences[maximumBonesPerVertex];
        const int count = skin.getVertexBoneCount(vertices.getPrimitive(), vertices(v));
        for (int k = 0; k < count; ++k)
        {
            const int bone = skin.getVertexBone(vertices.getPrimitive(), vertices(v), k);
            influences[k] = {boneMap[static_cast<std::size_t>(bone)],
                             skin.getVertexWeight(vertices.getPrimitive(), vertices(v), k)};
        }
        if (!vertices.isInStoredOrder())
        {
            sortByWeight(influences, count);
        }
        for (int slot = 0; slot < count; ++slot)
        {
            skinMesh.setBoneIndex(static_cast<unsigned int>(v), static_cast<unsigned int>(slot), influences[slot].bone);
            skinMesh.setBoneWeight(static_cast<unsigned int>(v), static_cast<unsigned int>(slot),
                                   influences[slot].weight);
        }
    }
}

/// The bone counts of a primitive, for engines that read a vertex's count in place; null when the skin data have no
/// primitive of that number that is long enough, which can only be with a vertex map.
const int* getBoneCountList(const TW_VertexAnimation::Skin& skin, int primitive, int vertexCount)
{
    const S_Vector<unsigned int>& counts = skin.getSkinChunk().primitiveVertexCounts;
    const bool exists = primitive >= 0 && static_cast<std::size_t>(primitive) < counts.size() &&
                        counts[static_cast<std::size_t>(primitive)] >= static_cast<unsigned int>(vertexCount);
    return exists ? skin.getVertexBoneCountList(primitive) : nullptr;
}
}  // namespace

TW_SkinMeshCallback::TW_SkinMeshCallback(TW_ObjectAnimation* skin, TW_VertexAnimation* vertexAnimation) noexcept
    : TW_ObjectAnimationMeshCallback(skin), m_pVertexAnimation(vertexAnimation)
{
}

P_TriangleMesh* TW_SkinMeshCallback::createTriangleMesh(P_VirtualObject* mesh, int primitive, int vertexFormatFlags,
                                                        int triangleCount, int vertexCount,
                                                        const S_Vector<int>& vertexMap)
{
    takeSkinData(*mesh);
    const SkinVertices vertices(m_skinData, *mesh, primitive, vertexCount, vertexMap);
    int maxBones = 0;
    for (int v = 0; v < vertexCount; ++v)
    {
        maxBones = std::max(maxBones, m_skinData.getVertexBoneCount(vertices.getPrimitive(), vertices(v)));
    }
    if (maxBones > maximumBonesPerVertex)
    {
        throw P_DriverException_TooManyBonesPerVertex();
    }

    P_VertexFormat format;
    format.constructFromOldVertexFormat(static_cast<unsigned int>(vertexFormatFlags) |
                                        static_cast<unsigned int>(maxBones) << P_VertexFormat::boneCountShift);
    P_SkinMesh* skinMesh = mesh->createSkinMesh(primitive, nullptr, format);
    skinMesh->allocate(static_cast<unsigned int>(triangleCount), static_cast<unsigned int>(vertexCount), false);
    skinMesh->setBoneCountList(getBoneCountList(m_skinData, primitive, vertexCount));
    writeInfluences(*skinMesh, m_skinData, vertices, vertexCount, m_vecBoneMap);
    return skinMesh;
}

/// Takes the skin data for all meshes, so that a host's callback that exchanges them changes nothing. A bone that the
/// skeleton lacks takes the mesh of its own number; the check of the finished object rejects it.
void TW_SkinMeshCallback::takeSkinData(const P_VirtualObject& mesh)
{
    if (m_skinData.isConstructed())
    {
        return;
    }
    if (!m_pVertexAnimation || !m_pVertexAnimation->getSkeleton() || !m_pVertexAnimation->getSkinData() ||
        !m_pVertexAnimation->getSkinData()->isConstructed())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Skin mesh \"%s\" has no skeleton or no SKD to follow", mesh.getName().c_str()));
    }
    const TW_VertexAnimation::Skin& skinData = *m_pVertexAnimation->getSkinData();
    if (const S_String invalid = skinData.getSkinChunk().findInvalidValue(); !invalid.empty())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Skin mesh \"%s\" has an SKD that contradicts itself: %s", mesh.getName().c_str(), invalid.c_str()));
    }
    const TW_ObjectAnimation& skeleton = *m_pVertexAnimation->getSkeleton();
    const S_Vector<S_String>& names = skinData.getSkinChunk().boneNames;
    const unsigned int meshes = skeleton.getTotalMeshes();
    if (meshes == 0 && !names.empty())
    {
        throwUndefinedBone(skeleton, names.front());
    }
    m_vecBoneMap.resize(names.size());
    for (std::size_t b = 0; b < names.size(); ++b)
    {
        const auto expected = static_cast<unsigned int>(b);
        const int bone = findSkeletonBone(skeleton, names[b], expected);
        m_vecBoneMap[b] = bone >= 0 ? static_cast<unsigned int>(bone) : expected % meshes;
    }
    m_skinData = skinData;
}
}  // namespace TW2
