#pragma once

#include <tw2/export.h>

namespace TW2
{
struct TWMaterialChunk;

/// How the layers of an engine material are put together.
enum class MaterialSetUp
{
    Transparent,  ///< the engine's: a shaded diffuse texture with alpha test
    Textured,     ///< the engine's: a shaded diffuse texture
    Environment,  ///< the engine's: a shaded diffuse texture with a reflection
    Specular,     ///< diffuse and specular texture by a pixel shader
    Gloss,        ///< reflection, gloss, diffuse and solid layer
    General       ///< diffuse, solid layer and reflection
};

/// The set-up of a record's material on a driver with or without pixel shaders; one without ignores the specular
/// texture. Exported for the tests only.
[[nodiscard]] TW2_API MaterialSetUp selectSetUp(const TWMaterialChunk& chunk, bool hasPixelShaders) noexcept;
}  // namespace TW2
