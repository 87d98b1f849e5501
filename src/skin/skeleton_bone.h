#pragma once

#include <platform/runtime/allocator.h>

namespace TW2
{
class TW_ObjectAnimation;

/// The mesh of a skeleton that has a bone's name, in any letter case; -1 for none. The search begins at mesh `expected`
/// and goes round, so that bones which stand in the skeleton's order are found at the first look.
[[nodiscard]] int findSkeletonBone(const TW_ObjectAnimation& skeleton, const S_String& name, unsigned int expected);

/// Throws TW_Exception_InvalidGeometry: skin data name a bone that the skeleton lacks.
[[noreturn]] void throwUndefinedBone(const TW_ObjectAnimation& skeleton, const S_String& name);
}  // namespace TW2
