#include "viewer/loaded_object.h"

#include "viewer/failure.h"
#include "viewer/find_by.h"
#include "viewer/text.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/material/material.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/file.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/material.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_map>

namespace TW2::viewer
{
namespace
{
/// The levels of detail of a script's skins, or of its other objects: those that have a distance.
void addLevels(std::vector<LoadedObject::Choice>& choices, const std::vector<ScriptEntry>& entries, bool skins)
{
    std::vector<const ScriptEntry*> levels;
    for (const ScriptEntry& entry : entries)
    {
        if (entry.skinFile.empty() != skins && entry.distance > 0.0F)
        {
            levels.push_back(&entry);
        }
    }
    if (levels.size() < 2)
    {
        return;
    }
    std::stable_sort(levels.begin(), levels.end(),
                     [](const ScriptEntry* a, const ScriptEntry* b) { return a->distance < b->distance; });
    LoadedObject::Choice choice{levels.front()->name + " (levels of detail)", {}};
    for (const ScriptEntry* level : levels)
    {
        choice.m_vecLevels.push_back(level->name);
    }
    choices.push_back(std::move(choice));
}

/// Skins before what else there is, levels of detail before single blocks.
std::vector<LoadedObject::Choice> listChoices(const std::vector<ScriptEntry>& entries)
{
    std::vector<LoadedObject::Choice> choices;
    const auto add = [&choices, &entries](bool skins)
    {
        for (const ScriptEntry& entry : entries)
        {
            if (entry.skinFile.empty() != skins)
            {
                choices.push_back({entry.name, {}});
            }
        }
    };
    for (const bool skins : {true, false})
    {
        addLevels(choices, entries, skins);
        add(skins);
    }
    return choices;
}

std::size_t findChoice(const std::vector<LoadedObject::Choice>& choices, const std::string& name,
                       const std::string& scriptFile)
{
    if (choices.empty())
    {
        throw Failure(scriptFile + ": the script has no blocks");
    }
    if (name.empty())
    {
        return 0;
    }
    const auto found = findBy(choices, name, &LoadedObject::Choice::m_strName);
    if (found == choices.end())
    {
        throw Failure(scriptFile + ": there is no object \"" + name + "\"");
    }
    return static_cast<std::size_t>(found - choices.begin());
}

Selection select(const LoadedObject::Choice& choice)
{
    return {choice.m_vecLevels.empty() ? choice.m_strName : std::string(), "", choice.m_vecLevels};
}
}  // namespace

LoadedObject::LoadedObject(const std::string& scriptFile, const std::string& choice)
    : m_strScriptFile(toText(File.getFullPathName(scriptFile))),
      m_vecChoices(listChoices(readScript(m_strScriptFile))),
      m_uiChoice(findChoice(m_vecChoices, choice, scriptFile)),
      m_script(m_strScriptFile, select(m_vecChoices[m_uiChoice]))
{
    collectBones();
    collectClips();
    collectTextureSets();
    collectFiles(readScript(m_strScriptFile));
}

void LoadedObject::collectBones()
{
    TW_ObjectAnimation& skeleton = getSkeleton();
    std::unordered_map<const P_BaseObject*, int> places;
    for (unsigned int i = 0; i < skeleton.getTotalMeshes(); ++i)
    {
        const P_VirtualObject* mesh = skeleton.getMesh(i);
        const auto parent = places.find(mesh->getParent());
        m_vecBones.push_back({toText(mesh->getName()), parent == places.end() ? -1 : parent->second});
        places.emplace(mesh, static_cast<int>(i));
    }
}

void LoadedObject::collectClips()
{
    const TW_ObjectAnimation& skeleton = getSkeleton();
    for (const ScriptEntry::Animation& animation : m_script.getAnimatedEntry().animations)
    {
        Clip clip;
        clip.m_iIndex = animation.index;
        clip.m_strName = animation.name;
        clip.m_uiFrames = skeleton.getAnimationFrames(animation.index);
        clip.m_fFrameRate = skeleton.getAnimationFPS(animation.index);
        clip.m_dPeriod = static_cast<double>(skeleton.getAnimationPeriod(animation.index));
        m_vecClips.push_back(std::move(clip));
    }
}

void LoadedObject::collectTextureSets()
{
    const TW_MaterialManager* materials = getDrawn().getMaterialManager();
    for (unsigned int i = 0; materials && i < materials->getTotalTextureAnimationSets(); ++i)
    {
        const S_String& name = materials->getTextureAnimationSetName(static_cast<int>(i));
        m_vecTextureSets.push_back({toText(name), materials->getTextureAnimationLength(name, 0)});
    }
}

void LoadedObject::collectFiles(const std::vector<ScriptEntry>& entries)
{
    const S_DirectoryGuard guard;
    File.changeDirectory(File.getPath(toEngineText(m_strScriptFile)));
    const auto add = [](std::vector<std::string>& list, const std::string& name)
    {
        const std::string file = toText(File.getFullPathName(name));
        if (!name.empty() && std::find(list.begin(), list.end(), file) == list.end())
        {
            list.push_back(file);
        }
    };
    m_vecFiles.push_back(m_strScriptFile);
    for (const ScriptEntry& entry : entries)
    {
        add(m_vecGeometryFiles, entry.geometryFile);
        add(m_vecFiles, entry.geometryFile);
        add(m_vecFiles, entry.skinFile);
        for (const ScriptEntry::Animation& animation : entry.animations)
        {
            add(m_vecFiles, animation.file);
        }
    }
}

std::vector<LoadedObject::Material> LoadedObject::getMaterials() const
{
    constexpr std::array<const char*, 4> setUps{"layers", "texture", "texture and environment", "transparent texture"};
    std::vector<Material> all;
    const TW_MaterialManager* materials = getDrawn().getMaterialManager();
    for (unsigned int i = 0; materials && i < materials->getMaterialCount(); ++i)
    {
        const TW_Material* material = materials->getMaterial(static_cast<int>(i));
        all.push_back(
            {toText(material->getName()), setUps[static_cast<std::size_t>(material->getMaterial()->getSetUp())]});
    }
    return all;
}

int LoadedObject::getLevelCount() const
{
    return std::max(1, static_cast<int>(getChoice().m_vecLevels.size()));
}

void LoadedObject::setLevel(int level)
{
    if (level >= getLevelCount() || level < -1)
    {
        throw Failure("there are levels 0 to " + std::to_string(getLevelCount() - 1) + ", not " +
                      std::to_string(level));
    }
    P_LODObject* const levels = m_script.getLevels();
    if (!levels)
    {
        return;
    }
    if (m_vecRanges.empty())
    {
        for (int i = 0; i < levels->getLevelCount(); ++i)
        {
            m_vecRanges.push_back(levels->getRange(i));
        }
    }
    for (int i = 0; i < levels->getLevelCount(); ++i)
    {
        const float always = i < level ? -1.0F : std::numeric_limits<float>::max();
        levels->setLODObject(i, levels->getLODObject(i), level < 0 ? m_vecRanges[static_cast<std::size_t>(i)] : always);
    }
}

std::unique_ptr<TW_VirtualObject> LoadedObject::copy() const
{
    return m_script.copyObject();
}
}  // namespace TW2::viewer
