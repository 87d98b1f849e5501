#include "render/offscreen_context.h"

#include "render/render_exception.h"

#include <platform/runtime/str.h>

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <array>

namespace TW2::render
{
namespace
{
EGLDisplay openDisplay()
{
    // The process's one display, which others may use as well: it is started as often as asked, and never ended.
    // Each way is tried until one gives a display that starts: without a surface first, the default one last.
    for (const EGLenum platform : {static_cast<EGLenum>(EGL_PLATFORM_SURFACELESS_MESA), static_cast<EGLenum>(EGL_NONE)})
    {
        EGLDisplay display = platform == EGL_NONE ? eglGetDisplay(EGL_DEFAULT_DISPLAY)
                                                  : eglGetPlatformDisplayEXT(platform, EGL_DEFAULT_DISPLAY, nullptr);
        if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) == EGL_TRUE)
        {
            return display;
        }
    }
    throw RenderException("No OpenGL driver for drawing off screen was found (libegl1, libegl-mesa0, libgl1-mesa-dri)");
}

EGLContext openContext(EGLDisplay display, OffscreenContext::Kind kind)
{
    const bool embedded = kind == OffscreenContext::Kind::Embedded;
    const char* const name = embedded ? "OpenGL ES 3.0" : "OpenGL 3.3";
    if (eglBindAPI(embedded ? EGL_OPENGL_ES_API : EGL_OPENGL_API) != EGL_TRUE)
    {
        throw RenderException(S_STR("The EGL driver does not offer %s", name));
    }
    const std::array<EGLint, 7> desktop{
        EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 3, EGL_CONTEXT_OPENGL_PROFILE_MASK,
        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    const std::array<EGLint, 5> es{EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 0, EGL_NONE};
    EGLContext context =
        eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, embedded ? es.data() : desktop.data());
    if (context == EGL_NO_CONTEXT)
    {
        throw RenderException(S_STR("The driver gives no %s context (EGL error 0x%x)", name, eglGetError()));
    }
    if (eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context) != EGL_TRUE)
    {
        eglDestroyContext(display, context);
        throw RenderException("The driver cannot draw without a surface");
    }
    return context;
}
}  // namespace

OffscreenContext::OffscreenContext(Kind kind) : m_pDisplay(openDisplay()), m_pContext(openContext(m_pDisplay, kind)) {}

OffscreenContext::~OffscreenContext()
{
    eglMakeCurrent(m_pDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(m_pDisplay, m_pContext);
}

const char* OffscreenContext::getDriverName() const
{
    return reinterpret_cast<const char*>(glGetString(GL_RENDERER));
}
}  // namespace TW2::render
