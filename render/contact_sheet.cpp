#include "render/contact_sheet.h"

#include "render/render_exception.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace TW2::render
{
namespace
{
/// Few empty places, and a sheet a little wider than high.
unsigned int chooseColumns(unsigned int count, float aspect)
{
    constexpr float wanted = 1.4F;
    unsigned int best = 1;
    float leastFault = 1e9F;
    for (unsigned int columns = 1; columns <= count; ++columns)
    {
        const unsigned int rows = (count + columns - 1) / columns;
        const float shape = aspect * static_cast<float>(columns) / static_cast<float>(rows);
        const float empty = static_cast<float>(rows * columns - count) / static_cast<float>(count);
        const float fault = std::abs(std::log(shape / wanted)) + 2.0F * empty;
        if (fault < leastFault)
        {
            leastFault = fault;
            best = columns;
        }
    }
    return best;
}
}  // namespace

G_Image makeContactSheet(const std::vector<G_Image>& pictures, unsigned int columns)
{
    constexpr unsigned int border = 2;
    constexpr int borderGrey = 150;
    if (pictures.empty())
    {
        throw RenderException("A contact sheet needs at least one picture");
    }
    const auto count = static_cast<unsigned int>(pictures.size());
    const unsigned int width = pictures.front().getWidth();
    const unsigned int height = pictures.front().getHeight();
    columns = columns == 0 ? chooseColumns(count, static_cast<float>(width) / static_cast<float>(height)) : columns;
    columns = std::clamp(columns, 1U, count);
    const unsigned int rows = (count + columns - 1) / columns;

    G_Image sheet(columns * (width + border) + border, rows * (height + border) + border);
    std::memset(sheet.accessPixels(), borderGrey, sheet.getSize());
    for (unsigned int i = 0; i < count; ++i)
    {
        const unsigned int left = border + i % columns * (width + border);
        const unsigned int top = border + i / columns * (height + border);
        for (unsigned int y = 0; y < height; ++y)
        {
            std::memcpy(sheet.accessPixel(left, top + y), pictures[i].getPixel(0, y),
                        std::size_t{width} * G_Image::bytesPerPixel);
        }
    }
    return sheet;
}
}  // namespace TW2::render
