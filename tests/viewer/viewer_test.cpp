#include "viewer/viewer.h"

#include "render/bounds.h"
#include "tests/motion/moving_files.h"
#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/material_records.h"
#include "tests/support/temporary_directory.h"
#include "tests/viewer/showing.h"
#include "viewer/commands.h"
#include "viewer/extent.h"
#include "viewer/failure.h"
#include "viewer/file_watch.h"
#include "viewer/key_curves.h"
#include "viewer/scene_view.h"
#include "viewer/text.h"

#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/exception.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/map.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <set>
#include <tuple>

namespace
{
namespace fs = std::filesystem;
using TW2::viewer::Command;
using TW2::viewer::execute;
using TW2::viewer::executeKey;
using TW2::viewer::Failure;
using TW2::viewer::FileWatch;
using TW2::viewer::KeyCurves;
using TW2::viewer::OrbitCamera;
using TW2::viewer::Viewer;

using support::boxOf;
using support::project;
using support::s_sprout;
using support::Showing;

TEST(OrbitCamera, ShowsEveryPointAndTurnsAroundTheMiddleOfThem)
{
    using Vector = M_Vector3Template<float>;
    std::vector<Vector> corners;
    for (unsigned int i = 0; i < 8; ++i)
    {
        corners.push_back({(i & 1U) ? 13.0F : 7.0F, (i & 2U) ? 4.0F : 0.0F, (i & 4U) ? -1.0F : -2.0F});
    }
    for (const float aspect : {0.5F, 1.0F, 2.0F})
    {
        OrbitCamera orbit;
        orbit.frame(corners, aspect);
        EXPECT_LT((orbit.m_vTarget - Vector{10.0F, 2.0F, -1.5F}).length(), 1.5F);
        for (const Vector& corner : corners)
        {
            const Vector seen = project(orbit, corner, aspect);
            EXPECT_LE(std::max(std::abs(seen.x), std::abs(seen.y)), 1.0F);
        }
        for (const float turn : {0.0F, 90.0F, 200.0F})
        {
            orbit.orbit(turn, 0.0F);
            const Vector seen = project(orbit, orbit.m_vTarget, aspect);
            EXPECT_LT(std::hypot(seen.x, seen.y), 1e-4F);
            EXPECT_NEAR((orbit.getEye() - orbit.m_vTarget).length(), orbit.m_fDistance, 1e-3F);
        }
    }
}

TEST(OrbitCamera, SeesFarBehindWhatItLooksAtAndStopsAtTheEndsOfItsRange)
{
    OrbitCamera orbit;
    const std::array<M_Vector3Template<float>, 2> ends{M_Vector3Template<float>{0, 0, 0}, {0, 30, 40}};
    orbit.frame(ends, 1.0F);
    P_Camera camera;
    orbit.apply(camera, 1.0F);
    EXPECT_LT(camera.getNearDistance(), 0.03F * orbit.m_fDistance);
    EXPECT_GT(camera.getNearDistance(), 0.01F * orbit.m_fDistance);
    const auto far = orbit.m_vTarget + (orbit.m_vTarget - orbit.getEye()).normalized() * 500.0F;
    EXPECT_LE(project(orbit, far).z, 1.0F);
    for (const auto& [factor, distance] : {std::pair(1e-9F, 0.05F), {1e9F, 5e4F}})
    {
        orbit.zoom(factor);
        EXPECT_FLOAT_EQ(orbit.m_fDistance, distance) << "parts of the size, 50";
    }
}

TEST(Viewer, ABrokenFileIsToldAndTheOldObjectPlaysOn)
{
    const support::TemporaryDirectory folder;
    Showing viewer({"clip sprout_dance", "seek 0.5", "play on"});
    const std::string broken =
        folder.write("broken.script", std::string_view("skeleton { geometry { exportdata \"nothing.tw\" } }"));
    EXPECT_THROW(viewer.open(broken), S_Exception);
    ASSERT_NE(viewer.getObject(), nullptr);
    EXPECT_EQ(viewer.getPlayback().getMainAnimation(), 2);
    EXPECT_EQ(viewer.getLoadCount(), 1U);
    viewer.update(0.25);
    EXPECT_NEAR(viewer.getPlayback().getTime(), 0.75, 1e-9);
    for (const auto& [text, said] :
         {std::pair("", "the script has no blocks"),
          {"skin { geometry { exportdata a.tw skindata a.skd } }", "a skin, but no skeleton for it"}})
    {
        const std::string file = folder.write("poor.script", std::string_view(text));
        EXPECT_NE(support::complaintOf<Failure>([&] { viewer.open(file); }).find(said), std::string::npos) << text;
    }
}

TEST(Viewer, WhatHasNoAnimationStandsThere)
{
    support::ObjectFiles files;
    files.addMesh("stone", "", M_Matrix4x3Template<float>::translation({0, 5, 0}));
    Showing viewer({"crowd 2", "seek 1", "step 1", "play", "freeze", "fade"}, files.writeScript());
    viewer.update(1.0);
    EXPECT_EQ(viewer.getPlayback().getTime(), 0.0);
    EXPECT_EQ(viewer.getObject()->getObject().getMesh(0)->getMatrix().getTranslation().y, 5.0F);
    EXPECT_EQ(support::complaintOf<Failure>([&] { execute(viewer, "next"); }), "there are no animations");
    EXPECT_TRUE(TW2::viewer::sampleCurves(*viewer.getObject(), 0, -1).isEmpty());
}

TEST(FileWatch, LooksIntoTheFoldersBelowAndForgetsThoseOfOtherFiles)
{
    const support::TemporaryDirectory folder;
    const auto write = [&folder](const char* name, const char* text)
    { return folder.write(name, std::string_view(text)); };
    const std::string script = write("one/a.script", "a");
    const std::string other = write("two/b.script", "b");
    write("one/textures/leaf", "green");
    FileWatch watch;
    const auto isTold = [&watch] { return watch.hasChanged() || watch.hasChanged(); };
    watch.watch({script});
    EXPECT_FALSE(isTold());
    write("one/textures/leaf", "yellow");
    EXPECT_TRUE(isTold());
    const auto time = fs::last_write_time(script);
    write("one/a.script", "longer");
    fs::last_write_time(script, time);
    EXPECT_TRUE(isTold()) << "as old as before, but longer";
    write("two/b.script", "longer");
    EXPECT_FALSE(isTold()) << "nobody looks there";
    watch.watch({other});
    write("one/a.script", "longest");
    EXPECT_FALSE(isTold()) << "nobody looks there any more";
    write("two/b.script", "longest");
    EXPECT_TRUE(isTold());
}

TEST(Viewer, LoadsAChangedFileAgainAndKeepsWhatIsShown)
{
    const support::TemporaryDirectory folder;
    fs::copy(TW2_SAMPLE, folder.getPath(), fs::copy_options::recursive);
    const std::string twin = "twin { geometry { exportdata \"sprout_skeleton.tw\" } }\n";
    Showing viewer({}, folder.write("sprout.script", folder.read("sprout.script") + twin));
    FileWatch watch;
    const std::vector<std::string> files = viewer.getObject()->getFiles();
    for (const char* name : {"sprout.script", "sprout_skeleton.tw", "sprout_dance.tw", "sprout_skin.tw", "sprout.skd"})
    {
        EXPECT_TRUE(std::ranges::any_of(files, [name](const std::string& file) { return file.ends_with(name); }))
            << name;
    }
    EXPECT_EQ(std::set<std::string>(files.begin(), files.end()).size(), files.size()) << "each once";
    watch.watch(files);
    viewer.run({"clip sprout_dance", "seek 0.5", "bone 4", "crowd 3"});
    EXPECT_FALSE(watch.hasChanged());

    fs::last_write_time(folder.getPath() / "sprout_dance.tw", fs::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_FALSE(watch.hasChanged()) << "it may still be written";
    EXPECT_TRUE(watch.hasChanged());
    EXPECT_FALSE(watch.hasChanged()) << "told once";

    execute(viewer, "reload");
    EXPECT_EQ(viewer.getPlayback().getMainAnimation(), 2);
    EXPECT_NEAR(viewer.getPlayback().getTime(), 0.5, 1e-9);
    EXPECT_EQ(viewer.getPickedBone(), 4);
    EXPECT_EQ(viewer.getCrowd().getCount(), 3U);
    EXPECT_EQ(viewer.getLoadCount(), 2U);

    fs::resize_file(folder.getPath() / "sprout_dance.tw", 40);
    EXPECT_THROW(execute(viewer, "reload"), S_Exception);
    ASSERT_NE(viewer.getObject(), nullptr);
    EXPECT_EQ(viewer.getPlayback().getMainAnimation(), 2);
}

TEST(Viewer, CommandsThatMeanNothingSayWhatWouldBeRight)
{
    struct Case
    {
        const char* m_szLine;
        const char* m_szSaid;
    };
    Viewer viewer;
    EXPECT_THROW(execute(viewer, "clip walk"), Failure) << "nothing is loaded";
    viewer.open(s_sprout);
    for (const Case& each :
         {Case{"dance", "no command \"dance\"; there are: open"}, Case{"clip", "it is: clip NAME"},
          Case{"clip walk", "sprout_dance"}, Case{"seek soon", "\"soon\" is not a number"},
          Case{"show teeth", "skeleton"}, Case{"show grid maybe", "off, on, toggle"},
          Case{"bone head", "no bone \"head\""}, Case{"crowd 10001", "0 to 10000"}, Case{"crowd -1", "0 or more"},
          Case{"surface gold", "weights"}, Case{"object leaf", "there is no object \"leaf\""},
          Case{"blend 3 2", "slots 0 to 2, not 3"}, Case{"blend -1 2", "slots 0 to 2, not -1"},
          Case{"step 1.5", "not a whole number"}, Case{"step 1e10", "not a whole number"},
          Case{"seek 12x", "\"12x\" is not a number"}, Case{"seek nan", "not a number"},
          Case{"seek inf", "not a number"}, Case{"blend 1 2 -1", "0 or more"}})
    {
        EXPECT_NE(support::complaintOf<Failure>([&] { execute(viewer, each.m_szLine); }).find(each.m_szSaid),
                  std::string::npos)
            << each.m_szLine;
    }
    viewer.open(TW2_SAMPLE "/walker.script");
    EXPECT_EQ(support::complaintOf<Failure>([&] { execute(viewer, "level 1"); }), "there are levels 0 to 0, not 1");
}

TEST(Viewer, WordsAreAsFarApartAsLettersHaveToChange)
{
    for (const auto& [from, to, changes] : {std::tuple("walk", "walk", 0U),
                                            {"", "walk", 4U},
                                            {"walk", "", 4U},
                                            {"walk", "wal", 1U},
                                            {"walk", "swalk", 1U},
                                            {"kitten", "sitting", 3U},
                                            {"flaw", "lawn", 2U},
                                            {"run", "walk", 4U}})
    {
        EXPECT_EQ(TW2::viewer::countChanges(from, to), changes) << from << " " << to;
    }
}

TEST(Viewer, EveryKeyDoesItsOneCommand)
{
    Viewer viewer;
    viewer.open(TW2_SAMPLE "/walker.script");
    std::set<std::string_view> keys;
    for (const Command& command : TW2::viewer::listCommands())
    {
        if (!command.m_strKey.empty())
        {
            EXPECT_TRUE(keys.insert(command.m_strKey).second) << command.m_strKey << " has two commands";
            EXPECT_TRUE(executeKey(viewer, command.m_strKey)) << command.m_strKey;
        }
    }
    EXPECT_FALSE(executeKey(viewer, "%"));
    EXPECT_FALSE(executeKey(viewer, "")) << "many commands have no key";
    const bool playing = viewer.getPlayback().isPlaying();
    executeKey(viewer, "Space");
    EXPECT_NE(viewer.getPlayback().isPlaying(), playing);
}

TEST(Viewer, AMovingObjectIsLookedAtWithAllThatItsClipComesTo)
{
    for (const char* side : {"look front", "look left", "look top"})
    {
        // Twelve moments of the clip are looked at: the same ones from a quarter of it on.
        const OrbitCamera first = Showing({"clip sprout_sway", "seek 0", side}).getCamera();
        const OrbitCamera later = Showing({"clip sprout_sway", "seek 0.5", side}).getCamera();
        EXPECT_LT((first.getEye() - later.getEye()).length(), 1e-4F) << side;
    }
}

TEST(Viewer, WhatTracksHideIsNeitherShownNorPickedNorGivenRoomUnlessTheyAreOff)
{
    using Vector = M_Vector3Template<float>;
    support::ObjectFiles files;
    TW2::MeshChunk mesh = support::makeMesh("left");
    const std::array<Vector, 3> corners{Vector{-2, 0, 0}, Vector{0, 3, 0}, Vector{2, 0, 0}};
    mesh.editVertices().positions.assign(corners.begin(), corners.end());
    files.addMesh(mesh);
    mesh.name = "right";
    mesh.transform.setTranslation({6, 0, 0});
    files.addMesh(mesh);
    TW2::KeyframeAnimationChunk track = support::makeTrack("right", 0.0F);
    track.keys.assign(1, {0, mesh.transform});
    track.visibilityKeys = {{0, -1.0F}, {10, 1.0F}};
    files.addAnimation(0, {track});
    const auto write = [&files](const char* distance)
    {
        files.writeScript("linear", std::string("distance ") + distance + "\n");
        return files.getDirectory().read("object.txt");
    };
    const std::string script = files.getDirectory().write("two.script", write("100") + "far_" + write("400"));
    for (const char* choice : {"object", "object (levels of detail)"})
    {
        Showing viewer({"look front", "crowd 1"}, script, choice);
        const TW2::TW_VirtualObject& copy = *viewer.getCrowd().getCopies()[0];
        EXPECT_NEAR(std::abs(copy.getPosition().x), 1.2F * 4.0F, 1e-3F) << "as wide as what is seen at first";
        std::string seen;
        for (const char* line :
             {"seek 0.2", "seek 0.45", "seek 0.8", "seek 0.2", "show visibility off", "show visibility on"})
        {
            viewer.run({line});
            const Vector place = project(viewer.getCamera(), {6, 2, 0});
            viewer.pick(place.x, place.y);
            seen += viewer.getObject()->getDrawn().getMesh(1)->isEnabled() ? "shown " : "hidden ";
            seen += copy.getMesh(1)->isEnabled() ? "copied " : "";
            seen += viewer.getPickedBone() == 1 ? "picked, " : "missed, ";
        }
        EXPECT_EQ(seen,
                  "hidden missed, hidden copied missed, shown copied picked, hidden missed, shown copied picked, "
                  "hidden missed, ")
            << choice;
    }
}

TEST(Viewer, OfBonesThatStandCloseTheNearestIsPickedAndNoneBehindTheEye)
{
    Showing viewer({"clip sprout_dance", "seek 0.4", "look left"}, s_sprout, "skeleton");
    float farthest = 0.0F;
    for (const char* zoom : {"zoom 1", "zoom 15"})
    {
        viewer.run({zoom});
        const auto labels = viewer.getLabels(400, 300);
        ASSERT_EQ(labels.size(), 8U);
        for (const Viewer::Label& label : labels)
        {
            const float x = label.m_fX / 200.0F - 1.0F;
            const float y = 1.0F - label.m_fY / 150.0F;
            EXPECT_LE(std::max(std::abs(x), std::abs(y)), 1.0F) << "bones alone are framed, too";
            farthest = std::max(farthest, std::abs(x));
            viewer.pick(x, y);
            EXPECT_EQ(viewer.getPickedBone(), label.m_iBone) << zoom;
        }
    }
    EXPECT_GT(farthest, 0.05F) << "not all of them in the middle";
    viewer.run({"clip sprout_rest", "look top"});
    viewer.getCamera().m_fDistance *= 0.02F;  // into the middle of the stalk
    viewer.update(0.0);
    std::set<int> before;
    for (const Viewer::Label& label : viewer.getLabels(400, 300))
    {
        before.insert(label.m_iBone);
    }
    EXPECT_LT(before.size(), 8U);
    for (float y = -0.98F; y < 1.0F; y += 0.04F)
    {
        for (float x = -0.98F; x < 1.0F; x += 0.04F)
        {
            viewer.pick(x, y);
            EXPECT_TRUE(viewer.getPickedBone() < 0 || before.contains(viewer.getPickedBone()))
                << viewer.getPickedBone();
        }
    }
    viewer.run({"crowd 1"});
    EXPECT_GT(std::abs(viewer.getCrowd().getCopies()[0]->getPosition().x), 0.2F) << "bones alone need room, too";
}

TEST(Viewer, PicksWhereverTheObjectStandsInThePictureWhatIsVisible)
{
    Showing viewer({"clip sprout_rest", "look front", "pan 0.5 0"});
    const auto labels = viewer.getLabels(400, 300);
    const auto pickBetween = [&viewer, &labels](std::size_t bone)
    {
        // A third of the way to the next bone, where no origin is near.
        const float x = labels[bone].m_fX + (labels[bone + 1].m_fX - labels[bone].m_fX) / 3.0F;
        const float y = labels[bone].m_fY + (labels[bone + 1].m_fY - labels[bone].m_fY) / 3.0F;
        viewer.pick(x / 200.0F - 1.0F, 1.0F - y / 150.0F);
        return viewer.getPickedBone();
    };
    ASSERT_LT(labels[2].m_fX, 100.0F) << "far from the middle";
    EXPECT_NEAR(pickBetween(2), 2, 1);
    EXPECT_NEAR(pickBetween(3), 3, 1);
    EXPECT_NEAR(pickBetween(5), 5, 1);
    viewer.pick(0.95F, 0.95F);
    EXPECT_EQ(viewer.getPickedBone(), -1) << "nothing stands there";
    TW2::TW_ObjectAnimation& drawn = viewer.getObject()->getDrawn();
    for (unsigned int i = 0; i < drawn.getTotalMeshes(); ++i)
    {
        for (int primitive = 0; primitive < drawn.getMesh(i)->getPrimitiveCount(); ++primitive)
        {
            drawn.getMesh(i)->getPrimitiveInstance(primitive)->setVisible(false);
        }
    }
    EXPECT_EQ(pickBetween(2), -1);
}

TEST(Viewer, OfASurfaceTheBoneOfTheNearestCornerIsPickedAndNothingWithoutAnArea)
{
    // Each corner hangs on a bone of its own.
    using Vector = M_Vector3Template<float>;
    support::CharacterFiles files({3, 3, 1, 1, 2});
    const std::array<Vector, 3> corners{Vector{-2, 0, 0}, Vector{0, 3, 0}, Vector{2, 0, 0}};
    files.m_skinMeshes[0].editVertices().positions.assign(corners.begin(), corners.end());
    files.m_skinMeshes[0].transform = {};
    Showing viewer({"look front"}, files.write());
    for (std::size_t nearest = 0; nearest < 3; ++nearest)
    {
        for (const std::size_t next : {(nearest + 1) % 3, (nearest + 2) % 3})
        {
            const Vector seen = project(viewer.getCamera(), corners[nearest] * 0.5F + corners[next] * 0.4F +
                                                                corners[3 - nearest - next] * 0.1F);
            viewer.pick(seen.x, seen.y);
            EXPECT_EQ(viewer.getPickedBone(), static_cast<int>(nearest)) << next;
        }
    }
    files.m_skinMeshes[0].editFaces().indices.assign(3, 0);
    Showing none({"look front", "zoom 3"}, files.write());
    for (const float x : {-0.97F, 0.97F})
    {
        none.pick(x, x);
        EXPECT_EQ(none.getPickedBone(), -1);
    }
}

TEST(Viewer, AnimatedTexturesRunWithTheClockUntilTheyAreTurnedOff)
{
    support::TextureFolder pictures;
    pictures.add({"wave0.png", "wave1.png"});
    TW2::MaterialListChunk list;
    list.texturePath = pictures.getDirectory().getPath().string().c_str();
    list.materials.resize(1);
    list.materials[0].name = "water";
    support::fillTexture(list.materials[0].accessDiffuseTexture(), "wave", {"wave0.png", "wave1.png"}).framesPerSecond =
        10;
    support::ObjectFiles files;
    files.addMesh("pond");
    files.addMaterials(list);
    files.addAnimation(0, {support::makeTrack("pond", 0.0F)});
    Showing viewer({}, files.writeScript());
    std::string seen;
    for (const char* line :
         {"seek 0", "seek 0.15", "texture wave", "seek 0", "texture wave on", "texture wave off", "seek 0.15"})
    {
        viewer.run({line});
        const TW2::TW_MaterialManager& materials = *viewer.getObject()->getDrawn().getMaterialManager();
        const S_String& file = materials.getMaterial(0)->getMaterial()->getTexture(0)->getFilename();
        seen += file[file.size() - 5];
    }
    EXPECT_EQ(seen, "0111000");
    EXPECT_NE(support::complaintOf<Failure>([&] { execute(viewer, "texture lava"); }).find("\"lava\""),
              std::string::npos);
    EXPECT_THROW(Viewer().setTextureAnimation("wave", true), Failure);
}

TEST(KeyCurves, MakeTheMatrixAgainDoNotJumpAndKnowTheirKeys)
{
    using Matrix = M_Matrix4x3Template<float>;
    constexpr double quarter = 1.57079632679489661923;
    support::ObjectFiles files;
    files.addMesh("wheel");
    files.addMesh("upright", "wheel");
    TW2::KeyframeAnimationChunk wheel = support::makeTrack("wheel", 0.0f, 25, 30);
    TW2::KeyframeAnimationChunk upright = support::makeTrack("upright", 0.0f, 25, 30);
    wheel.keys.clear();
    upright.keys.clear();
    for (unsigned int frame = 0; frame < 25; ++frame)
    {
        // Twice about z; about y straight up and beyond, turned about x.
        wheel.keys.push_back({frame, support::rotation(0.0, 0.0, 1.0, frame * quarter / 3.0)});
        wheel.keys.back().matrix.setTranslation({0.1F * static_cast<float>(frame), 3.0F, -1.0F});
        upright.keys.push_back(
            {frame, support::rotation(1.0, 0.0, 0.0, 0.5) * support::rotation(0.0, 1.0, 0.0, frame * quarter / 12.0)});
    }
    files.addAnimation(0, {wheel, upright});
    TW2::viewer::LoadedObject object(files.writeScript());
    const KeyCurves turns = TW2::viewer::sampleCurves(object, 0, 0);
    ASSERT_EQ(turns.m_aValues[5].size(), 25U);
    EXPECT_TRUE(TW2::viewer::sampleCurves(object, 2, 0).isEmpty());
    EXPECT_NEAR(std::abs(turns.m_aValues[5].back() - turns.m_aValues[5].front()), 720.0F, 0.01F);
    for (const int bone : {0, 1})
    {
        const KeyCurves curves = TW2::viewer::sampleCurves(object, bone, 0);
        const auto& keys = bone == 0 ? wheel.keys : upright.keys;
        ASSERT_EQ(curves.m_vecKeyFrames.size(), keys.size());
        for (std::size_t frame = 0; frame < keys.size(); ++frame)
        {
            const auto about = [&curves, frame](std::size_t axis)
            {
                const double angle = static_cast<double>(curves.m_aValues[axis + 3][frame]) * quarter / 90.0;
                return support::rotation(axis == 0, axis == 1, axis == 2, angle);
            };
            Matrix made = about(0) * about(1) * about(2);
            EXPECT_EQ(curves.m_vecKeyFrames[frame], static_cast<int>(keys[frame].frame));
            made.setTranslation({curves.m_aValues[0][frame], curves.m_aValues[1][frame], curves.m_aValues[2][frame]});
            EXPECT_LT(support::getDifference({made}, {keys[frame].matrix}), 0.002F) << bone << " at " << frame;
        }
    }
}

TEST(Extent, HasRoomForEveryPlaceThatBonesComeToInEveryClip)
{
    using Vector = M_Vector3Template<float>;
    support::ObjectFiles files;
    files.addMesh("bone");
    const auto moveTo = [&files](int index, unsigned int frames, const Vector& middle, const Vector& end)
    {
        TW2::KeyframeAnimationChunk track = support::makeTrack("bone", 0.0f, frames, 30);
        track.keys.assign(1, {0, support::Matrix()});
        if (frames > 1)
        {
            track.keys.push_back({(frames - 1) / 2, support::Matrix::translation(middle)});
            track.keys.push_back({frames - 1, support::Matrix::translation(end)});
        }
        files.addAnimation(index, {track});
    };
    moveTo(0, 1, {}, {});
    moveTo(1, 3, {0, 4, 0}, {10, 0, 0});
    moveTo(2, 231, {0, 0, 0}, {0, 0, -7});
    TW2::viewer::LoadedObject object(files.writeScript());
    P_Context context;
    P_Scene scene(&context);
    object.getObject().addTo(&scene);
    const TW2::viewer::Extent extent(object.getScript(), scene, context);
    const auto rest = extent.getRest();
    for (const auto& [clips, down, up] : {std::tuple(std::vector<int>{}, Vector(), Vector()),
                                          {{0}, Vector(), Vector()},
                                          {{1}, Vector(), Vector{10, 4, 0}},
                                          {{2}, Vector{0, 0, -7}, Vector()},
                                          {{2, 1}, Vector{0, 0, -7}, Vector{10, 4, 0}},
                                          {{9}, Vector(), Vector()}})
    {
        const auto room = extent.getRoom(clips);
        EXPECT_LT((room.m_vMinimum - rest.m_vMinimum - down).length(), 1e-5F) << testing::PrintToString(clips);
        EXPECT_LT((room.m_vMaximum - rest.m_vMaximum - up).length(), 1e-5F) << testing::PrintToString(clips);
    }
}

/// Each thing that can be shown, in what the renderer is told.
TEST(SceneView, TellsTheRendererWhatIsToBeShown)
{
    using TW2::render::View;
    P_Context context;
    P_Scene scene(&context);
    TW2::viewer::LoadedObject object(s_sprout);
    object.getObject().addTo(&scene);
    const TW2::viewer::Extent extent(object.getScript(), scene, context);
    TW2::viewer::Shown shown =
        TW2::viewer::makeShown(object.getObject(), object.getSkeleton(), object.getDrawn(), extent, {});
    TW2::viewer::Show show;
    show.m_bGrid = false;
    View view = makeView(show, shown);
    EXPECT_FALSE(view.m_bTransparent);
    EXPECT_TRUE(view.m_shadow);
    EXPECT_FALSE(view.m_bHighlight);
    EXPECT_TRUE(view.m_vecLines.empty() && view.m_vecOverlayLines.empty());
    show.m_bTransparent = true;
    show.m_bMesh = false;
    shown.m_iPickedBone = 0;
    view = makeView(show, shown);
    EXPECT_TRUE(view.m_bTransparent);
    EXPECT_FALSE(view.m_shadow) << "of nothing";
    EXPECT_TRUE(view.m_bHighlight);
    EXPECT_EQ(view.m_pPickedMesh, nullptr) << "the skin has the surfaces";
    TW2::viewer::Shown bare =
        TW2::viewer::makeShown(object.getObject(), object.getSkeleton(), object.getSkeleton(), extent, {});
    EXPECT_EQ(makeView(show, bare).m_pPickedMesh, nullptr);
    bare.m_iPickedBone = 2;
    EXPECT_EQ(makeView(show, bare).m_pPickedMesh, object.getSkeleton().getMesh(2));
    show.m_eSurface = View::Surface::Normals;
    EXPECT_FALSE(makeView(show, shown).m_bHighlight) << "colours say something else";

    show.m_bAxes = true;
    view = makeView(show, shown);
    view.m_vecLines.insert(view.m_vecLines.end(), view.m_vecOverlayLines.begin(), view.m_vecOverlayLines.end());
    EXPECT_EQ(view.m_vecLines.size(), 3U * object.getBones().size());
    for (const auto& line : view.m_vecLines)
    {
        EXPECT_LT((line.m_vTo - line.m_vFrom).length(), 0.05F * shown.m_fSize);
    }
    show.m_bAxes = false;
    show.m_bBounds = true;
    view = makeView(show, shown);
    EXPECT_GT(view.m_vecLines.size() + view.m_vecOverlayLines.size(), 12U + 12U) << "a box and a sphere";
    shown.add(extent.getRest(), {100.0F, 0.0F, 0.0F});
    EXPECT_EQ(shown.m_around.m_vMaximum.x, 100.0F + extent.getRest().m_vMaximum.x);
    EXPECT_GT(shown.m_casters.m_vMaximum.x, shown.m_around.m_vMaximum.x) << "what is moved throws its shadow, too";
    EXPECT_LT(shown.m_casters.m_vMinimum.y, shown.m_around.m_vMinimum.y);
}
}  // namespace
