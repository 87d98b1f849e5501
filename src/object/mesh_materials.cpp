#include "object/mesh_materials.h"

#include <tw2/material/material.h>
#include <tw2/material/material_manager.h>

#include <platform/scene/primitive_instance.h>
#include <platform/scene/virtual_object.h>

#include <cstddef>

namespace TW2
{
namespace
{
bool holdsMaterial(const TW_MaterialManager& manager, const P_Material* material)
{
    const int count = static_cast<int>(manager.getMaterialCount());
    for (int i = 0; i < count; ++i)
    {
        if (manager.getMaterial(i)->getMaterial() == material)
        {
            return true;
        }
    }
    return false;
}
}  // namespace

void remapMeshMaterials(P_VirtualObject& mesh, TW_MaterialManager& manager, TW_MaterialManager& previous)
{
    manager.remapMaterials(&mesh, &previous);
    for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
    {
        P_PrimitiveInstance& primitive = *mesh.getPrimitiveInstance(i);
        const P_Material* const material = primitive.getMaterial();
        if (material && !holdsMaterial(manager, material) && holdsMaterial(previous, material))
        {
            primitive.setMaterial(nullptr);
        }
    }
}

MeshMaterialsGuard::MeshMaterialsGuard(const S_Vector<P_VirtualObject*>& meshes) : m_vecMeshes(meshes)
{
    for (P_VirtualObject* mesh : meshes)
    {
        for (int i = 0; i < mesh->getPrimitiveCount(); ++i)
        {
            m_vecMaterials.push_back(mesh->getPrimitiveInstance(i)->getMaterial());
        }
    }
}

MeshMaterialsGuard::~MeshMaterialsGuard()
{
    if (m_bKeep)
    {
        return;
    }
    std::size_t next = 0;
    for (P_VirtualObject* mesh : m_vecMeshes)
    {
        for (int i = 0; i < mesh->getPrimitiveCount(); ++i)
        {
            mesh->getPrimitiveInstance(i)->setMaterial(m_vecMaterials[next++]);
        }
    }
}
}  // namespace TW2
