#pragma once

#include "convert/model.h"

#include <cmath>

namespace TW2::convert
{
/// The rotation of a quaternion of unit length.
[[nodiscard]] inline Matrixd toMatrix(const Quaternion& q)
{
    Matrixd result;
    result.setRow(0,
                  {1.0 - 2.0 * (q.y * q.y + q.z * q.z), 2.0 * (q.x * q.y + q.w * q.z), 2.0 * (q.x * q.z - q.w * q.y)});
    result.setRow(1,
                  {2.0 * (q.x * q.y - q.w * q.z), 1.0 - 2.0 * (q.x * q.x + q.z * q.z), 2.0 * (q.y * q.z + q.w * q.x)});
    result.setRow(2,
                  {2.0 * (q.x * q.z + q.w * q.y), 2.0 * (q.y * q.z - q.w * q.x), 1.0 - 2.0 * (q.x * q.x + q.y * q.y)});
    return result;
}

/// The same rotation at unit length; none for a quaternion without length.
[[nodiscard]] inline Quaternion normalized(const Quaternion& q)
{
    const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    return length > 0.0 ? Quaternion{q.w / length, q.x / length, q.y / length, q.z / length} : Quaternion();
}

/// A rotation part of the way from one to another, the shorter way round.
[[nodiscard]] Matrixd turnShortest(const Matrixd& from, const Matrixd& to, double fraction);
}  // namespace TW2::convert
