#include <platform/image/image_check.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr const char* s_cutOff = "the file is cut off";
constexpr const char* s_altered = "the file is damaged: a checksum is wrong";

struct Bytes
{
    const unsigned char* m_pData;
    std::size_t m_uSize;

    [[nodiscard]] bool holds(std::size_t offset, std::size_t count) const noexcept
    {
        return offset <= m_uSize && count <= m_uSize - offset;
    }
    [[nodiscard]] std::uint32_t little16(std::size_t offset) const noexcept
    {
        return m_pData[offset] | static_cast<std::uint32_t>(m_pData[offset + 1]) << 8;
    }
    [[nodiscard]] std::uint32_t little32(std::size_t offset) const noexcept
    {
        return little16(offset) | little16(offset + 2) << 16;
    }
    [[nodiscard]] std::uint32_t big16(std::size_t offset) const noexcept
    {
        return static_cast<std::uint32_t>(m_pData[offset]) << 8 | m_pData[offset + 1];
    }
    [[nodiscard]] std::uint32_t big32(std::size_t offset) const noexcept
    {
        return big16(offset) << 16 | big16(offset + 2);
    }
};

constexpr std::array<std::uint32_t, 256> makeChecksumTable() noexcept
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte)
    {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
        {
            value = (value & 1) != 0 ? 0xEDB88320u ^ value >> 1 : value >> 1;
        }
        table[byte] = value;
    }
    return table;
}

/// The checksum of PNG chunks (CRC-32).
std::uint32_t checksum(const unsigned char* data, std::size_t size) noexcept
{
    static constexpr std::array<std::uint32_t, 256> s_table = makeChecksumTable();
    std::uint32_t value = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < size; ++i)
    {
        value = s_table[(value ^ data[i]) & 0xFF] ^ value >> 8;
    }
    return ~value;
}

constexpr unsigned char s_pngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

const char* findPNGDamage(const Bytes& file, std::size_t width, std::size_t height) noexcept
{
    constexpr std::size_t frame = 12;                 // length, type and checksum around a chunk's data
    constexpr std::size_t largestCompression = 1032;  // of deflate
    const auto isType = [&](std::size_t offset, const char* type)
    { return std::memcmp(file.m_pData + offset + 4, type, 4) == 0; };
    std::size_t dataSize = 0;
    for (std::size_t offset = sizeof s_pngSignature; file.holds(offset, frame);)
    {
        const std::size_t length = file.big32(offset);
        if (!file.holds(offset, frame + length))
        {
            return s_cutOff;
        }
        if (checksum(file.m_pData + offset + 4, length + 4) != file.big32(offset + 8 + length))
        {
            return s_altered;
        }
        if (isType(offset, "IDAT"))
        {
            dataSize += length;
        }
        if (isType(offset, "IEND"))
        {
            // A pixel takes at least a bit, a row at least a byte and its filter's.
            const std::size_t leastRaw = height * (1 + (width + 7) / 8);
            return dataSize * largestCompression < leastRaw ? s_cutOff : nullptr;
        }
        offset += frame + length;
    }
    return s_cutOff;
}

/// A JPEG has no checksums, but data that stop early lack the end mark.
const char* findJPEGDamage(const Bytes& file) noexcept
{
    constexpr unsigned char startOfScan = 0xDA;
    constexpr unsigned char endOfImage = 0xD9;
    std::size_t offset = 2;
    while (file.holds(offset, 4))
    {
        if (file.m_pData[offset] != 0xFF)
        {
            ++offset;  // the decoder looks for the next mark too
            continue;
        }
        const unsigned char mark = file.m_pData[offset + 1];
        if (mark == startOfScan)
        {
            for (; file.holds(offset, 2); ++offset)
            {
                if (file.m_pData[offset] == 0xFF && file.m_pData[offset + 1] == endOfImage)
                {
                    return nullptr;
                }
            }
            return s_cutOff;
        }
        const bool standsAlone = mark == 0xFF || mark == 0x01 || (mark >= 0xD0 && mark <= 0xD7);
        offset += mark == 0xFF ? 1 : standsAlone ? 2 : 2 + file.big16(offset + 2);
    }
    return s_cutOff;
}

const char* findBMPDamage(const Bytes& file) noexcept
{
    constexpr std::size_t smallHeader = 12;
    if (!file.holds(0, 30))
    {
        return s_cutOff;
    }
    const bool isSmall = file.little32(14) == smallHeader;
    const std::size_t width = isSmall ? file.little16(18) : file.little32(18);
    const auto signedHeight = static_cast<std::int32_t>(file.little32(22));
    const std::size_t height = isSmall ? file.little16(20) : static_cast<std::size_t>(std::llabs(signedHeight));
    const std::size_t bits = isSmall ? file.little16(24) : file.little16(28);
    if (width == 0 || height == 0)
    {
        return nullptr;
    }
    const std::size_t rowSize = (width * bits + 31) / 32 * 4;
    const std::size_t lastRow = (width * bits + 7) / 8;  // some writers leave out its padding
    return file.holds(file.little32(10), rowSize * (height - 1) + lastRow) ? nullptr : s_cutOff;
}

/// Where the pixels of a TGA whose runs are compressed end; past the file's size when it is cut off.
std::size_t findEndOfRuns(const Bytes& file, std::size_t offset, std::size_t pixels, std::size_t pixelSize) noexcept
{
    while (pixels > 0 && offset < file.m_uSize)
    {
        const std::size_t count = (file.m_pData[offset] & 127u) + 1u;
        const bool isRun = (file.m_pData[offset] & 128u) != 0;
        offset += 1 + (isRun ? pixelSize : count * pixelSize);
        pixels -= count < pixels ? count : pixels;
    }
    return pixels > 0 ? file.m_uSize + 1 : offset;
}

const char* findTGADamage(const Bytes& file, std::size_t width, std::size_t height) noexcept
{
    constexpr std::size_t headerSize = 18;
    constexpr unsigned char compressedBit = 8;
    if (!file.holds(0, headerSize))
    {
        return s_cutOff;
    }
    const std::size_t paletteSize = file.m_pData[1] != 0 ? file.little16(5) * ((file.m_pData[7] + 7u) / 8u) : 0;
    const std::size_t pixelSize = (file.m_pData[16] + 7u) / 8u;
    const std::size_t begin = headerSize + file.m_pData[0] + paletteSize;
    const std::size_t end = (file.m_pData[2] & compressedBit) != 0
                                ? findEndOfRuns(file, begin, width * height, pixelSize)
                                : begin + width * height * pixelSize;
    return end <= file.m_uSize ? nullptr : s_cutOff;
}
}  // namespace

const char* findImageDamage(const unsigned char* data, std::size_t size, std::size_t width, std::size_t height) noexcept
{
    const Bytes file{data, size};
    if (size >= sizeof s_pngSignature && std::memcmp(data, s_pngSignature, sizeof s_pngSignature) == 0)
    {
        return findPNGDamage(file, width, height);
    }
    if (size >= 2 && data[0] == 0xFF && data[1] == 0xD8)
    {
        return findJPEGDamage(file);
    }
    if (size >= 2 && data[0] == 'B' && data[1] == 'M')
    {
        return findBMPDamage(file);
    }
    return findTGADamage(file, width, height);
}
