#pragma once

#include <tw2/core/exceptions.h>

namespace TW2
{
class TW_ObjectAnimation;

/// What to throw when no bone has the name; lists the bones whose names are most like it.
[[nodiscard]] TW_Exception_BoneNotFound makeBoneNotFound(const TW_ObjectAnimation& object, const char* name);
}  // namespace TW2
