#pragma once

#include "convert/gltf_file.h"
#include "convert/model.h"
#include "convert/pictures.h"
#include "convert/warnings.h"

#include <vector>

namespace TW2::convert
{
/// A surface per material of the file, and a plain white one behind them. What the library's materials have no word for
/// (metal, normal maps, ...) is named in `warnings`.
[[nodiscard]] std::vector<Surface> importSurfaces(const GltfFile& file, PictureCollector& pictures, Warnings& warnings);
}  // namespace TW2::convert
