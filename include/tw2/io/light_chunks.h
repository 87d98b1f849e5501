#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

#include <platform/image/fcolor.h>

namespace TW2
{
/// A light that shines from a point in all directions. Colours on the scale 0 to 255, ranges in scene units.
struct PointLightChunk : NodeChunk
{
    G_FColor color;           ///< components 0 to 255
    float brightness = 0.0F;  ///< factor of the colour
    float hotSpot = 0.0F;     ///< distance up to which the light is at full strength
    float fallOff = 0.0F;     ///< distance at which it has faded out

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const PointLightChunk&, const PointLightChunk&) = default;
};

/// A light that shines in one direction everywhere.
struct DirectionalLightChunk : NodeChunk
{
    G_FColor color;           ///< components 0 to 255
    float brightness = 0.0F;  ///< factor of the colour

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const DirectionalLightChunk&, const DirectionalLightChunk&) = default;
};

/// A light that shines as a cone. Angles are kept as the exporter wrote them.
struct SpotLightChunk : NodeChunk
{
    G_FColor color;             ///< components 0 to 255
    float brightness = 0.0F;    ///< factor of the colour
    float hotSpot = 0.0F;       ///< distance up to which the light is at full strength
    float fallOff = 0.0F;       ///< distance at which it has faded out
    float hotSpotAngle = 0.0F;  ///< opening of the inner cone, at full strength
    float fallOffAngle = 0.0F;  ///< opening of the outer cone, where it has faded out

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const SpotLightChunk&, const SpotLightChunk&) = default;
};

/// Reads the chunk at the file's position into a record that is new or reset. Throws S_MemoryFileException.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, PointLightChunk& light);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightChunk& light);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightChunk& light);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightChunk& light);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightChunk& light);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightChunk& light);
}  // namespace TW2
