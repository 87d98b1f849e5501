#pragma once

/// OpenGL as this room uses it: what OpenGL 3.3 core and OpenGL ES 3.0 (in a browser: WebGL 2) have in common.
#ifdef __EMSCRIPTEN__
#include <GLES3/gl3.h>
#else
#include <epoxy/gl.h>
#endif

namespace TW2::render
{
/// Whether the current context is one of OpenGL ES or WebGL.
[[nodiscard]] bool isEmbeddedContext();
/// Whether the current context has an extension.
[[nodiscard]] bool hasExtension(const char* name);
}  // namespace TW2::render
