#include "lod/levels.h"

#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>

#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

#include <cstddef>
#include <limits>

namespace TW2
{
S_Script& checkLevels(S_Script* script, int levelCount, const int* blockIndices)
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
    return checked;
}

S_Vector<float> readDistances(S_Script& script, int levelCount, const int* blockIndices)
{
    S_Vector<float> distances(static_cast<std::size_t>(levelCount));
    for (std::size_t i = 0; i < distances.size(); ++i)
    {
        const S_ScriptLockGuard guard(script);
        script.lock(static_cast<unsigned int>(blockIndices[i]));
        const float distance = parseGeometry(script).m_fDistance;
        distances[i] = distance == 0.0F ? std::numeric_limits<float>::max() : distance;
    }
    return distances;
}
}  // namespace TW2
