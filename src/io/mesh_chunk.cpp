#include "io/chunk_values.h"
#include "io/legacy_mesh_conversion.h"
#include "io/legacy_mesh_work_lists.h"
#include "io/mesh_faults.h"

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
S_MemoryFile& readChannel(S_MemoryFile& file, MeshChunk& mesh)
{
    const auto slot = std::find(mesh.channelUsed.begin(), mesh.channelUsed.end(), false);
    return slot == mesh.channelUsed.end()
               ? file
               : file >> mesh.editChannel(static_cast<std::size_t>(slot - mesh.channelUsed.begin()));
}

S_MemoryFile& readPart(S_MemoryFile& file, unsigned int id, MeshChunk& mesh)
{
    switch (id)
    {
        case CHUNK_NODE:
            return file >> static_cast<NodeChunk&>(mesh);
        case CHUNK_MESH_VERTICES:
            return file >> mesh.editVertices();
        case CHUNK_MESH_FACES:
            return file >> mesh.editFaces();
        case CHUNK_MESH_SMOOTHING_GROUPS:
            return file >> mesh.editSmoothingGroups();
        case CHUNK_MESH_MATERIALS:
            return file >> mesh.editMaterials();
        case CHUNK_TEXTURE_CHANNEL:
            return readChannel(file, mesh);
        case CHUNK_MESH_INSTANCE:
            return readRecord(file, CHUNK_MESH_INSTANCE, mesh.editInstanceName(), describeInstance);
        default:
            return file;
    }
}

/// Whether the lists are in groups. Parts of the old layout stay in polygons in a mesh that claims the current one.
bool isInGroups(const MeshChunk& mesh)
{
    return mesh.hasVertices && mesh.hasFaces && mesh.vertices.hasNormals && mesh.faces.hasIndices;
}

/// A mesh of one name, or of none, has one group, also when there is nothing in it and the file therefore has none.
void addEmptyGroup(MeshChunk& mesh)
{
    const bool hasSeveral = mesh.hasMaterials && mesh.materials.names.size() >= 2;
    if (hasSeveral || !mesh.vertices.positions.empty() || !mesh.vertices.groupCounts.empty() ||
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
    requireSound(mesh, "written", mesh.hasVertices ? findFault(mesh.vertices) : S_String());
    requireSound(mesh, "written", mesh.hasFaces ? findFault(mesh.faces) : S_String());
    requireSound(mesh, "written", findSlotFault(mesh));
    for (std::size_t slot = 0; slot < mesh.channels.size() && mesh.channelUsed[slot]; ++slot)
    {
        requireSound(mesh, "written", findFault(mesh.channels[slot]));
    }
    const bool isOldLayout = mesh.hasVertices && mesh.hasFaces && !isInGroups(mesh);
    requireSound(mesh, "written", isOldLayout ? "vertices with normals and faces with indices" : "");
    requireSound(mesh, "written", findFault(mesh));
}
}  // namespace

MeshChunk::MeshChunk() : channelUsed(channelSlots, false), channels(channelSlots)
{
    getLegacyMeshLists();  // those that conversions begin with are there from the first record on
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
    const auto writePart = [&writer](bool isThere, const auto& part)
    {
        if (isThere)
        {
            writer << part;
        }
    };
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MESH, versionGroups);
    writer << static_cast<const NodeChunk&>(mesh);
    writePart(mesh.hasMaterials, mesh.materials);
    writePart(mesh.hasVertices, mesh.vertices);
    writePart(mesh.hasFaces, mesh.faces);
    writePart(mesh.hasSmoothingGroups, mesh.smoothingGroups);
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
