#include "viewer/animated_script.h"

#include "viewer/failure.h"
#include "viewer/find_by.h"
#include "viewer/text.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/script_parameters.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/file.h>
#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

namespace TW2::viewer
{
namespace
{
ScriptEntry readEntry(S_Script& script, unsigned int index)
{
    ScriptEntry entry;
    entry.name = script.getBlockName(index);
    const S_ScriptLockGuard guard(script);
    script.lock(index);
    if (script.count("geometry") > 0)
    {
        const GeometryParameters geometry = parseGeometry(script);
        entry.geometryFile = toText(geometry.m_strExportData);
        entry.skinFile = toText(geometry.m_strSkinData);
        entry.crossMode = toText(geometry.m_strCrossMode);
        entry.distance = geometry.m_fDistance;
    }
    for (unsigned int i = 0; i < script.count("animation"); ++i)
    {
        const AnimationParameters animation = parseAnimation(script, i);
        entry.animations.push_back({animation.m_iIndex, toText(animation.m_strFileName), {}});
    }
    return entry;
}

std::string listNames(const std::vector<ScriptEntry>& entries)
{
    std::string names;
    for (const ScriptEntry& entry : entries)
    {
        names += (names.empty() ? "" : ", ") + entry.name;
    }
    return names.empty() ? "none" : names;
}

std::size_t findEntry(const std::vector<ScriptEntry>& entries, const std::string& name)
{
    const auto found = findBy(entries, name, &ScriptEntry::name);
    if (found == entries.end())
    {
        throw Failure("the script has no block \"" + name + "\"; its blocks are: " + listNames(entries));
    }
    return static_cast<std::size_t>(found - entries.begin());
}

bool isSkin(const ScriptEntry& entry)
{
    return !entry.skinFile.empty();
}

std::size_t findMain(const std::vector<ScriptEntry>& entries, const std::string& wanted)
{
    if (!wanted.empty())
    {
        return findEntry(entries, wanted);
    }
    if (entries.empty())
    {
        throw Failure("the script has no blocks");
    }
    const auto skin = std::find_if(entries.begin(), entries.end(), isSkin);
    return skin == entries.end() ? 0 : static_cast<std::size_t>(skin - entries.begin());
}

std::size_t findSkeleton(const std::vector<ScriptEntry>& entries, const std::string& wanted)
{
    if (!wanted.empty())
    {
        return findEntry(entries, wanted);
    }
    auto found = findBy(entries, "skeleton", &ScriptEntry::name);
    found = found == entries.end() ? std::find_if_not(entries.begin(), entries.end(), isSkin) : found;
    if (found == entries.end())
    {
        throw Failure("the script has a skin, but no skeleton for it: programs may take that from another script");
    }
    return static_cast<std::size_t>(found - entries.begin());
}

/// Names of the scripts in a folder, in order.
std::string listScripts(const std::filesystem::path& folder)
{
    std::set<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
    {
        if (entry.path().extension() == ".script")
        {
            names.insert(entry.path().filename().string());
        }
    }
    std::string text;
    for (const std::string& name : names)
    {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "no script" : text;
}
}  // namespace

bool isModelFile(const std::string& file)
{
    constexpr std::array<std::string_view, 14> endings{".glb", ".gltf", ".fbx",     ".dae", ".obj", ".x",   ".bvh",
                                                       ".3ds", ".ply",  ".md5mesh", ".smd", ".lwo", ".stl", ".blend"};
    const std::string name = toLower(file);
    return std::any_of(endings.begin(), endings.end(),
                       [&name](std::string_view ending) { return name.ends_with(ending); });
}

std::vector<ScriptEntry> readScript(const std::string& scriptFile)
{
    if (std::error_code error; std::filesystem::is_directory(scriptFile, error))
    {
        throw Failure(scriptFile + " is a folder, not a script; in it: " + listScripts(scriptFile));
    }
    if (isModelFile(scriptFile))
    {
        throw Failure(scriptFile + " is a model, not a script: \"tw2 convert " + scriptFile +
                      " -o FOLDER\" makes a script of it");
    }
    S_Script script(scriptFile.c_str());
    std::vector<ScriptEntry> entries;
    for (unsigned int i = 0; i < script.getBlockCount(); ++i)
    {
        entries.push_back(readEntry(script, i));
    }
    return entries;
}

AnimatedScript::AnimatedScript(const std::string& scriptFile, const Selection& selection)
{
    const std::vector<ScriptEntry> entries = readScript(scriptFile);
    const S_DirectoryGuard guard;
    const S_String fullName = File.getFullPathName(scriptFile);
    File.changeDirectory(File.getPath(fullName));
    build(toText(fullName), entries, selection);
}

AnimatedScript::~AnimatedScript() = default;

void AnimatedScript::build(const std::string& scriptFile, const std::vector<ScriptEntry>& entries,
                           const Selection& selection)
{
    std::vector<int> blocks;
    for (const std::string& level : selection.levels)
    {
        blocks.push_back(static_cast<int>(findEntry(entries, level)));
    }
    if (blocks.empty())
    {
        blocks.push_back(static_cast<int>(findMain(entries, selection.block)));
    }
    const ScriptEntry& first = entries[static_cast<std::size_t>(blocks.front())];
    const bool skinned = isSkin(first);
    const std::size_t animated =
        skinned ? findSkeleton(entries, selection.skeleton) : static_cast<std::size_t>(blocks.front());
    m_animated = entries[animated];

    S_Script script(scriptFile.c_str());
    const auto levelCount = static_cast<int>(blocks.size());
    if (skinned && levelCount > 1)
    {
        auto levels = std::make_unique<TW2::TW_VertexAnimationLODs>(&script, static_cast<int>(animated), levelCount,
                                                                    &script, blocks.data());
        m_skeleton = levels->getSkeleton();
        m_drawn = levels->getLODObject(0)->getSkin();
        m_object = std::move(levels);
    }
    else if (skinned)
    {
        auto character =
            std::make_unique<TW2::TW_VertexAnimation>(&script, static_cast<int>(animated), &script, blocks.front());
        m_skeleton = character->getSkeleton();
        m_drawn = character->getSkin();
        m_object = std::move(character);
    }
    else if (levelCount > 1)
    {
        auto levels = std::make_unique<TW2::TW_ObjectAnimationLODs>(&script, levelCount, blocks.data(), true);
        m_skeleton = m_drawn = levels->getLODObject(0);
        m_object = std::move(levels);
    }
    else
    {
        auto object = std::make_unique<TW2::TW_ObjectAnimation>(&script, blocks.front(), nullptr, true);
        m_skeleton = m_drawn = object.get();
        m_object = std::move(object);
    }
    for (ScriptEntry::Animation& animation : m_animated.animations)
    {
        animation.name = m_object->getAnimationName(animation.index);
    }
}

TW2::TW_ObjectAnimation& AnimatedScript::getDrawn() const noexcept
{
    if (const auto* skins = dynamic_cast<const TW2::TW_VertexAnimationLODs*>(m_object.get()))
    {
        const TW2::TW_VertexAnimation* used = skins->getUsedLODObject();
        return used ? *used->getSkin() : *m_drawn;
    }
    if (const auto* objects = dynamic_cast<const TW2::TW_ObjectAnimationLODs*>(m_object.get()))
    {
        TW2::TW_ObjectAnimation* used = objects->getUsedLODObject();
        return used ? *used : *m_drawn;
    }
    return *m_drawn;
}

P_LODObject* AnimatedScript::getLevels() const noexcept
{
    if (const auto* skins = dynamic_cast<const TW2::TW_VertexAnimationLODs*>(m_object.get()))
    {
        return skins->getEngineLODObject();
    }
    const auto* objects = dynamic_cast<const TW2::TW_ObjectAnimationLODs*>(m_object.get());
    return objects ? objects->getEngineLODObject() : nullptr;
}

std::unique_ptr<TW2::TW_VirtualObject> AnimatedScript::copyObject() const
{
    std::unique_ptr<TW2::TW_VirtualObject> copy;
    const auto copyAs = [this, &copy]<typename Kind>(const Kind*)
    {
        const auto* object = dynamic_cast<const Kind*>(m_object.get());
        if (object && !copy)
        {
            copy = std::make_unique<Kind>(*object);
        }
    };
    copyAs(static_cast<const TW2::TW_ObjectAnimation*>(nullptr));
    copyAs(static_cast<const TW2::TW_VertexAnimation*>(nullptr));
    copyAs(static_cast<const TW2::TW_ObjectAnimationLODs*>(nullptr));
    copyAs(static_cast<const TW2::TW_VertexAnimationLODs*>(nullptr));
    return copy;
}

int AnimatedScript::findAnimation(const std::string& text) const
{
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) == text.npos;
    std::string all;
    std::vector<int> fitting;
    std::vector<int> called;
    for (const ScriptEntry::Animation& animation : m_animated.animations)
    {
        all += "\n  " + std::to_string(animation.index) + " " + animation.name + " " + animation.file;
        if (isNumber ? std::to_string(animation.index) == text
                     : toLower(animation.name + "\n" + animation.file).find(toLower(text)) != std::string::npos)
        {
            fitting.push_back(animation.index);
        }
        if (!isNumber && toLower(animation.name) == toLower(text))
        {
            called.push_back(animation.index);
        }
    }
    if (called.size() == 1)
    {
        return called.front();
    }
    if (fitting.size() != 1)
    {
        throw Failure((fitting.empty() ? "no animation is called \"" : "several animations are called \"") + text +
                      "\"; there are:" + (all.empty() ? " none" : all));
    }
    return fitting.front();
}

int AnimatedScript::findBone(const std::string& name) const
{
    const std::string wanted = toLower(name);
    std::string like;
    for (unsigned int i = 0; i < m_skeleton->getTotalMeshes(); ++i)
    {
        const std::string bone = toText(m_skeleton->getMesh(i)->getName());
        if (toLower(bone) == wanted || std::to_string(i) == wanted)
        {
            return static_cast<int>(i);
        }
        // It is a part of the name, or is spelled much like it.
        if (toLower(bone).find(wanted) != std::string::npos || 3 * countChanges(wanted, toLower(bone)) <= wanted.size())
        {
            like += (like.empty() ? "" : ", ") + bone;
        }
    }
    throw Failure("there is no bone \"" + name + "\"" + (like.empty() ? std::string() : "; like it: " + like));
}

int AnimatedScript::chooseAnimation() const
{
    for (const ScriptEntry::Animation& animation : m_animated.animations)
    {
        if (m_skeleton->getAnimationFrames(animation.index) > 1)
        {
            return animation.index;
        }
    }
    return m_animated.animations.empty() ? -1 : m_animated.animations.front().index;
}
}  // namespace TW2::viewer
