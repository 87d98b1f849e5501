#include "tests/support/picture_files.h"

#include <cstdint>
#include <cstdlib>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace support
{
namespace
{
using Bytes = std::vector<unsigned char>;

void append(void* bytes, void* data, int size)
{
    const auto* begin = static_cast<const unsigned char*>(data);
    static_cast<Bytes*>(bytes)->insert(static_cast<Bytes*>(bytes)->end(), begin, begin + size);
}

void appendBigEndian(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
    {
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
}

void appendPNGChunk(Bytes& bytes, const char* type, const Bytes& data)
{
    appendBigEndian(bytes, static_cast<std::uint32_t>(data.size()));
    Bytes checked(type, type + 4);
    checked.insert(checked.end(), data.begin(), data.end());
    bytes.insert(bytes.end(), checked.begin(), checked.end());
    appendBigEndian(bytes, stbiw__crc32(checked.data(), static_cast<int>(checked.size())));
}
}  // namespace

G_Image makePlainPicture(unsigned int width, unsigned int height, const Pixel& pixel)
{
    G_Image image(width, height);
    for (std::size_t byte = 0; byte < image.getSize(); ++byte)
    {
        image.accessPixels()[byte] = pixel[byte % pixel.size()];
    }
    return image;
}

G_Image makeVariedPicture(unsigned int width, unsigned int height)
{
    G_Image image(width, height);
    for (unsigned int y = 0; y < height; ++y)
    {
        for (unsigned int x = 0; x < width; ++x)
        {
            unsigned char* pixel = image.accessPixel(x, y);
            pixel[0] = static_cast<unsigned char>(x * 16);
            pixel[1] = static_cast<unsigned char>(y * 16);
            pixel[2] = static_cast<unsigned char>((x ^ y) * 16);
            pixel[3] = static_cast<unsigned char>(255 - x * 7 - y);
        }
    }
    return image;
}

std::vector<unsigned char> encodePicture(const G_Image& image, PictureFormat format)
{
    constexpr int quality = 95;
    const int width = static_cast<int>(image.getWidth());
    const int height = static_cast<int>(image.getHeight());
    const void* pixels = image.getPixels();
    Bytes bytes;
    switch (format)
    {
        case PictureFormat::PNG:
            stbi_write_png_to_func(append, &bytes, width, height, 4, pixels, width * 4);
            break;
        case PictureFormat::JPEG:
            stbi_write_jpg_to_func(append, &bytes, width, height, 4, pixels, quality);
            break;
        case PictureFormat::TGA:
        case PictureFormat::CompressedTGA:
            stbi_write_tga_with_rle = format == PictureFormat::CompressedTGA;
            stbi_write_tga_to_func(append, &bytes, width, height, 4, pixels);
            break;
        case PictureFormat::BMP:
        {
            Bytes opaque;
            for (std::size_t byte = 0; byte < image.getSize(); ++byte)
            {
                if (byte % 4 != 3)
                {
                    opaque.push_back(image.getPixels()[byte]);
                }
            }
            stbi_write_bmp_to_func(append, &bytes, width, height, 3, opaque.data());
            break;
        }
    }
    return bytes;
}

namespace
{
/// A zlib stream of 126,000 bytes of 0, as short as there can be: code tables of its own, which give a repetition of
/// 258 bytes at distance 1 two bits of 0, then 96 single bytes, 488 repetitions, the end and the checksum.
Bytes packZeros()
{
    Bytes packed{0x78, 0xDA, 0xED, 0xC0, 0x81, 0, 0, 0, 0, 0x80, 0xA0, 0xFD, 0xA9, 0x17, 0xA9};
    packed.insert(packed.end(), 23, 0xAA);
    packed.push_back(0x2A);
    packed.insert(packed.end(), 121, 0);
    packed.insert(packed.end(), {0x80, 0x01, 0xEC, 0x3F, 0x00, 0x01});
    return packed;
}
}  // namespace

std::vector<unsigned char> makeHollowPNG(unsigned int width, unsigned int height, std::size_t raw, HollowPNG colors)
{
    Bytes zeros(raw);
    int size = 0;
    unsigned char* packed = stbi_zlib_compress(zeros.data(), static_cast<int>(raw), &size, 5);
    Bytes data(packed, packed + size);
    std::free(packed);
    Bytes kind{8, 6, 0, 0, 0};  // eight bits, red, green, blue and alpha
    if (colors == HollowPNG::BlackAndWhite)
    {
        data = packZeros();
        kind = {1, 0, 0, 0, 0};
    }
    else if (colors == HollowPNG::GreyAndAlpha)
    {
        kind = {8, 4, 0, 0, 0};
    }
    Bytes header;
    appendBigEndian(header, width);
    appendBigEndian(header, height);
    header.insert(header.end(), kind.begin(), kind.end());
    Bytes bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    appendPNGChunk(bytes, "IHDR", header);
    appendPNGChunk(bytes, "IDAT", data);
    appendPNGChunk(bytes, "IEND", {});
    return bytes;
}

std::vector<int> readGIFDelays(const std::string& bytes)
{
    // Each picture is announced by a control block; others of its kind belong to extensions.
    std::vector<int> delays;
    for (std::size_t at = bytes.find("\x21\xF9\x04"); at != std::string::npos && at + 7 < bytes.size();
         at = bytes.find("\x21\xF9\x04", at + 1))
    {
        if (bytes[at + 7] == 0)
        {
            delays.push_back(static_cast<unsigned char>(bytes[at + 4]) +
                             256 * static_cast<unsigned char>(bytes[at + 5]));
        }
    }
    return delays;
}

std::string writePicture(const TemporaryDirectory& directory, const std::string& name, const Pixel& pixel)
{
    return directory.write(name, makePlainPicture(2, 2, pixel).encodePNG());
}
}  // namespace support
