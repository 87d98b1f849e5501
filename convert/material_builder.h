#pragma once

#include "convert/model.h"
#include "convert/surface_plan.h"

#include <tw2/material/material_list_chunk.h>

#include <vector>

namespace TW2::convert
{
/// The materials of a model as a material list record, one per plan.
///
/// The library's plain set-ups for a texture show twice the product of texture and light, which cuts off what is
/// bright. So every lit texture asks for a constant alpha, of 1 where the surface is opaque: such a material is its
/// texture times the light. Of an opaque or masked surface the alpha test switches blending off again, with a reference
/// that lets everything pass, or the mask's. A second texture takes the place of a reflection that has coordinates of
/// the mesh, and is added or multiplied. A surface without texture has its colour under the light, with highlights when
/// it is shiny.
[[nodiscard]] MaterialListChunk buildMaterials(const Model& model, const std::vector<SurfacePlan>& plans);
}  // namespace TW2::convert
