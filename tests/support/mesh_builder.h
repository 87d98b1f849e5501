#pragma once

#include "tests/support/chunk_files.h"
#include "tests/support/records.h"

#include <tw2/io/chunk_id.h>
#include <tw2/io/mesh_chunk.h>

#include <platform/runtime/memory_file_writer.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace support
{
using Vector = M_Vector3Template<float>;
using Triangle = std::array<int, 3>;

/// A mesh as files of the old layout have it: polygons with a smoothing mask and a material each, texture polygons.
struct LegacyMesh
{
    struct Channel
    {
        int number = 0;
        std::vector<Vector> coordinates;
        std::vector<Triangle> polygons;
    };

    std::string name = "legacy";
    unsigned int version = 0;  ///< of the mesh chunk: 0 or 1
    std::vector<Vector> positions;
    std::vector<Triangle> polygons;
    std::vector<unsigned int> masks;
    std::vector<std::string> materials;  ///< the part is left out when there is no name
    std::vector<int> faceMaterials;
    std::vector<Channel> channels;
};

/// What writes a list: its count and its elements.
template <typename T>
auto listOf(const std::vector<T>& values)
{
    return [&values](S_MemoryFileWriter& writer)
    {
        writer.writeCount(values.size());
        for (const T& value : values)
        {
            if constexpr (std::is_same_v<T, Triangle>)
            {
                writeChunk(writer, TW2::CHUNK_POLYGON, 0, 3, value[0], value[1], value[2]);
            }
            else
            {
                writer << value;
            }
        }
    };
}

/// Writes a mesh chunk of the old layout.
inline void write(S_MemoryFileWriter& writer, const LegacyMesh& mesh)
{
    const S_MemoryFileWriter::Chunk chunk(writer, TW2::CHUNK_MESH, mesh.version);
    TW2::NodeChunk node;
    node.name = mesh.name;
    writer << node;
    writeChunk(writer, TW2::CHUNK_MESH_VERTICES, 0, listOf(mesh.positions));
    writeChunk(writer, TW2::CHUNK_MESH_FACES, 0, listOf(mesh.polygons), 0, 0);
    if (!mesh.masks.empty())
    {
        writeChunk(writer, TW2::CHUNK_MESH_SMOOTHING_GROUPS, 0, listOf(mesh.masks));
    }
    if (!mesh.materials.empty())
    {
        writeChunk(writer, TW2::CHUNK_MESH_MATERIALS, 0, listOf(mesh.materials), listOf(mesh.faceMaterials));
    }
    for (const LegacyMesh::Channel& channel : mesh.channels)
    {
        writeChunk(writer, TW2::CHUNK_TEXTURE_CHANNEL, 0, channel.number, listOf(channel.polygons), 0, 0,
                   listOf(channel.coordinates));
    }
}

/// A cube of eight corners and twelve triangles, two per side one after the other, all with the same smoothing mask.
/// Corner bits: 1 x, 2 y, 4 z.
inline LegacyMesh makeLegacyCube()
{
    LegacyMesh cube;
    cube.name = "cube";
    for (int corner = 0; corner < 8; ++corner)
    {
        cube.positions.push_back(
            {(corner & 1) != 0 ? 1.0f : -1.0f, (corner & 2) != 0 ? 1.0f : -1.0f, (corner & 4) != 0 ? 1.0f : -1.0f});
    }
    cube.polygons = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                     {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    cube.masks.assign(cube.polygons.size(), 1);
    return cube;
}

/// A rolling field of `columns` by `rows` cells of two triangles, smooth, with one material and texture coordinates of
/// its own for each row of cells, so that vertices between rows are split.
inline LegacyMesh makeLegacyField(int columns, int rows)
{
    LegacyMesh field;
    field.name = "field";
    field.materials = {"ground"};
    LegacyMesh::Channel channel;
    channel.number = 1;
    for (int y = 0; y <= rows; ++y)
    {
        for (int x = 0; x <= columns; ++x)
        {
            const float u = static_cast<float>(x);
            const float v = static_cast<float>(y);
            field.positions.push_back({u, v, std::sin(u * 0.3f) * std::cos(v * 0.2f)});
            channel.coordinates.push_back({u, 0.0f, 0.0f});
            channel.coordinates.push_back({u, 1.0f, 0.0f});
        }
    }
    const int stride = columns + 1;
    for (int y = 0; y < rows; ++y)
    {
        for (int x = 0; x < columns; ++x)
        {
            const int corner = y * stride + x;
            field.polygons.push_back({corner, corner + 1, corner + stride});
            field.polygons.push_back({corner + 1, corner + stride + 1, corner + stride});
            const int below = 2 * corner;
            const int above = 2 * (corner + stride) + 1;
            channel.polygons.push_back({below, below + 2, above});
            channel.polygons.push_back({below + 2, above + 2, above});
        }
    }
    field.masks.assign(field.polygons.size(), 1);
    field.faceMaterials.assign(field.polygons.size(), 0);
    field.channels.push_back(channel);
    return field;
}

/// Triangles around one common vertex (number 0), each with the mask that `maskOf` gives for its number.
template <typename MaskOf>
LegacyMesh makeLegacyFan(int triangles, MaskOf&& maskOf)
{
    LegacyMesh fan;
    fan.name = "fan";
    fan.positions.push_back({0, 0, 1});
    for (int i = 0; i <= triangles; ++i)
    {
        const float angle = static_cast<float>(i) * 0.001f;
        fan.positions.push_back({std::cos(angle), std::sin(angle), angle * 0.01f});
    }
    for (int i = 0; i < triangles; ++i)
    {
        fan.polygons.push_back({0, i + 1, i + 2});
        fan.masks.push_back(maskOf(i));
    }
    return fan;
}

/// A mesh in the current layout: one group per name in `materials` (one without a name when it is empty), each of
/// `triangles` triangles, with normals and one texture channel.
inline TW2::MeshChunk makeStripMesh(const char* name, unsigned int triangles,
                                    const std::vector<std::string>& materials = {})
{
    const std::size_t groups = std::max<std::size_t>(materials.size(), 1);
    TW2::MeshChunk mesh = makeMesh(name, "", std::vector<GroupSize>(groups, {triangles + 2, triangles}));
    if (!materials.empty())
    {
        setMaterials(mesh, materials);
    }
    setChannel(mesh, 0, 0.0f);
    return mesh;
}
}  // namespace support
