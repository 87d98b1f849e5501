#pragma once

#include <tw2/export.h>
#include <tw2/keyframe/animation_header.h>

#include <platform/image/fcolor.h>
#include <platform/runtime/allocator.h>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// A colour at a frame.
struct ColorKey
{
    unsigned int frame = 0;  ///< 0 to 32767; the tracks keep the low 16 bits
    G_FColor color;          ///< components 0 to 255

    friend bool operator==(const ColorKey&, const ColorKey&) = default;
};

/// A number at a frame.
struct FloatKey
{
    unsigned int frame = 0;  ///< 0 to 32767; the tracks keep the low 16 bits
    float value = 0.0F;      ///< in the unit of its track

    friend bool operator==(const FloatKey&, const FloatKey&) = default;
};

/// Animation of a point light as files store it: the light's name, frame rate and looping, and a key list per quantity.
///
/// Keys stand in rising order of their frames. A list may be empty: the quantity is then not animated.
struct PointLightAnimationChunk
{
    AnimationHeader header;             ///< name of the light, frames per second, looping
    unsigned int loopToFrame = 0;       ///< frame at which a looping animation continues after its last one
    int totalFrameCount = 0;            ///< frames 0 to totalFrameCount - 1
    bool loopInterpolation = false;     ///< a looping animation has an extra frame from the last key to the loop-to key
    S_Vector<ColorKey> colorKeys;       ///< components 0 to 255
    S_Vector<FloatKey> brightnessKeys;  ///< factor of the colour
    S_Vector<FloatKey> hotSpotKeys;     ///< distance of full strength
    S_Vector<FloatKey> fallOffKeys;     ///< distance at which the light has faded to nothing

    /// Back to the defaults.
    void reset() { *this = {}; }
    friend bool operator==(const PointLightAnimationChunk&, const PointLightAnimationChunk&) = default;
};

/// Animation of a directional light: like that of a point light without the ranges.
struct DirectionalLightAnimationChunk
{
    AnimationHeader header;             ///< name of the light, frames per second, looping
    unsigned int loopToFrame = 0;       ///< frame at which a looping animation continues after its last one
    int totalFrameCount = 0;            ///< frames 0 to totalFrameCount - 1
    bool loopInterpolation = false;     ///< a looping animation has an extra frame from the last key to the loop-to key
    S_Vector<ColorKey> colorKeys;       ///< components 0 to 255
    S_Vector<FloatKey> brightnessKeys;  ///< factor of the colour

    /// Back to the defaults.
    void reset() { *this = {}; }
    friend bool operator==(const DirectionalLightAnimationChunk&, const DirectionalLightAnimationChunk&) = default;
};

/// Animation of a spot light: like that of a point light, with the angles of its cones in degrees.
struct SpotLightAnimationChunk
{
    AnimationHeader header;             ///< name of the light, frames per second, looping
    unsigned int loopToFrame = 0;       ///< frame at which a looping animation continues after its last one
    int totalFrameCount = 0;            ///< frames 0 to totalFrameCount - 1
    bool loopInterpolation = false;     ///< a looping animation has an extra frame from the last key to the loop-to key
    S_Vector<ColorKey> colorKeys;       ///< components 0 to 255
    S_Vector<FloatKey> brightnessKeys;  ///< factor of the colour
    S_Vector<FloatKey> hotSpotKeys;     ///< distance of full strength
    S_Vector<FloatKey> fallOffKeys;     ///< distance at which the light has faded to nothing
    S_Vector<FloatKey> hotSpotAngleKeys;  ///< cone of full strength
    S_Vector<FloatKey> fallOffAngleKeys;  ///< cone outside of which there is no light

    /// Back to the defaults.
    void reset() { *this = {}; }
    friend bool operator==(const SpotLightAnimationChunk&, const SpotLightAnimationChunk&) = default;
};

/// @name Readers
/// Each fills a fresh record from the chunk at the file's position and throws what S_MemoryFile throws; the record is
/// partly filled then. Fields that the chunk's version lacks stay as they were.
/// @{

/// Reads the chunk at the file's position. Throws S_MemoryFileException.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, PointLightAnimationChunk& chunk);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightAnimationChunk& chunk);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightAnimationChunk& chunk);
/// @}

/// @name Writers, in the newest version
/// @{

/// Writes a chunk. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightAnimationChunk& chunk);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightAnimationChunk& chunk);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightAnimationChunk& chunk);
/// @}
}  // namespace TW2
