#include "render/bounds.h"

#include <platform/scene/lod_object.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace TW2::render
{
void Bounds::add(const M_Vector3Template<float>& point) noexcept
{
    if (!std::isfinite(point.x) || !std::isfinite(point.y) || !std::isfinite(point.z))
    {
        return;
    }
    if (isEmpty())
    {
        m_vMinimum = m_vMaximum = point;
        return;
    }
    m_vMinimum = {std::min(m_vMinimum.x, point.x), std::min(m_vMinimum.y, point.y), std::min(m_vMinimum.z, point.z)};
    m_vMaximum = {std::max(m_vMaximum.x, point.x), std::max(m_vMaximum.y, point.y), std::max(m_vMaximum.z, point.z)};
}

void collectVertices(const P_BaseObject& root, std::vector<M_Vector3Template<float>>& vertices)
{
    std::vector<const P_BaseObject*> pending{&root};
    while (!pending.empty())
    {
        const P_BaseObject* object = pending.back();
        pending.pop_back();
        const auto* mesh = dynamic_cast<const P_VirtualObject*>(object);
        for (int i = 0; mesh && mesh->isEnabled() && i < mesh->getPrimitiveCount(); ++i)
        {
            const P_TriangleMesh* geometry = mesh->getPrimitive(i);
            const unsigned int count =
                geometry && mesh->getPrimitiveInstance(i)->isVisible() ? geometry->getVertexBuffer().getUsedCount() : 0;
            for (unsigned int vertex = 0; vertex < count; ++vertex)
            {
                vertices.push_back(mesh->getObjectToWorldMatrix().transformPoint(mesh->getVertexPosition(i, vertex)));
            }
        }
        if (const auto* levels = dynamic_cast<const P_LODObject*>(object))
        {
            if (const P_BaseObject* used = levels->getUsedLODObject())
            {
                pending.push_back(used);
            }
            continue;
        }
        for (const P_BaseObject* child : object->getChildren())
        {
            pending.push_back(child);
        }
    }
}
}  // namespace TW2::render
