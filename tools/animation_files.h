#pragma once

#include <cstddef>
#include <string>

namespace tools
{
/// What an animation file holds, read without building anything from it.
struct AnimationFileFacts
{
    std::size_t bytes = 0;   ///< of the file
    std::size_t tracks = 0;  ///< keyframe animations
    std::size_t transformKeys = 0;
    std::size_t visibilityKeys = 0;
    bool looping = false;  ///< any track loops
};

/// Walks an animation file. Throws what opening and reading it throws.
[[nodiscard]] AnimationFileFacts readAnimationFile(const std::string& file);
}  // namespace tools
