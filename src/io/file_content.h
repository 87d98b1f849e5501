#pragma once

#include <platform/runtime/allocator.h>

namespace TW2
{
/// What a file is that was taken for one of another kind, in words, as "skin data, which the key \"skindata\" names".
/// Empty for a file that holds a chunk `expected`, the id of one of the kinds that scripts name, and for one that holds
/// none of those kinds. Throws what opening the file throws.
[[nodiscard]] S_String describeMistakenFile(const S_String& fileName, unsigned int expected);
}  // namespace TW2
