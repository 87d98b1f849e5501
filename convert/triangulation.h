#pragma once

#include "convert/model.h"

#include <array>
#include <vector>

namespace TW2::convert
{
/// Cuts a polygon into triangles of its corners, in the polygon's own direction; corners are counted from 0. Polygons
/// that are bent inwards come out right as long as they are about flat and do not cross themselves.
[[nodiscard]] std::vector<std::array<unsigned int, 3>> triangulate(const std::vector<Vector3d>& corners);
}  // namespace TW2::convert
