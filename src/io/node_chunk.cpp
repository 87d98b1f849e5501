#include <tw2/io/chunk_id.h>
#include <tw2/io/node_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
constexpr unsigned int s_versionExtraString = 1;
}  // namespace

void NodeChunk::reset() noexcept
{
    name.clear();
    transform = {};
    parentName.clear();
    hasParent = false;
    extraString.clear();
}

S_MemoryFile& operator>>(S_MemoryFile& file, NodeChunk& node)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_NODE);
    S_MemoryFile& body = chunk.getMemoryFile();
    body >> node.name >> node.parentName >> node.transform >> node.hasParent;
    if (chunk.getVersion() >= s_versionExtraString)
    {
        body >> node.extraString;
    }
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const NodeChunk& node)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_NODE, s_versionExtraString);
    return writer << node.name << node.parentName << node.transform << node.hasParent << node.extraString;
}
}  // namespace TW2
