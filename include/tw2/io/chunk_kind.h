#pragma once

#include <tw2/export.h>

namespace TW2
{
/// What a top-level chunk of this id is, in words ("Mesh", "Point light animation"); "Unknown" for an id that never
/// stands at top level or that nobody knows.
[[nodiscard]] TW2_API const char* getChunkKind(unsigned int id) noexcept;
}  // namespace TW2
