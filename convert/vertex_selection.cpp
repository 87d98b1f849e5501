#include "convert/vertex_selection.h"

#include <utility>

namespace TW2::convert
{
namespace
{
template <typename T>
void select(std::vector<T>& values, const std::vector<unsigned int>& origins)
{
    if (values.empty())
    {
        return;
    }
    std::vector<T> selected;
    selected.reserve(origins.size());
    for (const unsigned int origin : origins)
    {
        selected.push_back(values[origin]);
    }
    values = std::move(selected);
}

void selectWeights(std::vector<Bone>& bones, const std::vector<unsigned int>& origins, std::size_t vertices)
{
    std::vector<std::vector<unsigned int>> copies(bones.empty() ? 0 : vertices);
    for (unsigned int i = 0; !bones.empty() && i < origins.size(); ++i)
    {
        copies[origins[i]].push_back(i);
    }
    for (Bone& bone : bones)
    {
        const auto weights = std::exchange(bone.m_vecWeights, {});
        for (const auto& [vertex, weight] : weights)
        {
            for (const unsigned int copy : copies[vertex])
            {
                bone.m_vecWeights.emplace_back(copy, weight);
            }
        }
    }
}
}  // namespace

void selectVertices(Mesh& mesh, const std::vector<unsigned int>& origins)
{
    selectWeights(mesh.m_vecBones, origins, mesh.m_vecPositions.size());
    select(mesh.m_vecPositions, origins);
    select(mesh.m_vecNormals, origins);
    for (std::vector<Vector3>& set : mesh.m_vecCoordinates)
    {
        select(set, origins);
    }
    select(mesh.m_vecColors, origins);
}
}  // namespace TW2::convert
