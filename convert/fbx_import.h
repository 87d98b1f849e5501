#pragma once

#include "convert/model.h"
#include "convert/model_import.h"

#include <string>

namespace TW2::convert
{
/// Whether a file is FBX by its name.
[[nodiscard]] bool isFbx(const std::string& fileName);
/// Reads an FBX file of version 6 or newer, binary or text, as its makers document it: nodes with pivots and
/// inheritance, skins, cubic and stepped keys, extrapolation. Throws ConvertException for a file that cannot be read.
/// What is left out is told in the warnings.
[[nodiscard]] Model importFbx(const std::string& fileName, const ImportOptions& options);
}  // namespace TW2::convert
