#include "convert/geometry_builder.h"

#include "tests/convert/model_builder.h"

#include <tw2/io/mesh_chunk.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace
{
using TW2::MeshChunk;
using TW2::convert::GeometryBuilder;
using TW2::convert::Mesh;
using TW2::convert::Vector3;

/// A triangle whose normal is neither along an axis nor in one of their planes.
Mesh makeSlope()
{
    Mesh mesh;
    mesh.m_vecPositions = {{0.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.5F}, {1.0F, 0.0F, 0.25F}};
    const Vector3& a = mesh.m_vecPositions[0];
    mesh.m_vecNormals.assign(3, (mesh.m_vecPositions[1] - a).cross(mesh.m_vecPositions[2] - a).normalized());
    mesh.m_vecIndices = {0, 1, 2};
    return mesh;
}

MeshChunk fill(const GeometryBuilder& builder, std::size_t surfaces)
{
    std::vector<TW2::convert::Surface> all(surfaces);
    MeshChunk record;
    builder.fill(record, all);
    return record;
}

TEST(WrittenGeometry, FacesOutwardsWhereverItIsPlaced)
{
    convert_test::Matrixd uneven = convert_test::turnZ(30.0) * convert_test::move(1.0, 2.0, 3.0);
    uneven.setRow(0, uneven.getRow(0) * 3.0);
    convert_test::Matrixd mirrored = uneven;
    mirrored.setRow(2, mirrored.getRow(2) * -0.5);
    for (const convert_test::Matrixd& place : {convert_test::Matrixd(), uneven, mirrored})
    {
        GeometryBuilder builder;
        builder.add(makeSlope(), place, {});
        const MeshChunk record = fill(builder, 1);
        const auto corner = [&record](unsigned int i) { return record.getPosition(0, record.getIndex(0, 0, i)); };
        const Vector3 front = (corner(1) - corner(0)).cross(corner(2) - corner(0)).normalized();
        EXPECT_NEAR(front.dot(record.getNormal(0, 0)), 1.0F, 1e-5F) << "determinant " << place.determinant();
    }
}

TEST(WrittenGeometry, MakesAGroupMoreWhereIndicesWouldNotReach)
{
    constexpr std::size_t triangles = 30000;
    Mesh mesh;
    for (std::size_t i = 0; i < 3 * triangles; ++i)
    {
        mesh.m_vecPositions.emplace_back(static_cast<float>(i), static_cast<float>(i % 3), 0.0F);
        mesh.m_vecIndices.push_back(static_cast<unsigned int>(i));
    }
    mesh.m_vecNormals.assign(mesh.m_vecPositions.size(), {0.0F, 0.0F, -1.0F});
    GeometryBuilder builder;
    builder.add(mesh, convert_test::Matrixd(), {});
    const MeshChunk record = fill(builder, 1);
    ASSERT_EQ(builder.getGroupCount(), 2U);
    EXPECT_EQ(record.getMaterialNames().size(), 2U);
    std::size_t next = 0;
    for (std::size_t group = 0; group < 2; ++group)
    {
        EXPECT_LE(record.getVertexCount(group), MeshChunk::maxGroupVertices);
        for (std::size_t triangle = 0; triangle < record.getTriangleCount(group); ++triangle)
        {
            for (unsigned int i = 0; i < 3; ++i)
            {
                const std::size_t index = record.getIndex(group, triangle, i);
                ASSERT_LT(index, record.getVertexCount(group));
                EXPECT_EQ(record.getPosition(group, index).x, static_cast<float>(next++));
            }
        }
    }
    EXPECT_EQ(next, 3 * triangles);
}
}  // namespace
