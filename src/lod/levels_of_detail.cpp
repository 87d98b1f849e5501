#include "lod/level_building.h"
#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>

#include <algorithm>
#include <limits>
#include <string_view>

namespace TW2
{
S_Vector<float> findRanges(S_Script* script, int levelCount, const int* blockIndices, const float* distances)
{
    S_Script& checked = requireScript(script);
    if (levelCount < 1)
    {
        throw TW_Exception_InvalidScriptParameter(checked.staticNesting(),
                                                  S_STR("%d levels of detail; at least 1 is needed", levelCount));
    }
    if (!blockIndices)
    {
        throw TW_Exception_InvalidScriptParameter(checked.staticNesting(), "no blocks for the levels of detail");
    }
    if (distances)
    {
        return {distances, distances + levelCount};
    }
    S_Vector<float> ranges(static_cast<std::size_t>(levelCount));
    for (std::size_t i = 0; i < ranges.size(); ++i)
    {
        const S_ScriptLockGuard guard(checked);
        checked.lock(static_cast<unsigned int>(blockIndices[i]));
        const float distance = parseGeometry(checked).m_fDistance;
        ranges[i] = distance == 0.0F ? std::numeric_limits<float>::max() : distance;
    }
    return ranges;
}

template <typename Level>
void TW_LevelsOfDetail<Level>::createLevels(int levelCount)
{
    m_pEngineLODObject = new P_LODObject(levelCount);
}

template <typename Level>
void TW_LevelsOfDetail<Level>::complete()
{
    m_pEngineLODObject->addTo(this);
    m_iLevelCount = getLevelCount();
}

/// The levels go in their order, then the engine's object that shows them. All may be incomplete.
template <typename Level>
void TW_LevelsOfDetail<Level>::takeApart() noexcept
{
    for (std::size_t i = 0; i < m_vecLevels.size(); ++i)
    {
        const int level = static_cast<int>(i);
        if (m_pEngineLODObject && m_pEngineLODObject->getLODObject(level))
        {
            m_pEngineLODObject->removeLODObject(level);
        }
        delete m_vecLevels[i];
    }
    m_vecLevels.clear();
    delete m_pEngineLODObject;
    m_pEngineLODObject = nullptr;
    m_iLevelCount = 0;
}

template <typename Level>
void TW_LevelsOfDetail<Level>::calculateLOD()
{
    if (m_pEngineLODObject)
    {
        m_pEngineLODObject->calculateLOD();
    }
}

template <typename Level>
int TW_LevelsOfDetail<Level>::getLevelCount() const
{
    return m_pEngineLODObject ? m_pEngineLODObject->getLevelCount() : 0;
}

template <typename Level>
Level* TW_LevelsOfDetail<Level>::getLODObject(int level) const
{
    return m_pEngineLODObject ? findLevel(m_pEngineLODObject->getLODObject(level)) : nullptr;
}

template <typename Level>
Level* TW_LevelsOfDetail<Level>::getUsedLODObject() const
{
    return m_pEngineLODObject ? findLevel(m_pEngineLODObject->getUsedLODObject()) : nullptr;
}

template <typename Level>
Level* TW_LevelsOfDetail<Level>::getUsedOrLast() const
{
    Level* const used = getUsedLODObject();
    return used ? used : m_vecLevels.back();
}

/// What the engine shows as one of the levels, which it is, or as another object of their class, which a host has given
/// it; null for anything else.
template <typename Level>
Level* TW_LevelsOfDetail<Level>::findLevel(P_BaseObject* shown) const
{
    const auto found = std::find(m_vecLevels.begin(), m_vecLevels.end(), shown);
    if (found != m_vecLevels.end())
    {
        return *found;
    }
    const bool isOfTheirClass = shown && !m_vecLevels.empty() &&
                                std::string_view(shown->getObjectType()) == m_vecLevels.front()->getObjectType();
    return isOfTheirClass ? static_cast<Level*>(shown) : nullptr;
}

template <typename Level>
void TW_LevelsOfDetail<Level>::loadMaterials(const char* fileName)
{
    const LoadScope load(*this);
    for (Level* level : m_vecLevels)
    {
        level->loadMaterials(fileName);
    }
    load.requireObject();
}

template class TW2_TEMPLATE_API TW_LevelsOfDetail<TW_ObjectAnimation>;
template class TW2_TEMPLATE_API TW_LevelsOfDetail<TW_VertexAnimation>;
}  // namespace TW2
