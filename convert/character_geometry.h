#pragma once

#include "convert/model.h"

#include <string>

namespace TW2::convert
{
/// @name A converted character's files as a model
/// As far as motion needs them: places, and which vertices hang on what. Throw ConvertException for files in which
/// something hangs on what is not there, and what reading throws.
/// @{

/// A node per mesh of a geometry file, standing as there, with what it shows.
void readBones(Model& model, const std::string& geometryFile);
/// Adds what a skin draws, on the nodes that the model has. Skins of several meshes, and those whose vertices go by
/// maps, are left out: motion is compared at the bones then.
void readSkin(Model& model, const std::string& geometryFile, const std::string& skinFile);
/// @}
}  // namespace TW2::convert
