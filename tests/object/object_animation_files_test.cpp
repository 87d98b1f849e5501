#include "tests/object/soldier_files.h"
#include "tests/support/expectations.h"
#include "tests/support/verbose_capture.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/skin_chunk.h>

#include <platform/runtime/file.h>
#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

using namespace TW2;
using support::makeTrack;
using support::SoldierFiles;
using testing::HasSubstr;

TEST(ObjectAnimationFiles, FilesAreRelativeToTheCurrentDirectoryAndToldApartByTheirFolders)
{
    const SoldierFiles files;
    (void)files.writeScript();
    files.writeAnimation("slow/walk.tw", {makeTrack("Hip", 1.0f)});
    files.writeAnimation("fast/walk.tw", {makeTrack("Hip", 100.0f)});
    const std::string script = files.getDirectory().write("scripts/relative.txt", R"(
        relative
        {
            geometry { exportdata "GEOMETRY.tw" }
            animation { index 0  filename "slow\walk.tw" }
            animation { index 1  filename "fast/Walk.TW" }
        })");

    const S_DirectoryGuard restore;
    File.changeDirectory(files.getDirectory().getPath().string());
    TW_ObjectAnimation object(script.c_str(), "relative", nullptr, false);
    for (const auto& [index, distance] : {std::pair(0, 1.0f), std::pair(1, 100.0f)})
    {
        ASSERT_TRUE(object.animateObjectFrame(index, 10.0f, nullptr));
        EXPECT_FLOAT_EQ(object.getMesh(0)->getMatrix().m[3][0], distance);
    }
}

TEST(ObjectAnimationFiles, FilesThatAreNotInTheCurrentDirectoryAreFoundBesideTheScript)
{
    // The folder "game" is moved about as a whole and used from anywhere.
    const SoldierFiles files;
    (void)files.writeScript();
    const support::TemporaryDirectory& directory = files.getDirectory();
    directory.write("game/data/geometry.tw", directory.read("geometry.tw"));
    files.writeAnimation("game/data/walk.tw", {makeTrack("Hip", 1.0f)});
    directory.write("game/walk.motion", directory.read("game/data/walk.tw"));
    directory.write("game/soldier.txt", R"(
        soldier
        {
            geometry { exportdata "data/Geometry.tw" }
            animation { index 0  filename "data\walk.tw" rootmotion walk.motion }
        }
        more { animation { index 1  filename "data/walk.tw" } })");

    const S_DirectoryGuard restore;
    File.changeDirectory(directory.getPath().string());
    const auto distanceAfterASecond = [](TW_ObjectAnimation& object, int index)
    {
        EXPECT_TRUE(object.animateObjectFrame(index, 10.0f, nullptr));
        return object.getMesh(0)->getMatrix().m[3][0];
    };
    TW_ObjectAnimation object("game/soldier.txt", "soldier", nullptr, false);
    EXPECT_FLOAT_EQ(distanceAfterASecond(object, 0), 1.0f);
    EXPECT_EQ(File.getCurrentDirectory(), (directory.getPath().generic_string() + "/").c_str());

    // A script that is open keeps its folder, wherever the process goes meanwhile.
    S_Script script("game/soldier.txt");
    File.changeDirectory(restore.getDirectory());
    object.construct(&script, "soldier", nullptr, false);
    object.appendAnimations(&script, "more", false);
    EXPECT_FLOAT_EQ(distanceAfterASecond(object, 1), 1.0f);

    // What is in the current directory comes first.
    files.writeAnimation("data/walk.tw", {makeTrack("Hip", 100.0f)});
    File.changeDirectory(directory.getPath().string());
    object.construct(&script, "soldier", nullptr, false);
    EXPECT_FLOAT_EQ(distanceAfterASecond(object, 0), 100.0f);
}

TEST(ObjectAnimationFiles, AFileThatIsNowhereIsNamedWithBothPlacesAndTheLineThatAsksForIt)
{
    const SoldierFiles files;
    (void)files.writeScript();
    const support::TemporaryDirectory& directory = files.getDirectory();
    const std::string geometry = "geometry {\n exportdata \"" + directory.file("geometry.tw") + "\" }\n";
    const std::string walk = "\"" + files.writeAnimation("walk.tw", {makeTrack("Hip", 1.0f)}) + "\"";
    const std::string gone = directory.file("gone.tw");
    const std::tuple<std::string, const char*, int, const char*> cases[] = {
        {"geometry {\n crossmode linear\n exportdata away.tw }", "away.tw", 5, "exportdata"},
        {geometry + "animation {\n index 0\n filename no/away.tw }", "no/away.tw", 7, "filename"},
        {geometry + "animation { index 0 filename " + walk + " }\nanimation { index 1\n filename " + walk +
             "\n\n rootmotion away.tw }",
         "away.tw", 9, "rootmotion"},
        {"geometry { exportdata \"" + gone + "\" }", gone.c_str(), 3, "exportdata"},
    };
    for (const auto& [lines, file, line, key] : cases)
    {
        const std::string name = directory.write("scripts/broken.txt", "soldier\n{\n" + lines + "\n}\n");
        const std::string message =
            support::messageOf([&name] { TW_ObjectAnimation(name.c_str(), "soldier", nullptr, false); });
        const std::string places =
            file == gone ? "there is no such file"
                         : "is neither in the current directory \"" + std::string(File.getCurrentDirectory()) +
                               "\" nor beside the script in \"" + directory.file("scripts/") + "\"";
        EXPECT_EQ(message, "File \"" + std::string(file) + "\": " + places + "; line " + std::to_string(line) +
                               " of \"" + name + "\" asks for it (key \"" + key + "\")");
    }
}

TEST(ObjectAnimationFiles, AFileOfAnotherKindIsToldWhatItIs)
{
    const SoldierFiles files;
    (void)files.writeScript();
    const std::string animation = files.writeAnimation("walk.tw", {makeTrack("Hip", 1.0f)});
    const std::string skin =
        files.getDirectory().write("soldier.skd", support::toBytes(SkinChunk(), EnvironmentChunk()));
    const std::string geometry = files.getDirectory().file("geometry.tw");
    const auto complain = [&files](const std::string& exportdata, const std::string& more)
    {
        const std::string script = files.getDirectory().write(
            "wrong.txt", "soldier { geometry { exportdata \"" + exportdata + "\" } " + more + " }");
        return support::complaintOf<TW_Exception>([&script] { TW_ObjectAnimation(script, "soldier", nullptr, false); });
    };
    const std::string noGeometry = "\" holds no geometry; it is ";
    EXPECT_EQ(complain(skin, ""),
              "TW2: Invalid Geometry: file \"" + skin + noGeometry + "skin data, which the key \"skindata\" names");
    EXPECT_EQ(complain(animation, ""), "TW2: Invalid Geometry: file \"" + animation + noGeometry +
                                           "an animation, which an \"animation\" block names");
    const std::string noAnimation = "\" did not have a valid keyframe animation chunk (it is ";
    EXPECT_EQ(complain(geometry, "animation { index 0 filename \"" + geometry + "\" }"),
              "TW2: File \"" + geometry + noAnimation + "geometry, which the key \"exportdata\" names)");
    EXPECT_EQ(complain(geometry, "animation { index 0 filename \"" + skin + "\" }"),
              "TW2: File \"" + skin + noAnimation + "skin data, which the key \"skindata\" names)");

    // Nothing to mistake: a file without any of these is an object without meshes, an animation without tracks.
    const std::string nothing = files.getDirectory().write("nothing.tw", "");
    const std::string script =
        files.getDirectory().write("empty.txt", "soldier { geometry { exportdata \"" + nothing +
                                                    "\" } animation { index 0 filename \"" + nothing + "\" } }");
    const TW_ObjectAnimation empty(script, "soldier", nullptr, false);
    EXPECT_EQ(empty.getTotalMeshes(), 0u);
    EXPECT_TRUE(empty.isValidAnimation(0));
}

TEST(ObjectAnimationFiles, ABlockWithSkinDataIsBuiltAsAnObjectWithAWordInTheLog)
{
    const SoldierFiles files;
    const std::string script = files.writeScript("linear", "\n skindata \"soldier.skd\"\n");
    const support::VerboseCapture log;
    const TW_ObjectAnimation object(script, "object", nullptr, false);
    EXPECT_EQ(object.getTotalMeshes(), 2u);
    EXPECT_EQ(log.getText(),
              "TW2: " + script +
                  ": object names skin data (line 8), which an object does without: its meshes follow no "
                  "bones. A vertex animation takes them.\n");
}
