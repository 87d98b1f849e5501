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
}  // namespace TW2::convert
