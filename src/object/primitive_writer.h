#pragma once

#include <cstddef>

class P_PrimitiveInstance;
class P_TriangleMesh;

namespace TW2
{
class TW_Material;
struct MeshChunk;

/// Flags of the vertex format that geometry with a material has (null: no material).
[[nodiscard]] int getVertexFormatFlags(const TW_Material* material) noexcept;

/// Sets the material on a primitive, with its texture matrices and visibility.
void applyMaterial(P_PrimitiveInstance& primitive, const TW_Material& material);

/// Writes group `group` of a record into its triangle mesh, which has room for it: vertices as `material` (may be null)
/// wants them, triangles. A group that the record does not have is empty.
void writeGroup(P_TriangleMesh& geometry, const MeshChunk& record, std::size_t group, const TW_Material* material);

/// @name Sizes of a group; 0 for one that the record does not have, and without vertices or without faces
/// @{
[[nodiscard]] unsigned int getGroupVertexCount(const MeshChunk& record, std::size_t group) noexcept;
[[nodiscard]] unsigned int getGroupTriangleCount(const MeshChunk& record, std::size_t group) noexcept;
/// @}
}  // namespace TW2
