#include <platform/runtime/prefetch.h>
#include <platform/scene/base_object.h>
#include <platform/scene/context.h>
#include <platform/scene/light.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/subtree.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cstddef>

S_Counter<unsigned int> P_Scene::sm_uiFrames;

namespace
{
// P_BaseObject::m_uiScenePlace: which list of the running frame names the object, and where. A place from an earlier
// frame or from another scene does no harm: the object does not stand there.
constexpr unsigned int pendingList = 1;
constexpr unsigned int visitedList = 2;
constexpr unsigned int listCount = 3;

constexpr std::size_t objectsAhead = 8;  // on their way from far memory while one is looked at

void setPlace(unsigned int& place, unsigned int list, std::size_t index) noexcept
{
    const unsigned int now = static_cast<unsigned int>(index) * listCount + list;
    if (place != now)  // in a crowd the object stands in far memory
    {
        place = now;
    }
}

/// The entry that names the object; null when there is none.
template <typename Entry>
Entry* findEntry(S_Vector<Entry>& entries, unsigned int list, const P_BaseObject* object, unsigned int place) noexcept
{
    const std::size_t index = place / listCount;
    return index < entries.size() && place % listCount == list && entries[index].m_pObject == object ? &entries[index]
                                                                                                     : nullptr;
}
}  // namespace

/// Opens a frame; closes it on every path out, and empties the lists when that is an exception.
class P_Scene::Frame
{
public:
    explicit Frame(P_Scene& scene) noexcept : m_scene(scene)
    {
        clearFound();
        m_scene.m_bInFrame = true;
        m_scene.m_bLooksAgain = false;
        m_scene.m_uiFrame = ++sm_uiFrames;
    }
    ~Frame()
    {
        m_scene.m_bInFrame = false;
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
    executeFrame(P_ParallelFor());
}

void P_Scene::executeFrame(const P_ParallelFor& parallelFor)
{
    if (m_bInFrame)
    {
        throw P_SceneException("A frame cannot be executed during a frame");
    }
    Frame frame(*this);
    findBusyObjects();
    m_pContext->clearDebugLines();
    if (parallelFor)
    {
        prepare(parallelFor);
    }
    visitAll();
    executeVisited();
    collectVisible();
    frame.complete();
}

void P_Scene::visitAll()
{
    pushChildren(*this, false);
    while (!m_vecPending.empty())
    {
        const Pending pending = m_vecPending.back();
        m_vecPending.pop_back();
        if (pending.m_pObject && pending.m_pObject->isBusySubtree() &&
            !findEntry(m_vecVisited, visitedList, pending.m_pObject, pending.m_pObject->m_uiScenePlace))
        {
            visit(pending);
        }
    }
}

bool P_Scene::knowsIdleObjects() const noexcept
{
    return m_uiFills == P_TriangleMeshBase::getFillCount();
}

/// Objects that were found idle may show geometry that has got vertices since.
void P_Scene::findBusyObjects() noexcept
{
    if (knowsIdleObjects())
    {
        return;
    }
    m_uiFills = P_TriangleMeshBase::getFillCount();
    for (P_BaseObject* top : getChildren())
    {
        for (P_BaseObject* object = top; object; object = nextInSubtree(*top, object))
        {
            object->updateIdle();
        }
    }
}

/// In a crowd every object that is visited stands in far memory: fetches one that is visited soon.
void P_Scene::fetchAhead() const noexcept
{
    constexpr std::size_t distance = 3;
    if (m_vecPending.size() >= distance)
    {
        const P_BaseObject* const object = m_vecPending[m_vecPending.size() - distance].m_pObject;
        for (std::size_t offset = 0; offset < sizeof(P_BaseObject); offset += S_CACHE_LINE)
        {
            S_prefetchForWriting(object, offset);
        }
    }
}

/// Puts what hangs below an object on the stack, so that the first child comes off first.
void P_Scene::pushChildren(P_ObjectContainer& container, bool culled)
{
    if (container.m_uiBusyChildren == 0)
    {
        return;
    }
    if (container.m_eKind == Kind::LevelOfDetail)
    {
        if (P_BaseObject* used = static_cast<P_LODObject&>(container).getUsedLODObject())
        {
            push(used, culled);
        }
        return;
    }
    const P_BaseObject* const first = container.getFirstChild();
    for (P_BaseObject* child = container.getLastChild(); child;
         child = child == first ? nullptr : child->m_pPreviousSibling)
    {
        push(child, culled);
    }
}

void P_Scene::push(P_BaseObject* object, bool culled)
{
    if (findEntry(m_vecVisited, visitedList, object, object->m_uiScenePlace))
    {
        return;  // moved to here after its visit
    }
    if (Pending* const elsewhere = findEntry(m_vecPending, pendingList, object, object->m_uiScenePlace))
    {
        elsewhere->m_pObject = nullptr;  // moved to here while it waited there
    }
    setPlace(object->m_uiScenePlace, pendingList, m_vecPending.size());
    m_vecPending.push_back({object, culled});
}

void P_Scene::visit(const Pending& pending)
{
    P_BaseObject* object = pending.m_pObject;
    if (object->m_bPlain)
    {
        visitPlain(*object, pending.m_bCulled);
        return;
    }
    fetchAhead();
    const std::size_t place = m_vecVisited.size();
    setPlace(object->m_uiScenePlace, visitedList, place);
    m_vecVisited.push_back({object, Visited::Kind::Called});
    object->m_bInView = !pending.m_bCulled && object->isInsideViewVolume(m_pContext->getCurrentCamera());
    const bool forced = object->executeAlways();
    if (m_vecVisited[place].m_eKind == Visited::Kind::Gone)
    {
        return;  // it took itself out
    }
    object->m_bInView = forced || object->m_bInView;
    pushChildren(*object,
                 pending.m_bCulled || (object->hasEngineFlag(P_BaseObject::FLAG_CULL_SUBTREE) && !object->m_bInView));
}

/// A plain object and, as long as there are only such, what hangs below it. Nothing of them is called, so nothing
/// changes meanwhile, and they need not wait in the list. In a crowd they stand in far memory: what is as before is not
/// written.
void P_Scene::visitPlain(P_BaseObject& top, bool culled)
{
    for (P_BaseObject* object = &top; object;)
    {
        const bool isNext =
            object->isBusySubtree() && !findEntry(m_vecVisited, visitedList, object, object->m_uiScenePlace);
        if (isNext && !object->m_bPlain)
        {
            pushRest(top, *object, culled);
            return;
        }
        if (isNext)
        {
            // The members of a block mostly lie side by side.
            S_prefetch(object, objectsAhead * sizeof(P_VirtualObject));
            S_prefetch(object, objectsAhead * sizeof(P_VirtualObject) + S_CACHE_LINE);
            if (!object->m_bIdle && object->m_bInView == culled)
            {
                object->m_bInView = !culled;
            }
            if (Pending* const elsewhere = findEntry(m_vecPending, pendingList, object, object->m_uiScenePlace))
            {
                elsewhere->m_pObject = nullptr;
            }
            setPlace(object->m_uiScenePlace, visitedList, m_vecVisited.size());
            m_vecVisited.push_back({object, object->m_bIdle ? Visited::Kind::Idle
                                            : culled        ? Visited::Kind::Hidden
                                                            : Visited::Kind::Plain});
        }
        object = nextInSubtree(top, object, isNext && object->m_uiBusyChildren != 0);
    }
}

/// Puts an object below `top` on the stack, and all that comes after it there.
void P_Scene::pushRest(const P_BaseObject& top, P_BaseObject& object, bool culled)
{
    const std::size_t begin = m_vecPending.size();
    P_BaseObject* next = &object;
    for (P_BaseObject* level = &object; level != &top; level = level->getParent(), next = level->m_pNextSibling)
    {
        for (; next; next = next->m_pNextSibling)
        {
            push(next, culled);
        }
    }
    // The first comes off first.
    std::reverse(m_vecPending.begin() + static_cast<std::ptrdiff_t>(begin), m_vecPending.end());
    for (std::size_t i = begin; i < m_vecPending.size(); ++i)
    {
        setPlace(m_vecPending[i].m_pObject->m_uiScenePlace, pendingList, i);
    }
}

void P_Scene::executeVisited()
{
    // Each call may take out any object.
    for (const Visited& visited : m_vecVisited)
    {
        P_BaseObject* const object = visited.m_pObject;
        if (visited.m_eKind == Visited::Kind::Called && object->m_bEnabled && object->m_bInView)
        {
            object->executeVisible();
        }
        if (visited.m_eKind == Visited::Kind::Called && object->m_bVisualization)
        {
            object->visualization();
        }
        if (visited.m_eKind == Visited::Kind::Called && object->m_bVertexNormalVisualization)
        {
            object->vertexNormalVisualization();
        }
    }
}

void P_Scene::collectVisible()
{
    for (std::size_t i = 0; i < m_vecVisited.size(); ++i)
    {
        const auto [object, kind] = m_vecVisited[i];
        if (m_bLooksAgain && i + objectsAhead < m_vecVisited.size())
        {
            S_prefetch(m_vecVisited[i + objectsAhead].m_pObject);
        }
        if (kind == Visited::Kind::Idle || kind == Visited::Kind::Gone)
        {
            continue;
        }
        if (kind != Visited::Kind::Called && !m_bLooksAgain)
        {
            if (kind == Visited::Kind::Plain)
            {
                m_vecVisibleMeshes.push_back(static_cast<P_VirtualObject*>(object));
            }
        }
        else if (object->m_bEnabled && object->m_eKind == Kind::Mesh)
        {
            if (object->m_bInView)
            {
                m_vecVisibleMeshes.push_back(static_cast<P_VirtualObject*>(object));
            }
        }
        else if (object->m_bEnabled && object->m_eKind == Kind::Light)
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
    if (Pending* const pending = findEntry(m_vecPending, pendingList, object, object->m_uiScenePlace))
    {
        pending->m_pObject = nullptr;
    }
    if (Visited* const visited = findEntry(m_vecVisited, visitedList, object, object->m_uiScenePlace))
    {
        visited->m_eKind = Visited::Kind::Gone;
    }
}
