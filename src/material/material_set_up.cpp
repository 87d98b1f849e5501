#include "material/material_set_up.h"

#include <tw2/material/material_chunk.h>

namespace TW2
{
MaterialSetUp selectSetUp(const TWMaterialChunk& chunk, bool hasPixelShaders) noexcept
{
    // The engine has a set-up of its own for a shaded diffuse texture, perhaps with an environment.
    if (chunk.hasDiffuseTexture() && chunk.shading == TWMaterialChunk::SHADING_GOURAUD && !chunk.vertexAlpha)
    {
        if (chunk.hasReflectionTexture())
        {
            return MaterialSetUp::Environment;
        }
        return chunk.alphaTest ? MaterialSetUp::Transparent : MaterialSetUp::Textured;
    }
    if (chunk.hasSpecularTexture() && hasPixelShaders)
    {
        return MaterialSetUp::Specular;
    }
    return chunk.hasGlossTexture() ? MaterialSetUp::Gloss : MaterialSetUp::General;
}
}  // namespace TW2
