#include "tools/chunk_tree.h"

#include <tw2/io/chunk_id.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace tools
{
namespace
{
using namespace TW2;

/// From these versions on a part of a mesh has no polygons, and a material has a fifth texture.
constexpr unsigned int versionWithoutPolygons = 1;
constexpr unsigned int versionGlossTexture = 1;

/// Levels below the top: faces and their polygons, materials and their textures.
constexpr int deepestNesting = 3;

/// Walks a file chunk by chunk. A second file over the same bytes serves the library's readers, so that damage in one
/// chunk leaves the walk where it is.
class Walker
{
public:
    Walker(const std::string& fileName, ChunkTree& tree, bool withContents)
        : m_file(fileName, S_MemoryFile::accessRead), m_tree(tree), m_bWithContents(withContents)
    {
        if (withContents)
        {
            m_contents.construct(fileName, S_MemoryFile::accessRead);
        }
    }

    void walk()
    {
        m_tree.size = m_file.getFileSize();
        guard(m_tree.error,
              [this]
              {
                  S_MemoryFile::Chunk chunk;
                  for (m_file.peekChunk(chunk); chunk.isValid(); m_file.peekChunk(chunk))
                  {
                      visit(chunk, m_tree.chunks);
                      m_file.skipChunk();
                  }
              });
    }

private:
    /// Runs `action`; what is wrong with the file is noted in `error` and, when it is the first, for the whole tree.
    template <typename Action>
    void guard(std::string& error, Action&& action)
    {
        try
        {
            action();
            return;
        }
        catch (const S_MemoryException_Allocation&)
        {
            throw;
        }
        catch (const S_Exception& exception)
        {
            error = exception.getErrorMessage();
        }
        catch (const std::length_error& exception)
        {
            error = exception.what();
        }
        if (m_tree.firstError.empty())
        {
            m_tree.firstError = error;
        }
    }

    /// Adds the chunk that was peeked at the current position, and what is in it.
    void visit(const S_MemoryFile::Chunk& peeked, std::vector<TreeChunk>& siblings)
    {
        TreeChunk& entry = siblings.emplace_back();
        entry.id = peeked.getID();
        entry.version = peeked.getVersion();
        entry.size = peeked.getSize();
        entry.offset = m_file.getPosition();
        if (!m_bWithContents)
        {
            return;
        }
        // Chunks that nest deeper than any kind does are not what they say they are.
        if (m_iDepth < deepestNesting)
        {
            ++m_iDepth;
            guard(entry.error, [&] { visitNested(entry); });
            --m_iDepth;
        }
        std::string error;
        guard(error, [&] { readContent(entry); });
        // Damage inside a nested chunk is told there; that the whole cannot be read either goes without saying.
        if (entry.error.empty() && !isDamaged(entry.chunks))
        {
            entry.error = error;
        }
    }

    static bool isDamaged(const std::vector<TreeChunk>& chunks)
    {
        return std::any_of(chunks.begin(), chunks.end(),
                           [](const TreeChunk& chunk) { return !chunk.error.empty() || isDamaged(chunk.chunks); });
    }

    void readContent(TreeChunk& entry)
    {
        if (entry.offset <= static_cast<std::size_t>(std::numeric_limits<int>::max()))  // what a seek reaches
        {
            m_contents.seek(static_cast<int>(entry.offset), S_MemoryFile::seekBegin);
            entry.facts = readFacts(m_contents, entry.id);
        }
    }

    void visitNested(TreeChunk& entry)
    {
        S_MemoryFile::Chunk chunk;
        m_file.openChunk(chunk, entry.id);
        switch (entry.id)
        {
            case CHUNK_MESH:
                visitAll(chunk, entry);
                break;
            case CHUNK_CAMERA:
            case CHUNK_POINT_LIGHT:
            case CHUNK_DIRECTIONAL_LIGHT:
            case CHUNK_SPOT_LIGHT:
            case CHUNK_HELPER:
            case CHUNK_KEYFRAME_ANIMATION:
            case CHUNK_POINT_LIGHT_ANIMATION:
            case CHUNK_DIRECTIONAL_LIGHT_ANIMATION:
            case CHUNK_SPOT_LIGHT_ANIMATION:
                visitNext(chunk, entry);
                break;
            case CHUNK_TEXTURE_CHANNEL:
                visitPolygons(chunk, entry, 1);
                break;
            case CHUNK_MESH_FACES:
                visitPolygons(chunk, entry, 0);
                break;
            case CHUNK_MATERIAL_LIST:
                skip<S_String>(1);
                visitCounted(chunk, entry);
                break;
            case CHUNK_MATERIAL:
                visitTextures(chunk, entry);
                break;
            default:
                break;
        }
    }

    /// Visits the nested chunk at the current position and moves behind it; false at the end of `chunk`.
    bool visitNext(S_MemoryFile::Chunk& chunk, TreeChunk& entry)
    {
        S_MemoryFile::Chunk nested;
        chunk.peekChunk(nested);
        if (!nested.isValid())
        {
            return false;
        }
        visit(nested, entry.chunks);
        chunk.skipChunk();
        return true;
    }

    void visitAll(S_MemoryFile::Chunk& chunk, TreeChunk& entry)
    {
        while (visitNext(chunk, entry))
        {
        }
    }

    void visitCounted(S_MemoryFile::Chunk& chunk, TreeChunk& entry)
    {
        for (std::size_t left = m_file.readCount(S_MemoryFile::headerSize); left > 0 && visitNext(chunk, entry); --left)
        {
        }
    }

    void visitPolygons(S_MemoryFile::Chunk& chunk, TreeChunk& entry, int intsBefore)
    {
        if (entry.version < versionWithoutPolygons)
        {
            skip<int>(intsBefore);
            visitCounted(chunk, entry);
        }
    }

    void visitTextures(S_MemoryFile::Chunk& chunk, TreeChunk& entry)
    {
        skip<S_String>(1);
        skip<bool>(5);
        skip<int>(3);
        skip<float>(12 + 2);
        skip<int>(2);
        skip<float>(1);
        const int slots = entry.version < versionGlossTexture ? 4 : 5;
        for (int slot = 0; slot < slots; ++slot)
        {
            bool isPresent = false;
            m_file >> isPresent;
            if (isPresent)
            {
                visitNext(chunk, entry);
            }
        }
    }

    template <typename T>
    void skip(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            T value;
            m_file >> value;
        }
    }

    S_MemoryFile m_file;
    S_MemoryFile m_contents;
    ChunkTree& m_tree;
    const bool m_bWithContents;
    int m_iDepth = 0;
};
}  // namespace

ChunkTree readChunkTree(const std::string& fileName, bool withContents)
{
    ChunkTree tree;
    tree.file = fileName;
    Walker(fileName, tree, withContents).walk();
    return tree;
}
}  // namespace tools
