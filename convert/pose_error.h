#pragma once

#include "convert/model.h"
#include "convert/skeleton.h"

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
}  // namespace TW2::convert
