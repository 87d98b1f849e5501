#pragma once

#include "object/forwarding_build.h"

#include <tw2/lod/levels_of_detail.h>

#include <platform/runtime/allocator.h>
#include <platform/runtime/str.h>
#include <platform/scene/lod_object.h>

#include <cstddef>

class S_Script;

namespace TW2
{
/// The distances up to which the levels of `levelCount` blocks are shown: those given, or, without any, those of the
/// blocks' "geometry" blocks. Throws TW_Exception_InvalidScriptParameter, naming the script, unless it is there with at
/// least one level.
[[nodiscard]] S_Vector<float> findRanges(S_Script* script, int levelCount, const int* blockIndices,
                                         const float* distances);

template <typename Level>
template <typename Construct>
Level& TW_LevelsOfDetail<Level>::addLevel(float range, const Construct& construct)
{
    m_vecLevels.push_back(nullptr);
    Level& level = *(m_vecLevels.back() = new Level);
    construct(level);
    m_pEngineLODObject->setLODObject(static_cast<int>(m_vecLevels.size()) - 1, &level, range);
    return level;
}

template <typename Level>
template <typename CopyLevel>
void TW_LevelsOfDetail<Level>::buildCopy(const TW_LevelsOfDetail& source, const CopyLevel& copyLevel)
{
    if (!isToCopy(source))
    {
        return;
    }
    build(
        [&]
        {
            copyEngineFlags(source);
            setNameOfCopy(S_STR("%s (clone)", source.getName().c_str()).str(), source);
            createLevels(source.m_iLevelCount);
            for (int i = 0; i < source.m_iLevelCount; ++i)
            {
                addLevel(source.m_pEngineLODObject->getRange(i),
                         [&](Level& level) { copyLevel(level, *source.m_vecLevels[static_cast<std::size_t>(i)]); });
            }
        });
}
}  // namespace TW2
