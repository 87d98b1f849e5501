#include "render/animation_writer.h"
#include "render/render_exception.h"

#include <platform/runtime/file.h>
#include <platform/runtime/str.h>

#include <webp/encode.h>
#include <webp/mux.h>

#include <cmath>

namespace TW2::render
{
namespace
{
class WebPWriter : public AnimationWriter
{
public:
    WebPWriter(double framesPerSecond, float quality) : m_dFramesPerSecond(framesPerSecond)
    {
        if (WebPConfigInit(&m_config) == 0)
        {
            throw RenderException("The WebP library has another version than it was built with");
        }
        m_config.quality = quality;
        m_config.thread_level = 1;
    }

    void add(const G_Image& picture) override
    {
        const auto width = static_cast<int>(picture.getWidth());
        const auto height = static_cast<int>(picture.getHeight());
        if (!m_encoder)
        {
            begin(width, height);
        }
        Frame frame;
        frame.m_picture.use_argb = 1;
        frame.m_picture.width = width;
        frame.m_picture.height = height;
        if (WebPPictureImportRGBA(&frame.m_picture, picture.getPixels(),
                                  width * static_cast<int>(G_Image::bytesPerPixel)) == 0 ||
            WebPAnimEncoderAdd(m_encoder.get(), &frame.m_picture, getTime(m_uiFrames), &m_config) == 0)
        {
            fail();
        }
        ++m_uiFrames;
    }

    void write(const char* fileName) override
    {
        if (m_uiFrames == 0)
        {
            throw RenderException("An animated WebP needs at least one picture");
        }
        struct Data
        {
            Data() { WebPDataInit(&m_data); }
            ~Data() { WebPDataClear(&m_data); }
            Data(const Data&) = delete;
            Data& operator=(const Data&) = delete;
            WebPData m_data{};
        } file;
        if (WebPAnimEncoderAdd(m_encoder.get(), nullptr, getTime(m_uiFrames), nullptr) == 0 ||
            WebPAnimEncoderAssemble(m_encoder.get(), &file.m_data) == 0)
        {
            fail();
        }
        File.write(fileName, file.m_data.bytes, file.m_data.size);
    }

private:
    struct Frame
    {
        Frame()
        {
            if (WebPPictureInit(&m_picture) == 0)
            {
                throw RenderException("The WebP library has another version than it was built with");
            }
        }
        ~Frame() { WebPPictureFree(&m_picture); }
        Frame(const Frame&) = delete;
        Frame& operator=(const Frame&) = delete;
        WebPPicture m_picture{};
    };
    struct Deleter
    {
        void operator()(WebPAnimEncoder* encoder) const { WebPAnimEncoderDelete(encoder); }
    };

    void begin(int width, int height)
    {
        m_encoder.reset(WebPAnimEncoderNew(width, height, nullptr));
        if (!m_encoder)
        {
            throw RenderException(S_STR("An animated WebP of %d x %d pixels cannot be begun", width, height));
        }
    }
    /// When a frame is shown, in milliseconds.
    [[nodiscard]] int getTime(std::size_t frame) const
    {
        return static_cast<int>(std::lround(1000.0 * static_cast<double>(frame) / m_dFramesPerSecond));
    }
    [[noreturn]] void fail() const
    {
        throw RenderException(
            S_STR("An animated WebP cannot be written: %s", WebPAnimEncoderGetError(m_encoder.get())));
    }

    double m_dFramesPerSecond;
    WebPConfig m_config{};
    std::unique_ptr<WebPAnimEncoder, Deleter> m_encoder;
    std::size_t m_uiFrames = 0;
};
}  // namespace

std::unique_ptr<AnimationWriter> makeWebPWriter(double framesPerSecond, float quality)
{
    if (!(framesPerSecond >= 1.0 && framesPerSecond <= 100.0))
    {
        throw RenderException("An animated WebP shows 1 to 100 frames per second");
    }
    if (!(quality >= 0.0F && quality <= 100.0F))
    {
        throw RenderException("The quality of a WebP is 0 to 100");
    }
    return std::make_unique<WebPWriter>(framesPerSecond, quality);
}
}  // namespace TW2::render
