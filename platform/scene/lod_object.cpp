#include <platform/runtime/str.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene_exception.h>

namespace
{
std::size_t checkLevelCount(int levelCount)
{
    if (levelCount < 0)
    {
        throw P_SceneException(S_STR("An object cannot have %d levels of detail", levelCount));
    }
    return static_cast<std::size_t>(levelCount);
}
}  // namespace

P_LODObject::P_LODObject(int levelCount) : P_BaseObject(Kind::LevelOfDetail), m_vecLevels(checkLevelCount(levelCount))
{
}

P_LODObject::~P_LODObject()
{
    detachChildren();
}

P_Context* P_LODObject::getContext() const
{
    return getStoredContext();
}

P_BaseObject::ObjectType P_LODObject::getType() const
{
    return ObjectType::LevelOfDetail;
}

const char* P_LODObject::getObjectType() const
{
    return "P_LODObject";
}

const P_LODObject::Level& P_LODObject::access(int level) const
{
    if (level < 0 || level >= getLevelCount())
    {
        throw P_SceneException(S_STR("There is no level of detail %d among %d", level, getLevelCount()));
    }
    return m_vecLevels[static_cast<std::size_t>(level)];
}

P_LODObject::Level& P_LODObject::access(int level)
{
    return const_cast<Level&>(static_cast<const P_LODObject*>(this)->access(level));
}

void P_LODObject::setLODObject(int level, P_BaseObject* object, float range)
{
    Level& entry = access(level);
    if (entry.m_pObject != object)
    {
        if (object)
        {
            object->addTo(this);
        }
        removeLODObject(level);
        entry.m_pObject = object;
    }
    entry.m_fRange = range;
}

void P_LODObject::removeLODObject(int level)
{
    if (P_BaseObject* object = access(level).m_pObject)
    {
        object->remove();
    }
}

P_BaseObject* P_LODObject::getLODObject(int level) const
{
    return access(level).m_pObject;
}

float P_LODObject::getRange(int level) const
{
    return access(level).m_fRange;
}

void P_LODObject::calculateLOD()
{
    m_iUsedLevel = findLevel();
}

P_BaseObject* P_LODObject::getNextLODObject() const noexcept
{
    const int level = findLevel();
    return level >= 0 ? m_vecLevels[static_cast<std::size_t>(level)].m_pObject : nullptr;
}

int P_LODObject::findLevel() const noexcept
{
    const P_Context* context = getContext();
    const P_Camera* camera = context ? context->getCurrentCamera() : nullptr;
    const float distance =
        camera
            ? (camera->getObjectToWorldMatrix().getTranslation() - getObjectToWorldMatrix().getTranslation()).length()
            : 0.0F;
    for (int level = 0; level < getLevelCount(); ++level)
    {
        const Level& entry = m_vecLevels[static_cast<std::size_t>(level)];
        if (entry.m_pObject && (!camera || distance <= entry.m_fRange))
        {
            return level;
        }
    }
    return -1;
}

P_BaseObject* P_LODObject::getUsedLODObject() const noexcept
{
    return m_iUsedLevel >= 0 ? m_vecLevels[static_cast<std::size_t>(m_iUsedLevel)].m_pObject : nullptr;
}

bool P_LODObject::executeAlways()
{
    calculateLOD();
    return false;
}

void P_LODObject::forgetChild(const P_BaseObject* child) noexcept
{
    for (int level = 0; level < getLevelCount(); ++level)
    {
        Level& entry = m_vecLevels[static_cast<std::size_t>(level)];
        if (entry.m_pObject == child)
        {
            entry.m_pObject = nullptr;
            m_iUsedLevel = m_iUsedLevel == level ? -1 : m_iUsedLevel;
        }
    }
}
