// Readers and writers of the parts of a mesh chunk.
#include "io/chunk_values.h"
#include "io/group_offsets.h"
#include "io/mesh_faults.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/mesh_chunk.h>

#include <platform/runtime/str.h>

#include <algorithm>

namespace TW2
{
namespace
{
/// From this version on, vertices, faces and texture channels are blocks with groups; before, they were single values
/// and polygons, and material names were followed by the material of each polygon.
constexpr unsigned int versionGroups = 1;

constexpr std::size_t vectorBytes = 12;
constexpr std::size_t intBytes = 4;
// A polygon takes at least its header and its corner count.
constexpr std::size_t polygonBytes = S_MemoryFile::headerSize + intBytes;

constexpr auto describeVertices = [](auto& chunk, auto& vertices)
{
    chunk.unsignedBlocks(vertices.positions, vertices.normals);
    chunk.unsignedBlocks(vertices.groupCounts);
};

constexpr auto describeFaces = [](auto& chunk, auto& faces)
{
    chunk.unsignedBlocks(faces.indices);
    chunk.unsignedBlocks(faces.groupCounts);
};

constexpr auto describeCoordinates = [](auto& chunk, auto& channel)
{
    chunk.unsignedBlocks(channel.coordinates);
    chunk.unsignedBlocks(channel.groupCounts);
};

constexpr auto describeSmoothingGroups = [](auto& chunk, auto& smoothingGroups) { chunk.block(smoothingGroups.masks); };

constexpr auto describeMaterials = [](auto& chunk, auto& materials) { chunk.list(materials.names, intBytes); };

void readPolygons(ChunkReader& chunk, S_Vector<PolygonChunk>& polygons)
{
    polygons.resize(chunk.getBody().readCount(polygonBytes));
    for (PolygonChunk& polygon : polygons)
    {
        chunk.record(polygon);
    }
    chunk.unused<int>();
    chunk.unused<int>();
}

void readVertices(ChunkReader& chunk, MeshVertexChunk& vertices)
{
    vertices.reset();
    if (!chunk.has(versionGroups))
    {
        vertices.hasNormals = false;
        chunk.list(vertices.positions, vectorBytes);
        vertices.normals.resize(vertices.positions.size());
        return;
    }
    describeVertices(chunk, vertices);
    makeOffsets(vertices.groupOffsets, vertices.groupCounts, 1);
    requireFit(chunk.getBody(), findFault(vertices));
}

void readPolygon(ChunkReader& chunk, PolygonChunk& polygon)
{
    chunk.values(polygon.vertexCount);
    if (polygon.vertexCount < 0)
    {
        chunk.getBody().fail(S_STR("a polygon of at least 0 corners, found %i", polygon.vertexCount));
    }
    const auto corners = static_cast<std::size_t>(polygon.vertexCount);
    chunk.getBody().requireElements(corners, intBytes);
    for (std::size_t i = 0; i < std::min(corners, std::size(polygon.vertexIndices)); ++i)
    {
        chunk.values(polygon.vertexIndices[i]);
    }
}

void readFaces(ChunkReader& chunk, MeshFaceChunk& faces)
{
    faces.reset();
    if (!chunk.has(versionGroups))
    {
        faces.hasIndices = false;
        readPolygons(chunk, faces.polygons);
        faces.indices.resize(3 * faces.polygons.size());
        return;
    }
    describeFaces(chunk, faces);
    makeOffsets(faces.groupOffsets, faces.groupCounts, 3);
    requireFit(chunk.getBody(), findFault(faces));
}

void readMaterials(ChunkReader& chunk, MeshMaterialChunk& materials)
{
    describeMaterials(chunk, materials);
    materials.faceMaterials.clear();
    if (!chunk.has(versionGroups))
    {
        chunk.block(materials.faceMaterials);
    }
}

void readChannel(ChunkReader& chunk, TextureChannelChunk& channel)
{
    channel.reset();
    chunk.values(channel.channel);
    if (!chunk.has(versionGroups))
    {
        readPolygons(chunk, channel.polygons);
        chunk.list(channel.coordinates, vectorBytes);
        return;
    }
    describeCoordinates(chunk, channel);
    makeOffsets(channel.groupOffsets, channel.groupCounts, 1);
    requireFit(chunk.getBody(), findFault(channel));
}

void writeChannel(ChunkWriter& chunk, const TextureChannelChunk& channel)
{
    chunk.values(channel.channel);
    describeCoordinates(chunk, channel);
}

void writePolygon(ChunkWriter& chunk, const PolygonChunk& polygon)
{
    const int corners = std::clamp(polygon.vertexCount, 0, static_cast<int>(std::size(polygon.vertexIndices)));
    chunk.values(corners);
    for (int i = 0; i < corners; ++i)
    {
        chunk.values(polygon.vertexIndices[i]);
    }
}

/// A part that would be rejected on reading is not written.
template <typename Part>
void requireWritable(const Part& part)
{
    if (const S_String fault = findFault(part); !fault.empty())
    {
        throw TW_Exception_InvalidGeometry(S_STR("A mesh cannot be written, expected %s", fault.c_str()));
    }
}
}  // namespace

void MeshVertexChunk::reset() noexcept
{
    clearAll(positions, normals, groupOffsets, groupCounts, vertexMap);
    hasNormals = true;
}

void MeshFaceChunk::reset() noexcept
{
    clearAll(polygons, groupCounts, groupOffsets, indices);
    hasIndices = true;
}

void MeshMaterialChunk::reset() noexcept
{
    clearAll(names, faceMaterials);
}

void TextureChannelChunk::reset() noexcept
{
    clearAll(coordinates, polygons, groupOffsets, groupCounts);
    channel = 0;
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshVertexChunk& vertices)
{
    return readRecord(file, CHUNK_MESH_VERTICES, vertices, readVertices);
}

S_MemoryFile& operator>>(S_MemoryFile& file, PolygonChunk& polygon)
{
    return readRecord(file, CHUNK_POLYGON, polygon, readPolygon);
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshFaceChunk& faces)
{
    return readRecord(file, CHUNK_MESH_FACES, faces, readFaces);
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshSmoothingGroupChunk& smoothingGroups)
{
    return readRecord(file, CHUNK_MESH_SMOOTHING_GROUPS, smoothingGroups, describeSmoothingGroups);
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshMaterialChunk& materials)
{
    return readRecord(file, CHUNK_MESH_MATERIALS, materials, readMaterials);
}

S_MemoryFile& operator>>(S_MemoryFile& file, TextureChannelChunk& channel)
{
    return readRecord(file, CHUNK_TEXTURE_CHANNEL, channel, readChannel);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshVertexChunk& vertices)
{
    requireWritable(vertices);
    return writeRecord(writer, CHUNK_MESH_VERTICES, versionGroups, vertices, describeVertices);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PolygonChunk& polygon)
{
    return writeRecord(writer, CHUNK_POLYGON, 0, polygon, writePolygon);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshFaceChunk& faces)
{
    requireWritable(faces);
    return writeRecord(writer, CHUNK_MESH_FACES, versionGroups, faces, describeFaces);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshSmoothingGroupChunk& smoothingGroups)
{
    return writeRecord(writer, CHUNK_MESH_SMOOTHING_GROUPS, 0, smoothingGroups, describeSmoothingGroups);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshMaterialChunk& materials)
{
    return writeRecord(writer, CHUNK_MESH_MATERIALS, versionGroups, materials, describeMaterials);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TextureChannelChunk& channel)
{
    requireWritable(channel);
    return writeRecord(writer, CHUNK_TEXTURE_CHANNEL, versionGroups, channel, writeChannel);
}
}  // namespace TW2
