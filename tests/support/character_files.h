#pragma once

#include "tests/support/keyframe_tracks.h"
#include "tests/support/records.h"
#include "tests/support/temporary_directory.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/memory_file_writer.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace support
{
/// How the characters of `CharacterFiles` are built.
struct CharacterShape
{
    unsigned int bones = 8;
    unsigned int vertices = 60;  ///< per primitive of the skin's body
    unsigned int primitives = 2;
    unsigned int animations = 2;  ///< indices 0 and up; animation 0 begins at rest
    unsigned int frames = 20;
};

/// A skinned character as files: plain records that a test may change, and what writes them into a folder of its own.
///
///     CharacterFiles files;
///     const TW2::TW_VertexAnimation soldier(files.write().c_str(), "skeleton", "skin");
///
/// The skeleton is a binary tree of bones with rotated rest poses, the skin one mesh "body" around it, each vertex
/// bound to one to four bones. The script has the blocks "skeleton", "skin" and "skinFar" (the same skin, shown further
/// away), in this order.
class CharacterFiles
{
public:
    using Matrix = M_Matrix4x3Template<float>;

    explicit CharacterFiles(const CharacterShape& shape = {})
    {
        m_skinMeshes.push_back(makeBody(shape));
        for (unsigned int i = 0; i < shape.bones; ++i)
        {
            m_bones.push_back(makeBone(i));
            m_skin.boneNames.push_back(m_bones.back().name);
        }
        for (unsigned int a = 0; a < shape.animations; ++a)
        {
            m_animations.push_back(makeAnimation(a, shape.frames));
        }
    }

    /// Writes all files; returns the script's full name.
    std::string write() const
    {
        const std::string skeleton = save("skeleton.tw", m_bones);
        const std::string body = save("body.tw", m_skinMeshes, &m_materials);
        const std::string data = save("body.skd", std::vector{m_skin});
        std::string animations;
        for (std::size_t a = 0; a < m_animations.size(); ++a)
        {
            const std::string file = save("animation" + std::to_string(a) + ".tw", m_animations[a]);
            animations += "animation { index " + std::to_string(a) + " filename \"" + file + "\" }\n";
        }
        const std::string skin =
            "exportdata \"" + body + "\"\n" + (m_bNamesSkinData ? "skindata \"" + data + "\"\n" : "");
        return m_directory.write("character.txt", "skeleton { geometry { exportdata \"" + skeleton + "\" " +
                                                      m_skeletonKeys + " }\n" + animations + "}\n" +
                                                      "skin { geometry { " + skin + m_skinKeys + " } " + m_skinBlocks +
                                                      " }\n" + "skinFar { geometry { " + skin + " distance 100 } }\n");
    }

    [[nodiscard]] const TemporaryDirectory& getDirectory() const { return m_directory; }

    /// @name What is written
    /// @{
    std::vector<TW2::MeshChunk> m_bones;
    std::vector<std::vector<TW2::KeyframeAnimationChunk>> m_animations;
    TW2::MaterialListChunk m_materials;  ///< of the skin
    std::vector<TW2::MeshChunk> m_skinMeshes;
    TW2::SkinChunk m_skin;
    bool m_bNamesSkinData = true;  ///< the skin blocks have a "skindata" key
    std::string m_skeletonKeys;    ///< further lines of the "geometry" block of "skeleton"
    std::string m_skinKeys;        ///< and of "skin"
    std::string m_skinBlocks;      ///< further blocks of "skin"
    /// @}

    /// A mesh of `groups` groups of `vertices` vertices each.
    static TW2::MeshChunk makeMesh(const std::string& name, unsigned int groups, unsigned int vertices)
    {
        TW2::MeshChunk mesh = support::makeMesh(name, "", std::vector<GroupSize>(groups, {vertices, vertices / 3}));
        for (unsigned int g = 0; g < groups && groups > 1; ++g)
        {
            mesh.editMaterials().names.push_back(S_String("material") + static_cast<char>('0' + g));
        }
        for (unsigned int v = 0; v < groups * vertices; ++v)
        {
            const float angle = 0.7f * static_cast<float>(v);
            mesh.vertices.positions[v] = {std::cos(angle), std::sin(angle), 0.01f * static_cast<float>(v)};
            mesh.vertices.normals[v] = {std::cos(angle), std::sin(angle), 0.0f};
        }
        return mesh;
    }

    /// A turn about a slanted axis and a translation.
    static Matrix makeTransform(float angle, const M_Vector3Template<float>& translation)
    {
        Matrix result = rotation(1.0, 0.5, 2.0, static_cast<double>(angle));
        result.setTranslation(translation);
        return result;
    }

private:
    static Matrix makeRest(unsigned int bone)
    {
        const auto b = static_cast<float>(bone);
        return makeTransform(0.3f * b, {0.2f * std::sin(b), 0.1f, bone == 0 ? 0.0f : 0.5f});
    }

    static TW2::MeshChunk makeBone(unsigned int bone)
    {
        TW2::MeshChunk mesh = makeMesh("Bone" + std::to_string(bone), 1, 3);
        mesh.transform = makeRest(bone);
        mesh.hasParent = bone > 0;
        mesh.parentName = bone > 0 ? ("Bone" + std::to_string((bone - 1) / 2)).c_str() : "";
        return mesh;
    }

    TW2::MeshChunk makeBody(const CharacterShape& shape)
    {
        std::vector<std::vector<Influences>> primitives(shape.primitives, std::vector<Influences>(shape.vertices));
        for (unsigned int v = 0; v < shape.primitives * shape.vertices; ++v)
        {
            const unsigned int count = 1 + v % std::min(4u, shape.bones);
            for (unsigned int k = 0; k < count; ++k)
            {
                primitives[v / shape.vertices][v % shape.vertices].emplace_back(
                    static_cast<int>((v + 3 * k) % shape.bones),
                    static_cast<float>(k + 1) / static_cast<float>(count * (count + 1) / 2));
            }
        }
        m_skin = makeSkin({}, primitives);
        TW2::MeshChunk body = makeMesh("body", shape.primitives, shape.vertices);
        body.transform = makeTransform(0.4f, {0.1f, -0.2f, 0.3f});
        return body;
    }

    std::vector<TW2::KeyframeAnimationChunk> makeAnimation(unsigned int index, unsigned int frames) const
    {
        std::vector<TW2::KeyframeAnimationChunk> tracks;
        for (unsigned int b = 0; b < m_bones.size(); ++b)
        {
            TW2::KeyframeAnimationChunk track;
            track.header = {m_bones[b].name, 10, true};
            track.totalFrameCount = frames;
            track.interpolationMode = 2;
            for (unsigned int frame = 0; frame<frames; frame += frames> 4 ? frames / 4 : 1)
            {
                const float swing = 0.2f * static_cast<float>(index) + 0.1f * static_cast<float>(frame * (b % 3));
                track.keys.push_back({frame, makeTransform(swing, {0, 0, 0}) * makeRest(b)});
            }
            tracks.push_back(track);
        }
        return tracks;
    }

    template <typename Record>
    std::string save(const std::string& name, const std::vector<Record>& records,
                     const TW2::MaterialListChunk* materials = nullptr) const
    {
        S_MemoryFileWriter writer;
        if (materials)
        {
            writer << *materials;
        }
        for (const Record& record : records)
        {
            writer << record;
        }
        return m_directory.write(name, writer.getBytes());
    }

    TemporaryDirectory m_directory;
};
}  // namespace support
