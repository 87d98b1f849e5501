#include "io/chunk_values.h"

#include <tw2/io/chunk_id.h>
#include <tw2/light/light_animation_chunks.h>

namespace TW2
{
namespace
{
/// What each version of the chunks added.
enum Version : unsigned int
{
    VERSION_LOOP_TO_FRAME = 1,
    VERSION_FRAME_COUNT = 2  ///< holds the number of frames; before, it was the number of the last frame
};
constexpr unsigned int newestVersion = VERSION_FRAME_COUNT;

// Keys are read and written as blocks: in memory they are what they are in the file.
static_assert(sizeof(ColorKey) == sizeof(unsigned int) + sizeof(G_FColor));
static_assert(sizeof(FloatKey) == sizeof(unsigned int) + sizeof(float));

constexpr auto describe = [](auto& chunk, auto& record)
{
    chunk.record(record.header);
    chunk.values(record.totalFrameCount, record.loopInterpolation);
    chunk.block(record.colorKeys);
    chunk.block(record.brightnessKeys);
    if constexpr (requires { record.hotSpotKeys; })
    {
        chunk.block(record.hotSpotKeys);
        chunk.block(record.fallOffKeys);
    }
    if constexpr (requires { record.hotSpotAngleKeys; })
    {
        chunk.block(record.hotSpotAngleKeys);
        chunk.block(record.fallOffAngleKeys);
    }
    if (chunk.has(VERSION_LOOP_TO_FRAME))
    {
        chunk.values(record.loopToFrame);
    }
};

constexpr auto describeAnyVersion = [](ChunkReader& chunk, auto& record)
{
    describe(chunk, record);
    if (!chunk.has(VERSION_FRAME_COUNT))
    {
        record.totalFrameCount = static_cast<int>(static_cast<unsigned int>(record.totalFrameCount) + 1U);
    }
};
}  // namespace

S_MemoryFile& operator>>(S_MemoryFile& file, PointLightAnimationChunk& chunk)
{
    return readRecord(file, CHUNK_POINT_LIGHT_ANIMATION, chunk, describeAnyVersion);
}

S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightAnimationChunk& chunk)
{
    return readRecord(file, CHUNK_DIRECTIONAL_LIGHT_ANIMATION, chunk, describeAnyVersion);
}

S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightAnimationChunk& chunk)
{
    return readRecord(file, CHUNK_SPOT_LIGHT_ANIMATION, chunk, describeAnyVersion);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightAnimationChunk& chunk)
{
    return writeRecord(writer, CHUNK_POINT_LIGHT_ANIMATION, newestVersion, chunk, describe);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightAnimationChunk& chunk)
{
    return writeRecord(writer, CHUNK_DIRECTIONAL_LIGHT_ANIMATION, newestVersion, chunk, describe);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightAnimationChunk& chunk)
{
    return writeRecord(writer, CHUNK_SPOT_LIGHT_ANIMATION, newestVersion, chunk, describe);
}
}  // namespace TW2
