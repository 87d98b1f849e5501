#pragma once

#include "convert/model.h"
#include "convert/output_files.h"

#include <tw2/material/material_list_chunk.h>

namespace TW2::convert
{
/// The materials of a model as a material list record; their pictures are added to `files`, in a folder of their own.
///
/// A textured surface is its texture times the light; with transparent parts it is drawn through the alpha test. A
/// surface without texture has its colour under the light, with highlights when it is shiny. A partly transparent
/// surface has a constant alpha.
[[nodiscard]] MaterialListChunk buildMaterials(const Model& model, OutputFiles& files);
}  // namespace TW2::convert
