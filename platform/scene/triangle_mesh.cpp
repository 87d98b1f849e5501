#include <platform/scene/triangle_mesh.h>

P_TriangleMesh::~P_TriangleMesh() = default;

void P_TriangleMesh::allocate(unsigned int triangles, unsigned int vertices, bool)
{
    allocateBuffers(triangles, vertices);
    verticesChanged();
}

P_TriangleMesh* P_TriangleMesh::clone() const
{
    return new P_TriangleMesh(*this);
}

void P_TriangleMesh::verticesChanged() noexcept
{
    P_Bounds bounds;
    m_box = P_Box();
    m_uiKnown = getVertexBuffer().getUsedCount();
    for (unsigned int vertex = 0; vertex < m_uiKnown; ++vertex)
    {
        const M_Vector3Template<float> position = getVertexBuffer().getPosition(vertex);
        m_box.add(position);
        bounds.add(position);
    }
    m_fReachSquared = bounds.getReachSquared();
}

void P_TriangleMesh::addToBounds(P_Bounds& bounds, const M_Matrix4x3Template<float>& transform,
                                 const P_BoneMatrices&) const noexcept
{
    const unsigned int used = getVertexBuffer().getUsedCount();
    if (!areVerticesKnown())
    {
        for (unsigned int vertex = 0; vertex < used; ++vertex)
        {
            bounds.add(transform.transformPoint(getVertexBuffer().getPosition(vertex)));
        }
    }
    else if (used > 0 && transform == M_Matrix4x3Template<float>::identity())
    {
        bounds.add(m_box, m_fReachSquared);
    }
    else if (used > 0)
    {
        const P_Box box = m_box.transformed(transform);
        bounds.add(box, box.getReachSquared());
    }
}
