#include "convert/triangulation.h"

#include "convert/normals.h"
#include "tests/convert/model_builder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace
{
using namespace convert_test;

/// A spiral wall: two arms side by side, which wind around the middle several times.
std::vector<Vector3d> makeSpiral(unsigned int steps)
{
    constexpr double turns = 20.0;
    std::vector<Vector3d> corners;
    const auto add = [&](unsigned int step, double outwards)
    {
        const double part = static_cast<double>(step) / steps;
        const double angle = 2.0 * std::numbers::pi * turns * part;
        const double radius = 2.0 + turns * part + outwards;
        corners.emplace_back(radius * std::cos(angle), radius * std::sin(angle), 5.0);
    };
    for (unsigned int i = 0; i <= steps; ++i)
    {
        add(i, 0.5);
    }
    for (unsigned int i = steps + 1; i-- > 0;)
    {
        add(i, 0.0);
    }
    return corners;
}

double measureArea(const std::vector<Vector3d>& corners)
{
    double area = 0.0;
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        area += corners[i].cross(corners[(i + 1) % corners.size()]).z / 2.0;
    }
    return area;
}
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

TEST(Triangulation, APolygonOfThousandsOfCornersIsCutIntoTrianglesThatCoverIt)
{
    const std::vector<Vector3d> corners = makeSpiral(1500);
    const std::vector<std::array<unsigned int, 3>> triangles = TW2::convert::triangulate(corners);
    ASSERT_EQ(triangles.size(), corners.size() - 2);
    double sum = 0.0;
    for (const auto& [a, b, c] : triangles)
    {
        const double area = measureArea({corners[a], corners[b], corners[c]});
        EXPECT_GE(area, -1e-9);
        sum += area;
    }
    EXPECT_NEAR(sum, measureArea(corners), 1e-6);
}

TEST(Triangulation, WhatIsBulgedOutwardsIsAFanAroundItsFirstCorner)
{
    const std::vector<Vector3d> square{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    const std::vector<std::array<unsigned int, 3>> fan{{0, 1, 2}, {0, 2, 3}};
    EXPECT_EQ(TW2::convert::triangulate(square), fan);
    EXPECT_TRUE(TW2::convert::triangulate({{0, 0, 0}, {1, 0, 0}}).empty());
}

TEST(Triangulation, WhatIsCrossedOrWithoutAreaIsCutAllTheSame)
{
    EXPECT_EQ(TW2::convert::triangulate({{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}}).size(), 2U);
    EXPECT_EQ(TW2::convert::triangulate(std::vector<Vector3d>(7, {1, 2, 3})).size(), 5U);
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
