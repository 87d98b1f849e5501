#pragma once

#include <platform/math/matrix4x3.h>

namespace TW2
{
/// `pose` with `weight` of the rigid difference from `reference` to `added`: the turn in the bone's own axes, of which
/// the weight takes a part of the angle, the translation, and the ratio of the rows' lengths. Rows of unit length stay
/// of unit length; rows without length stay as they are.
[[nodiscard]] M_Matrix4x3Template<float> addDifference(const M_Matrix4x3Template<float>& pose,
                                                       const M_Matrix4x3Template<float>& added,
                                                       const M_Matrix4x3Template<float>& reference,
                                                       double weight) noexcept;
}  // namespace TW2
