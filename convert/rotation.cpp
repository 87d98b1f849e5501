#include "convert/rotation.h"

#include <algorithm>

namespace TW2::convert
{
namespace
{
/// What a rotation turns about; nothing when it does not turn.
Vector3d findAxis(const Matrixd& turn, double cosine)
{
    const auto& m = turn.m;
    constexpr double almostBack = -1.0 + 1e-9;
    if (cosine > almostBack)
    {
        return Vector3d{m[1][2] - m[2][1], m[2][0] - m[0][2], m[0][1] - m[1][0]}.normalized();
    }
    // Half a turn is 2 a a^T - 1: any row of it that is long enough, with 1 put back, points along the axis a.
    const int row = m[0][0] >= m[1][1] && m[0][0] >= m[2][2] ? 0 : m[1][1] >= m[2][2] ? 1 : 2;
    Vector3d axis = turn.getRow(row);
    (row == 0 ? axis.x : row == 1 ? axis.y : axis.z) += 1.0;
    return axis.normalized();
}
}  // namespace

Matrixd turnShortest(const Matrixd& from, const Matrixd& to, double fraction)
{
    const Matrixd turn = from.inverse() * to;
    const double cosine = std::clamp((turn.m[0][0] + turn.m[1][1] + turn.m[2][2] - 1.0) / 2.0, -1.0, 1.0);
    const Vector3d axis = findAxis(turn, cosine);
    if (axis == Vector3d())
    {
        return from;
    }
    // Rodrigues' formula.
    const double angle = std::acos(cosine) * fraction;
    Matrixd part;
    const Vector3d rows[3]{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    for (int row = 0; row < 3; ++row)
    {
        part.setRow(row, rows[row] * std::cos(angle) + axis.cross(rows[row]) * std::sin(angle) +
                             axis * (axis.dot(rows[row]) * (1.0 - std::cos(angle))));
    }
    return from * part;
}
}  // namespace TW2::convert
