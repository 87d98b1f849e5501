#include "convert/mesh_joiner.h"

#include "convert/normals.h"
#include "convert/triangulation.h"

namespace TW2::convert
{
unsigned int MeshJoiner::add(std::size_t point, const Vector3& position, const Corner& corner)
{
    for (std::size_t vertex = m_vecFirst[point]; vertex != none; vertex = m_vecNext[vertex])
    {
        if (m_vecCorners[vertex] == corner)
        {
            return static_cast<unsigned int>(vertex);
        }
    }
    m_vecNext.push_back(m_vecFirst[point]);
    m_vecFirst[point] = m_vecCorners.size();
    m_vecCorners.push_back(corner);
    m_mesh.m_vecPositions.push_back(position);
    return static_cast<unsigned int>(m_vecFirst[point]);
}

void MeshJoiner::finish(bool normals, std::size_t sets, bool colors)
{
    m_mesh.m_vecCoordinates.resize(sets);
    for (const Corner& corner : m_vecCorners)
    {
        if (normals)
        {
            m_mesh.m_vecNormals.push_back(corner.m_vNormal);
        }
        for (std::size_t set = 0; set < sets; ++set)
        {
            m_mesh.m_vecCoordinates[set].push_back(corner.m_vecCoordinates[set]);
        }
        if (colors)
        {
            m_mesh.m_vecColors.push_back(corner.m_color);
        }
    }
    if (!normals)
    {
        addSmoothNormals(m_mesh);
    }
}

void addPolygon(Mesh& mesh, const std::vector<Vector3d>& corners, const std::vector<unsigned int>& vertices,
                bool flipped)
{
    for (const auto& [a, b, c] : triangulate(corners))
    {
        for (const unsigned int corner : {a, flipped ? b : c, flipped ? c : b})
        {
            mesh.m_vecIndices.push_back(vertices[corner]);
        }
    }
}
}  // namespace TW2::convert
