#pragma once

#include <tw2/export.h>
#include <tw2/material/material_chunk.h>

#include <platform/runtime/allocator.h>

#include <cstddef>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// The materials of a file, and where their texture files lie.
struct TW2_API MaterialListChunk
{
    S_String texturePath;                 ///< directories separated by ';', as TW_Texture::addTexturePath takes them
    S_Vector<TWMaterialChunk> materials;  ///< in file order

    /// Materials of the list, equal names counted as often as they stand there.
    [[nodiscard]] std::size_t getMaterialCount() const noexcept { return materials.size(); }

    /// No path, no materials.
    void reset() noexcept;

    /// Compares the materials as they compare among themselves: without names, colours and texture files.
    friend bool operator==(const MaterialListChunk&, const MaterialListChunk&) = default;
};

/// Reads a material list chunk; what the record held before is replaced.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, MaterialListChunk& list);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const MaterialListChunk& list);
}  // namespace TW2
