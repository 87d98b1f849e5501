// Motion of one file for the character of another, beside a model of both in double precision.
#if defined(TW2_HAS_CONVERT)
#include "tests/support/run_command.h"
#include "tests/support/temporary_directory.h"
#include "tests/tools/converted_motion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace
{
using namespace support;

/// A person of 21 bones with its arms spread, every bone's axes along the scene's.
GltfCharacter makePerson()
{
    GltfCharacter person;
    person.m_vecBones = {{"mixamorig:Hips", -1, {0, 1, 0}, {}},
                         {"mixamorig:Spine01", 0, {0, 0.3, 0.02}, {}},
                         {"mixamorig:Head", 1, {0, 0.4, 0}, {}}};
    for (const auto& [side, sign] : {std::pair{std::string("Left"), 1.0}, std::pair{std::string("Right"), -1.0}})
    {
        const auto add = [&, &side = side, &bones = person.m_vecBones](const char* name, int parent, const Vec& offset)
        {
            bones.push_back({"mixamorig:" + side + name, parent, offset, {}});
            return static_cast<int>(bones.size()) - 1;
        };
        const int arm = add("Arm", 1, {0.2 * sign, 0.25, 0});
        const int foreArm = add("ForeArm", arm, {0.3 * sign, 0, 0.01});
        const int hand = add("Hand", foreArm, {0.25 * sign, 0, 0});
        add("HandThumb1", hand, {0.03 * sign, 0, 0.04});
        add("HandIndex1", hand, {0.09 * sign, 0, 0.02});
        const int thigh = add("UpLeg", 0, {0.1 * sign, -0.05, 0});
        const int shin = add("Leg", thigh, {0, -0.45, 0.02});
        const int foot = add("Foot", shin, {0, -0.45, -0.02});
        add("ToeBase", foot, {0, -0.04, 0.15});
    }
    const auto dance = [](std::size_t bone, double t, Vec& offset, Quat& q)
    {
        const auto b = static_cast<double>(bone);
        if (bone == 0)
        {
            offset = offset + Vec{0.3 * t, 0.04 * std::sin(7 * t), 0.5 * t * t};
        }
        q = q * about({std::sin(b), std::cos(2 * b), 0.4}, (bone == 0 ? 60 : 25) * std::sin(2 * t + b));
    };
    const auto glide = [](std::size_t bone, double t, Vec& offset, Quat& q)
    {
        offset = bone == 0 ? offset + Vec{0.1 * t, 0, 0} : offset;
        q = bone == 3 ? about({0, 0, 1}, 80 * t) : q;
    };
    person.m_vecClips = {{"dance", 1.0, dance, ""}, {"glide", 1.0, glide, ""}};
    return person;
}

/// The same tree with other axes for every bone, standing at rest where `place` says.
GltfCharacter makeOther(const GltfCharacter& person, const std::function<Vec(std::size_t)>& place,
                        const std::function<std::string(std::size_t)>& name)
{
    GltfCharacter other;
    std::vector<Quat> axes;
    for (std::size_t bone = 0; bone < person.m_vecBones.size(); ++bone)
    {
        const auto b = static_cast<double>(bone);
        axes.push_back(about({std::cos(3 * b), 1, std::sin(b)}, 40 + 70 * b));
        const int parent = person.m_vecBones[bone].m_iParent;
        Quat back;
        Vec from;
        if (parent >= 0)
        {
            const Quat& q = axes[static_cast<std::size_t>(parent)];
            back = {q.w, -q.x, -q.y, -q.z};
            from = place(static_cast<std::size_t>(parent));
        }
        other.m_vecBones.push_back({name(bone), parent, turn(back, place(bone) - from), back * axes[bone]});
    }
    return other;
}

/// "mixamorig:LeftForeArm" as "fore_arm.L", "mixamorig:Spine01" as "spine1"; hips and heads have another name.
std::string spellOtherwise(const std::string& name)
{
    std::string plain = name.substr(name.find(':') + 1);
    std::string side;
    for (const auto& [word, ending] : {std::pair{std::string("Left"), ".L"}, std::pair{std::string("Right"), ".R"}})
    {
        if (plain.starts_with(word))
        {
            side = ending;
            plain.erase(0, word.size());
        }
    }
    std::string result;
    for (const char c : plain)
    {
        result += std::isupper(static_cast<unsigned char>(c)) != 0 && !result.empty() ? "_" : "";
        result += c == '0' ? "" : std::string(1, static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    return (result == "hips" ? "pelvis" : result) + side;
}

bool isArm(std::size_t bone)
{
    return (bone >= 3 && bone <= 7) || (bone >= 12 && bone <= 16);
}

double angleBetween(const Vec& a, const Vec& b)
{
    const double cosine = (a.x * b.x + a.y * b.y + a.z * b.z) / (length(a) * length(b));
    return std::acos(std::clamp(cosine, -1.0, 1.0)) * 180 / s_pi;
}
}  // namespace

TEST(FittedMotion, ASkeletonOfAnotherSizeAndOtherAxesPlaysTheSameDirections)
{
    const GltfCharacter person = makePerson();
    const auto atRest = [&person](std::size_t bone) { return person.getPoint(-1, bone, 0.0); };
    // Arms hang: turned about the shoulder, which is bone 3 or 12.
    const auto hanging = [&](std::size_t bone)
    {
        const std::size_t shoulder = bone < 12 ? 3 : 12;
        const Vec from = atRest(shoulder);
        return (isArm(bone) ? from + turn(about({0, 0, 1}, bone < 12 ? -50 : 50), atRest(bone) - from) : atRest(bone)) *
               2.0;
    };
    // An arm and a shin stand opposite at rest. What fingers then do, nobody can say: any half turn brings the arm
    // back.
    const auto opposite = [&](std::size_t bone)
    {
        const bool arm = bone >= 3 && bone <= 7;
        const bool shin = bone >= 9 && bone <= 11;
        return (arm || shin ? atRest(arm ? 3 : 9) * 2.0 - atRest(bone) : atRest(bone)) * 2.0;
    };
    struct Case
    {
        const char* m_pName;
        std::function<Vec(std::size_t)> m_place;
        bool m_bTurned = false;
        bool m_bFingers = true;
    };
    for (const auto& [name, place, turned, fingers] :
         {Case{"twice the size", [&](std::size_t bone) { return atRest(bone) * 2.0; }}, Case{"hanging arms", hanging},
          Case{"looks back",
               [&](std::size_t bone) {
                   return turn(about({0, 1, 0}, 180), hanging(bone));
               },
               true},
          Case{"opposite limbs", opposite, false, false}})
    {
        const GltfCharacter giant = makeOther(
            person, place, [&](std::size_t bone) { return spellOtherwise(person.m_vecBones[bone].m_strName); });
        const TemporaryDirectory directory;
        const std::string model = directory.write("giant.gltf", giant.make());
        const std::string motion = directory.write("person.gltf", person.make());
        const std::string map = directory.write("map", "# the hips\nmixamorig:Hips pelvis\n");
        const std::string script = directory.file("out/giant.script");
        ASSERT_EQ(runTW2({"convert", model, "-o", directory.file("out")}).status, 0);
        const CommandResult added =
            runTW2({"convert", motion, "--onto", script, "--map", map, "--tolerance", "0.002", "0.1", "--json"});
        ASSERT_EQ(added.status, 0) << added.errors;
        for (const char* told : {"\"nodesByMap\": 1", "\"nodesBySpelling\": 20", "\"nodesByName\": 1",
                                 "\"fitted\": true", "\"withoutCounterpart\": []"})
        {
            EXPECT_THAT(added.output, testing::HasSubstr(told));
        }
        const auto object = load(script, "skeleton");
        for (int clip = 0; clip < 2; ++clip)
        {
            const int index =
                object->findAnimation(person.m_vecClips[static_cast<std::size_t>(clip)].m_strName.c_str());
            for (int frame = 0; frame < 30; frame += 3)
            {
                object->animateObject(index, static_cast<float>(frame) / 30.0f, nullptr);
                for (std::size_t bone = 0; bone < person.m_vecBones.size(); ++bone)
                {
                    const bool finger = bone == 6 || bone == 7;
                    if (finger && !fingers)
                    {
                        continue;
                    }
                    Vec expected = person.getPoint(clip, bone, frame / 30.0) * 2.0;
                    expected = turned ? turn(about({0, 1, 0}, 180), expected) : expected;
                    const Vec played = getPoint(*object, giant.m_vecBones[bone].m_strName, {});
                    EXPECT_LT(length(played - expected), 0.006) << name << " " << giant.m_vecBones[bone].m_strName;
                }
            }
        }
    }
}

TEST(FittedMotion, OtherProportionsKeepTheirLengthsAndTakeDirections)
{
    const GltfCharacter person = makePerson();
    // Legs half as long again, arms shorter; the hips stand as much higher.
    std::vector<Vec> places;
    for (std::size_t bone = 0; bone < person.m_vecBones.size(); ++bone)
    {
        const GltfCharacter::Bone& own = person.m_vecBones[bone];
        const bool leg = (bone >= 9 && bone <= 10) || (bone >= 18 && bone <= 19);
        const double factor = bone == 0 || leg ? 1.5 : isArm(bone) ? 0.8 : 1.0;
        const Vec from = own.m_iParent >= 0 ? places[static_cast<std::size_t>(own.m_iParent)] : Vec();
        places.push_back(from + own.m_vOffset * factor);
    }
    const GltfCharacter other = makeOther(
        person, [&](std::size_t bone) { return places[bone]; },
        [&](std::size_t bone) { return person.m_vecBones[bone].m_strName; });
    const TemporaryDirectory directory;
    const std::string script = directory.file("out/other.script");
    ASSERT_EQ(runTW2({"convert", directory.write("other.gltf", other.make()), "-o", directory.file("out")}).status, 0);
    const CommandResult added = runTW2(
        {"convert", directory.write("person.gltf", person.make()), "--onto", script, "--tolerance", "0.001", "0.05"});
    ASSERT_EQ(added.status, 0) << added.errors;
    EXPECT_THAT(
        added.output,
        testing::StartsWith(script + "\n  motion of person: 22 nodes by name, 0 by spelling, 0 by the map, 0 without a "
                                     "counterpart; fitted to a skeleton 1.45 times as large, standing feet slide up to "
                                     "0.145 units (0.145 before)\n  animations, allowed error 0.001 units, 0.05 "
                                     "degrees:\n  1  dance: "));
    const double ratio = (places[0].y - places[11].y) / (1.0 - person.getPoint(-1, 11, 0).y);
    const auto object = load(script, "skeleton");
    for (int frame = 0; frame <= 30; frame += 5)
    {
        object->animateObject(object->findAnimation("dance"), static_cast<float>(frame) / 30.0f, nullptr);
        std::vector<Vec> played;
        for (const GltfCharacter::Bone& bone : other.m_vecBones)
        {
            played.push_back(getPoint(*object, bone.m_strName, {}));
        }
        const Vec way = person.getPoint(0, 0, frame / 30.0) - person.getPoint(-1, 0, 0);
        EXPECT_LT(length(played[0] - places[0] - way * ratio), 0.004) << frame;
        for (std::size_t bone = 1; bone < played.size(); ++bone)
        {
            const auto parent = static_cast<std::size_t>(other.m_vecBones[bone].m_iParent);
            const Vec is = played[bone] - played[parent];
            const Vec wanted = person.getPoint(0, bone, frame / 30.0) - person.getPoint(0, parent, frame / 30.0);
            EXPECT_LT(angleBetween(is, wanted), 1.0) << other.m_vecBones[bone].m_strName << " " << frame;
            EXPECT_NEAR(length(is), length(places[bone] - places[parent]), 0.004);
        }
    }
    // A body that glides slides with its feet: a tenth of a unit, by the height of the hips.
    const CommandResult glide =
        runTW2({"convert", directory.file("person.gltf"), "--onto", script, "--clip", "glide=again", "--json"});
    EXPECT_THAT(glide.output, testing::HasSubstr("\"footSlide\": 0.145")) << ratio;
    EXPECT_THAT(glide.output, testing::HasSubstr("\"footSlideBefore\": 0.145"));
    EXPECT_THAT(glide.output, testing::ContainsRegex("\"name\": \"[^\"]+\",[ \n]+\"nodesByName\""));
}

TEST(FittedMotion, TheSameSkeletonGetsTheSameMotion)
{
    GltfCharacter person = makePerson();
    const TemporaryDirectory directory;
    const std::string model = directory.write("person.gltf", person.make());
    const std::string script = directory.file("out/person.script");
    ASSERT_EQ(runTW2({"convert", model, "-o", directory.file("out"), "--tolerance", "0.001", "0.05"}).status, 0);
    std::string before = directory.read("out/person.script");
    const std::size_t block = before.find("skeleton");
    before.insert(before.find('{', block) + 1, " // \" }\n    /* } *//* b }\n    } */\n");
    directory.write("out/person.script", before);
    person.m_bShown = false;
    person.m_vecBones.push_back({"tail", 0, {0, 0, -0.1}, {}});
    const CommandResult added = runTW2({"convert", directory.write("motion.gltf", person.make()), "--onto", script,
                                        "--clip", "dance=again", "--tolerance", "0.001", "0.05"});
    ASSERT_EQ(added.status, 0) << added.errors;
    EXPECT_THAT(added.errors,
                testing::HasSubstr("1 moved nodes of \"motion\" have no counterpart and are left out: \"tail\""));
    EXPECT_THAT(added.output, testing::HasSubstr(": 21 nodes by name, 0 by spelling, 0 by the map, 1 without a "
                                                 "counterpart\n  animations, allowed"));
    EXPECT_THAT(added.errors, testing::Not(testing::HasSubstr("reach beyond")));
    const auto object = load(script, "skeleton");
    const int first = object->findAnimation("dance");
    const int again = object->findAnimation("again");
    EXPECT_EQ(again, 3) << "behind the pose at rest and two clips";
    for (int frame = 0; frame <= 60; ++frame)
    {
        const float seconds = static_cast<float>(frame) / 60.0f;
        for (const GltfCharacter::Bone& bone : makePerson().m_vecBones)
        {
            object->animateObject(first, seconds, nullptr);
            const Vec expected = getPoint(*object, bone.m_strName, {0.1, 0.1, 0.1});
            object->animateObject(again, seconds, nullptr);
            EXPECT_LT(length(getPoint(*object, bone.m_strName, {0.1, 0.1, 0.1}) - expected), 0.003) << bone.m_strName;
        }
    }
    // What the script said before stands in it as it was.
    std::string after = directory.read("out/person.script");
    const std::size_t at = after.find("    // animation { index 3 ");
    ASSERT_NE(at, std::string::npos) << after;
    after.erase(at, after.find('\n', after.find('\n', at) + 1) + 1 - at);
    EXPECT_EQ(after, before);
}

TEST(FittedMotion, WhatCannotBeAddedLeavesTheCharacterAsItWas)
{
    const GltfCharacter person = makePerson();
    const TemporaryDirectory directory;
    const std::string model = directory.write("person.gltf", person.make());
    const std::string script = directory.file("out/person.script");
    ASSERT_EQ(runTW2({"convert", model, "-o", directory.file("out")}).status, 0);
    const auto list = [&directory]
    {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(directory.file("out")))
        {
            files.push_back(entry.path().filename().string());
        }
        std::ranges::sort(files);
        return files;
    };
    const std::vector<std::string> files = list();
    const std::string before = directory.read("out/person.script");
    const std::string twice = directory.write("twice.map", "tail head\n\ntail hips\n");
    const std::string noBone = directory.write("bone.map", "mixamorig:Hips fin\n");
    const std::string noNode = directory.write("node.map", "\"big fin\" mixamorig:Hips\n");
    const std::string two = directory.write(
        "out/two.script", "a { geometry { exportdata person_skeleton.tw } }\nb { geometry { exportdata x.tw } }\n");
    struct Case
    {
        Strings m_vecOptions;
        std::string m_strReason;
    };
    for (const auto& [options, reason] :
         {Case{{"--onto", script}, "person.script: has an animation \"dance\" already: --clip \"dance=NEW\""},
          Case{{"--onto", script, "--clip", "run"}, "has no clip \"run\""},
          Case{{"--onto", script, "--map", twice}, "twice.map:3: \"tail\" is mapped twice"},
          Case{{"--onto", script, "--map", noBone}, "bone.map:1: the character has no node \"fin\""},
          Case{{"--onto", script, "--map", noNode}, "node.map:1: no model that gives motion has a node \"big fin\""},
          Case{{"--onto", two},
               "several blocks could get the motion, one has to be chosen by its name; its blocks: a, b"},
          Case{{"--onto", script, "--block", "skin"}, "no block \"skin\" with geometry and without skin data"},
          Case{{"--onto", directory.file("none.script")}, "none.script"}})
    {
        const CommandResult result = runTW2(Strings{"convert", model} + options);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, testing::HasSubstr(reason));
    }
    GltfCharacter stranger = person;
    for (std::size_t i = 0; i < stranger.m_vecBones.size(); ++i)
    {
        stranger.m_vecBones[i].m_strName = "x" + std::to_string(i);
    }
    EXPECT_THAT(
        runTW2({"convert", directory.write("stranger.gltf", stranger.make()), "--onto", script, "--clip", "dance=new"})
            .errors,
        testing::HasSubstr("none of the nodes that it moves is called as one of \"person\": a file for --map"));
    EXPECT_EQ(runTW2({"convert", model}).status, 2) << "neither a folder nor a script";
    EXPECT_EQ(runTW2({"convert", model, "-o", directory.file("out"), "--onto", script}).status, 2) << "both";
    EXPECT_EQ(directory.read("out/person.script"), before);
    std::filesystem::remove(two);
    EXPECT_EQ(list(), files) << "nothing half-written";
}

TEST(FittedMotion, SeveralModelsAreOneCharacter)
{
    const GltfCharacter person = makePerson();
    GltfCharacter bones = person;
    bones.m_bShown = false;
    bones.m_vecClips.resize(1);
    bones.m_vecClips[0].m_strName.clear();
    const TemporaryDirectory directory;
    const std::string motion = directory.write("bones.gltf", bones.make());
    const std::string model = directory.write("person.gltf", person.make());
    const CommandResult converted =
        runTW2({"convert", "--tolerance", "0.002", "0.1", motion, model, "--together", "-o", directory.file("out")});
    ASSERT_EQ(converted.status, 0) << converted.errors;
    const auto object = load(directory.file("out/person.script"), "skeleton");
    for (const char* name : {"clip", "dance"})
    {
        object->animateObject(object->findAnimation(name), 0.5f, nullptr);
        EXPECT_LT(length(getPoint(*object, "mixamorig:LeftHand", {}) - person.getPoint(0, 5, 0.5)), 0.005) << name;
    }
}
#endif
