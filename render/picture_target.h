#pragma once

#include "render/gl_handle.h"

#include <platform/image/image.h>

namespace TW2::render
{
/// Off-screen picture that is drawn into, antialiased, and read back.
class PictureTarget
{
public:
    /// `width` x `height` pixels with up to `samples` samples each (fewer when the driver has fewer). Throws
    /// RenderException when the driver cannot make it.
    PictureTarget(unsigned int width, unsigned int height, int samples = 8);

    /// Directs drawing here and sets the viewport.
    void bind() const;
    /// What was drawn, opaque; rows from top to bottom.
    [[nodiscard]] G_Image read() const;

    [[nodiscard]] unsigned int getWidth() const noexcept { return m_uiWidth; }
    [[nodiscard]] unsigned int getHeight() const noexcept { return m_uiHeight; }

private:
    unsigned int m_uiWidth;
    unsigned int m_uiHeight;
    GLFramebuffer m_drawn;
    GLRenderbuffer m_color;
    GLRenderbuffer m_depth;
    GLFramebuffer m_resolved;
    GLRenderbuffer m_resolvedColor;
};
}  // namespace TW2::render
