#pragma once

#include <platform/image/image.h>

#include <memory>
#include <vector>

namespace TW2::render
{
/// Takes the pictures of an animation one by one and writes them as one file that repeats for ever. Only what is
/// encoded of them is kept.
class AnimationWriter
{
public:
    virtual ~AnimationWriter() = default;
    AnimationWriter(const AnimationWriter&) = delete;
    AnimationWriter& operator=(const AnimationWriter&) = delete;

    /// Appends a picture; all have the size of the first. Throws RenderException.
    virtual void add(const G_Image& picture) = 0;
    /// Writes the file; nothing can be added any more. The file appears as a whole or not at all. Throws
    /// RenderException when there is no picture, and S_FileException.
    virtual void write(const char* fileName) = 0;

protected:
    AnimationWriter() = default;
};

/// A GIF. All frames share one palette of 255 colours, chosen over `samples`: pictures that show what colours there
/// will be. Of each frame only the rectangle that changed is stored, with what did not change in it left transparent.
/// `framesPerSecond`: 1 to 50; frames last a whole number of hundredths of a second, spread so that the total is right.
/// What is transparent in a picture is not in the file. Throws RenderException for no samples or a rate out of range.
[[nodiscard]] std::unique_ptr<AnimationWriter> makeGIFWriter(const std::vector<G_Image>& samples,
                                                             double framesPerSecond);

/// An animated WebP: all colours, and the alpha of the pictures. `framesPerSecond`: 1 to 100; `quality`: 0 to 100.
/// Throws RenderException for values out of range.
[[nodiscard]] std::unique_ptr<AnimationWriter> makeWebPWriter(double framesPerSecond, float quality = 90.0F);

/// All of a GIF at once.
void writeGIF(const char* fileName, const std::vector<G_Image>& pictures, double framesPerSecond);
}  // namespace TW2::render
