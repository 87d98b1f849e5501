#pragma once

#include <tw2/io/mesh_chunk.h>

#include <platform/runtime/allocator.h>

namespace TW2
{
/// @name What does not fit in a mesh
/// Each returns the end of a sentence that begins with "expected", or an empty text when everything fits. Readers and
/// writers ask alike, so that no file is written that would not be read.
/// @{
S_String findFault(const MeshVertexChunk& vertices);
S_String findFault(const MeshFaceChunk& faces);
S_String findFault(const TextureChannelChunk& channel);
/// Between the parts of a mesh in the current layout. Each part fits in itself already.
S_String findFault(const MeshChunk& mesh);
/// Between the parts of a mesh in the old layout, before its conversion.
S_String findLegacyFault(const MeshChunk& mesh);
/// @}

/// Throws TW_Exception_InvalidGeometry unless the fault is empty; the mesh cannot be `done` then.
void requireSound(const MeshChunk& mesh, const char* done, const S_String& fault);
/// A fault in what a file holds is an error at the place where the file stands.
void requireFit(const S_MemoryFile& file, const S_String& fault);
}  // namespace TW2
