#include "viewer/orbit_camera.h"

#include "render/bounds.h"
#include "render/studio.h"

#include <platform/scene/camera.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TW2::viewer
{
namespace
{
constexpr float degree = std::numbers::pi_v<float> / 180.0F;
constexpr float steepest = 89.0F;
}  // namespace

void OrbitCamera::frame(std::span<const Vector> points, float aspect)
{
    render::Bounds bounds;
    for (const Vector& point : points)
    {
        bounds.add(point);
    }
    m_fSceneSize = std::max(bounds.getSize(), 1e-3F);
    render::Viewpoint viewpoint;
    viewpoint.m_fAzimuth = m_fAzimuth;
    viewpoint.m_fElevation = m_fElevation;
    viewpoint.m_fVerticalAngle = m_fVerticalAngle;
    P_Camera camera;
    render::frameCamera(camera, points, viewpoint, aspect);

    // The camera looks past the middle of what it shows; the point is where its line of sight comes nearest to it.
    const M_Matrix4x3Template<float>& world = camera.getObjectToWorldMatrix();
    const Vector forward = world.getRow(2);
    m_fDistance = std::max((bounds.getCenter() - world.getTranslation()).dot(forward), m_fSceneSize * 1e-3F);
    m_vTarget = world.getTranslation() + forward * m_fDistance;
}

void OrbitCamera::orbit(float azimuth, float elevation) noexcept
{
    m_fAzimuth = std::remainder(m_fAzimuth + azimuth, 360.0F);
    m_fElevation = std::clamp(m_fElevation + elevation, -steepest, steepest);
}

void OrbitCamera::pan(float right, float up) noexcept
{
    const Vector away = (getEye() - m_vTarget).normalized();
    const Vector side = away.cross({0.0F, 1.0F, 0.0F}).normalized();
    const Vector upwards = side.cross(away);
    const float height = 2.0F * m_fDistance * std::tan(m_fVerticalAngle * degree * 0.5F);
    m_vTarget = m_vTarget + side * (right * height) + upwards * (up * height);
}

void OrbitCamera::zoom(float factor) noexcept
{
    m_fDistance = std::clamp(m_fDistance * factor, m_fSceneSize * 1e-3F, m_fSceneSize * 1e3F);
}

OrbitCamera::Vector OrbitCamera::getEye() const noexcept
{
    const float azimuth = m_fAzimuth * degree;
    const float elevation = std::clamp(m_fElevation, -steepest, steepest) * degree;
    const Vector away{std::cos(elevation) * std::sin(azimuth), std::sin(elevation),
                      -std::cos(elevation) * std::cos(azimuth)};
    return m_vTarget + away * m_fDistance;
}

void OrbitCamera::apply(P_Camera& camera, float aspect) const
{
    camera.lookAt(getEye(), m_vTarget, {0.0F, 1.0F, 0.0F});
    const float nearest = std::max(m_fDistance * 0.02F, m_fSceneSize * 0.0005F);
    camera.setPerspective(m_fVerticalAngle, aspect, nearest, m_fDistance + 20.0F * m_fSceneSize);
}
}  // namespace TW2::viewer
