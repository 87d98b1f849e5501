#pragma once

#include "tests/support/temporary_directory.h"

#include <platform/image/image.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace support
{
/// Small pictures, and files of them that another encoder than the platform's wrote.

enum class PictureFormat
{
    PNG,
    JPEG,
    TGA,
    CompressedTGA,
    BMP
};
inline constexpr std::array allPictureFormats = {PictureFormat::PNG, PictureFormat::JPEG, PictureFormat::TGA,
                                                 PictureFormat::CompressedTGA, PictureFormat::BMP};

/// Four bytes per pixel.
using Pixel = std::array<unsigned char, 4>;

/// A picture of one colour.
[[nodiscard]] G_Image makePlainPicture(unsigned int width, unsigned int height, const Pixel& pixel);
/// A picture whose pixels all differ, also in alpha; sides up to 16.
[[nodiscard]] G_Image makeVariedPicture(unsigned int width, unsigned int height);

/// The content of a file; JPEG and BMP do without the alpha.
[[nodiscard]] std::vector<unsigned char> encodePicture(const G_Image& image, PictureFormat format);
/// Colours of a hollow PNG: four bytes a pixel; one bit, and 126,000 bytes packed as tightly as can be,
/// whatever `raw` is; two bytes.
enum class HollowPNG
{
    Colors,
    BlackAndWhite,
    GreyAndAlpha
};
/// A PNG file whose header says `width` x `height` and whose pixel data are `raw` bytes of 0.
[[nodiscard]] std::vector<unsigned char> makeHollowPNG(unsigned int width, unsigned int height, std::size_t raw,
                                                       HollowPNG colors = HollowPNG::Colors);

/// How long each picture of a GIF stands, in hundredths of a second.
[[nodiscard]] std::vector<int> readGIFDelays(const std::string& bytes);

/// Writes a 2 x 2 PNG of one colour and returns its full name.
std::string writePicture(const TemporaryDirectory& directory, const std::string& name, const Pixel& pixel);
}  // namespace support
