#include "io/file_content.h"

#include <tw2/io/chunk_id.h>

#include <platform/runtime/memory_file.h>

#include <iterator>
#include <utility>

namespace TW2
{
namespace
{
constexpr std::pair<unsigned int, const char*> contentsByChunk[] = {
    {CHUNK_SKIN, "skin data, which the key \"skindata\" names"},
    {CHUNK_MESH, "geometry, which the key \"exportdata\" names"},
    {CHUNK_KEYFRAME_ANIMATION, "an animation, which an \"animation\" block names"}};
}  // namespace

S_String describeMistakenFile(const S_String& fileName, unsigned int expected)
{
    std::size_t found = std::size(contentsByChunk);  // the first kind of the table counts
    S_MemoryFile file(fileName.c_str(), S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    for (file.peekChunk(chunk); chunk.isValid(); file.peekChunk(chunk))
    {
        if (chunk.getID() == expected)
        {
            return {};
        }
        for (std::size_t i = 0; i < found; ++i)
        {
            found = chunk.getID() == contentsByChunk[i].first ? i : found;
        }
        file.skipChunk();
    }
    return found < std::size(contentsByChunk) ? S_String(contentsByChunk[found].second) : S_String();
}
}  // namespace TW2
