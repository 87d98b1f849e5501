#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/skin_mesh_callback.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <utility>

namespace TW2
{
namespace
{
/// "nesting, block" of a script at its present position.
S_String describe(const S_Script& script, const char* block)
{
    return S_STR("%s, %s", script.staticNesting(), block).str();
}

S_String describe(const S_Script& script, int block)
{
    return describe(script, script.getBlockName(static_cast<unsigned int>(block)));
}
}  // namespace

/// Leaves this object not constructed and its parts alive in `keeper`, which is not constructed before.
void TW_VertexAnimation::handOverTo(TW_VertexAnimation& keeper) noexcept
{
    std::swap(m_bConstructed, keeper.m_bConstructed);
    std::swap(m_pSharedSkeleton, keeper.m_pSharedSkeleton);
    std::swap(m_pSkin, keeper.m_pSkin);
    std::swap(m_pSkinData, keeper.m_pSkinData);
    std::swap(m_pReferencePose, keeper.m_pReferencePose);
    m_vecBoneMatrices.swap(keeper.m_vecBoneMatrices);
    initializeMembers();
}

/// Builds from scratch by `steps`, which make skeleton and skin; whatever throws leaves the object not constructed.
template <typename Steps>
void TW_VertexAnimation::build(const Steps& steps)
{
    const S_MemoryScope scope("TW Memory Container");
    destruct();
    m_bConstructed = true;
    try
    {
        setEngineFlag(FLAG_BOUNDING_SPHERE, false);
        steps();
        setUpBones();
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

/// @name Constructors
/// @{
TW_VertexAnimation::TW_VertexAnimation()
{
    initializeMembers();
}

TW_VertexAnimation::TW_VertexAnimation(const char* scriptFile, const char* skeletonBlock, const char* skinBlock)
{
    initializeMembers();
    construct(scriptFile, skeletonBlock, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(S_Script* script, const char* skeletonBlock, const char* skinBlock)
{
    initializeMembers();
    construct(script, skeletonBlock, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript,
                                       const char* skinBlock)
{
    initializeMembers();
    construct(skeletonScript, skeletonBlock, skinScript, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(const char* skeletonScriptFile, const char* skeletonBlock,
                                       const char* skinScriptFile, const char* skinBlock)
{
    initializeMembers();
    construct(skeletonScriptFile, skeletonBlock, skinScriptFile, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock)
{
    initializeMembers();
    construct(skeletonScript, skeletonBlock, skinScript, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin)
{
    initializeMembers();
    construct(skeleton, skin);
}

TW_VertexAnimation::TW_VertexAnimation(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock)
{
    initializeMembers();
    construct(skeletonSource, script, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                                       TW_MaterialManager* materialManager)
{
    initializeMembers();
    construct(skeletonSource, skinSource, materialManager);
}

TW_VertexAnimation::TW_VertexAnimation(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock)
{
    initializeMembers();
    construct(skeleton, script, skinBlock);
}

TW_VertexAnimation::TW_VertexAnimation(const TW_VertexAnimation& other, TW_MaterialManager* materialManager)
{
    initializeMembers();
    construct(other, materialManager);
}

TW_VertexAnimation::TW_VertexAnimation(const TW_VertexAnimation& other)
{
    initializeMembers();
    construct(other, nullptr);
}

TW_VertexAnimation& TW_VertexAnimation::operator=(const TW_VertexAnimation& other)
{
    construct(other, nullptr);
    return *this;
}
/// @}

/// @name Forms
/// @{
void TW_VertexAnimation::construct(const char* scriptFile, const char* skeletonBlock, const char* skinBlock)
{
    destruct();
    S_Script script(scriptFile);
    construct(&script, skeletonBlock, &script, skinBlock);
}

void TW_VertexAnimation::construct(S_Script* script, const char* skeletonBlock, const char* skinBlock)
{
    construct(script, skeletonBlock, script, skinBlock);
}

void TW_VertexAnimation::construct(const char* skeletonScriptFile, const char* skeletonBlock,
                                   const char* skinScriptFile, const char* skinBlock)
{
    destruct();
    S_Script skeletonScript(skeletonScriptFile);
    S_Script skinScript(skinScriptFile);
    construct(&skeletonScript, skeletonBlock, &skinScript, skinBlock);
}

void TW_VertexAnimation::construct(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript,
                                   const char* skinBlock)
{
    build([&] { buildByName(*skeletonScript, skeletonBlock, *skinScript, skinBlock); });
}

void TW_VertexAnimation::construct(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock)
{
    build(
        [&]
        {
            setName(S_STR("TW_VertexAnimation %s; %s", describe(*skeletonScript, skeletonBlock).c_str(),
                          describe(*skinScript, skinBlock).c_str()));
            addSkeleton(*skeletonScript, skeletonBlock);
            addSkin(*skinScript, skinBlock);
        });
}

void TW_VertexAnimation::construct(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin)
{
    TW_VertexAnimation previous;  // may hold what is copied
    handOverTo(previous);
    build(
        [&]
        {
            copySkeleton(*skeleton);
            copySkin(*skin, nullptr, nullptr);
            setName(S_STR("TW_VertexAnimation %s %s", skeleton->getName().c_str(), skin->getName().c_str()));
        });
}

void TW_VertexAnimation::construct(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock)
{
    SharedSkeleton* const shared = holdSkeleton(*skeletonSource);
    build(
        [&]
        {
            m_pSharedSkeleton = shared;
            addSkin(*script, skinBlock);
            nameAfterParts();
        });
}

void TW_VertexAnimation::construct(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                                   TW_MaterialManager* materialManager)
{
    TW_VertexAnimation previous;
    SharedSkeleton* const shared = holdSkeleton(*skeletonSource);
    handOverTo(previous);
    const TW_VertexAnimation& source = &skinSource == this ? previous : skinSource;
    build(
        [&]
        {
            m_pSharedSkeleton = shared;
            if (!source.m_pSkin)
            {
                throw TW_Exception_InvalidGeometry("The vertex animation whose skin is to be copied has none");
            }
            copySkin(*source.m_pSkin, source.m_pSkinData, materialManager);
            shareReferencePose(source);
            nameAfterParts();
        });
}

void TW_VertexAnimation::construct(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock)
{
    TW_VertexAnimation previous;  // may hold what is copied
    handOverTo(previous);
    build(
        [&]
        {
            setName(S_STR("TW_VertexAnimation %s %s %s", skeleton.getName().c_str(), script->staticNesting(),
                          script->getBlockName(static_cast<unsigned int>(skinBlock))));
            copySkeleton(skeleton);
            addSkin(*script, skinBlock);
        });
}

void TW_VertexAnimation::construct(const TW_VertexAnimation& other, TW_MaterialManager* materialManager)
{
    if (&other == this)
    {
        return;
    }
    if (!other.m_bConstructed)
    {
        destruct();
        return;
    }
    build(
        [&]
        {
            setName(S_STR("%s (clone)", other.getName().c_str()));
            copySkeleton(*other.getSkeleton());
            copySkin(*other.m_pSkin, other.m_pSkinData, materialManager);
            shareReferencePose(other);
            copyEngineFlags(other);
        });
}
/// @}

/// @name Skeleton
/// @{

/// The source's record with a reference for this object, which may be the source and about to be destructed.
TW_VertexAnimation::SharedSkeleton* TW_VertexAnimation::holdSkeleton(const TW_VertexAnimation& source)
{
    if (!source.m_pSharedSkeleton)
    {
        destruct();
        throw TW_Exception_InvalidGeometry("The vertex animation whose skeleton is to be shared has none");
    }
    ++source.m_pSharedSkeleton->m_iReferenceCount;
    return source.m_pSharedSkeleton;
}

TW_ObjectAnimation& TW_VertexAnimation::createSkeleton()
{
    m_pSharedSkeleton = new SharedSkeleton;
    m_pSharedSkeleton->m_pSkeleton = new TW_ObjectAnimation;
    return *m_pSharedSkeleton->m_pSkeleton;
}

void TW_VertexAnimation::addSkeleton(S_Script& script, int block)
{
    createSkeleton().construct(&script, block, nullptr, false);
    hideSkeleton();
    getSkeleton()->addTo(this);
}

void TW_VertexAnimation::copySkeleton(const TW_ObjectAnimation& source)
{
    createSkeleton().construct(source, false, nullptr);
    hideSkeleton();
    getSkeleton()->addTo(this);
}

/// Bones are animated but never drawn.
void TW_VertexAnimation::hideSkeleton()
{
    TW_ObjectAnimation& skeleton = *getSkeleton();
    skeleton.enable(false);
    for (unsigned int i = 0; i < skeleton.getTotalMeshes(); ++i)
    {
        skeleton.getMesh(i)->enable(false);
    }
}
/// @}

/// @name Skin
/// @{
void TW_VertexAnimation::addSkin(S_Script& script, int block)
{
    m_pSkin = new TW_ObjectAnimation;
    {
        const S_ScriptLockGuard guard(script);
        lockObjectBlock(script, block);
        readSkinData(script);
    }
    TW_SkinMeshCallback callback(m_pSkin, this);
    m_pSkin->construct(&script, block, &callback, false);
    m_pSkin->addTo(this);
    m_pSkinData->checkDataValidity(this);
    takeBoundingVolumes();
}

void TW_VertexAnimation::copySkin(const TW_ObjectAnimation& source, const Skin* skinData,
                                  TW_MaterialManager* materialManager)
{
    m_pSkin = new TW_ObjectAnimation;
    m_pSkin->construct(source, false, materialManager);
    m_pSkin->setMatrix(source.getMatrix());
    for (unsigned int i = 0; i < m_pSkin->getTotalMeshes(); ++i)
    {
        m_pSkin->getMesh(i)->setMatrix(source.getMesh(i)->getMatrix());
    }
    if (skinData)
    {
        m_pSkinData = new Skin(*skinData);
    }
    m_pSkin->addTo(this);
}

/// Reads the file that the locked block of a skin names.
void TW_VertexAnimation::readSkinData(S_Script& script)
{
    const GeometryParameters parameters = parseGeometry(script);
    if (parameters.m_strSkinData.empty())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("The skin in %s names no SKD (key \"skindata\")", script.staticNesting()));
    }
    m_pSkinData = new Skin(parameters.m_strSkinData);
}

/// The manual volumes of skin or skeleton become the object's own; without any it keeps the ones that it has, fixed.
void TW_VertexAnimation::takeBoundingVolumes()
{
    const auto take = [this](const TW_ObjectAnimation& part)
    {
        setBoundingRadius(part.getManualBoundingSphereRadius());
        setBoundingBox(part.getManualBoundingBoxMin(), part.getManualBoundingBoxMax());
    };
    setEngineFlag(FLAG_BOUNDING_SPHERE, false);
    setEngineFlag(FLAG_BOUNDING_BOX, false);
    setEngineFlag(FLAG_AUTOMATIC_BOUNDING_VOLUME, false);
    if (const TW_ObjectAnimation* part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingSphere))
    {
        setEngineFlag(FLAG_BOUNDING_SPHERE, true);
        take(*part);
    }
    if (const TW_ObjectAnimation* part = findManualVolume(&TW_ObjectAnimation::getUseManualBoundingBox))
    {
        setEngineFlag(FLAG_BOUNDING_BOX, true);
        take(*part);
    }
    setEngineFlag(FLAG_FIXED_BOUNDING_VOLUME, true);
    setEngineFlag(FLAG_CULL_SUBTREE, true);
}
/// @}

/// Both parts from named blocks.
void TW_VertexAnimation::buildByName(S_Script& skeletonScript, const char* skeletonBlock, S_Script& skinScript,
                                     const char* skinBlock)
{
    TW_ObjectAnimation& skeleton = createSkeleton();
    m_pSkin = new TW_ObjectAnimation;
    skeleton.construct(&skeletonScript, skeletonBlock, nullptr, false);
    {
        const S_ScriptLockGuard guard(skinScript);
        lockObjectBlock(skinScript, skinBlock);
        readSkinData(skinScript);
    }
    TW_SkinMeshCallback callback(m_pSkin, this);
    m_pSkin->construct(&skinScript, skinBlock, &callback, false);
    setName(S_STR("TW_VertexAnimation %s; %s", describe(skeletonScript, skeletonBlock).c_str(),
                  describe(skinScript, skinBlock).c_str()));
    hideSkeleton();
    m_pSkin->addTo(this);
    skeleton.addTo(this);
    m_pSkinData->checkDataValidity(this);
}

void TW_VertexAnimation::nameAfterParts()
{
    setName(S_STR("TW_VertexAnimation %s %s", getSkeleton()->getName().c_str(), m_pSkin->getName().c_str()));
}
}  // namespace TW2
