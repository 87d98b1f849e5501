#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene_exception.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace
{
using Vector = M_Vector3Template<float>;

double getHalfAngle(float degrees)
{
    return static_cast<double>(degrees) * std::numbers::pi / 360.0;
}

Vector toFloat(const M_Vector3Template<double>& v)
{
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

M_Vector3Template<double> toDouble(const Vector& v)
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

/// A vector whose dot product with a point of the space before `matrix` is that of `normal` with the point behind it,
/// up to the translation.
Vector pullBack(const M_Matrix4x3Template<float>& matrix, const Vector& normal)
{
    return {matrix.getRow(0).dot(normal), matrix.getRow(1).dot(normal), matrix.getRow(2).dot(normal)};
}
}  // namespace

P_Camera::P_Camera() = default;

P_Camera::~P_Camera()
{
    P_Context::forgetCamera(this);
}

P_Context* P_Camera::getContext() const
{
    return getStoredContext();
}

P_BaseObject::ObjectType P_Camera::getType() const
{
    return ObjectType::Camera;
}

const char* P_Camera::getObjectType() const
{
    return "P_Camera";
}

void P_Camera::lookAt(const Vector& eye, const Vector& target, const Vector& up)
{
    M_Vector3Template<double> forward = (toDouble(target) - toDouble(eye)).normalized();
    if (forward.lengthSquared() == 0.0)
    {
        forward = {0.0, 0.0, 1.0};
    }
    M_Vector3Template<double> right = toDouble(up).normalized().cross(forward);
    constexpr double parallel = 1e-6;
    if (right.length() < parallel)
    {
        const bool alongY = std::abs(forward.y) > 0.9;
        right = (alongY ? M_Vector3Template<double>{0.0, 0.0, 1.0} : M_Vector3Template<double>{0.0, 1.0, 0.0})
                    .cross(forward);
    }
    right = right.normalized();
    M_Matrix4x3Template<float> matrix;
    matrix.setRow(0, toFloat(right));
    matrix.setRow(1, toFloat(forward.cross(right)));
    matrix.setRow(2, toFloat(forward));
    matrix.setTranslation(eye);
    setMatrix(matrix);
}

void P_Camera::setPerspective(float verticalAngle, float aspect, float nearDistance, float farDistance)
{
    if (!(verticalAngle > 0.0F && verticalAngle < 180.0F && aspect > 0.0F && nearDistance > 0.0F &&
          farDistance > nearDistance))
    {
        throw P_SceneException("A perspective needs 0 < angle < 180, aspect > 0 and 0 < near < far");
    }
    m_fVerticalAngle = verticalAngle;
    m_fAspect = aspect;
    m_fNear = nearDistance;
    m_fFar = farDistance;
    m_bViewVolumeKnown = false;
}

M_Matrix4Template<float> P_Camera::getProjectionMatrix() const noexcept
{
    const double height = 1.0 / std::tan(getHalfAngle(m_fVerticalAngle));
    const double nearDistance = m_fNear;
    const double farDistance = m_fFar;
    const double depth = farDistance / (farDistance - nearDistance);
    M_Matrix4Template<float> result;
    result.m[0][0] = static_cast<float>(height / static_cast<double>(m_fAspect));
    result.m[1][1] = static_cast<float>(height);
    result.m[2][2] = static_cast<float>(depth);
    result.m[2][3] = 1.0F;
    result.m[3][2] = static_cast<float>(-nearDistance * depth);
    result.m[3][3] = 0.0F;
    return result;
}

/// An object that is out of date is not marked again when it moves: only with a valid world matrix do equal change
/// counts mean that it has not moved.
const P_Camera::ViewVolume& P_Camera::getViewVolume() const noexcept
{
    if (!m_bViewVolumeKnown || !isObjectToWorldMatrixValid() || getMatrixChangeCount() != m_uiViewChange)
    {
        m_viewVolume = computeViewVolume();
        m_uiViewChange = getMatrixChangeCount();
        m_bViewVolumeKnown = true;
    }
    return m_viewVolume;
}

P_Camera::ViewVolume P_Camera::computeViewVolume() const noexcept
{
    const double top = std::tan(getHalfAngle(m_fVerticalAngle));
    const double side = top * static_cast<double>(m_fAspect);
    const auto plane = [](double x, double y, double z, float distance) {
        return Plane{toFloat(M_Vector3Template<double>{x, y, z}.normalized()), distance};
    };
    ViewVolume planes{plane(1.0, 0.0, side, 0.0F), plane(-1.0, 0.0, side, 0.0F),   plane(0.0, 1.0, top, 0.0F),
                      plane(0.0, -1.0, top, 0.0F), plane(0.0, 0.0, 1.0, -m_fNear), plane(0.0, 0.0, -1.0, m_fFar)};
    const M_Matrix4x3Template<float>& view = getViewMatrix();
    for (Plane& p : planes)
    {
        const Vector normal = pullBack(view, p.m_vNormal);
        const float distance = view.getTranslation().dot(p.m_vNormal) + p.m_fDistance;
        const float length = normal.length();
        const float scale = length > 0.0F ? 1.0F / length : 1.0F;
        p = {normal * scale, distance * scale};
    }
    return planes;
}

bool P_Camera::isSphereInView(const Vector& center, float radius) const noexcept
{
    const ViewVolume& planes = getViewVolume();
    return std::none_of(planes.begin(), planes.end(),
                        [&](const Plane& p) { return p.m_vNormal.dot(center) + p.m_fDistance < -radius; });
}

bool P_Camera::isBoxInView(const Vector& minimum, const Vector& maximum,
                           const M_Matrix4x3Template<float>& toWorld) const noexcept
{
    const ViewVolume& planes = getViewVolume();
    return std::none_of(planes.begin(), planes.end(),
                        [&](const Plane& p)
                        {
                            // The corner farthest inside, in the box's own space.
                            const Vector n = pullBack(toWorld, p.m_vNormal);
                            const float inside = std::max(n.x * minimum.x, n.x * maximum.x) +
                                                 std::max(n.y * minimum.y, n.y * maximum.y) +
                                                 std::max(n.z * minimum.z, n.z * maximum.z);
                            return inside + toWorld.getTranslation().dot(p.m_vNormal) + p.m_fDistance < 0.0F;
                        });
}
