#pragma once

#include "convert/model.h"
#include "convert/model_import.h"

#include <string>

namespace TW2::convert
{
/// Reads a model of any format that is built in: glTF, FBX and COLLADA by readers of its own, everything else through
/// Assimp. Throws ConvertException for a file that cannot be read.
[[nodiscard]] Model readModel(const std::string& fileName, const ImportOptions& options);
}  // namespace TW2::convert
