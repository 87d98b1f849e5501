#include "io/chunk_values.h"

#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/animation_header.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

namespace TW2
{
namespace
{
constexpr auto describeHeader = [](auto& chunk, auto& header)
{ chunk.values(header.targetName, header.frameRate, header.looping); };

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

constexpr auto describe = [](auto& chunk, auto& record)
{
    chunk.record(record.header);
    chunk.values(record.objectName, record.loopInterpolation, record.totalFrameCount);
    chunk.unsignedBlocks(record.keys);
    if (chunk.has(VERSION_VISIBILITY))
    {
        chunk.unsignedBlocks(record.visibilityKeys);
    }
    if (chunk.has(VERSION_LOOP_TO_FRAME))
    {
        chunk.values(record.loopToFrame);
    }
    if (chunk.has(VERSION_INTERPOLATION_MODE))
    {
        chunk.values(record.interpolationMode);
    }
    if (chunk.has(VERSION_KEEP_SCALE))
    {
        chunk.values(record.keepScale);
    }
};
}  // namespace

S_MemoryFile& operator>>(S_MemoryFile& file, AnimationHeader& header)
{
    return readRecord(file, CHUNK_ANIMATION_HEADER, header, describeHeader);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const AnimationHeader& header)
{
    return writeRecord(writer, CHUNK_ANIMATION_HEADER, 0, header, describeHeader);
}

void KeyframeAnimationChunk::clear() noexcept
{
    header.reset();
    clearAll(keys, objectName, visibilityKeys);
    totalFrameCount = loopToFrame = 0;
    loopInterpolation = keepScale = false;
    interpolationMode = 0;
}

S_MemoryFile& operator>>(S_MemoryFile& file, KeyframeAnimationChunk& record)
{
    return readRecord(file, CHUNK_KEYFRAME_ANIMATION, record,
                      [](ChunkReader& chunk, KeyframeAnimationChunk& read)
                      {
                          describe(chunk, read);
                          read.totalFrameCount += chunk.has(VERSION_FRAME_COUNT) ? 0 : 1;
                      });
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const KeyframeAnimationChunk& record)
{
    return writeRecord(writer, CHUNK_KEYFRAME_ANIMATION, newestVersion, record, describe);
}
}  // namespace TW2
