#include "convert/geometry_builder.h"

#include "convert/precision.h"

#include <algorithm>

namespace TW2::convert
{
namespace
{
constexpr std::uint32_t notYet = 0xFFFFFFFF;
constexpr std::size_t noGroup = static_cast<std::size_t>(-1);

/// Normals are turned by the inverse transpose.
Matrixd makeNormalMatrix(const Matrixd& place)
{
    const Matrixd inverse = place.inverse();
    Matrixd result;
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            result.m[row][column] = inverse.m[column][row];
        }
    }
    return result;
}

unsigned int toCount(std::size_t count)
{
    return static_cast<unsigned int>(count);
}
}  // namespace

std::size_t GeometryBuilder::findGroup(int material, std::size_t newVertices)
{
    const auto found = std::find_if(m_vecGroups.rbegin(), m_vecGroups.rend(),
                                    [material](const Group& group) { return group.m_iMaterial == material; });
    if (found != m_vecGroups.rend() && found->m_vecPositions.size() + newVertices <= MeshChunk::maxGroupVertices)
    {
        return static_cast<std::size_t>(m_vecGroups.rend() - found) - 1;
    }
    m_vecGroups.emplace_back().m_iMaterial = material;
    return m_vecGroups.size() - 1;
}

void GeometryBuilder::add(const Mesh& mesh, const Matrixd& place, const std::vector<Influences>& influences)
{
    const Matrixd normalMatrix = makeNormalMatrix(place);
    // A mirroring place turns triangles inside out.
    const bool mirrored = place.determinant() < 0.0;
    std::vector<std::uint32_t> numbers(mesh.m_vecPositions.size(), notYet);
    std::size_t filling = noGroup;
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        std::array<unsigned int, 3> corners{mesh.m_vecIndices[i], mesh.m_vecIndices[i + 1], mesh.m_vecIndices[i + 2]};
        if (mirrored)
        {
            std::swap(corners[1], corners[2]);
        }
        const auto fresh = static_cast<std::size_t>(std::count_if(
            corners.begin(), corners.end(), [&numbers](unsigned int corner) { return numbers[corner] == notYet; }));
        const std::size_t target = findGroup(mesh.m_iMaterial, filling == noGroup ? 3 : fresh);
        if (target != filling)
        {
            std::fill(numbers.begin(), numbers.end(), notYet);
            filling = target;
        }
        Group& group = m_vecGroups[target];
        for (const unsigned int corner : corners)
        {
            if (numbers[corner] == notYet)
            {
                numbers[corner] = toCount(group.m_vecPositions.size());
                group.m_vecPositions.push_back(toFloat(place.transformPoint(toDouble(mesh.m_vecPositions[corner]))));
                group.m_vecNormals.push_back(
                    toFloat(normalMatrix.transformDirection(toDouble(mesh.m_vecNormals[corner])).normalized()));
                group.m_vecCoordinates.resize(mesh.m_vecCoordinates.size());
                for (std::size_t set = 0; set < mesh.m_vecCoordinates.size(); ++set)
                {
                    group.m_vecCoordinates[set].push_back(mesh.m_vecCoordinates[set][corner]);
                }
                group.m_vecInfluences.push_back(influences.empty() ? Influences() : influences[corner]);
            }
            group.m_vecIndices.push_back(static_cast<std::uint16_t>(numbers[corner]));
        }
    }
}

void GeometryBuilder::fill(MeshChunk& record, const std::vector<Surface>& surfaces) const
{
    MeshVertexChunk& vertices = record.editVertices();
    MeshFaceChunk& faces = record.editFaces();
    MeshMaterialChunk& materials = record.editMaterials();
    for (const Group& group : m_vecGroups)
    {
        const std::string& name = surfaces[static_cast<std::size_t>(group.m_iMaterial)].m_strName;
        materials.names.emplace_back(name.c_str());
        vertices.groupOffsets.push_back(toCount(vertices.positions.size()));
        vertices.groupCounts.push_back(toCount(group.m_vecPositions.size()));
        vertices.positions.insert(vertices.positions.end(), group.m_vecPositions.begin(), group.m_vecPositions.end());
        vertices.normals.insert(vertices.normals.end(), group.m_vecNormals.begin(), group.m_vecNormals.end());
        faces.groupOffsets.push_back(toCount(faces.indices.size()));
        faces.groupCounts.push_back(toCount(group.m_vecIndices.size() / 3));
        faces.indices.insert(faces.indices.end(), group.m_vecIndices.begin(), group.m_vecIndices.end());
    }
    fillChannels(record);
}

/// A set that a group does not have has no coordinates for it.
void GeometryBuilder::fillChannels(MeshChunk& record) const
{
    std::size_t sets = 1;
    for (const Group& group : m_vecGroups)
    {
        sets = std::max(sets, group.m_vecCoordinates.size());
    }
    for (std::size_t set = 0; set < sets; ++set)
    {
        TextureChannelChunk& channel = record.editChannel(set);
        channel.channel = static_cast<int>(set) + 1;
        for (const Group& group : m_vecGroups)
        {
            const bool has = set < group.m_vecCoordinates.size();
            channel.groupOffsets.push_back(static_cast<int>(channel.coordinates.size()));
            channel.groupCounts.push_back(has ? static_cast<int>(group.m_vecPositions.size()) : 0);
            if (has)
            {
                channel.coordinates.insert(channel.coordinates.end(), group.m_vecCoordinates[set].begin(),
                                           group.m_vecCoordinates[set].end());
            }
        }
    }
}

void GeometryBuilder::fill(SkinChunk& record) const
{
    for (const Group& group : m_vecGroups)
    {
        record.primitiveFirstVertices.push_back(toCount(record.vertexBoneCounts.size()));
        record.primitiveVertexCounts.push_back(toCount(group.m_vecInfluences.size()));
        for (const Influences& influences : group.m_vecInfluences)
        {
            record.vertexInfluenceStarts.push_back(static_cast<int>(record.influenceBones.size()));
            int count = 0;
            for (const Influence& influence : influences)
            {
                if (influence.m_fWeight > 0.0F)
                {
                    record.influenceBones.push_back(influence.m_iBone);
                    record.influenceWeights.push_back(influence.m_fWeight);
                    ++count;
                }
            }
            record.vertexBoneCounts.push_back(count);
        }
    }
}

std::size_t GeometryBuilder::getVertexCount() const noexcept
{
    std::size_t count = 0;
    for (const Group& group : m_vecGroups)
    {
        count += group.m_vecPositions.size();
    }
    return count;
}

std::size_t GeometryBuilder::getTriangleCount() const noexcept
{
    std::size_t count = 0;
    for (const Group& group : m_vecGroups)
    {
        count += group.m_vecIndices.size() / 3;
    }
    return count;
}

std::vector<GeometryBuilder::Influences> chooseInfluences(const Mesh& mesh, int holder, const std::vector<int>& joints,
                                                          InfluenceSummary& summary)
{
    using Influence = GeometryBuilder::Influence;
    std::vector<std::vector<Influence>> all(mesh.m_vecPositions.size());
    for (std::size_t bone = 0; bone < mesh.m_vecBones.size(); ++bone)
    {
        summary.m_uiUnbound += mesh.m_vecBones[bone].m_bHolder ? mesh.m_vecBones[bone].m_vecWeights.size() : 0;
        for (const auto& [vertex, weight] : mesh.m_vecBones[bone].m_vecWeights)
        {
            all[vertex].push_back({joints[bone], weight});
        }
    }
    std::vector<GeometryBuilder::Influences> chosen(all.size());
    for (std::size_t vertex = 0; vertex < all.size(); ++vertex)
    {
        std::vector<Influence>& list = all[vertex];
        std::stable_sort(list.begin(), list.end(),
                         [](const Influence& a, const Influence& b) { return a.m_fWeight > b.m_fWeight; });
        summary.m_uiMost = std::max(summary.m_uiMost, list.size());
        if (list.size() > GeometryBuilder::mostInfluences)
        {
            ++summary.m_uiReduced;
            list.resize(GeometryBuilder::mostInfluences);
        }
        if (list.empty())
        {
            list.push_back({holder, 1.0F});
        }
        float total = 0.0F;
        for (const Influence& influence : list)
        {
            total += influence.m_fWeight;
        }
        for (std::size_t i = 0; i < list.size(); ++i)
        {
            chosen[vertex][i] = {list[i].m_iBone, list[i].m_fWeight / total};
        }
    }
    return chosen;
}
}  // namespace TW2::convert
