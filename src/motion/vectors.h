#pragma once

#include <platform/math/vector3.h>

namespace TW2
{
[[nodiscard]] inline M_Vector3Template<double> toDouble(const M_Vector3Template<float>& v) noexcept
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

[[nodiscard]] inline M_Vector3Template<float> toFloat(const M_Vector3Template<double>& v) noexcept
{
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}
}  // namespace TW2
