#pragma once

namespace TW2::render
{
/// @name GLSL sources
/// The material program joins the layers of any material; the numbers that it tells apart are in material_uniforms.h.
/// @{
extern const char* const materialVertexShader;
extern const char* const materialFragmentShader;
extern const char* const lineVertexShader;
extern const char* const lineFragmentShader;
/// @}
}  // namespace TW2::render
