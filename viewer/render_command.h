#pragma once

#include <string>

namespace TW2::viewer
{
class Viewer;

/// The `tw2 render` command that draws the present picture with so many pixels; empty while nothing is loaded.
[[nodiscard]] std::string makeRenderCommand(const Viewer& viewer, unsigned int width, unsigned int height);
/// What is in the present picture that `tw2 render` does not draw, as words for a message; empty: nothing.
[[nodiscard]] std::string listWhatRenderLeavesOut(const Viewer& viewer);
}  // namespace TW2::viewer
