// What is done ahead of a frame on the threads of a host.

#include <platform/scene/base_object.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/lod_object.h>
#include <platform/scene/scene.h>
#include <platform/scene/subtree.h>

#include <algorithm>

namespace
{
/// Objects that a thread takes at a time.
constexpr std::size_t objectsPerShare = 8;

/// Whether the frame will visit an object: whether it hangs below the level that will be in use wherever it hangs below
/// levels of detail.
bool willBeVisited(const P_BaseObject* object) noexcept
{
    for (const P_BaseObject* parent = object->getParent(); parent; parent = parent->getParent())
    {
        const auto* levels = parent->getType() == P_BaseObject::ObjectType::LevelOfDetail
                                 ? static_cast<const P_LODObject*>(parent)
                                 : nullptr;
        if (levels && levels->getNextLODObject() != object)
        {
            return false;
        }
        object = parent;
    }
    return true;
}
}  // namespace

void P_Scene::prepare(const P_ParallelFor& parallelFor)
{
    if (!m_bPreparedFound)
    {
        findPrepared();
    }
    // What several objects ask for is computed before they do.
    if (const P_Camera* camera = m_pContext->getCurrentCamera())
    {
        static_cast<void>(camera->getViewVolume());
    }
    for (const P_BaseObject* object : m_vecPrepared)
    {
        if (const P_BaseObject* parent = object->getParent())
        {
            parent->calculateObjectToWorldMatrix();
        }
    }
    const std::function<void(std::size_t)> prepareShare = [this](std::size_t share)
    {
        const std::size_t end = std::min((share + 1) * objectsPerShare, m_vecPrepared.size());
        for (std::size_t i = share * objectsPerShare; i < end; ++i)
        {
            if (willBeVisited(m_vecPrepared[i]))
            {
                m_vecPrepared[i]->getRare().m_pFramePreparation->prepareFrame(m_uiFrame);
            }
        }
    };
    parallelFor((m_vecPrepared.size() + objectsPerShare - 1) / objectsPerShare, prepareShare);
}

void P_Scene::findPrepared()
{
    m_vecPrepared.clear();
    for (P_BaseObject* top : getChildren())
    {
        for (P_BaseObject* object = top; object; object = nextInSubtree(*top, object, object->isBusySubtree()))
        {
            if (object->getRare().m_pFramePreparation)
            {
                m_vecPrepared.push_back(object);
            }
        }
    }
    m_bPreparedFound = true;
}
