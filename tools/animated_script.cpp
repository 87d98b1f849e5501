#include "tools/animated_script.h"

#include "tools/commands.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/file.h>
#include <platform/runtime/script.h>

#include <algorithm>
#include <cctype>

namespace tools
{
namespace
{
std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string toText(const S_String& text)
{
    return {text.begin(), text.end()};
}

ScriptEntry readEntry(S_Script& script, unsigned int index)
{
    ScriptEntry entry;
    entry.name = script.getBlockName(index);
    const S_ScriptLockGuard guard(script);
    script.lock(index);
    if (script.count("geometry") > 0)
    {
        S_String geometry;
        S_String skin;
        S_String crossMode;
        const S_Script::Variables keys[] = {{"exportdata", S_Script::t_string, &geometry, nullptr},
                                            {"skindata", S_Script::t_string, &skin, ""},
                                            {"crossmode", S_Script::t_string, &crossMode, "normalized"},
                                            {"distance", S_Script::t_float, &entry.distance, "0.0"},
                                            {nullptr, S_Script::t_string, nullptr, nullptr}};
        script.parse(keys, "geometry", 0, false);
        entry.geometryFile = toText(geometry);
        entry.skinFile = toText(skin);
        entry.crossMode = toText(crossMode);
    }
    for (unsigned int i = 0; i < script.count("animation"); ++i)
    {
        ScriptEntry::Animation animation;
        S_String file;
        const S_Script::Variables keys[] = {{"index", S_Script::t_int, &animation.index, nullptr},
                                            {"filename", S_Script::t_string, &file, nullptr},
                                            {nullptr, S_Script::t_string, nullptr, nullptr}};
        script.parse(keys, "animation", i, false);
        animation.file = toText(file);
        entry.animations.push_back(std::move(animation));
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
    const auto found = std::ranges::find(entries, name, &ScriptEntry::name);
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
    const auto skin = std::ranges::find_if(entries, isSkin);
    return skin == entries.end() ? 0 : static_cast<std::size_t>(skin - entries.begin());
}

std::size_t findSkeleton(const std::vector<ScriptEntry>& entries, const std::string& wanted)
{
    if (!wanted.empty())
    {
        return findEntry(entries, wanted);
    }
    auto found = std::ranges::find(entries, "skeleton", &ScriptEntry::name);
    found = found == entries.end() ? std::ranges::find_if_not(entries, isSkin) : found;
    if (found == entries.end())
    {
        throw Failure("the script has a skin, but no skeleton for it");
    }
    return static_cast<std::size_t>(found - entries.begin());
}
}  // namespace

std::vector<ScriptEntry> readScript(const std::string& scriptFile)
{
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
        auto levels = std::make_unique<TW2::TW_ObjectAnimationLODs>(&script, levelCount, blocks.data(), false);
        m_skeleton = m_drawn = levels->getLODObject(0);
        m_object = std::move(levels);
    }
    else
    {
        auto object = std::make_unique<TW2::TW_ObjectAnimation>(&script, blocks.front(), nullptr, false);
        m_skeleton = m_drawn = object.get();
        m_object = std::move(object);
    }
}

int AnimatedScript::findAnimation(const std::string& text) const
{
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) == text.npos;
    std::string all;
    std::vector<int> fitting;
    for (const ScriptEntry::Animation& animation : m_animated.animations)
    {
        all += "\n  " + std::to_string(animation.index) + " " + animation.file;
        if (isNumber ? std::to_string(animation.index) == text
                     : lower(animation.file).find(lower(text)) != std::string::npos)
        {
            fitting.push_back(animation.index);
        }
    }
    if (fitting.size() != 1)
    {
        throw Failure((fitting.empty() ? "no animation is called \"" : "several animations are called \"") + text +
                      "\"; there are:" + (all.empty() ? " none" : all));
    }
    return fitting.front();
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
}  // namespace tools
