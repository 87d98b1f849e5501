#include "render/gif_writer.h"

#include "render/render_exception.h"

#include <platform/runtime/file.h>
#include <platform/runtime/str.h>

#include <gif_lib.h>
#include <libimagequant.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace TW2::render
{
namespace
{
constexpr int mostColors = 255;  // one of the 256 is for "unchanged"
constexpr int transparentIndex = 255;
constexpr int colorResolution = 8;  // bits per channel of the palette

struct Rectangle
{
    int m_iLeft = 0;
    int m_iTop = 0;
    int m_iWidth = 0;
    int m_iHeight = 0;
};

template <auto Destroy>
struct Deleter
{
    template <typename T>
    void operator()(T* object) const
    {
        Destroy(object);
    }
};
using Attributes = std::unique_ptr<liq_attr, Deleter<liq_attr_destroy>>;
using Histogram = std::unique_ptr<liq_histogram, Deleter<liq_histogram_destroy>>;
using Quantized = std::unique_ptr<liq_image, Deleter<liq_image_destroy>>;
using Result = std::unique_ptr<liq_result, Deleter<liq_result_destroy>>;

void check(liq_error error)
{
    if (error != LIQ_OK)
    {
        throw RenderException(S_STR("The colours of a GIF cannot be chosen (error %d)", static_cast<int>(error)));
    }
}

Quantized wrap(liq_attr* attributes, const G_Image& picture)
{
    Quantized image(liq_image_create_rgba(attributes, picture.getPixels(), static_cast<int>(picture.getWidth()),
                                          static_cast<int>(picture.getHeight()), 0));
    if (!image)
    {
        throw RenderException("There is no memory for the colours of a GIF");
    }
    return image;
}

Result choosePalette(liq_attr* attributes, const std::vector<G_Image>& pictures)
{
    const Histogram histogram(liq_histogram_create(attributes));
    for (const G_Image& picture : pictures)
    {
        check(liq_histogram_add_image(histogram.get(), attributes, wrap(attributes, picture).get()));
    }
    liq_result* result = nullptr;
    check(liq_histogram_quantize(histogram.get(), attributes, &result));
    Result palette(result);
    // Light dithering: strong dithering flickers from frame to frame.
    check(liq_set_dithering_level(palette.get(), 0.4F));
    return palette;
}

/// The smallest rectangle outside of which both pictures are the same; one pixel when they are the same everywhere.
Rectangle findChange(const G_Image& before, const G_Image& now)
{
    int left = static_cast<int>(now.getWidth());
    int right = -1;
    int top = static_cast<int>(now.getHeight());
    int bottom = -1;
    for (int y = 0; y < static_cast<int>(now.getHeight()); ++y)
    {
        for (int x = 0; x < static_cast<int>(now.getWidth()); ++x)
        {
            const unsigned char* a = before.getPixel(static_cast<unsigned int>(x), static_cast<unsigned int>(y));
            const unsigned char* b = now.getPixel(static_cast<unsigned int>(x), static_cast<unsigned int>(y));
            if (!std::equal(a, a + 3, b))
            {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    if (right < 0)
    {
        return {0, 0, 1, 1};
    }
    return {left, top, right - left + 1, bottom - top + 1};
}

/// Writes GIF blocks into memory.
class Encoder
{
public:
    Encoder(int width, int height, const liq_palette& palette)
    {
        int error = 0;
        m_pFile.reset(EGifOpen(
            &m_vecBytes,
            [](GifFileType* file, const GifByteType* bytes, int count)
            {
                auto& list = *static_cast<std::vector<GifByteType>*>(file->UserData);
                list.insert(list.end(), bytes, bytes + count);
                return count;
            },
            &error));
        if (!m_pFile)
        {
            throw RenderException(S_STR("A GIF cannot be begun (error %d)", error));
        }
        EGifSetGifVersion(m_pFile.get(), true);
        std::array<GifColorType, 256> colors{};
        for (unsigned int i = 0; i < palette.count && i < mostColors; ++i)
        {
            colors[i] = {palette.entries[i].r, palette.entries[i].g, palette.entries[i].b};
        }
        ColorMapObject* map = GifMakeMapObject(static_cast<int>(colors.size()), colors.data());
        const bool begun =
            map && EGifPutScreenDesc(m_pFile.get(), width, height, colorResolution, 0, map) == GIF_OK && putLoop();
        GifFreeMapObject(map);
        if (!begun)
        {
            fail();
        }
    }

    void add(const Rectangle& place, int hundredths, bool transparent, std::vector<GifPixelType>& pixels)
    {
        GraphicsControlBlock control{};
        control.DisposalMode = DISPOSE_DO_NOT;
        control.DelayTime = hundredths;
        control.TransparentColor = transparent ? transparentIndex : NO_TRANSPARENT_COLOR;
        std::array<GifByteType, 4> extension{};
        const auto size = EGifGCBToExtension(&control, extension.data());
        if (EGifPutExtension(m_pFile.get(), GRAPHICS_EXT_FUNC_CODE, static_cast<int>(size), extension.data()) !=
                GIF_OK ||
            EGifPutImageDesc(m_pFile.get(), place.m_iLeft, place.m_iTop, place.m_iWidth, place.m_iHeight, false,
                             nullptr) != GIF_OK ||
            EGifPutLine(m_pFile.get(), pixels.data(), static_cast<int>(pixels.size())) != GIF_OK)
        {
            fail();
        }
    }

    /// Ends the file; nothing can be added any more.
    const std::vector<GifByteType>& finish()
    {
        int error = 0;
        if (EGifCloseFile(m_pFile.release(), &error) != GIF_OK)
        {
            throw RenderException(S_STR("A GIF cannot be ended (error %d)", error));
        }
        return m_vecBytes;
    }

private:
    bool putLoop()
    {
        constexpr std::array<GifByteType, 3> forEver{1, 0, 0};
        return EGifPutExtensionLeader(m_pFile.get(), APPLICATION_EXT_FUNC_CODE) == GIF_OK &&
               EGifPutExtensionBlock(m_pFile.get(), 11, "NETSCAPE2.0") == GIF_OK &&
               EGifPutExtensionBlock(m_pFile.get(), static_cast<int>(forEver.size()), forEver.data()) == GIF_OK &&
               EGifPutExtensionTrailer(m_pFile.get()) == GIF_OK;
    }
    [[noreturn]] void fail() const
    {
        throw RenderException(S_STR("A GIF cannot be written (error %d)", m_pFile->Error));
    }

    std::vector<GifByteType> m_vecBytes;
    struct Closer
    {
        void operator()(GifFileType* file) const { EGifCloseFile(file, nullptr); }
    };
    std::unique_ptr<GifFileType, Closer> m_pFile;
};

void checkInput(const std::vector<G_Image>& pictures, double framesPerSecond)
{
    if (pictures.empty())
    {
        throw RenderException("A GIF needs at least one picture");
    }
    if (!(framesPerSecond >= 1.0 && framesPerSecond <= 50.0))
    {
        throw RenderException("A GIF shows 1 to 50 frames per second");
    }
    for (const G_Image& picture : pictures)
    {
        if (picture.getWidth() != pictures.front().getWidth() || picture.getHeight() != pictures.front().getHeight())
        {
            throw RenderException("The pictures of a GIF have one size");
        }
    }
}
}  // namespace

void writeGIF(const char* fileName, const std::vector<G_Image>& pictures, double framesPerSecond)
{
    checkInput(pictures, framesPerSecond);
    const auto width = static_cast<int>(pictures.front().getWidth());
    const auto height = static_cast<int>(pictures.front().getHeight());
    const Attributes attributes(liq_attr_create());
    check(liq_set_max_colors(attributes.get(), mostColors));
    const Result palette = choosePalette(attributes.get(), pictures);

    std::vector<GifPixelType> indices(pictures.front().getSize() / G_Image::bytesPerPixel);
    std::vector<GifPixelType> pixels;
    // The palette is final once a picture was mapped to it.
    check(liq_write_remapped_image(palette.get(), wrap(attributes.get(), pictures.front()).get(), indices.data(),
                                   indices.size()));
    Encoder encoder(width, height, *liq_get_palette(palette.get()));
    long long shown = 0;
    for (std::size_t i = 0; i < pictures.size(); ++i)
    {
        const long long end = std::llround(100.0 * static_cast<double>(i + 1) / framesPerSecond);
        const Rectangle place = i == 0 ? Rectangle{0, 0, width, height} : findChange(pictures[i - 1], pictures[i]);
        check(liq_write_remapped_image(palette.get(), wrap(attributes.get(), pictures[i]).get(), indices.data(),
                                       indices.size()));
        pixels.clear();
        for (int y = place.m_iTop; y < place.m_iTop + place.m_iHeight; ++y)
        {
            for (int x = place.m_iLeft; x < place.m_iLeft + place.m_iWidth; ++x)
            {
                const auto column = static_cast<unsigned int>(x);
                const auto row = static_cast<unsigned int>(y);
                const unsigned char* now = pictures[i].getPixel(column, row);
                const bool same = i > 0 && std::equal(now, now + 3, pictures[i - 1].getPixel(column, row));
                pixels.push_back(same ? static_cast<GifPixelType>(transparentIndex)
                                      : indices[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                                static_cast<std::size_t>(x)]);
            }
        }
        encoder.add(place, static_cast<int>(end - shown), i > 0, pixels);
        shown = end;
    }
    const std::vector<GifByteType>& bytes = encoder.finish();
    File.write(fileName, bytes.data(), bytes.size());
}
}  // namespace TW2::render
