#include "convert/triangulation.h"

#include "convert/normals.h"
#include "tests/convert/model_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
using namespace convert_test;
}  // namespace

TEST(Triangulation, CoversADentedPolygonOnceInEveryPlane)
{
    // An L, whose fan around the first corner would reach outside; its area is 3.
    const std::vector<Vector3d> shape{{2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}, {0, 0, 0}, {2, 0, 0}};
    for (const int plane : {0, 1, 2})
    {
        for (const bool reversed : {false, true})
        {
            std::vector<Vector3d> corners;
            for (const Vector3d& p : shape)
            {
                const Vector3d placed = plane == 0   ? Vector3d(0.1 * p.x, p.x, p.y)
                                        : plane == 1 ? Vector3d(p.y, 0.1 * p.x, p.x)
                                                     : Vector3d(p.x, p.y, 0.1 * p.x);
                corners.insert(reversed ? corners.begin() : corners.end(), placed);
            }
            Vector3d normal;  // twice the area
            for (std::size_t i = 0; i < corners.size(); ++i)
            {
                normal += corners[i].cross(corners[(i + 1) % corners.size()]);
            }
            const auto triangles = TW2::convert::triangulate(corners);
            EXPECT_EQ(triangles.size(), corners.size() - 2);
            Vector3d sum;
            for (const auto& [a, b, c] : triangles)
            {
                const Vector3d own = (corners[b] - corners[a]).cross(corners[c] - corners[a]);
                EXPECT_GT(own.dot(normal), 0.0) << "each looks the way the polygon does, plane " << plane;
                sum += own;
            }
            EXPECT_NEAR((sum - normal).length(), 0.0, 1e-12) << plane << reversed;
        }
    }
}

TEST(Normals, OfVerticesLeanTowardsTheLargerTriangle)
{
    // Two triangles at a right angle along an edge, one four times as large as the other.
    Mesh mesh;
    mesh.m_vecPositions = {{0, 0, 0}, {0, 0, 1}, {4, 0, 0}, {0, 1, 0}};
    mesh.m_vecIndices = {0, 1, 2, 0, 3, 1};
    TW2::convert::addSmoothNormals(mesh);
    const double length = std::sqrt(17.0);
    ASSERT_EQ(mesh.m_vecNormals.size(), 4U);
    for (const std::size_t shared : {0U, 1U})
    {
        EXPECT_NEAR(mesh.m_vecNormals[shared].y, 4.0 / length, 1e-6);
        EXPECT_NEAR(mesh.m_vecNormals[shared].x, 1.0 / length, 1e-6);
    }
    EXPECT_NEAR(mesh.m_vecNormals[2].y, 1.0, 1e-6);
    EXPECT_NEAR(mesh.m_vecNormals[3].x, 1.0, 1e-6);
}
