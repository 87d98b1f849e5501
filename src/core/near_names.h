#pragma once

#include <platform/runtime/allocator.h>

#include <string_view>

namespace TW2
{
/// The names that are most like one that is not among them, the likest first, for messages: "\"Hand_L\", \"Hand_R\"".
/// Letter case does not count. Without one that is like it the first few.
[[nodiscard]] S_String listNearNames(std::string_view asked, const S_Vector<std::string_view>& names);
}  // namespace TW2
