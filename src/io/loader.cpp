#include "core/unit_init.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/chunk_kind.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/loader.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/hash_map.h>
#include <platform/runtime/system.h>

namespace TW2
{
namespace
{
template <typename Callback>
void push(S_Vector<Callback*>& stack, Callback* callback) noexcept
{
    stack.push_back(callback);  // room was made before
}

template <typename Callback>
void pop(S_Vector<Callback*>& stack, Callback*& callback) noexcept
{
    if (!stack.empty())
    {
        callback = stack.back();
        stack.pop_back();
    }
}

/// Makes room for one more without giving up the doubling that keeps many pushes cheap.
template <typename T>
void makeRoom(S_Vector<T>& stack)
{
    if (stack.size() == stack.capacity())
    {
        stack.reserve(2 * stack.size() + 1);
    }
}

/// A small record lives for its call.
template <typename Record, typename Callback>
void hand(S_MemoryFile& file, Callback* callback)
{
    if (callback)
    {
        Record record;
        file >> record;
        (*callback)(static_cast<const Record&>(record));
    }
}

/// A large record is made once and refilled, so that its lists keep their storage from chunk to chunk.
template <typename Record, typename Callback>
void handKept(S_MemoryFile& file, Callback* callback)
{
    if (callback)
    {
        static Record record;
        record.reset();
        file >> record;
        (*callback)(record);
    }
}

void handCamera(S_MemoryFile& file, TW_CameraCallback* callback)
{
    if (callback)
    {
        CameraChunk camera;
        file >> camera;
        (*callback)(camera.transform, camera.value1, camera.value2, camera.value0);
    }
}

void handUnread(S_MemoryFile& file, TW_UnknownChunkCallback* callback)
{
    if (callback)
    {
        (*callback)(file);
    }
}
}  // namespace

void TW_Loader::clearAll() noexcept
{
    sm_pHelperCallback = nullptr;
    sm_pEnvironmentCallback = nullptr;
    sm_pLightCallback = nullptr;
    sm_pCameraCallback = nullptr;
    sm_pUnknownChunkCallback = nullptr;
    sm_pMaterialListCallback = nullptr;
    sm_pMeshCallback = nullptr;
    sm_pKeyframeAnimationCallback = nullptr;
}

void TW_Loader::pushState()
{
    // All that can fail comes first: the stacks grow together or not at all.
    makeRoom(sm_vecHelperCallback);
    makeRoom(sm_vecEnvironmentCallback);
    makeRoom(sm_vecLightCallback);
    makeRoom(sm_vecCameraCallback);
    makeRoom(sm_vecUnknownChunkCallback);
    makeRoom(sm_vecMaterialListCallback);
    makeRoom(sm_vecMeshCallback);
    makeRoom(sm_vecKeyframeAnimationCallback);

    push(sm_vecHelperCallback, sm_pHelperCallback);
    push(sm_vecEnvironmentCallback, sm_pEnvironmentCallback);
    push(sm_vecLightCallback, sm_pLightCallback);
    push(sm_vecCameraCallback, sm_pCameraCallback);
    push(sm_vecUnknownChunkCallback, sm_pUnknownChunkCallback);
    push(sm_vecMaterialListCallback, sm_pMaterialListCallback);
    push(sm_vecMeshCallback, sm_pMeshCallback);
    push(sm_vecKeyframeAnimationCallback, sm_pKeyframeAnimationCallback);
}

void TW_Loader::popState() noexcept
{
    pop(sm_vecHelperCallback, sm_pHelperCallback);
    pop(sm_vecEnvironmentCallback, sm_pEnvironmentCallback);
    pop(sm_vecLightCallback, sm_pLightCallback);
    pop(sm_vecCameraCallback, sm_pCameraCallback);
    pop(sm_vecUnknownChunkCallback, sm_pUnknownChunkCallback);
    pop(sm_vecMaterialListCallback, sm_pMaterialListCallback);
    pop(sm_vecMeshCallback, sm_pMeshCallback);
    pop(sm_vecKeyframeAnimationCallback, sm_pKeyframeAnimationCallback);
}

void TW_Loader::cacheFileForLoading(std::string_view fileName)
{
    S_String name(fileName);
    // Until the file is open no name stands for it, so that a file that cannot be opened is tried again next time.
    sm_strCachedMemoryFile.clear();
    sm_cachedMemoryFile.construct(name, S_MemoryFile::accessRead);
    sm_strCachedMemoryFile.swap(name);
}

void TW_Loader::freeCachedFile() noexcept
{
    sm_cachedMemoryFile.destruct();
    sm_strCachedMemoryFile.clear();
}

void TW_Loader::load(std::string_view fileName, bool freeAfterLoading)
{
    if (!sm_strCachedMemoryFile.empty() && S_CaselessNameEqual()(fileName, sm_strCachedMemoryFile))
    {
        sm_cachedMemoryFile.seek(0, S_MemoryFile::seekBegin);
    }
    else
    {
        cacheFileForLoading(fileName);
    }
    S_MemoryFile::Chunk chunk;
    for (sm_cachedMemoryFile.peekChunk(chunk); chunk.isValid(); sm_cachedMemoryFile.peekChunk(chunk))
    {
        dispatch(chunk.getID());
        sm_cachedMemoryFile.skipChunk();
    }
    if (freeAfterLoading)
    {
        freeCachedFile();
    }
}

void TW_Loader::dispatch(unsigned int id)
{
    S_MemoryFile& file = sm_cachedMemoryFile;
    switch (id)
    {
        case CHUNK_CAMERA:
            return handCamera(file, sm_pCameraCallback);
        case CHUNK_POINT_LIGHT:
            return hand<PointLightChunk>(file, sm_pLightCallback);
        case CHUNK_DIRECTIONAL_LIGHT:
            return hand<DirectionalLightChunk>(file, sm_pLightCallback);
        case CHUNK_SPOT_LIGHT:
            return hand<SpotLightChunk>(file, sm_pLightCallback);
        case CHUNK_MESH:
            return handKept<MeshChunk>(file, sm_pMeshCallback);
        case CHUNK_MATERIAL_LIST:
            return handKept<MaterialListChunk>(file, sm_pMaterialListCallback);
        case CHUNK_KEYFRAME_ANIMATION:
            return handKept<KeyframeAnimationChunk>(file, sm_pKeyframeAnimationCallback);
        case CHUNK_ENVIRONMENT:
            return hand<EnvironmentChunk>(file, sm_pEnvironmentCallback);
        case CHUNK_HELPER:
            return hand<HelperChunk>(file, sm_pHelperCallback);
        case CHUNK_POINT_LIGHT_ANIMATION:
            return hand<PointLightAnimationChunk>(file, sm_pLightCallback);
        case CHUNK_DIRECTIONAL_LIGHT_ANIMATION:
            return hand<DirectionalLightAnimationChunk>(file, sm_pLightCallback);
        case CHUNK_SPOT_LIGHT_ANIMATION:
            return hand<SpotLightAnimationChunk>(file, sm_pLightCallback);
        default:
            return handUnread(file, sm_pUnknownChunkCallback);
    }
}

void TW_Loader::analyze(std::string_view fileName)
{
    S_MemoryFile file(fileName, S_MemoryFile::accessRead);
    S_MemoryFile::Chunk chunk;
    for (file.peekChunk(chunk); chunk.isValid(); file.peekChunk(chunk))
    {
        Sys.verbose("%s\n", getChunkKind(chunk.getID()));
        Sys.verbose(": size %i, version %i\n", static_cast<int>(chunk.getSize()), static_cast<int>(chunk.getVersion()));
        file.skipChunk();
    }
}
}  // namespace TW2
