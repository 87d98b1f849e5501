#pragma once

#include "render/gl.h"

#include <utility>

namespace TW2::render
{
/// Owns one OpenGL object. The context that was current when it was made must be current when it goes.
template <typename Traits>
class GLHandle
{
public:
    GLHandle() noexcept = default;
    ~GLHandle() { reset(); }
    GLHandle(GLHandle&& other) noexcept : m_uiName(std::exchange(other.m_uiName, 0)) {}
    GLHandle& operator=(GLHandle&& other) noexcept
    {
        std::swap(m_uiName, other.m_uiName);
        return *this;
    }
    GLHandle(const GLHandle&) = delete;
    GLHandle& operator=(const GLHandle&) = delete;

    /// A new object of the kind.
    [[nodiscard]] static GLHandle create()
    {
        GLHandle handle;
        handle.m_uiName = Traits::create();
        return handle;
    }
    /// The object's name; 0 for none.
    [[nodiscard]] GLuint get() const noexcept { return m_uiName; }

private:
    void reset() noexcept
    {
        if (m_uiName != 0)
        {
            Traits::destroy(std::exchange(m_uiName, 0));
        }
    }

    GLuint m_uiName = 0;
};

/// Objects that OpenGL makes and deletes by lists of names. The functions are the loader's pointers, looked up at the
/// call.
template <auto& Generate, auto& Delete>
struct NameTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        Generate(1, &name);
        return name;
    }
    static void destroy(GLuint name) { Delete(1, &name); }
};
struct ProgramTraits
{
    static GLuint create() { return glCreateProgram(); }
    static void destroy(GLuint name) { glDeleteProgram(name); }
};

using GLBuffer = GLHandle<NameTraits<glGenBuffers, glDeleteBuffers>>;
using GLVertexArray = GLHandle<NameTraits<glGenVertexArrays, glDeleteVertexArrays>>;
using GLTexture = GLHandle<NameTraits<glGenTextures, glDeleteTextures>>;
using GLSampler = GLHandle<NameTraits<glGenSamplers, glDeleteSamplers>>;
using GLFramebuffer = GLHandle<NameTraits<glGenFramebuffers, glDeleteFramebuffers>>;
using GLRenderbuffer = GLHandle<NameTraits<glGenRenderbuffers, glDeleteRenderbuffers>>;
using GLProgramHandle = GLHandle<ProgramTraits>;
}  // namespace TW2::render
