#include "render/scene_renderer.h"
#include "tests/support/object_files.h"
#include "tests/support/picture_files.h"
#include "tests/support/run_command.h"
#include "tests/viewer/showing.h"
#include "viewer/commands.h"
#include "viewer/failure.h"
#include "viewer/pictures.h"
#include "viewer/render_command.h"
#include "viewer/viewer.h"

#include <platform/image/image.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#if defined(TW2_HAS_RENDER)
#include "tests/support/with_driver.h"

namespace
{
using RenderAsViewed = support::WithDriver;

// The command that the viewer gives for its picture draws that picture.
TEST_F(RenderAsViewed, TheCommandForAPictureDrawsIt)
{
    constexpr unsigned int width = 96;
    constexpr unsigned int height = 64;
    TW2::render::SceneRenderer renderer;
    const support::TemporaryDirectory folder;
    for (const std::vector<std::string>& lines : std::vector<std::vector<std::string>>{
             {"seek 0", "show axes on"},
             {"seek 0.5"},
             {"clip sprout_dance", "seek 0.3", "look left", "zoom 0.7", "show skeleton on"},
             {"seek 0.4", "blend 1 sprout_dance 0.6", "blend 0 sprout_sway 0.2", "orbit 40 20", "bone 3"},
             {"surface normals", "show shadow off", "pan 0.1 0.2", "show bounds on"},
             {"surface unlit", "wireframe over", "show dark on", "look back"},
             {"surface weights", "bone 4", "show grid off", "wireframe none"},
             {"wireframe only", "show studio-lights off", "look top"},
             {"show mesh off", "show skeleton on", "orbit -170 -40"},
             {"open " TW2_SAMPLE "/walker.script", "clip run", "seek 0.35"},
             {"open " TW2_SAMPLE "/walker.script", "clip wave", "seek 1", "look front"}})
    {
        support::Showing viewer(lines);
        const std::string all = testing::PrintToString(lines);
        const G_Image seen = TW2::viewer::takePicture(viewer, renderer, width, height);
        EXPECT_EQ(TW2::viewer::listWhatRenderLeavesOut(viewer), "") << all;

        std::istringstream words(TW2::viewer::makeRenderCommand(viewer, width, height));
        std::vector<std::string> arguments;
        for (std::string word; words >> word;)
        {
            arguments.push_back(word == "picture.png" ? folder.file(word) : word);
        }
        ASSERT_EQ(arguments.at(0), "tw2");
        arguments.erase(arguments.begin());
        const support::CommandResult result = support::runTW2(arguments);
        ASSERT_EQ(result.status, 0) << result.errors;
        const G_Image drawn(folder.file("picture.png").c_str());
        ASSERT_EQ(drawn.getSize(), seen.getSize());
        int different = 0;
        for (std::size_t i = 0; i < seen.getSize(); ++i)
        {
            different += std::abs(seen.getPixels()[i] - drawn.getPixels()[i]) > 24 ? 1 : 0;
        }
        EXPECT_LT(different, 40) << all << TW2::viewer::makeRenderCommand(viewer, width, height);
    }
}

TEST_F(RenderAsViewed, ALoopIsWrittenOnceAndTheClockStandsWhereItStood)
{
    TW2::render::SceneRenderer renderer;
    const support::TemporaryDirectory folder;
    support::Showing viewer({"seek 0.7"});
    const auto pose = support::takePose(viewer.getObject()->getObject());
    TW2::viewer::writeLoop(viewer, renderer, folder.file("loop.gif"), 48, 32, 10.0);
    EXPECT_EQ(viewer.getPlayback().getTime(), 0.7);
    EXPECT_EQ(support::takePose(viewer.getObject()->getObject()), pose);
    const std::vector<int> delays = support::readGIFDelays(folder.read("loop.gif"));
    EXPECT_EQ(std::accumulate(delays.begin(), delays.end(), 0), 200) << "sway repeats after two seconds";
    TW2::viewer::writeLoop(viewer, renderer, folder.file("loop.webp"), 48, 32, 10.0);
    EXPECT_EQ(folder.read("loop.webp").substr(8, 4), "WEBP");
    TW2::viewer::execute(viewer, "mixer on");
    TW2::viewer::writeLoop(viewer, renderer, folder.file("mixed.gif"), 48, 32, 10.0);
    const auto size = static_cast<double>(folder.read("loop.gif").size());
    EXPECT_NEAR(static_cast<double>(folder.read("mixed.gif").size()) / size, 1.0, 0.02) << "it moves as much";
    EXPECT_NEAR(viewer.getPlayback().getTime(), 0.7, 1e-6);
    TW2::viewer::execute(viewer, "mixer off");
    TW2::viewer::execute(viewer, "clip sprout_rest");
    EXPECT_THROW(TW2::viewer::writeLoop(viewer, renderer, folder.file("rest.gif"), 48, 32, 10.0), TW2::viewer::Failure);
}
}  // namespace
#endif
