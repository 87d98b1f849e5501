#include "convert/mesh_arrangement.h"

#include "convert/vertex_selection.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <utility>

namespace TW2::convert
{
namespace
{
constexpr float slightly = 1e-3F;  // beyond an edge by rounding

float get(const Vector3& coordinates, int axis)
{
    return axis == 0 ? coordinates.x : coordinates.y;
}

float& access(Vector3& coordinates, int axis)
{
    return axis == 0 ? coordinates.x : coordinates.y;
}

Vector3 between(const Vector3& from, const Vector3& to, float fraction)
{
    return from + (to - from) * fraction;
}

Color between(const Color& from, const Color& to, float fraction)
{
    Color color{};
    for (std::size_t c = 0; c < color.size(); ++c)
    {
        const auto a = static_cast<float>(from[c]);
        color[c] = static_cast<unsigned char>(a + (static_cast<float>(to[c]) - a) * fraction + 0.5F);
    }
    return color;
}

/// Cuts triangles along lines of constant texture coordinate.
class Cutter
{
public:
    explicit Cutter(Mesh& mesh) : m_mesh(mesh), m_uiFirst(mesh.m_vecPositions.size()) {}

    void cut(std::size_t set, int axis, float at)
    {
        m_mapCuts.clear();
        std::vector<unsigned int> indices = std::move(m_mesh.m_vecIndices);
        m_mesh.m_vecIndices.clear();
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        {
            cutTriangle({indices[i], indices[i + 1], indices[i + 2]}, set, axis, at);
        }
    }

    /// Bones pull at the new vertices as at the ends of the edges on which they lie.
    void finish()
    {
        for (Bone& bone : m_mesh.m_vecBones)
        {
            std::vector<float> weights(m_mesh.m_vecPositions.size(), 0.0F);
            for (const auto& [vertex, weight] : bone.m_vecWeights)
            {
                weights[vertex] += weight;
            }
            for (std::size_t i = 0; i < m_vecMade.size(); ++i)
            {
                const Made& made = m_vecMade[i];
                const float weight =
                    weights[made.m_uiFrom] + (weights[made.m_uiTo] - weights[made.m_uiFrom]) * made.m_fFraction;
                weights[m_uiFirst + i] = weight;
                if (weight > 0.0F)
                {
                    bone.m_vecWeights.emplace_back(static_cast<unsigned int>(m_uiFirst + i), weight);
                }
            }
        }
    }

private:
    struct Made
    {
        unsigned int m_uiFrom = 0;
        unsigned int m_uiTo = 0;
        float m_fFraction = 0.0F;
    };

    void cutTriangle(const std::array<unsigned int, 3>& corners, std::size_t set, int axis, float at)
    {
        const std::vector<Vector3>& coordinates = m_mesh.m_vecCoordinates[set];
        const auto side = [&coordinates, axis, at](unsigned int vertex)
        {
            const float distance = get(coordinates[vertex], axis) - at;
            return distance > 1e-6F ? 1 : distance < -1e-6F ? -1 : 0;
        };
        // The corners, with a new one on each edge that crosses the line; then a fan on either side of it.
        std::vector<unsigned int> above;
        std::vector<unsigned int> below;
        for (std::size_t i = 0; i < 3; ++i)
        {
            const unsigned int from = corners[i];
            const unsigned int to = corners[(i + 1) % 3];
            if (side(from) >= 0)
            {
                above.push_back(from);
            }
            if (side(from) <= 0)
            {
                below.push_back(from);
            }
            if (side(from) * side(to) < 0)
            {
                const unsigned int made = makeVertex(from, to, set, axis, at);
                above.push_back(made);
                below.push_back(made);
            }
        }
        addFan(above);
        if (above != below)  // they are the same where the triangle lies on the line
        {
            addFan(below);
        }
    }

    void addFan(const std::vector<unsigned int>& corners)
    {
        for (std::size_t i = 2; i < corners.size(); ++i)
        {
            m_mesh.m_vecIndices.insert(m_mesh.m_vecIndices.end(), {corners[0], corners[i - 1], corners[i]});
        }
    }

    unsigned int makeVertex(unsigned int from, unsigned int to, std::size_t set, int axis, float at)
    {
        if (from > to)
        {
            std::swap(from, to);  // the triangle on the other side of the edge gets the same vertex
        }
        const auto [known, isNew] =
            m_mapCuts.try_emplace({from, to}, static_cast<unsigned int>(m_mesh.m_vecPositions.size()));
        if (!isNew)
        {
            return known->second;
        }
        const float low = get(m_mesh.m_vecCoordinates[set][from], axis);
        const float high = get(m_mesh.m_vecCoordinates[set][to], axis);
        const float fraction = (at - low) / (high - low);
        const auto append = [from, to, fraction](auto& values)
        {
            if (!values.empty())
            {
                const auto value = between(values[from], values[to], fraction);
                values.push_back(value);
            }
        };
        append(m_mesh.m_vecPositions);
        append(m_mesh.m_vecNormals);
        append(m_mesh.m_vecColors);
        for (std::vector<Vector3>& coordinates : m_mesh.m_vecCoordinates)
        {
            append(coordinates);
        }
        access(m_mesh.m_vecCoordinates[set].back(), axis) = at;
        m_vecMade.push_back({from, to, fraction});
        return known->second;
    }

    Mesh& m_mesh;
    std::size_t m_uiFirst;  // made vertex
    std::vector<Made> m_vecMade;
    std::map<std::pair<unsigned int, unsigned int>, unsigned int> m_mapCuts;
};

/// Beyond the edges, the pixels at the edges go on: coordinates stay between their centres, or between the edges where
/// the mirror image goes on.
void clamp(Mesh& mesh, std::size_t set, int axis, unsigned int pixels, bool mirrored, Cutter& cutter)
{
    const float low = mirrored ? 0.0F : 0.5F / static_cast<float>(pixels);
    const float high = 1.0F - low;
    if (reachesBeyond(mesh.m_vecCoordinates[set], axis))
    {
        cutter.cut(set, axis, low);
        cutter.cut(set, axis, high);
    }
    for (Vector3& coordinates : mesh.m_vecCoordinates[set])
    {
        access(coordinates, axis) = std::clamp(get(coordinates, axis), low, high);
    }
}

/// Gives every triangle the colours of its corners; they have to be vertices of their own where others have other ones.
void showColors(Mesh& mesh, std::size_t set, const ColorAtlas& atlas)
{
    std::map<std::tuple<unsigned int, float, float>, unsigned int> known;
    std::vector<unsigned int> origins;
    std::vector<Vector3> coordinates;
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        const std::array<Vector3, 3> places = atlas.getCoordinates(getCornerColors(mesh, i));
        for (std::size_t c = 0; c < 3; ++c)
        {
            unsigned int& index = mesh.m_vecIndices[i + c];
            const auto [entry, isNew] =
                known.try_emplace({index, places[c].x, places[c].y}, static_cast<unsigned int>(origins.size()));
            if (isNew)
            {
                origins.push_back(index);
                coordinates.push_back(places[c]);
            }
            index = entry->second;
        }
    }
    selectVertices(mesh, origins);
    mesh.m_vecCoordinates[set] = std::move(coordinates);
}
}  // namespace

std::array<Color, 3> getCornerColors(const Mesh& mesh, std::size_t first)
{
    std::array<Color, 3> colors;
    for (std::size_t corner = 0; corner < 3; ++corner)
    {
        colors[corner] = mesh.m_vecColors.empty() ? plainColor : mesh.m_vecColors[mesh.m_vecIndices[first + corner]];
    }
    return colors;
}

std::vector<Vector3> makeCoordinates(const Mesh& mesh, const Texture& texture)
{
    const auto set = static_cast<std::size_t>(texture.m_iSet);
    if (set >= mesh.m_vecCoordinates.size() || mesh.m_vecCoordinates[set].empty())
    {
        return std::vector<Vector3>(mesh.m_vecPositions.size());
    }
    std::vector<Vector3> coordinates = mesh.m_vecCoordinates[set];
    if (texture.m_transform != Texture().m_transform)
    {
        const auto& t = texture.m_transform;
        for (Vector3& at : coordinates)
        {
            const auto u = static_cast<double>(at.x);
            const auto v = static_cast<double>(at.y);
            at.x = static_cast<float>(u * t[0][0] + v * t[1][0] + t[2][0]);
            at.y = static_cast<float>(u * t[0][1] + v * t[1][1] + t[2][1]);
        }
    }
    return coordinates;
}

bool reachesBeyond(const std::vector<Vector3>& coordinates, int axis)
{
    return std::any_of(coordinates.begin(), coordinates.end(),
                       [axis](const Vector3& at)
                       { return get(at, axis) < -slightly || get(at, axis) > 1.0F + slightly; });
}

Mesh arrangeMesh(const Mesh& mesh, const std::vector<LayerCoordinates>& layers)
{
    Mesh arranged = mesh;
    arranged.m_vecCoordinates.clear();
    for (const LayerCoordinates& layer : layers)
    {
        arranged.m_vecCoordinates.push_back(makeCoordinates(mesh, layer.m_texture));
    }
    // Colours first: what is cut later lies in the same place of its triangle's colours.
    for (std::size_t set = 0; set < layers.size(); ++set)
    {
        if (layers[set].m_pColors)
        {
            showColors(arranged, set, *layers[set].m_pColors);
        }
    }
    arranged.m_vecColors.clear();
    Cutter cutter(arranged);
    for (std::size_t set = 0; set < layers.size(); ++set)
    {
        const LayerCoordinates& layer = layers[set];
        if (!layer.m_texture.isUsed())
        {
            continue;
        }
        if (layer.m_texture.m_eWrapU == Wrap::Clamp)
        {
            clamp(arranged, set, 0, layer.m_uiWidth, layer.m_bMirrorU, cutter);
        }
        if (layer.m_texture.m_eWrapV == Wrap::Clamp)
        {
            clamp(arranged, set, 1, layer.m_uiHeight, layer.m_bMirrorV, cutter);
        }
        for (Vector3& at : arranged.m_vecCoordinates[set])
        {
            at.x *= layer.m_bMirrorU ? 0.5F : 1.0F;
            at.y *= layer.m_bMirrorV ? 0.5F : 1.0F;
        }
    }
    cutter.finish();
    return arranged;
}
}  // namespace TW2::convert
