#pragma once

#include "convert/model.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace TW2::convert
{
/// What a corner of a triangle says besides where it stands.
struct Corner
{
    Vector3 m_vNormal;
    std::vector<Vector3> m_vecCoordinates;
    Color m_color = plainColor;

    bool operator==(const Corner& other) const = default;
};

/// Builds a mesh from corners of polygons: those that stand at the same point and say the same are one vertex.
class MeshJoiner
{
public:
    /// Corners stand at points 0 to `pointCount` - 1.
    explicit MeshJoiner(std::size_t pointCount) : m_vecFirst(pointCount, none) {}

    /// The vertex of a corner, which is new or one that was added before. All corners have as many sets of coordinates.
    unsigned int add(std::size_t point, const Vector3& position, const Corner& corner);
    /// Visits the vertices that stand at a point.
    template <typename Visit>
    void forEachAt(std::size_t point, Visit visit) const
    {
        for (std::size_t vertex = m_vecFirst[point]; vertex != none; vertex = m_vecNext[vertex])
        {
            visit(static_cast<unsigned int>(vertex));
        }
    }
    /// Lays the vertices out as a mesh has them: with normals that the corners say or, where they do not, smooth ones.
    void finish(bool normals, std::size_t sets, bool colors);

    Mesh m_mesh;  ///< its triangles are added by the caller

private:
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> m_vecFirst;  ///< vertex of each point
    std::vector<std::size_t> m_vecNext;   ///< the next vertex at the same point
    std::vector<Corner> m_vecCorners;
};

/// Adds a polygon's triangles, the other way round than its corners run, which is how a mirrored polygon is seen from
/// the same side; as they run where `flipped`. `vertices` has the vertex of each corner.
void addPolygon(Mesh& mesh, const std::vector<Vector3d>& corners, const std::vector<unsigned int>& vertices,
                bool flipped);
}  // namespace TW2::convert
