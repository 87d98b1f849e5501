#include "convert/pictures.h"

#ifdef TW2_HAS_ZLIB
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace TW2::convert
{
namespace
{
using Bytes = std::vector<unsigned char>;

void appendNumber(Bytes& file, std::size_t number)
{
    for (const int shift : {24, 16, 8, 0})
    {
        file.push_back(static_cast<unsigned char>(number >> shift));
    }
}

void appendChunk(Bytes& file, const char* type, const Bytes& content)
{
    appendNumber(file, content.size());
    const std::size_t begin = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), content.begin(), content.end());
    appendNumber(file, crc32_z(0, file.data() + begin, file.size() - begin));
}

/// What PNG may take from a byte before it is packed: nothing, the pixel on its left, the one above, or that of the two
/// and the one above on the left which is closest to what their slope makes likely.
enum class Filter : unsigned char
{
    None = 0,
    Left = 1,
    Above = 2,
    Likely = 4
};

/// In numbers of 16 bits, which processors take eight at once.
std::int16_t predict(std::int16_t left, std::int16_t above, std::int16_t corner)
{
    const auto acrossLeft = static_cast<std::int16_t>(above - corner);
    const auto acrossAbove = static_cast<std::int16_t>(left - corner);
    const auto both = static_cast<std::int16_t>(acrossLeft + acrossAbove);
    const auto toLeft = static_cast<std::int16_t>(std::abs(acrossLeft));
    const auto toAbove = static_cast<std::int16_t>(std::abs(acrossAbove));
    const auto toCorner = static_cast<std::int16_t>(std::abs(both));
    const std::int16_t upper = toAbove <= toCorner ? above : corner;
    return toLeft <= std::min(toAbove, toCorner) ? left : upper;
}

/// Writes a row of bytes as a filter leaves them. `row` and `above` have `width` bytes, before which a pixel of zeros
/// lies; a pixel has `step` bytes.
template <std::size_t step>
void filterRow(Filter filter, const unsigned char* row, const unsigned char* above, std::size_t width,
               unsigned char* result)
{
    const unsigned char* const left = row - step;
    const unsigned char* const corner = above - step;
    const auto write = [&](auto&& predicted)
    {
        for (std::size_t i = 0; i < width; ++i)
        {
            result[i] = static_cast<unsigned char>(row[i] - predicted(i));
        }
    };
    switch (filter)
    {
        case Filter::None:
            return write([](std::size_t) { return 0; });
        case Filter::Left:
            return write([=](std::size_t i) { return left[i]; });
        case Filter::Above:
            return write([=](std::size_t i) { return above[i]; });
        case Filter::Likely:
            return write([=](std::size_t i) { return predict(left[i], above[i], corner[i]); });
    }
}

/// Packs what is added to it.
class Deflater
{
public:
    Deflater()
    {
        // Runs alone are looked for: after the filters that finds most of what there is, in a fraction of the time.
        constexpr int windowBits = 15;
        constexpr int memoryLevel = 8;
        if (deflateInit2(&m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, memoryLevel, Z_RLE) != Z_OK)
        {
            throw std::bad_alloc();
        }
    }
    ~Deflater() { deflateEnd(&m_stream); }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    void add(Bytes& bytes) { pack(bytes, Z_NO_FLUSH); }
    /// All that was added, packed. To be called once, at the end.
    [[nodiscard]] Bytes finish()
    {
        Bytes nothing;
        pack(nothing, Z_FINISH);
        return std::move(m_vecPacked);
    }

private:
    void pack(Bytes& bytes, int flush)
    {
        m_stream.next_in = bytes.data();
        m_stream.avail_in = static_cast<uInt>(bytes.size());
        std::array<unsigned char, 16384> packed;
        do
        {
            m_stream.next_out = packed.data();
            m_stream.avail_out = static_cast<uInt>(packed.size());
            deflate(&m_stream, flush);
            m_vecPacked.insert(m_vecPacked.end(), packed.data(), m_stream.next_out);
        } while (m_stream.avail_out == 0);
    }

    z_stream m_stream{};
    Bytes m_vecPacked;
};

/// The rows of an image as PNG packs them: each with the filter that leaves the smallest bytes.
template <std::size_t step>
Bytes packRows(const G_Image& image)
{
    const std::size_t width = std::size_t{image.getWidth()} * step;
    Bytes above(step + width, 0);
    Bytes row(step + width, 0);
    Bytes tried(1 + width);
    Bytes best(1 + width);
    Deflater deflater;
    for (unsigned int y = 0; y < image.getHeight(); ++y)
    {
        const unsigned char* const pixels = image.getPixel(0, y);
        for (std::size_t x = 0; x < image.getWidth(); ++x)
        {
            std::memcpy(row.data() + step + x * step, pixels + x * G_Image::bytesPerPixel, step);
        }
        unsigned int smallest = ~0U;
        for (const Filter filter : {Filter::None, Filter::Left, Filter::Above, Filter::Likely})
        {
            filterRow<step>(filter, row.data() + step, above.data() + step, width, tried.data() + 1);
            unsigned int sum = 0;
            for (std::size_t i = 1; i <= width; ++i)
            {
                sum += std::min(tried[i], static_cast<unsigned char>(-tried[i]));
            }
            if (sum < smallest)
            {
                smallest = sum;
                tried[0] = static_cast<unsigned char>(filter);
                best.swap(tried);
            }
        }
        deflater.add(best);
        above.swap(row);
    }
    return deflater.finish();
}

bool isOpaque(const G_Image& image)
{
    for (std::size_t i = 3; i < image.getSize(); i += G_Image::bytesPerPixel)
    {
        if (image.getPixels()[i] < 255)
        {
            return false;
        }
    }
    return true;
}
}  // namespace

std::vector<unsigned char> encodePicture(const G_Image& image)
{
    const bool opaque = isOpaque(image);
    Bytes header;
    appendNumber(header, image.getWidth());
    appendNumber(header, image.getHeight());
    constexpr unsigned char bits = 8;
    constexpr unsigned char colors = 2;
    constexpr unsigned char colorsAndAlpha = 6;
    header.insert(header.end(), {bits, opaque ? colors : colorsAndAlpha, 0, 0, 0});
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    appendChunk(file, "IHDR", header);
    appendChunk(file, "IDAT", opaque ? packRows<3>(image) : packRows<4>(image));
    appendChunk(file, "IEND", {});
    return file;
}
}  // namespace TW2::convert
#else
namespace TW2::convert
{
std::vector<unsigned char> encodePicture(const G_Image& image)
{
    const S_Bytes content = image.encodePNG();
    return {content.begin(), content.end()};
}
}  // namespace TW2::convert
#endif
