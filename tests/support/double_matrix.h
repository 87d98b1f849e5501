#pragma once

#include <platform/math/matrix4x3.h>

#include <algorithm>
#include <cmath>

namespace support
{
using DoubleVector = M_Vector3Template<double>;
using DoubleMatrix = M_Matrix4x3Template<double>;

inline DoubleMatrix toDouble(const M_Matrix4x3Template<float>& matrix)
{
    DoubleMatrix result;
    std::copy_n(matrix.data(), 12, result.data());
    return result;
}

inline bool isFinite(const M_Matrix4x3Template<float>& matrix)
{
    return std::all_of(matrix.data(), matrix.data() + 12, [](float value) { return std::isfinite(value); });
}
}  // namespace support
