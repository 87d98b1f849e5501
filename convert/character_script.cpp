#include "convert/character_script.h"

#include "convert/character_geometry.h"
#include "convert/convert_exception.h"
#include "convert/precision.h"

#include <platform/runtime/file.h>
#include <platform/runtime/script.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace TW2::convert
{
namespace
{
struct Block
{
    unsigned int m_uiNumber = 0;
    std::string m_strName;
    std::string m_strGeometryFile;
    std::string m_strSkinFile;
    std::string m_strCrossMode;
    Box m_bounds;
};

std::string toText(const S_String& text)
{
    return {text.begin(), text.end()};
}

[[noreturn]] void fail(const std::string& file, const std::string& reason)
{
    throw ConvertException(file.c_str(), reason.c_str());
}

/// The blocks that describe objects.
std::vector<Block> readBlocks(S_Script& script)
{
    std::vector<Block> blocks;
    for (unsigned int i = 0; i < script.getBlockCount(); ++i)
    {
        Block block;
        block.m_uiNumber = i;
        block.m_strName = script.getBlockName(i);
        const S_ScriptLockGuard guard(script);
        script.lock(i);
        if (script.count("geometry") == 0)
        {
            continue;
        }
        S_String geometry;
        S_String skin;
        S_String crossMode;
        int boxed = 0;
        Vector3 low;
        Vector3 high;
        const S_Script::Variables keys[] = {{"exportdata", S_Script::t_string, &geometry, nullptr},
                                            {"skindata", S_Script::t_string, &skin, ""},
                                            {"crossmode", S_Script::t_string, &crossMode, "normalized"},
                                            {"enableBoundingBox", S_Script::t_int, &boxed, "1"},
                                            {"boundingBoxMin", S_Script::t_float3, &low, "(-1,-1,-1)"},
                                            {"boundingBoxMax", S_Script::t_float3, &high, "(-1,-1,-1)"},
                                            {nullptr, S_Script::t_string, nullptr, nullptr}};
        script.parse(keys, "geometry", 0, false);
        block.m_strGeometryFile = toText(geometry);
        block.m_strSkinFile = toText(skin);
        block.m_strCrossMode = toText(crossMode);
        if (boxed == 1 && !(low == high))
        {
            block.m_bounds.add(toDouble(low));
            block.m_bounds.add(toDouble(high));
        }
        blocks.push_back(std::move(block));
    }
    return blocks;
}

const Block& chooseBlock(const std::vector<Block>& blocks, const std::string& wanted, const std::string& file)
{
    std::vector<const Block*> fitting;
    std::string names;
    for (const Block& block : blocks)
    {
        if (block.m_strSkinFile.empty() && (wanted.empty() || block.m_strName == wanted))
        {
            fitting.push_back(&block);
        }
        names += (names.empty() ? "" : ", ") + block.m_strName;
    }
    if (fitting.size() == 1)
    {
        return *fitting.front();
    }
    fail(file, (fitting.empty() ? "no block " + (wanted.empty() ? "" : "\"" + wanted + "\" ") +
                                      "with geometry and without skin data"
                                : "several blocks could get the motion, one has to be chosen by its name") +
                   "; its blocks: " + (names.empty() ? "none" : names));
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

void readAnimations(S_Script& script, CharacterScript& character)
{
    const S_ScriptLockGuard guard(script);
    script.lock(character.m_uiBlock);
    for (unsigned int i = 0; i < script.count("animation"); ++i)
    {
        int index = 0;
        S_String file;
        S_String name;
        const S_Script::Variables keys[] = {{"index", S_Script::t_int, &index, nullptr},
                                            {"filename", S_Script::t_string, &file, nullptr},
                                            {"name", S_Script::t_string, &name, ""},
                                            {nullptr, S_Script::t_string, nullptr, nullptr}};
        script.parse(keys, "animation", i, false);
        character.m_iNextIndex = std::max(character.m_iNextIndex, index + 1);
        const std::string stem = std::filesystem::path(toText(file)).stem().string();
        character.m_setNames.insert(lower(name.empty() ? stem : toText(name)));
    }
}

/// "men/soldier" for "men/soldier_skeleton.tw". Files of a name that says where they are for themselves, and may not be
/// written there, are put beside the script.
std::string findPlace(std::string file)
{
    std::replace(file.begin(), file.end(), '\\', '/');
    std::filesystem::path path(file);
    std::string stem = path.stem().string();
    if (const std::string ending = "_skeleton"; stem.size() > ending.size() && stem.ends_with(ending))
    {
        stem.erase(stem.size() - ending.size());
    }
    return path.is_absolute() ? stem : (path.parent_path() / stem).string();
}

/// Walks through a script's text as the script's reader does, by what can hold a brace.
std::size_t findClosing(const std::string& text, unsigned int block)
{
    unsigned int depth = 0;
    unsigned int blocks = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text.compare(i, 2, "//") == 0)
        {
            i = std::min(text.find('\n', i), text.size());
        }
        else if (text.compare(i, 2, "/*") == 0)
        {
            i = text.find("*/", i + 2) + 1;
        }
        else if (text[i] == '"')
        {
            for (++i; i < text.size() && text[i] != '"'; ++i)
            {
                i += text.compare(i, 2, "\\\"") == 0 || text.compare(i, 2, "\\\\") == 0 ? 1 : 0;
            }
        }
        else if (text[i] == '{')
        {
            ++depth;
        }
        else if (text[i] == '}' && --depth == 0 && blocks++ == block)
        {
            return i;
        }
    }
    return text.size();
}
}  // namespace

CharacterScript readCharacter(const std::string& scriptFile, const std::string& block)
{
    CharacterScript character;
    character.m_strFile = scriptFile;
    const S_Bytes bytes = File.read(scriptFile);
    character.m_strText.assign(bytes.begin(), bytes.end());
    S_Script script = S_Script::fromText(scriptFile.c_str(), character.m_strText.c_str());
    const std::vector<Block> blocks = readBlocks(script);
    const Block& chosen = chooseBlock(blocks, block, scriptFile);
    character.m_uiBlock = chosen.m_uiNumber;
    character.m_strBlock = chosen.m_strName;
    character.m_strPlace = findPlace(chosen.m_strGeometryFile);
    character.m_strCrossMode = chosen.m_strCrossMode;
    readAnimations(script, character);

    const std::filesystem::path folder = std::filesystem::path(scriptFile).parent_path();
    const auto resolve = [&folder](std::string file)
    {
        std::replace(file.begin(), file.end(), '\\', '/');
        return (folder / file).string();
    };
    const auto skin = std::find_if(blocks.begin(), blocks.end(),
                                   [](const Block& candidate) { return !candidate.m_strSkinFile.empty(); });
    character.m_model.m_strName = std::filesystem::path(scriptFile).stem().string();
    readBones(character.m_model, resolve(chosen.m_strGeometryFile));
    character.m_bounds = chosen.m_bounds;
    if (skin != blocks.end())
    {
        readSkin(character.m_model, resolve(skin->m_strGeometryFile), resolve(skin->m_strSkinFile));
        character.m_bounds = skin->m_bounds;
    }
    return character;
}

std::string addAnimations(const CharacterScript& character, const std::vector<ScriptBlock::Animation>& animations)
{
    std::string text = character.m_strText;
    std::string lines;
    for (const ScriptBlock::Animation& animation : animations)
    {
        lines += makeAnimationBlock(animation);
    }
    std::size_t at = findClosing(text, character.m_uiBlock);
    const std::size_t line = text.find_last_not_of(" \t", at - 1);
    if (line != std::string::npos && text[line] == '\n')
    {
        at = line + 1;
    }
    else
    {
        lines = "\n" + lines;
    }
    text.insert(at, lines);
    (void)S_Script::fromText(character.m_strFile.c_str(), text.c_str());  // throws if that is no script any more
    return text;
}
}  // namespace TW2::convert
