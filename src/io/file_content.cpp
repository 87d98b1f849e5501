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
    bool found[std::size(contentsByChunk)] = {};
    S_MemoryFile file(fileName.c_str(), S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    for (file.peekChunk(chunk); chunk.isValid(); file.peekChunk(chunk))
    {
        if (chunk.getID() == expected)
        {
            return {};
        }
        for (std::size_t i = 0; i < std::size(contentsByChunk); ++i)
        {
            found[i] = found[i] || chunk.getID() == contentsByChunk[i].first;
        }
        file.skipChunk();
    }
    for (std::size_t i = 0; i < std::size(contentsByChunk); ++i)
    {
        if (found[i])
        {
            return contentsByChunk[i].second;
        }
    }
    return {};
}
}  // namespace TW2
