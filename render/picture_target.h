#pragma once

#include <platform/image/image.h>

#include <memory>

namespace TW2::render
{
/// Off-screen picture that is drawn into, antialiased, and read back.
class PictureTarget
{
public:
    /// `width` x `height` pixels with up to `samples` samples each (fewer when the driver has fewer). Throws
    /// RenderException when the driver cannot make it.
    PictureTarget(unsigned int width, unsigned int height, int samples = 8);
    ~PictureTarget();
    PictureTarget(const PictureTarget&) = delete;
    PictureTarget& operator=(const PictureTarget&) = delete;

    /// Directs drawing here and sets the viewport.
    void bind() const;
    /// What was drawn; rows from top to bottom. Opaque, or, with `transparent`, as a transparent view draws it: with
    /// alpha, and colours that are not multiplied by it.
    [[nodiscard]] G_Image read(bool transparent = false) const;

    [[nodiscard]] unsigned int getWidth() const noexcept { return m_uiWidth; }    ///< in pixels
    [[nodiscard]] unsigned int getHeight() const noexcept { return m_uiHeight; }  ///< in pixels

private:
    unsigned int m_uiWidth;
    unsigned int m_uiHeight;
    struct Buffers;
    std::unique_ptr<Buffers> m_pBuffers;
};
}  // namespace TW2::render
