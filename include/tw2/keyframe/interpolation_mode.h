#pragma once

namespace TW2
{
/// What is done to the three rows of a matrix after it was blended from others. The translation is never touched.
enum class InterpolationMode : int
{
    Linear = 0,          ///< nothing
    Normalized = 1,      ///< each row is scaled to length 1
    Orthonormalized = 2  ///< the rows are made orthonormal, in row order
};
}  // namespace TW2
