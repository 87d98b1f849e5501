#pragma once

#include "viewer/commands.h"
#include "viewer/failure.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace TW2::viewer
{
class LoadedObject;
class Viewer;

/// What the words of a command mean. Each throws Failure that says what would have been right.

using Arguments = std::vector<std::string>;

[[nodiscard]] double toNumber(const std::string& text);
[[nodiscard]] int toWhole(const std::string& text);
/// One of several words, by its place.
[[nodiscard]] std::size_t choose(const std::string& word, std::span<const std::string_view> words);
/// "on", "off", or nothing, which turns what is into its opposite.
[[nodiscard]] bool toSwitch(const Arguments& arguments, std::size_t place, bool now);
[[nodiscard]] LoadedObject& needObject(Viewer& viewer);

/// The commands about the mixer, and about bones that reach.
[[nodiscard]] std::span<const Command> listMotionCommands() noexcept;
}  // namespace TW2::viewer
