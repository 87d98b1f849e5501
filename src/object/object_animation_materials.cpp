#include "object/object_animation_materials.h"

#include "core/memory_scope.h"
#include "core/release_guard.h"
#include "core/unit_init.h"
#include "io/loader_state_guard.h"
#include "object/object_animation_builder.h"
#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/loader.h>
#include <tw2/io/loader_callbacks.h>
#include <tw2/material/material.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/material/material_manager.h>
#include <tw2/material/texture.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/file.h>
#include <platform/runtime/rollback.h>
#include <platform/scene/primitive_instance.h>
#include <platform/scene/virtual_object.h>

#include <cstddef>
#include <memory>
#include <utility>

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

template <typename Visit>
void forEachPrimitive(const TW_MeshList& meshes, const Visit& visit)
{
    for (P_VirtualObject* mesh : meshes)
    {
        for (int i = 0; i < mesh->getPrimitiveCount(); ++i)
        {
            visit(*mesh->getPrimitiveInstance(i));
        }
    }
}
}  // namespace

bool hasMaterials(const P_VirtualObject& mesh) noexcept
{
    for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
    {
        if (mesh.getPrimitiveInstance(i)->getMaterial())
        {
            return true;
        }
    }
    return false;
}

void remapMeshMaterials(P_VirtualObject& mesh, TW_MaterialManager& manager, TW_MaterialManager& previous)
{
    manager.remapMaterials(&mesh, &previous);
    for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
    {
        const P_Material* const material = std::as_const(mesh).getPrimitiveInstance(i)->getMaterial();
        if (material && !holdsMaterial(manager, material) && holdsMaterial(previous, material))
        {
            mesh.getPrimitiveInstance(i)->setMaterial(nullptr);
        }
    }
}

/// @name Materials from files
/// @{
/// Adds the materials of a file to a manager; their textures are looked for where the list says.
class TW_ObjectAnimationMaterialListCallback : public TW_MaterialListCallback
{
public:
    explicit TW_ObjectAnimationMaterialListCallback(TW_MaterialManager* manager) noexcept : m_pManager(manager) {}

    /// The search path is empty before and afterwards; inside another such call, that one's comes back.
    void operator()(MaterialListChunk& record) override
    {
        S_Vector<S_String> outerPath;
        outerPath.swap(TW_Texture::s_vecTexturePathList);
        const bool isOuter = !std::exchange(s_bActive, true);
        const S_Rollback restorePath(
            [&outerPath, isOuter]() noexcept
            {
                TW_Texture::clearTexturePathList();
                if (!isOuter)
                {
                    outerPath.swap(TW_Texture::s_vecTexturePathList);
                }
                s_bActive = !isOuter;
            });
        TW_Texture::addTexturePath(record.texturePath);
        for (const TWMaterialChunk& material : record.materials)
        {
            m_pManager->addMaterial(material);
        }
    }

private:
    static inline bool s_bActive = false;

    TW_MaterialManager* m_pManager;
};

void TW_ObjectAnimation::Builder::loadMaterials(const S_String& fileName)
{
    const LoaderStateGuard loaderState;
    TW_Loader::cacheFileForLoading(fileName);
    m_object.m_pMaterialManager = new TW_MaterialManager();
    const ReleaseGuard filled(m_object.m_pMaterialManager);
    TW_ObjectAnimationMaterialListCallback callback(m_object.m_pMaterialManager);
    TW_Loader::setMaterialListCallback(&callback);
    TW_Loader::load(fileName, false);
    requireObject();
}

void TW_ObjectAnimation::loadMaterials(const char* fileName)
{
    if (!m_pMaterialManager)
    {
        return;
    }
    const MemoryScope memory;
    TW_MaterialManager materials;
    loadMaterials(&materials, fileName);
    remapMaterials(&materials);
}

void TW_ObjectAnimation::loadMaterials(TW_MaterialManager* manager, const char* fileName)
{
    if (!manager)
    {
        return;
    }
    const S_DirectoryGuard directory;
    const S_String fullName = File.getFullPathName(orEmpty(fileName));
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
        throw TW_Exception_MaterialNotFound(orEmpty(fileName));
    }
}

void TW_ObjectAnimation::remapMaterials(TW_MaterialManager* manager)
{
    if (!manager || !m_pMaterialManager)
    {
        return;
    }
    const MemoryScope memory;
    auto materials = std::make_unique<TW_MaterialManager>(*manager);
    S_Vector<P_Material*> before;
    forEachPrimitive(m_vecMeshes,
                     [&](const P_PrimitiveInstance& primitive) { before.push_back(primitive.getMaterial()); });
    S_Rollback rollback(
        [&]() noexcept
        {
            auto next = before.begin();
            forEachPrimitive(m_vecMeshes, [&](P_PrimitiveInstance& primitive) { primitive.setMaterial(*next++); });
        });
    for (P_VirtualObject* mesh : m_vecMeshes)
    {
        remapMeshMaterials(*mesh, *materials, *m_pMaterialManager);
    }
    rollback.keep();
    ReleaseGuard::release(m_pMaterialManager);
    m_pMaterialManager = materials.release();
}
/// @}
}  // namespace TW2
