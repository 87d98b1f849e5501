#pragma once

#include "tests/support/chunk_files.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/material/material_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/math/vector3.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace support
{
/// Size of one group of a mesh.
struct GroupSize
{
    unsigned int vertices;
    unsigned int triangles;
};

/// A mesh of groups of these sizes, below another (empty: below the object). Vertex n of the whole mesh stands at
/// (n, 2n, -n) with the normal (0, 0, 1); triangle t of a group has the corners t, t + 1, t + 2.
inline TW2::MeshChunk makeMesh(const std::string& name, const std::string& parent = "",
                               const std::vector<GroupSize>& groups = {{3, 1}})
{
    TW2::MeshChunk mesh;
    mesh.name = name;
    mesh.hasParent = !parent.empty();
    mesh.parentName = parent;
    TW2::MeshVertexChunk& vertices = mesh.editVertices();
    TW2::MeshFaceChunk& faces = mesh.editFaces();
    for (const GroupSize& group : groups)
    {
        vertices.groupOffsets.push_back(static_cast<unsigned int>(vertices.positions.size()));
        vertices.groupCounts.push_back(group.vertices);
        for (unsigned int j = 0; j < group.vertices; ++j)
        {
            const auto n = static_cast<float>(vertices.positions.size());
            vertices.positions.emplace_back(n, 2.0f * n, -n);
            vertices.normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
        faces.groupOffsets.push_back(static_cast<unsigned int>(faces.indices.size()));
        faces.groupCounts.push_back(group.triangles);
        for (unsigned int corner = 0; corner < 3 * group.triangles; ++corner)
        {
            faces.indices.push_back(static_cast<std::uint16_t>(corner / 3 + corner % 3));
        }
    }
    return mesh;
}

/// Gives every group of `mesh` a material.
inline void setMaterials(TW2::MeshChunk& mesh, const std::vector<std::string>& names)
{
    mesh.editMaterials().names.assign(names.begin(), names.end());
}

/// Fills a channel slot: vertex n of the whole mesh gets (first + n, -n). Groups with a false in `filled` get none.
inline void setChannel(TW2::MeshChunk& mesh, std::size_t slot, float first, const std::vector<bool>& filled = {})
{
    TW2::TextureChannelChunk& channel = mesh.editChannel(slot);
    channel.channel = static_cast<int>(slot) + 1;
    for (std::size_t g = 0; g < mesh.vertices.groupCounts.size(); ++g)
    {
        const unsigned int count = g >= filled.size() || filled[g] ? mesh.vertices.groupCounts[g] : 0;
        channel.groupOffsets.push_back(static_cast<int>(channel.coordinates.size()));
        channel.groupCounts.push_back(static_cast<int>(count));
        for (unsigned int j = 0; j < count; ++j)
        {
            const auto n = static_cast<float>(mesh.vertices.groupOffsets[g] + j);
            channel.coordinates.emplace_back(first + n, -n, 0.0f);
        }
    }
}

/// A track that moves `target` evenly from x = 0 at frame 0 to x = `distance` at the last frame, and stays there.
inline TW2::KeyframeAnimationChunk makeTrack(const std::string& target, float distance, unsigned int frames = 11,
                                             int frameRate = 10)
{
    TW2::KeyframeAnimationChunk track;
    track.header.targetName = target;
    track.header.frameRate = frameRate;
    track.totalFrameCount = frames;
    track.keys.resize(2);
    track.keys[1].frame = frames - 1;
    track.keys[1].matrix = M_Matrix4x3Template<float>::translation({distance, 0.0f, 0.0f});
    return track;
}

/// The bones that move a vertex, by their numbers, and their weights.
using Influences = std::vector<std::pair<int, float>>;

/// Skin data of one mesh "body": for each primitive the influences of its vertices.
inline TW2::SkinChunk makeSkin(const std::vector<const char*>& bones,
                               const std::vector<std::vector<Influences>>& primitives)
{
    TW2::SkinChunk skin;
    skin.objectNames = {"body"};
    skin.boneNames.assign(bones.begin(), bones.end());
    for (const std::vector<Influences>& vertices : primitives)
    {
        skin.primitiveFirstVertices.push_back(static_cast<unsigned int>(skin.vertexBoneCounts.size()));
        skin.primitiveVertexCounts.push_back(static_cast<unsigned int>(vertices.size()));
        for (const Influences& influences : vertices)
        {
            skin.vertexInfluenceStarts.push_back(static_cast<int>(skin.influenceBones.size()));
            skin.vertexBoneCounts.push_back(static_cast<int>(influences.size()));
            for (const auto& [bone, weight] : influences)
            {
                skin.influenceBones.push_back(bone);
                skin.influenceWeights.push_back(weight);
            }
        }
    }
    return skin;
}

/// A material of a plain colour: meshes with it carry one texture coordinate layer, the solid one.
inline TW2::TWMaterialChunk makeSolidMaterial(const std::string& name, const G_FColor& color = {})
{
    TW2::TWMaterialChunk material;
    material.name = name;
    material.shading = TW2::TWMaterialChunk::SHADING_GOURAUD;
    material.diffuseColor = color;
    return material;
}
}  // namespace support
