#pragma once

#include "convert/joint_course.h"

#include <cmath>
#include <vector>

namespace TW2::convert
{
/// What a track's matrices are like, which decides how playback treats them between two keys.
enum class TrackForm
{
    Rigid,   ///< rotation and translation: rows are made orthonormal
    Scaled,  ///< with scale along its own axes: the same, and the rows get their lengths back
    General  ///< sheared: element by element
};

/// The form of a joint's matrices, those before its jumps included.
[[nodiscard]] TrackForm findForm(const Matrices& locals, const std::vector<Jump>& jumps);

/// What playback makes of two keys.
class KeyBlend
{
public:
    KeyBlend(const Matrixd& a, const Matrixd& b, TrackForm form) : m_a(a), m_way(b), m_eForm(form)
    {
        m_way -= a;
        for (int row = 0; form == TrackForm::Scaled && row < 3; ++row)
        {
            m_lengthsA[row] = a.getRow(row).length();
            m_lengthsB[row] = b.getRow(row).length();
        }
    }

    /// `fraction` of the way from the first key to the second.
    [[nodiscard]] Matrixd at(double fraction) const
    {
        Matrixd result = m_way;
        result *= fraction;
        result += m_a;
        if (m_eForm == TrackForm::General)
        {
            return result;
        }
        orthonormalize(result);
        for (int row = 0; m_eForm == TrackForm::Scaled && row < 3; ++row)
        {
            const double length = m_lengthsA[row] * (1.0 - fraction) + m_lengthsB[row] * fraction;
            result.setRow(row, result.getRow(row) * length);
        }
        return result;
    }

private:
    static Vector3d toUnit(const Vector3d& v)
    {
        const double squared = v.lengthSquared();
        return squared > 0.0 ? v * (1.0 / std::sqrt(squared)) : Vector3d();
    }
    static void orthonormalize(Matrixd& m)
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

    Matrixd m_a;
    Matrixd m_way;
    double m_lengthsA[3]{};
    double m_lengthsB[3]{};
    TrackForm m_eForm;
};
}  // namespace TW2::convert
