#pragma once

#include "convert/model.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <array>
#include <cstddef>
#include <vector>

namespace TW2::convert
{
/// Collects triangles into one mesh record: a group per material, and a further one of the same material where a group
/// would need more vertices than its indices can name.
class GeometryBuilder
{
public:
    /// A bone and how strongly it pulls; bones are indices of joints.
    struct Influence
    {
        int m_iBone = 0;
        float m_fWeight = 0.0F;
    };
    static constexpr std::size_t mostInfluences = 4;
    /// The influences of a vertex, strongest first; unused ones have weight 0.
    using Influences = std::array<Influence, mostInfluences>;

    /// Adds a mesh, moved by `place`, with as many coordinate sets as every other mesh of its material. `influences`
    /// has one entry per vertex, or none.
    void add(const Mesh& mesh, const Matrixd& place, const std::vector<Influences>& influences);

    /// Writes geometry and material names into the record; `surfaces` gives the names.
    void fill(MeshChunk& record, const std::vector<Surface>& surfaces) const;
    /// Writes vertex counts and influences.
    void fill(SkinChunk& record) const;

    [[nodiscard]] bool isEmpty() const noexcept { return m_vecGroups.empty(); }
    [[nodiscard]] std::size_t getGroupCount() const noexcept { return m_vecGroups.size(); }
    [[nodiscard]] std::size_t getVertexCount() const noexcept;
    [[nodiscard]] std::size_t getTriangleCount() const noexcept;

private:
    struct Group
    {
        int m_iMaterial = 0;
        std::vector<Vector3> m_vecPositions;
        std::vector<Vector3> m_vecNormals;
        std::vector<std::vector<Vector3>> m_vecCoordinates;  // a list per set
        std::vector<Influences> m_vecInfluences;
        std::vector<std::uint16_t> m_vecIndices;
    };
    /// Index of the group that takes `newVertices` more vertices of a material.
    std::size_t findGroup(int material, std::size_t newVertices);
    void fillChannels(MeshChunk& record) const;

    std::vector<Group> m_vecGroups;
};

/// How influences were cut down to what a vertex can have.
struct InfluenceSummary
{
    std::size_t m_uiReduced = 0;  ///< vertices that had more than four influences
    std::size_t m_uiMost = 0;     ///< the largest number of influences that a vertex had
    std::size_t m_uiUnbound = 0;  ///< vertices of skinned meshes that no bone moved
};

/// The four strongest influences of each vertex, their weights adding up to 1. `joints` says on which joint each bone
/// of the mesh hangs. What has no bones hangs on joint `holder`.
[[nodiscard]] std::vector<GeometryBuilder::Influences> chooseInfluences(const Mesh& mesh, int holder,
                                                                        const std::vector<int>& joints,
                                                                        InfluenceSummary& summary);
}  // namespace TW2::convert
