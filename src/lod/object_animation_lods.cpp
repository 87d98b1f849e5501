#include "lod/levels.h"

#include <tw2/lod/object_animation_lods.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/rollback.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <cstddef>

namespace TW2
{
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
    S_Rollback rollback([this]() noexcept { destruct(); });
    const LoadScope load(*this);
    load.requireObject();
    m_bConstructed = true;
    steps();
    load.requireObject();
    m_pEngineLODObject->addTo(this);
    m_iLevelCount = getLevelCount();
    rollback.keep();
}

void TW_ObjectAnimationLODs::construct(S_Script* script, int levelCount, const int* blockIndices,
                                       const float* distances, bool keyframeFlag)
{
    build(
        [&]
        {
            const S_Script& checked = checkLevels(script, levelCount, blockIndices);
            S_Vector<float> fromScript;
            if (!distances)
            {
                fromScript = readDistances(*script, levelCount, blockIndices);
            }
            setName(S_STR("TW_ObjectAnimationLODs %s %s", checked.staticNesting(),
                          checked.getBlockName(static_cast<unsigned int>(blockIndices[0]))));
            setEngineFlag(FLAG_BOUNDING_SPHERE, false);
            m_pEngineLODObject = new P_LODObject(levelCount);
            for (int i = 0; i < levelCount; ++i)
            {
                addLevel().construct(script, blockIndices[i], nullptr, keyframeFlag);
                enterLevel(i, distances ? distances[i] : fromScript[static_cast<std::size_t>(i)]);
            }
        });
}

void TW_ObjectAnimationLODs::construct(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag)
{
    construct(script, levelCount, blockIndices, nullptr, keyframeFlag);
}

void TW_ObjectAnimationLODs::construct(const TW_ObjectAnimationLODs& other)
{
    if (&other == this)
    {
        return;
    }
    if (!other.m_bConstructed || other.isLoading())
    {
        destruct();
        return;
    }
    build(
        [&]
        {
            setNameOfCopy(S_STR("%s (clone)", other.getName().c_str()).str(), other);
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
    giveUp();
}

void TW_ObjectAnimationLODs::takeApart() noexcept
{
    if (m_bConstructed)
    {
        deleteLevels(m_vecLevels, m_pEngineLODObject);
        initializeMembers();
    }
}

void TW_ObjectAnimationLODs::calculateLOD()
{
    if (m_pEngineLODObject)
    {
        m_pEngineLODObject->calculateLOD();
    }
}

int TW_ObjectAnimationLODs::getLevelCount() const
{
    return m_pEngineLODObject ? m_pEngineLODObject->getLevelCount() : 0;
}

TW_ObjectAnimation* TW_ObjectAnimationLODs::getLODObject(int level) const
{
    return m_pEngineLODObject ? findLevel(m_vecLevels, m_pEngineLODObject->getLODObject(level), "TW_ObjectAnimation")
                              : nullptr;
}

TW_ObjectAnimation* TW_ObjectAnimationLODs::getUsedLODObject() const
{
    return m_pEngineLODObject ? findLevel(m_vecLevels, m_pEngineLODObject->getUsedLODObject(), "TW_ObjectAnimation")
                              : nullptr;
}

/// What moves moves on every level, what is asked is asked of the level in use.
TW_ObjectAnimation* TW_ObjectAnimationLODs::getPart(Operations operations, unsigned int i) const
{
    const bool goesToAll = operations == Operations::Move || operations == Operations::Texture;
    if (i >= (goesToAll ? m_vecLevels.size() : std::min<std::size_t>(m_vecLevels.size(), 1)))
    {
        return nullptr;
    }
    switch (operations)
    {
        case Operations::Freeze:
            return getUsedLODObject();
        case Operations::Ask:
        case Operations::AskTexture:
            return getUsedOrLast(*this, m_vecLevels);
        default:
            return m_vecLevels[i];
    }
}

void TW_ObjectAnimationLODs::loadMaterials(const char* fileName)
{
    const LoadScope load(*this);
    for (TW_ObjectAnimation* level : m_vecLevels)
    {
        level->loadMaterials(fileName);
    }
    load.requireObject();
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

bool TW_ObjectAnimationLODs::executeAlways()
{
    return true;
}
}  // namespace TW2
