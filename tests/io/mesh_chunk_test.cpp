#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"
#include "tests/support/mesh_builder.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/mesh_chunk.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

using namespace TW2;
using support::listOf;
using support::readWritten;
using support::Vector;
using support::writeAndRead;
using support::writeChunk;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using WriteChunk = S_MemoryFileWriter::Chunk;
using Groups = std::vector<unsigned int>;

namespace
{
void writeVertices(S_MemoryFileWriter& writer, unsigned int count, const Groups& groups, unsigned int version = 1)
{
    const WriteChunk chunk(writer, CHUNK_MESH_VERTICES, version);
    writer << count;
    for (unsigned int i = 0; i < 2 * count; ++i)
    {
        writer << Vector(static_cast<float>(i), 0, 0);
    }
    listOf(groups)(writer);
}

void writeFaces(S_MemoryFileWriter& writer, const std::vector<std::uint16_t>& indices, const Groups& groups,
                unsigned int version = 1)
{
    const WriteChunk chunk(writer, CHUNK_MESH_FACES, version);
    writer.writeCount(indices.size());
    writer.write(indices.data(), 2 * indices.size());
    listOf(groups)(writer);
}

void writeNames(S_MemoryFileWriter& writer, const std::vector<std::string>& names, unsigned int version = 1)
{
    writeChunk(writer, CHUNK_MESH_MATERIALS, version, listOf(names));
}

void writeChannel(S_MemoryFileWriter& writer, int number, unsigned int count, const Groups& groups)
{
    const WriteChunk chunk(writer, CHUNK_TEXTURE_CHANNEL, 1);
    writer << number << count;
    for (unsigned int i = 0; i < count; ++i)
    {
        writer << Vector(static_cast<float>(i), 1, 0);
    }
    listOf(groups)(writer);
}

using Parts = std::function<void(S_MemoryFileWriter&)>;

MeshChunk readMesh(const Parts& parts, unsigned int version = 2)
{
    S_MemoryFileWriter writer;
    writeChunk(writer, CHUNK_MESH, version, parts);
    return readWritten<MeshChunk>(writer);
}
}  // namespace

TEST(MeshChunk, EveryPartComesBackAsItWasWritten)
{
    MeshChunk mesh = support::makeStripMesh("wall", 5, {"brick", "plaster"});
    mesh.hasParent = true;
    mesh.parentName = "house";
    mesh.transform.setTranslation({1, 2, 3});
    mesh.editSmoothingGroups().masks = {1, 2, 0xFFFFFFFF};
    mesh.editChannel(1) = mesh.channels[0];
    mesh.channels[1].channel = -7;
    mesh.editInstanceName() = "other wall";
    EXPECT_EQ(writeAndRead(mesh), mesh);

    mesh.reset();
    EXPECT_EQ(mesh, MeshChunk());
    EXPECT_EQ(writeAndRead(mesh), mesh);
    EXPECT_EQ(writeAndRead(support::makeStripMesh("plain", 1)), support::makeStripMesh("plain", 1));
}

TEST(MeshChunk, GroupsBecomeOffsetsAndAccessorsFindWhatIsInThem)
{
    const std::vector<std::uint16_t> indices = {0, 1, 2, 2, 1, 3, 0, 2, 1, 3, 4, 5, 5, 4, 0, 1, 2, 3};
    const MeshChunk mesh = readMesh(
        [&](S_MemoryFileWriter& writer)
        {
            writeVertices(writer, 10, {4, 0, 6});
            writeFaces(writer, indices, {2, 0, 4});
            writeNames(writer, {"a", "b", "c"});
            writeChannel(writer, 5, 6, {0, 0, 6});
            writeChannel(writer, 3, 10, {4, 0, 6});
        });
    EXPECT_THAT(mesh.vertices.groupOffsets, ElementsAre(0, 4, 4));
    EXPECT_THAT(mesh.faces.groupOffsets, ElementsAre(0, 6, 6));
    EXPECT_THAT(mesh.channels[0].groupOffsets, ElementsAre(0, 0, 0));
    EXPECT_THAT(mesh.channels[1].groupOffsets, ElementsAre(0, 4, 4));
    EXPECT_EQ(mesh.channels[0].channel, 5);
    EXPECT_EQ(mesh.channels[1].channel, 3);
    EXPECT_TRUE(mesh.vertices.hasNormals && mesh.faces.hasIndices);

    ASSERT_EQ(mesh.getGroupCount(), 3u);
    EXPECT_EQ(mesh.getVertexCount(2), 6u);
    EXPECT_EQ(mesh.getTriangleCount(2), 4u);
    EXPECT_EQ(mesh.getPosition(2, 1).x, 5.0f);
    EXPECT_EQ(mesh.getNormal(2, 1).x, 15.0f);
    EXPECT_EQ(mesh.getIndex(2, 1, 0), 3u);
    EXPECT_EQ(mesh.getCoordinateCount(0, 0), 0);
    EXPECT_EQ(mesh.getCoordinateCount(0, 2), 6);
    EXPECT_EQ(mesh.getCoordinate(1, 2, 1).x, 5.0f);
    EXPECT_EQ(mesh.getCoordinateCount(9, 2), 0);
    EXPECT_FALSE(mesh.hasVertexMap());
}

TEST(MeshChunk, PartsStandInAnyOrderAndUnknownOnesAreSkipped)
{
    const MeshChunk mesh = readMesh(
        [](S_MemoryFileWriter& writer)
        {
            writeChunk(writer, CHUNK_MESH_MATERIALS, 0, 1, "first", 1, 7);
            writeFaces(writer, {0, 1, 2}, {1}, 7);
            for (const unsigned int id : {0x10009u, 0x1000Au, 0x1000Du, 0x77u})
            {
                writeChunk(writer, id, 0, "whatever");
            }
            writeChannel(writer, 1, 3, {3});
            writeVertices(writer, 3, {3}, 7);
            NodeChunk node;
            node.name = "late";
            writer << node;
            writeNames(writer, {"second"}, 7);  // a repeated part replaces the earlier one
            writeChannel(writer, 2, 3, {3});
        });
    EXPECT_EQ(mesh.name, "late");
    EXPECT_THAT(mesh.getMaterialNames(), ElementsAre("second"));
    EXPECT_THAT(mesh.materials.faceMaterials, IsEmpty());
    EXPECT_EQ(mesh.channels[1].channel, 2);
    EXPECT_FALSE(mesh.channelUsed[2]);
}

TEST(MeshChunk, ARecordThatIsReusedStartsAgainAtTheFirstChannel)
{
    S_MemoryFileWriter writer;
    writer << support::makeStripMesh("first", 2, {"a"}) << support::makeStripMesh("second", 3);
    S_MemoryFile file;
    support::openWritten(file, writer);
    MeshChunk mesh;
    file >> mesh;
    mesh.vertices.vertexMap = {1};
    mesh.reset();
    file >> mesh;
    EXPECT_EQ(mesh, support::makeStripMesh("second", 3));

    // Whoever is handed the record may take its content away.
    const MeshChunk taken = std::move(mesh);
    mesh.reset();
    EXPECT_EQ(mesh, MeshChunk());
    file.seek(0, S_MemoryFile::seekBegin);
    file >> mesh;
    EXPECT_EQ(mesh, support::makeStripMesh("first", 2, {"a"}));
}

TEST(MeshChunk, ChannelsPastTheTenthAreLeftOut)
{
    const MeshChunk mesh = readMesh(
        [](S_MemoryFileWriter& writer)
        {
            for (int i = 0; i < 12; ++i)
            {
                writeChannel(writer, i, 1, {1});
            }
        });
    ASSERT_EQ(mesh.channels.size(), MeshChunk::channelSlots);
    EXPECT_EQ(mesh.channels[9].channel, 9);
}

TEST(MeshChunk, OldVerticesHaveNoNormalsUntilTheyAreConverted)
{
    const std::vector<Vector> positions = {{1, 2, 3}, {4, 5, 6}};
    const MeshChunk mesh =
        readMesh([&](S_MemoryFileWriter& w) { writeChunk(w, CHUNK_MESH_VERTICES, 0, listOf(positions)); });
    EXPECT_TRUE(mesh.hasVertices);
    EXPECT_FALSE(mesh.hasFaces);
    EXPECT_FALSE(mesh.vertices.hasNormals);
    EXPECT_THAT(mesh.vertices.positions, testing::ElementsAreArray(positions));
    EXPECT_THAT(mesh.vertices.normals, ElementsAre(Vector(), Vector()));
    EXPECT_THAT(mesh.vertices.groupCounts, IsEmpty());
}

TEST(MeshChunk, OldPartsOfANewMeshStayAsTheyAre)
{
    const std::vector<support::Triangle> polygons = {{2, 1, 0}};
    const MeshChunk mesh = readMesh(
        [&](S_MemoryFileWriter& writer)
        {
            writeVertices(writer, 3, {3});
            writeChunk(writer, CHUNK_MESH_FACES, 0, listOf(polygons), 0, 0);
        });
    EXPECT_FALSE(mesh.faces.hasIndices);
    EXPECT_THAT(mesh.faces.polygons[0].vertexIndices, ElementsAre(2, 1, 0));
    EXPECT_THAT(mesh.faces.indices, ElementsAre(0, 0, 0));
    EXPECT_EQ(mesh.getTriangleCount(0), 0u);
}

TEST(MeshChunk, AnEmptyMeshHasOneEmptyGroup)
{
    for (const std::vector<std::string>& names : {std::vector<std::string>(), {"a"}})
    {
        const MeshChunk mesh = readMesh(
            [&names](S_MemoryFileWriter& writer)
            {
                writeVertices(writer, 0, {});
                writeFaces(writer, {}, {});
                writeNames(writer, names);
            });
        ASSERT_EQ(mesh.getGroupCount(), 1u);
        EXPECT_EQ(mesh.vertices.groupOffsets.size(), 1u);
        EXPECT_EQ(mesh.faces.groupOffsets.size(), 1u);
        EXPECT_EQ(mesh.getVertexCount(0), 0u);
        EXPECT_EQ(mesh.getTriangleCount(0), 0u);
    }
}

TEST(MeshChunk, DamageIsAnErrorThatNamesFileChunkAndValue)
{
    struct
    {
        int vertices;  // -1: no vertices and faces
        Groups vertexGroups;
        std::vector<std::uint16_t> indices;
        Groups triangleGroups;
        std::vector<std::string> names;
        unsigned int coordinates;
        Groups coordinateGroups;
        const char* message;
    } const cases[] = {
        {7, {3, 4}, {0, 1, 2, 0, 4, 1}, {1, 1}, {"a", "b"}, 0, {}, "triangle indices below 4 in group 1, found 4"},
        {7, {3, 3}, {}, {}, {}, 0, {}, "0x10006, byte 208: expected the 2 groups to add up to 7 vertices, found 6"},
        {1, {0xFFFFFFFF, 2}, {}, {}, {}, 0, {}, "add up to 1 vertices, found at least"},
        {3, {3}, {0, 1, 2}, {2}, {}, 0, {}, "add up to 1 triangles, found at least 2"},
        {3, {3}, {0, 1, 2, 0}, {1}, {}, 0, {}, "three indices per triangle, found 4"},
        {-1, {}, {}, {}, {}, 4, {3}, "0x1000E, byte 88: expected the 1 groups to add up to 4 coordinates, found 3"},
        {3, {3}, {0, 1, 2}, {1}, {}, 2, {2}, "3 coordinates or none in group 0 of texture channel 0, found 2"},
        {3, {3}, {0, 1, 2}, {1}, {}, 3, {3, 0}, "as many groups in texture channel 0 as of vertices, 1, found 2"},
        {3, {3}, {0, 1, 2}, {1, 0}, {}, 0, {}, "as many groups of triangles as of vertices, 1, found 2"},
        {3, {3}, {0, 1, 2}, {1}, {"a", "b"}, 0, {}, "2 groups for 2 materials, found 1"},
        {3, {3, 0}, {0, 1, 2}, {1, 0}, {}, 0, {}, "1 groups for 0 materials, found 2"},
        {0, {}, {}, {}, {"a", "b"}, 0, {}, "2 groups for 2 materials, found 0"},
    };
    for (const auto& c : cases)
    {
        const std::string message = support::messageOf(
            [&c]
            {
                (void)readMesh(
                    [&c](S_MemoryFileWriter& writer)
                    {
                        if (c.vertices >= 0)
                        {
                            writeVertices(writer, static_cast<unsigned int>(c.vertices), c.vertexGroups);
                            writeFaces(writer, c.indices, c.triangleGroups);
                        }
                        if (!c.names.empty())
                        {
                            writeNames(writer, c.names);
                        }
                        if (c.coordinates > 0)
                        {
                            writeChannel(writer, 1, c.coordinates, c.coordinateGroups);
                        }
                    });
            });
        EXPECT_THAT(message, HasSubstr("File \"test.tw\", chunk 0x1000"));
        EXPECT_THAT(message, HasSubstr(c.message));
    }
    const auto failureOf = [](unsigned int id, unsigned int version, const auto&... values)
    {
        return support::messageOf(
            [&] { (void)readMesh([&](S_MemoryFileWriter& writer) { writeChunk(writer, id, version, values...); }); });
    };
    EXPECT_THAT(failureOf(CHUNK_MESH_VERTICES, 1, 0xFFFFFFFFu, 1.0f), HasSubstr("4294967295 elements"));
    EXPECT_THAT(failureOf(CHUNK_MESH_VERTICES, 1, 1u, Vector()), HasSubstr("1 elements of at least 24 bytes, 12 are"));
    EXPECT_THAT(failureOf(CHUNK_MESH_MATERIALS, 1, 2, "abc"), HasSubstr("2 elements of at least 4 bytes, 7 are left"));
    const unsigned int polygonId = CHUNK_POLYGON;  // with a body of four bytes
    EXPECT_THAT(failureOf(CHUNK_MESH_FACES, 0, 1, polygonId, 0u, 4u, -1),
                HasSubstr("0x10008, byte 44: expected a polygon of at least 0 corners, found -1"));
}

TEST(MeshChunk, WhatWouldNotBeReadIsNotWritten)
{
    const auto refuse = [](const std::function<void(MeshChunk&)>& damage)
    {
        MeshChunk mesh = support::makeStripMesh("bad wall", 2, {"a"});
        damage(mesh);
        S_MemoryFileWriter writer;
        EXPECT_THROW(writer << mesh, TW_Exception_InvalidGeometry);
        EXPECT_TRUE(writer.getBytes().empty());
    };
    refuse([](MeshChunk& mesh) { mesh.faces.indices[3] = 99; });
    refuse([](MeshChunk& mesh) { mesh.faces.hasIndices = false; });
    refuse([](MeshChunk& mesh) { mesh.vertices.normals.pop_back(); });
    refuse([](MeshChunk& mesh) { mesh.vertices.normals.emplace_back(); });
    refuse([](MeshChunk& mesh) { mesh.materials.names.emplace_back("b"); });
    refuse([](MeshChunk& mesh) { mesh.channels[0].coordinates.pop_back(); });
    refuse([](MeshChunk& mesh) { mesh.editChannel(2) = mesh.channels[0]; });
    // Consumers ask a slot for its coordinates whether or not it is marked.
    refuse(
        [](MeshChunk& mesh)
        {
            mesh.channels[1].coordinates.resize(1);
            mesh.channels[1].groupOffsets = {0};
            mesh.channels[1].groupCounts = {1};
        });
    TextureChannelChunk channel;
    channel.groupCounts = {1};
    S_MemoryFileWriter writer;
    EXPECT_THROW(writer << channel, TW_Exception_InvalidGeometry);
}
