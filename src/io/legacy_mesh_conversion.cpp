#include "io/legacy_mesh_conversion.h"

#include "core/unit_init.h"
#include "io/group_offsets.h"
#include "io/legacy_mesh_work_lists.h"

#include <platform/runtime/system.h>

#include <algorithm>

namespace TW2
{
namespace
{
void listCorners(const S_Vector<PolygonChunk>& polygons, S_Vector<unsigned int>& corners)
{
    corners.clear();
    for (const PolygonChunk& polygon : polygons)
    {
        for (const int vertex : polygon.vertexIndices)
        {
            corners.push_back(static_cast<unsigned int>(vertex));
        }
    }
}

void takeApart(const MeshChunk& mesh, LegacyMeshLists& lists)
{
    lists.positions = mesh.vertices.positions;
    lists.fileVertices = lists.positions.size();
    lists.sources.clear();
    lists.channelCount = 0;
    listCorners(mesh.faces.polygons, lists.corners);
}

void splitByTextures(const MeshChunk& mesh, LegacyMeshLists& lists)
{
    if (!mesh.channelUsed[0] || !mesh.hasMaterials)
    {
        return;
    }
    for (const TextureChannelChunk& channel : mesh.channels)
    {
        if (!channel.polygons.empty())
        {
            listCorners(channel.polygons, lists.textureCorners);
            splitByTexture(channel, lists);
        }
    }
}

template <typename T>
void gather(S_Vector<T>& target, const S_Vector<T>& values, const S_Vector<unsigned int>& vertices)
{
    target.clear();
    target.reserve(vertices.size());
    for (const unsigned int vertex : vertices)
    {
        target.push_back(values[vertex]);
    }
}

template <typename T>
void setGroups(S_Vector<T>& offsets, S_Vector<T>& counts, const S_Vector<unsigned int>& groups, unsigned int step)
{
    counts.assign(groups.begin(), groups.end());
    makeOffsets(offsets, counts, step);
}

void writeVertices(const LegacyMeshLists& lists, MeshVertexChunk& vertices)
{
    gather(vertices.positions, lists.positions, lists.groupVertices);
    gather(vertices.normals, lists.normals, lists.groupVertices);
    vertices.hasNormals = true;
    setGroups(vertices.groupOffsets, vertices.groupCounts, lists.groupVertexCounts, 1);
    vertices.vertexMap.clear();
    for (const unsigned int vertex : lists.groupVertices)
    {
        vertices.vertexMap.push_back(static_cast<int>(lists.getFileVertex(vertex)));
    }
}

void writeFaces(const LegacyMeshLists& lists, MeshFaceChunk& faces)
{
    faces.indices = lists.groupIndices;
    faces.hasIndices = true;
    setGroups(faces.groupOffsets, faces.groupCounts, lists.groupTriangleCounts, 3);
}

void putTogether(const LegacyMeshLists& lists, MeshChunk& mesh)
{
    writeVertices(lists, mesh.editVertices());
    writeFaces(lists, mesh.editFaces());
    mesh.hasSmoothingGroups = true;
    mesh.hasMaterials = mesh.hasMaterials && !mesh.materials.names.empty();
    // The converted channels move up to the first slots; a slot keeps its channel number.
    for (std::size_t slot = 0; slot < lists.channelCount; ++slot)
    {
        TextureChannelChunk& channel = mesh.channels[slot];
        gather(channel.coordinates, lists.channelCoordinates[slot], lists.groupVertices);
        setGroups(channel.groupOffsets, channel.groupCounts, lists.groupVertexCounts, 1);
    }
}
}  // namespace

S_String convertLegacyMesh(MeshChunk& mesh)
{
    LegacyMeshLists& lists = getLegacyMeshLists();
    takeApart(mesh, lists);
    smoothLegacyMesh(mesh.smoothingGroups.masks, lists, getLegacyMeshSmoothingLists());
    splitByTextures(mesh, lists);
    if (S_String fault = groupByMaterial(mesh, lists); !fault.empty())
    {
        return fault;
    }
    putTogether(lists, mesh);
    // The lists are done with: a host's log may let them go.
    if (const std::size_t left = (lists.corners.size() - lists.groupIndices.size()) / 3; left > 0)
    {
        Sys.verbose("Mesh \"%s\": %zu polygons name none of the %zu materials and are left out\n", mesh.name.c_str(),
                    left, mesh.materials.names.size());
    }
    return {};
}
}  // namespace TW2
