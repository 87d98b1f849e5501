#pragma once

#include <tw2/export.h>
#include <tw2/io/loader_callbacks.h>

#include <platform/runtime/allocator.h>
#include <platform/runtime/memory_file.h>

#include <string_view>

namespace TW2
{
/// Walks an animation file and hands every chunk, read into its record, to the callback for its kind.
///
/// A load inside another set-up saves the callbacks, installs its own, loads, and restores:
///
///     TW_Loader::pushState();
///     TW_Loader::clearAll();
///     TW_Loader::setMeshCallback(&meshes);
///     TW_Loader::load("scene.tw", true);
///     TW_Loader::popState();
///
/// A kind without a callback is skipped unread. The file of the last load stays in memory under its name until it is
/// freed or another is loaded, so that several passes read the disk once. When a file, a chunk or a callback throws,
/// the walk ends, callbacks and cached file stay as they are and the exception passes on.
///
/// A callback may load, or build objects that do: its loads have a file of their own, which goes when it returns, and
/// the walk goes on behind the chunk that it was called for. It must not replace the content of the file that the
/// callback for unknown chunks is given: the walk then ends with an S_MemoryFileException.
///
/// All state is shared and unguarded: one thread at a time. Callbacks are not owned.
class TW2_API TW_Loader
{
public:
    TW_Loader() = delete;

    /// @name Callbacks
    /// Null (the state at start) leaves a kind unread.
    /// @{

    /// Hears of every helper of a file.
    static void setHelperCallback(TW_HelperCallback* callback) noexcept { sm_pHelperCallback = callback; }
    [[nodiscard]] static TW_HelperCallback* getHelperCallback() noexcept { return sm_pHelperCallback; }
    /// Hears of a file's environment colours.
    static void setEnvironmentCallback(TW_EnvironmentCallback* callback) noexcept
    {
        sm_pEnvironmentCallback = callback;
    }
    [[nodiscard]] static TW_EnvironmentCallback* getEnvironmentCallback() noexcept { return sm_pEnvironmentCallback; }
    /// Hears of every light and every light animation of a file.
    static void setLightCallback(TW_LightCallback* callback) noexcept { sm_pLightCallback = callback; }
    [[nodiscard]] static TW_LightCallback* getLightCallback() noexcept { return sm_pLightCallback; }
    /// Hears of every camera of a file.
    static void setCameraCallback(TW_CameraCallback* callback) noexcept { sm_pCameraCallback = callback; }
    [[nodiscard]] static TW_CameraCallback* getCameraCallback() noexcept { return sm_pCameraCallback; }
    /// Hears of every chunk that the loader does not know; without one such chunks are passed over.
    static void setUnknownChunkCallback(TW_UnknownChunkCallback* callback) noexcept
    {
        sm_pUnknownChunkCallback = callback;
    }
    [[nodiscard]] static TW_UnknownChunkCallback* getUnknownChunkCallback() noexcept
    {
        return sm_pUnknownChunkCallback;
    }
    /// Hears of every list of materials of a file.
    static void setMaterialListCallback(TW_MaterialListCallback* callback) noexcept
    {
        sm_pMaterialListCallback = callback;
    }
    [[nodiscard]] static TW_MaterialListCallback* getMaterialListCallback() noexcept
    {
        return sm_pMaterialListCallback;
    }
    /// Hears of every mesh of a file. Building an object takes this one for itself, and leaves null.
    static void setMeshCallback(TW_MeshCallback* callback) noexcept { sm_pMeshCallback = callback; }
    [[nodiscard]] static TW_MeshCallback* getMeshCallback() noexcept { return sm_pMeshCallback; }
    /// Hears of every keyframe animation of a file.
    static void setKeyframeAnimationCallback(TW_KeyframeAnimationCallback* callback) noexcept
    {
        sm_pKeyframeAnimationCallback = callback;
    }
    [[nodiscard]] static TW_KeyframeAnimationCallback* getKeyframeAnimationCallback() noexcept
    {
        return sm_pKeyframeAnimationCallback;
    }
    /// Sets all eight to null; saved sets stay.
    static void clearAll() noexcept;
    /// @}

    /// @name Saving callback sets
    /// @{

    /// Saves the current set on a stack. When memory runs out, nothing has changed.
    static void pushState();
    /// Brings the last saved set back. Without a saved set nothing changes.
    static void popState() noexcept;
    /// @}

    /// @name Loading
    /// @{

    /// Opens a file ahead of the loads of the same name. When it cannot be opened, the one that is in memory stays.
    static void cacheFileForLoading(std::string_view fileName);
    /// Lets go of the file in memory.
    static void freeCachedFile() noexcept;
    /// Walks a file from its first chunk to its last and calls the callbacks. A file in memory under this name (letter
    /// case does not count) is not opened again. `freeAfterLoading` lets go of it when the walk is complete.
    static void load(std::string_view fileName, bool freeAfterLoading);
    /// Whether a file is being walked: true inside callbacks.
    [[nodiscard]] static bool isLoading() noexcept { return sm_pWalk != nullptr; }
    /// Lists the top-level chunks of a file on the verbose log: kind, size and version. Leaves callbacks and the file
    /// in memory alone.
    static void analyze(std::string_view fileName);
    /// @}

private:
    class Walk;

    template <typename Visit>
    static void forEachCallback(const Visit& visit);
    static void walk();
    static void dispatch(unsigned int id);

    static TW_HelperCallback* sm_pHelperCallback;
    static TW_EnvironmentCallback* sm_pEnvironmentCallback;
    static TW_LightCallback* sm_pLightCallback;
    static TW_CameraCallback* sm_pCameraCallback;
    static TW_UnknownChunkCallback* sm_pUnknownChunkCallback;
    static TW_MaterialListCallback* sm_pMaterialListCallback;
    static TW_MeshCallback* sm_pMeshCallback;
    static TW_KeyframeAnimationCallback* sm_pKeyframeAnimationCallback;

    static S_Vector<TW_HelperCallback*> sm_vecHelperCallback;
    static S_Vector<TW_EnvironmentCallback*> sm_vecEnvironmentCallback;
    static S_Vector<TW_LightCallback*> sm_vecLightCallback;
    static S_Vector<TW_CameraCallback*> sm_vecCameraCallback;
    static S_Vector<TW_UnknownChunkCallback*> sm_vecUnknownChunkCallback;
    static S_Vector<TW_MaterialListCallback*> sm_vecMaterialListCallback;
    static S_Vector<TW_MeshCallback*> sm_vecMeshCallback;
    static S_Vector<TW_KeyframeAnimationCallback*> sm_vecKeyframeAnimationCallback;

    static S_MemoryFile sm_cachedMemoryFile;
    static S_String sm_strCachedMemoryFile;
    static Walk* sm_pWalk;  ///< the innermost one
};
}  // namespace TW2
