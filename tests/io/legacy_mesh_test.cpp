#include "tests/io/plain_conversion.h"
#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"
#include "tests/support/mesh_builder.h"
#include "tests/support/verbose_capture.h"

#include <tw2/core/static_data.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/mesh_chunk.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <set>

using namespace TW2;
using support::LegacyMesh;
using support::Vector;
using support::writeChunk;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

namespace
{
MeshChunk convert(const LegacyMesh& mesh)
{
    S_MemoryFileWriter writer;
    write(writer, mesh);
    return support::readWritten<MeshChunk>(writer);
}

std::string failureOf(const LegacyMesh& mesh)
{
    return support::messageOf([&] { (void)convert(mesh); });
}

/// Also equal when both are the same zero or not a number.
testing::AssertionResult haveSameBits(const Vector& a, const Vector& b)
{
    if (std::memcmp(&a, &b, sizeof a) == 0)
    {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "(" << a.x << ", " << a.y << ", " << a.z << ") is not (" << b.x << ", " << b.y
                                       << ", " << b.z << ")";
}

/// Every group, value for value, against the plain conversion.
void expectAsConvertedPlainly(const LegacyMesh& legacy)
{
    const MeshChunk mesh = convert(legacy);
    const std::vector<plain::Group> groups = plain::Conversion(legacy).group();
    ASSERT_EQ(mesh.getGroupCount(), groups.size());
    EXPECT_EQ(mesh.hasMaterials, !legacy.materials.empty());
    EXPECT_TRUE(mesh.vertices.hasNormals && mesh.faces.hasIndices && mesh.hasSmoothingGroups);
    std::size_t vertices = 0;
    for (std::size_t g = 0; g < groups.size(); ++g)
    {
        const plain::Group& expected = groups[g];
        ASSERT_EQ(mesh.getVertexCount(g), expected.positions.size()) << "group " << g;
        ASSERT_EQ(3 * mesh.getTriangleCount(g), expected.indices.size()) << "group " << g;
        vertices += expected.positions.size();
        for (std::size_t v = 0; v < expected.positions.size(); ++v)
        {
            ASSERT_TRUE(haveSameBits(mesh.getPosition(g, v), expected.positions[v]))
                << "group " << g << ", vertex " << v;
            ASSERT_TRUE(haveSameBits(mesh.getNormal(g, v), expected.normals[v])) << "group " << g << ", vertex " << v;
            ASSERT_EQ(mesh.getVertexMapEntry(g, v), expected.vertexMap[v]) << "group " << g << ", vertex " << v;
        }
        for (std::size_t i = 0; i < expected.indices.size(); ++i)
        {
            ASSERT_EQ(mesh.getIndex(g, i / 3, i % 3), expected.indices[i]) << "group " << g << ", corner " << i;
        }
        for (std::size_t channel = 0; channel < expected.coordinates.size(); ++channel)
        {
            ASSERT_EQ(mesh.getCoordinateCount(channel, g), static_cast<int>(expected.positions.size()));
            EXPECT_EQ(mesh.channels[channel].channel, legacy.channels[channel].number);
            for (std::size_t v = 0; v < expected.positions.size(); ++v)
            {
                ASSERT_TRUE(haveSameBits(mesh.getCoordinate(channel, g, v), expected.coordinates[channel][v]))
                    << "channel " << channel << ", group " << g << ", vertex " << v;
            }
        }
    }
    EXPECT_EQ(mesh.vertices.positions.size(), vertices);
}

/// A mesh with everything at random: crossing masks, flat and degenerate triangles, few coordinates so that some meet
/// again, several channels and materials.
LegacyMesh makeRandomMesh(unsigned int seed)
{
    std::mt19937 random(seed);
    const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned int>(limit)); };
    LegacyMesh mesh;
    mesh.version = seed % 2;
    const int vertices = 4 + below(20);
    for (int i = 0; i < vertices; ++i)
    {
        mesh.positions.push_back({static_cast<float>(below(5)), static_cast<float>(below(5)), static_cast<float>(i)});
    }
    const int polygons = 1 + below(60);
    const int bits = 1 + below(12);
    for (int i = 0; i < polygons; ++i)
    {
        mesh.polygons.push_back({below(vertices), below(vertices), below(vertices)});
        const int kind = below(4);
        const unsigned int any = static_cast<unsigned int>(random()) & ((1u << bits) - 1);
        mesh.masks.push_back(kind == 0 ? 0 : kind == 1 ? 1u << below(bits) : any);
    }
    mesh.masks.resize(static_cast<std::size_t>(below(polygons + 1)));
    const int materials = below(4);
    for (int i = 0; i < materials; ++i)
    {
        mesh.materials.push_back("material " + std::to_string(i));
    }
    for (int i = 0; i < polygons && materials > 0; ++i)
    {
        mesh.faceMaterials.push_back(below(materials));
    }
    const int channels = below(4);
    for (int c = 0; c < channels; ++c)
    {
        LegacyMesh::Channel channel;
        channel.number = 10 + c;
        for (int i = 0; i < 12; ++i)
        {
            channel.coordinates.push_back({static_cast<float>(below(3) - 1) * (i % 3 == 0 ? -1.0f : 1.0f),
                                           i % 2 == 0 ? 0.0f : -0.0f, static_cast<float>(i)});
        }
        channel.coordinates[11].x = std::numeric_limits<float>::quiet_NaN();
        for (int i = 0; i < polygons; ++i)
        {
            const int last = below(8) == 0 ? 12 : 11;
            channel.polygons.push_back({below(last), below(last), below(last)});
        }
        mesh.channels.push_back(channel);
    }
    return mesh;
}
}  // namespace

TEST(LegacyMesh, ACubeOfFlatSidesHasThreeVerticesPerCorner)
{
    LegacyMesh cube = support::makeLegacyCube();
    for (std::size_t t = 0; t < cube.masks.size(); ++t)
    {
        cube.masks[t] = 1u << (t / 2);
    }
    const MeshChunk mesh = convert(cube);
    ASSERT_EQ(mesh.getVertexCount(0), 24u);
    std::vector<int> timesUsed(8, 0);
    std::set<std::pair<int, int>> sidesOfCorners;
    for (std::size_t v = 0; v < 24; ++v)
    {
        const int corner = mesh.getVertexMapEntry(0, v);
        EXPECT_EQ(mesh.getPosition(0, v), cube.positions[static_cast<std::size_t>(corner)]);
        ++timesUsed[static_cast<std::size_t>(corner)];
        const Vector& n = mesh.getNormal(0, v);
        EXPECT_EQ(std::abs(n.x) + std::abs(n.y) + std::abs(n.z), 1.0f);
        // The side must be one that the corner lies on.
        EXPECT_GT(n.dot(mesh.getPosition(0, v)), 0.0f);
        sidesOfCorners.insert({corner, static_cast<int>(n.x + 2 * n.y + 4 * n.z)});
    }
    EXPECT_THAT(timesUsed, Each(3));
    EXPECT_THAT(sidesOfCorners, SizeIs(24));
}

TEST(LegacyMesh, ConvertsToTheBitAsThePlainWayDoes)
{
    for (unsigned int seed = 0; seed < 400; ++seed)
    {
        SCOPED_TRACE(seed);
        expectAsConvertedPlainly(makeRandomMesh(seed));
        if (HasFailure())
        {
            return;
        }
    }
    expectAsConvertedPlainly(support::makeLegacyCube());
    expectAsConvertedPlainly(support::makeLegacyField(9, 7));
    std::mt19937 random(1);
    expectAsConvertedPlainly(support::makeLegacyFan(300, [&](int) { return static_cast<unsigned int>(random()); }));
    expectAsConvertedPlainly(
        support::makeLegacyFan(300, [&](int) { return static_cast<unsigned int>(random() & random() & random()); }));
    for (const unsigned int bits : {12u, 20u})  // many masks of one size, none of which is much better than others
    {
        expectAsConvertedPlainly(support::makeLegacyFan(1500,
                                                        [&](int)
                                                        {
                                                            unsigned int mask = 0;
                                                            for (unsigned int i = 0; i < 5; ++i)
                                                            {
                                                                mask |= 1u << random() % bits;
                                                            }
                                                            return mask;
                                                        }));
    }
    expectAsConvertedPlainly(support::makeLegacyFan(200, [](int i) { return i % 3 == 0 ? 0u : 1u << (i % 32); }));
}

// 20,000 different coordinates at one vertex: each corner needs its own copy, and finds it again in the second polygon
// that asks for it.
TEST(LegacyMesh, ManyCoordinatesAtOneVertexFindTheirCopiesAgain)
{
    LegacyMesh fan = support::makeLegacyFan(20000, [](int) { return 1u; });
    const std::size_t polygons = fan.polygons.size();
    fan.materials = {"fan"};
    LegacyMesh::Channel channel;
    for (std::size_t i = 0; i < polygons; ++i)
    {
        channel.coordinates.push_back({static_cast<float>(i / 2), 0.25f, 0});
        channel.polygons.push_back({static_cast<int>(i), 0, 0});
    }
    fan.channels = {channel};
    const MeshChunk mesh = convert(fan);
    ASSERT_EQ(mesh.getVertexCount(0), fan.positions.size() + polygons / 2 - 1);
    for (std::size_t t = 0; t < polygons; t += 997)
    {
        EXPECT_EQ(mesh.getCoordinate(0, 0, mesh.getIndex(0, t, 0)).x, static_cast<float>(t / 2));
        EXPECT_EQ(mesh.getVertexMapEntry(0, mesh.getIndex(0, t, 0)), 0);
    }
}

TEST(LegacyMesh, PolygonsOfOtherThanThreeCornersAreReadAsTriangles)
{
    const auto four = [](S_MemoryFileWriter& w) { writeChunk(w, CHUNK_POLYGON, 0, 4, 2, 1, 0, 77); };
    const auto two = [](S_MemoryFileWriter& w) { writeChunk(w, CHUNK_POLYGON, 3, 2, 1, 2); };
    const std::vector<Vector> corners = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    S_MemoryFileWriter writer;
    {
        const S_MemoryFileWriter::Chunk mesh(writer, CHUNK_MESH, 0);
        writeChunk(writer, CHUNK_MESH_VERTICES, 0, support::listOf(corners));
        writeChunk(writer, CHUNK_MESH_FACES, 0, 2, four, two, 0, 0);
        writeChunk(writer, CHUNK_MESH_MATERIALS, 0, 0, 0);
    }
    const MeshChunk mesh = support::readWritten<MeshChunk>(writer);
    EXPECT_EQ(mesh.faces.polygons[0].vertexCount, 4);
    EXPECT_FALSE(mesh.hasMaterials) << "a list without a name";
    EXPECT_EQ(support::writeAndRead(mesh.faces.polygons[0]).vertexCount, 3) << "what is kept of it is written";
    EXPECT_THAT(std::vector<int>(mesh.vertices.vertexMap.begin() + 3, mesh.vertices.vertexMap.end()),
                testing::UnorderedElementsAre(0, 0, 1, 1, 2, 2));
}

TEST(LegacyMesh, AGroupNeedsNoMoreVerticesThanItsIndicesCanNumber)
{
    // 21,846 flat triangles make 65,538 vertices; sorted into two materials each half fits.
    LegacyMesh mesh;
    mesh.name = "crowd";
    mesh.materials = {"a", "b"};
    for (int i = 0; i < 21846; ++i)
    {
        mesh.polygons.push_back({0, 1, 2});
        mesh.faceMaterials.push_back(i % 2);
    }
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const MeshChunk converted = convert(mesh);
    EXPECT_EQ(converted.getVertexCount(0), 32769u);
    EXPECT_EQ(converted.getIndex(1, 10922, 2), 32768u);

    mesh.faceMaterials.assign(mesh.faceMaterials.size(), 1);
    EXPECT_THAT(failureOf(mesh), HasSubstr("at most 65536 vertices in each group of mesh \"crowd\", group 1 needs"));
    mesh.materials = {};
    EXPECT_THAT(failureOf(mesh), HasSubstr("group 0 needs 65541"));
    mesh.polygons.resize(21844);
    mesh.positions.resize(4);
    EXPECT_EQ(convert(mesh).getIndex(0, 21843, 2), 65535u) << "just as many as can be numbered";
}

TEST(LegacyMesh, DamageIsAnErrorThatNamesTheValue)
{
    const auto failureAfter = [](const std::function<void(LegacyMesh&)>& damage)
    {
        LegacyMesh mesh = support::makeLegacyField(2, 2);
        mesh.materials = {"a", "b"};
        damage(mesh);
        return failureOf(mesh);
    };
    EXPECT_THAT(
        failureAfter([](LegacyMesh& mesh) { mesh.polygons[3][1] = 9; }),
        HasSubstr("chunk 0x10005, byte 1044: expected mesh polygon 3 to name vertices from 0 to below 9, found 9"));
    EXPECT_THAT(failureAfter([](LegacyMesh& mesh) { mesh.polygons[0][0] = -1; }), HasSubstr("found -1"));
    EXPECT_THAT(failureAfter([](LegacyMesh& mesh) { mesh.channels[0].polygons[1][2] = 18; }),
                HasSubstr("texture channel 0, polygon 1 to name coordinates from 0 to below 18, found 18"));
    EXPECT_THAT(failureAfter([](LegacyMesh& mesh) { mesh.channels[0].polygons.pop_back(); }),
                HasSubstr("as many polygons in texture channel 0 as in the mesh, 8, found 7"));
    EXPECT_THAT(failureAfter(
                    [](LegacyMesh& mesh) {
                        mesh.channels[0].polygons.push_back({0, 1, 2});
                    }),
                HasSubstr("as many polygons in texture channel 0 as in the mesh, 8, found 9"));
}

TEST(LegacyMesh, MaterialNumbersOutsideTheNamesAreNoError)
{
    LegacyMesh mesh = support::makeLegacyField(2, 2);
    mesh.materials = {"only"};
    const MeshChunk plain = convert(mesh);
    mesh.faceMaterials = {0, 7, -1, 3, 0, 1, 2, 3};
    const MeshChunk one = convert(mesh);
    EXPECT_EQ(one.vertices, plain.vertices) << "one material has all vertices, whatever its polygons name";
    EXPECT_EQ(one.faces.indices, plain.faces.indices);

    mesh.materials = {"a", "b"};
    mesh.faceMaterials = {0, 1, 1, 1, 0, 1, 1, 0};
    const MeshChunk whole = convert(mesh);
    mesh.faceMaterials = {0, 2, 1, std::numeric_limits<int>::max(), 0, -1, std::numeric_limits<int>::min(), 0};
    support::VerboseCapture log;
    const MeshChunk rest = convert(mesh);
    EXPECT_EQ(log.getText(),
              "Mesh \"" + std::string(mesh.name) + "\": 4 polygons name none of the 2 materials and are left out\n");
    EXPECT_THAT(rest.faces.groupCounts, testing::ElementsAre(3u, 1u));
    EXPECT_EQ(rest.vertices.groupCounts[0], whole.vertices.groupCounts[0]);
    EXPECT_EQ(rest.vertices.groupCounts[1], 3u);

    mesh.faceMaterials = {0, 1, 1, 1, 0};
    EXPECT_THAT(convert(mesh).faces.groupCounts, testing::ElementsAre(2u, 3u)) << "polygons without a number";
    mesh.faceMaterials = {0, 1, 1, 1, 0, 1, 1, 0, 0, 1};
    EXPECT_EQ(convert(mesh).faces.indices, whole.faces.indices) << "numbers without a polygon";

    mesh.faceMaterials.assign(8, -1);
    const MeshChunk none = convert(mesh);
    EXPECT_THAT(none.faces.groupCounts, testing::ElementsAre(0u, 0u));
    EXPECT_TRUE(none.vertices.positions.empty());
}

TEST(LegacyMesh, NewFacesInAnOldMeshAreAnError)
{
    const MeshChunk strip = support::makeStripMesh("strip", 1);
    S_MemoryFileWriter writer;
    writeChunk(writer, CHUNK_MESH, 1, strip.vertices, strip.faces);
    EXPECT_THAT(support::messageOf([&] { (void)support::readWritten<MeshChunk>(writer); }),
                HasSubstr("polygons in the faces of a mesh of the old layout"));
}

TEST(LegacyMesh, WorkMemoryStaysUntilItIsReleased)
{
    const LegacyMesh cube = support::makeLegacyCube();
    const MeshChunk first = convert(cube);
    deleteStaticData();
    deleteStaticData();
    const long long live = S_Memory::getLiveCount();
    (void)convert(cube);
    EXPECT_GT(S_Memory::getLiveCount(), live);
    deleteStaticData();
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    EXPECT_EQ(convert(cube), first);
    {
        S_MemoryFileWriter writer;
        write(writer, makeRandomMesh(3));
        const auto convertAnew = [&]
        {
            try
            {
                (void)support::readWritten<MeshChunk>(writer);
            }
            catch (...)
            {
                deleteStaticData();
                throw;
            }
            deleteStaticData();
        };
        deleteStaticData();
        support::expectNothingLeftByFailedAllocations(convertAnew);
    }
}
