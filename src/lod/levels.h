#pragma once

#include <platform/runtime/allocator.h>
#include <platform/scene/lod_object.h>

#include <algorithm>
#include <string_view>

class S_Script;

namespace TW2
{
/// The script; throws TW_Exception_InvalidScriptParameter, naming it, unless it is there with at least one level.
S_Script& checkLevels(S_Script* script, int levelCount, const int* blockIndices);

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

/// What the engine shows as one of these levels, which it is, or as another object of their class, which a host has
/// given it; null for anything else.
template <typename Level>
Level* findLevel(const S_Vector<Level*>& levels, P_BaseObject* shown, std::string_view className)
{
    const auto found = std::find(levels.begin(), levels.end(), shown);
    if (found != levels.end())
    {
        return *found;
    }
    return shown && shown->getObjectType() == className ? static_cast<Level*>(shown) : nullptr;
}

/// The level in use; the last one when none is.
template <typename Object, typename Level>
Level* getUsedOrLast(const Object& object, const S_Vector<Level*>& levels)
{
    Level* const used = object.getUsedLODObject();
    return used ? used : levels.back();
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
