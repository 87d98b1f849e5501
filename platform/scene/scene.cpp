#include <platform/scene/base_object.h>
#include <platform/scene/context.h>
#include <platform/scene/light.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/virtual_object.h>

unsigned long long P_Scene::sm_uiFrames = 0;

/// Opens a frame; closes it on every path out, and empties the lists when that is an exception.
class P_Scene::Frame
{
public:
    explicit Frame(P_Scene& scene) noexcept : m_scene(scene)
    {
        clearFound();
        m_scene.m_bInFrame = true;
        m_scene.m_uiFrame = ++sm_uiFrames;
    }
    ~Frame()
    {
        m_scene.m_bInFrame = false;
        m_scene.m_pVisiting = nullptr;
        m_scene.m_vecPending.clear();
        m_scene.m_vecVisited.clear();
        if (!m_bComplete)
        {
            clearFound();
        }
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    void complete() noexcept { m_bComplete = true; }

private:
    void clearFound() noexcept
    {
        m_scene.m_vecVisibleMeshes.clear();
        m_scene.m_vecLights.clear();
    }

    P_Scene& m_scene;
    bool m_bComplete = false;
};

P_Scene::P_Scene(P_Context* context)
    : P_ObjectContainer(Kind::Scene), m_pContext(context ? context : P_Context::getDefault())
{
}

P_Scene::~P_Scene()
{
    detachChildren();
}

P_Context* P_Scene::getContext() const
{
    return m_pContext;
}

void P_Scene::executeFrame()
{
    if (m_bInFrame)
    {
        throw P_SceneException("A frame cannot be executed during a frame");
    }
    Frame frame(*this);
    m_pContext->clearDebugLines();
    pushChildren(*this, false);
    while (!m_vecPending.empty())
    {
        const Pending pending = m_vecPending.back();
        m_vecPending.pop_back();
        if (pending.m_pObject && pending.m_pObject->m_uiVisitedFrame != m_uiFrame)
        {
            visit(pending);
        }
    }
    executeVisited();
    collectVisible();
    frame.complete();
}

/// Puts what hangs below an object on the stack, so that the first child comes off first.
void P_Scene::pushChildren(P_ObjectContainer& container, bool culled)
{
    if (container.m_eKind == Kind::LevelOfDetail)
    {
        if (P_BaseObject* used = static_cast<P_LODObject&>(container).getUsedLODObject())
        {
            push(used, culled);
        }
        return;
    }
    for (P_BaseObject* child = container.m_pLastChild; child; child = child->m_pPreviousSibling)
    {
        push(child, culled);
    }
}

void P_Scene::push(P_BaseObject* object, bool culled)
{
    if (object->m_uiVisitedFrame == m_uiFrame)
    {
        return;  // moved to here after its visit
    }
    forget(object);  // moved to here while it waited elsewhere
    object->m_uiScenePlace = m_vecPending.size();
    m_vecPending.push_back({object, culled});
}

void P_Scene::visit(const Pending& pending)
{
    P_BaseObject* object = pending.m_pObject;
    object->m_uiVisitedFrame = m_uiFrame;
    m_pVisiting = object;
    object->m_bInView = !pending.m_bCulled && object->isInsideViewVolume(m_pContext->getCurrentCamera());
    const bool forced = object->executeAlways();
    if (m_pVisiting != object)
    {
        return;  // it took itself out
    }
    m_pVisiting = nullptr;
    object->m_bInView = forced || object->m_bInView;
    object->m_uiScenePlace = m_vecVisited.size();
    m_vecVisited.push_back(object);
    pushChildren(*object,
                 pending.m_bCulled || (object->hasEngineFlag(P_BaseObject::FLAG_CULL_SUBTREE) && !object->m_bInView));
}

void P_Scene::executeVisited()
{
    // Each call may take out any object: its place in the list is null from then on.
    for (std::size_t i = 0; i < m_vecVisited.size(); ++i)
    {
        if (m_vecVisited[i] && m_vecVisited[i]->m_bEnabled && m_vecVisited[i]->m_bInView)
        {
            m_vecVisited[i]->executeVisible();
        }
        if (m_vecVisited[i] && m_vecVisited[i]->m_bVisualization)
        {
            m_vecVisited[i]->visualization();
        }
        if (m_vecVisited[i] && m_vecVisited[i]->m_bVertexNormalVisualization)
        {
            m_vecVisited[i]->vertexNormalVisualization();
        }
    }
}

void P_Scene::collectVisible()
{
    for (P_BaseObject* object : m_vecVisited)
    {
        if (!object || !object->m_bEnabled)
        {
            continue;
        }
        if (object->m_eKind == Kind::Mesh && object->m_bInView)
        {
            m_vecVisibleMeshes.push_back(static_cast<P_VirtualObject*>(object));
        }
        else if (object->m_eKind == Kind::Light)
        {
            m_vecLights.push_back(static_cast<P_Light*>(object));
        }
    }
}

/// Drops an object that leaves the scene from the lists.
void P_Scene::forget(const P_BaseObject* object) noexcept
{
    if (!m_bInFrame)
    {
        m_vecVisibleMeshes.clear();
        m_vecLights.clear();
        return;
    }
    if (m_pVisiting == object)
    {
        m_pVisiting = nullptr;
    }
    const std::size_t place = object->m_uiScenePlace;
    if (place < m_vecPending.size() && m_vecPending[place].m_pObject == object)
    {
        m_vecPending[place].m_pObject = nullptr;
    }
    if (place < m_vecVisited.size() && m_vecVisited[place] == object)
    {
        m_vecVisited[place] = nullptr;
    }
}
