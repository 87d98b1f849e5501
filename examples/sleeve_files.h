#pragma once

#include "arm_files.h"

#include <tw2/skin/skin_chunk.h>

#include <algorithm>
#include <cstdint>
#include <string>

/// Writes a sleeve around the arm of `ArmFiles` into the current directory: the skin "sleeve.tw" and its skin data
/// "sleeve.skd", a coarser one for the distance, and the script "sleeve.txt" with the blocks "arm", "sleeve" and
/// "sleeveFar". Real files come from an exporter.
class SleeveFiles
{
public:
    static void write()
    {
        ArmFiles::write();
        writeSleeve("sleeve", 16);
        writeSleeve("sleeveFar", 4);
        std::ofstream("sleeve.txt")
            << "arm\n"
               "{\n"
               "    geometry { exportdata \"arm.tw\"  crossmode orthonormalized }\n"
               "    animation { index 0  filename \"wave.tw\" }\n"
               "    animation { index 1  filename \"reach.tw\" }\n"
               "}\n"
               "sleeve    { geometry { exportdata \"sleeve.tw\"  skindata \"sleeve.skd\"\n"
               "                       distance 20 } }\n"
               "sleeveFar { geometry { exportdata \"sleeveFar.tw\"  skindata \"sleeveFar.skd\"\n"
               "                       distance 200 } }\n";
    }

private:
    /// A strip of `segments` pieces along the arm, 3 long and 0.4 wide, each end of a piece bound to the bones nearest
    /// to it.
    static void writeSleeve(const std::string& name, int segments)
    {
        TW2::MeshChunk mesh;
        mesh.name = name.c_str();
        TW2::SkinChunk skin;
        skin.objectNames = {mesh.name};
        skin.boneNames = {ArmFiles::bones[0], ArmFiles::bones[1], ArmFiles::bones[2]};
        for (int i = 0; i <= segments; ++i)
        {
            const float along = 3.0f * static_cast<float>(i) / static_cast<float>(segments);
            for (const float across : {-0.2f, 0.2f})
            {
                mesh.editVertices().positions.emplace_back(along, across, 0.0f);
                mesh.vertices.normals.emplace_back(0.0f, 0.0f, -1.0f);
                bind(skin, along);
            }
            if (i > 0)
            {
                const auto v = static_cast<std::uint16_t>(2 * i - 2);
                for (const int corner : {0, 2, 1, 1, 2, 3})
                {
                    mesh.editFaces().indices.push_back(static_cast<std::uint16_t>(v + corner));
                }
            }
        }
        const auto vertices = static_cast<unsigned int>(mesh.vertices.positions.size());
        mesh.vertices.groupOffsets = {0};
        mesh.vertices.groupCounts = {vertices};
        mesh.faces.groupOffsets = {0};
        mesh.faces.groupCounts = {static_cast<unsigned int>(2 * segments)};
        skin.primitiveFirstVertices = {0};
        skin.primitiveVertexCounts = {vertices};
        save(name + ".tw", mesh);
        save(name + ".skd", skin);
    }

    /// Bone b moves what lies from b to b + 1; half a unit around each joint is shared.
    static void bind(TW2::SkinChunk& skin, float along)
    {
        skin.vertexInfluenceStarts.push_back(static_cast<int>(skin.influenceBones.size()));
        int count = 0;
        for (int bone = 0; bone < 3; ++bone)
        {
            const float begin = bone > 0 ? std::clamp(along - static_cast<float>(bone) + 0.5f, 0.0f, 1.0f) : 1.0f;
            const float end = bone < 2 ? std::clamp(along - static_cast<float>(bone) - 0.5f, 0.0f, 1.0f) : 0.0f;
            if (begin > end)
            {
                skin.influenceBones.push_back(bone);
                skin.influenceWeights.push_back(begin - end);
                ++count;
            }
        }
        skin.vertexBoneCounts.push_back(count);
    }

    template <typename Record>
    static void save(const std::string& name, const Record& record)
    {
        S_MemoryFileWriter file;
        file << record;
        file.save(name);
    }
};
