#include <platform/runtime/str.h>
#include <platform/scene/scene_exception.h>
#include <platform/scene/vertex_buffer.h>

#include <algorithm>
#include <utility>

namespace
{
constexpr float fullColor = 255.0F;
constexpr unsigned int colorComponents = 4;
constexpr unsigned int alphaByte = 3;

void write(float* place, const M_Vector3Template<float>& v) noexcept
{
    place[0] = v.x;
    place[1] = v.y;
    place[2] = v.z;
}
}  // namespace

float* P_VertexBuffer::access(unsigned int vertex, bool carried, unsigned int offset)
{
    checkWrite(vertex);
    if (!carried)
    {
        throw P_SceneException(
            S_STR("Vertex format 0x%X does not carry what was written", m_format.getOldVertexFormat()));
    }
    return m_vecData.data() + std::size_t{vertex} * m_format.getStride() + offset;
}

void P_VertexBuffer::setPosition(unsigned int vertex, const M_Vector3Template<float>& position)
{
    write(access(vertex, m_format.hasPosition(), m_format.getPositionOffset()), position);
}

void P_VertexBuffer::setNormal(unsigned int vertex, const M_Vector3Template<float>& normal)
{
    write(access(vertex, m_format.hasNormal(), m_format.getNormalOffset()), normal);
}

void P_VertexBuffer::setTextureCoordinate(unsigned int vertex, unsigned int layer, float u, float v)
{
    float* place = access(vertex, layer < m_format.getTextureLayerCount(), m_format.getTextureOffset(layer));
    place[0] = u;
    place[1] = v;
}

void P_VertexBuffer::setColor(unsigned int vertex, float red, float green, float blue, float alpha)
{
    float* place = access(vertex, m_format.hasColor(), m_format.getColorOffset());
    write(place, {red, green, blue});
    place[alphaByte] = alpha;
}

void P_VertexBuffer::setColorAlpha(unsigned int vertex, float alpha)
{
    access(vertex, m_format.hasColor(), m_format.getColorOffset())[alphaByte] = alpha;
}

M_Vector3Template<float> P_VertexBuffer::getPosition(unsigned int vertex) const noexcept
{
    if (!m_format.hasPosition())
    {
        return {};
    }
    const float* place = at(vertex, m_format.getPositionOffset());
    return {place[0], place[1], place[2]};
}

M_Vector3Template<float> P_VertexBuffer::getNormal(unsigned int vertex) const noexcept
{
    if (!m_format.hasNormal())
    {
        return {};
    }
    const float* place = at(vertex, m_format.getNormalOffset());
    return {place[0], place[1], place[2]};
}

float P_VertexBuffer::getTextureU(unsigned int vertex, unsigned int layer) const noexcept
{
    return layer < m_format.getTextureLayerCount() ? at(vertex, m_format.getTextureOffset(layer))[0] : 0.0F;
}

float P_VertexBuffer::getTextureV(unsigned int vertex, unsigned int layer) const noexcept
{
    return layer < m_format.getTextureLayerCount() ? at(vertex, m_format.getTextureOffset(layer))[1] : 0.0F;
}

float P_VertexBuffer::getColorAlpha(unsigned int vertex) const noexcept
{
    return m_format.hasColor() ? at(vertex, m_format.getColorOffset())[alphaByte] : fullColor;
}

void P_VertexBuffer::allocate(const P_VertexFormat& format, unsigned int vertices)
{
    const std::size_t stride = format.getStride();
    S_Vector<float> data(stride * vertices);
    if (format.hasColor())
    {
        for (std::size_t color = format.getColorOffset(); color < data.size(); color += stride)
        {
            std::fill_n(data.begin() + static_cast<std::ptrdiff_t>(color), colorComponents, fullColor);
        }
    }
    m_vecData = std::move(data);
    m_format = format;
    setCapacity(vertices);
}
