#include "lod/levels.h"

#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

#include <cstddef>
#include <utility>

namespace TW2
{
namespace
{
/// An object's levels, when what it is to be built from is a part of them: they live until it is built.
class PreviousLevels
{
public:
    PreviousLevels() = default;
    ~PreviousLevels() { deleteLevels(m_vecLevels, m_pEngineLODObject); }
    PreviousLevels(const PreviousLevels&) = delete;
    PreviousLevels& operator=(const PreviousLevels&) = delete;

    /// Takes the levels over if `isSource` is true for any.
    template <typename Test>
    void takeIf(S_Vector<TW_VertexAnimation*>& levels, P_LODObject*& engineObject, const Test& isSource) noexcept
    {
        if (anyOf(levels, isSource))
        {
            m_vecLevels.swap(levels);
            m_pEngineLODObject = std::exchange(engineObject, nullptr);
        }
    }

private:
    S_Vector<TW_VertexAnimation*> m_vecLevels;
    P_LODObject* m_pEngineLODObject = nullptr;
};
}  // namespace

TW_VertexAnimationLODs::TW_VertexAnimationLODs()
{
    initializeMembers();
}

TW_VertexAnimationLODs::TW_VertexAnimationLODs(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                               S_Script* skinScript, const int* blockIndices, const float* distances)
{
    initializeMembers();
    construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices, distances);
}

TW_VertexAnimationLODs::TW_VertexAnimationLODs(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                               S_Script* skinScript, const int* blockIndices)
{
    initializeMembers();
    construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices);
}

TW_VertexAnimationLODs::TW_VertexAnimationLODs(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript,
                                               const int* blockIndices)
{
    initializeMembers();
    construct(skeleton, levelCount, skinScript, blockIndices);
}

TW_VertexAnimationLODs::TW_VertexAnimationLODs(const TW_VertexAnimationLODs& other)
{
    initializeMembers();
    construct(other, nullptr);
}

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
    m_bConstructed = true;
    setEngineFlag(FLAG_BOUNDING_SPHERE, false);
    try
    {
        steps();
        m_pEngineLODObject->addTo(this);
        getSkeleton()->addTo(this);
        m_iLevelCount = getLevelCount();
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

/// Builds all levels; `constructFirst` constructs level 0, which brings the skeleton.
template <typename ConstructFirst>
void TW_VertexAnimationLODs::buildFromScript(int levelCount, S_Script& skinScript, const int* blockIndices,
                                             const float* distances, const ConstructFirst& constructFirst)
{
    build(
        [&]
        {
            checkLevelCount(skinScript, levelCount);
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
                addLevel().construct(&first, &skinScript, blockIndices[i]);
                enterLevel(i, ranges[i]);
            }
        });
}

void TW_VertexAnimationLODs::construct(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                       S_Script* skinScript, const int* blockIndices, const float* distances)
{
    buildFromScript(levelCount, *skinScript, blockIndices, distances,
                    [&](TW_VertexAnimation& level)
                    { level.construct(skeletonScript, skeletonBlock, skinScript, blockIndices[0]); });
}

void TW_VertexAnimationLODs::construct(S_Script* skeletonScript, int skeletonBlock, int levelCount,
                                       S_Script* skinScript, const int* blockIndices)
{
    construct(skeletonScript, skeletonBlock, levelCount, skinScript, blockIndices, nullptr);
}

void TW_VertexAnimationLODs::construct(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript,
                                       const int* blockIndices)
{
    PreviousLevels previous;
    previous.takeIf(m_vecLevels, m_pEngineLODObject,
                    [&](const TW_VertexAnimation& level)
                    { return &skeleton == level.getSkeleton() || &skeleton == level.getSkin(); });
    buildFromScript(levelCount, *skinScript, blockIndices, nullptr,
                    [&](TW_VertexAnimation& level) { level.construct(skeleton, skinScript, blockIndices[0]); });
}

void TW_VertexAnimationLODs::construct(const TW_VertexAnimationLODs& source, TW_MaterialManager* materials)
{
    if (&source == this)
    {
        return;
    }
    if (!source.m_bConstructed)
    {
        destruct();
        return;
    }
    PreviousLevels previous;
    previous.takeIf(m_vecLevels, m_pEngineLODObject,
                    [&](const TW_VertexAnimation& level)
                    { return materials && materials == level.getSkin()->getMaterialManager(); });
    build(
        [&]
        {
            copyEngineFlags(source);
            setName(S_STR("%s (clone)", source.getName().c_str()));
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
    if (m_bConstructed)
    {
        deleteLevels(m_vecLevels, m_pEngineLODObject);
        initializeMembers();
    }
}

void TW_VertexAnimationLODs::calculateLOD()
{
    m_pEngineLODObject->calculateLOD();
}

int TW_VertexAnimationLODs::getLevelCount() const
{
    return m_pEngineLODObject->getLevelCount();
}

TW_VertexAnimation* TW_VertexAnimationLODs::getLODObject(int level) const
{
    return dynamic_cast<TW_VertexAnimation*>(m_pEngineLODObject->getLODObject(level));
}

TW_VertexAnimation* TW_VertexAnimationLODs::getUsedLODObject() const
{
    return dynamic_cast<TW_VertexAnimation*>(m_pEngineLODObject->getUsedLODObject());
}

TW_VertexAnimation& TW_VertexAnimationLODs::getUsedOrLast() const
{
    TW_VertexAnimation* const used = getUsedLODObject();
    return used ? *used : *m_vecLevels.back();
}

TW_ObjectAnimation* TW_VertexAnimationLODs::getSkeleton() const
{
    return m_vecLevels.front()->getSkeleton();
}

void TW_VertexAnimationLODs::loadMaterials(const char* fileName)
{
    for (TW_VertexAnimation* level : m_vecLevels)
    {
        level->loadMaterials(fileName);
    }
}

void TW_VertexAnimationLODs::remapMaterials(TW_MaterialManager* manager)
{
    for (TW_VertexAnimation* level : m_vecLevels)
    {
        level->remapMaterials(manager);
    }
}

bool TW_VertexAnimationLODs::updateVisibility(int animation, float time)
{
    return m_vecLevels.front()->updateVisibility(animation, time);
}

bool TW_VertexAnimationLODs::updateVisibilityFrame(int animation, float frame)
{
    return m_vecLevels.front()->updateVisibilityFrame(animation, frame);
}

P_BaseObject::ObjectType TW_VertexAnimationLODs::getType() const
{
    return ObjectType::SkinnedLevels;
}

const char* TW_VertexAnimationLODs::getObjectType() const
{
    return "TW_VertexAnimationLODs";
}

float TW_VertexAnimationLODs::getBoundingRadius()
{
    return m_bConstructed && getSkeleton()->getUseManualBoundingSphere()
               ? getSkeleton()->getManualBoundingSphereRadius()
               : P_BaseObject::getBoundingRadius();
}

M_Vector3Template<float> TW_VertexAnimationLODs::getBoundingBoxMin()
{
    return m_bConstructed && getSkeleton()->getUseManualBoundingBox() ? getSkeleton()->getManualBoundingBoxMin()
                                                                      : P_BaseObject::getBoundingBoxMin();
}

M_Vector3Template<float> TW_VertexAnimationLODs::getBoundingBoxMax()
{
    return m_bConstructed && getSkeleton()->getUseManualBoundingBox() ? getSkeleton()->getManualBoundingBoxMax()
                                                                      : P_BaseObject::getBoundingBoxMax();
}

bool TW_VertexAnimationLODs::executeAlways()
{
    return true;
}
}  // namespace TW2
