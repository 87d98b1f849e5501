#include "core/memory_scope.h"
#include "core/release_guard.h"
#include "core/unit_init.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/system.h>

namespace TW2
{
TW_VertexAnimation::SharedSkeleton::~SharedSkeleton()
{
    if (m_pSkeleton)
    {
        m_pSkeleton->remove();
    }
    ReleaseGuard::release(m_pSkeleton);
}

void TW_VertexAnimation::initializeMembers() noexcept
{
    m_pSharedSkeleton = nullptr;
    m_pSkin = nullptr;
    m_pSkinData = nullptr;
    m_pReferencePose = nullptr;
    m_vecBoneMatrices.clear();
    m_uBoneChange = 0;
    m_uSkinChange = 0;
    m_bWorldsWereValid = false;
    setFramePreparation(this);
}

/// The skin data go last: an engine may read bone counts in place.
void TW_VertexAnimation::takeApart() noexcept
{
    m_pSharedSkeleton = nullptr;
    if (m_pSkin)
    {
        m_pSkin->remove();
    }
    ReleaseGuard::release(m_pSkin);
    ReleaseGuard::release(m_pSkinData);
    initializeMembers();
}

void TW_VertexAnimation::loadMaterials(const char* fileName)
{
    const LoadScope load(*this);
    if (m_pSkin)
    {
        m_pSkin->loadMaterials(fileName);
    }
    load.requireObject();
}

void TW_VertexAnimation::remapMaterials(TW_MaterialManager* manager)
{
    const MemoryScope scope;
    if (m_pSkin)
    {
        m_pSkin->remapMaterials(manager);
    }
}

/// Animation belongs to the skeleton, textures to the skin.
TW_ObjectAnimation* TW_VertexAnimation::getPart(Operations operations, unsigned int i) const
{
    TW_ObjectAnimation* const skeleton = getSkeleton();
    switch (operations)
    {
        case Operations::Show:
        case Operations::Texture:
        case Operations::AskTexture:
            return i == 0 ? m_pSkin : nullptr;
        case Operations::Bounds:
            return i == 0 ? m_pSkin : i == 1 ? skeleton : nullptr;
        default:
            return i == 0 ? skeleton : nullptr;
    }
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
