#include "core/unit_init.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/system.h>

namespace TW2
{
TW_VertexAnimation::~TW_VertexAnimation()
{
    destruct();
}

void TW_VertexAnimation::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_pSharedSkeleton = nullptr;
    m_pSkin = nullptr;
    m_pSkinData = nullptr;
    m_pReferencePose = nullptr;
    m_vecBoneMatrices.clear();
    m_uBoneChange = 0;
    m_uSkinChange = 0;
    m_bWorldsWereValid = false;
}

void TW_VertexAnimation::destruct() noexcept
{
    if (m_bConstructed)
    {
        releaseSkeleton();
        releaseSkin();
        releaseReferencePose();
        initializeMembers();
    }
}

/// The last holder deletes the skeleton.
void TW_VertexAnimation::releaseSkeleton() noexcept
{
    if (m_pSharedSkeleton && --m_pSharedSkeleton->m_iReferenceCount == 0)
    {
        delete m_pSharedSkeleton->m_pSkeleton;
        delete m_pSharedSkeleton;
    }
    m_pSharedSkeleton = nullptr;
}

/// The skin data go last: an engine may read bone counts in place.
void TW_VertexAnimation::releaseSkin() noexcept
{
    delete m_pSkin;
    m_pSkin = nullptr;
    delete m_pSkinData;
    m_pSkinData = nullptr;
}

bool TW_VertexAnimation::updateVisibility(int index, float time)
{
    return m_pSkin->updateVisibility(index, time);
}

bool TW_VertexAnimation::updateVisibilityFrame(int index, float frame)
{
    return m_pSkin->updateVisibilityFrame(index, frame);
}

void TW_VertexAnimation::loadMaterials(const char* fileName)
{
    m_pSkin->loadMaterials(fileName);
}

void TW_VertexAnimation::remapMaterials(TW_MaterialManager* manager)
{
    const S_MemoryScope scope("TW Memory Container");
    m_pSkin->remapMaterials(manager);
}

TW_ObjectAnimation* TW_VertexAnimation::findManualVolume(bool (TW_ObjectAnimation::*isUsed)() const noexcept) const
{
    for (TW_ObjectAnimation* part : {m_pSkin, getSkeleton()})
    {
        if (part && (part->*isUsed)())
        {
            return part;
        }
    }
    return nullptr;
}

float TW_VertexAnimation::getBoundingRadius()
{
    TW_ObjectAnimation* const part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingSphere);
    return part ? part->getBoundingRadius() : P_BaseObject::getBoundingRadius();
}

M_Vector3Template<float> TW_VertexAnimation::getBoundingBoxMin()
{
    TW_ObjectAnimation* const part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingBox);
    return part ? part->getBoundingBoxMin() : P_BaseObject::getBoundingBoxMin();
}

M_Vector3Template<float> TW_VertexAnimation::getBoundingBoxMax()
{
    TW_ObjectAnimation* const part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingBox);
    return part ? part->getBoundingBoxMax() : P_BaseObject::getBoundingBoxMax();
}

const char* TW_VertexAnimation::getObjectType() const
{
    return "TW_VertexAnimation";
}

void TW_VertexAnimation::dump(bool details) const
{
    Sys.verbose("Skin object:\n");
    if (m_pSkin)
    {
        m_pSkin->dump(details);
    }
    Sys.verbose("Skeleton object:\n");
    if (getSkeleton())
    {
        getSkeleton()->dump(details);
    }
    P_BaseObject::dump(details);
}
}  // namespace TW2
