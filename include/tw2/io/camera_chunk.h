#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

namespace TW2
{
/// A camera of a scene. What the three values mean is between the exporter and the host's camera callback.
struct CameraChunk : NodeChunk
{
    float value0 = 0.0f;
    float value1 = 0.0f;
    float value2 = 0.0f;

    /// Restores the defaults.
    TW2_API void reset() noexcept;

    friend bool operator==(const CameraChunk&, const CameraChunk&) = default;
};

TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, CameraChunk& camera);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const CameraChunk& camera);
}  // namespace TW2
