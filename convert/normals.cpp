#include "convert/normals.h"

#include "convert/precision.h"
#include "convert/vertex_selection.h"

#include <map>
#include <tuple>

namespace TW2::convert
{
namespace
{
/// Twice as long as the triangle is large; zero for one without area.
Vector3d getNormal(const Mesh& mesh, std::size_t first)
{
    const Vector3d a = toDouble(mesh.m_vecPositions[mesh.m_vecIndices[first]]);
    const Vector3d b = toDouble(mesh.m_vecPositions[mesh.m_vecIndices[first + 1]]);
    const Vector3d c = toDouble(mesh.m_vecPositions[mesh.m_vecIndices[first + 2]]);
    return (b - a).cross(c - a);
}
}  // namespace

void addFlatNormals(Mesh& mesh)
{
    using Key = std::tuple<unsigned int, float, float, float>;
    std::map<Key, unsigned int> known;
    std::vector<unsigned int> origins;
    std::vector<Vector3> normals;
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        const Vector3 normal = toFloat(getNormal(mesh, i).normalized());
        for (std::size_t corner = i; corner < i + 3; ++corner)
        {
            unsigned int& index = mesh.m_vecIndices[corner];
            const auto [entry, isNew] =
                known.try_emplace(Key{index, normal.x, normal.y, normal.z}, static_cast<unsigned int>(origins.size()));
            if (isNew)
            {
                origins.push_back(index);
                normals.push_back(normal);
            }
            index = entry->second;
        }
    }
    selectVertices(mesh, origins);
    mesh.m_vecNormals = std::move(normals);
}

void addSmoothNormals(Mesh& mesh)
{
    std::map<std::tuple<float, float, float>, Vector3d> sums;
    const auto access = [&mesh, &sums](unsigned int index) -> Vector3d&
    {
        const Vector3& p = mesh.m_vecPositions[index];
        return sums[{p.x, p.y, p.z}];
    };
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        const Vector3d normal = getNormal(mesh, i);
        for (std::size_t corner = i; corner < i + 3; ++corner)
        {
            Vector3d& sum = access(mesh.m_vecIndices[corner]);
            sum = sum + normal;
        }
    }
    mesh.m_vecNormals.clear();
    for (unsigned int i = 0; i < mesh.m_vecPositions.size(); ++i)
    {
        mesh.m_vecNormals.push_back(toFloat(access(i).normalized()));
    }
}
}  // namespace TW2::convert
