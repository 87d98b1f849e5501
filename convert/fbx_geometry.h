#pragma once

#include "convert/fbx_scene.h"
#include "convert/warnings.h"

#include <string_view>
#include <vector>

namespace TW2::convert
{
/// The triangles of a geometry as a node shows them, a mesh per material; corners that say the same are one vertex.
/// `surfaces` are the model's surfaces of the node's materials, in the file's order, at least one. Throws
/// ConvertException for a damaged geometry.
[[nodiscard]] std::vector<Mesh> readFbxMeshes(const FbxScene& scene, std::size_t place, const FbxObject& geometry,
                                              const std::vector<int>& surfaces, Warnings& warnings);
/// The set of texture coordinates of a name: how many a geometry has before it; 0 for a name that none has.
[[nodiscard]] int findFbxCoordinates(const FbxObjects& objects, std::string_view name);
}  // namespace TW2::convert
