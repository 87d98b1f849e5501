#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

namespace TW2
{
/// A helper of a scene: a named place with a text for the host.
struct HelperChunk : NodeChunk
{
    S_String helperString;  ///< what the exporter wrote for the host; the library does not read it

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const HelperChunk&, const HelperChunk&) = default;
};

/// Reads the chunk at the file's position into a record that is new or reset. Throws S_MemoryFileException.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, HelperChunk& helper);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const HelperChunk& helper);
}  // namespace TW2
