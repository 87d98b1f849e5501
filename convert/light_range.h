#pragma once

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
/// The distance at which a light has fallen to a hundredth, from how its strength is divided there.
[[nodiscard]] inline float findRange(float linear, float quadratic)
{
    constexpr float far = 1e6F;
    if (quadratic > 0.0F)
    {
        return std::min(std::sqrt(100.0F / quadratic), far);
    }
    return linear > 0.0F ? std::min(100.0F / linear, far) : far;
}
}  // namespace TW2::convert
