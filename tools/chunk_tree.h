#pragma once

#include "tools/chunk_content.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tools
{
/// A chunk as it stands in a file, with what is known about it.
struct TreeChunk
{
    unsigned int id = 0;
    unsigned int version = 0;
    unsigned int size = 0;   ///< of the body
    std::size_t offset = 0;  ///< of the header
    std::vector<Fact> facts;
    std::vector<TreeChunk> chunks;  ///< nested ones
    std::string error;              ///< what is wrong with the chunk itself; empty when nothing is
};

/// The chunks of a file.
struct ChunkTree
{
    std::string file;
    std::size_t size = 0;
    std::vector<TreeChunk> chunks;
    std::string error;       ///< what is wrong at top level; empty when nothing is
    std::string firstError;  ///< the first thing that is wrong anywhere
};

/// Reads all that is readable of a file, with nested chunks and contents when asked for. Damage is noted in the tree;
/// a file that cannot be opened throws.
ChunkTree readChunkTree(const std::string& fileName, bool withContents);
}  // namespace tools
