#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/animation_header.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
constexpr unsigned int newestVersion = 0;
}

S_MemoryFile& operator>>(S_MemoryFile& file, AnimationHeader& header)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_ANIMATION_HEADER);
    return chunk.getMemoryFile() >> header.targetName >> header.frameRate >> header.looping;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const AnimationHeader& header)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_ANIMATION_HEADER, newestVersion);
    return writer << header.targetName << header.frameRate << header.looping;
}
}  // namespace TW2
