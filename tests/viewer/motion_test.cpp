#include "tests/motion/moving_files.h"
#include "tests/support/expectations.h"
#include "viewer/commands.h"
#include "viewer/failure.h"
#include "viewer/render_command.h"
#include "viewer/viewer.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/camera.h>
#include <platform/scene/lod_object.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace
{
using support::MovingFiles;
using support::takePose;
using TW2::viewer::execute;
using TW2::viewer::Failure;
using TW2::viewer::MixerPlayback;
using TW2::viewer::Viewer;
using Vector = M_Vector3Template<float>;

constexpr int walk = 1;
constexpr int wave = 2;
constexpr int turn = 3;

/// A chain of six bones: 0 rest, 1 walk (1 s, a step at 0.25 s and 0.75 s, 1.5 units ahead), 2 wave (once, 1 s), 3 turn
/// (2/3 s, by 90 degrees on the spot).
class ViewerMotion : public testing::Test
{
protected:
    ViewerMotion()
    {
        TW2::KeyframeAnimationChunk travel = support::makeTrack("travel", 0.0f, 31, 30);
        travel.keys.back().matrix = support::Matrix::translation({0, 0, 1.5f});
        const std::string file = m_files.writeAnimation("travel.tw", {travel});
        m_files.addMotion(0, 11, "name rest", false);
        m_files.addMotion(
            walk, 31,
            "name walk rootmotion \"" + file + "\" event { time 0.25 name left } event { time 0.75 name right }");
        m_files.addMotion(wave, 31, "name wave", false, 80.0f);
        TW2::KeyframeAnimationChunk about = support::makeTrack("travel", 0.0f, 21, 30);
        about.keys.back().matrix = support::rotation(0.0, 1.0, 0.0, 1.57079632679);
        m_files.addMotion(turn, 21, "name turn rootmotion \"" + m_files.writeAnimation("turn.tw", {about}) + "\"");
        m_viewer.open(m_files.writeScript());
        m_viewer.getShow().m_bGrid = false;
    }
    void run(const std::vector<const char*>& lines)
    {
        for (const char* line : lines)
        {
            execute(m_viewer, line);
        }
    }
    void pass(double seconds, int steps = 10)
    {
        for (int i = 0; i < steps; ++i)
        {
            m_viewer.update(seconds / steps);
        }
    }
    TW2::TW_VirtualObject& object() { return m_viewer.getObject()->getObject(); }
    Vector placeOf(unsigned int bone) { return object().getMesh(bone)->getObjectToWorldMatrix().getTranslation(); }
    std::string refuse(const char* line)
    {
        return support::complaintOf<std::exception>([&] { execute(m_viewer, line); });
    }

    MovingFiles m_files;
    Viewer m_viewer;
};

TEST_F(ViewerMotion, TheMixerFadesFromOneAnimationIntoAnotherAsTheLibraryDoes)
{
    run({"clip walk", "seek 0.2", "mix-fade 0.4", "mixer on", "travel off", "mix wave"});
    pass(0.3, 3);
    TW2::TW_ObjectAnimation other(m_viewer.getObject()->getSkeleton());
    TW2::TW_AnimationMixer mixer(other);
    mixer.play(walk, {.start = 0.2F});
    mixer.play(wave, {.fade = 0.4F});
    for (int i = 0; i < 3; ++i)
    {
        mixer.update(0.3 / 3);
    }
    EXPECT_TRUE(support::isSame(takePose(object()), takePose(other)));
    ASSERT_EQ(m_viewer.getMixer().getParts().size(), 2U);
    EXPECT_NEAR(m_viewer.getMixer().getParts()[1].m_fWeight, 0.75F, 1e-5F);
    EXPECT_NEAR(m_viewer.getPlayback().getTime(), 0.3, 1e-6) << "the clock shows what is faded to";
    pass(0.3);
    EXPECT_EQ(m_viewer.getMixer().getParts().size(), 1U) << "what has faded out is gone";
}

TEST_F(ViewerMotion, CommandsOfTheMixerDoWhatTheLibraryDoes)
{
    using Mixer = TW2::TW_AnimationMixer;
    struct Case
    {
        std::vector<const char*> m_vecLines;
        std::function<void(Mixer&, const TW2::TW_VirtualObject&, unsigned int)> m_do;  // with what plays from the start
    };
    const std::vector<Case> cases{
        {{"mix-fade 0.4", "in-step on", "mix turn"},
         [](Mixer& mixer, const auto&, unsigned int) { mixer.play(turn, {.fade = 0.4F, .sync = 1}); }},
        {{"mix-fade 0.4", "mix turn", "in-step on", "mix walk"},
         [](Mixer& mixer, const auto&, unsigned int)
         {
             mixer.play(turn, {.fade = 0.4F, .sync = 2});
             mixer.play(walk, {.fade = 0.4F, .sync = 2});
         }},
        {{"mix-fade 20", "mix turn"},
         [](Mixer& mixer, const auto&, unsigned int) { mixer.play(turn, {.fade = 10.0F, .sync = 2}); }},
        {{"mix-fade 0.2", "add-layer replace bone2 2", "mix wave 1"},
         [](Mixer& mixer, const auto& object, unsigned int)
         {
             mixer.addLayer({.mask = mixer.addMask(TW2::TW_BoneMask::below(object, "bone2", 2))});
             mixer.play(wave, {.fade = 0.2F, .layer = 1, .fadeOut = 0.2F});
         }},
        {{"mix-fade 0.2", "add-layer additive", "layer-weight 1 0.6", "mix wave 1", "seek 0.5"},
         [](Mixer& mixer, const auto&, unsigned int first)
         {
             mixer.addLayer({.additive = true, .weight = 0.6F});
             mixer.play(wave, {.fade = 0.2F, .layer = 1, .fadeOut = 0.2F});
             mixer.seek(first, 0.5F);
         }},
        {{"mix-fade 0", "add-layer replace", "mix wave 1", "seek 0.5", "clear-layers"},
         [](Mixer& mixer, const auto&, unsigned int first) { mixer.seek(first, 0.5F); }},
    };
    for (const Case& each : cases)
    {
        run({"mixer off", "speed 1", "in-step off", "clip walk", "seek 0.2", "mixer on", "travel off"});
        TW2::TW_ObjectAnimation other(m_viewer.getObject()->getSkeleton());
        Mixer mixer(other);
        const unsigned int first = mixer.play(walk, {.start = 0.2F, .sync = 1});
        run(each.m_vecLines);
        each.m_do(mixer, other, first);
        for (int i = 0; i < 16; ++i)
        {
            m_viewer.update(0.1);
            mixer.update(0.1);
            EXPECT_LT(support::getDifference(takePose(object()), takePose(other)), 1e-5F)
                << each.m_vecLines[0] << "; " << each.m_vecLines[1] << ": step " << i;
        }
    }
    m_viewer.getMixer().addLayer({.m_fWeight = 3.0F});
    EXPECT_EQ(m_viewer.getMixer().getLayers().back().m_fWeight, 1.0F);
}

TEST_F(ViewerMotion, WhatIsMixedGoesTheWayThatTheClockGoes)
{
    const auto passes = [this]
    {
        const double before = m_viewer.getMixer().getTime();
        pass(0.1);
        return m_viewer.getMixer().getTime() - before;
    };
    run({"clip walk", "seek 0.5", "mix-fade 0", "mixer on", "speed -1"});
    EXPECT_NEAR(passes(), -0.1, 1e-5);
    run({"mix turn", "seek 0.5"});
    EXPECT_EQ(m_viewer.getPlayback().getMainAnimation(), turn);
    EXPECT_NEAR(passes(), -0.1, 1e-5) << "what is faded into, too";
    run({"reload", "play on"});
    EXPECT_NEAR(passes(), -0.1, 1e-5) << "and after another file";
    run({"reload", "play on", "speed 1"});
    EXPECT_NEAR(passes(), 0.1, 1e-5);
}

TEST_F(ViewerMotion, WhoHasTurnedTravelsInTheNewDirection)
{
    run({"clip turn", "seek 0", "mix-fade 0", "mixer on"});
    pass(2.0 / 3.0);
    run({"mix walk"});
    pass(1.0);
    const Vector place = object().getPosition();
    EXPECT_NEAR(std::abs(place.x), 1.5F, 1e-3F);
    EXPECT_NEAR(place.z, 0.0F, 1e-3F);
    const auto seen = m_viewer.getCamera().m_vTarget;
    run({"mixer off"});
    EXPECT_LT((m_viewer.getCamera().m_vTarget + place - seen).length(), 1e-4F) << "the eye goes back, too";
    run({"mixer on", "frame"});
    pass(0.0, 1);
    EXPECT_EQ(object().getPosition(), Vector()) << "it begins anew";
    EXPECT_TRUE(m_viewer.getMixer().getEvents().empty());
    const auto whole = m_viewer.getCamera();
    run({"pan 1 0", "home"});
    pass(0.0, 1);
    EXPECT_LT((m_viewer.getCamera().m_vTarget - whole.m_vTarget).length(), 1e-3F) << "all of it is looked at again";
}

TEST_F(ViewerMotion, ALayerPlaysBelowItsBoneOnlyAndFadesOut)
{
    run({"clip walk", "mixer on", "travel off", "mix-fade 0.1", "add-layer replace bone3", "mix wave 1"});
    pass(0.5);
    TW2::TW_ObjectAnimation walking(m_viewer.getObject()->getSkeleton());
    TW2::TW_ObjectAnimation waving(m_viewer.getObject()->getSkeleton());
    walking.animateObject(walk, 0.5F, nullptr);
    waving.animateObject(wave, 0.5F, nullptr);
    const auto isAt = [this](unsigned int bone, TW2::TW_ObjectAnimation& other)
    {
        return (object().getMesh(bone)->getMatrix().getRow(0) - other.getMesh(bone)->getMatrix().getRow(0)).length() <
               1e-4F;
    };
    EXPECT_TRUE(isAt(2, walking));
    EXPECT_FALSE(isAt(2, waving));
    EXPECT_TRUE(isAt(4, waving));
    EXPECT_FALSE(isAt(4, walking));
    run({"layer-weight 1 0"});
    m_viewer.update(0.0);
    EXPECT_TRUE(isAt(4, walking));
    run({"layer-weight 1 1", "unmix 1"});
    pass(0.2);
    walking.animateObject(walk, 0.7F, nullptr);
    EXPECT_TRUE(isAt(4, walking)) << "faded out";
    EXPECT_EQ(refuse("mix wave 2"), "there are layers 0 to 1, not 2");
    run({"clear-layers"});
    EXPECT_TRUE(m_viewer.getMixer().getLayers().empty());
    EXPECT_NEAR(m_viewer.getMixer().getTime(), 0.7, 1e-4) << "layer 0 plays on";
}

TEST_F(ViewerMotion, WhatTheMixerDoesGoesOnWhenTheFileIsLoadedAgain)
{
    run({"clip walk", "mixer on", "mix-fade 0.4", "add-layer additive", "add-layer replace bone3", "layer-weight 2 0.7",
         "mix wave 2", "mix wave"});
    pass(0.3);
    const auto pose = takePose(object());
    const Vector place = object().getPosition();
    EXPECT_GT(place.z, 0.2F);
    const Vector eye = m_viewer.getCamera().getEye();
    const auto shares = [this]
    {
        std::vector<float> weights;
        for (const MixerPlayback::Part& part : m_viewer.getMixer().getParts())
        {
            weights.push_back(part.m_fWeight);
        }
        return weights;
    };
    const auto before = shares();
    ASSERT_EQ(before.size(), 3U);
    run({"reload"});
    ASSERT_TRUE(m_viewer.getMixer().isOn());
    m_viewer.update(0.0);
    EXPECT_EQ(shares(), before);
    EXPECT_EQ(m_viewer.getMixer().getEvents().size(), 1U);
    EXPECT_TRUE(support::isSame(takePose(object()), pose));
    EXPECT_EQ(object().getPosition(), place);
    EXPECT_EQ(m_viewer.getCamera().getEye(), eye);
    EXPECT_EQ(m_viewer.getMixer().getLayers().size(), 2U);
    pass(0.2);
    EXPECT_GT(object().getPosition().z, place.z) << "it walks on";

    // Without the animation that played the rest of it cannot go on: what is left begins anew, where it was.
    const std::string script = m_viewer.getObject()->getScriptFile();
    std::ifstream file(script);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    text.replace(text.find("index 2"), 7, "index 7");
    std::ofstream(script) << text;
    const Vector there = object().getPosition();
    run({"reload"});
    ASSERT_TRUE(m_viewer.getMixer().isOn());
    EXPECT_EQ(m_viewer.getMixer().getParts().size(), 1U);
    EXPECT_TRUE(m_viewer.getMixer().getLayers().empty());
    m_viewer.update(0.0);
    EXPECT_EQ(object().getPosition(), there);
}

TEST_F(ViewerMotion, EventsAreToldAsTheyPassNewestFirst)
{
    run({"clip walk", "mixer on"});
    pass(0.5);
    ASSERT_EQ(m_viewer.getMixer().getEvents().size(), 1U);
    run({"reload"});
    pass(1.0);
    const auto& events = m_viewer.getMixer().getEvents();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].m_strName, "left");
    EXPECT_EQ(events[1].m_strName, "right");
    EXPECT_EQ(events[0].m_strAnimation, "walk");
    EXPECT_NEAR(events[0].m_dSeconds, 1.25, 1e-6);
    EXPECT_NEAR(events[2].m_dSeconds, 0.25, 1e-6);
    pass(20.0, 200);
    EXPECT_EQ(events.size(), 8U) << "old ones are forgotten";
    run({"mixer off", "clip walk", "mixer on"});
    pass(0.5);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_NEAR(events[0].m_dSeconds, 0.25, 1e-6) << "counted anew";
}

TEST_F(ViewerMotion, TravelCarriesTheObjectAndTheEyeGoesAlong)
{
    run({"clip walk", "mixer on"});
    m_viewer.update(0.0);
    const Vector eye = m_viewer.getCamera().getEye();
    pass(2.0, 40);
    EXPECT_NEAR(object().getPosition().z, 3.0F, 1e-3F) << "twice 1.5";
    EXPECT_NEAR((m_viewer.getCamera().getEye() - eye).z, 3.0F, 1e-3F);
    run({"speed -1"});
    pass(1.0, 20);
    EXPECT_NEAR(object().getPosition().z, 1.5F, 1e-3F) << "backwards";
    run({"speed 1", "travel off"});
    pass(1.0, 20);
    EXPECT_NEAR(object().getPosition().z, 1.5F, 1e-3F) << "on the spot";
    run({"home"});
    EXPECT_EQ(object().getPosition().z, 0.0F);
    run({"travel on"});
    pass(0.5);
    run({"mixer off"});
    EXPECT_EQ(object().getPosition().z, 0.0F) << "back for the playback";
}

TEST_F(ViewerMotion, PausingSeekingAndStepsHoldForTheMixer)
{
    run({"clip walk", "mixer on", "travel off", "play off", "seek 0.4"});
    pass(1.0);
    EXPECT_NEAR(m_viewer.getMixer().getTime(), 0.4, 1e-6);
    run({"step 1"});
    pass(1.0);
    EXPECT_NEAR(m_viewer.getMixer().getTime(), 13.0 / 30.0, 1e-5);
    run({"back"});
    pass(0.0);
    TW2::TW_ObjectAnimation other(m_viewer.getObject()->getSkeleton());
    other.animateObjectFrame(walk, 12.0F, nullptr);
    EXPECT_LT(support::getDifference(takePose(object()), takePose(other)), 1e-4F);
}

TEST_F(ViewerMotion, ABoneReachesItsPointAndLooksWhereItIsTold)
{
    run({"clip walk", "play off", "reach chain bone5 6", "target 1.5 3 1"});
    m_viewer.update(0.0);
    EXPECT_LT((placeOf(5) - Vector{1.5F, 3.0F, 1.0F}).length(), 0.01F);
    run({"reach two-bones bone4", "target 0 2 0.5"});
    m_viewer.update(0.0);
    EXPECT_LT((placeOf(4) - Vector{0.0F, 2.0F, 0.5F}).length(), 0.01F);
    m_viewer.update(0.0);
    const Vector before = placeOf(4);
    run({"look front", "move-target 0.05 0"});
    m_viewer.update(0.0);
    EXPECT_GT((placeOf(4) - before).length(), 0.01F);

    run({"reach look bone5 1", "forward y", "target 9 9 9"});
    m_viewer.update(0.0);
    const auto& head = object().getMesh(5)->getObjectToWorldMatrix();
    const Vector wanted = (Vector{9.0F, 9.0F, 9.0F} - head.getTranslation()).normalized();
    EXPECT_NEAR(head.getRow(1).normalized().dot(wanted), 1.0F, 1e-3F);
    run({"target eye", "orbit 30 0"});
    m_viewer.update(0.0);
    const Vector eye = (m_viewer.getCamera().getEye() - head.getTranslation()).normalized();
    EXPECT_NEAR(object().getMesh(5)->getObjectToWorldMatrix().getRow(1).normalized().dot(eye), 1.0F, 1e-3F);
    run({"reach none"});
    m_viewer.update(0.0);
    TW2::TW_ObjectAnimation other(m_viewer.getObject()->getSkeleton());
    other.animateObject(walk, static_cast<float>(m_viewer.getPlayback().getTime()), nullptr);
    EXPECT_TRUE(support::isSame(takePose(object()), takePose(other))) << "let go";
}

TEST_F(ViewerMotion, EveryAxisOfABoneCanLookAtThePoint)
{
    run({"clip walk", "play off", "reach look bone5 1"});
    EXPECT_NE(refuse("target 1 2").find("target X Y Z"), std::string::npos);
    const Vector point{4.0F, 7.0F, 3.0F};
    run({"target 4 7 3"});
    const std::array<const char*, 6> axes{"x", "-x", "y", "-y", "z", "-z"};
    for (std::size_t axis = 0; axis < axes.size(); ++axis)
    {
        execute(m_viewer, std::string("forward ") + axes[axis]);
        m_viewer.update(0.0);
        const auto& head = object().getMesh(5)->getObjectToWorldMatrix();
        const float along = head.getRow(static_cast<int>(axis / 2)).normalized().dot((point - placeOf(5)).normalized());
        EXPECT_NEAR(along, axis % 2 == 0 ? 1.0F : -1.0F, 1e-3F) << axes[axis];
    }
}

TEST_F(ViewerMotion, AReachTakesAsManyBonesAsItIsTold)
{
    run({"clip walk", "play off", "seek 0.3"});
    m_viewer.update(0.0);
    const auto rest = takePose(object());
    struct Case
    {
        const char* m_szLine;
        std::size_t m_uiFirst;  // bone that moves
    };
    for (const Case& each :
         {Case{"reach chain bone5", 1}, Case{"reach chain bone5 3", 3}, Case{"reach chain bone4 2", 3},
          Case{"reach two-bones bone4", 2}, Case{"reach look bone5", 4}})
    {
        run({each.m_szLine, "target 2 1 2"});
        m_viewer.update(0.0);
        const auto pose = takePose(object());
        std::size_t first = 0;
        while (first < pose.size() && support::getDifference({pose[first]}, {rest[first]}) < 1e-5F)
        {
            ++first;
        }
        EXPECT_EQ(first, each.m_uiFirst) << each.m_szLine;
    }
    run({"reach look bone5"});
    EXPECT_FALSE(m_viewer.getReaching().getTarget()) << "it looks at the eye, not at what was reached for";
}

TEST_F(ViewerMotion, ATargetMovesByHeightsOfThePicture)
{
    run({"clip walk", "play off", "reach chain bone5", "target 0.5 2 1", "orbit 20 10"});
    m_viewer.update(0.0);
    P_Camera camera;
    m_viewer.getCamera().apply(camera, 1.0F);
    const auto see = [this, &camera]
    {
        const Vector point = camera.getViewMatrix().transformPoint(*m_viewer.getReaching().getTarget());
        const float height = 2.0F * point.z * std::tan(camera.getVerticalAngle() * 3.14159265F / 360.0F);
        return Vector{point.x / height, point.y / height, point.z};
    };
    const Vector before = see();
    run({"move-target 0.2 0.05"});
    EXPECT_NEAR(see().x - before.x, 0.2F, 1e-4F);
    EXPECT_NEAR(see().y - before.y, 0.05F, 1e-4F);
    EXPECT_NEAR(see().z, before.z, 1e-3F) << "as far away as before";
    run({"reach look bone5", "target eye", "move-target 0.1 0"});
    EXPECT_NEAR(see().x, 0.1F, 1e-4F) << "what looked at the eye looks at a point before it";
    EXPECT_NEAR(see().z, 0.5F * m_viewer.getCamera().m_fDistance, 1e-3F);
    const Vector eye = m_viewer.getCamera().getEye();
    const std::string atEye =
        "target " + std::to_string(eye.x) + " " + std::to_string(eye.y) + " " + std::to_string(eye.z);
    run({atEye.c_str(), "move-target 1 0"});
    EXPECT_GT((*m_viewer.getReaching().getTarget() - eye).length(), 0.1F * m_viewer.getCamera().m_fDistance);
}

TEST_F(ViewerMotion, CommandsThatCannotBeDoneSayWhy)
{
    const auto expectRefused = [this](const std::vector<std::pair<const char*, const char*>>& lines)
    {
        for (const auto& [line, said] : lines)
        {
            EXPECT_NE(refuse(line).find(said), std::string::npos) << line << ": " << refuse(line);
        }
    };
    expectRefused({{"mix walk", "the mixer is off"},
                   {"home", "the mixer is off"},
                   {"reach look", "pick the bone"},
                   {"reach two-bones bone1", "\"bone1\" has 1 bones above it; to reach it needs 2"},
                   {"reach chain bone0", "\"bone0\" has 0 bones above it; to reach it needs 1"},
                   {"target eye", "no bone looks"},
                   {"move-target 1 0", "nothing reaches"},
                   {"forward up", "none of: x, -x"},
                   {"plant on", "no bone is called foot or ankle"},
                   {"leg bone1", "no two bones above it"},
                   {"leg bone2", "\"bone0\" hangs under no bone"},
                   {"leg bone3 bone2", "a bone between"},
                   {"leg bone3 bone5", "\"bone3\" does not hang under \"bone5\""},
                   {"slope -50", "0 to 45 degrees"},
                   {"slope 50", "0 to 45 degrees"}});
    run({"mixer on"});
    expectRefused({{"blend 1 wave", "the mixer plays"},
                   {"freeze", "the mixer plays"},
                   {"group bone2 wave", "the mixer plays"},
                   {"unmix 1", "there is no layer yet"},
                   {"add-layer replace nose", "no bone \"nose\""},
                   {"add-layer replace bonne1", "no bone \"bonne1\"; like it: bone0, bone1,"},
                   {"add-layer replace bone1 -1", "0 or more bones"}});
    run({"add-layer replace"});
    expectRefused({{"unmix 0", "there are layers 1 to 1, not 0"},
                   {"layer-weight 0 1", "there are layers 1 to 1, not 0"},
                   {"layer-weight 2 1", "there are layers 1 to 1, not 2"},
                   {"mix walk -1", "there are layers 0 to 1, not -1"}});
}

TEST_F(ViewerMotion, ALoadedFileBeginsWithoutMixerAndReach)
{
    run({"mixer on", "add-layer additive", "reach chain bone5", "crowd 2", "bone 2"});
    pass(0.3);
    const std::string script = m_viewer.getObject()->getScriptFile();
    m_viewer.open(script);
    EXPECT_FALSE(m_viewer.getMixer().isOn());
    EXPECT_EQ(m_viewer.getReaching().getBone(), -1);
    EXPECT_EQ(m_viewer.getPickedBone(), -1);
    EXPECT_EQ(m_viewer.getCrowd().getCount(), 0U);
    pass(0.3);
    EXPECT_EQ(object().getPosition().z, 0.0F);
}

/// An object at two levels of detail, of six bones and of four, the far one from 40 units on.
class ViewerLevels : public testing::Test
{
protected:
    ViewerLevels()
    {
        std::string script;
        for (MovingFiles* files : {&m_near, &m_far})
        {
            files->addMotion(0, 11, "name rest", false);
            files->addMotion(walk, 31, "name walk");
            files->writeScript();
            const std::string folder = files->getDirectory().getPath().string() + "/";
            const bool isNear = files == &m_near;
            std::string block = std::string(isNear ? "near" : "far") + "\n{\n    geometry { exportdata \"" + folder +
                                "geometry.tw\" distance " + (isNear ? "40" : "400") + " }\n";
            block += "    animation { index 0 name rest filename \"" + folder + "animation1.tw\" }\n";
            block += "    animation { index 1 name walk filename \"" + folder + "animation2.tw\" }\n}\n";
            script = block + script;  // the order in which they stand does not matter
        }
        m_viewer.open(m_near.getDirectory().write("levels.script", script));
    }
    void run(const std::string& line) { execute(m_viewer, line); }
    int usedLevel()
    {
        m_viewer.update(0.0);
        auto& levels = dynamic_cast<TW2::TW_ObjectAnimationLODs&>(m_viewer.getObject()->getObject());
        return levels.getEngineLODObject()->getUsedLevel();
    }

    MovingFiles m_near{6};
    MovingFiles m_far{4};
    Viewer m_viewer;
};

TEST_F(ViewerLevels, LevelsOfAnObjectWithoutSkinAreChosenByDistanceOrByHand)
{
    EXPECT_EQ(m_viewer.getObject()->getChoice().m_strName, "near (levels of detail)");
    ASSERT_EQ(m_viewer.getObject()->getLevelCount(), 2);
    EXPECT_EQ(usedLevel(), 0);
    run("zoom 10");
    EXPECT_EQ(usedLevel(), 1);
    run("level 0");
    EXPECT_EQ(usedLevel(), 0);
    run("level 1");
    run("zoom 0.1");
    EXPECT_EQ(usedLevel(), 1);
    EXPECT_EQ(m_viewer.getObject()->getDrawn().getTotalMeshes(), 4U) << "what is shown is what is drawn";
    EXPECT_EQ(support::complaintOf<Failure>([this] { run("level 2"); }), "there are levels 0 to 1, not 2");
    EXPECT_EQ(support::complaintOf<Failure>([this] { run("level -2"); }), "there are levels 0 to 1, not -2");
    run("reload");
    EXPECT_EQ(usedLevel(), 1) << "the same after another file";
    EXPECT_EQ(m_viewer.getLevel(), 1);
    EXPECT_NE(makeRenderCommand(m_viewer, 8, 8).find(" --block far "), std::string::npos);
    run("level auto");
    EXPECT_EQ(usedLevel(), 0);
    EXPECT_NE(makeRenderCommand(m_viewer, 8, 8).find(" --levels near,far "), std::string::npos);
    run("zoom 10");
    EXPECT_EQ(usedLevel(), 1) << "by distance again";
    run("crowd 1");
    const float spacing = std::abs(m_viewer.getCrowd().getCopies()[0]->getPosition().x);
    run("reload");
    EXPECT_EQ(std::abs(m_viewer.getCrowd().getCopies()[0]->getPosition().x), spacing) << "room for the nearest level";
    run("level 0");
    run("object far");
    EXPECT_EQ(m_viewer.getObject()->getLevelCount(), 1);
    EXPECT_EQ(m_viewer.getLevel(), -1);
    const std::string script = m_viewer.getObject()->getScriptFile();
    execute(m_viewer, "open \"" + script + "\"");
    EXPECT_EQ(m_viewer.getObject()->getLevelCount(), 2);
    execute(m_viewer, "open \"" + script + "\" near");
    EXPECT_EQ(m_viewer.getObject()->getChoice().m_strName, "near");
}
}  // namespace
