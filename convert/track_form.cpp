#include "convert/track_form.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
TrackForm findForm(const std::vector<Matrixd>& matrices)
{
    // What counts as unit length and as a right angle is finer than what playback tells apart.
    constexpr double unitTolerance = 5e-5;
    constexpr double angleTolerance = 1e-4;
    TrackForm form = TrackForm::Rigid;
    for (const Matrixd& matrix : matrices)
    {
        double lengths[3];
        for (int row = 0; row < 3; ++row)
        {
            lengths[row] = matrix.getRow(row).length();
            if (std::abs(lengths[row] - 1.0) > unitTolerance)
            {
                form = TrackForm::Scaled;
            }
        }
        if (matrix.determinant() < 0.0)
        {
            form = TrackForm::Scaled;  // a mirrored frame is no rotation
        }
        for (int row = 0; row < 3; ++row)
        {
            const int next = (row + 1) % 3;
            const double product = lengths[row] * lengths[next];
            if (product == 0.0 || std::abs(matrix.getRow(row).dot(matrix.getRow(next))) > angleTolerance * product)
            {
                return TrackForm::General;
            }
        }
    }
    return form;
}

Vector3d toUnit(const Vector3d& v)
{
    const double squared = v.lengthSquared();
    return squared > 0.0 ? v * (1.0 / std::sqrt(squared)) : Vector3d();
}

void orthonormalize(Matrixd& m)
{
    const Vector3d x = toUnit(m.getRow(0));
    const Vector3d y = toUnit(m.getRow(1) - x * m.getRow(1).dot(x));
    // What is left of the third row is at right angles to both.
    const Vector3d z = x.cross(y);
    const double side = m.getRow(2).dot(z);
    m.setRow(0, x);
    m.setRow(1, y);
    m.setRow(2, side > 0.0 ? z : side < 0.0 ? -z : Vector3d());
}
}  // namespace

TrackForm findForm(const Matrices& locals, const std::vector<Jump>& jumps)
{
    std::vector<Matrixd> before;
    for (const Jump& jump : jumps)
    {
        before.push_back(jump.m_before);
    }
    return std::max(findForm(locals.get()), findForm(before));
}

Matrixd blendKeys(const Matrixd& a, const Matrixd& b, double fraction, TrackForm form)
{
    Matrixd result = b;
    result -= a;
    result *= fraction;
    result += a;
    if (form == TrackForm::General)
    {
        return result;
    }
    orthonormalize(result);
    if (form == TrackForm::Scaled)
    {
        for (int row = 0; row < 3; ++row)
        {
            const double length = a.getRow(row).length() * (1.0 - fraction) + b.getRow(row).length() * fraction;
            result.setRow(row, result.getRow(row) * length);
        }
    }
    return result;
}
}  // namespace TW2::convert
