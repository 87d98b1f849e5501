#pragma once

#include "render/surface_kind.h"

#include <string>

namespace TW2::render
{
/// @name The GLSL of a kind of surface
/// Maps are the samplers `map0` and so on, texture matrices `textureMatrix0` and so on, by coordinate set.
/// @{
[[nodiscard]] std::string writeVertexSource(const SurfaceKind& kind);
[[nodiscard]] std::string writeFragmentSource(const SurfaceKind& kind);
/// @}
}  // namespace TW2::render
