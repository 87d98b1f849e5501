#include "convert/collada_scene.h"

#include "convert/model_space.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <string_view>

namespace TW2::convert
{
namespace
{
std::optional<ColladaTransform::Kind> findKind(std::string_view element)
{
    static constexpr std::pair<std::string_view, ColladaTransform::Kind> kinds[]{
        {"matrix", ColladaTransform::Kind::Matrix}, {"translate", ColladaTransform::Kind::Translate},
        {"rotate", ColladaTransform::Kind::Rotate}, {"scale", ColladaTransform::Kind::Scale},
        {"lookat", ColladaTransform::Kind::LookAt}, {"skew", ColladaTransform::Kind::Skew}};
    for (const auto& [name, kind] : kinds)
    {
        if (element == name)
        {
            return kind;
        }
    }
    return std::nullopt;
}

Vector3d take(const double* values, std::size_t from)
{
    return {values[from], values[from + 1], values[from + 2]};
}

Matrixd makeRows(const Vector3d& x, const Vector3d& y, const Vector3d& z, const Vector3d& place)
{
    Matrixd matrix;
    matrix.setRow(0, x);
    matrix.setRow(1, y);
    matrix.setRow(2, z);
    matrix.setTranslation(place);
    return matrix;
}

/// Rodrigues' formula.
Matrixd rotate(const Vector3d& around, double degrees)
{
    const Vector3d axis = around.normalized();
    const double angle = degrees * std::numbers::pi / 180.0;
    const Vector3d rows[3]{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    Matrixd matrix;
    for (int row = 0; row < 3; ++row)
    {
        matrix.setRow(row, rows[row] * std::cos(angle) + axis.cross(rows[row]) * std::sin(angle) +
                               axis * (axis.dot(rows[row]) * (1.0 - std::cos(angle))));
    }
    return matrix;
}

/// Points are moved along one direction by how far they lie along another one, at right angles to it.
Matrixd skew(double degrees, const Vector3d& rotated, const Vector3d& moved)
{
    const Vector3d along = moved.normalized();
    const Vector3d across = (rotated - along * rotated.dot(along)).normalized();
    const double amount = std::tan(degrees * std::numbers::pi / 180.0);
    const Vector3d rows[3]{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    Matrixd matrix;
    for (int row = 0; row < 3; ++row)
    {
        matrix.setRow(row, rows[row] + along * (amount * across.dot(rows[row])));
    }
    return matrix;
}
}  // namespace

std::size_t ColladaTransform::getSize(Kind kind)
{
    switch (kind)
    {
        case Kind::Matrix:
            return 16;
        case Kind::Rotate:
            return 4;
        case Kind::LookAt:
            return 9;
        case Kind::Skew:
            return 7;
        default:
            return 3;
    }
}

Matrixd ColladaTransform::makeMatrix(Kind kind, const double* v)
{
    switch (kind)
    {
        case Kind::Matrix:
            return makeColladaMatrix(v);
        case Kind::Translate:
            return Matrixd::translation(take(v, 0));
        case Kind::Rotate:
            return rotate(take(v, 0), v[3]);
        case Kind::Scale:
            return makeRows({v[0], 0.0, 0.0}, {0.0, v[1], 0.0}, {0.0, 0.0, v[2]}, {});
        case Kind::Skew:
            return skew(v[0], take(v, 1), take(v, 4));
        case Kind::LookAt:
            break;
    }
    const Vector3d back = (take(v, 0) - take(v, 3)).normalized();
    const Vector3d right = take(v, 6).cross(back).normalized();
    return makeRows(right, back.cross(right), back, take(v, 0));
}

Matrixd makeColladaMatrix(const double* values)
{
    Matrixd matrix;
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            matrix.m[row][column] = values[column * 4 + row];
        }
    }
    return matrix;
}

ColladaScene::ColladaScene(const ColladaDocument& document) : m_document(document)
{
    const pugi::xml_node root = document.getRoot();
    pugi::xml_node scene = document.follow(root.child("scene").child("instance_visual_scene"), "url");
    if (!scene)
    {
        scene = root.child("library_visual_scenes").child("visual_scene");
    }
    for (const pugi::xml_node& node : scene.children("node"))
    {
        addPlace(node, -1, 0);
    }
}

void ColladaScene::addPlace(const pugi::xml_node& element, int parent, unsigned int depth)
{
    constexpr unsigned int deepest = 1000;
    constexpr std::size_t most = 100000;
    if (depth > deepest || m_vecPlaces.size() >= most)
    {
        m_document.fail(element, "a scene of at most 100000 nodes, nested at most 1000 deep");
    }
    const int index = static_cast<int>(m_vecPlaces.size());
    ColladaPlace place;
    place.m_element = element;
    place.m_iParent = parent;
    for (const char* attribute : {"name", "id", "sid"})
    {
        if (place.m_strName.empty())
        {
            place.m_strName = element.attribute(attribute).value();
        }
    }
    for (const pugi::xml_node& child : element.children())
    {
        if (const auto kind = findKind(child.name()))
        {
            ColladaTransform transform{*kind, child.attribute("sid").value(), m_document.readNumbers(child)};
            if (transform.m_vecValues.size() != ColladaTransform::getSize(*kind))
            {
                m_document.fail(child, std::to_string(ColladaTransform::getSize(*kind)) + " numbers, found " +
                                           std::to_string(transform.m_vecValues.size()));
            }
            place.m_vecTransforms.push_back(std::move(transform));
        }
    }
    m_vecPlaces.push_back(std::move(place));
    for (const pugi::xml_node& child : element.children())
    {
        const std::string_view name = child.name();
        const pugi::xml_node shown = name == "node"            ? child
                                     : name == "instance_node" ? m_document.follow(child, "url")
                                                               : pugi::xml_node();
        if (shown)
        {
            addPlace(shown, index, depth + 1);
        }
    }
}

Matrixd ColladaScene::makeLocal(const std::vector<ColladaTransform>& transforms)
{
    Matrixd local;
    for (const ColladaTransform& transform : transforms)
    {
        local = transform.makeMatrix() * local;
    }
    return mirrorZ(local);
}

Matrixd ColladaScene::getRoot() const
{
    const std::vector<std::string> up =
        ColladaDocument::split(m_document.getRoot().child("asset").child("up_axis").text().get());
    const std::string axis = up.empty() ? "Y_UP" : up.front();
    if (axis == "Z_UP")
    {
        return mirrorZ(makeRows({1.0, 0.0, 0.0}, {0.0, 0.0, -1.0}, {0.0, 1.0, 0.0}, {}));
    }
    return axis == "X_UP" ? mirrorZ(makeRows({0.0, 1.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}, {})) : Matrixd();
}

double ColladaScene::getUnit() const
{
    const double meter = m_document.getRoot().child("asset").child("unit").attribute("meter").as_double(1.0);
    return meter > 0.0 && std::isfinite(meter) ? meter : 1.0;
}

std::vector<std::size_t> ColladaScene::findPlaces(const std::string& id) const
{
    std::vector<std::size_t> places;
    pugi::xml_node first;  // of several elements with one id
    for (std::size_t i = 0; !id.empty() && i < m_vecPlaces.size(); ++i)
    {
        const pugi::xml_node element = m_vecPlaces[i].m_element;
        if (id == element.attribute("id").value() && (!first || element == first))
        {
            first = element;
            places.push_back(i);
        }
    }
    return places;
}

int ColladaScene::findJoint(const std::string& name, const std::vector<std::size_t>& skeletons) const
{
    // Best: the sid, below a skeleton of the skin; then anything of that name there; then anywhere.
    int best = -1;
    int bestRank = 0;
    std::vector<bool> below(m_vecPlaces.size(), skeletons.empty());
    for (std::size_t i = 0; i < m_vecPlaces.size(); ++i)
    {
        const ColladaPlace& place = m_vecPlaces[i];
        below[i] = below[i] || std::find(skeletons.begin(), skeletons.end(), i) != skeletons.end() ||
                   (place.m_iParent >= 0 && below[static_cast<std::size_t>(place.m_iParent)]);
        const bool sid = name == place.m_element.attribute("sid").value();
        const bool other =
            name == place.m_element.attribute("id").value() || name == place.m_element.attribute("name").value();
        const int rank = sid && below[i] ? 3 : (sid || other) && below[i] ? 2 : sid || other ? 1 : 0;
        if (rank > bestRank)
        {
            best = static_cast<int>(i);
            bestRank = rank;
        }
    }
    return best;
}
}  // namespace TW2::convert
