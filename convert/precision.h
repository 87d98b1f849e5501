#pragma once

#include "convert/model.h"

namespace TW2::convert
{
/// @name Between the precision that motion is kept in and the one that files store
/// @{
[[nodiscard]] inline Vector3 toFloat(const Vector3d& v)
{
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}
[[nodiscard]] inline Vector3d toDouble(const Vector3& v)
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}
[[nodiscard]] inline M_Matrix4x3Template<float> toFloat(const Matrixd& matrix)
{
    M_Matrix4x3Template<float> result;
    for (int row = 0; row < 4; ++row)
    {
        result.setRow(row, toFloat(matrix.getRow(row)));
    }
    return result;
}
[[nodiscard]] inline Matrixd toDouble(const M_Matrix4x3Template<float>& matrix)
{
    Matrixd result;
    for (int row = 0; row < 4; ++row)
    {
        result.setRow(row, toDouble(matrix.getRow(row)));
    }
    return result;
}
/// @}
}  // namespace TW2::convert
