#pragma once

#include "convert/collada_scene.h"
#include "convert/warnings.h"

#include <vector>

namespace TW2::convert
{
/// The clips of a COLLADA file: those that it arranges itself, else all its animations as one, called as the file.
/// Channels are numbered as the scene's places. What is left out is told.
[[nodiscard]] std::vector<Clip> readColladaClips(const ColladaScene& scene, const std::string& fileName,
                                                 Warnings& warnings);
}  // namespace TW2::convert
