#pragma once

#include "convert/converter.h"

#include <cstdio>
#include <string>

namespace tools
{
/// @name What `tw2 convert` tells about a conversion
/// @{

/// For people, on standard output, and the warnings on `messages`. `onto`: motion alone was written; `quiet`: warnings
/// alone.
void printSummary(const TW2::convert::Summary& summary, std::FILE* messages, bool onto, bool quiet);
/// For programs, as one JSON document.
void printJson(const TW2::convert::Summary& summary);
/// "script: sources" for make, ninja and CMake, and an empty rule for every source, so that one that is gone is no
/// error.
void writeDepfile(const std::string& file, const TW2::convert::Summary& summary);
/// @}
}  // namespace tools
