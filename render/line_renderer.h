#pragma once

#include "render/gl_handle.h"
#include "render/gl_program.h"
#include "render/view.h"

#include <platform/math/matrix4.h>

#include <span>

namespace TW2::render
{
/// Draws lines in world space.
class LineRenderer
{
public:
    LineRenderer();

    void draw(std::span<const View::Line> lines, const M_Matrix4Template<float>& viewProjection);
    /// Fills the picture with a course from `top` to `bottom`.
    void drawBackground(const G_FColor& top, const G_FColor& bottom);

private:
    struct Vertex
    {
        M_Vector3Template<float> m_vPosition;
        G_FColor m_color;
    };
    void draw(GLenum kind, std::span<const Vertex> vertices, const M_Matrix4Template<float>& viewProjection);

    GLProgram m_program;
    GLVertexArray m_array;
    GLBuffer m_buffer;
    std::vector<Vertex> m_vecVertices;
};
}  // namespace TW2::render
