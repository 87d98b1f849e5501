#include "io/mesh_faults.h"

#include <tw2/core/exceptions.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/str.h>

#include <algorithm>

namespace TW2
{
namespace
{
/// The sum of group counts, or something above `limit` as soon as it is passed.
template <typename T>
std::uint64_t addUp(const S_Vector<T>& counts, std::uint64_t limit)
{
    std::uint64_t sum = 0;
    for (const T count : counts)
    {
        sum += static_cast<unsigned int>(count);
        if (sum > limit)
        {
            break;
        }
    }
    return sum;
}

template <typename T>
S_String findSumFault(const S_Vector<T>& counts, std::size_t total, const char* elements)
{
    const std::uint64_t sum = addUp(counts, total);
    if (sum == total)
    {
        return {};
    }
    return S_STR("the %zu groups to add up to %zu %s, found %s%llu", counts.size(), total, elements,
                 sum > total ? "at least " : "", static_cast<unsigned long long>(sum))
        .str();
}

std::size_t countMaterials(const MeshChunk& mesh)
{
    return mesh.hasMaterials ? mesh.materials.names.size() : 0;
}

S_String findGroupFault(const MeshChunk& mesh)
{
    const std::size_t groups = mesh.vertices.groupCounts.size();
    if (mesh.faces.groupCounts.size() != groups)
    {
        return S_STR("as many groups of triangles as of vertices, %zu, found %zu", groups,
                     mesh.faces.groupCounts.size())
            .str();
    }
    const std::size_t materials = countMaterials(mesh);
    const bool isEmpty = groups == 0 && materials == 0 && mesh.vertices.positions.empty();
    const std::size_t expected = std::max<std::size_t>(materials, 1);
    if (!isEmpty && groups != expected)
    {
        return S_STR("%zu groups for %zu materials, found %zu", expected, materials, groups).str();
    }
    return {};
}

S_String findIndexFault(const MeshChunk& mesh)
{
    const std::uint16_t* index = mesh.faces.indices.data();
    for (std::size_t group = 0; group < mesh.faces.groupCounts.size(); ++group)
    {
        const std::uint16_t* end = index + 3 * static_cast<std::size_t>(mesh.faces.groupCounts[group]);
        if (index == end)
        {
            continue;
        }
        // Finding the largest takes a fraction of the time of comparing one by one.
        const unsigned int highest = *std::max_element(index, end);
        if (highest >= mesh.vertices.groupCounts[group])
        {
            return S_STR("triangle indices below %u in group %zu, found %u", mesh.vertices.groupCounts[group], group,
                         highest)
                .str();
        }
        index = end;
    }
    return {};
}

S_String findChannelFault(const MeshChunk& mesh, std::size_t slot)
{
    const S_Vector<int>& counts = mesh.channels[slot].groupCounts;
    if (counts.empty())
    {
        return {};
    }
    if (counts.size() != mesh.vertices.groupCounts.size())
    {
        return S_STR("as many groups in texture channel %zu as of vertices, %zu, found %zu", slot,
                     mesh.vertices.groupCounts.size(), counts.size())
            .str();
    }
    for (std::size_t group = 0; group < counts.size(); ++group)
    {
        const unsigned int count = static_cast<unsigned int>(counts[group]);
        if (count != 0 && count != mesh.vertices.groupCounts[group])
        {
            return S_STR("%u coordinates or none in group %zu of texture channel %zu, found %u",
                         mesh.vertices.groupCounts[group], group, slot, count)
                .str();
        }
    }
    return {};
}

/// The first corner outside `limit`; `whose` and `what` go into the text.
S_String findCornerFault(const S_Vector<PolygonChunk>& polygons, std::size_t limit, const char* whose, const char* what)
{
    for (std::size_t polygon = 0; polygon < polygons.size(); ++polygon)
    {
        for (const int corner : polygons[polygon].vertexIndices)
        {
            if (corner < 0 || static_cast<std::size_t>(corner) >= limit)
            {
                return S_STR("%s polygon %zu to name %s from 0 to below %zu, found %i", whose, polygon, what, limit,
                             corner)
                    .str();
            }
        }
    }
    return {};
}

S_String findLegacyChannelFault(const MeshChunk& mesh, std::size_t slot)
{
    const TextureChannelChunk& channel = mesh.channels[slot];
    if (channel.polygons.empty())
    {
        return {};
    }
    if (channel.polygons.size() != mesh.faces.polygons.size())
    {
        return S_STR("as many polygons in texture channel %zu as in the mesh, %zu, found %zu", slot,
                     mesh.faces.polygons.size(), channel.polygons.size())
            .str();
    }
    return findCornerFault(channel.polygons, channel.coordinates.size(), S_STR("texture channel %zu,", slot),
                           "coordinates");
}

}  // namespace

S_String findFault(const MeshVertexChunk& vertices)
{
    if (vertices.normals.size() != vertices.positions.size())
    {
        return S_STR("as many normals as positions, %zu, found %zu", vertices.positions.size(), vertices.normals.size())
            .str();
    }
    return findSumFault(vertices.groupCounts, vertices.positions.size(), "vertices");
}

S_String findFault(const MeshFaceChunk& faces)
{
    if (faces.indices.size() % 3 != 0)
    {
        return S_STR("three indices per triangle, found %zu indices", faces.indices.size()).str();
    }
    return findSumFault(faces.groupCounts, faces.indices.size() / 3, "triangles");
}

S_String findFault(const TextureChannelChunk& channel)
{
    return findSumFault(channel.groupCounts, channel.coordinates.size(), "coordinates");
}

S_String findFault(const MeshChunk& mesh)
{
    if (!mesh.hasVertices || !mesh.hasFaces)
    {
        return {};
    }
    S_String fault = findGroupFault(mesh);
    fault = fault.empty() ? findIndexFault(mesh) : fault;
    for (std::size_t slot = 0; fault.empty() && slot < mesh.channels.size(); ++slot)
    {
        fault = findChannelFault(mesh, slot);
    }
    return fault;
}

S_String findLegacyFault(const MeshChunk& mesh)
{
    if (mesh.faces.hasIndices)
    {
        return S_STR("polygons in the faces of a mesh of the old layout, found indices").str();
    }
    S_String fault = findCornerFault(mesh.faces.polygons, mesh.vertices.positions.size(), "mesh", "vertices");
    for (std::size_t slot = 0; fault.empty() && slot < mesh.channels.size(); ++slot)
    {
        fault = findLegacyChannelFault(mesh, slot);
    }
    return fault;
}

void requireSound(const MeshChunk& mesh, const char* done, const S_String& fault)
{
    if (!fault.empty())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Mesh \"%s\" cannot be %s, expected %s", mesh.name.c_str(), done, fault.c_str()));
    }
}

void requireFit(const S_MemoryFile& file, const S_String& fault)
{
    if (!fault.empty())
    {
        file.fail(fault.c_str());
    }
}
}  // namespace TW2
