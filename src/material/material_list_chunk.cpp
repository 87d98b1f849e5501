#include <tw2/io/chunk_id.h>
#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
constexpr unsigned int newestVersion = 0;
}

void MaterialListChunk::reset() noexcept
{
    texturePath.clear();
    materials.clear();
}

S_MemoryFile& operator>>(S_MemoryFile& file, MaterialListChunk& list)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MATERIAL_LIST);
    S_MemoryFile& body = chunk.getMemoryFile();
    body >> list.texturePath;
    list.materials.resize(body.readCount(S_MemoryFile::sm_headerSize));
    for (TWMaterialChunk& material : list.materials)
    {
        material.reset();
        body >> material;
        chunk.skipChunk();
    }
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MaterialListChunk& list)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_MATERIAL_LIST, newestVersion);
    writer << list.texturePath;
    writer.writeCount(list.materials.size());
    for (const TWMaterialChunk& material : list.materials)
    {
        writer << material;
    }
    return writer;
}
}  // namespace TW2
