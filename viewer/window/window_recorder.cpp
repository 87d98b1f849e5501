#include "viewer/window/window_recorder.h"

#include "render/animation_writer.h"
#include "viewer/text.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace TW2::viewer
{
namespace
{
G_Image readWindow(unsigned int width, unsigned int height)
{
    G_Image below(width, height);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, static_cast<GLsizei>(width), static_cast<GLsizei>(height), GL_RGBA, GL_UNSIGNED_BYTE,
                 below.accessPixels());
    // OpenGL counts rows from the bottom.
    G_Image picture(width, height);
    const std::size_t row = std::size_t{width} * G_Image::bytesPerPixel;
    for (std::size_t y = 0; y < height; ++y)
    {
        std::copy_n(below.accessPixels() + y * row, row, picture.accessPixels() + (height - 1 - y) * row);
    }
    for (std::size_t i = 3; i < picture.getSize(); i += G_Image::bytesPerPixel)
    {
        picture.accessPixels()[i] = 255;
    }
    return picture;
}
}  // namespace

WindowRecorder::WindowRecorder(std::string file, double secondsPerPicture)
    : m_strFile(std::move(file)), m_dSecondsPerPicture(secondsPerPicture)
{
}

void WindowRecorder::take(unsigned int width, unsigned int height, bool begun, bool last)
{
    const bool moving = toLower(m_strFile).ends_with(".gif");
    if (moving && begun)
    {
        m_vecPictures.push_back(readWindow(width, height));
    }
    if (m_strFile.empty() || !last)
    {
        return;
    }
    if (!moving)
    {
        readWindow(width, height).writePNG(m_strFile.c_str());
        return;
    }
    constexpr double usual = 20.0;
    const double rate = m_dSecondsPerPicture > 0.0 ? std::min(1.0 / m_dSecondsPerPicture, 50.0) : usual;
    const auto writer = render::makeGIFWriter(m_vecPictures, rate);
    for (const G_Image& picture : m_vecPictures)
    {
        writer->add(picture);
    }
    writer->write(m_strFile.c_str());
}
}  // namespace TW2::viewer
