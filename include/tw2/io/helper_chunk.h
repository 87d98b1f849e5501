#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

namespace TW2
{
/// A helper of a scene: a named place with a text for the host.
struct HelperChunk : NodeChunk
{
    S_String helperString;

    /// Restores the defaults.
    TW2_API void reset() noexcept;

    friend bool operator==(const HelperChunk&, const HelperChunk&) = default;
};

TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, HelperChunk& helper);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const HelperChunk& helper);
}  // namespace TW2
