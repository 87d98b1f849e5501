#include "fuzz/records.h"

#include <platform/image/image.h>
#include <platform/image/image_exception.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace
{
using fuzz::require;
using Bytes = std::vector<std::uint8_t>;

std::uint32_t readBigEndian(const std::uint8_t* bytes)
{
    return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
           static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

std::uint32_t checksum(const std::uint8_t* data, std::size_t size)
{
    std::uint32_t value = 0xFFFFFFFFU;
    for (std::size_t i = 0; i < size; ++i)
    {
        value ^= data[i];
        for (int bit = 0; bit < 8; ++bit)
        {
            value = (value & 1) != 0 ? 0xEDB88320U ^ value >> 1 : value >> 1;
        }
    }
    return ~value;
}

/// Makes the checksums of a PNG right, so that what the fuzzer changed gets past them.
void repairChecksums(Bytes& file)
{
    constexpr std::uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    constexpr std::size_t frame = 12;
    if (file.size() < sizeof signature || std::memcmp(file.data(), signature, sizeof signature) != 0)
    {
        return;
    }
    for (std::size_t at = sizeof signature; file.size() - at >= frame;)
    {
        const std::size_t length = readBigEndian(&file[at]);
        if (length > file.size() - at - frame)
        {
            return;
        }
        const std::uint32_t value = checksum(&file[at + 4], length + 4);
        for (std::size_t i = 0; i < 4; ++i)
        {
            file[at + 8 + length + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
        }
        at += frame + length;
    }
}

/// What was decoded is a whole picture, and comes back unchanged from a file of its own.
void checkPicture(const G_Image& image)
{
    constexpr std::size_t smallPicture = 64 * 64 * G_Image::bytesPerPixel;
    require(!image.isEmpty() && image.getSize() == std::size_t{image.getWidth()} * image.getHeight() * 4);
    if (image.getSize() > smallPicture)
    {
        return;
    }
    const S_Bytes file = image.encodePNG();
    const G_Image again = G_Image::decode(file.data(), file.size(), "written");
    require(again.getWidth() == image.getWidth() && again.getSize() == image.getSize());
    require(std::memcmp(again.getPixels(), image.getPixels(), image.getSize()) == 0);
}
}  // namespace

// Any bytes as a picture file: it is refused by name, or gives a whole picture; nothing stays allocated.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t pixelLimit = std::size_t{1} << 18;
    Bytes file(data, data + size);
    repairChecksums(file);
    const long long live = S_Memory::getLiveCount();
    try
    {
        checkPicture(G_Image::decode(file.data(), file.size(), "input", pixelLimit));
    }
    catch (const G_ImageException& exception)
    {
        require(std::strstr(exception.getErrorMessage(), "\"input\"") != nullptr);
    }
    require(S_Memory::getLiveCount() == live);
    return 0;
}
