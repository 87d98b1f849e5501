#include "fuzz/seeds/seeds.h"

#include <platform/image/image.h>

namespace
{
G_Image makePicture(unsigned int width, unsigned int height)
{
    G_Image image(width, height);
    for (std::size_t i = 0; i < image.getSize(); ++i)
    {
        image.accessPixels()[i] = static_cast<unsigned char>(i * 7);
    }
    return image;
}

// An uncompressed picture of blue, green, red values with this header.
std::string makeRawPicture(std::string header, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels * 3; ++i)
    {
        header += static_cast<char>(i * 11);
    }
    return header;
}

using namespace std::string_literals;

const fuzz::SeedSource s_pictures(
    "image",
    [](fuzz::SeedFolder& seeds)
    {
        seeds.add("picture.png", makePicture(9, 5).encodePNG());
        seeds.add("plain.png", G_Image(16, 16).encodePNG());
        seeds.add("picture.tga", makeRawPicture("\0\0\2\0\0\0\0\0\0\0\0\0\4\0\2\0\30\0"s, 8));
        seeds.add("runs.tga", "\0\0\12\0\0\0\0\0\0\0\0\0\4\0\2\0\30\0\205abc\1defghi"s);
        seeds.add("picture.bmp",
                  makeRawPicture(
                      "BM\116\0\0\0\0\0\0\0\66\0\0\0\50\0\0\0\4\0\0\0\2\0\0\0\1\0\30\0"s + std::string(24, '\0'), 8));
    });
}  // namespace
