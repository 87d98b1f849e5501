#include "convert/scene_writer.h"

#include "convert/skeleton.h"
#include "tests/convert/model_builder.h"
#include "tests/support/chunk_files.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>

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
    EXPECT_NEAR(camera.transform.determinant(), 1.0F, 1e-5F);
}

TEST(WrittenStage, LightsShineFromTheirNodesAndNotesStayWithTheirs)
{
    using TW2::convert::Light;
    convert_test::Model model;
    convert_test::addNode(model, "lamp", -1, convert_test::move(1.0, 2.0, 3.0));
    model.m_vecNodes[0].m_strNotes = "kind=street\n";
    for (const Light::Kind kind : {Light::Kind::Point, Light::Kind::Directional, Light::Kind::Spot})
    {
        Light& light = model.m_vecLights.emplace_back();
        light.m_eKind = kind;
        light.m_vPosition = {0.0, 5.0, 0.0};
        light.m_vForward = {0.0, -2.0, 0.0};  // straight down, where up says nothing
        light.m_color = {10.0F, 20.0F, 30.0F};
        light.m_fBrightness = 1.5F;
        light.m_fRange = 40.0F;
        light.m_fInnerAngle = 50.0F;
        light.m_fOuterAngle = 60.0F;
    }
    std::vector<std::string> warnings;
    S_MemoryFileWriter writer;
    TW2::convert::writeStage(writer, model, TW2::convert::makeSkeleton(model, warnings));
    S_MemoryFile file;
    support::openWritten(file, writer);
    TW2::PointLightChunk point;
    TW2::DirectionalLightChunk sun;
    TW2::SpotLightChunk spot;
    TW2::HelperChunk helper;
    file >> point >> sun >> spot >> helper;
    const auto expectLight = [](const auto& light)
    {
        EXPECT_EQ(light.name, "lamp_light");
        EXPECT_TRUE(light.hasParent);
        EXPECT_EQ(light.parentName, "lamp");
        EXPECT_EQ(light.color.getRGB(), G_FColor(10.0F, 20.0F, 30.0F).getRGB());
        EXPECT_EQ(light.brightness, 1.5F);
        EXPECT_EQ(light.transform.getTranslation(), (M_Vector3Template<float>{0.0F, 5.0F, 0.0F}));
        EXPECT_EQ(light.transform.getRow(2), (M_Vector3Template<float>{0.0F, -1.0F, 0.0F}));
        EXPECT_NEAR(light.transform.determinant(), 1.0F, 1e-5F);
    };
    expectLight(point);
    expectLight(sun);
    expectLight(spot);
    EXPECT_EQ(point.fallOff, 40.0F);
    EXPECT_EQ(spot.fallOff, 40.0F);
    EXPECT_EQ(spot.hotSpotAngle, 50.0F);
    EXPECT_EQ(spot.fallOffAngle, 60.0F);
    EXPECT_EQ(helper.name, "lamp");
    EXPECT_EQ(helper.helperString, "kind=street\n");
}
