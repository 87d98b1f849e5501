#pragma once

#if __has_include(<nlohmann/json.hpp>)
#include <nlohmann/json.hpp>
#endif

#include <string_view>

namespace support
{
/// Whether a text is one JSON value and nothing else, as the reader that the converter takes for glTF files says.
/// Builds without the converter may not have it: there only the end is looked at.
struct JsonCheck
{
    static bool isValid(std::string_view text)
    {
#if __has_include(<nlohmann/json.hpp>)
        return nlohmann::json::accept(text.begin(), text.end());
#else
        return text.ends_with('\n');
#endif
    }
};
}  // namespace support
