#pragma once

#include <string>

namespace TW2::viewer
{
class Viewer;

/// What the page's controls are made of, as JSON: the object and everything to choose from. Changes only when something
/// else is looked at.
[[nodiscard]] std::string describeObject(const Viewer& viewer);

/// What the controls show, as JSON: clock, weights, what is shown, the picked bone, costs. Changes with every picture.
[[nodiscard]] std::string describeState(const Viewer& viewer);

/// How the picked bone moves in the animation that plays, as JSON: six lists of values, by frames (see KeyCurves), and
/// the frames of the keys. Empty lists when it does not move.
[[nodiscard]] std::string describeCurves(Viewer& viewer);

/// Every command with its key, as JSON: what the page's help lists.
[[nodiscard]] std::string describeCommands();
}  // namespace TW2::viewer
