#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
/// What each version of the chunk added.
enum Version : unsigned int
{
    VERSION_VISIBILITY = 1,
    VERSION_LOOP_TO_FRAME = 2,
    VERSION_INTERPOLATION_MODE = 3,
    VERSION_KEEP_SCALE = 4,
    VERSION_FRAME_COUNT = 5  ///< holds the number of frames; before, it was the number of the last frame
};
constexpr unsigned int newestVersion = VERSION_FRAME_COUNT;

// Keys are read and written as blocks: in memory they are what they are in the file.
static_assert(sizeof(MatrixKey) == sizeof(unsigned int) + sizeof(M_Matrix4x3Template<float>));
static_assert(sizeof(VisibilityKey) == sizeof(unsigned int) + sizeof(float));
}  // namespace

void KeyframeAnimationChunk::clear() noexcept
{
    header.reset();
    keys.clear();
    totalFrameCount = 0;
    loopToFrame = 0;
    loopInterpolation = false;
    objectName.clear();
    visibilityKeys.clear();
    interpolationMode = 0;
    keepScale = false;
}

S_MemoryFile& operator>>(S_MemoryFile& file, KeyframeAnimationChunk& record)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_KEYFRAME_ANIMATION);
    const unsigned int version = chunk.getVersion();
    S_MemoryFile& body = chunk.getMemoryFile();

    body >> record.header;
    chunk.skipChunk();
    body >> record.objectName >> record.loopInterpolation >> record.totalFrameCount;

    body.readBlock(record.keys, body.readUnsignedCount(sizeof(MatrixKey)));
    if (version >= VERSION_VISIBILITY)
    {
        body.readBlock(record.visibilityKeys, body.readUnsignedCount(sizeof(VisibilityKey)));
    }
    if (version >= VERSION_LOOP_TO_FRAME)
    {
        body >> record.loopToFrame;
    }
    if (version >= VERSION_INTERPOLATION_MODE)
    {
        body >> record.interpolationMode;
    }
    if (version >= VERSION_KEEP_SCALE)
    {
        body >> record.keepScale;
    }
    if (version < VERSION_FRAME_COUNT)
    {
        ++record.totalFrameCount;
    }
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const KeyframeAnimationChunk& record)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_KEYFRAME_ANIMATION, newestVersion);
    writer << record.header << record.objectName << record.loopInterpolation << record.totalFrameCount;
    writer.writeCount(record.keys.size());
    writer.writeBlock(record.keys);
    writer.writeCount(record.visibilityKeys.size());
    writer.writeBlock(record.visibilityKeys);
    return writer << record.loopToFrame << record.interpolationMode << record.keepScale;
}
}  // namespace TW2
