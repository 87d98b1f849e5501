#pragma once

#include <platform/runtime/allocator.h>

class P_Material;
class P_VirtualObject;

namespace TW2
{
class TW_MaterialManager;

/// Gives the primitives of `mesh`, which use materials of `previous`, the materials of the same names in `manager`. A
/// primitive for whose material there is none is left without: `previous` may go before the mesh does.
void remapMeshMaterials(P_VirtualObject& mesh, TW_MaterialManager& manager, TW_MaterialManager& previous);

/// The materials of all primitives of some meshes, put back when the scope ends before `keep`.
class MeshMaterialsGuard
{
public:
    explicit MeshMaterialsGuard(const S_Vector<P_VirtualObject*>& meshes);
    ~MeshMaterialsGuard();
    MeshMaterialsGuard(const MeshMaterialsGuard&) = delete;
    MeshMaterialsGuard& operator=(const MeshMaterialsGuard&) = delete;

    void keep() noexcept { m_bKeep = true; }

private:
    const S_Vector<P_VirtualObject*>& m_vecMeshes;
    S_Vector<P_Material*> m_vecMaterials;
    bool m_bKeep = false;
};
}  // namespace TW2
