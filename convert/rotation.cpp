#include "convert/rotation.h"

#include <algorithm>

namespace TW2::convert
{
Matrixd turnShortest(const Matrixd& from, const Matrixd& to, double fraction)
{
    const Matrixd turn = from.inverse() * to;
    const double cosine = std::clamp((turn.m[0][0] + turn.m[1][1] + turn.m[2][2] - 1.0) / 2.0, -1.0, 1.0);
    const Vector3d axis =
        Vector3d{turn.m[1][2] - turn.m[2][1], turn.m[2][0] - turn.m[0][2], turn.m[0][1] - turn.m[1][0]}.normalized();
    if (axis == Vector3d())
    {
        return fraction < 1.0 ? from : to;
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
