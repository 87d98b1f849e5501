#include "core/memory_scope.h"
#include "core/release_guard.h"
#include "io/file_content.h"
#include "object/forwarding_build.h"
#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/skin_mesh_callback.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <memory>

namespace TW2
{
/// @name Constructors
/// @{
TW_VertexAnimation& TW_VertexAnimation::operator=(const TW_VertexAnimation& other)
{
    construct(other, nullptr);
    return *this;
}
/// @}

/// @name Forms
/// @{
void TW_VertexAnimation::construct(const char* scriptFile, const char* skeletonBlock, const char* skinBlock,
                                   bool withVisibility)
{
    const MemoryScope scope;
    S_Rollback rollback([this]() noexcept { destruct(); });
    S_Script script(orEmpty(scriptFile));
    construct(&script, skeletonBlock, &script, skinBlock, withVisibility);
    rollback.keep();
}

void TW_VertexAnimation::construct(S_Script* script, const char* skeletonBlock, const char* skinBlock,
                                   bool withVisibility)
{
    construct(script, skeletonBlock, script, skinBlock, withVisibility);
}

void TW_VertexAnimation::construct(const char* skeletonScriptFile, const char* skeletonBlock,
                                   const char* skinScriptFile, const char* skinBlock, bool withVisibility)
{
    const MemoryScope scope;
    S_Rollback rollback([this]() noexcept { destruct(); });
    S_Script skeletonScript(orEmpty(skeletonScriptFile));
    S_Script skinScript(orEmpty(skinScriptFile));
    construct(&skeletonScript, skeletonBlock, &skinScript, skinBlock, withVisibility);
    rollback.keep();
}

void TW_VertexAnimation::construct(S_Script* skeletonScript, const char* skeletonBlock, S_Script* skinScript,
                                   const char* skinBlock, bool withVisibility)
{
    const MemoryScope scope;
    S_Rollback rollback([this]() noexcept { destruct(); });
    const S_String skeletonName(orEmpty(skeletonBlock));  // they may be those of parts, which go first
    const S_String skinName(orEmpty(skinBlock));
    build(
        [&]
        {
            buildByName(requireScript(skeletonScript), skeletonName.c_str(), requireScript(skinScript),
                        skinName.c_str(), withVisibility);
        });
    rollback.keep();
}

void TW_VertexAnimation::construct(S_Script* skeletonScript, int skeletonBlock, S_Script* skinScript, int skinBlock,
                                   bool withVisibility)
{
    build(
        [&]
        {
            setName(S_STR("TW_VertexAnimation %s; %s",
                          describeBlock(requireScript(skeletonScript), skeletonBlock).c_str(),
                          describeBlock(requireScript(skinScript), skinBlock).c_str()));
            addSkeleton(*skeletonScript, skeletonBlock);
            addSkin(*skinScript, skinBlock, withVisibility);
        });
}

void TW_VertexAnimation::construct(TW_ObjectAnimation* skeleton, TW_ObjectAnimation* skin)
{
    const ReleaseGuard passed(skeleton, skin);
    build(
        [&]
        {
            if (!skeleton || !skin)
            {
                throw TW_Exception_InvalidGeometry("A vertex animation needs a skeleton and a skin to copy");
            }
            copySkeleton(*skeleton);
            copySkin(*skin, nullptr, nullptr);
            setName(S_STR("TW_VertexAnimation %s %s", skeleton->getName().c_str(), skin->getName().c_str()));
        });
}

void TW_VertexAnimation::construct(TW_VertexAnimation* skeletonSource, S_Script* script, int skinBlock,
                                   bool withVisibility)
{
    const S_Handle shared = holdSkeleton(skeletonSource);
    build(
        [&]
        {
            m_pSharedSkeleton = shared;
            addSkin(requireScript(script), skinBlock, withVisibility);
            nameAfterParts();
        });
}

void TW_VertexAnimation::construct(TW_VertexAnimation* skeletonSource, const TW_VertexAnimation& skinSource,
                                   TW_MaterialManager* materialManager)
{
    const TW_ObjectAnimation* const skin = skinSource.m_pSkin;  // either source may be this object
    const Skin* const skinData = skinSource.m_pSkinData;
    const S_Handle pose = skinSource.m_pReferencePose;
    const bool unfinished = skinSource.isLoading();
    const S_Handle skeleton = holdSkeleton(skeletonSource);
    const ReleaseGuard passed(skin, skinData, materialManager);
    build(
        [&]
        {
            if (!skin)
            {
                throw TW_Exception_InvalidGeometry("The vertex animation whose skin is to be copied has none");
            }
            if (unfinished)
            {
                throw TW_Exception_InvalidGeometry(
                    "The vertex animation whose skin is to be copied is still being built");
            }
            m_pSharedSkeleton = skeleton;
            copySkin(*skin, skinData, materialManager);
            m_pReferencePose = pose;
            nameAfterParts();
        });
}

void TW_VertexAnimation::construct(const TW_ObjectAnimation& skeleton, S_Script* script, int skinBlock,
                                   bool withVisibility)
{
    const ReleaseGuard passed(&skeleton);
    build(
        [&]
        {
            requireScript(script);
            setName(S_STR("TW_VertexAnimation %s %s %s", skeleton.getName().c_str(), script->staticNesting(),
                          script->getBlockName(static_cast<unsigned int>(skinBlock))));
            copySkeleton(skeleton);
            addSkin(*script, skinBlock, withVisibility);
        });
}

void TW_VertexAnimation::construct(const TW_VertexAnimation& other, TW_MaterialManager* materialManager)
{
    if (!isToCopy(other))
    {
        return;
    }
    const ReleaseGuard passed(materialManager);
    build(
        [&]
        {
            setNameOfCopy(S_STR("%s (clone)", other.getName().c_str()).str(), other);
            copySkeleton(*other.getSkeleton());
            copySkin(*other.m_pSkin, other.m_pSkinData, materialManager);
            m_pReferencePose = other.m_pReferencePose;
            copyEngineFlags(other);
        });
}
/// @}

/// @name Skeleton
/// @{

/// A hold on the source's skeleton for this object, which may be the source and about to be destructed.
S_Handle<TW_VertexAnimation::SharedSkeleton> TW_VertexAnimation::holdSkeleton(const TW_VertexAnimation* source)
{
    if (!source || !source->m_pSharedSkeleton)
    {
        destruct();
        throw TW_Exception_InvalidGeometry("The vertex animation whose skeleton is to be shared has none");
    }
    if (!source->m_pReferencePose)  // bones may still come, which a sharer would have no matrices for
    {
        destruct();
        throw TW_Exception_InvalidGeometry("The vertex animation whose skeleton is to be shared is still being built");
    }
    return source->m_pSharedSkeleton;
}

TW_ObjectAnimation& TW_VertexAnimation::createSkeleton()
{
    m_pSharedSkeleton = S_Handle(new SharedSkeleton);
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
/// Reads the skin data that the block of a skin names and builds the skin, which holds on to what its meshes read.
template <typename Block>
void TW_VertexAnimation::constructSkin(S_Script& script, Block block, bool withVisibility)
{
    {
        const S_ScriptLockGuard guard(script);
        lockBlock(script, block, BlockKind::Object);
        readSkinData(script);
    }
    TW_SkinMeshCallback callback(m_pSkin, this);
    m_pSkin->construct(&script, block, &callback, withVisibility);
    m_pSkin->m_pGeometryData = std::allocate_shared<const Skin>(S_Allocator<Skin>(), callback.getSkinData());
}

void TW_VertexAnimation::addSkin(S_Script& script, int block, bool withVisibility)
{
    m_pSkin = new TW_ObjectAnimation;
    constructSkin(script, block, withVisibility);
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
    GeometryParameters parameters = parseGeometry(script);
    if (parameters.m_strSkinData.empty())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("The skin in %s names no SKD (key \"skindata\")", script.staticNesting()));
    }
    findFile(script, "geometry", 0, "skindata", parameters.m_strSkinData);
    try
    {
        m_pSkinData = new Skin(parameters.m_strSkinData);
    }
    catch (S_MemoryFileException& exception)
    {
        if (const S_String content = describeMistakenFile(parameters.m_strSkinData, CHUNK_SKIN); !content.empty())
        {
            exception.addHint("it is %s", content.c_str());
        }
        throw;
    }
}

/// The manual volumes of skin or skeleton become the object's own; without any it keeps the engine's, fixed.
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
                                     const char* skinBlock, bool withVisibility)
{
    TW_ObjectAnimation& skeleton = createSkeleton();
    m_pSkin = new TW_ObjectAnimation;
    skeleton.construct(&skeletonScript, skeletonBlock, nullptr, false);
    constructSkin(skinScript, skinBlock, withVisibility);
    setName(S_STR("TW_VertexAnimation %s; %s", describeBlock(skeletonScript, skeletonBlock).c_str(),
                  describeBlock(skinScript, skinBlock).c_str()));
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
