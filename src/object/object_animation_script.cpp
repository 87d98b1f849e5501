#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>

#include <platform/runtime/file.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <iterator>

namespace TW2
{
namespace
{
constexpr int unlimited = -1;
// What stands inside an object's block, and inside one that only adds animations.
const S_Script::Blocks s_objectBlocks[] = {{"geometry", 1, 1}, {"animation", 0, unlimited}, {nullptr, 0, 0}};
const S_Script::Blocks s_animationBlocks[] = {{"animation", 0, unlimited}, {nullptr, 0, 0}};
const S_Script::Blocks s_eventBlocks[] = {{"event", 0, unlimited}, {nullptr, 0, 0}};
}  // namespace

S_Script& requireScript(S_Script* script)
{
    if (!script)
    {
        throw TW_Exception_InvalidScriptParameter("<script not available>", "no script is given");
    }
    return *script;
}

void requireObject(bool isThere)
{
    if (!isThere)
    {
        throw TW_Exception_InvalidGeometry("An object was destructed by a callback of its own load");
    }
}

void findFile(const S_Script& script, const char* block, unsigned int occurrence, const char* key, S_String& fileName)
{
    if (fileName.empty() || File.exists(fileName.c_str()))
    {
        return;
    }
    const bool absolute = File.isAbsolute(fileName);
    S_String beside = absolute ? S_String() : script.getFolder() + fileName;
    if (!absolute && File.exists(beside.c_str()))
    {
        fileName.swap(beside);
        return;
    }
    const S_String places = absolute
                                ? S_String("there is no such file")
                                : S_STR("is neither in the current directory \"%s\" nor beside the script in \"%s\"",
                                        File.getCurrentDirectory().c_str(), script.getFolder())
                                      .str();
    throw S_FileException(fileName.c_str(),
                          S_STR("%s; line %u of \"%s\" asks for it (key \"%s\")", places.c_str(),
                                script.getKeyLine(block, occurrence, key), script.getScriptName(), key));
}

GeometryParameters parseGeometry(const S_Script& script)
{
    GeometryParameters p;
    const S_Script::Variables keys[] = {{"exportdata", S_Script::t_string, &p.m_strExportData, nullptr},
                                        {"skindata", S_Script::t_string, &p.m_strSkinData, ""},
                                        {"crossmode", S_Script::t_string, &p.m_strCrossMode, "normalized"},
                                        {"distance", S_Script::t_float, &p.m_fDistance, "0.0"},
                                        {"enableBoundingBox", S_Script::t_int, &p.m_iEnableBoundingBox, "1"},
                                        {"boundingBoxMin", S_Script::t_float3, &p.m_vBoundingBoxMin, "(-1,-1,-1)"},
                                        {"boundingBoxMax", S_Script::t_float3, &p.m_vBoundingBoxMax, "(-1,-1,-1)"},
                                        {"enableBoundingSphere", S_Script::t_int, &p.m_iEnableBoundingSphere, "1"},
                                        {"boundingSphereRadius", S_Script::t_float, &p.m_fBoundingSphereRadius, "-1"},
                                        {nullptr, S_Script::t_string, nullptr, nullptr}};
    script.parse(keys, "geometry", 0, true);
    return p;
}

AnimationParameters parseAnimation(S_Script& script, unsigned int occurrence)
{
    AnimationParameters p;
    const S_Script::Variables keys[] = {{"index", S_Script::t_int, &p.m_iIndex, nullptr},
                                        {"filename", S_Script::t_string, &p.m_strFileName, nullptr},
                                        {"name", S_Script::t_string, &p.m_strName, ""},
                                        {"rootmotion", S_Script::t_string, &p.m_strRootMotion, ""},
                                        {nullptr, S_Script::t_string, nullptr, nullptr}};
    script.parse(keys, "animation", occurrence, true, s_eventBlocks);

    const S_ScriptLockGuard guard(script);
    script.lock("animation", occurrence);
    for (unsigned int i = 0; i < script.count("event"); ++i)
    {
        AnimationParameters::Event event;
        const S_Script::Variables eventKeys[] = {{"time", S_Script::t_float, &event.m_fTime, nullptr},
                                                 {"name", S_Script::t_string, &event.m_strName, nullptr},
                                                 {nullptr, S_Script::t_string, nullptr, nullptr}};
        script.parse(eventKeys, "event", i, true);
        p.m_vecEvents.push_back(std::move(event));
    }
    return p;
}

InterpolationMode parseCrossMode(const S_Script& script, const S_String& crossMode)
{
    constexpr const char* words[] = {"linear", "normalized", "orthonormalized"};  // by the numbers of the modes
    const auto* const found = std::find(std::begin(words), std::end(words), crossMode);
    if (found == std::end(words))
    {
        throw TW_Exception_InvalidScriptParameter(
            script.staticNesting(),
            "\"CrossMode\" can only take values \"linear\", \"normalized\" and \"orthonormalized\"!");
    }
    return static_cast<InterpolationMode>(found - std::begin(words));
}

S_String describeBlock(const S_Script& script, const char* blockName)
{
    return S_STR("%s, %s", script.staticNesting(), blockName).str();
}

S_String describeBlock(const S_Script& script, int blockIndex)
{
    return describeBlock(script, script.getBlockName(static_cast<unsigned int>(blockIndex)));
}

void lockBlock(S_Script& script, const char* blockName, BlockKind kind)
{
    const bool isObject = kind == BlockKind::Object;
    const S_Script::Blocks blocks[] = {{blockName, isObject ? 1 : 0, isObject ? 1 : unlimited}, {nullptr, 0, 0}};
    script.blockCheck(blocks, false);
    script.lock(blockName, 0);
    script.blockCheck(isObject ? s_objectBlocks : s_animationBlocks, true);
}

void lockBlock(S_Script& script, int blockIndex, BlockKind kind)
{
    script.lock(static_cast<unsigned int>(blockIndex));
    script.blockCheck(kind == BlockKind::Object ? s_objectBlocks : s_animationBlocks, true);
}
}  // namespace TW2
