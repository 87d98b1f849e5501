#include "render/line_renderer.h"

#include "render/shaders.h"

#include <array>
#include <cstddef>

namespace TW2::render
{
namespace
{
constexpr GLsizei corners = 4;

void describe(GLuint attribute, int components, std::size_t offset)
{
    glEnableVertexAttribArray(attribute);
    glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, sizeof(View::Line),
                          reinterpret_cast<const void*>(offset));
    glVertexAttribDivisor(attribute, 1);
}
}  // namespace

LineRenderer::LineRenderer()
    : m_program(lineVertexSource, lineFragmentSource),
      m_background(backgroundVertexSource, lineFragmentSource),
      m_array(GLVertexArray::create()),
      m_noArray(GLVertexArray::create()),
      m_buffer(GLBuffer::create())
{
    glBindVertexArray(m_array.get());
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer.get());
    describe(0, 3, offsetof(View::Line, m_vFrom));
    describe(1, 3, offsetof(View::Line, m_vTo));
    describe(2, 4, offsetof(View::Line, m_color));
}

void LineRenderer::draw(std::span<const View::Line> lines, const M_Matrix4Template<float>& viewProjection, float width)
{
    if (lines.empty())
    {
        return;
    }
    std::array<GLint, 4> viewport{};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    m_program.use();
    GLProgram::set(m_program.find("viewProjection"), viewProjection);
    glUniform4f(m_program.find("picture"), 0.5F * static_cast<float>(viewport[2]),
                0.5F * static_cast<float>(viewport[3]), 0.5F * width, 0.0F);
    glBindVertexArray(m_array.get());
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer.get());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(lines.size_bytes()), lines.data(), GL_STREAM_DRAW);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, corners, static_cast<GLsizei>(lines.size()));
    glDisable(GL_BLEND);
}

void LineRenderer::drawBackground(const G_FColor& top, const G_FColor& bottom)
{
    m_background.use();
    GLProgram::setColor(m_background.find("topColor"), top);
    GLProgram::setColor(m_background.find("bottomColor"), bottom);
    glBindVertexArray(m_noArray.get());
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, corners);
}
}  // namespace TW2::render
