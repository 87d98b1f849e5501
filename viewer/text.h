#pragma once

#include <platform/runtime/allocator.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TW2::viewer
{
/// With small letters for the English capitals; other letters stay.
[[nodiscard]] inline std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// How many letters have to be added, left out or replaced to make one word of the other (Levenshtein, 1965).
[[nodiscard]] inline std::size_t countChanges(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i)
    {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j)
        {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
        }
    }
    return row[to.size()];
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
