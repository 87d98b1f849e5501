#pragma once

#include "render/gl_handle.h"
#include "render/gl_program.h"
#include "render/view.h"

#include <platform/math/matrix4.h>

#include <span>

namespace TW2::render
{
/// Draws lines in world space, as wide in the picture as is asked for.
class LineRenderer
{
public:
    LineRenderer();

    /// `width` in pixels of the current viewport.
    void draw(std::span<const View::Line> lines, const M_Matrix4Template<float>& viewProjection, float width);
    /// Fills the picture with a course from `top` to `bottom`.
    void drawBackground(const G_FColor& top, const G_FColor& bottom);

private:
    GLProgram m_program;
    GLProgram m_background;
    GLVertexArray m_array;
    GLVertexArray m_noArray;  ///< of the background, whose corners have no attributes
    GLBuffer m_buffer;
};
}  // namespace TW2::render
