#include "core/release_guard.h"
#include "lod/levels.h"
#include "object/object_animation_script.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/rollback.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <cstddef>

namespace TW2
{
TW_VertexAnimationLODs& TW_VertexAnimationLODs::operator=(const TW_VertexAnimationLODs& other)
{
    construct(other, nullptr);
    return *this;
}

TW_VertexAnimationLODs::~TW_VertexAnimationLODs()
{
    destruct();
}

void TW_VertexAnimationLODs::initializeMembers() noexcept
{
    m_bConstructed = false;
    m_pEngineLODObject = nullptr;
    m_iLevelCount = 0;
    m_vecLevels.clear();
}

/// Builds from scratch by `steps`, which make the levels; whatever throws leaves the object not constructed.
template <typename Steps>
void TW_VertexAnimationLODs::build(const Steps& steps)
{
    const S_MemoryScope scope("TW Memory Container");
    destruct();
    S_Rollback rollback([this]() noexcept { destruct(); });
    const LoadScope load(*this);
    load.requireObject();
    m_bConstructed = true;
    setEngineFlag(FLAG_BOUNDING_SPHERE, false);
    steps();
    load.requireObject();
    requireObject(getSkeleton());
    m_pEngineLODObject->addTo(this);
    getSkeleton()->addTo(this);
    m_iLevelCount = getLevelCount();
    rollback.keep();
}

/// Builds all levels; `constructFirst` constructs level 0, which brings the skeleton.
template <typename ConstructFirst>
void TW_VertexAnimationLODs::buildFromScript(int levelCount, S_Script* script, const int* blockIndices,
                                             const float* distances, bool withVisibility,
                                             const ConstructFirst& constructFirst)
{
    build(
        [&]
        {
            S_Script& skinScript = checkLevels(script, levelCount, blockIndices);
            S_Vector<float> fromScript;
            if (!distances)
            {
                fromScript = readDistances(skinScript, levelCount, blockIndices);
            }
            const float* const ranges = distances ? distances : fromScript.data();
            const S_String nesting = skinScript.staticNesting();
            const char* const block = skinScript.getBlockName(static_cast<unsigned int>(blockIndices[0]));
            TW_VertexAnimation& first = addLevel();
            constructFirst(first);
            first.setName(S_STR("TW_VertexAnimationLODs %d %s, %s", 0, nesting.c_str(), block));
            setName(
                S_STR("TW_VertexAnimationLODs %s; %s, %s", getSkeleton()->getName().c_str(), nesting.c_str(), block));
            m_pEngineLODObject = new P_LODObject(levelCount);
            enterLevel(0, ranges[0]);
            for (int i = 1; i < levelCount; ++i)
            {
                addLevel().construct(&first, &skinScript, blockIndices[i], withVisibility);
                enterLevel(i, ranges[i]);
            }
        });
}

void TW_VertexAnimationLODs::construct(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                       S_Script* skinScript, const int* blockIndices, const float* distances,
                                       bool withVisibility)
{
    buildFromScript(levelCount, skinScript, blockIndices, distances, withVisibility,
                    [&](TW_VertexAnimation& level)
                    { level.construct(skeletonScript, skeletonBlock, skinScript, blockIndices[0], withVisibility); });
}

void TW_VertexAnimationLODs::construct(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                       S_Script* skinScript, const int* blockIndices, bool withVisibility)
{
    construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices, nullptr, withVisibility);
}

void TW_VertexAnimationLODs::construct(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript,
                                       const int* blockIndices, bool withVisibility)
{
    const ReleaseGuard passed(&skeleton);
    buildFromScript(levelCount, skinScript, blockIndices, nullptr, withVisibility,
                    [&](TW_VertexAnimation& level)
                    { level.construct(skeleton, skinScript, blockIndices[0], withVisibility); });
}

void TW_VertexAnimationLODs::construct(const TW_VertexAnimationLODs& source, TW_MaterialManager* materials)
{
    if (&source == this)
    {
        return;
    }
    if (!source.m_bConstructed || source.isLoading())
    {
        destruct();
        return;
    }
    const ReleaseGuard passed(materials);
    build(
        [&]
        {
            copyEngineFlags(source);
            setNameOfCopy(S_STR("%s (clone)", source.getName().c_str()).str(), source);
            m_pEngineLODObject = new P_LODObject(source.m_iLevelCount);
            TW_VertexAnimation& first = addLevel();
            first.construct(*source.m_vecLevels.front(), materials);
            enterLevel(0, source.m_pEngineLODObject->getRange(0));
            for (int i = 1; i < source.m_iLevelCount; ++i)
            {
                addLevel().construct(&first, *source.m_vecLevels[static_cast<std::size_t>(i)], materials);
                enterLevel(i, source.m_pEngineLODObject->getRange(i));
            }
        });
}

TW_VertexAnimation& TW_VertexAnimationLODs::addLevel()
{
    m_vecLevels.push_back(nullptr);
    m_vecLevels.back() = new TW_VertexAnimation;
    return *m_vecLevels.back();
}

void TW_VertexAnimationLODs::enterLevel(int level, float range)
{
    m_pEngineLODObject->setLODObject(level, m_vecLevels[static_cast<std::size_t>(level)], range);
}

void TW_VertexAnimationLODs::destruct() noexcept
{
    giveUp();
}

void TW_VertexAnimationLODs::takeApart() noexcept
{
    if (m_bConstructed)
    {
        deleteLevels(m_vecLevels, m_pEngineLODObject);
        initializeMembers();
    }
}

void TW_VertexAnimationLODs::calculateLOD()
{
    if (m_pEngineLODObject)
    {
        m_pEngineLODObject->calculateLOD();
    }
}

int TW_VertexAnimationLODs::getLevelCount() const
{
    return m_pEngineLODObject ? m_pEngineLODObject->getLevelCount() : 0;
}

TW_VertexAnimation* TW_VertexAnimationLODs::getLODObject(int level) const
{
    return m_pEngineLODObject ? findLevel(m_vecLevels, m_pEngineLODObject->getLODObject(level), "TW_VertexAnimation")
                              : nullptr;
}

TW_VertexAnimation* TW_VertexAnimationLODs::getUsedLODObject() const
{
    return m_pEngineLODObject ? findLevel(m_vecLevels, m_pEngineLODObject->getUsedLODObject(), "TW_VertexAnimation")
                              : nullptr;
}

/// Animation belongs to the skeleton that all levels share, textures to the skin of each.
TW_ObjectAnimation* TW_VertexAnimationLODs::getPart(Operations operations, unsigned int i) const
{
    if (i >= (operations == Operations::Texture ? m_vecLevels.size() : std::min<std::size_t>(m_vecLevels.size(), 1)))
    {
        return nullptr;
    }
    switch (operations)
    {
        case Operations::Texture:
            return m_vecLevels[i]->getSkin();
        case Operations::AskTexture:
            return getUsedOrLast(*this, m_vecLevels)->getSkin();
        default:
            return getSkeleton();
    }
}

TW_ObjectAnimation* TW_VertexAnimationLODs::getSkeleton() const
{
    return m_vecLevels.empty() ? nullptr : m_vecLevels.front()->getSkeleton();
}

void TW_VertexAnimationLODs::loadMaterials(const char* fileName)
{
    const LoadScope load(*this);
    for (TW_VertexAnimation* level : m_vecLevels)
    {
        level->loadMaterials(fileName);
    }
    load.requireObject();
}

void TW_VertexAnimationLODs::remapMaterials(TW_MaterialManager* manager)
{
    const ReleaseGuard passed(manager);
    for (TW_VertexAnimation* level : m_vecLevels)
    {
        level->remapMaterials(manager);
    }
}

bool TW_VertexAnimationLODs::updateVisibility(int animation, float time)
{
    return !m_vecLevels.empty() && m_vecLevels.front()->updateVisibility(animation, time);
}

bool TW_VertexAnimationLODs::updateVisibilityFrame(int animation, float frame)
{
    return !m_vecLevels.empty() && m_vecLevels.front()->updateVisibilityFrame(animation, frame);
}

P_BaseObject::ObjectType TW_VertexAnimationLODs::getType() const
{
    return ObjectType::SkinnedLevels;
}

const char* TW_VertexAnimationLODs::getObjectType() const
{
    return "TW_VertexAnimationLODs";
}

bool TW_VertexAnimationLODs::executeAlways()
{
    return true;
}
}  // namespace TW2
