#include "tools/animation_files.h"

#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/memory_file.h>

namespace tools
{
AnimationFileFacts readAnimationFile(const std::string& file)
{
    S_MemoryFile content(file, S_MemoryFile::accessRead);
    AnimationFileFacts facts;
    facts.bytes = content.getFileSize();
    TW2::KeyframeAnimationChunk record;
    S_MemoryFile::Chunk chunk;
    for (content.peekChunk(chunk); chunk.isValid(); content.peekChunk(chunk))
    {
        if (chunk.getID() == TW2::CHUNK_KEYFRAME_ANIMATION)
        {
            record.clear();
            content >> record;
            ++facts.tracks;
            facts.transformKeys += record.keys.size();
            facts.visibilityKeys += record.visibilityKeys.size();
            facts.looping |= record.header.looping;
        }
        content.skipChunk();
    }
    return facts;
}
}  // namespace tools
