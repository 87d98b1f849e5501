#include "json/writer.h"
#include "tools/animation_files.h"
#include "tools/commands.h"
#include "viewer/animated_script.h"

#include <tw2/material/material.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/file.h>
#include <platform/runtime/str.h>
#include <platform/scene/material.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace
{
using TW2::TW_Material;
using TW2::TW_ObjectAnimation;

struct MeshFacts
{
    std::string name;
    int parent;  ///< mesh index; -1: the object itself, or nothing
    int primitives = 0;
    unsigned int vertices = 0;
    unsigned int triangles = 0;
};

struct MaterialFacts
{
    std::string name;
    std::string setUp;
    std::vector<std::string> textures;
};

struct EventFacts
{
    double time;  ///< seconds
    std::string name;
};

struct AnimationFacts
{
    int index;
    std::string name;
    std::string file;
    float period;
    unsigned int frames;
    float fps;
    float seconds;
    unsigned int loopToFrame;
    tools::AnimationFileFacts content;
    std::vector<EventFacts> events = {};
};

struct ObjectFacts
{
    std::string block;
    std::string kind;
    std::string crossMode;
    float distance;
    std::string skeleton = {};  ///< of a skin
    std::vector<MeshFacts> meshes = {};
    std::vector<MaterialFacts> materials = {};
    std::vector<AnimationFacts> animations = {};
    std::size_t skinVertices = 0;  ///< with influences
    std::size_t influences = 0;
    std::size_t bones = 0;  ///< that the skin data name
};

std::string toText(const S_String& text)
{
    return {text.begin(), text.end()};
}

const char* nameSetUp(const TW_Material& material)
{
    const P_Material& engine = *material.getMaterial();
    switch (engine.getSetUp())
    {
        case P_Material::SetUp::TextureTransparent:
            return "transparent";
        case P_Material::SetUp::Texture:
            return "textured";
        case P_Material::SetUp::TextureEnvironment:
            return "environment";
        case P_Material::SetUp::Layers:
            break;
    }
    if (!engine.getPixelShaderName().empty())
    {
        return "specular";
    }
    return material.getTextureAnimationFrames(TW_Material::TEXTURE_GLOSS) > 0 ? "gloss" : "general";
}

MaterialFacts describe(const TW_Material& material)
{
    MaterialFacts facts{toText(material.getName()), nameSetUp(material), {}};
    for (const TW_Material::TextureType type : {TW_Material::TEXTURE_DIFFUSE, TW_Material::TEXTURE_REFLECTION,
                                                TW_Material::TEXTURE_GLOSS, TW_Material::TEXTURE_SPECULAR})
    {
        if (material.getTextureAnimationFrames(type) > 0)
        {
            facts.textures.push_back(toText(material.getTextureName(type, 0)));
        }
    }
    return facts;
}

MeshFacts describe(const TW_ObjectAnimation& object, const P_VirtualObject& mesh)
{
    MeshFacts facts{toText(mesh.getName()),
                    object.getMeshIndex(dynamic_cast<const P_VirtualObject*>(mesh.getParent()))};
    for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
    {
        if (const P_TriangleMesh* geometry = mesh.getPrimitive(i))
        {
            ++facts.primitives;
            facts.vertices += geometry->getVertexBuffer().getUsedCount();
            facts.triangles += geometry->getIndexBuffer().getUsedCount();
        }
    }
    return facts;
}

void addAnimations(ObjectFacts& facts, const TW_ObjectAnimation& object, const TW2::viewer::ScriptEntry& entry)
{
    for (const TW2::viewer::ScriptEntry::Animation& animation : entry.animations)
    {
        AnimationFacts added{.index = animation.index,
                             .name = object.getAnimationName(animation.index),
                             .file = animation.file,
                             .period = object.getAnimationPeriod(animation.index),
                             .frames = object.getAnimationFrames(animation.index),
                             .fps = object.getAnimationFPS(animation.index),
                             .seconds = object.getAnimationLength(animation.index),
                             .loopToFrame = object.getAnimationLoopToFrame(animation.index),
                             .content = tools::readAnimationFile(animation.file)};
        for (const TW2::TW_AnimationEvent& event : object.getAnimationEvents(animation.index))
        {
            const auto fps = static_cast<double>(added.fps);
            added.events.push_back({fps > 0.0 ? event.m_dFrame / fps : 0.0, toText(event.m_strName)});
        }
        facts.animations.push_back(std::move(added));
    }
}

void addSkin(ObjectFacts& facts, const TW2::TW_VertexAnimation& character)
{
    const TW2::SkinChunk& skin = character.getSkinData()->getSkinChunk();
    facts.skinVertices = skin.vertexBoneCounts.size();
    facts.influences = skin.influenceBones.size();
    facts.bones = skin.boneNames.size();
}

ObjectFacts describe(const std::string& scriptFile, const TW2::viewer::ScriptEntry& entry)
{
    TW2::viewer::AnimatedScript script(scriptFile, {entry.name, "", {}});
    const S_DirectoryGuard guard;
    File.changeDirectory(File.getPath(File.getFullPathName(scriptFile)));
    ObjectFacts facts{entry.name, script.getObject().getObjectType(), entry.crossMode, entry.distance};
    const TW_ObjectAnimation& drawn = script.getDrawn();
    for (unsigned int i = 0; i < drawn.getTotalMeshes(); ++i)
    {
        facts.meshes.push_back(describe(drawn, *drawn.getMesh(i)));
    }
    const TW2::TW_MaterialManager& materials = *drawn.getMaterialManager();
    for (unsigned int i = 0; i < materials.getMaterialCount(); ++i)
    {
        facts.materials.push_back(describe(*materials.getMaterial(static_cast<int>(i))));
    }
    if (script.isSkinned())
    {
        facts.skeleton = script.getAnimatedEntry().name;
        addSkin(facts, static_cast<const TW2::TW_VertexAnimation&>(script.getObject()));
    }
    else
    {
        addAnimations(facts, drawn, entry);
    }
    return facts;
}

/// Name and depth of a mesh in its tree.
int getDepth(const std::vector<MeshFacts>& meshes, std::size_t mesh)
{
    int depth = 0;
    for (int parent = meshes[mesh].parent; parent >= 0; parent = meshes[static_cast<std::size_t>(parent)].parent)
    {
        ++depth;
    }
    return depth;
}

void printTree(const std::vector<MeshFacts>& meshes, int parent)
{
    for (std::size_t i = 0; i < meshes.size(); ++i)
    {
        if (meshes[i].parent != parent)
        {
            continue;
        }
        std::printf("    %*s%zu %s", 2 * getDepth(meshes, i), "", i, meshes[i].name.c_str());
        if (meshes[i].triangles > 0)
        {
            std::printf(": %u vertices, %u triangles in %d primitives", meshes[i].vertices, meshes[i].triangles,
                        meshes[i].primitives);
        }
        std::printf("\n");
        printTree(meshes, static_cast<int>(i));
    }
}

std::string describeCourse(const AnimationFacts& animation)
{
    if (!animation.content.looping)
    {
        return "once";
    }
    return S_STR("looping to frame %u every %.3g s", animation.loopToFrame, static_cast<double>(animation.period))
        .c_str();
}

void print(const ObjectFacts& facts)
{
    std::printf("%s: %s", facts.block.c_str(), facts.kind.c_str());
    if (!facts.skeleton.empty())
    {
        std::printf(" on %s", facts.skeleton.c_str());
    }
    std::printf(", cross mode %s", facts.crossMode.c_str());
    if (facts.distance > 0.0F)
    {
        std::printf(", shown up to %g units", static_cast<double>(facts.distance));
    }
    std::printf("\n  %zu meshes\n", facts.meshes.size());
    printTree(facts.meshes, -1);
    if (!facts.materials.empty())
    {
        std::printf("  %zu materials\n", facts.materials.size());
    }
    for (const MaterialFacts& material : facts.materials)
    {
        std::printf("    %s: %s", material.name.c_str(), material.setUp.c_str());
        for (const std::string& texture : material.textures)
        {
            std::printf(", texture %s", texture.c_str());
        }
        std::printf("\n");
    }
    if (facts.skinVertices > 0)
    {
        std::printf("  skin: %zu vertices with %zu influences of %zu bones\n", facts.skinVertices, facts.influences,
                    facts.bones);
    }
    if (!facts.animations.empty())
    {
        std::printf("  %zu animations\n", facts.animations.size());
    }
    for (const AnimationFacts& animation : facts.animations)
    {
        std::printf("    %d %s %s: %u frames at %g per second, %.3g s, %s, %zu tracks, %zu keys, %zu bytes\n",
                    animation.index, animation.name.c_str(), animation.file.c_str(), animation.frames,
                    static_cast<double>(animation.fps), static_cast<double>(animation.seconds),
                    describeCourse(animation).c_str(), animation.content.tracks,
                    animation.content.transformKeys + animation.content.visibilityKeys, animation.content.bytes);
        for (const EventFacts& event : animation.events)
        {
            std::printf("      %.3F s: %s\n", event.time, event.name.c_str());
        }
    }
}

void writeAnimation(TW2::json::Writer& json, const AnimationFacts& animation)
{
    json.member("index", animation.index);
    json.member("name", animation.name);
    json.member("file", animation.file);
    json.member("frames", animation.frames);
    json.member("framesPerSecond", animation.fps);
    json.member("seconds", animation.seconds);
    json.member("looping", animation.content.looping);
    json.member("loopToFrame", animation.loopToFrame);
    json.member("period", animation.period);
    json.objects("events", animation.events,
                 [&json](const EventFacts& event)
                 {
                     json.member("time", event.time);
                     json.member("name", event.name);
                 });
    json.member("tracks", animation.content.tracks);
    json.member("transformKeys", animation.content.transformKeys);
    json.member("visibilityKeys", animation.content.visibilityKeys);
    json.member("bytes", animation.content.bytes);
}

void write(TW2::json::Writer& json, const ObjectFacts& facts)
{
    json.member("block", facts.block);
    json.member("kind", facts.kind);
    json.member("crossMode", facts.crossMode);
    json.member("distance", facts.distance);
    json.objects("meshes", facts.meshes,
                 [&json](const MeshFacts& mesh)
                 {
                     json.member("name", mesh.name);
                     json.member("parent", mesh.parent);
                     json.member("primitives", mesh.primitives);
                     json.member("vertices", mesh.vertices);
                     json.member("triangles", mesh.triangles);
                 });
    json.objects("materials", facts.materials,
                 [&json](const MaterialFacts& material)
                 {
                     json.member("name", material.name);
                     json.member("setUp", material.setUp);
                     json.list("textures", material.textures);
                 });
    if (facts.skinVertices > 0)
    {
        json.key("skin");
        json.beginObject();
        json.member("skeleton", facts.skeleton);
        json.member("vertices", facts.skinVertices);
        json.member("influences", facts.influences);
        json.member("bones", facts.bones);
        json.endObject();
    }
    json.objects("animations", facts.animations,
                 [&json](const AnimationFacts& animation) { writeAnimation(json, animation); });
}

struct Arguments
{
    std::string script;
    bool json = false;
};

void run(const Arguments& arguments)
{
    std::vector<ObjectFacts> objects;
    for (const TW2::viewer::ScriptEntry& entry : TW2::viewer::readScript(arguments.script))
    {
        objects.push_back(describe(arguments.script, entry));
    }
    if (!arguments.json)
    {
        std::ranges::for_each(objects, print);
        return;
    }
    TW2::json::Writer json(std::cout);
    json.beginObject();
    json.member("script", arguments.script);
    json.objects("objects", objects, [&json](const ObjectFacts& object) { write(json, object); });
    json.endObject();
}

const tools::Command s_command("info", "Show what a script's objects are made of",
                               [](CLI::App& command)
                               {
                                   const auto arguments = std::make_shared<Arguments>();
                                   command.add_option("SCRIPT", arguments->script, "Script file")->required();
                                   command.add_flag("--json", arguments->json, "Print JSON");
                                   command.callback([arguments] { run(*arguments); });
                               });
}  // namespace
