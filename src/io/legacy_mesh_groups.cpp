#include "io/group_offsets.h"
#include "io/legacy_mesh_conversion.h"
#include "io/legacy_mesh_work_lists.h"

#include <platform/runtime/str.h>

#include <algorithm>
#include <numeric>

namespace TW2
{
namespace
{
S_String findSizeFault(const MeshChunk& mesh, std::size_t group, std::size_t vertices)
{
    if (vertices <= MeshChunk::maxGroupVertices)
    {
        return {};
    }
    return S_STR("at most %zu vertices in each group of mesh \"%s\", group %zu needs %zu", MeshChunk::maxGroupVertices,
                 mesh.name.c_str(), group, vertices)
        .str();
}

/// Lists the polygons of each material in order; those of none of them, or without a number, come after the last.
void sortPolygons(const MeshChunk& mesh, LegacyMeshLists& lists)
{
    const std::size_t materials = mesh.materials.names.size();
    const S_Vector<int>& faceMaterials = mesh.materials.faceMaterials;
    const auto getPlace = [&](std::size_t polygon)
    {
        const int material = polygon < faceMaterials.size() ? faceMaterials[polygon] : -1;
        return material < 0 ? materials : std::min(static_cast<std::size_t>(material), materials);
    };
    listByBucket(lists.materialStarts, lists.materialPolygons, materials + 1, mesh.faces.polygons.size(), 1, getPlace);
}

/// Appends the group of one material: its vertices are numbered in the order in which its corners name them.
void appendGroup(std::size_t group, LegacyMeshLists& lists)
{
    const unsigned int stamp = static_cast<unsigned int>(group) + 1;
    const unsigned int begin = lists.materialStarts[group];
    const unsigned int end = lists.materialStarts[group + 1];
    unsigned int vertices = 0;
    for (unsigned int i = begin; i < end; ++i)
    {
        for (std::size_t k = 0; k < 3; ++k)
        {
            const unsigned int vertex = lists.corners[3 * std::size_t(lists.materialPolygons[i]) + k];
            if (lists.groupOfVertex[vertex] != stamp)
            {
                lists.groupOfVertex[vertex] = stamp;
                lists.numberInGroup[vertex] = vertices++;
                lists.groupVertices.push_back(vertex);
            }
            // A group of more vertices than 16 bits can number is rejected as a whole afterwards.
            lists.groupIndices.push_back(static_cast<std::uint16_t>(lists.numberInGroup[vertex]));
        }
    }
    lists.groupVertexCounts.push_back(vertices);
    lists.groupTriangleCounts.push_back(end - begin);
}

S_String makeGroups(const MeshChunk& mesh, LegacyMeshLists& lists)
{
    const std::size_t materials = mesh.materials.names.size();
    sortPolygons(mesh, lists);
    lists.groupOfVertex.assign(lists.positions.size(), 0);
    lists.numberInGroup.resize(lists.positions.size());
    for (std::size_t group = 0; group < materials; ++group)
    {
        appendGroup(group, lists);
        if (S_String fault = findSizeFault(mesh, group, lists.groupVertexCounts[group]); !fault.empty())
        {
            return fault;
        }
    }
    return {};
}

/// All vertices in order, also those that no polygon names.
S_String makeOneGroup(const MeshChunk& mesh, LegacyMeshLists& lists)
{
    if (S_String fault = findSizeFault(mesh, 0, lists.positions.size()); !fault.empty())
    {
        return fault;
    }
    lists.groupVertices.resize(lists.positions.size());
    std::iota(lists.groupVertices.begin(), lists.groupVertices.end(), 0U);
    for (const unsigned int vertex : lists.corners)
    {
        lists.groupIndices.push_back(static_cast<std::uint16_t>(vertex));
    }
    lists.groupVertexCounts.push_back(static_cast<unsigned int>(lists.positions.size()));
    lists.groupTriangleCounts.push_back(static_cast<unsigned int>(lists.corners.size() / 3));
    return {};
}
}  // namespace

S_String groupByMaterial(const MeshChunk& mesh, LegacyMeshLists& lists)
{
    lists.groupVertices.clear();
    lists.groupVertexCounts.clear();
    lists.groupTriangleCounts.clear();
    lists.groupIndices.clear();
    const bool hasSeveral = mesh.hasMaterials && mesh.materials.names.size() >= 2;
    return hasSeveral ? makeGroups(mesh, lists) : makeOneGroup(mesh, lists);
}
}  // namespace TW2
