#include "object/keyframe_animation_reference.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <limits>

namespace TW2
{
namespace
{
constexpr float largestFloat = std::numeric_limits<float>::max();

/// Number of the list of meshes made last, in all objects.
unsigned long long s_uiMeshListCount = 0;

S_String toLowerCase(const S_String& name)
{
    S_String lower(name);
    for (char& letter : lower)
    {
        letter = ::toLowerCase(letter);
    }
    return lower;
}

template <typename Map, typename Key>
P_VirtualObject* find(const Map& map, const Key& key)
{
    const auto found = map.find(key);
    return found == map.end() ? nullptr : found->second;
}

/// Takes the entry of `key` out again when it was the mesh's.
template <typename Map, typename Key>
void eraseEntry(Map& map, const Key& key, const P_VirtualObject* mesh) noexcept
{
    const auto found = map.find(key);
    if (found != map.end() && found->second == mesh)
    {
        map.erase(found);
    }
}
}  // namespace

TW_ObjectAnimation::~TW_ObjectAnimation()
{
    destruct();
}

void TW_ObjectAnimation::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_pMaterialManager = nullptr;
    m_vecMeshes.clear();
    m_mapMeshesByLowerCaseName.clear();
    m_mapMeshesByName.clear();
    m_mapMeshIndices.clear();
    m_iMaximumAnimationIndex = -1;
    m_vecAnimations.clear();
    m_mapAnimationIndices.clear();
    m_eCrossMode = InterpolationMode::Linear;
    m_bUseManualBoundingSphere = false;
    m_bUseManualBoundingBox = false;
    m_fManualBoundingSphereRadius = largestFloat;
    m_vManualBoundingBoxMin = {largestFloat, largestFloat, largestFloat};
    m_vManualBoundingBoxMax = {largestFloat, largestFloat, largestFloat};
    m_meshTransforms.release();
    m_bMeshTransformsDeferred = false;
    m_uiMeshListNumber = ++s_uiMeshListCount;
}

void TW_ObjectAnimation::destruct() noexcept
{
    if (!m_bConstructed && !m_pMaterialManager && m_vecMeshes.empty() && m_vecAnimations.empty())
    {
        return;
    }
    delete m_pMaterialManager;
    m_meshTransforms.release();
    for (std::size_t i = m_vecMeshes.size(); i-- > 0;)
    {
        m_vecMeshes[i]->remove();
        delete m_vecMeshes[i];
    }
    for (ObjectAnimation& record : m_vecAnimations)
    {
        for (TW_KeyframeAnimation* animation : record.m_vecKeyframeAnimations)
        {
            dropReference(animation);
        }
    }
    initializeMembers();
}

const char* TW_ObjectAnimation::getObjectType() const
{
    return "TW_ObjectAnimation";
}

void TW_ObjectAnimation::addMesh(P_VirtualObject* mesh)
{
    if (!mesh || m_mapMeshIndices.contains(mesh))
    {
        return;
    }
    const int index = static_cast<int>(m_vecMeshes.size());
    const S_String lowerCaseName = toLowerCase(mesh->getName());
    m_vecMeshes.push_back(mesh);
    try
    {
        m_mapMeshIndices.emplace(mesh, index);
        m_mapMeshesByName.emplace(mesh->getName(), mesh);
        m_mapMeshesByLowerCaseName.emplace(lowerCaseName, mesh);
        if (!m_bMeshTransformsDeferred)
        {
            adoptMeshTransforms();
        }
    }
    catch (...)
    {
        eraseEntry(m_mapMeshesByLowerCaseName, lowerCaseName, mesh);
        eraseEntry(m_mapMeshesByName, mesh->getName(), mesh);
        m_mapMeshIndices.erase(mesh);
        m_vecMeshes.pop_back();
        throw;
    }
    m_uiMeshListNumber = ++s_uiMeshListCount;
}

void TW_ObjectAnimation::adoptMeshTransforms()
{
    const S_Vector<P_BaseObject*> objects(m_vecMeshes.begin(), m_vecMeshes.end());
    m_meshTransforms.adopt(objects.data(), objects.size());
    m_bMeshTransformsDeferred = false;
}

P_VirtualObject* TW_ObjectAnimation::getMeshByName(const S_String& name) const
{
    return find(m_mapMeshesByLowerCaseName, name);
}

P_VirtualObject* TW_ObjectAnimation::getMeshByName(const char* name) const
{
    return find(m_mapMeshesByLowerCaseName, std::string_view(name));
}

P_VirtualObject* TW_ObjectAnimation::getMeshByNameCaseSensitive(const S_String& name) const
{
    return find(m_mapMeshesByName, name);
}

P_VirtualObject* TW_ObjectAnimation::getMeshByNameCaseSensitive(const char* name) const
{
    return find(m_mapMeshesByName, std::string_view(name));
}

TW_BoneHandle TW_ObjectAnimation::getBoneHandle(const char* name)
{
    // Not by the map, which knows meshes by the names that they were added under: a host may have renamed some.
    const auto found =
        std::find_if(m_vecMeshes.begin(), m_vecMeshes.end(),
                     [name](const P_VirtualObject* mesh) { return S_CaselessNameEqual()(mesh->getName(), name); });
    if (found == m_vecMeshes.end())
    {
        throw TW_Exception_BoneNotFound(name, getName().c_str());
    }
    return TW_BoneHandle((*found)->getName(), static_cast<int>(found - m_vecMeshes.begin()));
}

int TW_ObjectAnimation::getMeshIndex(const P_VirtualObject* mesh) const noexcept
{
    const auto found = m_mapMeshIndices.find(mesh);
    return found == m_mapMeshIndices.end() ? -1 : found->second;
}
}  // namespace TW2
