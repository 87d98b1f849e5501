#include <platform/runtime/rollback.h>
#include <platform/runtime/system.h>
#include <platform/scene/base_object.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/subtree.h>
#include <platform/scene/virtual_object.h>

namespace
{
constexpr int collisionGroupCount = 32;
}

const P_BaseObject::Rare P_BaseObject::sm_usual;

P_BaseObject::P_BaseObject() : P_BaseObject(Kind::Object) {}

/// Only meshes are that many that they do without what they do not use.
P_BaseObject::P_BaseObject(Kind kind)
    : P_ObjectContainer(kind),
      m_pContext(P_Context::getDefault()),
      m_pRare(kind == Kind::Mesh ? nullptr : std::make_unique<Rare>())
{
    m_pStorage = P_TransformStorage::create(1, nullptr);
}

P_BaseObject::P_BaseObject(const P_BaseObject& other) : P_BaseObject(other, Kind::Object) {}

P_BaseObject::P_BaseObject(const P_BaseObject& other, Kind kind) : P_BaseObject(other, kind, nullptr) {}

P_BaseObject::P_BaseObject(const P_BaseObject& other, Kind kind, P_TransformBlock& block)
    : P_BaseObject(other, kind, &block)
{
}

P_BaseObject::P_BaseObject(const P_BaseObject& other, Kind kind, P_TransformBlock* block)
    : P_ObjectContainer(kind),
      P_UserData(other),
      m_pContext(other.getStoredContext()),
      m_pRare(other.m_pRare ? std::make_unique<Rare>(*other.m_pRare) : nullptr)
{
    m_uiEngineFlags = other.m_uiEngineFlags;
    m_bEnabled = other.m_bEnabled;
    m_bVisualization = other.m_bVisualization;
    m_bVertexNormalVisualization = other.m_bVertexNormalVisualization;
    if (m_pRare)
    {
        m_pRare->m_pFramePreparation = nullptr;
    }
    if (block)
    {
        block->takeNew(*this);
    }
    else
    {
        m_pStorage = P_TransformStorage::create(1, nullptr);
    }
    accessMatrix() = other.getMatrix();
}

P_BaseObject::~P_BaseObject()
{
    leaveContainer();
    detachChildren();
    if (m_bMember)
    {
        m_pStorage->m_pBlock->release(*this);
    }
    P_TransformStorage::release(m_pStorage);
}

P_BaseObject::Rare& P_BaseObject::accessRare()
{
    if (!m_pRare)
    {
        m_pRare = std::make_unique<Rare>();
    }
    return *m_pRare;
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
        scene = object.getScene();
    }
    const bool staysInScene = scene && scene == getScene();
    leaveContainer(staysInScene);
    linkInto(*container);
    invalidateMatrices();
    if (scene && !staysInScene)
    {
        enterScene(*scene);
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
    updateIdle();  // one that came into being in a block was not complete then
    m_pContainer = &container;
    P_BaseObject* const last = container.getLastChild();
    (last ? last->m_pNextSibling : container.m_pFirstChild) = this;
    m_pPreviousSibling = last ? last : this;
    container.m_pFirstChild->m_pPreviousSibling = this;
    if (isBusySubtree())
    {
        countBusyChild(&container, true);
    }
    if (const P_BaseObject* parent = getParent())
    {
        P_TransformBlock::childCame(*parent, *this);
    }
}

void P_BaseObject::leaveContainer(bool staysInScene) noexcept
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
    P_BaseObject*& first = m_pContainer->m_pFirstChild;
    (m_pNextSibling ? m_pNextSibling : first)->m_pPreviousSibling = m_pPreviousSibling;
    (first == this ? first : m_pPreviousSibling->m_pNextSibling) = m_pNextSibling;
    if (isBusySubtree())
    {
        countBusyChild(m_pContainer, false);
    }
    m_pContainer = nullptr;
    m_pNextSibling = nullptr;
    m_pPreviousSibling = nullptr;
    invalidateMatrices();
    if (m_bInScene && !staysInScene)
    {
        leaveScene();
    }
}

void P_BaseObject::enterScene(P_Scene& scene)
{
    for (P_BaseObject* object = this; object; object = nextInSubtree(*this, object))
    {
        object->m_pScene = &scene;
        object->m_bInScene = true;
        object->m_bLinked = false;
        scene.m_bPreparedFound = scene.m_bPreparedFound && !object->getRare().m_pFramePreparation;
        object->updateIdle();
    }
    S_Rollback rollback([this]() noexcept { leaveContainer(); });
    for (P_BaseObject* object = this; object; object = nextInSubtree(*this, object))
    {
        if (!object->m_bLinked)
        {
            object->m_bLinked = true;
            object->linkToScene();
        }
    }
    rollback.keep();
}

void P_BaseObject::leaveScene() noexcept
{
    P_Scene& scene = *m_pScene;
    for (P_BaseObject* object = this; object; object = nextInSubtree(*this, object))
    {
        scene.m_bPreparedFound = scene.m_bPreparedFound && !object->getRare().m_pFramePreparation;
        scene.forget(object);
        object->m_bInScene = false;
        object->m_pContext = scene.m_pContext;
    }
}

void P_BaseObject::setFramePreparation(P_FramePreparation* preparation)
{
    accessRare().m_pFramePreparation = preparation;
    if (m_bInScene)
    {
        m_pScene->m_bPreparedFound = false;
    }
}

P_BaseObject::ObjectType P_BaseObject::getType() const
{
    return ObjectType::Object;
}

const P_VirtualObject* P_BaseObject::asMesh() const noexcept
{
    return m_eKind == Kind::Mesh ? static_cast<const P_VirtualObject*>(this) : nullptr;
}

const P_LODObject* P_BaseObject::asLODObject() const noexcept
{
    return m_eKind == Kind::LevelOfDetail ? static_cast<const P_LODObject*>(this) : nullptr;
}

const char* P_BaseObject::getObjectType() const
{
    return "P_BaseObject";
}

void P_BaseObject::enable(bool enabled)
{
    m_bEnabled = enabled;
    updateIdle();
    tellFrame();
}

void P_BaseObject::setInView(bool inView) noexcept
{
    m_bInView = inView;
    tellFrame();
}

/// What the running frame has found out about objects that it only looks at may not hold any more.
void P_BaseObject::tellFrame() const noexcept
{
    if (m_bInScene && m_pScene->m_bInFrame)
    {
        m_pScene->m_bLooksAgain = true;
    }
}

void P_BaseObject::setPosition(float x, float y, float z)
{
    setPosition(M_Vector3Template<float>{x, y, z});
}

void P_BaseObject::setPosition(const M_Vector3Template<float>& position)
{
    accessMatrix().setTranslation(position);
    invalidateMatrices();
}

M_Vector3Template<float> P_BaseObject::getPosition() const
{
    return getMatrix().getTranslation();
}

float* P_BaseObject::accessPosition()
{
    invalidateMatrices();
    return accessMatrix().m[3];
}

void P_BaseObject::setCollisionGroup(int group)
{
    if (group < 0 || group >= collisionGroupCount)
    {
        throw P_SceneException("A collision group is a number from 0 to 31");
    }
    accessRare().m_iCollisionGroup = group;
}

void P_BaseObject::setCollisionMask(unsigned int mask)
{
    accessRare().m_uiCollisionMask = mask;
}

bool P_BaseObject::collidesWith(const P_BaseObject& other) const noexcept
{
    return (getCollisionMask() >> other.getCollisionGroup() & 1U) != 0 &&
           (other.getCollisionMask() >> getCollisionGroup() & 1U) != 0;
}

void P_BaseObject::setBoundingBox(const M_Vector3Template<float>& minimum, const M_Vector3Template<float>& maximum)
{
    Rare& rare = accessRare();
    rare.m_vBoundingBoxMin = minimum;
    rare.m_vBoundingBoxMax = maximum;
}

void P_BaseObject::duplicate(const P_BaseObject& other)
{
    if (m_pRare || other.m_pRare)
    {
        Rare rare = other.getRare();
        rare.m_pFramePreparation = getRare().m_pFramePreparation;
        accessRare() = rare;
    }
    P_UserData::duplicate(other);
    accessMatrix() = other.getMatrix();
    invalidateMatrices();
    m_bEnabled = other.m_bEnabled;
    copyEngineFlags(other);
    tellFrame();
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

void P_BaseObject::linkToScene() {}

P_Context* P_BaseObject::getStoredContext() const noexcept
{
    return m_bInScene ? m_pScene->m_pContext : m_pContext;
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
        const M_Vector3Template<float> axis = getMatrix().getRow(row);
        Sys.verbose("  axis %d (%g, %g, %g)\n", row, static_cast<double>(axis.x), static_cast<double>(axis.y),
                    static_cast<double>(axis.z));
    }
    Sys.verbose("  engine flags 0x%X, radius %g, box (%g, %g, %g) to (%g, %g, %g)\n", getEngineFlags(),
                static_cast<double>(getStoredBoundingRadius()), static_cast<double>(getStoredBoundingBoxMin().x),
                static_cast<double>(getStoredBoundingBoxMin().y), static_cast<double>(getStoredBoundingBoxMin().z),
                static_cast<double>(getStoredBoundingBoxMax().x), static_cast<double>(getStoredBoundingBoxMax().y),
                static_cast<double>(getStoredBoundingBoxMax().z));
}
