#include "motion/additive_pose.h"

#include "motion/vectors.h"

#include <tw2/motion/rotation.h>

namespace TW2
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;
using Vector = M_Vector3Template<double>;
}  // namespace

Matrix addDifference(const Matrix& pose, const Matrix& added, const Matrix& reference, double weight) noexcept
{
    if (weight == 0.0 || added == reference)
    {
        return pose;
    }
    // What the added pose turns by before the reference does: in the bone's own axes.
    const TW_Rotation difference = TW_Rotation::ofMatrix(added) * TW_Rotation::ofMatrix(reference).inverse();
    Vector turn[3];
    difference.scaled(weight).getRows(turn);
    Vector rows[3];
    double lengths[3];
    for (int r = 0; r < 3; ++r)
    {
        const Vector row = toDouble(pose.getRow(r));
        lengths[r] = row.length();
        rows[r] = row.normalized();
    }
    Matrix result;
    for (int r = 0; r < 3; ++r)
    {
        const Vector turned = rows[0] * turn[r].x + rows[1] * turn[r].y + rows[2] * turn[r].z;
        const double from = toDouble(reference.getRow(r)).length();
        const double ratio = from > 0.0 ? toDouble(added.getRow(r)).length() / from : 1.0;
        // A rigid bone stays rigid: what the keys were rounded by is no scale.
        constexpr double rigid = 1e-5;
        const double scale = ratio > 1.0 - rigid && ratio < 1.0 + rigid ? 1.0 : 1.0 + (ratio - 1.0) * weight;
        result.setRow(r, toFloat(turned * (lengths[r] * scale)));
    }
    result.setTranslation(toFloat(toDouble(pose.getTranslation()) +
                                  (toDouble(added.getTranslation()) - toDouble(reference.getTranslation())) * weight));
    return result;
}
}  // namespace TW2
