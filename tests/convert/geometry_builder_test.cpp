#include "convert/geometry_builder.h"

#include "tests/convert/model_builder.h"

#include <tw2/io/mesh_chunk.h>
#include <tw2/skin/skin_chunk.h>

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

TEST(WrittenGeometry, EachGroupFindsItsVerticesCoordinatesAndInfluences)
{
    // Two triangles of one material with two sets of coordinates, one of another with one set.
    GeometryBuilder builder;
    TW2::convert::Mesh first = makeSlope();
    first.m_vecCoordinates = {{{0.1F, 0, 0}, {0.2F, 0, 0}, {0.3F, 0, 0}}, {{0.4F, 0, 0}, {0.5F, 0, 0}, {0.6F, 0, 0}}};
    TW2::convert::Mesh second = makeSlope();
    second.m_iMaterial = 1;
    second.m_vecCoordinates = {{{0.7F, 0, 0}, {0.8F, 0, 0}, {0.9F, 0, 0}}};
    GeometryBuilder::Influences two{};
    two[0] = {3, 0.75F};
    two[1] = {5, 0.25F};
    GeometryBuilder::Influences one{};
    one[0] = {7, 1.0F};
    builder.add(first, convert_test::Matrixd(), {two, one, one});
    builder.add(first, convert_test::Matrixd(), {one, one, one});
    builder.add(second, convert_test::Matrixd(), {one, two, one});
    EXPECT_EQ(builder.getTriangleCount(), 3U);
    EXPECT_EQ(builder.getVertexCount(), 9U);
    const MeshChunk record = fill(builder, 2);
    EXPECT_EQ(record.vertices.groupOffsets, (S_Vector<unsigned int>{0, 6}));
    EXPECT_EQ(record.faces.groupOffsets, (S_Vector<unsigned int>{0, 6}));
    EXPECT_EQ(record.faces.groupCounts, (S_Vector<unsigned int>{2, 1}));
    const TW2::TextureChannelChunk& near = record.channels[0];
    EXPECT_EQ(near.channel, 1);
    EXPECT_EQ(near.groupOffsets, (S_Vector<int>{0, 6}));
    EXPECT_EQ(near.groupCounts, (S_Vector<int>{6, 3}));
    EXPECT_EQ(near.coordinates[7].x, 0.8F);
    const TW2::TextureChannelChunk& far = record.channels[1];
    EXPECT_EQ(far.channel, 2);
    EXPECT_EQ(far.groupCounts, (S_Vector<int>{6, 0})) << "the second has no second set";
    EXPECT_EQ(far.coordinates[4].x, 0.5F);
    TW2::SkinChunk skin;
    builder.fill(skin);
    EXPECT_EQ(skin.primitiveFirstVertices, (S_Vector<unsigned int>{0, 6}));
    EXPECT_EQ(skin.primitiveVertexCounts, (S_Vector<unsigned int>{6, 3}));
    EXPECT_EQ(skin.vertexBoneCounts, (S_Vector<int>{2, 1, 1, 1, 1, 1, 1, 2, 1}));
    EXPECT_EQ(skin.vertexInfluenceStarts, (S_Vector<int>{0, 2, 3, 4, 5, 6, 7, 8, 10}));
    EXPECT_EQ(skin.influenceBones[9], 5);
    EXPECT_EQ(skin.influenceWeights[9], 0.25F);
}

TEST(Influences, AreTheStrongestFourAndAddUpToOne)
{
    // Six bones pull at the first vertex, the fifth one least; one at the second; the third hangs on the mesh's node.
    TW2::convert::Mesh mesh = makeSlope();
    for (unsigned int bone = 0; bone < 6; ++bone)
    {
        TW2::convert::Bone& added = mesh.m_vecBones.emplace_back();
        added.m_vecWeights.emplace_back(0U, bone == 4 ? 0.125F : 0.25F * static_cast<float>(bone + 1));
    }
    mesh.m_vecBones[5].m_vecWeights.emplace_back(1U, 0.5F);
    TW2::convert::Bone& node = mesh.m_vecBones.emplace_back();
    node.m_bHolder = true;
    node.m_vecWeights.emplace_back(2U, 1.0F);
    TW2::convert::InfluenceSummary summary;
    const auto chosen = chooseInfluences(mesh, 41, {10, 11, 12, 13, 14, 15, 42}, summary);
    ASSERT_EQ(chosen.size(), 3U);
    const int bones[]{15, 13, 12, 11};
    const float weights[]{1.5F, 1.0F, 0.75F, 0.5F};
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(chosen[0][i].m_iBone, bones[i]);
        EXPECT_FLOAT_EQ(chosen[0][i].m_fWeight, weights[i] / 3.75F);
    }
    EXPECT_EQ(chosen[1][0].m_iBone, 15);
    EXPECT_EQ(chosen[1][0].m_fWeight, 1.0F);
    EXPECT_EQ(chosen[2][0].m_iBone, 42);
    EXPECT_EQ(summary.m_uiReduced, 1U);
    EXPECT_EQ(summary.m_uiMost, 6U);
    EXPECT_EQ(summary.m_uiUnbound, 1U);
    mesh.m_vecBones.clear();
    TW2::convert::InfluenceSummary none;
    EXPECT_EQ(chooseInfluences(mesh, 41, {}, none)[2][0].m_iBone, 41)
        << "without bones all hang on what holds the mesh";
    EXPECT_EQ(none.m_uiUnbound, 0U) << "and miss nothing";
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
    // The last triangle has vertices of the first group again.
    mesh.m_vecIndices.insert(mesh.m_vecIndices.end(), {0, 1, 2});
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
                EXPECT_EQ(record.getPosition(group, index).x, static_cast<float>(mesh.m_vecIndices[next++]));
            }
        }
    }
    EXPECT_EQ(next, mesh.m_vecIndices.size());
}
}  // namespace
