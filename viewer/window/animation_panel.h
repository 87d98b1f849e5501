#pragma once

namespace TW2::viewer
{
class Viewer;
struct Requests;

/// Which object and level is shown, its animations, how they are blended, and what a group of bones plays.
void drawAnimationPanel(Viewer& viewer, Requests& requests);
}  // namespace TW2::viewer
