#include "fuzz/records.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/mesh_chunk.h>

#include <cstdint>

namespace
{
using fuzz::require;
using TW2::MeshChunk;

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

/// What was written from the record reads back as the same. Lists of a layout without groups cannot be written.
void writeAndRead(const MeshChunk& mesh)
{
    S_Bytes file;
    try
    {
        file = fuzz::toBytes(mesh);
    }
    catch (const TW2::TW_Exception_InvalidGeometry&)
    {
        return;
    }
    MeshChunk again;
    fuzz::read(again, file.data(), file.size());
    useMesh(again);
    require(fuzz::toBytes(again) == file);
}
}  // namespace

// Any bytes as a mesh chunk, of the old layouts too: refused with an exception, or every index of the record is good.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MeshChunk s_mesh;
    s_mesh.reset();
    if (fuzz::completes([&] { fuzz::read(s_mesh, data, size); }))
    {
        useMesh(s_mesh);
        writeAndRead(s_mesh);
    }
    return 0;
}
