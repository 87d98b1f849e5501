#include <tw2/io/chunk_id.h>
#include <tw2/light/light_animation_chunks.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

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

/// Calls `visit` with the key lists that the kind of light has, in the order in which files store them.
template <typename Chunk, typename Visit>
void forEachKeyList(Chunk& chunk, const Visit& visit)
{
    visit(chunk.colorKeys);
    visit(chunk.brightnessKeys);
    if constexpr (requires { chunk.hotSpotKeys; })
    {
        visit(chunk.hotSpotKeys);
        visit(chunk.fallOffKeys);
    }
    if constexpr (requires { chunk.hotSpotAngleKeys; })
    {
        visit(chunk.hotSpotAngleKeys);
        visit(chunk.fallOffAngleKeys);
    }
}

template <typename Record>
S_MemoryFile& readChunk(S_MemoryFile& file, Record& record, ChunkId id)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, id);
    const unsigned int version = chunk.getVersion();
    S_MemoryFile& body = chunk.getMemoryFile();

    body >> record.header;
    chunk.skipChunk();
    body >> record.totalFrameCount >> record.loopInterpolation;
    forEachKeyList(record,
                   [&body]<typename Key>(S_Vector<Key>& keys) { body.readBlock(keys, body.readCount(sizeof(Key))); });
    if (version >= VERSION_LOOP_TO_FRAME)
    {
        body >> record.loopToFrame;
    }
    if (version < VERSION_FRAME_COUNT)
    {
        record.totalFrameCount = static_cast<int>(static_cast<unsigned int>(record.totalFrameCount) + 1u);
    }
    return file;
}

template <typename Record>
S_MemoryFileWriter& writeChunk(S_MemoryFileWriter& writer, const Record& record, ChunkId id)
{
    const S_MemoryFileWriter::Chunk chunk(writer, id, newestVersion);
    writer << record.header << record.totalFrameCount << record.loopInterpolation;
    forEachKeyList(record,
                   [&writer](const auto& keys)
                   {
                       writer.writeCount(keys.size());
                       writer.writeBlock(keys);
                   });
    return writer << record.loopToFrame;
}
}  // namespace

void PointLightAnimationChunk::reset()
{
    *this = PointLightAnimationChunk();
}

void DirectionalLightAnimationChunk::reset()
{
    *this = DirectionalLightAnimationChunk();
}

void SpotLightAnimationChunk::reset()
{
    *this = SpotLightAnimationChunk();
}

S_MemoryFile& operator>>(S_MemoryFile& file, PointLightAnimationChunk& chunk)
{
    return readChunk(file, chunk, CHUNK_POINT_LIGHT_ANIMATION);
}

S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightAnimationChunk& chunk)
{
    return readChunk(file, chunk, CHUNK_DIRECTIONAL_LIGHT_ANIMATION);
}

S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightAnimationChunk& chunk)
{
    return readChunk(file, chunk, CHUNK_SPOT_LIGHT_ANIMATION);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightAnimationChunk& chunk)
{
    return writeChunk(writer, chunk, CHUNK_POINT_LIGHT_ANIMATION);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightAnimationChunk& chunk)
{
    return writeChunk(writer, chunk, CHUNK_DIRECTIONAL_LIGHT_ANIMATION);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightAnimationChunk& chunk)
{
    return writeChunk(writer, chunk, CHUNK_SPOT_LIGHT_ANIMATION);
}
}  // namespace TW2
