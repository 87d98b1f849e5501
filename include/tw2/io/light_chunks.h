#pragma once

#include <tw2/export.h>
#include <tw2/io/node_chunk.h>

#include <platform/image/fcolor.h>

namespace TW2
{
/// A light that shines from a point in all directions. Colours on the scale 0 to 255, ranges in scene units.
struct PointLightChunk : NodeChunk
{
    G_FColor color;
    float brightness = 0.0f;
    float hotSpot = 0.0f;  ///< distance up to which the light is at full strength
    float fallOff = 0.0f;  ///< distance at which it has faded out

    /// Restores the defaults.
    TW2_API void reset() noexcept;

    friend bool operator==(const PointLightChunk&, const PointLightChunk&) = default;
};

/// A light that shines in one direction everywhere.
struct DirectionalLightChunk : NodeChunk
{
    G_FColor color;
    float brightness = 0.0f;

    /// Restores the defaults.
    TW2_API void reset() noexcept;

    friend bool operator==(const DirectionalLightChunk&, const DirectionalLightChunk&) = default;
};

/// A light that shines as a cone. Angles are kept as the exporter wrote them.
struct SpotLightChunk : NodeChunk
{
    G_FColor color;
    float brightness = 0.0f;
    float hotSpot = 0.0f;       ///< distance up to which the light is at full strength
    float fallOff = 0.0f;       ///< distance at which it has faded out
    float hotSpotAngle = 0.0f;  ///< opening of the inner cone, at full strength
    float fallOffAngle = 0.0f;  ///< opening of the outer cone, where it has faded out

    /// Restores the defaults.
    TW2_API void reset() noexcept;

    friend bool operator==(const SpotLightChunk&, const SpotLightChunk&) = default;
};

TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, PointLightChunk& light);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightChunk& light);
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightChunk& light);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightChunk& light);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightChunk& light);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightChunk& light);
}  // namespace TW2
