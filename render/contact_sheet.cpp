#include "render/contact_sheet.h"

#include "render/render_exception.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace TW2::render
{
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
    if (columns == 0)
    {
        columns = static_cast<unsigned int>(
            std::lround(std::sqrt(static_cast<float>(count) * static_cast<float>(height) / static_cast<float>(width))));
    }
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
