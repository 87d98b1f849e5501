#include "convert/drawn_sample.h"

#include "convert/precision.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
constexpr std::size_t mostVertices = 600;
}  // namespace

DrawnSample::DrawnSample(const Model& model, const Skeleton& skeleton)
{
    std::vector<Matrixd> restToJoint;
    for (const Joint& joint : skeleton.m_vecJoints)
    {
        restToJoint.push_back(joint.m_world.inverse());
    }
    const std::size_t perMesh =
        std::max<std::size_t>(mostVertices / std::max<std::size_t>(model.m_vecMeshes.size(), 1), 8);
    for (std::size_t i = 0; i < model.m_vecMeshes.size(); ++i)
    {
        const Mesh& mesh = model.m_vecMeshes[i];
        const std::size_t holder = static_cast<std::size_t>(std::max(skeleton.m_vecHolders[i], 0));
        if (mesh.m_vecIndices.empty() || (mesh.m_vecBones.empty() && skeleton.m_vecHolders[i] < 0))
        {
            continue;
        }
        InfluenceSummary ignored;
        const std::vector<GeometryBuilder::Influences> influences =
            chooseInfluences(mesh, static_cast<int>(holder), skeleton.m_vecBones[i], ignored);
        const std::size_t stride = mesh.m_vecIndices.size() / perMesh + 1;
        for (std::size_t k = 0; k < mesh.m_vecIndices.size(); k += stride)
        {
            const unsigned int vertex = mesh.m_vecIndices[k];
            const Vector3d position = toDouble(mesh.m_vecPositions[vertex]);
            std::vector<Pull> pulls;
            for (const GeometryBuilder::Influence& influence : influences[vertex])
            {
                if (influence.m_fWeight <= 0.0F)
                {
                    continue;
                }
                const auto joint = static_cast<std::size_t>(influence.m_iBone);
                const auto bone =
                    std::find(skeleton.m_vecBones[i].begin(), skeleton.m_vecBones[i].end(), influence.m_iBone);
                const Vector3d written =
                    restToJoint[joint].transformPoint(skeleton.m_vecMeshToSkin[i].transformPoint(position));
                const bool bound = bone != skeleton.m_vecBones[i].end();
                const auto index = static_cast<std::size_t>(bone - skeleton.m_vecBones[i].begin());
                const Vector3d inFile = bound ? mesh.m_vecBones[index].m_offset.transformPoint(position)
                                        : mesh.m_vecBones.empty() ? position
                                                                  : written;
                pulls.push_back({joint, static_cast<double>(influence.m_fWeight), inFile, written});
            }
            m_vecVertices.push_back(std::move(pulls));
        }
    }
}

double DrawnSample::measureDistance(const std::vector<Matrixd>& played, const std::vector<Matrixd>& shouldBe,
                                    const std::vector<bool>* moving) const
{
    double largest = 0.0;  // squared
    for (const std::vector<Pull>& vertex : m_vecVertices)
    {
        if (moving && std::none_of(vertex.begin(), vertex.end(),
                                   [moving](const Pull& pull) { return (*moving)[pull.m_uiJoint]; }))
        {
            continue;
        }
        Vector3d apart;
        for (const Pull& pull : vertex)
        {
            apart = apart + (played[pull.m_uiJoint].transformPoint(pull.m_vWritten) -
                             shouldBe[pull.m_uiJoint].transformPoint(pull.m_vInFile)) *
                                pull.m_dWeight;
        }
        largest = std::max(largest, apart.lengthSquared());
    }
    return std::sqrt(largest);
}

DrawnBounds::DrawnBounds(const Model& model, const Skeleton& skeleton)
{
    std::vector<Box> boxes(skeleton.m_vecJoints.size());
    const auto extendPart = [&boxes](int joint, const Vector3d& point)
    { boxes[static_cast<std::size_t>(joint)].add(point); };
    for (std::size_t i = 0; i < model.m_vecMeshes.size(); ++i)
    {
        const Mesh& mesh = model.m_vecMeshes[i];
        std::vector<bool> bound(mesh.m_vecPositions.size(), false);
        for (std::size_t b = 0; b < mesh.m_vecBones.size(); ++b)
        {
            for (const auto& [vertex, weight] : mesh.m_vecBones[b].m_vecWeights)
            {
                bound[vertex] = true;
                extendPart(skeleton.m_vecBones[i][b],
                           mesh.m_vecBones[b].m_offset.transformPoint(toDouble(mesh.m_vecPositions[vertex])));
            }
        }
        const int holder = skeleton.m_vecHolders[i];
        if (holder < 0 || mesh.m_vecBones.empty())
        {
            continue;
        }
        const Matrixd toHolder =
            skeleton.m_vecMeshToSkin[i] * skeleton.m_vecJoints[static_cast<std::size_t>(holder)].m_world.inverse();
        for (std::size_t v = 0; v < bound.size(); ++v)
        {
            if (!bound[v])
            {
                extendPart(holder, toHolder.transformPoint(toDouble(mesh.m_vecPositions[v])));
            }
        }
    }
    for (std::size_t node = 0; node < model.m_vecNodes.size(); ++node)
    {
        for (const int index : model.m_vecNodes[node].m_vecMeshes)
        {
            const Mesh& mesh = model.m_vecMeshes[static_cast<std::size_t>(index)];
            for (std::size_t v = 0; mesh.m_vecBones.empty() && v < mesh.m_vecPositions.size(); ++v)
            {
                extendPart(static_cast<int>(node), toDouble(mesh.m_vecPositions[v]));
            }
        }
    }
    for (std::size_t joint = 0; joint < boxes.size(); ++joint)
    {
        if (!boxes[joint].isEmpty())
        {
            m_vecParts.push_back({joint, boxes[joint]});
        }
    }
}

void DrawnBounds::add(const std::vector<Matrixd>& world)
{
    for (const Part& part : m_vecParts)
    {
        for (unsigned int corner = 0; corner < Box::cornerCount; ++corner)
        {
            const Vector3d point = world[part.m_uiJoint].transformPoint(part.m_box.getCorner(corner));
            m_box.add(point);
            m_dRadius = std::max(m_dRadius, point.length());
        }
    }
}

double measureSize(const Model& model, const Skeleton& skeleton)
{
    Box box;
    for (std::size_t i = 0; i < model.m_vecMeshes.size(); ++i)
    {
        const Mesh& mesh = model.m_vecMeshes[i];
        if (skeleton.m_vecHolders[i] >= 0 || !mesh.m_vecBones.empty())
        {
            for (const unsigned int index : mesh.m_vecIndices)
            {
                box.add(skeleton.m_vecMeshToSkin[i].transformPoint(toDouble(mesh.m_vecPositions[index])));
            }
        }
    }
    for (const Joint& joint : box.isEmpty() ? skeleton.m_vecJoints : std::vector<Joint>())
    {
        box.add(joint.m_world.getTranslation());
    }
    return box.getDiagonal();
}
}  // namespace TW2::convert
