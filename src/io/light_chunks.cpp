#include <tw2/io/chunk_id.h>
#include <tw2/io/light_chunks.h>

#include <platform/runtime/memory_file_writer.h>

#include <io/nested_chunk.h>

namespace TW2
{
namespace
{
/// The values of each kind that follow node and colour, in the file's order.
template <typename Visitor, typename Light>
void visitValues(Visitor&& visit, Light& light)
{
    visit(light.brightness);
    if constexpr (requires { light.hotSpot; })
    {
        visit(light.hotSpot);
        visit(light.fallOff);
    }
    if constexpr (requires { light.hotSpotAngle; })
    {
        visit(light.hotSpotAngle);
        visit(light.fallOffAngle);
    }
}

template <typename Light>
void resetLight(Light& light) noexcept
{
    light.NodeChunk::reset();
    light.color = {};
    visitValues([](float& value) { value = 0.0f; }, light);
}

template <typename Light>
S_MemoryFile& readLight(S_MemoryFile& file, unsigned int id, Light& light)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, id);
    readNested<NodeChunk>(chunk, light);
    S_MemoryFile& body = chunk.getMemoryFile();
    body >> light.color.red >> light.color.green >> light.color.blue >> light.color.alpha;
    visitValues([&body](float& value) { body >> value; }, light);
    return file;
}

template <typename Light>
S_MemoryFileWriter& writeLight(S_MemoryFileWriter& writer, unsigned int id, const Light& light)
{
    const S_MemoryFileWriter::Chunk chunk(writer, id, 0);
    writer << static_cast<const NodeChunk&>(light);
    writer << light.color.red << light.color.green << light.color.blue << light.color.alpha;
    visitValues([&writer](float value) { writer << value; }, light);
    return writer;
}
}  // namespace

void PointLightChunk::reset() noexcept
{
    resetLight(*this);
}

void DirectionalLightChunk::reset() noexcept
{
    resetLight(*this);
}

void SpotLightChunk::reset() noexcept
{
    resetLight(*this);
}

S_MemoryFile& operator>>(S_MemoryFile& file, PointLightChunk& light)
{
    return readLight(file, CHUNK_POINT_LIGHT, light);
}

S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightChunk& light)
{
    return readLight(file, CHUNK_DIRECTIONAL_LIGHT, light);
}

S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightChunk& light)
{
    return readLight(file, CHUNK_SPOT_LIGHT, light);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightChunk& light)
{
    return writeLight(writer, CHUNK_POINT_LIGHT, light);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightChunk& light)
{
    return writeLight(writer, CHUNK_DIRECTIONAL_LIGHT, light);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightChunk& light)
{
    return writeLight(writer, CHUNK_SPOT_LIGHT, light);
}
}  // namespace TW2
