#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

#include <cstddef>

/// Picture of four bytes per pixel: red, green, blue, alpha; rows from top to bottom.
///
/// Reads PNG, JPEG, TGA and BMP, writes PNG. Every failure is a G_ImageException that names the image (a file that
/// cannot be read is an S_FileException), and leaves nothing allocated. An image larger than `maximumPixels` is
/// rejected before memory is reserved for it, and so is a file that is cut off or, in a PNG, altered anywhere.
class TW2_PLATFORM_API G_Image : public S_Allocated
{
public:
    static constexpr unsigned int bytesPerPixel = 4;  ///< red, green, blue, alpha
    /// Larger pictures are refused.
    static constexpr std::size_t maximumPixels = std::size_t{8192} * 8192;

    /// @name Life
    /// @{

    /// No pixels.
    G_Image() noexcept = default;
    /// `width` x `height` pixels of opaque black (0, 0, 0, 255). Throws when a side is 0 or the image is too large.
    G_Image(unsigned int width, unsigned int height);
    /// Decodes a file; the name follows the path rules of S_File.
    explicit G_Image(const char* fileName);
    /// Decodes a file's content from memory; `name` stands in messages. Pictures of more than `pixelLimit` pixels are
    /// rejected.
    [[nodiscard]] static G_Image decode(const void* data, std::size_t size, const char* name,
                                        std::size_t pixelLimit = maximumPixels);

    /// What a picture's file says about it.
    struct Description
    {
        unsigned int m_uiWidth = 0;   ///< pixels
        unsigned int m_uiHeight = 0;  ///< pixels
        bool m_bAlpha = false;        ///< its pixels have an alpha, opaque or not
    };
    /// Reads a file's content as far as it goes without memory for the pixels, and throws what `decode` throws so far.
    [[nodiscard]] static Description inspect(const void* data, std::size_t size, const char* name);
    /// @}

    /// @name Pixels
    /// @{

    /// In pixels; 0 for an empty picture.
    [[nodiscard]] unsigned int getWidth() const noexcept { return m_uiWidth; }
    /// In pixels; 0 for an empty picture.
    [[nodiscard]] unsigned int getHeight() const noexcept { return m_uiHeight; }
    /// Whether there are no pixels.
    [[nodiscard]] bool isEmpty() const noexcept { return m_vecPixels.empty(); }
    /// Size of the pixels in bytes: width x height x 4.
    [[nodiscard]] std::size_t getSize() const noexcept { return m_vecPixels.size(); }
    /// The pixels; null for an empty image.
    [[nodiscard]] const unsigned char* getPixels() const noexcept { return m_vecPixels.data(); }
    [[nodiscard]] unsigned char* accessPixels() noexcept { return m_vecPixels.data(); }
    /// The four bytes of one pixel; `x` and `y` lie inside the image.
    [[nodiscard]] const unsigned char* getPixel(unsigned int x, unsigned int y) const noexcept
    {
        return m_vecPixels.data() + (std::size_t{y} * m_uiWidth + x) * bytesPerPixel;
    }
    [[nodiscard]] unsigned char* accessPixel(unsigned int x, unsigned int y) noexcept
    {
        return m_vecPixels.data() + (std::size_t{y} * m_uiWidth + x) * bytesPerPixel;
    }
    /// Whether every pixel has the same four bytes (true for an empty image).
    [[nodiscard]] bool isUniform() const noexcept;
    /// @}

    /// @name Writing
    /// @{

    /// The image as the content of a PNG file. Throws for an empty image.
    [[nodiscard]] S_Bytes encodePNG() const;
    /// Writes a PNG file; a reader sees the old file or the whole new one.
    void writePNG(const char* fileName) const;
    /// @}

private:
    unsigned int m_uiWidth = 0;
    unsigned int m_uiHeight = 0;
    S_Bytes m_vecPixels;
};
