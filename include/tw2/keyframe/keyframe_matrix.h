#pragma once

#include <tw2/export.h>

#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>

#include <type_traits>

namespace TW2
{
/// Rigid transform in seven floats: a translation and a rotation quaternion, which need not be of unit length.
///
/// Plain data. A default-constructed one is seven zeros, which is no rotation; it turns into the identity block.
class TW2_API TW_KeyframeMatrix
{
public:
    M_Vector3Template<float> m_vTranslation;  ///< the translation row
    float m_fRotationW = 0.0F;                ///< scalar part of the quaternion
    M_Vector3Template<float> m_vRotation;     ///< vector part of the quaternion

    TW_KeyframeMatrix() = default;
    /// The transform of `matrix`, whose 3x3 block is a rotation. A scaled or skewed block gives some quaternion.
    explicit TW_KeyframeMatrix(const M_Matrix4x3Template<float>& matrix);

    /// The transform as a matrix. The rotation is divided by the quaternion's squared length, so its rows are of unit
    /// length up to rounding.
    [[nodiscard]] M_Matrix4x3Template<float> toMatrix() const;

    /// @name Arithmetic on all seven floats
    /// @{

    /// All three leave the quaternion at whatever length the sum has; reading it as a matrix divides by that length.
    TW_KeyframeMatrix& operator+=(const TW_KeyframeMatrix& other);
    /// As above.
    TW_KeyframeMatrix& operator-=(const TW_KeyframeMatrix& other);
    /// As above.
    TW_KeyframeMatrix& operator*=(float factor);
    /// @}

    friend bool operator==(const TW_KeyframeMatrix&, const TW_KeyframeMatrix&) = default;
};

static_assert(std::is_trivially_copyable_v<TW_KeyframeMatrix> && sizeof(TW_KeyframeMatrix) == 28);
}  // namespace TW2
