#include "convert/gltf_geometry.h"

#include "convert/color_space.h"
#include "convert/gltf_accessor.h"
#include "convert/gltf_compression.h"
#include "convert/gltf_value.h"
#include "convert/normals.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace TW2::convert
{
namespace
{
constexpr const char* dracoName = "KHR_draco_mesh_compression";

/// The numbers of a primitive's vertices, wherever they stand.
class Attributes
{
public:
    Attributes(const GltfFile& file, const tinygltf::Primitive& primitive, const std::string& place)
        : m_file(file), m_primitive(primitive), m_strPlace(place)
    {
        if (const auto packed = primitive.extensions.find(dracoName); packed != primitive.extensions.end())
        {
            unpack(packed->second);
        }
        m_vecPositions = read("POSITION", 3);
        m_uiVertices = m_vecPositions.size() / 3;
    }

    [[nodiscard]] bool has(const std::string& meaning) const { return m_primitive.attributes.contains(meaning); }
    [[nodiscard]] std::size_t getVertexCount() const noexcept { return m_uiVertices; }
    [[nodiscard]] std::vector<float>& accessPositions() noexcept { return m_vecPositions; }

    /// How many numbers a vertex has.
    [[nodiscard]] std::size_t getComponentCount(const std::string& meaning) const
    {
        return getComponents(m_file, m_primitive.attributes.at(meaning));
    }

    /// Empty when there is none. Every other list has as many elements as there are positions.
    [[nodiscard]] std::vector<float> read(const std::string& meaning, std::size_t components) const
    {
        const auto found = m_primitive.attributes.find(meaning);
        if (found == m_primitive.attributes.end())
        {
            return {};
        }
        const std::string own = m_strPlace + ".attributes." + meaning;
        const auto packed = m_packed.m_mapAttributes.find(meaning);
        std::vector<float> numbers = packed == m_packed.m_mapAttributes.end()
                                         ? readNumbers(m_file, found->second, components, own)
                                         : packed->second.m_vecNumbers;
        checkCount(numbers.size(), components, own);
        return numbers;
    }

    [[nodiscard]] std::vector<unsigned int> readWhole(const std::string& meaning, std::size_t components) const
    {
        if (m_packed.m_mapAttributes.contains(meaning))
        {
            const std::vector<float> numbers = read(meaning, components);
            std::vector<unsigned int> whole;
            std::transform(numbers.begin(), numbers.end(), std::back_inserter(whole),
                           [](float number) { return static_cast<unsigned int>(std::max(number, 0.0F)); });
            return whole;
        }
        const std::string own = m_strPlace + ".attributes." + meaning;
        std::vector<unsigned int> whole = readIndices(m_file, m_primitive.attributes.at(meaning), components, own);
        checkCount(whole.size(), components, own);
        return whole;
    }

    /// The corners in the file's order.
    [[nodiscard]] std::vector<unsigned int> readCorners() const
    {
        std::vector<unsigned int> corners = m_packed.m_vecIndices;
        const std::string own = m_strPlace + ".indices";
        if (m_primitive.indices >= 0)
        {
            corners = readIndices(m_file, m_primitive.indices, 1, own);
        }
        else if (corners.empty())
        {
            corners.resize(m_uiVertices);
            std::iota(corners.begin(), corners.end(), 0U);
        }
        const auto beyond = std::find_if(corners.begin(), corners.end(),
                                         [this](unsigned int corner) { return corner >= m_uiVertices; });
        if (beyond != corners.end())
        {
            m_file.fail(own, "index " + std::to_string(beyond - corners.begin()) + " names vertex " +
                                 std::to_string(*beyond) + " of " + std::to_string(m_uiVertices));
        }
        return corners;
    }

private:
    void checkCount(std::size_t numbers, std::size_t components, const std::string& own) const
    {
        if (m_uiVertices > 0 && numbers != m_uiVertices * components)
        {
            m_file.fail(own, "has " + std::to_string(numbers / components) + " elements for " +
                                 std::to_string(m_uiVertices) + " vertices");
        }
    }

    void unpack(const tinygltf::Value& extension)
    {
        const std::string own = m_strPlace + ".extensions." + dracoName;
        const tinygltf::Value attributes =
            extension.IsObject() && extension.Has("attributes") ? extension.Get("attributes") : tinygltf::Value();
        for (const auto& [meaning, accessor] : m_primitive.attributes)
        {
            if (const int id = getIndex(attributes, meaning.c_str()); id >= 0)
            {
                m_packed.m_mapAttributes[meaning] = {id, getComponents(m_file, accessor), {}, false};
            }
        }
        const std::string error = unpackDraco(m_file.getView(getIndex(extension, "bufferView"), own), m_packed);
        if (!error.empty())
        {
            m_file.fail(own, error);
        }
        for (auto& [meaning, attribute] : m_packed.m_mapAttributes)
        {
            const float most = getNormalizer(m_file, m_primitive.attributes.at(meaning));
            for (float& number : attribute.m_vecNumbers)
            {
                number = attribute.m_bNormalized ? number : number / most;
            }
        }
    }

    const GltfFile& m_file;
    const tinygltf::Primitive& m_primitive;
    std::string m_strPlace;
    DracoMesh m_packed;
    std::vector<float> m_vecPositions;
    std::size_t m_uiVertices = 0;
};

/// Three corners per triangle, from a list of triangles, a strip or a fan.
std::vector<unsigned int> makeTriangles(std::vector<unsigned int> corners, int mode)
{
    if (mode == TINYGLTF_MODE_TRIANGLES)
    {
        corners.resize(corners.size() / 3 * 3);
        return corners;
    }
    std::vector<unsigned int> triangles;
    for (std::size_t i = 2; i < corners.size(); ++i)
    {
        const bool turned = mode == TINYGLTF_MODE_TRIANGLE_STRIP && i % 2 == 1;
        const unsigned int a = mode == TINYGLTF_MODE_TRIANGLE_STRIP ? corners[i - 2] : corners[0];
        const unsigned int b = corners[i - 1];
        const unsigned int c = corners[i];
        if (a != b && b != c && c != a)  // strips are joined by triangles without area
        {
            triangles.insert(triangles.end(), {turned ? b : a, turned ? a : b, c});
        }
    }
    return triangles;
}

/// Adds the targets that have a weight.
void addTargets(const GltfFile& file, const tinygltf::Primitive& primitive, const std::string& place,
                const std::string& meaning, const std::vector<double>& weights, std::vector<float>& numbers)
{
    for (std::size_t i = 0; i < std::min(weights.size(), primitive.targets.size()); ++i)
    {
        const auto found = primitive.targets[i].find(meaning);
        if (weights[i] == 0.0 || found == primitive.targets[i].end())
        {
            continue;
        }
        const std::string own = place + ".targets[" + std::to_string(i) + "]." + meaning;
        const std::vector<float> changes = readNumbers(file, found->second, 3, own);
        if (changes.size() != numbers.size())
        {
            file.fail(own, "has " + std::to_string(changes.size() / 3) + " elements for " +
                               std::to_string(numbers.size() / 3) + " vertices");
        }
        for (std::size_t n = 0; n < numbers.size(); ++n)
        {
            numbers[n] += static_cast<float>(weights[i]) * changes[n];
        }
    }
}

/// Left-handed: z points the other way.
std::vector<Vector3> makeVectors(const std::vector<float>& numbers)
{
    std::vector<Vector3> vectors;
    vectors.reserve(numbers.size() / 3);
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
    {
        vectors.emplace_back(numbers[i], numbers[i + 1], -numbers[i + 2]);
    }
    return vectors;
}

std::vector<Vector3> makeCoordinates(const std::vector<float>& numbers)
{
    std::vector<Vector3> coordinates;
    coordinates.reserve(numbers.size() / 2);
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2)
    {
        coordinates.emplace_back(numbers[i], numbers[i + 1], 0.0F);
    }
    return coordinates;
}

/// glTF's colours are light; their alpha is not.
std::vector<Color> makeColors(const std::vector<float>& numbers, std::size_t components)
{
    std::vector<Color> colors;
    colors.reserve(numbers.size() / components);
    for (std::size_t i = 0; i + components <= numbers.size(); i += components)
    {
        Color color{255, 255, 255, 255};
        for (std::size_t c = 0; c < components; ++c)
        {
            const double value = static_cast<double>(numbers[i + c]);
            const double stored = c == 3 ? std::clamp(value, 0.0, 1.0) : toStored(value);
            color[c] = static_cast<unsigned char>(std::lround(255.0 * stored));
        }
        colors.push_back(color);
    }
    return colors;
}

void addBones(const GltfFile& file, const Attributes& attributes, const std::string& place, const GltfSkin& skin,
              Mesh& mesh)
{
    constexpr std::size_t perSet = 4;
    std::vector<Bone> bones(skin.m_vecNodes.size());
    for (std::size_t i = 0; i < bones.size(); ++i)
    {
        bones[i].m_iNode = skin.m_vecNodes[i];
        bones[i].m_offset = skin.m_vecOffsets[i];
    }
    std::vector<unsigned int> first;  // set of joints
    std::vector<bool> moved(mesh.m_vecPositions.size(), false);
    for (int set = 0; attributes.has("JOINTS_" + std::to_string(set)); ++set)
    {
        const std::string meaning = "JOINTS_" + std::to_string(set);
        const std::vector<unsigned int> joints = attributes.readWhole(meaning, perSet);
        const std::vector<float> weights = attributes.read("WEIGHTS_" + std::to_string(set), perSet);
        for (std::size_t i = 0; i < std::min(joints.size(), weights.size()); ++i)
        {
            if (!(weights[i] > 0.0F) || !std::isfinite(weights[i]))
            {
                continue;
            }
            if (joints[i] >= bones.size())
            {
                file.fail(place + ".attributes." + meaning,
                          "names joint " + std::to_string(joints[i]) + " of a skin of " + std::to_string(bones.size()));
            }
            bones[joints[i]].m_vecWeights.emplace_back(static_cast<unsigned int>(i / perSet), weights[i]);
            moved[i / perSet] = true;
        }
        first = first.empty() ? joints : std::move(first);
    }
    // A vertex whose weights are all zero goes with its first joint: where the mesh's own node stands says nothing.
    for (std::size_t vertex = 0; vertex < std::min(moved.size(), first.size() / perSet); ++vertex)
    {
        if (const unsigned int joint = first[vertex * perSet]; !moved[vertex] && joint < bones.size())
        {
            bones[joint].m_vecWeights.emplace_back(static_cast<unsigned int>(vertex), 1.0F);
        }
    }
    mesh.m_vecBones = std::move(bones);
}

void addCoordinates(const Attributes& attributes, Mesh& mesh)
{
    // Sets are counted without gaps; a mesh without the first may still have the second.
    constexpr int mostSets = 8;
    for (int set = 0; set < mostSets; ++set)
    {
        if (const std::string meaning = "TEXCOORD_" + std::to_string(set); attributes.has(meaning))
        {
            mesh.m_vecCoordinates.resize(static_cast<std::size_t>(set) + 1);
            mesh.m_vecCoordinates.back() = makeCoordinates(attributes.read(meaning, 2));
        }
    }
}
}  // namespace

std::optional<Mesh> importPrimitive(const GltfFile& file, const tinygltf::Primitive& primitive,
                                    const std::string& place, const std::string& name,
                                    const std::vector<double>& weights, const GltfSkin* skin, Warnings& warnings)
{
    const std::string part = "mesh \"" + name + "\"";
    if (primitive.mode < TINYGLTF_MODE_TRIANGLES)
    {
        warnings.addLeftOut(part, "what consists of points and lines");
        return std::nullopt;
    }
    Attributes attributes(file, primitive, place);
    Mesh mesh;
    mesh.m_strName = name;
    mesh.m_vecIndices = makeTriangles(attributes.readCorners(), primitive.mode);
    for (std::size_t i = 0; i + 2 < mesh.m_vecIndices.size(); i += 3)
    {
        std::swap(mesh.m_vecIndices[i + 1], mesh.m_vecIndices[i + 2]);  // mirrored
    }
    std::vector<float> positions = std::move(attributes.accessPositions());
    if (positions.empty())
    {
        warnings.addLeftOut(part, "what has no positions");
        return std::nullopt;
    }
    addTargets(file, primitive, place, "POSITION", weights, positions);
    if (!std::all_of(positions.begin(), positions.end(), [](float number) { return std::isfinite(number); }))
    {
        file.fail(place + ".attributes.POSITION", "has a number that is not finite");
    }
    mesh.m_vecPositions = makeVectors(positions);
    if (std::vector<float> normals = attributes.read("NORMAL", 3); !normals.empty())
    {
        addTargets(file, primitive, place, "NORMAL", weights, normals);
        mesh.m_vecNormals = makeVectors(normals);
    }
    addCoordinates(attributes, mesh);
    if (attributes.has("COLOR_0"))
    {
        const std::size_t components = attributes.getComponentCount("COLOR_0") == 4 ? 4 : 3;
        mesh.m_vecColors = makeColors(attributes.read("COLOR_0", components), components);
    }
    if (skin)
    {
        addBones(file, attributes, place, *skin, mesh);
    }
    if (mesh.m_vecNormals.empty())
    {
        addFlatNormals(mesh);
    }
    if (!primitive.targets.empty())
    {
        warnings.addLeftOut(part, "the motion of morph targets");
    }
    return mesh;
}
}  // namespace TW2::convert
