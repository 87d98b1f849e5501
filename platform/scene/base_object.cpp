#include <platform/runtime/system.h>
#include <platform/scene/base_object.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/subtree.h>

namespace
{
constexpr int s_iCollisionGroups = 32;
}

P_BaseObject::P_BaseObject() : P_BaseObject(Kind::Object) {}

P_BaseObject::P_BaseObject(Kind kind)
    : P_ObjectContainer(kind),
      m_pLocalMatrix(&m_ownLocalMatrix),
      m_pWorldMatrix(&m_ownWorldMatrix),
      m_pState(&m_ownState),
      m_pContext(P_Context::getDefault())
{
}

P_BaseObject::P_BaseObject(const P_BaseObject& other) : P_BaseObject(other, Kind::Object) {}

P_BaseObject::P_BaseObject(const P_BaseObject& other, Kind kind)
    : P_ObjectContainer(kind),
      P_UserData(other),
      m_pLocalMatrix(&m_ownLocalMatrix),
      m_pWorldMatrix(&m_ownWorldMatrix),
      m_pState(&m_ownState),
      m_bEnabled(other.m_bEnabled),
      m_bVisualization(other.m_bVisualization),
      m_bVertexNormalVisualization(other.m_bVertexNormalVisualization),
      m_uiEngineFlags(other.m_uiEngineFlags),
      m_pContext(other.m_pContext),
      m_ownLocalMatrix(*other.m_pLocalMatrix),
      m_fBoundingRadius(other.m_fBoundingRadius),
      m_vBoundingBoxMin(other.m_vBoundingBoxMin),
      m_vBoundingBoxMax(other.m_vBoundingBoxMax),
      m_iCollisionGroup(other.m_iCollisionGroup),
      m_uiCollisionMask(other.m_uiCollisionMask)
{
}

P_BaseObject::~P_BaseObject()
{
    leaveContainer();
    detachChildren();
    if (m_pBlock)
    {
        m_pBlock->release(*this);
    }
}

void P_BaseObject::addTo(P_ObjectContainer* container)
{
    if (!container)
    {
        leaveContainer();
        return;
    }
    P_Scene* scene;
    if (container->m_eKind == Kind::Scene)
    {
        scene = static_cast<P_Scene*>(container);
    }
    else
    {
        const auto& object = static_cast<const P_BaseObject&>(*container);
        if (isBelowThis(object))
        {
            throw P_SceneException("An object cannot hang below itself");
        }
        scene = object.m_pScene;
    }
    P_Scene* const before = m_pScene;
    if (scene == before)
    {
        m_pScene = nullptr;  // moves within its scene: nobody leaves it
    }
    leaveContainer();
    if (scene == before)
    {
        m_pScene = before;
    }
    linkInto(*container);
    invalidateMatrices();
    if (scene != m_pScene)
    {
        enterScene(scene);
    }
}

/// Whether `object` is this one or hangs below it. Walks up from `object` and down through this object's subtree in
/// turns, so the shorter of the two ways decides what it costs: trees are built in linear time from either end.
bool P_BaseObject::isBelowThis(const P_BaseObject& object) const noexcept
{
    const P_BaseObject* up = &object;
    const P_BaseObject* down = this;
    while (up && down)
    {
        if (up == this || down == &object)
        {
            return true;
        }
        up = up->getParent();
        down = nextInSubtree(*this, down);
    }
    return false;
}

void P_BaseObject::remove()
{
    leaveContainer();
}

void P_BaseObject::linkInto(P_ObjectContainer& container) noexcept
{
    m_pContainer = &container;
    m_pPreviousSibling = container.m_pLastChild;
    (m_pPreviousSibling ? m_pPreviousSibling->m_pNextSibling : container.m_pFirstChild) = this;
    container.m_pLastChild = this;
    ++container.m_uiChildCount;
    if (const P_BaseObject* parent = getParent())
    {
        P_TransformBlock::childCame(*parent, *this);
    }
}

void P_BaseObject::leaveContainer() noexcept
{
    if (!m_pContainer)
    {
        return;
    }
    if (m_pContainer->m_eKind == Kind::LevelOfDetail)
    {
        static_cast<P_LODObject*>(m_pContainer)->forgetChild(this);
    }
    if (const P_BaseObject* parent = getParent())
    {
        P_TransformBlock::childLeft(*parent, *this);
    }
    (m_pPreviousSibling ? m_pPreviousSibling->m_pNextSibling : m_pContainer->m_pFirstChild) = m_pNextSibling;
    (m_pNextSibling ? m_pNextSibling->m_pPreviousSibling : m_pContainer->m_pLastChild) = m_pPreviousSibling;
    --m_pContainer->m_uiChildCount;
    m_pContainer = nullptr;
    m_pNextSibling = nullptr;
    m_pPreviousSibling = nullptr;
    invalidateMatrices();
    if (m_pScene)
    {
        leaveScene();
    }
}

void P_BaseObject::enterScene(P_Scene* scene)
{
    for (P_BaseObject* object = this; object; object = nextInSubtree(*this, object))
    {
        object->m_pScene = scene;
        object->m_bLinked = false;
    }
    try
    {
        for (P_BaseObject* object = this; object; object = nextInSubtree(*this, object))
        {
            if (!object->m_bLinked)
            {
                object->m_bLinked = true;
                object->linkToScene();
            }
        }
    }
    catch (...)
    {
        leaveContainer();
        throw;
    }
}

void P_BaseObject::leaveScene() noexcept
{
    for (P_BaseObject* object = this; object; object = nextInSubtree(*this, object))
    {
        object->m_pScene->forget(object);
        object->m_pScene = nullptr;
    }
}

P_BaseObject::ObjectType P_BaseObject::getType() const
{
    return ObjectType::Object;
}

const char* P_BaseObject::getObjectType() const
{
    return "P_BaseObject";
}

void P_BaseObject::enable(bool enabled)
{
    m_bEnabled = enabled;
}

void P_BaseObject::setPosition(float x, float y, float z)
{
    setPosition(M_Vector3Template<float>{x, y, z});
}

void P_BaseObject::setPosition(const M_Vector3Template<float>& position)
{
    m_pLocalMatrix->setTranslation(position);
    invalidateMatrices();
}

M_Vector3Template<float> P_BaseObject::getPosition() const
{
    return m_pLocalMatrix->getTranslation();
}

float* P_BaseObject::accessPosition()
{
    invalidateMatrices();
    return m_pLocalMatrix->m[3];
}

void P_BaseObject::setCollisionGroup(int group)
{
    if (group < 0 || group >= s_iCollisionGroups)
    {
        throw P_SceneException("A collision group is a number from 0 to 31");
    }
    m_iCollisionGroup = group;
}

void P_BaseObject::setCollisionMask(unsigned int mask)
{
    m_uiCollisionMask = mask;
}

bool P_BaseObject::collidesWith(const P_BaseObject& other) const noexcept
{
    return (m_uiCollisionMask >> other.m_iCollisionGroup & 1u) != 0 &&
           (other.m_uiCollisionMask >> m_iCollisionGroup & 1u) != 0;
}

void P_BaseObject::duplicate(const P_BaseObject& other)
{
    P_UserData::duplicate(other);
    *m_pLocalMatrix = *other.m_pLocalMatrix;
    invalidateMatrices();
    m_bEnabled = other.m_bEnabled;
    m_uiEngineFlags = other.m_uiEngineFlags;
    m_fBoundingRadius = other.m_fBoundingRadius;
    m_vBoundingBoxMin = other.m_vBoundingBoxMin;
    m_vBoundingBoxMax = other.m_vBoundingBoxMax;
    m_iCollisionGroup = other.m_iCollisionGroup;
    m_uiCollisionMask = other.m_uiCollisionMask;
}

void P_BaseObject::duplicate(const P_UserData& other)
{
    P_UserData::duplicate(other);
}

bool P_BaseObject::executeAlways()
{
    return false;
}

void P_BaseObject::executeVisible() {}

void P_BaseObject::linkToScene()
{
    m_pContext = m_pScene->getContext();
}

void P_BaseObject::dump(bool details) const
{
    const M_Vector3Template<float> position = getPosition();
    Sys.verbose("%s \"%s\": position (%g, %g, %g), %s, %u children\n", getObjectType(), getName().c_str(),
                static_cast<double>(position.x), static_cast<double>(position.y), static_cast<double>(position.z),
                m_bEnabled ? "enabled" : "disabled", getChildCount());
    if (!details)
    {
        return;
    }
    for (int row = 0; row < 3; ++row)
    {
        const M_Vector3Template<float> axis = m_pLocalMatrix->getRow(row);
        Sys.verbose("  axis %d (%g, %g, %g)\n", row, static_cast<double>(axis.x), static_cast<double>(axis.y),
                    static_cast<double>(axis.z));
    }
    Sys.verbose("  engine flags 0x%X, radius %g, box (%g, %g, %g) to (%g, %g, %g)\n", m_uiEngineFlags,
                static_cast<double>(m_fBoundingRadius), static_cast<double>(m_vBoundingBoxMin.x),
                static_cast<double>(m_vBoundingBoxMin.y), static_cast<double>(m_vBoundingBoxMin.z),
                static_cast<double>(m_vBoundingBoxMax.x), static_cast<double>(m_vBoundingBoxMax.y),
                static_cast<double>(m_vBoundingBoxMax.z));
}
