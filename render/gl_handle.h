#pragma once

#include <epoxy/gl.h>

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

struct BufferTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        glGenBuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteBuffers(1, &name); }
};
struct VertexArrayTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        glGenVertexArrays(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteVertexArrays(1, &name); }
};
struct TextureTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        glGenTextures(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteTextures(1, &name); }
};
struct SamplerTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        glGenSamplers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteSamplers(1, &name); }
};
struct FramebufferTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        glGenFramebuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteFramebuffers(1, &name); }
};
struct RenderbufferTraits
{
    static GLuint create()
    {
        GLuint name = 0;
        glGenRenderbuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteRenderbuffers(1, &name); }
};
struct ProgramTraits
{
    static GLuint create() { return glCreateProgram(); }
    static void destroy(GLuint name) { glDeleteProgram(name); }
};

using GLBuffer = GLHandle<BufferTraits>;
using GLVertexArray = GLHandle<VertexArrayTraits>;
using GLTexture = GLHandle<TextureTraits>;
using GLSampler = GLHandle<SamplerTraits>;
using GLFramebuffer = GLHandle<FramebufferTraits>;
using GLRenderbuffer = GLHandle<RenderbufferTraits>;
using GLProgramHandle = GLHandle<ProgramTraits>;
}  // namespace TW2::render
