#include "render/line_renderer.h"

#include "render/shaders.h"

#include <array>
#include <cstddef>

namespace TW2::render
{
LineRenderer::LineRenderer()
    : m_program(lineVertexShader, lineFragmentShader), m_array(GLVertexArray::create()), m_buffer(GLBuffer::create())
{
    glBindVertexArray(m_array.get());
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer.get());
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Vertex), nullptr);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(1, 4, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                          reinterpret_cast<const void*>(offsetof(Vertex, m_color)));
}

void LineRenderer::draw(GLenum kind, std::span<const Vertex> vertices, const M_Matrix4Template<float>& viewProjection)
{
    m_program.use();
    m_program.set("viewProjection", viewProjection);
    glBindVertexArray(m_array.get());
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer.get());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size_bytes()), vertices.data(), GL_STREAM_DRAW);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDrawArrays(kind, 0, static_cast<GLsizei>(vertices.size()));
    glDisable(GL_BLEND);
}

void LineRenderer::draw(std::span<const View::Line> lines, const M_Matrix4Template<float>& viewProjection)
{
    if (lines.empty())
    {
        return;
    }
    m_vecVertices.clear();
    for (const View::Line& line : lines)
    {
        m_vecVertices.push_back({line.m_vFrom, line.m_color});
        m_vecVertices.push_back({line.m_vTo, line.m_color});
    }
    draw(GL_LINES, m_vecVertices, viewProjection);
}

void LineRenderer::drawBackground(const G_FColor& top, const G_FColor& bottom)
{
    const std::array<Vertex, 4> corners{Vertex{{-1.0F, -1.0F, 0.5F}, bottom}, Vertex{{1.0F, -1.0F, 0.5F}, bottom},
                                        Vertex{{-1.0F, 1.0F, 0.5F}, top}, Vertex{{1.0F, 1.0F, 0.5F}, top}};
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    draw(GL_TRIANGLE_STRIP, corners, M_Matrix4Template<float>::identity());
}
}  // namespace TW2::render
