#include <tw2/io/chunk_id.h>
#include <tw2/material/material_texture_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
constexpr unsigned int newestVersion = 0;
constexpr std::size_t smallestString = 4;  // its length alone
}  // namespace

void MaterialTextureChunk::reset() noexcept
{
    name.clear();
    frameFiles.clear();
    mipLevels = 0;
    filter = 0;
    reservedFlag = false;
    randomStart = false;
    startFrame = 0;
    framesPerSecond = 0;
    playback = PLAYBACK_ONCE;
}

S_MemoryFile& operator>>(S_MemoryFile& file, MaterialTextureChunk& texture)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MATERIAL_TEXTURE);
    S_MemoryFile& body = chunk.getMemoryFile();
    body >> texture.name >> texture.mipLevels >> texture.filter;
    const std::size_t count = body.readCount(smallestString);
    texture.frameFiles.clear();
    texture.frameFiles.resize(count);
    for (S_String& frameFile : texture.frameFiles)
    {
        body >> frameFile;
    }
    if (count > 1)
    {
        body >> texture.reservedFlag >> texture.randomStart >> texture.startFrame >> texture.framesPerSecond >>
            texture.playback;
    }
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MaterialTextureChunk& texture)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MATERIAL_TEXTURE, newestVersion);
    writer << texture.name << texture.mipLevels << texture.filter;
    writer.writeCount(texture.frameFiles.size());
    for (const S_String& frameFile : texture.frameFiles)
    {
        writer << frameFile;
    }
    if (texture.frameFiles.size() > 1)
    {
        writer << texture.reservedFlag << texture.randomStart << texture.startFrame << texture.framesPerSecond
               << texture.playback;
    }
    return writer;
}
}  // namespace TW2
