#include "convert/collada_geometry.h"

#include "convert/mesh_joiner.h"
#include "convert/model_space.h"
#include "convert/precision.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string_view>

namespace TW2::convert
{
namespace
{
using Source = ColladaDocument::Source;
using Input = ColladaDocument::Input;

/// A list of values that the corners of some triangles take theirs from.
struct CornerSource
{
    Source m_source;
    std::size_t m_uiOffset = 0;
    int m_iSet = 0;
};

class GeometryReader
{
public:
    GeometryReader(const ColladaScene& scene, const pugi::xml_node& instance, ColladaSurfaces& surfaces,
                   Warnings& warnings)
        : m_scene(scene),
          m_document(scene.getDocument()),
          m_instance(instance),
          m_surfaces(surfaces),
          m_warnings(warnings)
    {
    }

    std::vector<Mesh> read()
    {
        std::vector<Mesh> meshes;
        const pugi::xml_node geometry = findGeometry();
        const pugi::xml_node mesh = geometry.child("mesh");
        const char* name = geometry.attribute("name").value();
        m_strName = *name != '\0' ? name : geometry.attribute("id").value();
        m_strPart = "mesh \"" + m_strName + "\"";
        if (!mesh)
        {
            m_warnings.addLeftOut(m_strPart, geometry ? "what is no mesh of polygons" : "what the file does not have");
            return meshes;
        }
        readVertices(mesh.child("vertices"));
        for (const pugi::xml_node& primitives : mesh.children())
        {
            readPrimitives(primitives);
        }
        for (auto& [surface, part] : m_mapParts)
        {
            if (m_skin)
            {
                bind(part.m_joiner);
            }
            part.m_joiner.finish(part.m_bNormals, part.m_uiSets, part.m_bColors);
            part.m_joiner.m_mesh.m_strName = m_strName;
            part.m_joiner.m_mesh.m_iMaterial = surface.m_iSurface;
            meshes.push_back(std::move(part.m_joiner.m_mesh));
        }
        return meshes;
    }

private:
    /// Triangles with one surface that say as much about their corners.
    struct Key
    {
        int m_iSurface;
        bool m_bNormals;
        std::size_t m_uiSets;
        bool m_bColors;
        auto operator<=>(const Key&) const = default;
    };
    struct Part
    {
        Part(std::size_t points, const Key& key)
            : m_joiner(points), m_bNormals(key.m_bNormals), m_uiSets(key.m_uiSets), m_bColors(key.m_bColors)
        {
        }
        MeshJoiner m_joiner;
        bool m_bNormals;
        std::size_t m_uiSets;
        bool m_bColors;
    };

    /// Behind a skin and a morph.
    pugi::xml_node findGeometry()
    {
        pugi::xml_node shown = m_document.follow(m_instance, "url");
        constexpr int deepest = 8;
        for (int i = 0; i < deepest && std::string_view(shown.name()) == "controller"; ++i)
        {
            const pugi::xml_node skin = shown.child("skin");
            const pugi::xml_node morph = shown.child("morph");
            if (skin)
            {
                m_skin = skin;
            }
            shown = m_document.follow(skin ? skin : morph, "source");
        }
        return shown;
    }

    void readVertices(const pugi::xml_node& vertices)
    {
        m_vecOfVertices = m_document.readInputs(vertices);
        for (const Input& input : m_vecOfVertices)
        {
            if (input.m_strSemantic == "POSITION")
            {
                const Source source = m_document.readSource(input.m_source);
                for (std::size_t i = 0; source.m_uiStride >= 3 && source.find(i); ++i)
                {
                    const double* p = source.find(i);
                    m_vecPoints.push_back({p[0], p[1], -p[2]});
                }
            }
        }
    }

    void readPrimitives(const pugi::xml_node& element)
    {
        const std::string_view kind = element.name();
        if (kind == "lines" || kind == "linestrips")
        {
            m_warnings.addLeftOut(m_strPart, "what consists of points and lines");
            return;
        }
        if (kind != "triangles" && kind != "polylist" && kind != "polygons" && kind != "trifans" && kind != "tristrips")
        {
            return;
        }
        readInputs(element);
        const Key key{m_surfaces.getSurface(m_instance, element.attribute("material").value(), getSets()),
                      m_normals.has_value(), m_vecCoordinates.size(), m_colors.has_value()};
        m_pPart = &m_mapParts.try_emplace(key, m_vecPoints.size(), key).first->second;
        if (kind == "polylist")
        {
            const std::vector<std::size_t> corners = readIndices(element.child("p"));
            std::size_t at = 0;
            for (const std::size_t count : readIndices(element.child("vcount")))
            {
                if (count > corners.size() / m_uiWidth || at + count > corners.size() / m_uiWidth)
                {
                    m_document.fail(element, "as many corners as vcount says");
                }
                std::vector<std::size_t> polygon(count);
                for (std::size_t& corner : polygon)
                {
                    corner = at++;
                }
                addPolygon(element, corners, polygon);
            }
            return;
        }
        for (const pugi::xml_node& list : element.children())
        {
            const std::string_view name = list.name();
            const pugi::xml_node p = name == "ph" ? list.child("p") : name == "p" ? list : pugi::xml_node();
            if (name == "ph")
            {
                m_warnings.addLeftOut(m_strPart, "the holes of its polygons");
            }
            if (p)
            {
                addList(element, kind, readIndices(p));
            }
        }
    }

    void addList(const pugi::xml_node& element, std::string_view kind, const std::vector<std::size_t>& corners)
    {
        const std::size_t count = corners.size() / m_uiWidth;
        if (kind == "polygons")
        {
            std::vector<std::size_t> polygon(count);
            for (std::size_t i = 0; i < count; ++i)
            {
                polygon[i] = i;
            }
            addPolygon(element, corners, polygon);
            return;
        }
        const std::size_t step = kind == "triangles" ? 3 : 1;
        for (std::size_t i = 0; i + 2 < count; i += step)
        {
            if (kind == "trifans")
            {
                addPolygon(element, corners, {0, i + 1, i + 2});
            }
            else if (kind == "tristrips" && i % 2 == 1)
            {
                addPolygon(element, corners, {i + 1, i, i + 2});
            }
            else
            {
                addPolygon(element, corners, {i, i + 1, i + 2});
            }
        }
    }

    void readInputs(const pugi::xml_node& element)
    {
        m_normals.reset();
        m_colors.reset();
        m_vecCoordinates.clear();
        m_uiWidth = 1;
        std::optional<std::size_t> point;
        std::vector<Input> inputs;
        for (const Input& input : m_document.readInputs(element))
        {
            constexpr std::size_t most = 256;
            if (input.m_uiOffset >= most)
            {
                m_document.fail(element, "offsets of inputs below 256");
            }
            m_uiWidth = std::max(m_uiWidth, input.m_uiOffset + 1);
            if (input.m_strSemantic != "VERTEX")
            {
                inputs.push_back(input);
                continue;
            }
            point = input.m_uiOffset;
            for (Input ofVertex : m_vecOfVertices)
            {
                ofVertex.m_uiOffset = input.m_uiOffset;
                inputs.push_back(ofVertex);
            }
        }
        if (!point)
        {
            m_document.fail(element, "an input VERTEX");
        }
        m_uiPoint = *point;
        for (const Input& input : inputs)
        {
            CornerSource source{{}, input.m_uiOffset, input.m_iSet};
            if (input.m_strSemantic != "NORMAL" && input.m_strSemantic != "TEXCOORD" && input.m_strSemantic != "COLOR")
            {
                continue;
            }
            source.m_source = m_document.readSource(input.m_source);
            const std::size_t least = input.m_strSemantic == "TEXCOORD" ? 2 : 3;
            if (source.m_source.m_uiStride < least)
            {
                m_warnings.addLeftOut(m_strPart, input.m_strSemantic + " with too few numbers");
            }
            else if (input.m_strSemantic == "NORMAL")
            {
                m_normals = std::move(source);
            }
            else if (input.m_strSemantic == "COLOR")
            {
                m_colors = m_colors ? std::move(m_colors) : std::optional(std::move(source));
            }
            else
            {
                m_vecCoordinates.push_back(std::move(source));
            }
        }
        std::stable_sort(m_vecCoordinates.begin(), m_vecCoordinates.end(),
                         [](const CornerSource& a, const CornerSource& b) { return a.m_iSet < b.m_iSet; });
    }

    [[nodiscard]] std::vector<int> getSets() const
    {
        std::vector<int> sets;
        for (const CornerSource& source : m_vecCoordinates)
        {
            sets.push_back(source.m_iSet);
        }
        return sets;
    }

    /// Whole numbers that are not negative.
    [[nodiscard]] std::vector<std::size_t> readIndices(const pugi::xml_node& element) const
    {
        std::vector<std::size_t> indices;
        for (const double number : m_document.readNumbers(element))
        {
            constexpr double most = 4e9;
            if (!(number >= 0.0) || number > most)
            {
                m_document.fail(element, "numbers of corners");
            }
            indices.push_back(static_cast<std::size_t>(number));
        }
        return indices;
    }

    void addPolygon(const pugi::xml_node& element, const std::vector<std::size_t>& corners,
                    const std::vector<std::size_t>& polygon)
    {
        if (polygon.size() < 3)
        {
            m_warnings.addLeftOut(m_strPart, "what consists of points and lines");
            return;
        }
        std::vector<Vector3d> places;
        std::vector<unsigned int> vertices;
        for (const std::size_t each : polygon)
        {
            const std::size_t* const corner = corners.data() + each * m_uiWidth;
            const std::size_t point = corner[m_uiPoint];
            if (point >= m_vecPoints.size())
            {
                m_document.fail(element, "corners at points that the geometry has, found number " +
                                             std::to_string(point) + " of " + std::to_string(m_vecPoints.size()));
            }
            places.push_back(m_vecPoints[point]);
            vertices.push_back(m_pPart->m_joiner.add(point, toFloat(places.back()), readCorner(corner)));
        }
        TW2::convert::addPolygon(m_pPart->m_joiner.m_mesh, places, vertices, false);
    }

    [[nodiscard]] Corner readCorner(const std::size_t* indices) const
    {
        Corner corner;
        const double* const n = m_normals ? m_normals->m_source.find(indices[m_normals->m_uiOffset]) : nullptr;
        if (n)
        {
            corner.m_vNormal = toFloat(Vector3d{n[0], n[1], -n[2]}.normalized());
        }
        for (const CornerSource& set : m_vecCoordinates)
        {
            const double* const uv = set.m_source.find(indices[set.m_uiOffset]);
            corner.m_vecCoordinates.push_back(
                uv ? Vector3{static_cast<float>(uv[0]), static_cast<float>(1.0 - uv[1]), 0.0F} : Vector3());
        }
        if (const double* const rgb = m_colors ? m_colors->m_source.find(indices[m_colors->m_uiOffset]) : nullptr)
        {
            for (std::size_t i = 0; i < std::min<std::size_t>(m_colors->m_source.m_uiStride, 4); ++i)
            {
                corner.m_color[i] = static_cast<unsigned char>(std::lround(255.0 * std::clamp(rgb[i], 0.0, 1.0)));
            }
        }
        return corner;
    }

    void bind(MeshJoiner& joiner)
    {
        if (m_vecJoints.empty())
        {
            readSkin();
        }
        std::vector<Bone> bones = m_vecJoints;
        for (std::size_t point = 0; point < std::min(m_vecPulls.size(), m_vecPoints.size()); ++point)
        {
            for (const auto& [joint, weight] : m_vecPulls[point])
            {
                joiner.forEachAt(point, [&, joint = joint, weight = weight](unsigned int vertex)
                                 { bones[joint].m_vecWeights.emplace_back(vertex, static_cast<float>(weight)); });
            }
        }
        for (Bone& bone : bones)
        {
            if (!bone.m_vecWeights.empty())
            {
                joiner.m_mesh.m_vecBones.push_back(std::move(bone));
            }
        }
    }

    void readSkin()
    {
        Source names;
        Source inverses;
        for (const Input& input : m_document.readInputs(m_skin.child("joints")))
        {
            (input.m_strSemantic == "JOINT" ? names : inverses) = m_document.readSource(input.m_source);
        }
        std::vector<std::size_t> skeletons;
        for (const pugi::xml_node& skeleton : m_instance.children("skeleton"))
        {
            const std::string id = ColladaDocument::decode(skeleton.text().get());
            for (const std::size_t place : m_scene.findPlaces(id))
            {
                skeletons.push_back(place);
            }
        }
        Matrixd shape;
        if (const pugi::xml_node element = m_skin.child("bind_shape_matrix"))
        {
            const std::vector<double> values = m_document.readNumbers(element);
            if (values.size() != 16)
            {
                m_document.fail(element, "16 numbers");
            }
            shape = makeColladaMatrix(values.data());
        }
        for (std::size_t i = 0; i < names.m_vecWords.size(); ++i)
        {
            const double* const inverse = inverses.m_uiStride >= 16 ? inverses.find(i) : nullptr;
            if (!inverse)
            {
                m_document.fail(m_skin, "an inverse bind matrix per joint");
            }
            Bone& bone = m_vecJoints.emplace_back();
            bone.m_iNode = m_scene.findJoint(names.m_vecWords[i], skeletons);
            bone.m_offset = mirrorZ(shape * makeColladaMatrix(inverse));
            if (bone.m_iNode < 0)
            {
                m_warnings.add(m_strPart + ": bone \"" + names.m_vecWords[i] +
                               "\" is no node of the model and left out");
            }
        }
        readPulls(m_skin.child("vertex_weights"));
    }

    void readPulls(const pugi::xml_node& element)
    {
        std::size_t width = 1;
        std::size_t jointAt = 0;
        std::size_t weightAt = 0;
        Source weights;
        for (const Input& input : m_document.readInputs(element))
        {
            width = std::max(width, input.m_uiOffset + 1);
            if (input.m_strSemantic == "JOINT")
            {
                jointAt = input.m_uiOffset;
            }
            else if (input.m_strSemantic == "WEIGHT")
            {
                weightAt = input.m_uiOffset;
                weights = m_document.readSource(input.m_source);
            }
        }
        const std::vector<double> numbers = m_document.readNumbers(element.child("v"));
        std::size_t at = 0;
        for (const std::size_t count : readIndices(element.child("vcount")))
        {
            auto& pulls = m_vecPulls.emplace_back();
            for (std::size_t i = 0; i < count; ++i, at += width)
            {
                if (numbers.size() < width || at > numbers.size() - width)
                {
                    m_document.fail(element, "as many weights as vcount says");
                }
                const double joint = numbers[at + jointAt];  // -1: the mesh's own place
                const double number = numbers[at + weightAt];
                const bool known = number >= 0.0 && number < static_cast<double>(weights.m_vecNumbers.size());
                const double* const weight = known ? weights.find(static_cast<std::size_t>(number)) : nullptr;
                if (joint >= static_cast<double>(m_vecJoints.size()) || !weight)
                {
                    m_document.fail(element, "joints and weights that the skin has");
                }
                if (joint >= 0.0 && *weight > 0.0 && std::isfinite(*weight) &&
                    m_vecJoints[static_cast<std::size_t>(joint)].m_iNode >= 0)
                {
                    pulls.emplace_back(static_cast<std::size_t>(joint), *weight);
                }
            }
        }
    }

    const ColladaScene& m_scene;
    const ColladaDocument& m_document;
    pugi::xml_node m_instance;
    ColladaSurfaces& m_surfaces;
    Warnings& m_warnings;
    std::string m_strName;
    std::string m_strPart;
    pugi::xml_node m_skin;
    std::vector<Input> m_vecOfVertices;  ///< inputs that go with the points
    std::vector<Vector3d> m_vecPoints;   ///< mirrored at z
    // Of the triangles that are being read.
    std::optional<CornerSource> m_normals;
    std::optional<CornerSource> m_colors;
    std::vector<CornerSource> m_vecCoordinates;
    std::size_t m_uiWidth = 1;  ///< numbers per corner
    std::size_t m_uiPoint = 0;  ///< which of them is the point
    Part* m_pPart = nullptr;
    std::map<Key, Part> m_mapParts;
    std::vector<Bone> m_vecJoints;                                        ///< without weights
    std::vector<std::vector<std::pair<std::size_t, double>>> m_vecPulls;  ///< per point: joint and weight
};
}  // namespace

std::vector<Mesh> readColladaMeshes(const ColladaScene& scene, const pugi::xml_node& instance,
                                    ColladaSurfaces& surfaces, Warnings& warnings)
{
    return GeometryReader(scene, instance, surfaces, warnings).read();
}
}  // namespace TW2::convert
