#include "render/picture_target.h"

#include "render/gl_handle.h"
#include "render/render_exception.h"

#include <platform/runtime/str.h>

#include <algorithm>
#include <cstddef>

namespace TW2::render
{
namespace
{
constexpr unsigned int opaque = 255;

void attach(const GLRenderbuffer& buffer, GLenum place, GLenum format, int samples, unsigned int width,
            unsigned int height)
{
    glBindRenderbuffer(GL_RENDERBUFFER, buffer.get());
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, static_cast<GLsizei>(width),
                                     static_cast<GLsizei>(height));
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, place, GL_RENDERBUFFER, buffer.get());
}

void divideByAlpha(unsigned char* pixel)
{
    const unsigned int alpha = pixel[3];
    for (int channel = 0; channel < 3; ++channel)
    {
        pixel[channel] = static_cast<unsigned char>(std::min((pixel[channel] * opaque + alpha / 2) / alpha, opaque));
    }
}

void check(unsigned int width, unsigned int height)
{
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    {
        throw RenderException(S_STR("The driver cannot draw a picture of %u x %u pixels", width, height));
    }
}
}  // namespace

struct PictureTarget::Buffers
{
    GLFramebuffer m_drawn = GLFramebuffer::create();
    GLRenderbuffer m_color = GLRenderbuffer::create();
    GLRenderbuffer m_depth = GLRenderbuffer::create();
    GLFramebuffer m_resolved = GLFramebuffer::create();
    GLRenderbuffer m_resolvedColor = GLRenderbuffer::create();
};

PictureTarget::~PictureTarget() = default;

PictureTarget::PictureTarget(unsigned int width, unsigned int height, int samples)
    : m_uiWidth(width), m_uiHeight(height), m_pBuffers(std::make_unique<Buffers>())
{
    GLint largest = 0;
    GLint mostSamples = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
    glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
    if (width == 0 || height == 0 || std::max(width, height) > static_cast<unsigned int>(largest))
    {
        throw RenderException(
            S_STR("A picture of %u x %u pixels was asked for; each side is 1 to %d", width, height, largest));
    }
    const int used = std::clamp(samples, 0, mostSamples);
    glBindFramebuffer(GL_FRAMEBUFFER, m_pBuffers->m_drawn.get());
    attach(m_pBuffers->m_color, GL_COLOR_ATTACHMENT0, GL_RGBA8, used, width, height);
    attach(m_pBuffers->m_depth, GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT24, used, width, height);
    check(width, height);
    glBindFramebuffer(GL_FRAMEBUFFER, m_pBuffers->m_resolved.get());
    attach(m_pBuffers->m_resolvedColor, GL_COLOR_ATTACHMENT0, GL_RGBA8, 0, width, height);
    check(width, height);
}

void PictureTarget::bind() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_pBuffers->m_drawn.get());
    glViewport(0, 0, static_cast<GLsizei>(m_uiWidth), static_cast<GLsizei>(m_uiHeight));
}

G_Image PictureTarget::read(bool transparent) const
{
    const auto width = static_cast<GLint>(m_uiWidth);
    const auto height = static_cast<GLint>(m_uiHeight);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_pBuffers->m_drawn.get());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_pBuffers->m_resolved.get());
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_pBuffers->m_resolved.get());

    G_Image image(m_uiWidth, m_uiHeight);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image.accessPixels());
    bind();

    // OpenGL counts rows from the bottom.
    const std::size_t row = std::size_t{m_uiWidth} * G_Image::bytesPerPixel;
    unsigned char* pixels = image.accessPixels();
    for (unsigned int y = 0; y < m_uiHeight / 2; ++y)
    {
        std::swap_ranges(pixels + y * row, pixels + (y + 1) * row, pixels + (m_uiHeight - 1 - y) * row);
    }
    for (std::size_t i = 0; i < image.getSize(); i += G_Image::bytesPerPixel)
    {
        unsigned char* pixel = pixels + i;
        if (!transparent)
        {
            // What lies behind the picture is nobody's.
            pixel[3] = opaque;
        }
        else if (pixel[3] > 0 && pixel[3] < opaque)
        {
            divideByAlpha(pixel);
        }
    }
    return image;
}
}  // namespace TW2::render
