#pragma once

#include <platform/runtime/allocator.h>
#include <platform/scene/lod_object.h>

class S_Script;

namespace TW2
{
/// Throws TW_Exception_InvalidScriptParameter, naming the script, unless there is at least one level.
void checkLevelCount(const S_Script& script, int levelCount);

/// The distances up to which the levels of `levelCount` blocks are shown, from the blocks' "geometry" blocks.
[[nodiscard]] S_Vector<float> readDistances(S_Script& script, int levelCount, const int* blockIndices);

/// Deletes levels and the engine's object that shows them; the levels in their order. Both may be incomplete.
template <typename Level>
void deleteLevels(S_Vector<Level*>& levels, P_LODObject* engineObject) noexcept
{
    for (std::size_t i = 0; i < levels.size(); ++i)
    {
        const int level = static_cast<int>(i);
        if (engineObject && engineObject->getLODObject(level))
        {
            engineObject->removeLODObject(level);
        }
        delete levels[i];
    }
    levels.clear();
    delete engineObject;
}

/// Calls `call` on every level, in order; whether any call returned true.
template <typename Level, typename Call>
bool anyOf(const S_Vector<Level*>& levels, const Call& call)
{
    bool any = false;
    for (Level* level : levels)
    {
        any = call(*level) || any;
    }
    return any;
}
}  // namespace TW2
