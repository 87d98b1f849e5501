#include "core/memory_scope.h"
#include "core/release_guard.h"
#include "object/keyframe_animation_reference.h"
#include "object/object_animation_builder.h"
#include "object/object_animation_materials.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/material/material_manager.h>

#include <platform/runtime/rollback.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace TW2
{
TW_ObjectAnimation& TW_ObjectAnimation::operator=(const TW_ObjectAnimation& source)
{
    construct(source, false, nullptr);
    return *this;
}

/// Builds from scratch by `steps`; whatever throws leaves the object not constructed.
template <typename Steps>
void TW_ObjectAnimation::build(const Steps& steps)
{
    destruct();
    const MemoryScope memory;
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_bConstructed = true;
    steps();
    rollback.keep();
}

void TW_ObjectAnimation::construct(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                                   bool withVisibility)
{
    const MemoryScope memory;
    S_Rollback rollback([this]() noexcept { destruct(); });
    S_Script script(orEmpty(scriptFileName));
    construct(&script, blockName, meshCallback, withVisibility);
    rollback.keep();
}

void TW_ObjectAnimation::construct(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback,
                                   bool withVisibility)
{
    const MemoryScope memory;
    S_Rollback rollback([this]() noexcept { destruct(); });
    const S_String name(orEmpty(blockName));  // it may be that of a part, which goes first
    build([&] { Builder(*this).build(requireScript(script), name.c_str(), meshCallback, withVisibility); });
    rollback.keep();
}

void TW_ObjectAnimation::construct(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback, bool withVisibility)
{
    build([&] { Builder(*this).build(requireScript(script), blockIndex, meshCallback, withVisibility); });
}

void TW_ObjectAnimation::construct(const TW_ObjectAnimation& source, bool deepCopy, TW_MaterialManager* materials)
{
    if (&source == this)
    {
        return;
    }
    const ReleaseGuard passed(materials);
    destruct();
    if (!source.m_bConstructed && source.m_vecMeshes.empty())
    {
        return;
    }
    build([&] { Builder(*this).copy(source, deepCopy, materials ? materials : source.m_pMaterialManager); });
}

template <typename Block>
void TW_ObjectAnimation::Builder::build(S_Script& script, Block block, TW_MeshCallback* meshCallback,
                                        bool withVisibility)
{
    m_object.setName(describeBlock(script, block));
    const S_ScriptLockGuard lock(script);
    lockBlock(script, block, BlockKind::Object);
    loadGeometry(script, meshCallback);
    loadAnimations(script, withVisibility);
}

/// @name Copying
/// @{
void TW_ObjectAnimation::Builder::copy(const TW_ObjectAnimation& source, bool deepCopy,
                                       const TW_MaterialManager* materials)
{
    m_object.m_pMaterialManager = materials ? new TW_MaterialManager(*materials) : new TW_MaterialManager();
    const S_String& name = source.getName();
    m_object.setNameOfCopy(
        name.empty() ? S_String("TW_ObjectAnimation clone(no name)") : S_STR("%s (clone)", name.c_str()).str(), source);
    m_object.copyEngineFlags(source);
    if (source.hasEngineFlag(FLAG_FIXED_BOUNDING_VOLUME))
    {
        m_object.setBoundingRadius(source.getStoredBoundingRadius());
        m_object.setBoundingBox(source.getStoredBoundingBoxMin(), source.getStoredBoundingBoxMax());
    }
    m_object.m_eCrossMode = source.m_eCrossMode;
    m_object.m_bUseManualBoundingSphere = source.m_bUseManualBoundingSphere;
    m_object.m_bUseManualBoundingBox = source.m_bUseManualBoundingBox;
    m_object.m_fManualBoundingSphereRadius = source.m_fManualBoundingSphereRadius;
    m_object.m_vManualBoundingBoxMin = source.m_vManualBoundingBoxMin;
    m_object.m_vManualBoundingBoxMax = source.m_vManualBoundingBoxMax;
    m_object.m_iMaximumAnimationIndex = source.m_iMaximumAnimationIndex;
    m_object.m_pGeometryData = source.m_pGeometryData;

    copyMeshNames(source);
    copyMeshes(source, deepCopy);
    copyAnimations(source);
}

/// The copies have the names that the meshes have now; unless one was renamed, that is what the source knows them by.
void TW_ObjectAnimation::Builder::copyMeshNames(const TW_ObjectAnimation& source)
{
    if (source.m_vecMeshes.empty() || source.areMeshNamesCurrent())
    {
        m_object.m_pMeshNames = source.m_pMeshNames;
        return;
    }
    for (const P_VirtualObject* mesh : source.m_vecMeshes)
    {
        m_object.accessMeshNames().add(mesh->getName());
    }
}

/// All meshes in one piece of memory, their matrices in another. Deep copies have meshes of their own as they have
/// geometry of their own.
void TW_ObjectAnimation::Builder::copyMeshes(const TW_ObjectAnimation& source, bool deepCopy)
{
    const std::size_t count = source.m_vecMeshes.size();
    if (count == 0)
    {
        return;
    }
    if (deepCopy)
    {
        m_object.m_meshTransforms.reserve(count);
    }
    else
    {
        m_object.m_vecMeshes.reserveRow(count, m_object.m_meshTransforms);
    }
    for (const P_VirtualObject* mesh : source.m_vecMeshes)
    {
        P_VirtualObject& copy = copyMesh(*mesh, deepCopy);
        if (source.m_pMaterialManager && hasMaterials(*mesh))
        {
            remapMeshMaterials(copy, *m_object.m_pMaterialManager, *source.m_pMaterialManager);
        }
    }
}

P_VirtualObject& TW_ObjectAnimation::Builder::copyMesh(const P_VirtualObject& source, bool deepCopy)
{
    const std::size_t index = m_object.m_vecMeshes.size();
    P_VirtualObject& copy =
        deepCopy ? copyDeeply(source) : m_object.m_vecMeshes.addToRow(source, m_object.m_meshTransforms);
    // Below the first mesh of the parent's name, where that one is copied already.
    P_ObjectContainer* container = &m_object;
    if (const P_BaseObject* const parent = source.getParent())
    {
        const auto& indices = m_object.m_pMeshNames->m_mapMeshesByName;
        const auto found = indices.find(parent->getName());
        if (found != indices.end() && found->second < index)
        {
            container = m_object.m_vecMeshes[found->second];
        }
    }
    copy.addTo(container);
    return copy;
}

P_VirtualObject& TW_ObjectAnimation::Builder::copyDeeply(const P_VirtualObject& source)
{
    auto made = std::make_unique<P_VirtualObject>();
    made->duplicate(static_cast<const P_BaseObject&>(source));
    m_object.m_vecMeshes.push_back(made.get());
    P_VirtualObject& copy = *made.release();
    m_object.m_meshTransforms.append(copy);
    return copy;
}

/// The records hold the tracks only once they are all in place: until then nothing has to be let go of.
void TW_ObjectAnimation::Builder::copyAnimations(const TW_ObjectAnimation& source)
{
    S_Vector<ObjectAnimation> records(source.m_vecAnimations);
    for (ObjectAnimation& record : records)
    {
        std::fill(record.m_vecLastFrames.begin(), record.m_vecLastFrames.end(), 0U);
    }
    S_FlatMap<int, int> indices(source.m_mapAnimationIndices);

    m_object.m_mapAnimationIndices.swap(indices);
    m_object.m_vecAnimations.swap(records);
    for (const ObjectAnimation& record : m_object.m_vecAnimations)
    {
        holdTracks(record.m_vecKeyframeAnimations);
    }
}
/// @}
}  // namespace TW2
