#pragma once

#include <tw2/export.h>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// The two colours of a scene's surroundings, each as 0xAARRGGBB.
struct EnvironmentChunk
{
    unsigned int firstColor = sm_uBlack;
    unsigned int secondColor = sm_uBlack;

    /// Restores the defaults.
    void reset() noexcept { *this = {}; }

    friend bool operator==(const EnvironmentChunk&, const EnvironmentChunk&) = default;

    /// Opaque black.
    static constexpr unsigned int sm_uBlack = 0xFF000000u;
};

TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, EnvironmentChunk& environment);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const EnvironmentChunk& environment);
}  // namespace TW2
