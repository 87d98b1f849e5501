#include "core/unit_init.h"
#include "io/loader_state_guard.h"
#include "object/mesh_materials.h"
#include "object/object_animation_material_list_callback.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/loader.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/file.h>
#include <platform/runtime/memory_scope.h>
#include <platform/scene/virtual_object.h>

#include <memory>

namespace TW2
{
void TW_ObjectAnimation::loadMaterials(const char* fileName)
{
    const S_MemoryScope memory("TW Memory Container");
    TW_MaterialManager materials;
    loadMaterials(&materials, fileName);
    remapMaterials(&materials);
}

void TW_ObjectAnimation::loadMaterials(TW_MaterialManager* manager, const char* fileName)
{
    const S_DirectoryGuard directory;
    const S_String fullName = File.getFullPathName(fileName);
    File.changeDirectory(File.getPath(fullName));
    {
        const LoaderStateGuard loaderState;
        const CachedFileGuard cachedFile;
        TW_ObjectAnimationMaterialListCallback callback(manager);
        TW_Loader::setMaterialListCallback(&callback);
        TW_Loader::load(fullName, true);
    }
    if (manager->getMaterialCount() == 0)
    {
        throw TW_Exception_MaterialNotFound(fileName);
    }
}

void TW_ObjectAnimation::remapMaterials(TW_MaterialManager* manager)
{
    const S_MemoryScope memory("TW Memory Container");
    auto materials = std::make_unique<TW_MaterialManager>(*manager);
    MeshMaterialsGuard guard(m_vecMeshes);
    if (m_pMaterialManager)
    {
        for (P_VirtualObject* mesh : m_vecMeshes)
        {
            remapMeshMaterials(*mesh, *materials, *m_pMaterialManager);
        }
    }
    guard.keep();
    delete m_pMaterialManager;
    m_pMaterialManager = materials.release();
}
}  // namespace TW2
