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
    S_Vector<M_Vector3Template<float>> positions;  ///< in the mesh's own space
    bool hasNormals = true;                        ///< `normals` are valid
    S_Vector<M_Vector3Template<float>> normals;    ///< one per position
    S_Vector<unsigned int> groupOffsets;           ///< first vertex of each group
    S_Vector<unsigned int> groupCounts;            ///< vertices of each group
    /// For each vertex the vertex of the file's list that it was made from. Only meshes of the old layout have one.
    S_Vector<int> vertexMap;

    /// Restores the defaults; lists keep their storage.
    TW2_API void reset() noexcept;

    friend bool operator==(const MeshVertexChunk&, const MeshVertexChunk&) = default;
};

/// One triangle of the old mesh layout.
struct PolygonChunk
{
    int vertexIndices[3] = {0, 0, 0};  ///< counted from the first vertex of the file's list
    int vertexCount = 0;               ///< corners that the file gave; those past the third were dropped

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
    S_Vector<unsigned int> masks;  ///< bit b: the polygon is in smoothing group b

    /// Empties the list; it keeps its storage.
    void reset() noexcept { masks.clear(); }

    friend bool operator==(const MeshSmoothingGroupChunk&, const MeshSmoothingGroupChunk&) = default;
};

/// Names of a mesh's materials, one per group.
struct MeshMaterialChunk
{
    S_Vector<S_String> names;     ///< one per group; empty: one group without material
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
/// Whatever layout the file has, a record with vertices and faces is in the current one when it was read: vertices and
/// triangles in groups, one group per material name, or a single group without names. Its lists fit each other: the
/// reader has checked every index and every count, so consumers need not. A record that lacks either, and a mesh chunk
/// of version 2 or later whose vertices or faces are of the old layout, is left as it is in the file, unchecked: the
/// parts say so (`hasVertices`, `hasFaces`, `hasNormals`, `hasIndices`), and no object can be built from it.
///
/// Making a record also makes the first set of work lists of the conversion from old layouts; see `deleteStaticData`.
struct MeshChunk : NodeChunk
{
    static constexpr std::size_t channelSlots = 10;         ///< texture coordinate sets that a mesh can have
    static constexpr std::size_t maxGroupVertices = 65536;  ///< indices have 16 bits

    bool hasVertices = false;  ///< the mesh has geometry of its own
    /// All vertices, group by group.
    MeshVertexChunk vertices;
    bool hasFaces = false;  ///< the mesh has triangles
    /// All triangles, group by group.
    MeshFaceChunk faces;
    bool hasSmoothingGroups = false;  ///< `smoothingGroups` is filled (old layout)
    /// Masks of the old layout's polygons; the reader has made normals of them.
    MeshSmoothingGroupChunk smoothingGroups;
    bool hasMaterials = false;  ///< `materials` is filled
    /// Names of the groups' materials.
    MeshMaterialChunk materials;
    S_Vector<bool> channelUsed;              ///< which slots are filled; always `channelSlots` entries
    S_Vector<TextureChannelChunk> channels;  ///< slots in the order of the file; always `channelSlots` entries
    bool hasInstance = false;                ///< `instanceOf` is filled
    /// The mesh of the same animated object whose geometry this one shares; such a mesh has none of its own.
    S_String instanceOf;

    TW2_API MeshChunk();

    /// Restores the state of a new record, also of one that was moved from; lists keep their storage.
    TW2_API void reset();

    /// @name Groups
    /// Asked of a record in the current layout; group, vertex, triangle, corner and slot must exist.
    /// @{

    /// Groups: one per material name, or one without names.
    [[nodiscard]] std::size_t getGroupCount() const noexcept { return vertices.groupCounts.size(); }
    /// Vertices of a group. Triangles reach the first `maxGroupVertices` of them.
    [[nodiscard]] unsigned int getVertexCount(std::size_t group) const { return vertices.groupCounts[group]; }
    /// Triangles of a group.
    [[nodiscard]] unsigned int getTriangleCount(std::size_t group) const
    {
        return faces.hasIndices ? faces.groupCounts[group] : 0;
    }
    /// Position of a vertex of a group, in the mesh's own space.
    [[nodiscard]] const M_Vector3Template<float>& getPosition(std::size_t group, std::size_t vertex) const
    {
        return vertices.positions[vertices.groupOffsets[group] + vertex];
    }
    /// Normal of a vertex of a group, as the file has it: not always of length 1.
    [[nodiscard]] const M_Vector3Template<float>& getNormal(std::size_t group, std::size_t vertex) const
    {
        return vertices.normals[vertices.groupOffsets[group] + vertex];
    }
    /// Whether the record has a vertex map (old layout).
    [[nodiscard]] bool hasVertexMap() const noexcept { return !vertices.vertexMap.empty(); }
    /// The vertex of the file's list that this one was made from; only with a vertex map.
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
    /// Texture coordinate of a vertex in a slot; only where `getCoordinateCount` is not 0. The library uses x and y as
    /// u and v.
    [[nodiscard]] const M_Vector3Template<float>& getCoordinate(std::size_t slot, std::size_t group,
                                                                std::size_t vertex) const
    {
        const TextureChannelChunk& channel = channels[slot];
        return channel.coordinates[static_cast<std::size_t>(channel.groupOffsets[group]) + vertex];
    }
    /// One name per group, or none.
    [[nodiscard]] const S_Vector<S_String>& getMaterialNames() const noexcept { return materials.names; }
    /// The mesh whose geometry this one shares; only with `hasInstance`.
    [[nodiscard]] const S_String& getInstanceName() const noexcept { return instanceOf; }
    /// @}

    /// @name Writing
    /// Each hands out one part and marks it as present.
    /// @{

    /// Positions and normals; see MeshVertexChunk.
    MeshVertexChunk& editVertices() noexcept
    {
        hasVertices = true;
        return vertices;
    }
    /// Triangles; see MeshFaceChunk.
    MeshFaceChunk& editFaces() noexcept
    {
        hasFaces = true;
        return faces;
    }
    /// Smoothing groups, for files of the old layout.
    MeshSmoothingGroupChunk& editSmoothingGroups() noexcept
    {
        hasSmoothingGroups = true;
        return smoothingGroups;
    }
    /// Names of the materials, one per group.
    MeshMaterialChunk& editMaterials() noexcept
    {
        hasMaterials = true;
        return materials;
    }
    /// The texture coordinates of a slot below `channelSlots`.
    TextureChannelChunk& editChannel(std::size_t slot)
    {
        channelUsed[slot] = true;
        return channels[slot];
    }
    /// The mesh whose geometry this one shares.
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

/// Reads one part, from the chunk at the file's position. Throws S_MemoryFileException.
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

/// Writes a part, or a whole mesh with all its parts. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshVertexChunk& vertices);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PolygonChunk& polygon);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshFaceChunk& faces);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshSmoothingGroupChunk& smoothingGroups);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshMaterialChunk& materials);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TextureChannelChunk& channel);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MeshChunk& mesh);
/// @}
}  // namespace TW2
