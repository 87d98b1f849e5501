#include <platform/runtime/str.h>
#include <platform/scene/index_buffer.h>
#include <platform/scene/scene_exception.h>

#include <algorithm>
#include <utility>

void P_IndexBuffer::setTriangle(unsigned int triangle, unsigned int a, unsigned int b, unsigned int c)
{
    checkWrite(triangle);
    const unsigned int largest = std::max({a, b, c});
    if (largest >= m_uiVertexCapacity)
    {
        throw P_SceneException(S_STR("Triangle %u names vertex %u of %u", triangle, largest, m_uiVertexCapacity));
    }
    unsigned int* place = m_vecIndices.data() + std::size_t{3} * triangle;
    place[0] = a;
    place[1] = b;
    place[2] = c;
}

void P_IndexBuffer::allocate(unsigned int triangles, unsigned int vertices)
{
    S_Vector<unsigned int> indices(std::size_t{3} * triangles);
    m_vecIndices = std::move(indices);
    m_uiVertexCapacity = vertices;
    setCapacity(triangles);
}
