#pragma once

#include <tw2/io/mesh_chunk.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/motion/rotation.h>
#include <tw2/skin/skin_chunk.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/file.h>
#include <platform/runtime/memory_file.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <string>
#include <vector>

namespace support
{
/// The walker of the project's sample, and its skin as its files have it: where vertices come is worked out here.
class SampleWalker
{
public:
    using Vector = M_Vector3Template<double>;

    SampleWalker()
    {
        const S_DirectoryGuard back;
        File.changeDirectory(TW2_SAMPLE);
        m_object.construct("walker.script", "skeleton", "skin");
        S_MemoryFile skin("walker.skd", S_MemoryFile::accessRead);
        skin >> m_binding;
        S_MemoryFile mesh("walker_skin.tw", S_MemoryFile::accessRead);
        TW2::MaterialListChunk materials;
        mesh >> materials >> m_mesh;
        for (const S_String& name : m_binding.boneNames)
        {
            m_vecBones.push_back(findBone(std::string(name.begin(), name.end())));
            m_vecBack.push_back(getWorld(m_vecBones.back()).inverse());
        }
    }

    [[nodiscard]] int find(const char* clip) const { return m_object.findAnimation(clip); }
    void pose(int clip, double seconds) { m_object.animateObject(clip, static_cast<float>(seconds)); }
    /// Every bone's turn in its parent.
    [[nodiscard]] std::vector<TW2::TW_Rotation> getTurns() const
    {
        std::vector<TW2::TW_Rotation> turns;
        for (unsigned int bone = 0; bone < m_object.getTotalMeshes(); ++bone)
        {
            turns.push_back(TW2::TW_Rotation::ofMatrix(m_object.getMesh(bone)->getMatrix()));
        }
        return turns;
    }
    /// Where a point of a bone is in the object.
    [[nodiscard]] Vector getPoint(const std::string& bone, const Vector& point) const
    {
        return getWorld(findBone(bone)).transformPoint(point);
    }
    /// How high the lowest vertex is that a bone, or one below it, moves more than others do.
    [[nodiscard]] double getLowest(const std::string& bone) const
    {
        const unsigned int first = findBone(bone);
        double lowest = 1e9;
        for (std::size_t vertex = 0; vertex < m_mesh.vertices.positions.size(); ++vertex)
        {
            const auto start = static_cast<std::size_t>(m_binding.vertexInfluenceStarts[vertex]);
            const unsigned int moving = m_vecBones[static_cast<std::size_t>(m_binding.influenceBones[start])];
            if (moving == first || moving == first + 1)
            {
                lowest = std::min(lowest, getVertex(vertex).y);
            }
        }
        return lowest;
    }
    /// Of all triangles, one after the other.
    [[nodiscard]] std::vector<double> getSideLengths() const
    {
        std::vector<Vector> vertices;
        for (std::size_t vertex = 0; vertex < m_mesh.vertices.positions.size(); ++vertex)
        {
            vertices.push_back(getVertex(vertex));
        }
        std::vector<double> lengths;
        for (std::size_t triangle = 0; triangle < m_mesh.faces.groupCounts[0]; ++triangle)
        {
            for (std::size_t corner = 0; corner < 3; ++corner)
            {
                lengths.push_back((vertices[m_mesh.getIndex(0, triangle, corner)] -
                                   vertices[m_mesh.getIndex(0, triangle, (corner + 1) % 3)])
                                      .length());
            }
        }
        return lengths;
    }

    TW2::TW_VertexAnimation m_object;

private:
    [[nodiscard]] unsigned int findBone(const std::string& name) const
    {
        unsigned int bone = 0;
        while (name != m_object.getMesh(bone)->getName().c_str())
        {
            ++bone;
        }
        return bone;
    }
    [[nodiscard]] TW2::TW_Travel getWorld(unsigned int bone) const
    {
        return TW2::TW_Travel::ofMatrix(m_object.getMesh(bone)->getObjectToWorldMatrix());
    }
    [[nodiscard]] Vector getVertex(std::size_t vertex) const
    {
        const auto& position = m_mesh.vertices.positions[vertex];
        const Vector atRest(static_cast<double>(position.x), static_cast<double>(position.y),
                            static_cast<double>(position.z));
        Vector place;
        for (int i = 0; i < m_binding.vertexBoneCounts[vertex]; ++i)
        {
            const auto influence = static_cast<std::size_t>(m_binding.vertexInfluenceStarts[vertex] + i);
            const auto bone = static_cast<std::size_t>(m_binding.influenceBones[influence]);
            place += getWorld(m_vecBones[bone]).transformPoint(m_vecBack[bone].transformPoint(atRest)) *
                     static_cast<double>(m_binding.influenceWeights[influence]);
        }
        return place;
    }

    TW2::SkinChunk m_binding;
    TW2::MeshChunk m_mesh;
    std::vector<unsigned int> m_vecBones;   // mesh indices of the binding's bones
    std::vector<TW2::TW_Travel> m_vecBack;  // from the object at rest into each of them
};
}  // namespace support
