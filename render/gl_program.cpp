#include "render/gl_program.h"

#include "render/render_exception.h"

#include <platform/runtime/str.h>

#include <array>

namespace TW2::render
{
namespace
{
void attach(GLuint program, GLenum kind, const char* source)
{
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &source, nullptr);
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

GLProgram::GLProgram(const char* vertexSource, const char* fragmentSource) : m_program(GLProgramHandle::create())
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

GLint GLProgram::find(const char* name)
{
    const auto [entry, isNew] = m_mapLocations.try_emplace(name, -1);
    if (isNew)
    {
        entry->second = glGetUniformLocation(m_program.get(), name);
    }
    return entry->second;
}

void GLProgram::set(const char* name, int value)
{
    glUniform1i(find(name), value);
}

void GLProgram::set(const char* name, float value)
{
    glUniform1f(find(name), value);
}

void GLProgram::set(const char* name, const M_Vector3Template<float>& value)
{
    glUniform3f(find(name), value.x, value.y, value.z);
}

void GLProgram::setColor(const char* name, const G_FColor& value)
{
    set(name, value.getRGB() * (1.0F / 255.0F));
}

void GLProgram::set(const char* name, const M_Matrix4Template<float>& value)
{
    setMatrices(name, &value, 1);
}

void GLProgram::set(const char* name, const M_Matrix4x3Template<float>& value)
{
    set(name, M_Matrix4Template<float>(value));
}

void GLProgram::setInts(const char* name, const int* values, int count)
{
    glUniform1iv(find(name), count, values);
}

void GLProgram::setInt4s(const char* name, const int* values, int count)
{
    glUniform4iv(find(name), count, values);
}

void GLProgram::setFloat4s(const char* name, const float* values, int count)
{
    glUniform4fv(find(name), count, values);
}

void GLProgram::setMatrices(const char* name, const M_Matrix4Template<float>* values, int count)
{
    // Rows of a row-vector matrix are the columns of GLSL's column-vector matrix: the memory image is the same.
    glUniformMatrix4fv(find(name), count, GL_FALSE, values->data());
}
}  // namespace TW2::render
