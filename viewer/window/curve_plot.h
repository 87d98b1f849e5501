#pragma once

namespace TW2::viewer
{
struct KeyCurves;

/// Draws where and how a bone is turned over an animation, its keys as dots, and a line at the present frame.
void drawCurves(const KeyCurves& curves, double frame);
}  // namespace TW2::viewer
