#include "lod/levels.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

#include <cstddef>

namespace TW2
{
TW_ObjectAnimationLODs::TW_ObjectAnimationLODs()
{
    initializeMembers();
}

TW_ObjectAnimationLODs::TW_ObjectAnimationLODs(S_Script* script, int levelCount, const int* blockIndices,
                                               const float* distances, bool keyframeFlag)
{
    initializeMembers();
    construct(script, levelCount, blockIndices, distances, keyframeFlag);
}

TW_ObjectAnimationLODs::TW_ObjectAnimationLODs(S_Script* script, int levelCount, const int* blockIndices,
                                               bool keyframeFlag)
{
    initializeMembers();
    construct(script, levelCount, blockIndices, keyframeFlag);
}

TW_ObjectAnimationLODs::TW_ObjectAnimationLODs(const TW_ObjectAnimationLODs& other)
{
    initializeMembers();
    construct(other);
}

TW_ObjectAnimationLODs& TW_ObjectAnimationLODs::operator=(const TW_ObjectAnimationLODs& other)
{
    construct(other);
    return *this;
}

TW_ObjectAnimationLODs::~TW_ObjectAnimationLODs()
{
    destruct();
}

void TW_ObjectAnimationLODs::initializeMembers() noexcept
{
    m_pEngineLODObject = nullptr;
    m_iLevelCount = 0;
    m_vecLevels.clear();
    m_bConstructed = false;
}

/// Builds from scratch by `steps`, which make the levels; whatever throws leaves the object not constructed.
template <typename Steps>
void TW_ObjectAnimationLODs::build(const Steps& steps)
{
    const S_MemoryScope scope("TW Memory Container");
    destruct();
    m_bConstructed = true;
    try
    {
        steps();
        m_pEngineLODObject->addTo(this);
        m_iLevelCount = getLevelCount();
    }
    catch (...)
    {
        destruct();
        throw;
    }
}

void TW_ObjectAnimationLODs::construct(S_Script* script, int levelCount, const int* blockIndices,
                                       const float* distances, bool keyframeFlag)
{
    build(
        [&]
        {
            checkLevelCount(*script, levelCount);
            setName(S_STR("TW_ObjectAnimationLODs %s %s", script->staticNesting(),
                          script->getBlockName(static_cast<unsigned int>(blockIndices[0]))));
            setEngineFlag(FLAG_BOUNDING_SPHERE, false);
            m_pEngineLODObject = new P_LODObject(levelCount);
            for (int i = 0; i < levelCount; ++i)
            {
                addLevel().construct(script, blockIndices[i], nullptr, keyframeFlag);
                enterLevel(i, distances[i]);
            }
        });
}

void TW_ObjectAnimationLODs::construct(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag)
{
    destruct();
    const S_MemoryScope scope("TW Memory Container");
    checkLevelCount(*script, levelCount);
    construct(script, levelCount, blockIndices, readDistances(*script, levelCount, blockIndices).data(), keyframeFlag);
}

void TW_ObjectAnimationLODs::construct(const TW_ObjectAnimationLODs& other)
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
            copyEngineFlags(other);
            m_pEngineLODObject = new P_LODObject(other.m_iLevelCount);
            for (int i = 0; i < other.m_iLevelCount; ++i)
            {
                addLevel().construct(*other.m_vecLevels[static_cast<std::size_t>(i)], false, nullptr);
                enterLevel(i, other.m_pEngineLODObject->getRange(i));
            }
        });
}

TW_ObjectAnimation& TW_ObjectAnimationLODs::addLevel()
{
    m_vecLevels.push_back(nullptr);
    m_vecLevels.back() = new TW_ObjectAnimation;
    return *m_vecLevels.back();
}

void TW_ObjectAnimationLODs::enterLevel(int level, float range)
{
    m_pEngineLODObject->setLODObject(level, m_vecLevels[static_cast<std::size_t>(level)], range);
}

void TW_ObjectAnimationLODs::destruct() noexcept
{
    if (m_bConstructed)
    {
        deleteLevels(m_vecLevels, m_pEngineLODObject);
        initializeMembers();
    }
}

void TW_ObjectAnimationLODs::calculateLOD()
{
    m_pEngineLODObject->calculateLOD();
}

int TW_ObjectAnimationLODs::getLevelCount() const
{
    return m_pEngineLODObject->getLevelCount();
}

TW_ObjectAnimation* TW_ObjectAnimationLODs::getLODObject(int level) const
{
    return dynamic_cast<TW_ObjectAnimation*>(m_pEngineLODObject->getLODObject(level));
}

TW_ObjectAnimation* TW_ObjectAnimationLODs::getUsedLODObject() const
{
    return dynamic_cast<TW_ObjectAnimation*>(m_pEngineLODObject->getUsedLODObject());
}

TW_ObjectAnimation& TW_ObjectAnimationLODs::getUsedOrLast() const
{
    TW_ObjectAnimation* const used = getUsedLODObject();
    return used ? *used : *m_vecLevels.back();
}

void TW_ObjectAnimationLODs::loadMaterials(const char* fileName)
{
    for (TW_ObjectAnimation* level : m_vecLevels)
    {
        level->loadMaterials(fileName);
    }
}

bool TW_ObjectAnimationLODs::updateVisibility(int animation, float time)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level) { return level.updateVisibility(animation, time); });
}

bool TW_ObjectAnimationLODs::updateVisibilityFrame(int animation, float frame)
{
    return anyOf(m_vecLevels, [&](TW_ObjectAnimation& level) { return level.updateVisibilityFrame(animation, frame); });
}

P_BaseObject::ObjectType TW_ObjectAnimationLODs::getType() const
{
    return ObjectType::ObjectLevels;
}

const char* TW_ObjectAnimationLODs::getObjectType() const
{
    return "TW_ObjectAnimationLODs";
}

float TW_ObjectAnimationLODs::getBoundingRadius()
{
    return m_bConstructed && m_vecLevels.front()->getUseManualBoundingSphere()
               ? m_vecLevels.front()->getManualBoundingSphereRadius()
               : P_BaseObject::getBoundingRadius();
}

M_Vector3Template<float> TW_ObjectAnimationLODs::getBoundingBoxMin()
{
    return m_bConstructed && m_vecLevels.front()->getUseManualBoundingBox()
               ? m_vecLevels.front()->getManualBoundingBoxMin()
               : P_BaseObject::getBoundingBoxMin();
}

M_Vector3Template<float> TW_ObjectAnimationLODs::getBoundingBoxMax()
{
    return m_bConstructed && m_vecLevels.front()->getUseManualBoundingBox()
               ? m_vecLevels.front()->getManualBoundingBoxMax()
               : P_BaseObject::getBoundingBoxMax();
}

bool TW_ObjectAnimationLODs::executeAlways()
{
    return true;
}
}  // namespace TW2
