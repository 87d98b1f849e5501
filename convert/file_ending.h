#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <string_view>

namespace TW2::convert
{
/// Whether a file name ends so (".fbx"), in whatever case.
[[nodiscard]] inline bool hasEnding(const std::string& fileName, std::string_view wanted)
{
    std::string ending = std::filesystem::path(fileName).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == wanted;
}
}  // namespace TW2::convert
