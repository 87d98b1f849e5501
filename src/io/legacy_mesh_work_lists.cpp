#include "io/legacy_mesh_work_lists.h"

#include <memory>

namespace TW2
{
namespace
{
// Room for a mesh of usual size, so that small ones never grow a list.
constexpr std::size_t usualVertices = 1000;
constexpr std::size_t usualTextureCorners = 3000;
constexpr std::size_t usualTriangles = 200;

std::unique_ptr<LegacyMeshLists> s_pLists;
std::unique_ptr<LegacyMeshSmoothingLists> s_pSmoothingLists;
}  // namespace

LegacyMeshLists::LegacyMeshLists()
{
    positions.reserve(usualVertices);
    normals.reserve(usualVertices);
    corners.reserve(usualVertices);
    sources.reserve(usualVertices);
    textureCorners.reserve(usualTextureCorners);
}

unsigned int LegacyMeshLists::appendCopy(unsigned int vertex)
{
    const unsigned int copy = static_cast<unsigned int>(positions.size());
    const M_Vector3Template<float> position = positions[vertex];
    positions.push_back(position);
    sources.push_back(vertex);
    return copy;
}

LegacyMeshSmoothingLists::LegacyMeshSmoothingLists()
{
    triangleNormals.reserve(usualTriangles);
    triangles.reserve(3 * usualTriangles);
    triangleStarts.reserve(usualVertices);
    around.reserve(usualVertices);
    masks.reserve(usualVertices);
}

LegacyMeshLists& getLegacyMeshLists()
{
    if (!s_pLists)
    {
        s_pLists.reset(new LegacyMeshLists);
    }
    return *s_pLists;
}

LegacyMeshSmoothingLists& getLegacyMeshSmoothingLists()
{
    if (!s_pSmoothingLists)
    {
        s_pSmoothingLists.reset(new LegacyMeshSmoothingLists);
    }
    return *s_pSmoothingLists;
}

void releaseLegacyMeshLists() noexcept
{
    s_pSmoothingLists.reset();
    s_pLists.reset();
}
}  // namespace TW2
