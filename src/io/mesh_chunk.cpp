#include "io/chunk_values.h"
#include "io/legacy_mesh_conversion.h"
#include "io/legacy_mesh_work_lists.h"
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
/// From this version on a mesh is in groups; before, it was polygons that are converted on reading.
constexpr unsigned int versionGroups = 2;

constexpr auto describeInstance = [](auto& chunk, auto& name) { chunk.values(name); };

/// Channels past the last slot are left out.
void readChannel(S_MemoryFile& file, MeshChunk& mesh)
{
    const auto slot = std::find(mesh.channelUsed.begin(), mesh.channelUsed.end(), false);
    if (slot != mesh.channelUsed.end())
    {
        file >> mesh.editChannel(static_cast<std::size_t>(slot - mesh.channelUsed.begin()));
    }
}

void readPart(S_MemoryFile& file, unsigned int id, MeshChunk& mesh)
{
    switch (id)
    {
        case CHUNK_NODE:
            file >> static_cast<NodeChunk&>(mesh);
            break;
        case CHUNK_MESH_VERTICES:
            file >> mesh.editVertices();
            break;
        case CHUNK_MESH_FACES:
            file >> mesh.editFaces();
            break;
        case CHUNK_MESH_SMOOTHING_GROUPS:
            file >> mesh.editSmoothingGroups();
            break;
        case CHUNK_MESH_MATERIALS:
            file >> mesh.editMaterials();
            break;
        case CHUNK_TEXTURE_CHANNEL:
            readChannel(file, mesh);
            break;
        case CHUNK_MESH_INSTANCE:
            readRecord(file, CHUNK_MESH_INSTANCE, mesh.editInstanceName(), describeInstance);
            break;
        default:
            break;
    }
}

/// Whether the lists are in groups. Parts of the old layout stay in polygons in a mesh that claims the current one.
bool isInGroups(const MeshChunk& mesh)
{
    return mesh.hasVertices && mesh.hasFaces && mesh.vertices.hasNormals && mesh.faces.hasIndices;
}

/// A mesh without names has one group, also when there is nothing in it and the file therefore has none.
void addEmptyGroup(MeshChunk& mesh)
{
    const bool hasNames = mesh.hasMaterials && !mesh.materials.names.empty();
    if (hasNames || !mesh.vertices.positions.empty() || !mesh.vertices.groupCounts.empty() ||
        !mesh.faces.groupCounts.empty())
    {
        return;
    }
    mesh.vertices.groupOffsets.assign(1, 0);
    mesh.vertices.groupCounts.assign(1, 0);
    mesh.faces.groupOffsets.assign(1, 0);
    mesh.faces.groupCounts.assign(1, 0);
}

/// Slots are filled in the order of the file, so a record with a gap would come back as another one.
S_String findSlotFault(const MeshChunk& mesh)
{
    const auto gap = std::find(mesh.channelUsed.begin(), mesh.channelUsed.end(), false);
    if (std::find(gap, mesh.channelUsed.end(), true) == mesh.channelUsed.end())
    {
        return {};
    }
    return S_STR("texture channels without a gap, slot %zu is empty",
                 static_cast<std::size_t>(gap - mesh.channelUsed.begin()))
        .str();
}

void requireWritable(const MeshChunk& mesh)
{
    S_String fault = mesh.hasVertices ? findFault(mesh.vertices) : S_String();
    if (fault.empty() && mesh.hasFaces)
    {
        fault = findFault(mesh.faces);
    }
    if (fault.empty())
    {
        fault = findSlotFault(mesh);
    }
    for (std::size_t slot = 0; fault.empty() && slot < mesh.channels.size() && mesh.channelUsed[slot]; ++slot)
    {
        fault = findFault(mesh.channels[slot]);
    }
    if (fault.empty() && mesh.hasVertices && mesh.hasFaces && !isInGroups(mesh))
    {
        fault = "vertices with normals and faces with indices";
    }
    if (fault.empty())
    {
        fault = findFault(mesh);
    }
    if (!fault.empty())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("Mesh \"%s\" cannot be written, expected %s", mesh.name.c_str(), fault.c_str()));
    }
}
}  // namespace

MeshChunk::MeshChunk() : channelUsed(channelSlots, false), channels(channelSlots)
{
    buildLegacyMeshLists();
}

void MeshChunk::reset()
{
    NodeChunk::reset();
    hasVertices = false;
    vertices.reset();
    hasFaces = false;
    faces.reset();
    hasSmoothingGroups = false;
    smoothingGroups.reset();
    hasMaterials = false;
    materials.reset();
    // Also after someone has moved the slots out.
    channelUsed.assign(channelSlots, false);
    channels.resize(channelSlots);
    for (TextureChannelChunk& channel : channels)
    {
        channel.reset();
    }
    hasInstance = false;
    instanceOf.clear();
}

S_MemoryFile& operator>>(S_MemoryFile& file, MeshChunk& mesh)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MESH);
    S_MemoryFile& body = chunk.getMemoryFile();
    S_MemoryFile::Chunk part;
    for (chunk.peekChunk(part); part.isValid(); chunk.peekChunk(part))
    {
        readPart(body, part.getID(), mesh);
        chunk.skipChunk();
    }
    if (chunk.getVersion() < versionGroups && mesh.hasVertices && mesh.hasFaces)
    {
        requireFit(body, findLegacyFault(mesh));
        requireFit(body, convertLegacyMesh(mesh));
    }
    if (isInGroups(mesh))
    {
        addEmptyGroup(mesh);
        requireFit(body, findFault(mesh));
    }
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshChunk& mesh)
{
    requireWritable(mesh);
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MESH, versionGroups);
    writer << static_cast<const NodeChunk&>(mesh);
    if (mesh.hasMaterials)
    {
        writer << mesh.materials;
    }
    if (mesh.hasVertices)
    {
        writer << mesh.vertices;
    }
    if (mesh.hasFaces)
    {
        writer << mesh.faces;
    }
    if (mesh.hasSmoothingGroups)
    {
        writer << mesh.smoothingGroups;
    }
    for (std::size_t slot = 0; slot < mesh.channels.size() && mesh.channelUsed[slot]; ++slot)
    {
        writer << mesh.channels[slot];
    }
    if (mesh.hasInstance)
    {
        writeRecord(writer, CHUNK_MESH_INSTANCE, 0, mesh.instanceOf, describeInstance);
    }
    return writer;
}
}  // namespace TW2
