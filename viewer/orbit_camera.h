#pragma once

#include <platform/math/vector3.h>

#include <span>

class P_Camera;

namespace TW2::viewer
{
/// A camera that circles around a point and always stands upright: what a mouse, a finger or the arrow keys turn.
///
/// Angles in degrees, lengths in scene units. Only plain data: a copy is a remembered point of view.
class OrbitCamera
{
public:
    using Vector = M_Vector3Template<float>;

    float m_fAzimuth = 35.0F;        ///< around the upright axis; 0: from the front (negative z), 90: from +x
    float m_fElevation = 12.0F;      ///< above the horizon, -89 to 89
    float m_fVerticalAngle = 35.0F;  ///< field of view from bottom to top
    float m_fDistance = 10.0F;       ///< from the point to the eye, above 0
    Vector m_vTarget;                ///< the point

    /// Moves the point and the distance so that `points` (at least one, all finite) fill a picture of that aspect
    /// (width over height); the direction stays.
    void frame(std::span<const Vector> points, float aspect);
    /// Circles by angles; the elevation stops before the poles.
    void orbit(float azimuth, float elevation) noexcept;
    /// Moves eye and point along the picture, by parts of its height at the point's distance.
    void pan(float right, float up) noexcept;
    /// Multiplies the distance: below 1 comes nearer. Stays between a thousandth and a thousand times the size given to
    /// `frame`.
    void zoom(float factor) noexcept;

    [[nodiscard]] Vector getEye() const noexcept;
    /// Places `camera` (which hangs under nothing) here.
    void apply(P_Camera& camera, float aspect) const;

    friend bool operator==(const OrbitCamera&, const OrbitCamera&) = default;

private:
    float m_fSceneSize = 1.0F;
};
}  // namespace TW2::viewer
