#pragma once

#include "convert/clip_fitting.h"
#include "convert/fitted_motion.h"

#include <optional>

namespace TW2::convert
{
/// How far feet go, along the ground, while they stand in the other model's clip: close to the lowest place that they
/// come to, and hardly moving. Nothing when no foot does.
[[nodiscard]] std::optional<MotionSource::FootSlide> measureFootSlide(const Fitting& fitting, const Clip& clip,
                                                                      const Clip& fitted);
}  // namespace TW2::convert
