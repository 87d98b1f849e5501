#include "render/bounds.h"

#include "render/scene_walk.h"

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
    m_vMinimum = {std::min(m_vMinimum.x, point.x), std::min(m_vMinimum.y, point.y), std::min(m_vMinimum.z, point.z)};
    m_vMaximum = {std::max(m_vMaximum.x, point.x), std::max(m_vMaximum.y, point.y), std::max(m_vMaximum.z, point.z)};
}

void collectVertices(const P_BaseObject& root, std::vector<M_Vector3Template<float>>& vertices)
{
    forEachShownMesh(
        root,
        [&vertices](const P_VirtualObject& mesh)
        {
            for (int i = 0; mesh.isEnabled() && i < mesh.getPrimitiveCount(); ++i)
            {
                const P_TriangleMesh* geometry = mesh.getPrimitive(i);
                const bool drawn = geometry && mesh.getPrimitiveInstance(i)->isVisible();
                const unsigned int count = drawn ? geometry->getVertexBuffer().getUsedCount() : 0;
                for (unsigned int vertex = 0; vertex < count; ++vertex)
                {
                    vertices.push_back(mesh.getObjectToWorldMatrix().transformPoint(mesh.getVertexPosition(i, vertex)));
                }
            }
        });
}
}  // namespace TW2::render
