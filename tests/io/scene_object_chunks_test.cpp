#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace TW2;
using support::readWritten;
using support::writeAndRead;
using support::writeChunk;

namespace
{
/// A record with a different value in every field that its kind has.
template <typename R>
R makeFilled()
{
    R record;
    record.name = "lamp";
    record.parentName = "ceiling";
    record.hasParent = true;
    record.extraString = "user text";
    record.transform.setTranslation({1, 2, 3});
    record.transform.setRow(0, {0, 1, 0});
    if constexpr (requires { record.value0; })
    {
        record.value0 = 1;
        record.value1 = 2;
        record.value2 = 3;
    }
    if constexpr (requires { record.color; })
    {
        record.color = {1, 2, 3, 4};
        record.brightness = 5;
    }
    if constexpr (requires { record.fallOff; })
    {
        record.hotSpot = 6;
        record.fallOff = 7;
    }
    if constexpr (requires { record.fallOffAngle; })
    {
        record.hotSpotAngle = 8;
        record.fallOffAngle = 9;
    }
    if constexpr (requires { record.helperString; })
    {
        record.helperString = "spawn point";
    }
    return record;
}

/// A record survives a file and is undone by a reset.
template <typename R>
void expectTripAndReset(R record)
{
    EXPECT_EQ(writeAndRead(record), record);
    EXPECT_NE(record, R());
    record.reset();
    EXPECT_EQ(record, R());
}
}  // namespace

TEST(SceneObjectChunks, EveryRecordComesBackAsItWasWrittenAndCanBeReset)
{
    expectTripAndReset(makeFilled<NodeChunk>());
    expectTripAndReset(makeFilled<CameraChunk>());
    expectTripAndReset(makeFilled<PointLightChunk>());
    expectTripAndReset(makeFilled<DirectionalLightChunk>());
    expectTripAndReset(makeFilled<SpotLightChunk>());
    expectTripAndReset(makeFilled<HelperChunk>());
    expectTripAndReset(EnvironmentChunk{0x280A141E, 0x01020304});
}

TEST(SceneObjectChunks, AnOldNodeLeavesItsExtraStringAlone)
{
    S_MemoryFileWriter writer;
    writeChunk(writer, CHUNK_NODE, 0, "lamp", "ceiling", M_Matrix4x3Template<float>::translation({1, 2, 3}), true);
    S_MemoryFile file;
    support::openWritten(file, writer);
    NodeChunk node;
    node.extraString = "before";
    file >> node;
    EXPECT_EQ(node.getName(), "lamp");
    EXPECT_EQ(node.getParentName(), "ceiling");
    EXPECT_TRUE(node.getHasParent());
    EXPECT_EQ(node.getTransform().getTranslation(), M_Vector3Template<float>(1, 2, 3));
    EXPECT_EQ(node.extraString, "before");
}

// The values behind the node are only found when what a newer node appends is skipped; what a newer object appends is
// left behind with its chunk.
TEST(SceneObjectChunks, ObjectsOfNewerVersionsAreReadAsFarAsTheyAreKnown)
{
    const auto node = [](S_MemoryFileWriter& w)
    { writeChunk(w, CHUNK_NODE, 9, "lamp", "", M_Matrix4x3Template<float>(), false, "extra", 123, "more"); };
    S_MemoryFileWriter writer;
    writeChunk(writer, CHUNK_CAMERA, 7, node, 1.0f, 2.0f, 3.0f, "appended");
    writeChunk(writer, CHUNK_SPOT_LIGHT, 1, NodeChunk(), 10.0f, 20.0f, 30.0f, 40.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f,
               6.0f);
    S_MemoryFile file;
    support::openWritten(file, writer);
    CameraChunk camera;
    file >> camera;
    EXPECT_EQ(camera.extraString, "extra");
    EXPECT_EQ(camera.value0, 1.0f);
    EXPECT_EQ(camera.value1, 2.0f);
    EXPECT_EQ(camera.value2, 3.0f);
    file.skipChunk();
    SpotLightChunk light;
    file >> light;
    EXPECT_EQ(light.color, G_FColor(10, 20, 30, 40));
    EXPECT_EQ(light.hotSpot, 2.0f);
    EXPECT_EQ(light.fallOff, 3.0f);
    EXPECT_EQ(light.hotSpotAngle, 4.0f);
    EXPECT_EQ(light.fallOffAngle, 5.0f);
}

TEST(SceneObjectChunks, ColoursOfTheEnvironmentAreRedGreenBlueAlphaInFiles)
{
    S_MemoryFileWriter writer;
    writeChunk(writer, CHUNK_ENVIRONMENT, 0, 0x281E140Au, 0xFFFF0000u);  // the lowest byte comes first
    const EnvironmentChunk environment = readWritten<EnvironmentChunk>(writer);
    EXPECT_EQ(environment.firstColor, 0x280A141Eu);
    EXPECT_EQ(environment.secondColor, 0xFF0000FFu);
}

TEST(SceneObjectChunks, AMissingNodeOrValueIsAnErrorThatNamesTheChunk)
{
    S_MemoryFileWriter noNode;
    writeChunk(noNode, CHUNK_HELPER, 0, "spawn point");
    EXPECT_THAT(support::messageOf([&] { (void)readWritten<HelperChunk>(noNode); }),
                testing::HasSubstr("chunk 0x10016"));

    S_MemoryFileWriter shortLight;
    writeChunk(shortLight, CHUNK_POINT_LIGHT, 0, NodeChunk(), 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f);
    EXPECT_THAT(support::messageOf([&] { (void)readWritten<PointLightChunk>(shortLight); }),
                testing::HasSubstr("chunk 0x10002"));
}
