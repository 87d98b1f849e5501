#include "convert/color_atlas.h"

#include "convert/color_space.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace TW2::convert
{
namespace
{
/// Colour as light, alpha as it is.
std::array<double, 4> toLight(const Color& color)
{
    std::array<double, 4> light{};
    for (std::size_t c = 0; c < 4; ++c)
    {
        const double stored = static_cast<double>(color[c]) / 255.0;
        light[c] = c == 3 ? stored : TW2::convert::toLight(stored);
    }
    return light;
}

/// Between the corners by their weights, which add up to 1; beyond them as far as there are colours.
Color mix(const ColorAtlas::Corners& corners, const std::array<double, 3>& weights)
{
    std::array<double, 4> light{};
    for (std::size_t corner = 0; corner < 3; ++corner)
    {
        const std::array<double, 4> own = toLight(corners[corner]);
        for (std::size_t c = 0; c < 4; ++c)
        {
            light[c] += weights[corner] * own[c];
        }
    }
    Color color{};
    for (std::size_t c = 0; c < 4; ++c)
    {
        const double stored = c == 3 ? std::clamp(light[c], 0.0, 1.0) : toStored(light[c]);
        color[c] = static_cast<unsigned char>(std::lround(255.0 * stored));
    }
    return color;
}

Color multiply(const Color& color, const G_FColor& factor)
{
    const std::array<float, 3> factors{factor.red, factor.green, factor.blue};
    Color result = color;
    for (std::size_t c = 0; c < 3; ++c)
    {
        const double light = TW2::convert::toLight(static_cast<double>(color[c]) / 255.0) *
                             TW2::convert::toLight(static_cast<double>(factors[c]) / 255.0);
        result[c] = static_cast<unsigned char>(std::lround(255.0 * toStored(light)));
    }
    return result;
}
}  // namespace

unsigned int ColorAtlas::getSteps(const Corners& corners)
{
    constexpr int slight = 24;  // between such colours a straight line shows
    constexpr unsigned int finely = 4;
    int most = 0;
    for (std::size_t c = 0; c < 4; ++c)
    {
        const auto [low, high] = std::minmax({corners[0][c], corners[1][c], corners[2][c]});
        most = std::max(most, high - low);
    }
    return most == 0 ? 0 : most < slight ? 1 : finely;
}

void ColorAtlas::add(const Corners& corners)
{
    m_mapPatches.try_emplace(corners);
    for (const Color& color : corners)
    {
        m_bAlpha |= color[3] < 255;
    }
}

/// In rows of patches of one size, the largest first.
void ColorAtlas::place() const
{
    if (m_uiSide > 0)
    {
        return;
    }
    std::vector<std::pair<const Corners*, Place*>> patches;
    std::size_t pixels = 0;
    for (auto& [corners, where] : m_mapPatches)
    {
        patches.emplace_back(&corners, &where);
        const std::size_t side = getSteps(corners) + 1;
        pixels += side * side;
    }
    std::stable_sort(patches.begin(), patches.end(),
                     [](const auto& a, const auto& b) { return getSteps(*a.first) > getSteps(*b.first); });
    for (m_uiSide = 8; std::size_t{m_uiSide} * m_uiSide < pixels; m_uiSide *= 2)
    {
    }
    for (bool fits = false; !fits; m_uiSide *= fits ? 1U : 2U)
    {
        unsigned int x = 0;
        unsigned int y = 0;
        unsigned int height = 0;
        for (const auto& [corners, where] : patches)
        {
            const unsigned int side = getSteps(*corners) + 1;
            if (x + side > m_uiSide || (x > 0 && side != height))
            {
                y += height;
                x = 0;
            }
            height = side;
            *where = {x, y};
            x += side;
        }
        fits = y + height <= m_uiSide;
    }
}

std::array<Vector3, 3> ColorAtlas::getCoordinates(const Corners& corners) const
{
    place();
    const Place& where = m_mapPatches.at(corners);
    const unsigned int steps = getSteps(corners);
    const auto center = [this](unsigned int pixel)
    { return (static_cast<float>(pixel) + 0.5F) / static_cast<float>(m_uiSide); };
    const float left = center(where.m_uiX);
    const float top = center(where.m_uiY);
    return {Vector3(left, top, 0.0F), Vector3(center(where.m_uiX + steps), top, 0.0F),
            Vector3(left, center(where.m_uiY + steps), 0.0F)};
}

G_Image ColorAtlas::makePicture(const G_FColor& factor) const
{
    place();
    G_Image image(m_uiSide, m_uiSide);
    for (const auto& [corners, where] : m_mapPatches)
    {
        const unsigned int steps = getSteps(corners);
        for (unsigned int y = 0; y <= steps; ++y)
        {
            for (unsigned int x = 0; x <= steps; ++x)
            {
                const double u = steps == 0 ? 0.0 : static_cast<double>(x) / steps;
                const double v = steps == 0 ? 0.0 : static_cast<double>(y) / steps;
                const Color color = multiply(mix(corners, {1.0 - u - v, u, v}), factor);
                std::memcpy(image.accessPixel(where.m_uiX + x, where.m_uiY + y), color.data(), color.size());
            }
        }
    }
    return image;
}
}  // namespace TW2::convert
