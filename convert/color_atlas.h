#pragma once

#include "convert/model.h"

#include <platform/image/image.h>

#include <array>
#include <cstddef>
#include <map>
#include <vector>

namespace TW2::convert
{
/// A picture that shows the colours of vertices. The library's meshes have no colours, but coordinates: a triangle of
/// one colour takes a pixel, another one a patch of pixels in which its colours run into each other as light does.
///
/// All triangles are added before the first coordinates are asked for. The picture is to be shown without mip levels.
class ColorAtlas
{
public:
    using Corners = std::array<Color, 3>;

    void add(const Corners& corners);
    /// Where the corners of a triangle that was added lie.
    [[nodiscard]] std::array<Vector3, 3> getCoordinates(const Corners& corners) const;
    /// The picture, its colours multiplied by `factor` (scale 0 to 255).
    [[nodiscard]] G_Image makePicture(const G_FColor& factor) const;
    [[nodiscard]] bool isEmpty() const noexcept { return m_mapPatches.empty(); }
    /// Whether any colour that was added is not opaque.
    [[nodiscard]] bool hasAlpha() const noexcept { return m_bAlpha; }

private:
    /// Pixels from one corner of a patch to the next; 0 for one pixel.
    static unsigned int getSteps(const Corners& corners);
    void place() const;

    struct Place
    {
        unsigned int m_uiX = 0;
        unsigned int m_uiY = 0;
    };
    mutable std::map<Corners, Place> m_mapPatches;
    mutable unsigned int m_uiSide = 0;  // of the picture, in pixels; 0: not placed yet
    bool m_bAlpha = false;
};
}  // namespace TW2::convert
