#pragma once

#include "convert/gltf_file.h"
#include "convert/model.h"
#include "convert/warnings.h"

#include <optional>
#include <string>
#include <vector>

namespace TW2::convert
{
/// The joints of a skin.
struct GltfSkin
{
    std::vector<int> m_vecNodes;        ///< nodes of the model
    std::vector<Matrixd> m_vecOffsets;  ///< one per joint: mesh space to joint space
};

/// The triangles of a primitive, strips and fans taken apart, flat-shaded when the file has no normals, each morph
/// target applied with its weight. `skin` is null for a mesh that hangs on no bones. None for points and lines.
[[nodiscard]] std::optional<Mesh> importPrimitive(const GltfFile& file, const tinygltf::Primitive& primitive,
                                                  const std::string& place, const std::string& name,
                                                  const std::vector<double>& weights, const GltfSkin* skin,
                                                  Warnings& warnings);
}  // namespace TW2::convert
