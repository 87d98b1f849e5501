#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>

#include <cstddef>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// One texture slot of a material: the files of its frames, how they are sampled and how they are played.
///
/// The values from `reservedFlag` on only stand in a file when the slot has more than one frame; a still texture keeps
/// their defaults.
struct TW2_API MaterialTextureChunk
{
    /// How the frames follow one another.
    enum Playback : int
    {
        PLAYBACK_LOOP = 0,
        PLAYBACK_PING_PONG = 1,  ///< forward, then backward, looping
        PLAYBACK_ONCE = 2        ///< stays at the last frame
    };

    S_String name;                  ///< name of the texture and of its animation set; not a file name
    S_Vector<S_String> frameFiles;  ///< file name of each frame; at least one is expected
    int mipLevels = 0;              ///< 0: the engine's default; 1: a single level
    int filter = 0;                 ///< filter selector, 0 to 4
    bool reservedFlag = false;      ///< kept, without effect
    bool randomStart = false;       ///< starts at a random frame
    int startFrame = 0;             ///< frames by which the animation is advanced
    int framesPerSecond = 0;        ///< of an animated texture
    int playback = PLAYBACK_ONCE;   ///< a Playback value

    /// @name Getters
    /// @{

    /// The texture's name; files are not found by it.
    [[nodiscard]] const S_String& getName() const noexcept { return name; }
    /// 1 for a still texture, more for an animated one.
    [[nodiscard]] std::size_t getFrameFileCount() const noexcept { return frameFiles.size(); }
    /// `index` is below the count.
    [[nodiscard]] const S_String& getFrameFile(std::size_t index) const noexcept { return frameFiles[index]; }
    /// The files in the order in which they are shown, without directories.
    [[nodiscard]] const S_Vector<S_String>& getFrameFiles() const noexcept { return frameFiles; }
    /// 0: as many as the engine makes by itself.
    [[nodiscard]] int getMipLevels() const noexcept { return mipLevels; }
    /// Filter selector, 0 to 4.
    [[nodiscard]] int getFilter() const noexcept { return filter; }
    /// Kept and compared, without effect.
    [[nodiscard]] bool getReservedFlag() const noexcept { return reservedFlag; }
    /// Starts at a random frame.
    [[nodiscard]] bool getRandomStart() const noexcept { return randomStart; }
    /// Frames by which the animation is advanced.
    [[nodiscard]] int getStartFrame() const noexcept { return startFrame; }
    /// Of an animated texture.
    [[nodiscard]] int getFramesPerSecond() const noexcept { return framesPerSecond; }
    /// A Playback value.
    [[nodiscard]] int getPlayback() const noexcept { return playback; }
    /// @}

    /// Every field back to its default.
    void reset() noexcept;

    friend bool operator==(const MaterialTextureChunk&, const MaterialTextureChunk&) = default;
};

/// Reads a texture chunk; a still texture's playing values are left as they are.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MaterialTextureChunk& texture);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MaterialTextureChunk& texture);
}  // namespace TW2
