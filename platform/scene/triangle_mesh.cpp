#include <platform/scene/triangle_mesh.h>

P_TriangleMesh::~P_TriangleMesh() = default;

void P_TriangleMesh::allocate(unsigned int triangles, unsigned int vertices, bool dynamic)
{
    allocateBuffers(triangles, vertices, dynamic);
}

P_TriangleMesh* P_TriangleMesh::clone() const
{
    return new P_TriangleMesh(*this);
}
