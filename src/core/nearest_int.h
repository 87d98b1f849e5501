#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace TW2
{
/// The nearest whole number to a value that is a number, halves to even, as far as an int reaches.
[[nodiscard]] inline int toNearestInt(float value) noexcept
{
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::nearbyint(static_cast<double>(value)), lowest, highest));
}
}  // namespace TW2
