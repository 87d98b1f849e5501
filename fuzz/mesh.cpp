#include <tw2/core/exceptions.h>
#include <tw2/io/mesh_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace
{
using TW2::MeshChunk;

void require(bool condition)
{
    if (!condition)
    {
        std::abort();
    }
}

/// Follows every index of the record as those do who build geometry from it.
void useMesh(const MeshChunk& mesh)
{
    if (!mesh.hasVertices || !mesh.hasFaces || !mesh.vertices.hasNormals || !mesh.faces.hasIndices)
    {
        return;
    }
    const std::size_t groups = mesh.getGroupCount();
    require(groups >= 1 && mesh.faces.groupCounts.size() == groups);
    require(!mesh.hasMaterials || mesh.materials.names.empty() || mesh.materials.names.size() == groups);
    float sum = 0;
    for (std::size_t group = 0; group < groups; ++group)
    {
        for (std::size_t triangle = 0; triangle < mesh.getTriangleCount(group); ++triangle)
        {
            for (std::size_t corner = 0; corner < 3; ++corner)
            {
                const std::size_t vertex = mesh.getIndex(group, triangle, corner);
                require(vertex < mesh.getVertexCount(group));
                sum += mesh.getPosition(group, vertex).x + mesh.getNormal(group, vertex).y;
            }
        }
        for (std::size_t vertex = 0; mesh.hasVertexMap() && vertex < mesh.getVertexCount(group); ++vertex)
        {
            require(mesh.getVertexMapEntry(group, vertex) >= 0);
        }
        for (std::size_t slot = 0; slot < MeshChunk::channelSlots; ++slot)
        {
            const int count = mesh.channelUsed[slot] ? mesh.getCoordinateCount(slot, group) : 0;
            require(count == 0 || count == static_cast<int>(mesh.getVertexCount(group)));
            for (int vertex = 0; vertex < count; ++vertex)
            {
                sum += mesh.getCoordinate(slot, group, static_cast<std::size_t>(vertex)).x;
            }
        }
    }
    static volatile float s_sink;
    s_sink = s_sink + sum;
}

S_MemoryFileWriter write(const MeshChunk& mesh)
{
    S_MemoryFileWriter writer;
    writer << mesh;
    return writer;
}

void readInto(MeshChunk& mesh, const void* data, std::size_t size)
{
    S_MemoryFile file;
    file.constructFromMemory("input", data, size);
    mesh.reset();
    file >> mesh;
}

/// What was written from the record reads back as the same. Lists of a layout without groups cannot be written.
void writeAndRead(const MeshChunk& mesh)
{
    S_MemoryFileWriter first;
    try
    {
        first = write(mesh);
    }
    catch (const TW2::TW_Exception_InvalidGeometry&)
    {
        return;
    }
    MeshChunk again;
    readInto(again, first.getBytes().data(), first.getBytes().size());
    useMesh(again);
    require(write(again).getBytes() == first.getBytes());
}
}  // namespace

// Any bytes as a mesh chunk, of the old layouts too: refused with an exception, or every index of the record is good.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MeshChunk s_mesh;
    try
    {
        readInto(s_mesh, data, size);
    }
    catch (const S_MemoryFileException&)
    {
        return 0;
    }
    catch (const std::length_error&)  // a negative count
    {
        return 0;
    }
    useMesh(s_mesh);
    writeAndRead(s_mesh);
    return 0;
}
