#pragma once

#include "convert/model.h"

#include <assimp/color4.h>
#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>
#include <assimp/vector3.h>

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
[[nodiscard]] inline Vector3 toVector(const aiVector3D& v)
{
    return {v.x, v.y, v.z};
}

[[nodiscard]] inline Vector3d toVectord(const aiVector3D& v)
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

[[nodiscard]] inline Quaternion toQuaternion(const aiQuaternion& q)
{
    return {static_cast<double>(q.w), static_cast<double>(q.x), static_cast<double>(q.y), static_cast<double>(q.z)};
}

[[nodiscard]] inline Color toColor(const aiColor4D& color)
{
    const auto toByte = [](float value)
    { return static_cast<unsigned char>(std::lround(255.0F * std::clamp(value, 0.0F, 1.0F))); };
    return {toByte(color.r), toByte(color.g), toByte(color.b), toByte(color.a)};
}

/// Assimp multiplies column vectors from the right, this project row vectors from the left: the matrix is transposed.
[[nodiscard]] inline Matrixd toMatrix(const aiMatrix4x4& a)
{
    Matrixd result;
    for (unsigned int row = 0; row < 4; ++row)
    {
        for (unsigned int column = 0; column < 3; ++column)
        {
            result.m[row][column] = static_cast<double>(a[column][row]);
        }
    }
    return result;
}
}  // namespace TW2::convert
