#pragma once

#include <tw2/export.h>

namespace TW2
{
/// Releases the work memory that the conversion of old mesh layouts keeps between meshes. A later conversion makes it
/// anew; releasing what is not there does nothing. The library does the same when its last animated object goes.
TW2_API void deleteStaticData() noexcept;
}  // namespace TW2
