// Readers and writers of the parts of a mesh chunk.
#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/mesh_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>
#include <platform/runtime/str.h>

#include <io/mesh_faults.h>
#include <io/nested_chunk.h>

#include <algorithm>

namespace TW2
{
namespace
{
/// From this version on, vertices, faces and texture channels are blocks with groups; before, they were single values
/// and polygons, and material names were followed by the material of each polygon.
constexpr unsigned int s_versionGroups = 1;

constexpr std::size_t s_vectorBytes = 12;
constexpr std::size_t s_intBytes = 4;
// A polygon takes at least its header and its corner count.
constexpr std::size_t s_polygonBytes = S_MemoryFile::sm_headerSize + s_intBytes;

using Vectors = S_Vector<M_Vector3Template<float>>;

/// Makes the offsets of groups from their counts: each is the sum of the counts before it, `step` for each element.
template <typename T>
void makeOffsets(S_Vector<T>& offsets, const S_Vector<T>& counts, unsigned int step)
{
    offsets.clear();
    offsets.reserve(counts.size());
    unsigned int offset = 0;
    for (const T count : counts)
    {
        offsets.push_back(static_cast<T>(offset));
        offset += step * static_cast<unsigned int>(count);
    }
}

template <typename T>
void readGroups(S_MemoryFile& file, S_Vector<T>& offsets, S_Vector<T>& counts, unsigned int step)
{
    counts.resize(file.readUnsignedCount(s_intBytes));
    for (T& count : counts)
    {
        file >> count;
    }
    makeOffsets(offsets, counts, step);
}

template <typename T>
void writeGroups(S_MemoryFileWriter& writer, const S_Vector<T>& counts)
{
    writer.writeCount(counts.size());
    for (const T count : counts)
    {
        writer << count;
    }
}

void readVectorsOneByOne(S_MemoryFile& file, Vectors& vectors, std::size_t count)
{
    vectors.resize(count);
    for (M_Vector3Template<float>& vector : vectors)
    {
        file >> vector;
    }
}

void readPolygons(S_MemoryFile::Chunk& chunk, S_Vector<PolygonChunk>& polygons)
{
    polygons.resize(chunk.getMemoryFile().readCount(s_polygonBytes));
    for (PolygonChunk& polygon : polygons)
    {
        readNested(chunk, polygon);
    }
}

void skipInts(S_MemoryFile& file, int count)
{
    for (int i = 0; i < count; ++i)
    {
        int value = 0;
        file >> value;
    }
}

template <typename Part>
void requireFit(S_MemoryFile& file, const Part& part)
{
    if (const S_String fault = findFault(part); !fault.empty())
    {
        file.fail(fault.c_str());
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
    positions.clear();
    hasNormals = true;
    normals.clear();
    groupOffsets.clear();
    groupCounts.clear();
    vertexMap.clear();
}

void MeshFaceChunk::reset() noexcept
{
    polygons.clear();
    hasIndices = true;
    groupCounts.clear();
    groupOffsets.clear();
    indices.clear();
}

void MeshMaterialChunk::reset() noexcept
{
    names.clear();
    faceMaterials.clear();
}

void TextureChannelChunk::reset() noexcept
{
    coordinates.clear();
    polygons.clear();
    channel = 0;
    groupOffsets.clear();
    groupCounts.clear();
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshVertexChunk& vertices)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MESH_VERTICES);
    S_MemoryFile& body = chunk.getMemoryFile();
    vertices.reset();
    if (chunk.getVersion() < s_versionGroups)
    {
        vertices.hasNormals = false;
        const std::size_t count = body.readCount(s_vectorBytes);
        readVectorsOneByOne(body, vertices.positions, count);
        vertices.normals.resize(count);
        return file;
    }
    const std::size_t count = body.readUnsignedCount(2 * s_vectorBytes);
    body.readBlock(vertices.positions, count);
    body.readBlock(vertices.normals, count);
    readGroups(body, vertices.groupOffsets, vertices.groupCounts, 1);
    requireFit(body, vertices);
    return file;
}

S_MemoryFile& operator>>(S_MemoryFile& file, PolygonChunk& polygon)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_POLYGON);
    S_MemoryFile& body = chunk.getMemoryFile();
    body >> polygon.vertexCount;
    if (polygon.vertexCount < 0)
    {
        body.fail(S_STR("a polygon of at least 0 corners, found %i", polygon.vertexCount));
    }
    const std::size_t corners = static_cast<std::size_t>(polygon.vertexCount);
    body.requireElements(corners, s_intBytes);
    for (std::size_t i = 0; i < std::min(corners, std::size(polygon.vertexIndices)); ++i)
    {
        body >> polygon.vertexIndices[i];
    }
    return file;
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshFaceChunk& faces)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MESH_FACES);
    S_MemoryFile& body = chunk.getMemoryFile();
    faces.reset();
    if (chunk.getVersion() < s_versionGroups)
    {
        faces.hasIndices = false;
        readPolygons(chunk, faces.polygons);
        faces.indices.resize(3 * faces.polygons.size());
        skipInts(body, 2);
        return file;
    }
    const std::size_t count = body.readUnsignedCount(sizeof(std::uint16_t));
    body.readBlock(faces.indices, count);
    readGroups(body, faces.groupOffsets, faces.groupCounts, 3);
    requireFit(body, faces);
    return file;
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshSmoothingGroupChunk& smoothingGroups)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MESH_SMOOTHING_GROUPS);
    S_MemoryFile& body = chunk.getMemoryFile();
    body.readBlock(smoothingGroups.masks, body.readCount(s_intBytes));
    return file;
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshMaterialChunk& materials)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MESH_MATERIALS);
    S_MemoryFile& body = chunk.getMemoryFile();
    materials.faceMaterials.clear();
    materials.names.resize(body.readCount(s_intBytes));
    for (S_String& name : materials.names)
    {
        body >> name;
    }
    if (chunk.getVersion() < s_versionGroups)
    {
        body.readBlock(materials.faceMaterials, body.readCount(s_intBytes));
    }
    return file;
}

S_MemoryFile& operator>>(S_MemoryFile& file, TextureChannelChunk& channel)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_TEXTURE_CHANNEL);
    S_MemoryFile& body = chunk.getMemoryFile();
    channel.reset();
    body >> channel.channel;
    if (chunk.getVersion() < s_versionGroups)
    {
        readPolygons(chunk, channel.polygons);
        skipInts(body, 2);
        readVectorsOneByOne(body, channel.coordinates, body.readCount(s_vectorBytes));
        return file;
    }
    const std::size_t count = body.readUnsignedCount(s_vectorBytes);
    body.readBlock(channel.coordinates, count);
    readGroups(body, channel.groupOffsets, channel.groupCounts, 1);
    requireFit(body, channel);
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshVertexChunk& vertices)
{
    requireWritable(vertices);
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MESH_VERTICES, s_versionGroups);
    writer.writeCount(vertices.positions.size());
    writer.writeBlock(vertices.positions);
    writer.writeBlock(vertices.normals);
    writeGroups(writer, vertices.groupCounts);
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PolygonChunk& polygon)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_POLYGON, 0);
    const int corners = std::clamp(polygon.vertexCount, 0, static_cast<int>(std::size(polygon.vertexIndices)));
    writer << corners;
    for (int i = 0; i < corners; ++i)
    {
        writer << polygon.vertexIndices[i];
    }
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshFaceChunk& faces)
{
    requireWritable(faces);
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MESH_FACES, s_versionGroups);
    writer.writeCount(faces.indices.size());
    writer.writeBlock(faces.indices);
    writeGroups(writer, faces.groupCounts);
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshSmoothingGroupChunk& smoothingGroups)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MESH_SMOOTHING_GROUPS, 0);
    writer.writeCount(smoothingGroups.masks.size());
    writer.writeBlock(smoothingGroups.masks);
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshMaterialChunk& materials)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MESH_MATERIALS, s_versionGroups);
    writer.writeCount(materials.names.size());
    for (const S_String& name : materials.names)
    {
        writer << name;
    }
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TextureChannelChunk& channel)
{
    requireWritable(channel);
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_TEXTURE_CHANNEL, s_versionGroups);
    writer << channel.channel;
    writer.writeCount(channel.coordinates.size());
    writer.writeBlock(channel.coordinates);
    writeGroups(writer, channel.groupCounts);
    return writer;
}
}  // namespace TW2
