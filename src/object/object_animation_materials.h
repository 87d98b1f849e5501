#pragma once

class P_VirtualObject;

namespace TW2
{
class TW_MaterialManager;

/// Whether a primitive of `mesh` has a material.
[[nodiscard]] bool hasMaterials(const P_VirtualObject& mesh) noexcept;

/// Gives the primitives of `mesh`, which use materials of `previous`, the materials of the same names in `manager`. A
/// primitive for whose material there is none is left without: `previous` may go before the mesh does.
void remapMeshMaterials(P_VirtualObject& mesh, TW_MaterialManager& manager, TW_MaterialManager& previous);
}  // namespace TW2
