#pragma once

#include "convert/gltf_file.h"
#include "convert/model.h"
#include "convert/warnings.h"

#include <vector>

namespace TW2::convert
{
/// One animation of the file. `nodes` gives the model's node of each of the file's, -1 for those left out. The motion
/// of morph targets is named in `warnings`.
[[nodiscard]] Clip importClip(const GltfFile& file, std::size_t index, const std::vector<int>& nodes,
                              Warnings& warnings);
}  // namespace TW2::convert
