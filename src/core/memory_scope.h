#pragma once

#include <platform/runtime/memory_scope.h>

namespace TW2
{
/// The scope under which the library allocates what it keeps.
class MemoryScope : S_MemoryScope
{
public:
    MemoryScope() : S_MemoryScope("TW Memory Container") {}
};
}  // namespace TW2
