#pragma once

#include <platform/export.h>
#include <platform/math/matrix4.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/scene/base_object.h>

#include <array>

/// A point of view: looks along the positive z axis of its own space, x to the right, y up (left-handed).
class TW2_PLATFORM_API P_Camera : public P_BaseObject
{
public:
    /// A plane in world space; a point p lies inside when normal·p + distance is not negative.
    struct Plane
    {
        M_Vector3Template<float> m_vNormal;  ///< points inwards, length 1
        float m_fDistance = 0.0F;            ///< a point p is inside where normal x p + distance is not below 0
    };
    /// The six planes around what the camera sees.
    using ViewVolume = std::array<Plane, 6>;

    /// At the origin, 60 degrees high, square, from 0.1 to 10000.
    P_Camera();
    ~P_Camera() override;

    [[nodiscard]] P_Context* getContext() const override;
    [[nodiscard]] ObjectType getType() const override;
    [[nodiscard]] const char* getObjectType() const override;

    /// @name View
    /// @{

    /// Stands at `eye` and looks at `target` with `up` upwards in the picture, all in the space of the camera's parent.
    /// An `up` along the line of sight, or a target at the eye, is replaced by one that works.
    void lookAt(const M_Vector3Template<float>& eye, const M_Vector3Template<float>& target,
                const M_Vector3Template<float>& up);
    /// World space to camera space.
    [[nodiscard]] M_Matrix4x3Template<float> getViewMatrix() const noexcept { return getWorldToObjectMatrix(); }
    /// @}

    /// @name Projection
    /// @{

    /// `verticalAngle`: the whole angle from bottom to top, in degrees; `aspect`: width over height; `nearDistance` and
    /// `farDistance`: the visible depths. Throws P_SceneException unless 0 < angle < 180, aspect > 0 and 0 < near <
    /// far.
    void setPerspective(float verticalAngle, float aspect, float nearDistance, float farDistance);
    /// In degrees.
    [[nodiscard]] float getVerticalAngle() const noexcept { return m_fVerticalAngle; }
    /// Width divided by height.
    [[nodiscard]] float getAspect() const noexcept { return m_fAspect; }
    /// In scene units.
    [[nodiscard]] float getNearDistance() const noexcept { return m_fNear; }
    /// Camera space to clip space, for row vectors: x and y from -w to w, z from 0 (near) to w (far).
    [[nodiscard]] M_Matrix4Template<float> getProjectionMatrix() const noexcept;
    /// @}

    /// @name View volume
    /// @{

    /// Left, right, bottom, top, near and far plane, in world space. Computed when it is asked for and kept until the
    /// camera moves.
    [[nodiscard]] const ViewVolume& getViewVolume() const noexcept;
    /// Whether a sphere in world space touches the view volume. Here and below, what lies just outside of an edge or a
    /// corner of the volume may be reported as well.
    [[nodiscard]] bool isSphereInView(const M_Vector3Template<float>& center, float radius) const noexcept;
    /// Whether a box, given in the space that `toWorld` takes to the world, touches the view volume.
    [[nodiscard]] bool isBoxInView(const M_Vector3Template<float>& minimum, const M_Vector3Template<float>& maximum,
                                   const M_Matrix4x3Template<float>& toWorld) const noexcept;
    /// @}

private:
    [[nodiscard]] ViewVolume computeViewVolume() const noexcept;

    float m_fVerticalAngle = 60.0F;
    float m_fAspect = 1.0F;
    float m_fNear = 0.1F;
    float m_fFar = 10000.0F;
    /// The view volume that was asked for last, and the camera's change count then.
    mutable ViewVolume m_viewVolume;
    mutable unsigned long long m_uiViewChange = 0;
    mutable bool m_bViewVolumeKnown = false;
};
