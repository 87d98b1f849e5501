#include "render/picture_target.h"
#include "render/scene_renderer.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/with_driver.h"
#include "tests/viewer/showing.h"
#include "viewer/commands.h"
#include "viewer/pictures.h"
#include "viewer/render_command.h"
#include "viewer/viewer.h"

#include <tw2/io/light_chunks.h>
#include <tw2/light/light_animation_chunks.h>

#include <platform/image/image.h>
#include <platform/runtime/memory_file_writer.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>
#include <vector>

namespace
{
using TW2::viewer::execute;
using TW2::viewer::OrbitCamera;
using TW2::viewer::Viewer;
using ViewerPictures = support::WithDriver;

TEST_F(ViewerPictures, AnotherShapeOfThePictureIsFramedAgainWhileNobodyHasMovedTheCamera)
{
    TW2::render::SceneRenderer renderer;
    const TW2::render::PictureTarget target(64, 64, 1);
    target.bind();
    Viewer viewer;
    viewer.open(TW2_SAMPLE "/walker.script");
    const auto isFramedAgain = [&viewer, &renderer](unsigned int width)
    {
        const OrbitCamera before = viewer.getCamera();
        viewer.draw(renderer, width, 64);
        return viewer.getCamera() != before;
    };
    EXPECT_TRUE(isFramedAgain(64));
    EXPECT_FALSE(isFramedAgain(64));
    EXPECT_TRUE(isFramedAgain(16));
    for (const char* line : {"clip walk", "mixer on", "play on"})
    {
        execute(viewer, line);
    }
    viewer.update(0.7);
    EXPECT_TRUE(isFramedAgain(64)) << "it is what moved, not the camera";
    viewer.update(0.7);
    execute(viewer, "mixer off");
    EXPECT_TRUE(isFramedAgain(16));
    execute(viewer, "orbit 40 0");
    const float before = viewer.getLabels(64, 64).back().m_fX;
    EXPECT_FALSE(isFramedAgain(16));
    EXPECT_NE(viewer.getLabels(64, 64).back().m_fX, before) << "the new direction is drawn at once";
    EXPECT_FALSE(isFramedAgain(64)) << "somebody has chosen this";
}

/// Pictures of the states that the controls make: each differs from the plain one where it should.
TEST_F(ViewerPictures, EveryWayOfShowingChangesThePicture)
{
    TW2::render::SceneRenderer renderer;
    const TW2::render::PictureTarget target(160, 120, 1);
    const auto draw = [&](std::vector<std::string> lines)
    {
        lines.insert(lines.begin(), "seek 0.5");
        support::Showing viewer(lines);
        target.bind();
        viewer.draw(renderer, 160, 120);
        const G_Image image = target.read();
        return std::vector<unsigned char>(image.getPixels(), image.getPixels() + image.getSize());
    };
    const auto plain = draw({});
    EXPECT_TRUE(draw({}) == plain) << "the same picture twice";
    for (const char* line : {"show mesh off",
                             "show skeleton on",
                             "show bounds on",
                             "show axes on",
                             "show grid off",
                             "show shadow off",
                             "show studio-lights off",
                             "show dark on",
                             "surface unlit",
                             "surface normals",
                             "surface weights",
                             "wireframe over",
                             "wireframe only",
                             "bone 4",
                             "seek 1.2",
                             "clip sprout_dance",
                             "crowd 2",
                             "slope 10",
                             "slope 10 90",
                             "orbit 20 0",
                             "zoom 0.5",
                             "pan 0.2 0",
                             "group 3 sprout_dance"})
    {
        EXPECT_TRUE(draw({line}) != plain) << line;
    }
    EXPECT_TRUE(draw({"surface weights", "bone 6"}) != draw({"surface weights", "bone 1"}));
    EXPECT_TRUE(draw({"show mesh off", "reach look 4", "target 0.3 2 0"}) != draw({"show mesh off"})) << "a cross";
}

TEST_F(ViewerPictures, TheLightsOfTheFilesShineWithTheClockUntilTheyAreHidden)
{
    TW2::DirectionalLightChunk sun;
    sun.name = "sun";
    sun.brightness = 1.0F;
    TW2::DirectionalLightAnimationChunk dawn;
    dawn.header = {"sun", 10, false};
    dawn.totalFrameCount = 21;
    dawn.colorKeys = {{0, {0, 0, 0}}, {20, {200, 200, 200}}};
    S_MemoryFileWriter writer;
    writer << sun << dawn;
    const support::TemporaryDirectory folder;
    std::filesystem::copy(TW2_SAMPLE, folder.getPath(), std::filesystem::copy_options::recursive);
    folder.write("sun.tw", writer.getBytes());
    const std::string script =
        folder.write("lit.script", folder.read("sprout.script") + "sky { geometry { exportdata \"sun.tw\" } }\n");
    TW2::render::SceneRenderer renderer;
    const TW2::render::PictureTarget target(32, 32, 1);
    target.bind();
    const auto measure = [&](std::vector<std::string> lines)
    {
        lines.insert(lines.begin(), {"show studio-lights off", "look front"});
        support::Showing viewer(lines, script);
        EXPECT_EQ(makeRenderCommand(viewer, 8, 8).find(" --file-lights") == std::string::npos, lines.size() > 3);
        // A picture of another size leaves the target bound.
        EXPECT_EQ(TW2::viewer::takePicture(viewer, renderer, 48, 48).getWidth(), 48U);
        viewer.draw(renderer, 32, 32);
        const G_Image image = target.read();
        return std::accumulate(image.getPixels(), image.getPixels() + image.getSize(), 0);
    };
    const int night = measure({"seek 0"});
    const int noon = measure({"seek 2"});
    EXPECT_GT(noon, night + 1000);
    EXPECT_NEAR(measure({"seek 1"}), (night + noon) / 2, (noon - night) / 4);
    EXPECT_NEAR(measure({"seek 2", "show file-lights off"}), night, (noon - night) / 10);
}
}  // namespace
