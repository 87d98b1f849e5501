#pragma once

#include "render/gl_handle.h"

#include <platform/image/fcolor.h>
#include <platform/math/matrix4.h>

#include <string>

namespace TW2::render
{
/// A GLSL program made of one source for OpenGL 3.3 and OpenGL ES 3.0.
class GLProgram
{
public:
    /// The sources begin behind the version line, which is put before them as the current context wants it. Throws
    /// RenderException with the driver's message when they do not compile or link.
    GLProgram(const std::string& vertexSource, const std::string& fragmentSource);

    void use() const;
    /// Location of a uniform; -1, which setting ignores, when the program does not use it.
    [[nodiscard]] GLint find(const char* name) const;
    /// Connects a uniform block with a numbered binding point; nothing happens when the program does not use it.
    void bindBlock(const char* name, GLuint binding) const;

    /// @name Uniforms of the program in use
    /// @{
    static void set(GLint location, int value);
    static void set(GLint location, float value);
    static void set(GLint location, const M_Matrix4Template<float>& value);
    /// Red, green and blue divided by 255, and `alpha` as it is.
    static void setColor(GLint location, const G_FColor& value, float alpha = 1.0F);
    /// @}

private:
    GLProgramHandle m_program;
};
}  // namespace TW2::render
