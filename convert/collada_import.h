#pragma once

#include "convert/model.h"
#include "convert/model_import.h"

#include <string>

namespace TW2::convert
{
/// Whether a file is COLLADA by its name.
[[nodiscard]] bool isCollada(const std::string& fileName);
/// Reads a COLLADA file as the format says: every step of a node's matrix and every kind of key that moves one, skins
/// with their bind shape, materials as they are bound. Throws ConvertException for a file that cannot be read. What is
/// left out is told in the warnings.
[[nodiscard]] Model importCollada(const std::string& fileName, const ImportOptions& options);
}  // namespace TW2::convert
