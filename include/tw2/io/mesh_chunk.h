#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>
#include <cstdint>

namespace TW2
{
/// Vertices of a mesh, group by group; a group holds the vertices that one material needs.
struct MeshVertexChunk
{
    S_Vector<M_Vector3Template<float>> positions;
    bool hasNormals = true;                      ///< `normals` are valid
    S_Vector<M_Vector3Template<float>> normals;  ///< one per position
    S_Vector<unsigned int> groupOffsets;         ///< first vertex of each group
    S_Vector<unsigned int> groupCounts;          ///< vertices of each group
    /// For each vertex the vertex of the file's list that it was made from. Only meshes of the old layout have one.
    S_Vector<int> vertexMap;

    /// Restores the defaults; lists keep their storage.
    TW2_API void reset() noexcept;

    friend bool operator==(const MeshVertexChunk&, const MeshVertexChunk&) = default;
};

/// One triangle of the old mesh layout.
struct PolygonChunk
{
    int vertexIndices[3] = {0, 0, 0};
    int vertexCount = 0;  ///< corners that the file gave; those past the third were dropped

    friend bool operator==(const PolygonChunk&, const PolygonChunk&) = default;
};

/// Triangles of a mesh, group by group.
struct MeshFaceChunk
{
    S_Vector<PolygonChunk> polygons;      ///< old layout only
    bool hasIndices = true;               ///< `indices` are valid
    S_Vector<unsigned int> groupCounts;   ///< triangles of each group
    S_Vector<unsigned int> groupOffsets;  ///< of each group's first index in `indices`
    S_Vector<std::uint16_t> indices;      ///< three per triangle, counted from the first vertex of its group

    /// Restores the defaults; lists keep their storage.
    TW2_API void reset() noexcept;

    friend bool operator==(const MeshFaceChunk&, const MeshFaceChunk&) = default;
};

/// Smoothing groups of the old mesh layout: one mask per polygon. Polygons whose masks share a bit are smooth across
/// their common vertices; a polygon with mask 0 is flat.
struct MeshSmoothingGroupChunk
{
    S_Vector<unsigned int> masks;

    /// Empties the list; it keeps its storage.
    void reset() noexcept { masks.clear(); }

    friend bool operator==(const MeshSmoothingGroupChunk&, const MeshSmoothingGroupChunk&) = default;
};

/// Names of a mesh's materials, one per group.
struct MeshMaterialChunk
{
    S_Vector<S_String> names;
    S_Vector<int> faceMaterials;  ///< old layout only: index into `names` for each polygon

    /// Empties the lists; they keep their storage.
    TW2_API void reset() noexcept;

    friend bool operator==(const MeshMaterialChunk&, const MeshMaterialChunk&) = default;
};

/// One set of texture coordinates of a mesh, group by group. A group either has one coordinate per vertex or none.
struct TextureChannelChunk
{
    S_Vector<M_Vector3Template<float>> coordinates;  ///< u, v, w; the library uses u and v
    S_Vector<PolygonChunk> polygons;                 ///< old layout only: one per polygon of the mesh
    int channel = 0;                                 ///< the exporter's channel number
    S_Vector<int> groupOffsets;                      ///< first coordinate of each group
    S_Vector<int> groupCounts;                       ///< coordinates of each group; 0 where it has none

    /// Restores the defaults; lists keep their storage.
    TW2_API void reset() noexcept;

    friend bool operator==(const TextureChannelChunk&, const TextureChannelChunk&) = default;
};

/// One mesh of a scene.
///
/// Whatever layout the file has, a record that was read is in the current one: vertices and triangles in groups, one
/// group per material name, or a single group without names. Its lists fit each other: the reader has checked every
/// index and every count, so consumers need not.
///
/// Making a record also makes the first set of work lists of the conversion from old layouts; see `deleteStaticData`.
struct MeshChunk : NodeChunk
{
    static constexpr std::size_t sm_channelSlots = 10;
    static constexpr std::size_t sm_maxGroupVertices = 65536;  ///< indices have 16 bits

    bool hasVertices = false;
    MeshVertexChunk vertices;
    bool hasFaces = false;
    MeshFaceChunk faces;
    bool hasSmoothingGroups = false;
    MeshSmoothingGroupChunk smoothingGroups;
    bool hasMaterials = false;
    MeshMaterialChunk materials;
    S_Vector<bool> channelUsed;              ///< which slots are filled; always `sm_channelSlots` entries
    S_Vector<TextureChannelChunk> channels;  ///< slots in the order of the file; always `sm_channelSlots` entries
    bool hasInstance = false;
    /// The mesh of the same animated object whose geometry this one shares; such a mesh has none of its own.
    S_String instanceOf;

    TW2_API MeshChunk();

    /// Restores the state of a new record, also of one that was moved from; lists keep their storage.
    TW2_API void reset();

    /// @name Groups
    /// Asked of a record in the current layout; group, vertex, triangle, corner and slot must exist.
    /// @{
    [[nodiscard]] std::size_t getGroupCount() const noexcept { return vertices.groupCounts.size(); }
    [[nodiscard]] unsigned int getVertexCount(std::size_t group) const { return vertices.groupCounts[group]; }
    [[nodiscard]] unsigned int getTriangleCount(std::size_t group) const { return faces.groupCounts[group]; }
    [[nodiscard]] const M_Vector3Template<float>& getPosition(std::size_t group, std::size_t vertex) const
    {
        return vertices.positions[vertices.groupOffsets[group] + vertex];
    }
    [[nodiscard]] const M_Vector3Template<float>& getNormal(std::size_t group, std::size_t vertex) const
    {
        return vertices.normals[vertices.groupOffsets[group] + vertex];
    }
    /// Whether the record has a vertex map (old layout).
    [[nodiscard]] bool hasVertexMap() const noexcept { return !vertices.vertexMap.empty(); }
    [[nodiscard]] int getVertexMapEntry(std::size_t group, std::size_t vertex) const
    {
        return vertices.vertexMap[vertices.groupOffsets[group] + vertex];
    }
    /// `corner` is 0, 1 or 2; the index counts from the group's first vertex.
    [[nodiscard]] std::uint16_t getIndex(std::size_t group, std::size_t triangle, std::size_t corner) const
    {
        return faces.indices[faces.groupOffsets[group] + 3 * triangle + corner];
    }
    /// Coordinates of a group in a channel slot: its vertex count, or 0 also where the channel knows no such group.
    [[nodiscard]] int getCoordinateCount(std::size_t slot, std::size_t group) const
    {
        const TextureChannelChunk& channel = channels[slot];
        return group < channel.groupCounts.size() ? channel.groupCounts[group] : 0;
    }
    [[nodiscard]] const M_Vector3Template<float>& getCoordinate(std::size_t slot, std::size_t group,
                                                                std::size_t vertex) const
    {
        const TextureChannelChunk& channel = channels[slot];
        return channel.coordinates[static_cast<std::size_t>(channel.groupOffsets[group]) + vertex];
    }
    [[nodiscard]] const S_Vector<S_String>& getMaterialNames() const noexcept { return materials.names; }
    [[nodiscard]] const S_String& getInstanceName() const noexcept { return instanceOf; }
    /// @}

    /// @name Writing
    /// Each hands out one part and marks it as present.
    /// @{
    MeshVertexChunk& editVertices() noexcept
    {
        hasVertices = true;
        return vertices;
    }
    MeshFaceChunk& editFaces() noexcept
    {
        hasFaces = true;
        return faces;
    }
    MeshSmoothingGroupChunk& editSmoothingGroups() noexcept
    {
        hasSmoothingGroups = true;
        return smoothingGroups;
    }
    MeshMaterialChunk& editMaterials() noexcept
    {
        hasMaterials = true;
        return materials;
    }
    TextureChannelChunk& editChannel(std::size_t slot)
    {
        channelUsed[slot] = true;
        return channels[slot];
    }
    S_String& editInstanceName() noexcept
    {
        hasInstance = true;
        return instanceOf;
    }
    /// @}

    friend bool operator==(const MeshChunk&, const MeshChunk&) = default;
};

/// @name Reading
/// The part readers trust the counts and indices of a part among each other only as far as its own lists go; the mesh
/// reader checks the whole record, converts an old layout and throws S_MemoryFileException for whatever does not fit.
/// @{
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MeshVertexChunk& vertices);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, PolygonChunk& polygon);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MeshFaceChunk& faces);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MeshSmoothingGroupChunk& smoothingGroups);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MeshMaterialChunk& materials);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, TextureChannelChunk& channel);
/// Reads a mesh chunk into a record that is new or reset.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MeshChunk& mesh);
/// @}

/// @name Writing
/// In the current layout: what only the old one has (polygons, face materials, vertex map) is not written.
/// @{
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshVertexChunk& vertices);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PolygonChunk& polygon);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshFaceChunk& faces);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshSmoothingGroupChunk& smoothingGroups);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshMaterialChunk& materials);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TextureChannelChunk& channel);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshChunk& mesh);
/// @}
}  // namespace TW2
