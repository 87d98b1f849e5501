#pragma once

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
/// @name Between light and what pictures and materials store
/// A stored value of 0.5 is a fifth of the light; both are on the scale 0 to 1 here.
/// @{
[[nodiscard]] inline double toLight(double stored)
{
    return stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
}
/// What lies outside 0 to 1 is cut off.
[[nodiscard]] inline double toStored(double light)
{
    const double bounded = light > 0.0 ? std::min(light, 1.0) : 0.0;
    return bounded <= 0.0031308 ? bounded * 12.92 : 1.055 * std::pow(bounded, 1.0 / 2.4) - 0.055;
}
/// @}
}  // namespace TW2::convert
