#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

namespace TW2
{
/// A camera of a scene. What the three values mean is between the exporter and the host's camera callback.
struct CameraChunk : NodeChunk
{
    float value0 = 0.0F;  ///< `tw2 convert` writes the horizontal field of view in degrees
    float value1 = 0.0F;  ///< and the distance of the near plane
    float value2 = 0.0F;  ///< and that of the far plane

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const CameraChunk&, const CameraChunk&) = default;
};

/// Reads the chunk at the file's position into a record that is new or reset. Throws S_MemoryFileException.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, CameraChunk& camera);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const CameraChunk& camera);
}  // namespace TW2
