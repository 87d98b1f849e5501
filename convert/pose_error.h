#pragma once

#include "convert/model.h"
#include "convert/skeleton.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace TW2::convert
{
/// How far the played pose may be from the model's, wherever it is looked at.
struct Tolerance
{
    double m_dDistance = 0.0;  ///< scene units, of every node, of its children and of the vertices that it moves
    double m_dDegrees = 0.0;   ///< of every node's axes
};

/// The largest differences of a played clip from the model's.
struct PoseError
{
    double m_dDistance = 0.0;  ///< scene units
    double m_dDegrees = 0.0;

    void add(const PoseError& other) noexcept;
    [[nodiscard]] bool isWithin(const Tolerance& tolerance) const noexcept
    {
        return m_dDistance <= tolerance.m_dDistance && m_dDegrees <= tolerance.m_dDegrees;
    }
};

/// What the places are off at most, squared, at an origin that is off by `shift` and along an axis on both sides of it.
[[nodiscard]] inline double getFarthest(double shiftSquared, const Vector3d& shift, const Vector3d& apart)
{
    return shiftSquared + apart.lengthSquared() + 2.0 * std::abs(shift.dot(apart));
}
/// The largest difference of pairs of world matrices at a node's origin and `reach` away from it along its axes, and of
/// the directions of the axes. An axis that is lost counts as a right angle.
class PoseDifference
{
public:
    void add(const Matrixd& is, const Matrixd& shouldBe, double reach);
    [[nodiscard]] PoseError get() const;

private:
    double m_dDistanceSquared = 0.0;
    double m_dTurn = 0.0;  // of an angle up to 90 degrees the square of its sine; of a larger one 2 less that
};

/// Distance from each joint's origin, in its own space, within which its children and the vertices that it moves lie.
[[nodiscard]] std::vector<double> measureReach(const Model& model, const Skeleton& skeleton);

/// Whether the difference of two world matrices is within a tolerance. Axes at more than a right angle never are.
class ErrorLimit
{
public:
    explicit ErrorLimit(const Tolerance& tolerance);

    [[nodiscard]] bool allows(const Matrixd& is, const Matrixd& shouldBe, double reach) const;

private:
    double m_dDistanceSquared;
    double m_dCosineSquared;
};

inline void PoseDifference::add(const Matrixd& is, const Matrixd& shouldBe, double reach)
{
    const Vector3d shift = is.getTranslation() - shouldBe.getTranslation();
    const double shiftSquared = shift.lengthSquared();
    for (int row = 0; row < 3; ++row)
    {
        const Vector3d a = is.getRow(row);
        const Vector3d b = shouldBe.getRow(row);
        m_dDistanceSquared = std::max(m_dDistanceSquared, getFarthest(shiftSquared, shift, (a - b) * reach));
        if (const double length = b.lengthSquared(); length > 0.0)
        {
            const double lengths = a.lengthSquared() * length;
            const double sine = lengths > 0.0 ? std::min(a.cross(b).lengthSquared() / lengths, 1.0) : 1.0;
            m_dTurn = std::max(m_dTurn, a.dot(b) < 0.0 ? 2.0 - sine : sine);
        }
    }
}

inline bool ErrorLimit::allows(const Matrixd& is, const Matrixd& shouldBe, double reach) const
{
    const Vector3d shift = is.getTranslation() - shouldBe.getTranslation();
    const double shiftSquared = shift.lengthSquared();
    for (int row = 0; row < 3; ++row)
    {
        const Vector3d a = is.getRow(row);
        const Vector3d b = shouldBe.getRow(row);
        const double cosine = a.dot(b);
        const double lengths = a.lengthSquared() * b.lengthSquared();
        if (getFarthest(shiftSquared, shift, (a - b) * reach) > m_dDistanceSquared ||
            (lengths > 0.0 && (cosine <= 0.0 || cosine * cosine < m_dCosineSquared * lengths)))
        {
            return false;
        }
    }
    return true;
}
}  // namespace TW2::convert
