#include "convert/fbx_geometry.h"

#include "convert/mesh_joiner.h"
#include "convert/model_space.h"
#include "convert/precision.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace TW2::convert
{
namespace
{
/// One kind of values of a geometry: given per corner, per point, per polygon or once, plain or by an index.
class Layer
{
public:
    Layer() = default;
    Layer(const FbxDocument& document, const FbxElement& element, std::string_view values, std::string_view indices,
          std::size_t width)
        : m_uiWidth(width)
    {
        const FbxElement* mapping = element.find("MappingInformationType");
        const std::string_view per = mapping ? mapping->getText(0) : std::string_view();
        m_ePer = per == "ByPolygonVertex"                  ? Per::Corner
                 : per == "ByPolygon"                      ? Per::Polygon
                 : per == "ByVertex" || per == "ByVertice" ? Per::Point
                                                           : Per::All;
        if (const FbxElement* found = element.find(values))
        {
            m_vecValues = document.getNumbers(*found);
        }
        if (const FbxElement* found = indices.empty() ? nullptr : element.find(indices))
        {
            m_vecIndices = document.getNumbers(*found);
        }
    }

    [[nodiscard]] bool isEmpty() const { return m_vecValues.size() < m_uiWidth || m_uiWidth == 0; }

    /// The values of a corner; null when there are none.
    [[nodiscard]] const double* find(std::size_t corner, std::size_t point, std::size_t polygon) const
    {
        std::size_t index = m_ePer == Per::Corner    ? corner
                            : m_ePer == Per::Point   ? point
                            : m_ePer == Per::Polygon ? polygon
                                                     : 0;
        if (!m_vecIndices.empty())
        {
            if (index >= m_vecIndices.size() || !(m_vecIndices[index] >= 0.0) ||
                m_vecIndices[index] >= static_cast<double>(m_vecValues.size()))
            {
                return nullptr;
            }
            index = static_cast<std::size_t>(m_vecIndices[index]);
        }
        return index < m_vecValues.size() / std::max<std::size_t>(m_uiWidth, 1) ? m_vecValues.data() + index * m_uiWidth
                                                                                : nullptr;
    }

private:
    enum class Per
    {
        All,
        Polygon,
        Point,
        Corner
    };
    Per m_ePer = Per::All;
    std::size_t m_uiWidth = 0;
    std::vector<double> m_vecValues;
    std::vector<double> m_vecIndices;
};

class GeometryReader
{
public:
    GeometryReader(const FbxScene& scene, std::size_t place, const FbxObject& geometry,
                   const std::vector<int>& surfaces, Warnings& warnings)
        : m_scene(scene),
          m_document(scene.getDocument()),
          m_uiPlace(place),
          m_place(scene.getPlaces()[place]),
          m_geometry(geometry),
          m_vecSurfaces(surfaces),
          m_warnings(warnings),
          m_strPart("mesh \"" + m_place.m_strName + "\"")
    {
    }

    std::vector<Mesh> read()
    {
        readPoints();
        readLayers();
        readPolygons();
        bind();
        std::vector<Mesh> meshes;
        for (auto& [material, joiner] : m_mapMeshes)
        {
            joiner.finish(!m_normals.isEmpty(), m_vecCoordinates.size(), !m_colors.isEmpty());
            joiner.m_mesh.m_strName = m_place.m_strName;
            joiner.m_mesh.m_iMaterial = m_vecSurfaces[material];
            meshes.push_back(std::move(joiner.m_mesh));
        }
        return meshes;
    }

private:
    void readPoints()
    {
        const std::vector<double> numbers = m_document.getNumbers(*m_geometry.m_pElement->find("Vertices"));
        for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
        {
            m_vecPoints.push_back(m_place.m_geometric.transformPoint({numbers[i], numbers[i + 1], -numbers[i + 2]}));
        }
    }

    void readLayers()
    {
        for (const FbxElement& element : m_geometry.m_pElement->m_vecChildren)
        {
            if (element.m_name == "LayerElementNormal" && m_normals.isEmpty())
            {
                m_normals = Layer(m_document, element, "Normals", "NormalsIndex", 3);
            }
            else if (element.m_name == "LayerElementUV")
            {
                m_vecCoordinates.emplace_back(m_document, element, "UV", "UVIndex", 2);
            }
            else if (element.m_name == "LayerElementColor" && m_colors.isEmpty())
            {
                m_colors = Layer(m_document, element, "Colors", "ColorIndex", 4);
            }
            else if (element.m_name == "LayerElementMaterial" && m_materials.isEmpty())
            {
                m_materials = Layer(m_document, element, "Materials", {}, 1);
            }
            else if (element.m_name == "Shape")
            {
                m_warnings.addLeftOut(m_strPart, "morph targets");
            }
        }
    }

    void readPolygons()
    {
        const FbxElement* element = m_geometry.m_pElement->find("PolygonVertexIndex");
        const std::vector<double> numbers = element ? m_document.getNumbers(*element) : std::vector<double>();
        bool thin = !element;
        std::vector<std::size_t> points;
        std::size_t polygon = 0;
        for (std::size_t i = 0; i < numbers.size(); ++i)
        {
            // The last corner of a polygon is written as minus itself minus one.
            const double number = numbers[i] < 0.0 ? -numbers[i] - 1.0 : numbers[i];
            if (!(number >= 0.0) || number >= static_cast<double>(m_vecPoints.size()))
            {
                m_document.fail(*element, "polygons between points that the geometry has");
            }
            points.push_back(static_cast<std::size_t>(number));
            if (numbers[i] < 0.0)
            {
                thin |= points.size() < 3;
                addPolygon(points, i + 1 - points.size(), polygon++);
                points.clear();
            }
        }
        if (thin)
        {
            m_warnings.addLeftOut(m_strPart, "what consists of points and lines");
        }
    }

    void addPolygon(const std::vector<std::size_t>& points, std::size_t firstCorner, std::size_t polygon)
    {
        if (points.size() < 3)
        {
            return;
        }
        std::vector<Vector3d> corners;
        for (const std::size_t point : points)
        {
            corners.push_back(m_vecPoints[point]);
        }
        const double* material = m_materials.find(firstCorner, points.front(), polygon);
        const bool known = material && *material >= 0.0 && *material < static_cast<double>(m_vecSurfaces.size());
        const std::size_t slot = known ? static_cast<std::size_t>(*material) : 0;
        MeshJoiner& joiner = m_mapMeshes.try_emplace(slot, m_vecPoints.size()).first->second;
        std::vector<unsigned int> vertices;
        for (std::size_t i = 0; i < points.size(); ++i)
        {
            vertices.push_back(
                joiner.add(points[i], toFloat(corners[i]), readCorner(firstCorner + i, points[i], polygon)));
        }
        // Mirrored at z, polygons run the other way round, and once more where their node mirrors them.
        TW2::convert::addPolygon(joiner.m_mesh, corners, vertices, m_place.m_geometric.determinant() < 0.0);
    }

    Corner readCorner(std::size_t index, std::size_t point, std::size_t polygon) const
    {
        Corner corner;
        if (const double* n = m_normals.isEmpty() ? nullptr : m_normals.find(index, point, polygon))
        {
            const Vector3d normal{n[0], n[1], -n[2]};
            // The transposed inverse.
            const Matrixd& inverse = m_inverse;
            corner.m_vNormal = toFloat(
                Vector3d{inverse.getRow(0).dot(normal), inverse.getRow(1).dot(normal), inverse.getRow(2).dot(normal)}
                    .normalized());
        }
        for (const Layer& set : m_vecCoordinates)
        {
            const double* uv = set.isEmpty() ? nullptr : set.find(index, point, polygon);
            corner.m_vecCoordinates.push_back(
                uv ? Vector3{static_cast<float>(uv[0]), static_cast<float>(1.0 - uv[1]), 0.0F} : Vector3());
        }
        if (const double* rgba = m_colors.isEmpty() ? nullptr : m_colors.find(index, point, polygon))
        {
            for (std::size_t i = 0; i < 4; ++i)
            {
                corner.m_color[i] = static_cast<unsigned char>(std::lround(255.0 * std::clamp(rgba[i], 0.0, 1.0)));
            }
        }
        return corner;
    }

    void bind()
    {
        for (const FbxObject* deformer : m_scene.getObjects().getChildren(m_geometry.m_iId, "Deformer"))
        {
            if (deformer->m_type != "Skin")
            {
                m_warnings.addLeftOut(m_strPart, "morph targets");
                continue;
            }
            const FbxElement* kind = deformer->m_pElement->find("SkinningType");
            if (kind && (kind->getText(0) == "DualQuaternion" || kind->getText(0) == "Blend"))
            {
                m_warnings.add(m_strPart + ": bones pull at it straight, not by dual quaternions as in the file");
            }
            for (const FbxObject* cluster : m_scene.getObjects().getChildren(deformer->m_iId, "Deformer"))
            {
                addBone(*cluster);
            }
        }
    }

    /// From the mesh to a bone, where a file does not say it: as both stand at rest, or as `link` says of the bone.
    [[nodiscard]] Matrixd findOffset(std::size_t bone, const std::vector<double>& link) const
    {
        const FbxPose& pose = m_scene.getPose();
        const Matrixd bound = link.size() == 16 ? mirrorZ(takeRows(link.data())) : pose.getWorld(bone, 0.0);
        return pose.getWorld(m_uiPlace, 0.0) * bound.inverse();
    }

    void addBone(const FbxObject& cluster)
    {
        const std::vector<const FbxObject*> nodes = m_scene.getObjects().getChildren(cluster.m_iId, "Model");
        const int node = nodes.empty() ? -1 : m_scene.findPlace(nodes.front()->m_iId);
        const auto numbers = [&](std::string_view name)
        {
            const FbxElement* element = cluster.m_pElement->find(name);
            return element ? m_document.getNumbers(*element) : std::vector<double>();
        };
        const std::vector<double> points = numbers("Indexes");
        const std::vector<double> weights = numbers("Weights");
        const std::vector<double> transform = numbers("Transform");
        if (points.empty())
        {
            return;
        }
        if (node < 0)
        {
            m_warnings.add(m_strPart + ": bone \"" + std::string(cluster.m_name) +
                           "\" is no node of the model and left out");
            return;
        }
        const Matrixd offset = transform.size() == 16
                                   ? mirrorZ(takeRows(transform.data()))
                                   : findOffset(static_cast<std::size_t>(node), numbers("TransformLink"));
        for (auto& [material, joiner] : m_mapMeshes)
        {
            Bone bone;
            bone.m_iNode = node;
            bone.m_offset = offset;
            for (std::size_t i = 0; i < std::min(points.size(), weights.size()); ++i)
            {
                const double weight = weights[i];
                if (!(points[i] >= 0.0) || points[i] >= static_cast<double>(m_vecPoints.size()) || !(weight > 0.0) ||
                    !std::isfinite(weight))
                {
                    continue;
                }
                joiner.forEachAt(static_cast<std::size_t>(points[i]), [&](unsigned int vertex)
                                 { bone.m_vecWeights.emplace_back(vertex, static_cast<float>(weight)); });
            }
            if (!bone.m_vecWeights.empty())
            {
                joiner.m_mesh.m_vecBones.push_back(std::move(bone));
            }
        }
    }

    const FbxScene& m_scene;
    const FbxDocument& m_document;
    std::size_t m_uiPlace;
    const FbxPlace& m_place;
    const FbxObject& m_geometry;
    const std::vector<int>& m_vecSurfaces;
    Warnings& m_warnings;
    std::string m_strPart;
    Matrixd m_inverse = m_place.m_geometric.inverse();
    std::vector<Vector3d> m_vecPoints;  ///< where the node shows them
    Layer m_normals;
    std::vector<Layer> m_vecCoordinates;
    Layer m_colors;
    Layer m_materials;
    std::map<std::size_t, MeshJoiner> m_mapMeshes;  ///< per material of the node
};
}  // namespace

std::vector<Mesh> readFbxMeshes(const FbxScene& scene, std::size_t place, const FbxObject& geometry,
                                const std::vector<int>& surfaces, Warnings& warnings)
{
    return GeometryReader(scene, place, geometry, surfaces, warnings).read();
}

int findFbxCoordinates(const FbxObjects& objects, std::string_view name)
{
    for (const FbxObject& object : objects.getAll())
    {
        int set = 0;
        for (const FbxElement& element : object.m_pElement->m_vecChildren)
        {
            if (element.m_name != "LayerElementUV")
            {
                continue;
            }
            const FbxElement* called = element.find("Name");
            if (called && called->getText(0) == name)
            {
                return set;
            }
            ++set;
        }
    }
    return 0;
}
}  // namespace TW2::convert
