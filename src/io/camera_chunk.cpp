#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>

#include <platform/runtime/memory_file_writer.h>

#include <io/nested_chunk.h>

namespace TW2
{
void CameraChunk::reset() noexcept
{
    NodeChunk::reset();
    value0 = value1 = value2 = 0.0f;
}

S_MemoryFile& operator>>(S_MemoryFile& file, CameraChunk& camera)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_CAMERA);
    readNested<NodeChunk>(chunk, camera);
    chunk.getMemoryFile() >> camera.value0 >> camera.value1 >> camera.value2;
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const CameraChunk& camera)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_CAMERA, 0);
    writer << static_cast<const NodeChunk&>(camera);
    return writer << camera.value0 << camera.value1 << camera.value2;
}
}  // namespace TW2
