#include "core/unit_init.h"
#include "io/legacy_mesh_work_lists.h"

#include <tw2/core/static_data.h>
#include <tw2/io/loader.h>
#include <tw2/material/material.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/texture.h>
#include <tw2/object/object_animation.h>

// The static data of the library that need storage or are changed, in the order in which they come into being when it
// is loaded; they go in the reverse order when it is unloaded. One unit holds them all, because between units the order
// is the linker's.
//
// Not here are constants (the tables of script blocks and keys) and what is made on its first use: the records that
// the loader refills from chunk to chunk, and the work lists of the conversion of old meshes, which `deleteStaticData`
// releases.

namespace TW2
{
// Materials: callback, map and image of materials without texture, templates.
TW_MaterialCallback* TW_Material::sm_pMaterialCallback = nullptr;
P_Map* TW_Material::sm_pSolidMap = nullptr;
S_Counter<int> TW_Material::sm_iSolidMapReferenceCnt;
G_Image* TW_Material::sm_pSolidImage = nullptr;
S_Counter<int> TW_Material::sm_iTemplateMaterial;
S_Vector<TWMaterialChunk> TW_Material::sm_vecCreatedMaterials;
S_Vector<P_Material*> TW_Material::sm_vecTemplateMaterials;

// Textures: callback, search path, maps in use.
TW_TextureCallback* TW_Texture::sm_pTextureCallback = nullptr;
bool TW_Texture::sm_bMissingFilesAllowed = false;
S_Vector<S_String> TW_Texture::s_vecTexturePathList;
S_List<TW_Texture::SharedMap*> TW_Texture::s_lstTextureList;

// Object animations: records filled so far, callbacks.
S_Counter<int> TW_ObjectAnimation::ObjectAnimation::s_instanceCnt;
TW_LoadMeshCallback* TW_ObjectAnimation::sm_pLoadMeshCallback = nullptr;
TW_MeshLoadedCallback* TW_ObjectAnimation::sm_pMeshLoadedCallback = nullptr;
TW_MeshParentNotFoundCallback* TW_ObjectAnimation::sm_pMeshParentNotFoundCallback = nullptr;
TW_ObjectKeyframeAnimationCallback* TW_ObjectAnimation::sm_pKeyframeAnimationCallback = nullptr;
S_Counter<int> TW_VirtualObject::sm_iLiveCount;

// Loader: callbacks, saved callbacks, the file in memory, which goes first.
TW_HelperCallback* TW_Loader::sm_pHelperCallback = nullptr;
TW_EnvironmentCallback* TW_Loader::sm_pEnvironmentCallback = nullptr;
TW_LightCallback* TW_Loader::sm_pLightCallback = nullptr;
TW_CameraCallback* TW_Loader::sm_pCameraCallback = nullptr;
TW_UnknownChunkCallback* TW_Loader::sm_pUnknownChunkCallback = nullptr;
TW_MaterialListCallback* TW_Loader::sm_pMaterialListCallback = nullptr;
TW_MeshCallback* TW_Loader::sm_pMeshCallback = nullptr;
TW_KeyframeAnimationCallback* TW_Loader::sm_pKeyframeAnimationCallback = nullptr;

S_Vector<TW_HelperCallback*> TW_Loader::sm_vecHelperCallback;
S_Vector<TW_EnvironmentCallback*> TW_Loader::sm_vecEnvironmentCallback;
S_Vector<TW_LightCallback*> TW_Loader::sm_vecLightCallback;
S_Vector<TW_CameraCallback*> TW_Loader::sm_vecCameraCallback;
S_Vector<TW_UnknownChunkCallback*> TW_Loader::sm_vecUnknownChunkCallback;
S_Vector<TW_MaterialListCallback*> TW_Loader::sm_vecMaterialListCallback;
S_Vector<TW_MeshCallback*> TW_Loader::sm_vecMeshCallback;
S_Vector<TW_KeyframeAnimationCallback*> TW_Loader::sm_vecKeyframeAnimationCallback;

namespace
{
/// What the first file that is held in memory is expected to take.
constexpr unsigned int firstFileBytes = 8192;
}  // namespace
S_MemoryFile TW_Loader::sm_cachedMemoryFile(firstFileBytes);
S_String TW_Loader::sm_strCachedMemoryFile;
TW_Loader::Walk* TW_Loader::sm_pWalk = nullptr;

void deleteStaticData() noexcept
{
    releaseLegacyMeshLists();
}
}  // namespace TW2
