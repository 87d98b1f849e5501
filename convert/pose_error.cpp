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
}  // namespace

void PoseError::add(const PoseError& other) noexcept
{
    m_dDistance = std::max(m_dDistance, other.m_dDistance);
    m_dDegrees = std::max(m_dDegrees, other.m_dDegrees);
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
