#pragma once

#include <platform/image/image.h>

#include <vector>

namespace TW2::render
{
/// Writes pictures of one size as an animated GIF that repeats for ever.
///
/// All frames share one palette of 255 colours, chosen over all of them; of each frame only the rectangle that changed
/// is stored, with what did not change in it left transparent. `framesPerSecond`: 1 to 50; shown frames last a whole
/// number of hundredths of a second, spread so that the total is right. The file appears as a whole or not at all.
/// Throws RenderException for an empty list, pictures of different sizes or a rate out of range, and S_FileException.
void writeGIF(const char* fileName, const std::vector<G_Image>& pictures, double framesPerSecond);
}  // namespace TW2::render
