#include "core/release_guard.h"
#include "object/bone_not_found.h"
#include "object/keyframe_animation_reference.h"
#include "object/object_animation_script.h"

#include <tw2/material/material_manager.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/rollback.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <iterator>
#include <limits>

namespace TW2
{
namespace
{
constexpr float largestFloat = std::numeric_limits<float>::max();

template <typename Map, typename Key>
P_VirtualObject* find(const TW_MeshList& meshes, const Map& map, const Key& key)
{
    const auto found = map.find(key);
    return found == map.end() ? nullptr : meshes[found->second];
}

/// Takes the entry of `key` out again when it is that of the mesh.
template <typename Map>
void eraseEntry(Map& map, const S_String& key, std::size_t mesh) noexcept
{
    const auto found = map.find(key);
    if (found != map.end() && found->second == mesh)
    {
        map.erase(found);
    }
}
}  // namespace

void TW_ObjectAnimation::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_pMaterialManager = nullptr;
    m_pMeshNames = nullptr;
    m_iMaximumAnimationIndex = -1;
    m_vecAnimations.clear();
    m_mapAnimationIndices.clear();
    m_eCrossMode = InterpolationMode::Linear;
    m_bUseManualBoundingSphere = false;
    m_bUseManualBoundingBox = false;
    m_fManualBoundingSphereRadius = largestFloat;
    m_vManualBoundingBoxMin = {largestFloat, largestFloat, largestFloat};
    m_vManualBoundingBoxMax = {largestFloat, largestFloat, largestFloat};
    m_pGeometryData.reset();
}

void TW_ObjectAnimation::destruct() noexcept
{
    if (!m_bConstructed && !m_pMaterialManager && m_vecMeshes.empty() && m_vecAnimations.empty())
    {
        return;
    }
    ++m_uiDestructions;
    ReleaseGuard::release(m_pMaterialManager);
    m_meshTransforms.release();
    m_vecMeshes.destroy();
    for (ObjectAnimation& record : m_vecAnimations)
    {
        for (TW_KeyframeAnimation* animation : record.m_vecKeyframeAnimations)
        {
            dropReference(animation);
        }
    }
    initializeMembers();
}

void TW_ObjectAnimation::addMesh(P_VirtualObject* mesh)
{
    if (!mesh || getMeshIndex(mesh) >= 0)
    {
        return;
    }
    m_vecMeshes.push_back(mesh);
    S_Rollback dropMesh([this]() noexcept { m_vecMeshes.pop_back(); });
    accessMeshNames().add(mesh->getName());
    S_Rollback dropName([this]() noexcept { m_pMeshNames->dropLast(); });
    m_meshTransforms.append(*mesh);
    dropName.keep();
    dropMesh.keep();
}

TW_ObjectAnimation::MeshNames::MeshNames(const MeshNames& other)
    : S_Allocated(other),
      m_vecNames(other.m_vecNames),
      m_mapMeshesByLowerCaseName(other.m_mapMeshesByLowerCaseName),
      m_mapMeshesByName(other.m_mapMeshesByName)
{
}

void TW_ObjectAnimation::MeshNames::add(const S_String& name)
{
    const auto index = static_cast<unsigned int>(m_vecNames.size());
    m_vecNames.push_back(name);
    S_Rollback rollback([this]() noexcept { dropLast(); });
    m_mapMeshesByName.emplace(name, index);
    m_mapMeshesByLowerCaseName.emplace(name, index);
    rollback.keep();
}

void TW_ObjectAnimation::MeshNames::dropLast() noexcept
{
    eraseEntry(m_mapMeshesByLowerCaseName, m_vecNames.back(), m_vecNames.size() - 1);
    eraseEntry(m_mapMeshesByName, m_vecNames.back(), m_vecNames.size() - 1);
    m_vecNames.pop_back();
}

/// Names that no other object shares.
TW_ObjectAnimation::MeshNames& TW_ObjectAnimation::accessMeshNames()
{
    if (!m_pMeshNames.isOnlyHolder())
    {
        m_pMeshNames = S_Handle<MeshNames>(m_pMeshNames ? new MeshNames(*m_pMeshNames) : new MeshNames);
    }
    return *m_pMeshNames;
}

/// Whether no mesh was renamed since it was added.
bool TW_ObjectAnimation::areMeshNamesCurrent() const noexcept
{
    return std::equal(m_vecMeshes.begin(), m_vecMeshes.end(), m_pMeshNames->m_vecNames.begin(),
                      [](const P_VirtualObject* mesh, const S_String& name) { return mesh->getName() == name; });
}

P_VirtualObject* TW_ObjectAnimation::getMeshByName(const S_String& name) const
{
    return m_pMeshNames ? find(m_vecMeshes, m_pMeshNames->m_mapMeshesByLowerCaseName, name) : nullptr;
}

P_VirtualObject* TW_ObjectAnimation::getMeshByName(const char* name) const
{
    return m_pMeshNames ? find(m_vecMeshes, m_pMeshNames->m_mapMeshesByLowerCaseName, std::string_view(orEmpty(name)))
                        : nullptr;
}

P_VirtualObject* TW_ObjectAnimation::getMeshByNameCaseSensitive(const S_String& name) const
{
    return m_pMeshNames ? find(m_vecMeshes, m_pMeshNames->m_mapMeshesByName, name) : nullptr;
}

P_VirtualObject* TW_ObjectAnimation::getMeshByNameCaseSensitive(const char* name) const
{
    return m_pMeshNames ? find(m_vecMeshes, m_pMeshNames->m_mapMeshesByName, std::string_view(orEmpty(name))) : nullptr;
}

TW_BoneHandle TW_ObjectAnimation::getBoneHandle(const char* givenName)
{
    const char* const name = orEmpty(givenName);
    // Not by the map, which knows meshes by the names that they were added under: a host may have renamed some.
    for (std::size_t i = 0; i < m_vecMeshes.size(); ++i)
    {
        if (S_CaselessNameEqual()(m_vecMeshes[i]->getName(), name))
        {
            return TW_BoneHandle(m_vecMeshes[i]->getName(), static_cast<int>(i));
        }
    }
    throw makeBoneNotFound(*this, name);
}

int TW_ObjectAnimation::getMeshIndex(const P_VirtualObject* mesh) const noexcept
{
    if (mesh && mesh->getTransformBlock() == &m_meshTransforms)
    {
        return static_cast<int>(mesh->getTransformBlockIndex());
    }
    if (m_meshTransforms.getMemberCount() == m_vecMeshes.size())
    {
        return -1;
    }
    // One that a host has taken into a block of its own may be meant.
    const auto found = std::find(m_vecMeshes.begin(), m_vecMeshes.end(), mesh);
    return found == m_vecMeshes.end() ? -1 : static_cast<int>(std::distance(m_vecMeshes.begin(), found));
}
}  // namespace TW2
