#include <platform/image/image_exception.h>
#include <platform/runtime/str.h>
#include <platform/scene/driver.h>
#include <platform/scene/map.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace
{
constexpr unsigned int alphaOffset = 3;
constexpr unsigned char opaqueAlpha = 255;

unsigned long long createId() noexcept
{
    static constinit S_Counter<unsigned long long> s_uiLastId;
    return ++s_uiLastId;
}

void requireSize(const G_Image& image, const char* name)
{
    const unsigned int limit = P_Driver::m_initializedDriver->getDriverCaps().m_uiMaximumTextureSize;
    if (std::max(image.getWidth(), image.getHeight()) > limit)
    {
        throw G_ImageException(name, S_STR("%u x %u pixels, the driver takes textures up to %u x %u", image.getWidth(),
                                           image.getHeight(), limit, limit));
    }
}

bool isOpaque(const G_Image& image) noexcept
{
    for (std::size_t alpha = alphaOffset; alpha < image.getSize(); alpha += G_Image::bytesPerPixel)
    {
        if (image.getPixels()[alpha] != opaqueAlpha)
        {
            return false;
        }
    }
    return true;
}

/// The alpha that an alpha picture gives: its own, or the brightness of one that is opaque everywhere.
class AlphaSource
{
public:
    explicit AlphaSource(const G_Image& image) noexcept : m_image(image), m_bBrightness(isOpaque(image)) {}

    /// Between the four pixels around a place; `u` and `v` run from 0 to 1 over the picture.
    [[nodiscard]] unsigned char sample(float u, float v) const noexcept
    {
        const Place x = locate(u, m_image.getWidth());
        const Place y = locate(v, m_image.getHeight());
        const float top = mix(getAlpha(x.m_uiFirst, y.m_uiFirst), getAlpha(x.m_uiSecond, y.m_uiFirst), x.m_fWeight);
        const float bottom =
            mix(getAlpha(x.m_uiFirst, y.m_uiSecond), getAlpha(x.m_uiSecond, y.m_uiSecond), x.m_fWeight);
        return static_cast<unsigned char>(std::lround(mix(top, bottom, y.m_fWeight)));
    }

private:
    /// Two neighbours, and how much the second one counts.
    struct Place
    {
        unsigned int m_uiFirst;
        unsigned int m_uiSecond;
        float m_fWeight;
    };

    static Place locate(float position, unsigned int count) noexcept
    {
        const float last = static_cast<float>(count - 1);
        const float pixel = std::clamp(position * static_cast<float>(count) - 0.5F, 0.0F, last);
        const auto first = static_cast<unsigned int>(pixel);
        return {first, std::min(first + 1, count - 1), pixel - static_cast<float>(first)};
    }
    static float mix(float a, float b, float weight) noexcept { return a + (b - a) * weight; }

    [[nodiscard]] float getAlpha(unsigned int x, unsigned int y) const noexcept
    {
        const unsigned char* pixel = m_image.getPixel(x, y);
        if (!m_bBrightness)
        {
            return static_cast<float>(pixel[alphaOffset]);
        }
        // Luma of ITU-R BT.601.
        return (299.0F * static_cast<float>(pixel[0]) + 587.0F * static_cast<float>(pixel[1]) +
                114.0F * static_cast<float>(pixel[2])) /
               1000.0F;
    }

    const G_Image& m_image;
    bool m_bBrightness;
};

void setAlpha(G_Image& image, const G_Image& alpha) noexcept
{
    const AlphaSource source(alpha);
    const auto width = static_cast<float>(image.getWidth());
    const auto height = static_cast<float>(image.getHeight());
    for (unsigned int y = 0; y < image.getHeight(); ++y)
    {
        for (unsigned int x = 0; x < image.getWidth(); ++x)
        {
            image.accessPixel(x, y)[alphaOffset] =
                source.sample((static_cast<float>(x) + 0.5F) / width, (static_cast<float>(y) + 0.5F) / height);
        }
    }
}
}  // namespace

P_Map::P_Map(const char* fileName, const char* alphaFileName)
    : m_strFileName(fileName), m_strAlphaFileName(alphaFileName ? alphaFileName : ""), m_uiId(createId())
{
}

P_Map::P_Map(const G_Image* color, const G_Image* alpha)
    : m_pColorImage(color), m_pAlphaImage(alpha), m_uiId(createId())
{
}

P_Map::~P_Map() = default;

void P_Map::validate()
{
    if (isValid())
    {
        return;
    }
    const bool fromImages = m_pColorImage != nullptr;
    const char* name = fromImages ? "map from an image" : m_strFileName.c_str();
    G_Image picture = fromImages ? *m_pColorImage : G_Image(name);
    requireSize(picture, name);
    if (m_pAlphaImage && !m_pAlphaImage->isEmpty())
    {
        setAlpha(picture, *m_pAlphaImage);
    }
    else if (!m_strAlphaFileName.empty())
    {
        setAlpha(picture, G_Image(m_strAlphaFileName.c_str()));
    }
    m_bAlpha = !isOpaque(picture);
    m_bUniform = picture.isUniform();
    m_image = std::move(picture);
}

int P_Map::getUsedMipLevelCount() const noexcept
{
    const unsigned int side = std::max({m_image.getWidth(), m_image.getHeight(), 1U});
    const auto possible = static_cast<int>(std::bit_width(side));
    return m_iMipLevels <= 0 ? possible : std::min(m_iMipLevels, possible);
}

void P_Map::addToTextureMemory()
{
    validate();
    m_bInTextureMemory = true;
}
