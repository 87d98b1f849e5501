#pragma once

#include "convert/collada_scene.h"
#include "convert/collada_surface.h"
#include "convert/warnings.h"

#include <vector>

namespace TW2::convert
{
/// The triangles that an instance of a geometry or of a controller shows, a mesh per material, bound to the joints of
/// its skin. Throws ConvertException for a damaged geometry.
[[nodiscard]] std::vector<Mesh> readColladaMeshes(const ColladaScene& scene, const pugi::xml_node& instance,
                                                  ColladaSurfaces& surfaces, Warnings& warnings);
}  // namespace TW2::convert
