#include <tw2/io/chunk_id.h>
#include <tw2/io/helper_chunk.h>

#include <platform/runtime/memory_file_writer.h>

#include <io/nested_chunk.h>

namespace TW2
{
void HelperChunk::reset() noexcept
{
    NodeChunk::reset();
    helperString.clear();
}

S_MemoryFile& operator>>(S_MemoryFile& file, HelperChunk& helper)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_HELPER);
    readNested<NodeChunk>(chunk, helper);
    chunk.getMemoryFile() >> helper.helperString;
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const HelperChunk& helper)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_HELPER, 0);
    writer << static_cast<const NodeChunk&>(helper);
    return writer << helper.helperString;
}
}  // namespace TW2
