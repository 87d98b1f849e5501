#include "viewer/commands.h"

#include "tests/support/object_files.h"
#include "tests/support/temporary_directory.h"
#include "tests/viewer/showing.h"
#include "viewer/render_command.h"
#include "viewer/scene_lights.h"
#include "viewer/viewer.h"

#include <tw2/io/light_chunks.h>
#include <tw2/light/light_animation_chunks.h>

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/directional_light.h>
#include <platform/scene/point_light.h>
#include <platform/scene/scene.h>
#include <platform/scene/spot_light.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using TW2::viewer::execute;
using TW2::viewer::Viewer;
using Vector = M_Vector3Template<float>;

/// What a viewer shows and does, a line for each thing.
std::vector<std::string> describe(const Viewer& viewer)
{
    std::vector<std::string> lines;
    const auto add = [&lines](const char* name, auto value)
    {
        std::ostringstream line;
        line << name << " " << value;
        lines.push_back(line.str());
    };
    const TW2::viewer::Playback& playback = viewer.getPlayback();
    for (std::size_t slot = 0; slot < TW2::viewer::Playback::mostSlots; ++slot)
    {
        const TW2::viewer::Playback::Slot& played = playback.getSlots()[slot];
        add(("slot" + std::to_string(slot)).c_str(),
            std::to_string(played.m_iAnimation) + " x " + std::to_string(played.m_fWeight).substr(0, 4));
    }
    add("frame", playback.getFrame());
    add("playing", playback.isPlaying());
    add("loop", playback.isLooping());
    add("speed", playback.getSpeed());
    add("frozen", playback.getFrozenWeight());
    add("group", playback.getGroupBone() < 0
                     ? "none"
                     : std::to_string(playback.getGroupBone()) + " " + std::to_string(playback.getGroupAnimation()));
    add("mode", static_cast<int>(viewer.getCrossMode()));
    add("bone", viewer.getPickedBone());
    add("crowd", viewer.getCrowd().getCount());
    add("azimuth", viewer.getCamera().m_fAzimuth);
    add("elevation", viewer.getCamera().m_fElevation);
    const TW2::viewer::MixerPlayback& mixer = viewer.getMixer();
    add("mixer", mixer.isOn());
    add("fades", mixer.getFade());
    add("in step", mixer.isInStep());
    add("travels", mixer.isTravelling());
    add("reaches", std::to_string(static_cast<int>(viewer.getReaching().getKind())) + " " +
                       std::to_string(viewer.getReaching().getBone()));
    add("plants", viewer.getPlanting().getWeight());
    add("rises", viewer.getSlope().m_fDegrees);
    add("towards", viewer.getSlope().m_fTowards);
    for (const std::string& line : TW2::viewer::describeSettings(viewer))
    {
        lines.push_back(line);
    }
    return lines;
}
}  // namespace

TEST(Commands, DoWhatTheySayAndNothingElse)
{
    struct Case
    {
        std::vector<const char*> m_vecLines;
        const char* m_szChanged;
    };
    // The sample stands in its first animation that moves: 1 sway, beside 0 rest and 2 dance, all of 30 frames a
    // second.
    const std::vector<Case> cases{
        {{}, ""},
        {{"clip sprout_dance"}, "slot0 2 x 1.00"},
        {{"", "  clip   \"sprout_dance\" "}, "slot0 2 x 1.00"},
        {{"next"}, "slot0 2 x 1.00"},
        {{"next", "next"}, "slot0 0 x 1.00"},
        {{"previous"}, "slot0 0 x 1.00"},
        {{"previous", "previous"}, "slot0 2 x 1.00"},
        {{"blend 1 sprout_dance"}, "slot1 2 x 1.00"},
        {{"blend 2 0 0.25"}, "slot2 0 x 0.25"},
        {{"blend 1 2 3", "blend 1 none"}, ""},
        {{"blend 0 1 0.5", "blend 1 2 0"}, "slot0 1 x 0.50, slot1 2 x 0.00"},
        {{"blend 1 2", "clip 1"}, ""},
        {{"crossmode linear"}, "mode 0"},
        {{"crossmode normalized"}, "mode 1"},
        {{"crossmode linear", "crossmode orthonormalized"}, ""},
        {{"freeze"}, "frozen 1"},
        {{"freeze", "frozen 0.25"}, "frozen 0.25"},
        {{"freeze", "frozen 7"}, "frozen 1"},
        {{"freeze", "frozen -1"}, ""},
        {{"freeze", "fade 0"}, ""},
        {{"group 3 sprout_dance"}, "group 3 2"},
        {{"group stalk5 0", "group 2 1"}, "group 2 1"},
        {{"group 3 2", "ungroup"}, ""},
        {{"play"}, "playing 1"},
        {{"play on"}, "playing 1"},
        {{"play", "play"}, ""},
        {{"seek 0.5"}, "frame 15"},
        {{"seek 2.5"}, "frame 15"},
        {{"seek -0.5"}, "frame 45"},
        {{"loop off", "seek 9"}, "frame 60, loop 0, loop off"},
        {{"play", "seek 0.5", "step 2"}, "frame 17"},
        {{"seek 0.5", "back"}, "frame 14"},
        {{"back"}, "frame 59"},
        {{"loop off", "back"}, "loop 0, loop off"},
        {{"loop off", "seek 2", "step 1"}, "frame 60, loop 0, loop off"},
        {{"speed -0.5"}, "speed -0.5, speed -0.500000"},
        {{"speed 99"}, "speed 10, speed 10.000000"},
        {{"speed -99"}, "speed -10, speed -10.000000"},
        {{"show mesh"}, "show mesh off"},
        {{"show skeleton on"}, "show skeleton on"},
        {{"show skeleton", "show skeleton"}, ""},
        {{"show dark toggle"}, "show dark on"},
        {{"surface weights"}, "surface weights"},
        {{"surface unlit"}, "surface unlit"},
        {{"wireframe only"}, "wireframe only"},
        {{"wire"}, "wireframe over"},
        {{"wireframe only", "wire"}, ""},
        {{"bone 4"}, "bone 4"},
        {{"bone stalk5"}, "bone 5"},
        {{"bone 4", "bone none"}, ""},
        {{"crowd 3"}, "crowd 3"},
        {{"crowd 3", "crowd 0"}, ""},
        {{"look back"}, "azimuth 180, elevation 0"},
        {{"look left"}, "azimuth -90, elevation 0"},
        {{"look right"}, "azimuth 90, elevation 0"},
        {{"look top"}, "azimuth 0, elevation 89"},
        {{"look front", "look corner"}, ""},
        {{"orbit 20 -5"}, "azimuth 55, elevation 7"},
        {{"orbit 200 90"}, "azimuth -125, elevation 89"},
        {{"orbit 0 -500"}, "elevation -89"},
        {{"mixer on"}, "mixer 1"},
        {{"blend 1 2", "freeze", "group 3 2", "mixer on"}, "mixer 1"},
        {{"mixer on", "mixer"}, ""},
        {{"blend 0 1 0.5", "mixer on"}, "mixer 1"},
        {{"mix-fade 11"}, "fades 10"},
        {{"mix-fade -1"}, "fades 0"},
        {{"in-step"}, "in step 1"},
        {{"travel"}, "travels 0"},
        {{"reach look 3"}, "reaches 1 3"},
        {{"bone 4", "reach chain"}, "bone 4, reaches 3 4"},
        {{"reach chain 5", "reach none"}, ""},
        {{"plant-weight -1"}, "plants 0"},
        {{"plant-weight 0", "plant-weight 7"}, ""},
        {{"slope -45 90"}, "rises -45, towards 90"},
        {{"slope 45 70", "slope 3"}, "rises 3, towards 70"},
    };
    for (const Case& each : cases)
    {
        support::Showing viewer;
        const std::vector<std::string> before = describe(viewer);
        std::string lines;
        for (const char* line : each.m_vecLines)
        {
            execute(viewer, line);
            lines += std::string(line) + "; ";
        }
        const std::vector<std::string> after = describe(viewer);
        std::string changed;
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            changed += before[i] == after[i] ? "" : (changed.empty() ? "" : ", ") + after[i];
        }
        EXPECT_EQ(changed, each.m_szChanged) << lines;
        Viewer other;
        for (const std::string& line : describeSettings(viewer))
        {
            execute(other, line);
        }
        EXPECT_EQ(describeSettings(other), describeSettings(viewer)) << "settings bring back what was shown";
    }
}

TEST(Commands, WhatACommandForThePictureWouldLeaveOutIsTold)
{
    struct Case
    {
        std::vector<std::string> m_vecLines;
        const char* m_szLeftOut;
    };
    for (const Case& each : std::vector<Case>{
             {{}, ""},
             {{"blend 1 2 1"}, ""},
             {{"blend 2 2 1"}, "the third animation"},
             {{"blend 2 2 0"}, ""},
             {{"freeze"}, "the frozen pose"},
             {{"group 0 2"}, "what the group of bones plays"},
             {{"reach look 3"}, "what reaches"},
             {{"show names on", "show visibility off"}, "the names of the bones, what the visibility tracks hide"},
             {{"crowd 1", "mixer on"}, "what the mixer plays, the crowd"}})
    {
        EXPECT_EQ(listWhatRenderLeavesOut(support::Showing(each.m_vecLines)), each.m_szLeftOut);
    }
    EXPECT_EQ(makeRenderCommand(Viewer(), 10, 10), "") << "nothing is loaded";
}

TEST(Commands, TheCommandForThePictureSaysWhatIsShown)
{
    struct Case
    {
        std::vector<std::string> m_vecLines;
        const char* m_szPart;
        bool m_bThere;
    };
    const support::TemporaryDirectory folder;
    const std::filesystem::path quoted = folder.getPath() / "gardener's own";
    std::filesystem::copy(TW2_SAMPLE, quoted, std::filesystem::copy_options::recursive);
    for (const Case& each : std::vector<Case>{{{}, "gardener'\\''s own/sprout.script' --block ", true},
                                              {{}, " --animation 1 --time 0 ", true},
                                              {{"blend 0 1 1", "blend 1 2 3"}, " --blend 1:2 --weight 0.75 ", true},
                                              {{"blend 1 2 0"}, " --animation 1 ", true},
                                              {{}, " --no-shadow", false},
                                              {{"show shadow off"}, " --no-shadow", true},
                                              {{}, " --file-lights", false},
                                              {{"bone 4"}, " --bone ", true}})
    {
        const support::Showing viewer(each.m_vecLines, (quoted / "sprout.script").string());
        const std::string command = makeRenderCommand(viewer, 10, 10);
        EXPECT_EQ(command.find(each.m_szPart) != std::string::npos, each.m_bThere) << each.m_szPart << ": " << command;
    }
}

TEST(RenderCommands, DrawWhatHasTravelledWhereItBegan)
{
    support::Showing viewer({}, TW2_SAMPLE "/sprout.script");
    const std::string before = makeRenderCommand(viewer, 10, 10);
    viewer.getObject()->getObject().setPosition(4.0F, 0.0F, 8.0F);
    EXPECT_NE(makeRenderCommand(viewer, 10, 10), before);
    viewer.getCamera().m_vTarget = viewer.getCamera().m_vTarget + Vector{4.0F, 0.0F, 8.0F};
    EXPECT_EQ(makeRenderCommand(viewer, 10, 10), before);
}

TEST(OrbitCamera, WhatWasInTheMiddleMovesAgainstThePan)
{
    TW2::viewer::OrbitCamera orbit;
    orbit.orbit(100.0F, 15.0F);
    const Vector middle = orbit.m_vTarget;
    orbit.pan(0.25F, 0.125F);
    P_Camera camera;
    orbit.apply(camera, 2.0F);
    const Vector seen =
        (M_Matrix4Template<float>(camera.getViewMatrix()) * camera.getProjectionMatrix()).projectPoint(middle);
    EXPECT_NEAR(seen.x, -0.25F, 1e-4F) << "in halves of a width that is twice the height";
    EXPECT_NEAR(seen.y, -0.25F, 1e-4F);
    orbit.zoom(0.5F);
    EXPECT_NEAR(orbit.m_fDistance, 5.0F, 1e-5F);
}

TEST(SceneLights, StandWhereTheFileSaysAndFollowTheirAnimations)
{
    support::ObjectFiles files;
    files.addMesh("pole", "", M_Matrix4x3Template<float>::translation({0, 10, 0}));
    const auto object = files.build();
    TW2::SpotLightChunk spot;
    spot.name = "spot";
    spot.parentName = "pole";
    spot.hasParent = true;
    spot.transform.setTranslation({1, 2, 3});
    spot.color = {100, 50, 20};
    spot.brightness = 2.0F;
    spot.fallOff = 30.0F;
    spot.fallOffAngle = 60.0F;
    spot.hotSpotAngle = 40.0F;
    TW2::DirectionalLightChunk sun;
    sun.name = "sun";
    sun.color = {10, 20, 30};
    sun.brightness = 1.0F;
    TW2::PointLightChunk lamp;
    lamp.name = "lamp";
    lamp.color = {5, 5, 5};
    lamp.brightness = 4.0F;
    lamp.fallOff = 12.0F;
    // Two seconds of ten frames each, before and behind what they animate; one that nobody is named for.
    TW2::PointLightAnimationChunk flicker;
    flicker.header = {"lamp", 10, false};
    flicker.totalFrameCount = 21;
    flicker.colorKeys = {{0, {0, 0, 0}}, {20, {200, 100, 0}}};
    flicker.fallOffKeys = {{0, 10.0F}, {20, 20.0F}};
    TW2::SpotLightAnimationChunk sweep;
    sweep.header = {"spot", 10, false};
    sweep.totalFrameCount = 21;
    sweep.fallOffAngleKeys = {{0, 60.0F}, {20, 80.0F}};
    TW2::DirectionalLightAnimationChunk nobody;
    nobody.header = {"moon", 10, false};
    nobody.totalFrameCount = 21;
    nobody.colorKeys = {{0, {1, 1, 1}}};
    S_MemoryFileWriter writer;
    writer << flicker << spot << sun << lamp << sweep << nobody;

    P_Context context;
    P_Scene scene(&context);
    object->addTo(&scene);
    TW2::viewer::SceneLights lights;
    lights.load({files.getDirectory().write("lights.tw", writer.getBytes())}, *object, scene);
    ASSERT_EQ(lights.getCount(), 3U);
    EXPECT_TRUE(lights.isAnimated());
    const auto find = [&scene](P_Light::Kind kind) -> P_Light*
    {
        scene.executeFrame();
        for (P_Light* light : scene.getLights())
        {
            if (light->getLightKind() == kind)
            {
                return light;
            }
        }
        return nullptr;
    };
    auto* const cone = dynamic_cast<P_SpotLight*>(find(P_Light::Kind::Spot));
    auto* const point = dynamic_cast<P_PointLight*>(find(P_Light::Kind::Point));
    auto* const far = find(P_Light::Kind::Directional);
    ASSERT_TRUE(cone && point && far);
    EXPECT_EQ(cone->getObjectToWorldMatrix().getTranslation(), (Vector{1, 12, 3})) << "on its pole";
    EXPECT_EQ(cone->getColor().getRGB(), (Vector{200, 100, 40}));
    EXPECT_EQ(cone->getFalloffRange(), 30.0F);
    EXPECT_EQ(cone->getFalloffAngle(), 60.0F);
    EXPECT_EQ(cone->getHotspotAngle(), 40.0F);
    EXPECT_EQ(point->getFalloffRange(), 12.0F);
    EXPECT_EQ(point->getColor().getRGB(), (Vector{20, 20, 20}));
    lights.animate(1.0F);
    EXPECT_EQ(point->getColor().getRGB(), (Vector{100, 50, 0}));
    EXPECT_EQ(point->getFalloffRange(), 15.0F);
    EXPECT_EQ(cone->getFalloffAngle(), 70.0F);
    EXPECT_EQ(far->getColor().getRGB(), (Vector{10, 20, 30})) << "nothing animates it";
    lights.enable(false);
    EXPECT_EQ(find(P_Light::Kind::Point), nullptr);
    lights.clear();
    EXPECT_EQ(lights.getCount(), 0U);
    EXPECT_FALSE(lights.isAnimated());
}
