#pragma once

#include <platform/runtime/memory_file.h>

namespace TW2
{
/// Reads a record whose chunk stands at the current position inside `chunk`, and moves behind that chunk: what a newer
/// version of it appends is skipped.
template <typename R>
void readNested(S_MemoryFile::Chunk& chunk, R& record)
{
    chunk.getMemoryFile() >> record;
    chunk.skipChunk();
}
}  // namespace TW2
