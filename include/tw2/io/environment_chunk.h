#pragma once

#include <tw2/export.h>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// The two colours of a scene's surroundings, each as 0xAARRGGBB.
struct EnvironmentChunk
{
    unsigned int firstColor = black;   ///< 0xAARRGGBB; what it colours is the host's affair
    unsigned int secondColor = black;  ///< the same

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const EnvironmentChunk&, const EnvironmentChunk&) = default;

    /// Opaque black.
    static constexpr unsigned int black = 0xFF000000U;
};

/// Reads the chunk at the file's position into a record that is new or reset. Throws S_MemoryFileException.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, EnvironmentChunk& environment);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const EnvironmentChunk& environment);
}  // namespace TW2
