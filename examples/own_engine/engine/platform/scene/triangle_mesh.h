#pragma once

#include <platform/math/vector3.h>
#include <platform/scene/vertex_format.h>

class P_VertexBuffer
{
public:
    const P_VertexFormat& getFormat() const noexcept;
    void setUsedCount(unsigned int count);
    unsigned int getUsedCount() const noexcept;
    void setPosition(unsigned int vertex, const M_Vector3Template<float>& position);
    void setNormal(unsigned int vertex, const M_Vector3Template<float>& normal);
    void setTextureCoordinate(unsigned int vertex, unsigned int layer, float u, float v);
    void setColorAlpha(unsigned int vertex, float alpha);
};

class P_IndexBuffer
{
public:
    void setUsedCount(unsigned int count);
    unsigned int getUsedCount() const noexcept;
    void setTriangle(unsigned int triangle, unsigned int a, unsigned int b, unsigned int c);
};

class P_TriangleMesh
{
public:
    void allocate(unsigned int triangles, unsigned int vertices, bool dynamic);
    void lock() noexcept;
    void unlock() noexcept;
    P_VertexBuffer& getVertexBuffer() noexcept;
    P_IndexBuffer& getIndexBuffer() noexcept;
    void setDrawnRange(unsigned int first, unsigned int count) noexcept;
};
