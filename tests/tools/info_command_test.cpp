#include "tests/support/character_files.h"
#include "tests/support/material_records.h"
#include "tests/support/run_command.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

namespace
{
using support::CommandResult;
using support::runTW2;

using Chunk = TW2::TWMaterialChunk;

/// A material of each set-up.
struct Look
{
    const char* m_szName;
    bool m_bShaded;
    bool m_bAlphaTest;
    TW2::MaterialTextureChunk& (Chunk::*m_pSecond)();
    const char* m_szSecond;
};
constexpr Look s_looks[] = {
    {"material0", false, false, nullptr, ""},
    {"material1", false, false, &Chunk::accessGlossTexture, "shine"},
    {"bark", true, false, nullptr, ""},
    {"leaf", true, true, nullptr, ""},
    {"glass", true, false, &Chunk::accessReflectionTexture, "sky"},
    {"skin", false, false, &Chunk::accessSpecularTexture, "wet"},
};

/// A character of which everything that there is to tell is there once, and different each time.
std::string writeCharacter(support::CharacterFiles& files, support::TextureFolder& pictures)
{
    pictures.add({"coat.png", "second.png"});
    files.m_bones[2].parentName = "Bone1";
    files.m_materials.texturePath = pictures.getDirectory().getPath().c_str();
    for (const Look& look : s_looks)
    {
        Chunk& material = files.m_materials.materials.emplace_back();
        material.name = look.m_szName;
        material.shading = look.m_bShaded ? Chunk::SHADING_GOURAUD : 0;
        material.alphaTest = look.m_bAlphaTest;
        support::fillTexture(material.accessDiffuseTexture(), "coat", {"coat.png"});
        if (look.m_pSecond)
        {
            support::fillTexture((material.*look.m_pSecond)(), look.m_szSecond, {"second.png"});
        }
    }
    files.write();
    // A track of the newest version, and one of the oldest, which has no visibility keys, behind it.
    TW2::KeyframeAnimationChunk track;
    track.header.targetName = "Bone0";
    track.header.frameRate = 30;
    track.totalFrameCount = 11;
    track.keys = {{0, {}}, {10, {}}};
    track.visibilityKeys = {{0, 1.0f}, {5, 0.0f}, {6, 1.0f}};
    S_MemoryFileWriter writer;
    support::writeTrack(writer, track, 6);
    track.header.targetName = "Bone1";
    support::writeTrack(writer, track, 0);
    const support::TemporaryDirectory& folder = files.getDirectory();
    folder.write("blink.tw", writer.getBytes());
    return folder.write("all.txt", R"(skeleton
{
    geometry { exportdata "skeleton.tw"  crossmode "orthonormalized"  distance 40 }
    animation { index 0  filename "animation0.tw"  event { time 0.7  name "left" }  event { time 0.35  name "right" } }
    animation { index 3  filename "blink.tw" }
}
skin { geometry { exportdata "body.tw"  skindata "body.skd" } }
)");
}
}  // namespace

TEST(InfoCommand, TellsEverythingAboutACharacter)
{
    support::CharacterFiles files({3, 6, 2, 1, 8});
    support::TextureFolder pictures;
    const std::string script = writeCharacter(files, pictures);
    const auto sizeOf = [&files](const char* name)
    { return std::to_string(std::filesystem::file_size(files.getDirectory().file(name))); };
    const CommandResult text = runTW2({"info", script});
    EXPECT_EQ(text.status, 0) << text.errors;
    EXPECT_EQ(text.output, R"(skeleton: TW_ObjectAnimation, cross mode orthonormalized, shown up to 40 units
  3 meshes
    0 Bone0: 3 vertices, 1 triangles in 1 primitives
      1 Bone1: 3 vertices, 1 triangles in 1 primitives
        2 Bone2: 3 vertices, 1 triangles in 1 primitives
  2 animations
    0 animation0 animation0.tw: 8 frames at 10 per second, 0.8 s, looping to frame 0 every 0.7 s, 3 tracks, 12 keys, )" +
                               sizeOf("animation0.tw") + R"( bytes
      0.350 s: right
      0.700 s: left
    3 blink blink.tw: 11 frames at 30 per second, 0.367 s, once, 2 tracks, 7 keys, )" +
                               sizeOf("blink.tw") + R"( bytes
skin: TW_VertexAnimation on skeleton, cross mode normalized
  1 meshes
    0 body: 12 vertices, 4 triangles in 2 primitives
  6 materials
    material0: general, texture coat
    material1: gloss, texture coat, texture shine
    bark: textured, texture coat
    leaf: transparent, texture coat
    glass: environment, texture coat, texture sky
    skin: specular, texture coat, texture wet
  skin: 12 vertices with 24 influences of 3 bones
)");
    const CommandResult json = runTW2({"info", script, "--json"});
    EXPECT_EQ(json.status, 0) << json.errors;
    EXPECT_EQ(
        std::regex_replace(json.output, std::regex("\n *"), ""),
        R"({"script": ")" + script +
            R"(","objects": [{"block": "skeleton","kind": "TW_ObjectAnimation",)"
            R"("crossMode": "orthonormalized","distance": 40,"meshes": [)"
            R"({"name": "Bone0","parent": -1,"primitives": 1,"vertices": 3,"triangles": 1},)"
            R"({"name": "Bone1","parent": 0,"primitives": 1,"vertices": 3,"triangles": 1},)"
            R"({"name": "Bone2","parent": 1,"primitives": 1,"vertices": 3,"triangles": 1}],)"
            R"("materials": [],"animations": [{"index": 0,"name": "animation0","file": "animation0.tw","frames": 8,)"
            R"("framesPerSecond": 10,"seconds": 0.800000012,"looping": true,"loopToFrame": 0,"period": 0.699999988,)"
            R"("events": [{"time": 0.34999999403953552,"name": "right"},{"time": 0.69999998807907104,"name": "left"}],)"
            R"("tracks": 3,"transformKeys": 12,"visibilityKeys": 0,"bytes": )" +
            sizeOf("animation0.tw") +
            R"(},{"index": 3,"name": "blink","file": "blink.tw","frames": 11,"framesPerSecond": 30,)"
            R"("seconds": 0.366666675,"looping": false,"loopToFrame": 11,"period": 0.333333343,"events": [],)"
            R"("tracks": 2,"transformKeys": 4,"visibilityKeys": 3,"bytes": )" +
            sizeOf("blink.tw") +
            R"(}]},{"block": "skin","kind": "TW_VertexAnimation","crossMode": "normalized","distance": 0,)"
            R"("meshes": [{"name": "body","parent": -1,"primitives": 2,"vertices": 12,"triangles": 4}],"materials": [)"
            R"({"name": "material0","setUp": "general","textures": ["coat"]},)"
            R"({"name": "material1","setUp": "gloss","textures": ["coat","shine"]},)"
            R"({"name": "bark","setUp": "textured","textures": ["coat"]},)"
            R"({"name": "leaf","setUp": "transparent","textures": ["coat"]},)"
            R"({"name": "glass","setUp": "environment","textures": ["coat","sky"]},)"
            R"({"name": "skin","setUp": "specular","textures": ["coat","wet"]}],)"
            R"("skin": {"skeleton": "skeleton","vertices": 12,"influences": 24,"bones": 3},"animations": []}]})");
}
