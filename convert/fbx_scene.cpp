#include "convert/fbx_scene.h"

#include "convert/convert_exception.h"
#include "convert/fbx_properties.h"

#include <algorithm>

namespace TW2::convert
{
namespace
{
FbxPlace readPlace(const FbxObject& object, int parent, const FbxElement* otherwise)
{
    const FbxProperties properties(object.m_pElement, otherwise);
    FbxPlace place;
    place.m_iId = object.m_iId;
    place.m_strName = object.m_name;
    place.m_iParent = parent;
    place.m_eInherit = static_cast<FbxPlace::Inherit>(std::clamp(properties.getInteger("InheritType", 0), 0, 2));
    place.m_vTranslation = properties.getVector("Lcl Translation", {});
    place.m_vRotation = properties.getVector("Lcl Rotation", {});
    place.m_vScaling = properties.getVector("Lcl Scaling", {1.0, 1.0, 1.0});
    place.m_vRotationOffset = properties.getVector("RotationOffset", {});
    place.m_vRotationPivot = properties.getVector("RotationPivot", {});
    place.m_vScalingOffset = properties.getVector("ScalingOffset", {});
    place.m_vScalingPivot = properties.getVector("ScalingPivot", {});
    // Else these say only within which limits the node turns.
    const bool turnsBy = properties.getInteger("RotationActive", 1) != 0;
    if (turnsBy && properties.getInteger("RotationSpaceForLimitOnly", 0) == 0)
    {
        place.m_iRotationOrder = properties.getInteger("RotationOrder", 0);
        place.m_vPreRotation = properties.getVector("PreRotation", {});
        place.m_vPostRotation = properties.getVector("PostRotation", {});
    }
    FbxPlace geometric;
    geometric.m_vTranslation = properties.getVector("GeometricTranslation", {});
    geometric.m_vRotation = properties.getVector("GeometricRotation", {});
    geometric.m_vScaling = properties.getVector("GeometricScaling", {1.0, 1.0, 1.0});
    FbxPose shown;
    shown.m_vecPlaces.push_back(geometric);
    shown.prepare();
    place.m_geometric = shown.getLocal(0, 0.0);
    return place;
}
}  // namespace

FbxScene::FbxScene(const std::string& fileName) : m_document(fileName), m_objects(m_document)
{
    addPlaces(0, -1, 0);
    m_pose.prepare();
}

void FbxScene::addPlaces(std::int64_t id, int parent, unsigned int depth)
{
    constexpr unsigned int deepest = 1000;
    if (depth > deepest)
    {
        throw ConvertException(m_document.getFilename().c_str(), "nests its nodes more than 1000 deep");
    }
    for (const FbxObject* object : m_objects.getChildren(id, "Model"))
    {
        if (m_mapPlaces.try_emplace(object->m_iId, m_pose.m_vecPlaces.size()).second)
        {
            const int index = static_cast<int>(m_pose.m_vecPlaces.size());
            m_pose.m_vecPlaces.push_back(readPlace(*object, parent, m_objects.getTemplate("Model")));
            addPlaces(object->m_iId, index, depth + 1);
        }
    }
}

int FbxScene::findPlace(std::int64_t object) const noexcept
{
    const auto found = m_mapPlaces.find(object);
    return found == m_mapPlaces.end() ? -1 : static_cast<int>(found->second);
}

std::vector<const FbxObject*> FbxScene::getGeometries(std::size_t place) const
{
    const std::int64_t id = m_pose.m_vecPlaces[place].m_iId;
    if (!m_objects.isOld())
    {
        return m_objects.getChildren(id, "Geometry");
    }
    const FbxObject* self = m_objects.find(id);
    return self->m_pElement->find("Vertices") ? std::vector{self} : std::vector<const FbxObject*>();
}

const FbxElement* FbxScene::findAttribute(std::size_t place, std::string_view type) const
{
    const FbxObject* self = m_objects.find(m_pose.m_vecPlaces[place].m_iId);
    if (m_objects.isOld())
    {
        return self->m_type == type ? self->m_pElement : nullptr;
    }
    for (const FbxObject* attribute : m_objects.getChildren(self->m_iId, "NodeAttribute"))
    {
        if (attribute->m_type == type)
        {
            return attribute->m_pElement;
        }
    }
    return nullptr;
}

Matrixd FbxScene::getRoot() const
{
    const FbxProperties settings(m_objects.getSettings());
    const int up = std::clamp(settings.getInteger("UpAxis", 1), 0, 2);
    const int front = std::clamp(settings.getInteger("FrontAxis", 2), 0, 2);
    const int side = std::clamp(settings.getInteger("CoordAxis", 0), 0, 2);
    Matrixd root;
    if (up == 1 || ((1 << up) | (1 << front) | (1 << side)) != 7)
    {
        return root;
    }
    for (int row = 0; row < 3; ++row)
    {
        root.setRow(row, {});
    }
    root.m[side][0] = settings.getNumber("CoordAxisSign", 1.0);
    root.m[up][1] = settings.getNumber("UpAxisSign", 1.0);
    root.m[front][2] = settings.getNumber("FrontAxisSign", 1.0);
    for (int k = 0; k < 2; ++k)
    {
        root.m[2][k] = -root.m[2][k];
        root.m[k][2] = -root.m[k][2];
    }
    return root;
}
}  // namespace TW2::convert
