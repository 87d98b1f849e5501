#include "render/gl_program.h"

#include "render/render_exception.h"

#include <platform/runtime/str.h>

#include <array>

namespace TW2::render
{
namespace
{
constexpr const char* desktopHead = "#version 330 core\n";
constexpr const char* embeddedHead = R"(#version 300 es
precision highp float;
precision highp int;
precision highp sampler2D;
precision highp sampler2DShadow;
)";

void attach(GLuint program, GLenum kind, const std::string& source)
{
    const std::array<const char*, 2> parts{isEmbeddedContext() ? embeddedHead : desktopHead, source.c_str()};
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, static_cast<GLsizei>(parts.size()), parts.data(), nullptr);
    glCompileShader(shader);
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled != GL_TRUE)
    {
        std::array<char, 1024> log{};
        glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size()), nullptr, log.data());
        glDeleteShader(shader);
        throw RenderException(S_STR("A shader does not compile: %s", log.data()));
    }
    glAttachShader(program, shader);
    glDeleteShader(shader);
}
}  // namespace

GLProgram::GLProgram(const std::string& vertexSource, const std::string& fragmentSource)
    : m_program(GLProgramHandle::create())
{
    attach(m_program.get(), GL_VERTEX_SHADER, vertexSource);
    attach(m_program.get(), GL_FRAGMENT_SHADER, fragmentSource);
    glLinkProgram(m_program.get());
    GLint linked = GL_FALSE;
    glGetProgramiv(m_program.get(), GL_LINK_STATUS, &linked);
    if (linked != GL_TRUE)
    {
        std::array<char, 1024> log{};
        glGetProgramInfoLog(m_program.get(), static_cast<GLsizei>(log.size()), nullptr, log.data());
        throw RenderException(S_STR("A shader program does not link: %s", log.data()));
    }
}

void GLProgram::use() const
{
    glUseProgram(m_program.get());
}

GLint GLProgram::find(const char* name) const
{
    return glGetUniformLocation(m_program.get(), name);
}

void GLProgram::bindBlock(const char* name, GLuint binding) const
{
    const GLuint block = glGetUniformBlockIndex(m_program.get(), name);
    if (block != GL_INVALID_INDEX)
    {
        glUniformBlockBinding(m_program.get(), block, binding);
    }
}

void GLProgram::set(GLint location, int value)
{
    glUniform1i(location, value);
}

void GLProgram::set(GLint location, float value)
{
    glUniform1f(location, value);
}

void GLProgram::set(GLint location, const M_Matrix4Template<float>& value)
{
    // Rows of a row-vector matrix are the columns of GLSL's column-vector matrix: the memory image is the same.
    glUniformMatrix4fv(location, 1, GL_FALSE, value.data());
}

void GLProgram::setColor(GLint location, const G_FColor& value, float alpha)
{
    const M_Vector3Template<float> rgb = value.getRGB() * (1.0F / 255.0F);
    glUniform4f(location, rgb.x, rgb.y, rgb.z, alpha);
}
}  // namespace TW2::render
