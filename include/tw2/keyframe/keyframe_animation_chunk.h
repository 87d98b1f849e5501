#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/animation_header.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

namespace TW2
{
/// Transform of an object at one frame.
struct MatrixKey
{
    unsigned int frame = 0;             ///< 0 to 32767; the tracks keep the low 16 bits
    M_Matrix4x3Template<float> matrix;  ///< relative to the object's parent

    friend bool operator==(const MatrixKey&, const MatrixKey&) = default;
};

/// Visibility of an object at one frame; it shows while the interpolated value is above 0.
struct VisibilityKey
{
    unsigned int frame = 0;   ///< 0 to 32767; the tracks keep the low 16 bits
    float visibility = 0.0F;  ///< above 0: shown

    friend bool operator==(const VisibilityKey&, const VisibilityKey&) = default;
};

/// Motion of one scene object as it stands in an animation file.
///
/// Keys are in ascending order of their frames. Only the frames at which the motion bends need a key; everything
/// between two keys is their linear blend.
struct KeyframeAnimationChunk
{
    AnimationHeader header;            ///< name of the object that moves, frames per second, looping
    S_Vector<MatrixKey> keys;          ///< in rising order of their frames
    unsigned int totalFrameCount = 0;  ///< the animation has the frames 0 to totalFrameCount - 1
    unsigned int loopToFrame = 0;      ///< where a looping animation continues after its last frame
    bool loopInterpolation = false;    ///< a looping animation moves from its last key to its loop-to key in one frame
    S_String objectName;               ///< second name of the object; kept, not used for playback
    S_Vector<VisibilityKey> visibilityKeys;  ///< in rising order of their frames; none: always shown
    int interpolationMode = 0;               ///< an InterpolationMode; other values count as Linear
    bool keepScale = false;                  ///< the lengths of the keys' basis rows are put back after interpolation

    /// Restores the defaults; keeps the memory of names and lists for the next chunk.
    TW2_API void clear() noexcept;
    /// The same, under the name that all records share.
    void reset() noexcept { clear(); }

    friend bool operator==(const KeyframeAnimationChunk&, const KeyframeAnimationChunk&) = default;
};

/// Reads the keyframe animation chunk at the current position, of any version. Fields that the chunk's version lacks
/// keep their values, so clear the record first. Throws S_MemoryFileException on a damaged file; the record is then
/// partly filled.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, KeyframeAnimationChunk& chunk);
/// Writes the record as a chunk of the newest version.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const KeyframeAnimationChunk& chunk);
}  // namespace TW2
