#pragma once

#include "render/view.h"

namespace TW2::viewer
{
/// Ground that rises evenly, through the world's origin.
struct Slope
{
    static constexpr float steepest = 45.0F;

    float m_fDegrees = 0.0F;  ///< how steeply it rises, -45 to 45; below 0 it falls
    float m_fTowards = 0.0F;  ///< in which direction, in degrees around: 0 to the front (negative z), 90 to +x

    [[nodiscard]] render::GroundPlane getPlane() const;
};
}  // namespace TW2::viewer
