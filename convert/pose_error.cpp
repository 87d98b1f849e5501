#include "convert/pose_error.h"

#include "convert/precision.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TW2::convert
{
namespace
{
constexpr double degreesPerRadian = 180.0 / std::numbers::pi;

/// What the places are off at most, squared, at an origin that is off by `shift` and along an axis on both sides of it.
double getFarthest(double shiftSquared, const Vector3d& shift, const Vector3d& apart)
{
    return shiftSquared + apart.lengthSquared() + 2.0 * std::abs(shift.dot(apart));
}
}  // namespace

void PoseError::add(const PoseError& other) noexcept
{
    m_dDistance = std::max(m_dDistance, other.m_dDistance);
    m_dDegrees = std::max(m_dDegrees, other.m_dDegrees);
}

void PoseDifference::add(const Matrixd& is, const Matrixd& shouldBe, double reach)
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

PoseError PoseDifference::get() const
{
    const bool obtuse = m_dTurn > 1.0;
    const double acute = std::asin(std::sqrt(obtuse ? 2.0 - m_dTurn : m_dTurn)) * degreesPerRadian;
    return {std::sqrt(m_dDistanceSquared), obtuse ? 180.0 - acute : acute};
}

ErrorLimit::ErrorLimit(const Tolerance& tolerance)
    : m_dDistanceSquared(tolerance.m_dDistance * tolerance.m_dDistance),
      m_dCosineSquared(std::pow(std::cos(std::min(tolerance.m_dDegrees, 90.0) / degreesPerRadian), 2.0))
{
}

bool ErrorLimit::allows(const Matrixd& is, const Matrixd& shouldBe, double reach) const
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

std::vector<double> measureReach(const Model& model, const Skeleton& skeleton)
{
    std::vector<double> reach(skeleton.m_vecJoints.size(), 0.0);
    const auto extend = [&reach](int joint, const Vector3d& point)
    {
        double& distance = reach[static_cast<std::size_t>(joint)];
        distance = std::max(distance, point.length());
    };
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        if (const Node& node = model.m_vecNodes[i]; node.m_iParent >= 0)
        {
            extend(node.m_iParent, node.m_local.getTranslation());
        }
    }
    for (std::size_t i = 0; i < model.m_vecMeshes.size(); ++i)
    {
        const Mesh& mesh = model.m_vecMeshes[i];
        for (std::size_t b = 0; b < mesh.m_vecBones.size(); ++b)
        {
            const Bone& bone = mesh.m_vecBones[b];
            for (const auto& [vertex, weight] : bone.m_vecWeights)
            {
                constexpr float slight = 0.05F;  // such a weight moves a vertex by a twentieth of the bone's error
                if (weight >= slight)
                {
                    extend(skeleton.m_vecBones[i][b],
                           bone.m_offset.transformPoint(toDouble(mesh.m_vecPositions[vertex])));
                }
            }
        }
    }
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        for (const int index : model.m_vecNodes[i].m_vecMeshes)
        {
            const Mesh& mesh = model.m_vecMeshes[static_cast<std::size_t>(index)];
            for (std::size_t v = 0; mesh.m_vecBones.empty() && v < mesh.m_vecPositions.size(); ++v)
            {
                extend(static_cast<int>(i), toDouble(mesh.m_vecPositions[v]));
            }
        }
    }
    return reach;
}
}  // namespace TW2::convert
