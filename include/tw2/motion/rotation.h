#pragma once

#include <tw2/export.h>

#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>

namespace TW2
{
/// A turn in space as a unit quaternion, in double precision: what is added up over a walk of an hour stays a rotation.
///
/// The product `a * b` turns by `a` first and then by `b`, as products of matrices do. Plain data; the identity when
/// default-constructed. All operations give the same bits on every machine: they are made of + - * / and square roots.
struct TW2_API TW_Rotation
{
    /// A point or a direction.
    using Vector = M_Vector3Template<double>;

    double m_dW = 1.0;  ///< cosine of half the angle
    Vector m_vAxis;     ///< the axis, times the sine of half the angle

    /// @name Making
    /// @{

    /// About an axis of any length above 0; degrees, counter-clockwise when the axis points at the viewer.
    [[nodiscard]] static TW_Rotation aboutAxis(const Vector& axis, double degrees);
    /// The shortest that turns direction `from` into direction `to`. Between opposite directions it is the half turn
    /// about an axis at right angles to `from`, always the same for the same `from`. The identity when either is 0.
    [[nodiscard]] static TW_Rotation between(const Vector& from, const Vector& to);
    /// Of the basis rows of a matrix, whose lengths do not count. A mirrored block is taken with its third row turned
    /// around; without three independent rows it is the identity.
    [[nodiscard]] static TW_Rotation ofMatrix(const M_Matrix4x3Template<float>& matrix);
    /// @}

    /// @name Calculating
    /// @{

    /// The turn back.
    [[nodiscard]] TW_Rotation inverse() const { return {m_dW, -m_vAxis}; }
    /// What the turn makes of a direction, or of a point about the origin.
    [[nodiscard]] Vector turn(const Vector& v) const;
    /// The same axis, `factor` times the angle, which is taken as at most half a turn.
    [[nodiscard]] TW_Rotation scaled(double factor) const;
    /// The same axis, an angle of at most so many degrees, 0 to 180.
    [[nodiscard]] TW_Rotation limited(double degrees) const;
    /// The angle, 0 to 180 degrees.
    [[nodiscard]] double getDegrees() const;
    /// The part that turns about `axis` (of length 1): this rotation is that part and a turn about an axis at right
    /// angles. The identity where that is not determined.
    [[nodiscard]] TW_Rotation getTwist(const Vector& axis) const;
    /// Of length 1 again; the identity when it has no length.
    [[nodiscard]] TW_Rotation normalized() const;
    /// The three basis rows.
    void getRows(Vector rows[3]) const;
    /// First `a`, then `b`, as with matrices.
    friend TW2_API TW_Rotation operator*(const TW_Rotation& a, const TW_Rotation& b);
    friend bool operator==(const TW_Rotation&, const TW_Rotation&) = default;
    /// @}
};

/// A rigid movement in double precision: turn, then move. `a * b` is `a` first and then `b`, as with matrices.
///
///     TW_Travel place;                                  // where the character stands
///     ... every frame: place = step * place;            // a step is in the character's own space
///     character.setMatrix(place.toMatrix());
struct TW2_API TW_Travel
{
    TW_Rotation m_rotation;                    ///< about the origin, before the offset
    M_Vector3Template<double> m_vTranslation;  ///< the offset, in scene units

    /// Of a matrix, whose row lengths do not count; see TW_Rotation::ofMatrix.
    [[nodiscard]] static TW_Travel ofMatrix(const M_Matrix4x3Template<float>& matrix);
    /// The same as a matrix of floats.
    [[nodiscard]] M_Matrix4x3Template<float> toMatrix() const;
    /// The way back.
    [[nodiscard]] TW_Travel inverse() const;
    /// Turned about y, by at most so many degrees, so that `forward`, in its own space, points towards a point.
    /// Characters of converted models look along negative z. Straight above or below the point it stays as it is.
    [[nodiscard]] TW_Travel turnedTowards(const M_Vector3Template<double>& point, double degrees,
                                          const M_Vector3Template<double>& forward = {0.0, 0.0, -1.0}) const;
    /// `count` times one after the other; negative counts go back.
    [[nodiscard]] TW_Travel repeated(long long count) const;
    /// Where the travel takes a point.
    [[nodiscard]] M_Vector3Template<double> transformPoint(const M_Vector3Template<double>& p) const
    {
        return m_rotation.turn(p) + m_vTranslation;
    }
    /// First `a`, then `b`, as with matrices.
    friend TW2_API TW_Travel operator*(const TW_Travel& a, const TW_Travel& b);
    friend bool operator==(const TW_Travel&, const TW_Travel&) = default;
};
}  // namespace TW2
