#pragma once

#include "render/gl_program.h"
#include "render/texture_cache.h"

class P_Material;
class P_PrimitiveInstance;

namespace TW2::render
{
/// Hands a material, as one primitive shows it, to the material program in use: layers, maps, coordinate sets, colours
/// and states. Without a material a surface is drawn in plain white under the lights.
///
/// Of a material's layers the first 24 are drawn, of its maps and coordinate sets the first 8.
void setMaterial(GLProgram& program, TextureCache& textures, P_Material* material, const P_PrimitiveInstance& instance);
}  // namespace TW2::render
