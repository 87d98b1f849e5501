#include "render/animation_writer.h"
#include "render/render_exception.h"

#include <platform/runtime/file.h>
#include <platform/runtime/str.h>

#include <gif_lib.h>
#include <libimagequant.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>

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

class GIFWriter : public AnimationWriter
{
public:
    GIFWriter(const std::vector<G_Image>& samples, double framesPerSecond)
        : m_dFramesPerSecond(framesPerSecond), m_attributes(liq_attr_create())
    {
        check(liq_set_max_colors(m_attributes.get(), mostColors));
        m_palette = choosePalette(m_attributes.get(), samples);
        // The palette is final once a picture was mapped to it.
        map(samples.front());
        m_encoder.emplace(static_cast<int>(samples.front().getWidth()), static_cast<int>(samples.front().getHeight()),
                          *liq_get_palette(m_palette.get()));
        m_uiWidth = samples.front().getWidth();
        m_uiHeight = samples.front().getHeight();
    }

    void add(const G_Image& picture) override
    {
        if (picture.getWidth() != m_uiWidth || picture.getHeight() != m_uiHeight)
        {
            throw RenderException("The pictures of a GIF have one size");
        }
        const bool first = m_uiFrames == 0;
        const Rectangle place = first ? Rectangle{0, 0, static_cast<int>(m_uiWidth), static_cast<int>(m_uiHeight)}
                                      : findChange(m_before, picture);
        map(picture);
        m_vecPixels.clear();
        for (int y = place.m_iTop; y < place.m_iTop + place.m_iHeight; ++y)
        {
            for (int x = place.m_iLeft; x < place.m_iLeft + place.m_iWidth; ++x)
            {
                const auto column = static_cast<unsigned int>(x);
                const auto row = static_cast<unsigned int>(y);
                const unsigned char* now = picture.getPixel(column, row);
                const bool same = !first && std::equal(now, now + 3, m_before.getPixel(column, row));
                m_vecPixels.push_back(same ? static_cast<GifPixelType>(transparentIndex)
                                           : m_vecIndices[std::size_t{row} * m_uiWidth + column]);
            }
        }
        const long long end = std::llround(100.0 * static_cast<double>(++m_uiFrames) / m_dFramesPerSecond);
        m_encoder->add(place, static_cast<int>(end - m_iShown), !first, m_vecPixels);
        m_iShown = end;
        m_before = picture;
    }

    void write(const char* fileName) override
    {
        if (m_uiFrames == 0)
        {
            throw RenderException("A GIF needs at least one picture");
        }
        const std::vector<GifByteType>& bytes = m_encoder->finish();
        File.write(fileName, bytes.data(), bytes.size());
    }

private:
    void map(const G_Image& picture)
    {
        m_vecIndices.resize(picture.getSize() / G_Image::bytesPerPixel);
        check(liq_write_remapped_image(m_palette.get(), wrap(m_attributes.get(), picture).get(), m_vecIndices.data(),
                                       m_vecIndices.size()));
    }

    double m_dFramesPerSecond;
    unsigned int m_uiWidth = 0;
    unsigned int m_uiHeight = 0;
    std::size_t m_uiFrames = 0;
    long long m_iShown = 0;  ///< hundredths of a second so far
    Attributes m_attributes;
    Result m_palette;
    std::optional<Encoder> m_encoder;
    G_Image m_before;
    std::vector<GifPixelType> m_vecIndices;
    std::vector<GifPixelType> m_vecPixels;
};
}  // namespace

std::unique_ptr<AnimationWriter> makeGIFWriter(const std::vector<G_Image>& samples, double framesPerSecond)
{
    if (samples.empty())
    {
        throw RenderException("A GIF needs at least one picture");
    }
    if (!(framesPerSecond >= 1.0 && framesPerSecond <= 50.0))
    {
        throw RenderException("A GIF shows 1 to 50 frames per second");
    }
    return std::make_unique<GIFWriter>(samples, framesPerSecond);
}

void writeGIF(const char* fileName, const std::vector<G_Image>& pictures, double framesPerSecond)
{
    const std::unique_ptr<AnimationWriter> writer = makeGIFWriter(pictures, framesPerSecond);
    for (const G_Image& picture : pictures)
    {
        writer->add(picture);
    }
    writer->write(fileName);
}
}  // namespace TW2::render
