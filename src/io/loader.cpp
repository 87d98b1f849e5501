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

#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/hash_map.h>
#include <platform/runtime/rollback.h>
#include <platform/runtime/system.h>

namespace TW2
{
namespace
{
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
        (*callback)(record);
    }
}

/// A large record is made once and refilled, so that its lists keep their storage from chunk to chunk. What is loaded
/// while a callback has it in hand gets another one.
template <typename Record, typename Callback>
void handKept(S_MemoryFile& file, Callback* callback)
{
    static bool s_bInHand = false;
    if (!callback || s_bInHand)
    {
        hand<Record>(file, callback);
        return;
    }
    static Record s_record;
    s_bInHand = true;
    const S_Rollback putDown([]() noexcept { s_bInHand = false; });
    s_record.reset();
    file >> s_record;
    (*callback)(s_record);
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

}  // namespace

/// A walk over the file in memory. Before a callback of it loads, the walk's file is put aside; it comes back when the
/// callback returns.
class TW_Loader::Walk
{
public:
    Walk() noexcept : m_pOuter(sm_pWalk) { sm_pWalk = this; }
    ~Walk()
    {
        takeBack();
        sm_pWalk = m_pOuter;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    /// Comes before everything that replaces the file in memory.
    static void putAside() noexcept
    {
        if (sm_pWalk && !sm_pWalk->m_bAside)
        {
            sm_pWalk->exchange();
        }
    }
    void takeBack() noexcept
    {
        if (m_bAside)
        {
            exchange();
            m_file.destruct();
            m_strName.clear();
        }
    }

private:
    void exchange() noexcept
    {
        sm_cachedMemoryFile.swap(m_file);
        sm_strCachedMemoryFile.swap(m_strName);
        m_bAside = !m_bAside;
    }

    Walk* m_pOuter;
    S_MemoryFile m_file;
    S_String m_strName;
    bool m_bAside = false;
};

/// Calls `visit` with the stack of every kind of callback and the callback itself.
template <typename Visit>
void TW_Loader::forEachCallback(const Visit& visit)
{
    visit(sm_vecHelperCallback, sm_pHelperCallback);
    visit(sm_vecEnvironmentCallback, sm_pEnvironmentCallback);
    visit(sm_vecLightCallback, sm_pLightCallback);
    visit(sm_vecCameraCallback, sm_pCameraCallback);
    visit(sm_vecUnknownChunkCallback, sm_pUnknownChunkCallback);
    visit(sm_vecMaterialListCallback, sm_pMaterialListCallback);
    visit(sm_vecMeshCallback, sm_pMeshCallback);
    visit(sm_vecKeyframeAnimationCallback, sm_pKeyframeAnimationCallback);
}

void TW_Loader::clearAll() noexcept
{
    forEachCallback([](auto&, auto*& callback) { callback = nullptr; });
}

void TW_Loader::pushState()
{
    // All that can fail comes first: the stacks grow together or not at all.
    forEachCallback([](auto& stack, auto*) { makeRoom(stack); });
    forEachCallback([](auto& stack, auto* callback) { stack.push_back(callback); });
}

void TW_Loader::popState() noexcept
{
    if (sm_vecHelperCallback.empty())
    {
        return;
    }
    forEachCallback(
        [](auto& stack, auto*& callback)
        {
            callback = stack.back();
            stack.pop_back();
        });
}

void TW_Loader::cacheFileForLoading(std::string_view fileName)
{
    S_String name(fileName);
    Walk::putAside();
    S_MemoryFile opened(name, S_MemoryFile::accessRead);
    sm_cachedMemoryFile.swap(opened);
    sm_strCachedMemoryFile.swap(name);
}

void TW_Loader::freeCachedFile() noexcept
{
    Walk::putAside();
    sm_cachedMemoryFile.destruct();
    sm_strCachedMemoryFile.clear();
}

void TW_Loader::load(std::string_view fileName, bool freeAfterLoading)
{
    Walk::putAside();
    if (!sm_strCachedMemoryFile.empty() && S_CaselessNameEqual()(fileName, sm_strCachedMemoryFile))
    {
        sm_cachedMemoryFile.seek(0, S_MemoryFile::seekBegin);
    }
    else
    {
        cacheFileForLoading(fileName);
    }
    const S_DirectoryListings listings;  // materials look for many textures in the same folders
    walk();
    if (freeAfterLoading)
    {
        freeCachedFile();
    }
}

void TW_Loader::walk()
{
    Walk walk;
    S_MemoryFile::Chunk chunk;
    for (sm_cachedMemoryFile.peekChunk(chunk); chunk.isValid(); sm_cachedMemoryFile.peekChunk(chunk))
    {
        const unsigned int id = chunk.getID();
        const std::size_t begin = chunk.getBodyOffset();
        dispatch(id);
        walk.takeBack();
        if (!chunk.isValid() || &chunk.getMemoryFile() != &sm_cachedMemoryFile)
        {
            S_String name;  // what is in memory is not the file of this name any more
            name.swap(sm_strCachedMemoryFile);
            throw S_MemoryFileException(name.c_str(), id, begin, "the rest of the file, which a callback has let go");
        }
        sm_cachedMemoryFile.skipChunk(chunk);
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
            if (sm_pUnknownChunkCallback)
            {
                (*sm_pUnknownChunkCallback)(file);
            }
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
