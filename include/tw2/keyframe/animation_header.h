#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// What every animation in a file begins with: whose motion it is, how fast it runs and whether it loops.
struct AnimationHeader
{
    S_String targetName;   ///< name of the scene object that the animation moves
    int frameRate = 0;     ///< frames per second
    bool looping = false;  ///< the animation loops

    /// Restores the defaults; keeps the name's memory.
    void reset() noexcept
    {
        targetName.clear();
        frameRate = 0;
        looping = false;
    }
    friend bool operator==(const AnimationHeader&, const AnimationHeader&) = default;
};

/// Reads the header chunk that stands at the current position inside an animation chunk.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, AnimationHeader& header);
/// Writes it as a chunk; call it first inside the animation's chunk.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const AnimationHeader& header);
}  // namespace TW2
