#include <platform/image/image.h>
#include <platform/image/image_codec.h>
#include <platform/image/image_exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/str.h>

#include <cstring>

G_Image::G_Image(unsigned int width, unsigned int height) : m_uiWidth(width), m_uiHeight(height)
{
    if (width == 0 || height == 0 || width > maximumPixels / height)
    {
        throw G_ImageException("new image", S_STR("%u x %u pixels: a side is 0, or there are more than %zu", width,
                                                  height, maximumPixels));
    }
    m_vecPixels.assign(std::size_t{width} * height * bytesPerPixel, 0);
    for (std::size_t alpha = bytesPerPixel - 1; alpha < m_vecPixels.size(); alpha += bytesPerPixel)
    {
        m_vecPixels[alpha] = 255;
    }
}

G_Image::G_Image(const char* fileName)
{
    const auto content = File.read(fileName);
    *this = decode(content.data(), content.size(), fileName);
}

G_Image G_Image::decode(const void* data, std::size_t size, const char* name, std::size_t pixelLimit)
{
    G_Image image;
    image.m_vecPixels =
        decodeImage(static_cast<const unsigned char*>(data), size, name, pixelLimit, image.m_uiWidth, image.m_uiHeight);
    return image;
}

G_Image::Description G_Image::inspect(const void* data, std::size_t size, const char* name)
{
    Description description;
    inspectImage(static_cast<const unsigned char*>(data), size, name, maximumPixels, description.m_uiWidth,
                 description.m_uiHeight, description.m_bAlpha);
    return description;
}

bool G_Image::isUniform() const noexcept
{
    // Every pixel equals the one before it.
    return m_vecPixels.empty() ||
           std::memcmp(m_vecPixels.data(), m_vecPixels.data() + bytesPerPixel, m_vecPixels.size() - bytesPerPixel) == 0;
}

S_Bytes G_Image::encodePNG() const
{
    if (isEmpty())
    {
        throw G_ImageException("empty image", "there is nothing to encode");
    }
    return encodeImage(getPixels(), m_uiWidth, m_uiHeight);
}

void G_Image::writePNG(const char* fileName) const
{
    if (isEmpty())
    {
        throw G_ImageException(fileName, "an empty image cannot be written");
    }
    const S_Bytes content = encodePNG();
    File.write(fileName, content.data(), content.size());
}
