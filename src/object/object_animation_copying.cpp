#include "object/mesh_materials.h"
#include "object/object_animation_builder.h"

#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/material/material_manager.h>

#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <memory>

namespace TW2
{
void TW_ObjectAnimation::Builder::copy(const TW_ObjectAnimation& source, bool deepCopy,
                                       const TW_MaterialManager* materials)
{
    m_object.m_pMaterialManager = materials ? new TW_MaterialManager(*materials) : new TW_MaterialManager();
    const S_String& name = source.getName();
    m_object.setName(name.empty() ? S_String("TW_ObjectAnimation clone(no name)")
                                  : S_STR("%s (clone)", name.c_str()).str());
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

    m_object.m_bMeshTransformsDeferred = true;
    for (const P_VirtualObject* mesh : source.m_vecMeshes)
    {
        copyMesh(*mesh, deepCopy);
        if (source.m_pMaterialManager)
        {
            remapMeshMaterials(*m_object.m_vecMeshes.back(), *m_object.m_pMaterialManager, *source.m_pMaterialManager);
        }
    }
    m_object.adoptMeshTransforms();
    copyAnimations(source);
}

void TW_ObjectAnimation::Builder::copyMesh(const P_VirtualObject& source, bool deepCopy)
{
    std::unique_ptr<P_VirtualObject> mesh;
    if (deepCopy)
    {
        mesh = std::make_unique<P_VirtualObject>();
        mesh->duplicate(static_cast<const P_BaseObject&>(source));
    }
    else
    {
        mesh = std::make_unique<P_VirtualObject>(source);
    }
    const P_BaseObject* const sourceParent = source.getParent();
    P_VirtualObject* const parent =
        sourceParent ? m_object.getMeshByNameCaseSensitive(sourceParent->getName()) : nullptr;
    mesh->addTo(parent ? static_cast<P_ObjectContainer*>(parent) : &m_object);
    m_object.addMesh(mesh.get());
    (void)mesh.release();  // belongs to the object now
}

/// The records hold the tracks only once they are all in place: until then nothing has to be let go of.
void TW_ObjectAnimation::Builder::copyAnimations(const TW_ObjectAnimation& source)
{
    S_Vector<ObjectAnimation> records(source.m_vecAnimations);
    for (ObjectAnimation& record : records)
    {
        std::fill(record.m_vecLastFrames.begin(), record.m_vecLastFrames.end(), 0u);
    }
    S_FlatMap<int, int> indices(source.m_mapAnimationIndices);

    m_object.m_mapAnimationIndices.swap(indices);
    m_object.m_vecAnimations.swap(records);
    for (const ObjectAnimation& record : m_object.m_vecAnimations)
    {
        for (const TW_KeyframeAnimation* animation : record.m_vecKeyframeAnimations)
        {
            if (animation)
            {
                animation->increaseObjectReferenceCount();
            }
        }
    }
}
}  // namespace TW2
