#pragma once

namespace TW2::render
{
/// @name GLSL
/// One source for OpenGL 3.3 and OpenGL ES 3.0. Parts without a `main` are put together by surface_source.cpp.
/// @{

/// Vertex attributes, the matrix texture, and `findPlace`, the matrix that takes a vertex to the world. `mostSlots` is
/// defined before it: the bones per vertex.
extern const char* const placeSource;
/// The block of what all programs read about a picture.
extern const char* const frameSource;
/// Fragment side of surfaces: light that falls on a surface. `LIT`, `UNLIT` and `SPECULAR` are defined before it where
/// they are wanted.
extern const char* const shadeSource;

extern const char* const wireVertexSource;
extern const char* const wireFragmentSource;
extern const char* const casterVertexSource;
extern const char* const casterFragmentSource;
extern const char* const groundVertexSource;
extern const char* const groundFragmentSource;
extern const char* const backgroundVertexSource;
extern const char* const lineVertexSource;
extern const char* const lineFragmentSource;
/// @}
}  // namespace TW2::render
