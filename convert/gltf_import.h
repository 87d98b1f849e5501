#pragma once

#include "convert/model.h"
#include "convert/model_import.h"

#include <string>

namespace TW2::convert
{
/// Whether the file is glTF, by its ending or its first bytes.
[[nodiscard]] bool isGltf(const std::string& fileName);

/// Reads a glTF 2.0 file, text or binary, with everything that it says about motion. Throws ConvertException, which
/// names the file and the place in it, for a file that is damaged, incomplete or needs what is not known here. What is
/// left out is told in the warnings.
[[nodiscard]] Model importGltf(const std::string& fileName, const ImportOptions& options);
}  // namespace TW2::convert
