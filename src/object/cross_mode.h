#pragma once

#include <tw2/keyframe/interpolation_mode.h>

#include <platform/math/matrix4x3.h>

#include <cstddef>

namespace TW2
{
/// Corrects up to four blended matrices in place, together: their rows are normalized or made orthonormal as the mode
/// says, the translation stays. A row of length zero stays zero, and nothing is projected on it. `count` is 1 to 4.
void correctMatrices(InterpolationMode mode, M_Matrix4x3Template<float>* const* matrices, std::size_t count) noexcept;
}  // namespace TW2
