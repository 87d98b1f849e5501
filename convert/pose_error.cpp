#include "convert/pose_error.h"

#include "convert/precision.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TW2::convert
{
namespace
{
/// Chord between two directions: 2·sin(half the angle between them).
double chord(const Vector3d& a, const Vector3d& b)
{
    return (a.normalized() - b.normalized()).length();
}

double toDegrees(double chordLength)
{
    return 2.0 * std::asin(std::min(chordLength * 0.5, 1.0)) * 180.0 / std::numbers::pi;
}
}  // namespace

void PoseError::add(const PoseError& other) noexcept
{
    m_dDistance = std::max(m_dDistance, other.m_dDistance);
    m_dDegrees = std::max(m_dDegrees, other.m_dDegrees);
}

PoseError compare(const Matrixd& is, const Matrixd& shouldBe, double reach)
{
    PoseError error;
    const Vector3d shift = is.getTranslation() - shouldBe.getTranslation();
    error.m_dDistance = shift.length();
    double turn = 0.0;
    for (int row = 0; row < 3; ++row)
    {
        const Vector3d a = is.getRow(row);
        const Vector3d b = shouldBe.getRow(row);
        error.m_dDistance = std::max(error.m_dDistance, (shift + (a - b) * reach).length());
        error.m_dDistance = std::max(error.m_dDistance, (shift - (a - b) * reach).length());
        if (b.lengthSquared() > 0.0)
        {
            turn = std::max(turn, chord(a, b));
        }
    }
    error.m_dDegrees = toDegrees(turn);
    return error;
}

ErrorLimit::ErrorLimit(const Tolerance& tolerance)
    : m_dDistanceSquared(tolerance.m_dDistance * tolerance.m_dDistance),
      m_dCosineSquared(std::pow(std::cos(tolerance.m_dDegrees * std::numbers::pi / 180.0), 2.0))
{
}

bool ErrorLimit::allows(const Matrixd& is, const Matrixd& shouldBe, double reach) const
{
    const Vector3d shift = is.getTranslation() - shouldBe.getTranslation();
    if (shift.lengthSquared() > m_dDistanceSquared)
    {
        return false;
    }
    for (int row = 0; row < 3; ++row)
    {
        const Vector3d a = is.getRow(row);
        const Vector3d b = shouldBe.getRow(row);
        const Vector3d apart = (a - b) * reach;
        const double cosine = a.dot(b);
        const double lengths = a.lengthSquared() * b.lengthSquared();
        if ((shift + apart).lengthSquared() > m_dDistanceSquared ||
            (shift - apart).lengthSquared() > m_dDistanceSquared ||
            (lengths > 0.0 && (cosine <= 0.0 || cosine * cosine < m_dCosineSquared * lengths)))
        {
            return false;
        }
    }
    return true;
}

std::vector<double> measureReach(const Model& model)
{
    std::vector<double> reach(model.m_vecNodes.size(), 0.0);
    const auto extend = [&reach](std::size_t node, const Vector3d& point)
    { reach[node] = std::max(reach[node], point.length()); };
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        const Node& node = model.m_vecNodes[i];
        if (node.m_iParent >= 0)
        {
            extend(static_cast<std::size_t>(node.m_iParent), node.m_local.getTranslation());
        }
        for (const int index : node.m_vecMeshes)
        {
            const Mesh& mesh = model.m_vecMeshes[static_cast<std::size_t>(index)];
            for (const Vector3& position : mesh.m_vecBones.empty() ? mesh.m_vecPositions : std::vector<Vector3>())
            {
                extend(i, toDouble(position));
            }
        }
    }
    for (const Mesh& mesh : model.m_vecMeshes)
    {
        for (const Bone& bone : mesh.m_vecBones)
        {
            for (const auto& [vertex, weight] : bone.m_vecWeights)
            {
                constexpr float slight = 0.05F;  // such a weight moves a vertex by a twentieth of the bone's error
                if (weight >= slight)
                {
                    extend(static_cast<std::size_t>(bone.m_iNode),
                           bone.m_offset.transformPoint(toDouble(mesh.m_vecPositions[vertex])));
                }
            }
        }
    }
    return reach;
}
}  // namespace TW2::convert
