#pragma once

#include "convert/model.h"
#include "convert/pictures.h"
#include "convert/warnings.h"

struct aiMaterial;
struct aiScene;

namespace TW2::convert
{
/// A surface from an imported material. Pictures that are not found, or that cannot be decoded, leave the surface
/// without them, which a warning tells.
[[nodiscard]] Surface importSurface(const aiScene& scene, const aiMaterial& material, PictureCollector& pictures,
                                    Warnings& warnings);
}  // namespace TW2::convert
