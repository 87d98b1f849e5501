#pragma once

#include "convert/model.h"

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

/// The largest difference of two world matrices at a node's origin and `reach` away from it along its axes, and of the
/// directions of the axes.
[[nodiscard]] PoseError compare(const Matrixd& is, const Matrixd& shouldBe, double reach);

/// Distance from each node's origin, in its own space, within which its children and the vertices that it moves lie.
[[nodiscard]] std::vector<double> measureReach(const Model& model);

/// Whether `compare` would find a difference within a tolerance; the same question without square roots.
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
