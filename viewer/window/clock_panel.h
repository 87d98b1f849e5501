#pragma once

namespace TW2::viewer
{
class Viewer;
struct Requests;

/// Time, play and pause, frame by frame, loop and speed.
void drawClock(Viewer& viewer, Requests& requests);
}  // namespace TW2::viewer
