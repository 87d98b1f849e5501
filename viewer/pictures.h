#pragma once

#include <platform/image/image.h>

#include <string>

namespace TW2::render
{
class SceneRenderer;
}

namespace TW2::viewer
{
class Viewer;

/// The present picture, off screen. Leaves the target that was bound bound.
[[nodiscard]] G_Image takePicture(Viewer& viewer, render::SceneRenderer& renderer, unsigned int width,
                                  unsigned int height);

/// Writes one loop of what is playing, repeating without a seam: an animated WebP when the file's name ends so, else a
/// GIF. The clock is afterwards where it was. Throws Failure when nothing moves, or what writing throws.
void writeLoop(Viewer& viewer, render::SceneRenderer& renderer, const std::string& file, unsigned int width,
               unsigned int height, double framesPerSecond);
}  // namespace TW2::viewer
