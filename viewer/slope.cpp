#include "viewer/slope.h"

#include <cmath>
#include <numbers>

namespace TW2::viewer
{
render::GroundPlane Slope::getPlane() const
{
    constexpr float degree = std::numbers::pi_v<float> / 180.0F;
    const float rise = std::tan(m_fDegrees * degree);
    return {0.0F, rise * std::sin(m_fTowards * degree), -rise * std::cos(m_fTowards * degree)};
}
}  // namespace TW2::viewer
