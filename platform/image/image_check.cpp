#include <platform/image/image_check.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace
{
constexpr const char* cutOffText = "the file is cut off";
constexpr const char* alteredMark = "the file is damaged: a checksum is wrong";

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
            value = (value & 1) != 0 ? 0xEDB88320U ^ value >> 1 : value >> 1;
        }
        table[byte] = value;
    }
    return table;
}

/// The checksum of PNG chunks (CRC-32).
std::uint32_t checksum(const unsigned char* data, std::size_t size) noexcept
{
    static constexpr std::array<std::uint32_t, 256> checkTable = makeChecksumTable();
    std::uint32_t value = 0xFFFFFFFFU;
    for (std::size_t i = 0; i < size; ++i)
    {
        value = checkTable[(value ^ data[i]) & 0xFF] ^ value >> 8;
    }
    return ~value;
}

constexpr unsigned char pngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

constexpr std::size_t chunkFrame = 12;  // length, type and checksum around a PNG chunk's data

bool isChunk(const Bytes& file, std::size_t offset, const char* type) noexcept
{
    return std::memcmp(file.m_pData + offset + 4, type, 4) == 0;
}

const char* findPNGDamage(const Bytes& file) noexcept
{
    for (std::size_t offset = sizeof pngSignature; file.holds(offset, chunkFrame);)
    {
        const std::size_t length = file.big32(offset);
        if (!file.holds(offset, chunkFrame + length))
        {
            return cutOffText;
        }
        if (checksum(file.m_pData + offset + 4, length + 4) != file.big32(offset + 8 + length))
        {
            return alteredMark;
        }
        if (isChunk(file, offset, "IEND"))
        {
            return nullptr;
        }
        offset += chunkFrame + length;
    }
    return cutOffText;
}

/// Whether a sound PNG's data can unpack to that many pixels.
bool canHoldPixelsOfPNG(const Bytes& file, std::size_t width, std::size_t height) noexcept
{
    constexpr std::size_t largestCompression = 1032;  // of deflate
    std::size_t dataSize = 0;
    for (std::size_t offset = sizeof pngSignature; !isChunk(file, offset, "IEND");)
    {
        const std::size_t length = file.big32(offset);
        dataSize += isChunk(file, offset, "IDAT") ? length : 0;
        offset += chunkFrame + length;
    }
    // A pixel takes at least a bit; a row at least a byte, and one for its filter.
    return dataSize * largestCompression >= height * (1 + (width + 7) / 8);
}

/// Whether the code tables of a JPEG segment at `begin` define at most as many codes as there are values. The decoder
/// takes that on trust.
bool hasSoundCodeTables(const Bytes& file, std::size_t begin, std::size_t end) noexcept
{
    constexpr std::size_t lengths = 16;
    constexpr std::size_t largestTable = 256;
    while (begin + 1 + lengths <= end)
    {
        std::size_t codes = 0;
        for (std::size_t i = 1; i <= lengths; ++i)
        {
            codes += file.m_pData[begin + i];
        }
        if (codes > largestTable)
        {
            return false;
        }
        begin += 1 + lengths + codes;
    }
    return begin == end;
}

/// A JPEG has no checksums, but data that stop early lack the end mark.
const char* findJPEGDamage(const Bytes& file) noexcept
{
    enum Mark : unsigned char
    {
        STUFFING = 0x00,  // behind a 0xFF that belongs to the picture's data
        CODE_TABLES = 0xC4,
        FIRST_RESTART = 0xD0,
        LAST_RESTART = 0xD7,
        END_OF_IMAGE = 0xD9,
        FILL = 0xFF
    };
    constexpr std::size_t markSize = 2;
    for (std::size_t offset = markSize; file.holds(offset, markSize);)
    {
        const unsigned char mark = file.m_pData[offset + 1];
        if (file.m_pData[offset] != 0xFF || mark == FILL)
        {
            ++offset;
            continue;
        }
        if (mark == END_OF_IMAGE)
        {
            return nullptr;
        }
        offset += markSize;
        if (mark == STUFFING || (mark >= FIRST_RESTART && mark <= LAST_RESTART))
        {
            continue;
        }
        const std::size_t length = file.holds(offset, 2) ? file.big16(offset) : 0;
        if (length < 2 || !file.holds(offset, length))
        {
            return cutOffText;
        }
        if (mark == CODE_TABLES && !hasSoundCodeTables(file, offset + 2, offset + length))
        {
            return "its code tables are damaged";
        }
        offset += length;
    }
    return cutOffText;
}

bool holdsPixelsOfBMP(const Bytes& file, std::size_t width, std::size_t height) noexcept
{
    constexpr std::size_t leastHeader = 30;
    constexpr std::size_t smallHeader = 12;
    if (!file.holds(0, leastHeader))
    {
        return false;
    }
    const std::size_t bits = file.little32(14) == smallHeader ? file.little16(24) : file.little16(28);
    const std::size_t rowSize = (width * bits + 31) / 32 * 4;
    const std::size_t lastRow = (width * bits + 7) / 8;  // some writers leave out its padding
    return file.holds(file.little32(10), rowSize * (height - 1) + lastRow);
}

/// Where the pixels of a TGA whose runs are compressed end; past the file's size when it is cut off.
std::size_t findEndOfRuns(const Bytes& file, std::size_t offset, std::size_t pixels, std::size_t pixelSize) noexcept
{
    while (pixels > 0 && offset < file.m_uSize)
    {
        const std::size_t count = (file.m_pData[offset] & 127U) + 1U;
        const bool isRun = (file.m_pData[offset] & 128U) != 0;
        offset += 1 + (isRun ? pixelSize : count * pixelSize);
        pixels -= count < pixels ? count : pixels;
    }
    return pixels > 0 ? file.m_uSize + 1 : offset;
}

bool holdsPixelsOfTGA(const Bytes& file, std::size_t width, std::size_t height) noexcept
{
    constexpr std::size_t headerSize = 18;
    constexpr unsigned char compressedBit = 8;
    if (!file.holds(0, headerSize))
    {
        return false;
    }
    const std::size_t paletteSize = file.m_pData[1] != 0 ? file.little16(5) * ((file.m_pData[7] + 7U) / 8U) : 0;
    const std::size_t pixelSize = (file.m_pData[16] + 7U) / 8U;
    const std::size_t begin = headerSize + file.m_pData[0] + paletteSize;
    const std::size_t end = (file.m_pData[2] & compressedBit) != 0
                                ? findEndOfRuns(file, begin, width * height, pixelSize)
                                : begin + width * height * pixelSize;
    return end <= file.m_uSize;
}

bool isPNG(const Bytes& file) noexcept
{
    return file.holds(0, sizeof pngSignature) && std::memcmp(file.m_pData, pngSignature, sizeof pngSignature) == 0;
}

bool beginsWith(const Bytes& file, unsigned char first, unsigned char second) noexcept
{
    return file.holds(0, 2) && file.m_pData[0] == first && file.m_pData[1] == second;
}

bool isJPEG(const Bytes& file) noexcept
{
    return beginsWith(file, 0xFF, 0xD8);
}
}  // namespace

const char* findImageDamage(const unsigned char* data, std::size_t size) noexcept
{
    const Bytes file{data, size};
    if (isPNG(file))
    {
        return findPNGDamage(file);
    }
    if (isJPEG(file))
    {
        return findJPEGDamage(file);
    }
    // The decoder would take a JPEG with filling in front, of which nothing was checked here.
    return beginsWith(file, 0xFF, 0xFF) ? "not the beginning of a picture" : nullptr;
}

const char* findMissingPixels(const unsigned char* data, std::size_t size, std::size_t width,
                              std::size_t height) noexcept
{
    const Bytes file{data, size};
    bool isWhole = true;
    if (isPNG(file))
    {
        isWhole = canHoldPixelsOfPNG(file, width, height);
    }
    else if (beginsWith(file, 'B', 'M'))
    {
        isWhole = holdsPixelsOfBMP(file, width, height);
    }
    else if (!isJPEG(file))
    {
        isWhole = holdsPixelsOfTGA(file, width, height);
    }
    return isWhole ? nullptr : cutOffText;
}
