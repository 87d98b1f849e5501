#include <tw2/io/chunk_id.h>
#include <tw2/io/environment_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
// Where the components, in the file's order red, green, blue, alpha, stand in a colour value.
constexpr int s_shifts[] = {16, 8, 0, 24};

void readColor(S_MemoryFile& file, unsigned int& color)
{
    unsigned int result = 0;
    for (const int shift : s_shifts)
    {
        unsigned char component = 0;
        file >> component;
        result |= static_cast<unsigned int>(component) << shift;
    }
    color = result;
}

void writeColor(S_MemoryFileWriter& writer, unsigned int color)
{
    for (const int shift : s_shifts)
    {
        writer << static_cast<unsigned char>(color >> shift);
    }
}
}  // namespace

S_MemoryFile& operator>>(S_MemoryFile& file, EnvironmentChunk& environment)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_ENVIRONMENT);
    readColor(chunk.getMemoryFile(), environment.firstColor);
    readColor(chunk.getMemoryFile(), environment.secondColor);
    return file;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const EnvironmentChunk& environment)
{
    const S_MemoryFileWriter::Chunk chunk(writer, CHUNK_ENVIRONMENT, 0);
    writeColor(writer, environment.firstColor);
    writeColor(writer, environment.secondColor);
    return writer;
}
}  // namespace TW2
