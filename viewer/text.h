#pragma once

#include <platform/runtime/allocator.h>

#include <algorithm>
#include <string>

namespace TW2::viewer
{
/// With small letters for the English capitals; other letters stay.
[[nodiscard]] inline std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// @name Between the engine's strings and the standard library's
/// @{
[[nodiscard]] inline std::string toText(const S_String& text)
{
    return {text.begin(), text.end()};
}
[[nodiscard]] inline S_String toEngineText(const std::string& text)
{
    return {text.begin(), text.end()};
}
/// @}
}  // namespace TW2::viewer
