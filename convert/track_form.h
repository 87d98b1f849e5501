#pragma once

#include "convert/joint_course.h"

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

/// What playback makes of two keys, `fraction` of the way from `a` to `b`.
[[nodiscard]] Matrixd blendKeys(const Matrixd& a, const Matrixd& b, double fraction, TrackForm form);
}  // namespace TW2::convert
