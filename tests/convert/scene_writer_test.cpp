#include "convert/scene_writer.h"

#include "convert/skeleton.h"
#include "tests/convert/model_builder.h"
#include "tests/support/chunk_files.h"

#include <tw2/io/camera_chunk.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(WrittenStage, ACameraStandsInTheSceneWhereItsNodesPutIt)
{
    // Two nodes above each other, and a camera beside the lower one that looks along its y axis.
    convert_test::Model model;
    convert_test::addNode(model, "crane", -1, convert_test::turnZ(90.0) * convert_test::move(1.0, 2.0, 3.0));
    convert_test::addNode(model, "eye", 0, convert_test::move(10.0, 0.0, 0.0));
    model.m_vecCameras.push_back({1, {0.0, 0.0, 5.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, 60.0F, 0.5F, 200.0F});
    std::vector<std::string> warnings;
    S_MemoryFileWriter writer;
    TW2::convert::writeStage(writer, model, TW2::convert::makeSkeleton(model, warnings));
    const auto camera = support::readWritten<TW2::CameraChunk>(writer);
    EXPECT_EQ(camera.name, "eye");
    EXPECT_EQ(camera.value0, 60.0F);
    EXPECT_EQ(camera.value1, 0.5F);
    EXPECT_EQ(camera.value2, 200.0F);
    const auto place = camera.transform.getTranslation();
    EXPECT_NEAR(place.x, 1.0F, 1e-5F);
    EXPECT_NEAR(place.y, 12.0F, 1e-5F);
    EXPECT_NEAR(place.z, 8.0F, 1e-5F);
    // It looks along the third row, which the crane's turn has brought from y to -x.
    EXPECT_NEAR(camera.transform.getRow(2).x, -1.0F, 1e-5F);
    EXPECT_NEAR(camera.transform.getRow(1).z, 1.0F, 1e-5F);
}
