#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>

#include <platform/runtime/allocator.h>

class P_Map;

namespace TW2
{
class TW_TextureCallback;

/// A texture map of the scene engine, made from an image file and optionally a second one that supplies its alpha.
///
/// Files are found through a search path of the process, and nowhere else. All textures made from the same pair of file
/// names share one engine map, whichever directories they were found in; the last texture to go deletes it. One thread
/// at a time.
class TW2_API TW_Texture : public S_Allocated
{
public:
    /// What a texture is made from.
    struct CreateInfo
    {
        S_String name;           ///< name of the texture; not used to find the file
        S_String filename;       ///< file to load, without directory
        S_String alphaFilename;  ///< file that supplies the alpha; empty: none
        int mipLevels = 0;       ///< 0: the engine's default
        S_String path;           ///< given to the callback: directory in which `filename` was found
        S_String alphaPath;      ///< given to the callback: directory in which `alphaFilename` was found, or empty
    };

    /// @name Life
    /// @{

    /// Not constructed: no map, an empty name.
    TW_Texture() noexcept { initializeMembers(); }
    /// Finds or loads the map of two files; see `construct`.
    explicit TW_Texture(const CreateInfo& info) : TW_Texture() { construct(info); }
    /// Shares the other's map.
    TW_Texture(const TW_Texture& other) : TW_Texture() { construct(other); }
    /// Shares the other's map; a texture assigned to itself stays as it is.
    TW_Texture& operator=(const TW_Texture& other);
    /// The last texture of a map deletes it.
    ~TW_Texture() { destruct(); }

    /// Finds the map of the two files among those in use, or loads it: looks the files up, calls the callback with the
    /// new map, validates it. Throws TW_Exception_TextureNotFound with the file name for a file in none of the search
    /// directories, S_FileException or G_ImageException for one that cannot be read as a picture. The texture is then
    /// unconstructed, and no map was added.
    void construct(const CreateInfo& info);
    void construct(const TW_Texture& other);
    /// Lets the map go; nothing happens to a texture that has none.
    void destruct() noexcept;
    /// Whether it has a map.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Asking a constructed texture
    /// @{

    /// As it was given; not used to find the file.
    [[nodiscard]] const S_String& getName() const noexcept { return m_strName; }
    /// As it was given, without directory.
    [[nodiscard]] const S_String& getFilename() const noexcept;
    /// As it was given; empty without an alpha file.
    [[nodiscard]] const S_String& getAlphaFilename() const noexcept;
    /// Directory of the file, absolute, with its closing separator.
    [[nodiscard]] const S_String& getPath() const noexcept;
    /// The same of the alpha file; empty without one.
    [[nodiscard]] const S_String& getAlphaPath() const noexcept;
    /// The engine's map, shared with every texture of the same files; not to be deleted.
    [[nodiscard]] P_Map* getMap() const noexcept;
    /// @}

    /// @name Texture memory of a constructed texture
    /// @{

    /// Has the map ready before it is first drawn; throws what reading the picture throws.
    void addToTextureMemory();
    /// Gives the map's memory back, for all textures that share it, until it is needed again.
    void removeFromTextureMemory() noexcept;
    /// @}

    /// @name Search path
    /// @{

    /// Appends the directories of a text separated by ';', without the blanks around them. They are relative to the
    /// directory that is current when a texture is built, or absolute; both separators and either letter case work.
    /// When memory runs out the list is as before. Building an object, or loading materials, adds the folder of each
    /// file's materials for itself and leaves the list empty.
    static void addTexturePath(const S_String& directories);
    /// The same with a string of the host's.
    template <TW_ForeignString Directories>
    static void addTexturePath(const Directories& directories)
    {
        addTexturePath(asString(directories));
    }
    /// Afterwards no file is found.
    static void clearTexturePathList() noexcept { S_Vector<S_String>().swap(s_vecTexturePathList); }
    /// Entries, in the order in which they are searched.
    [[nodiscard]] static int getTexturePathCount() noexcept { return static_cast<int>(s_vecTexturePathList.size()); }
    /// An entry, ending in a backslash or '/'. `index` is below the count.
    [[nodiscard]] static const S_String& getTexturePath(int index) noexcept;
    /// @}

    /// @name Missing files
    /// @{

    /// Whether a file that is in none of the directories may be missing: its texture then is plain white, or, if it is
    /// the alpha file, has no alpha, and a line on the verbose log names the file and where it was looked for. Off
    /// until a host says so. A texture stays plain as long as it is in use.
    static void setMissingFilesAllowed(bool allowed) noexcept { sm_bMissingFilesAllowed = allowed; }
    /// As set last.
    [[nodiscard]] static bool areMissingFilesAllowed() noexcept { return sm_bMissingFilesAllowed; }
    /// @}

    /// @name Callback (not owned; null: none)
    /// @{

    /// Hears of every map that is loaded; the host keeps it alive while it is set.
    static void setCallback(TW_TextureCallback* callback) noexcept { sm_pTextureCallback = callback; }
    [[nodiscard]] static TW_TextureCallback* getCallback() noexcept { return sm_pTextureCallback; }
    /// @}

private:
    friend class TW_ObjectAnimationMaterialListCallback;  // brings the search path back
    struct SharedMap;

    void initializeMembers() noexcept;
    [[nodiscard]] SharedMap* safeSharedMapPointer() const noexcept { return m_pSharedMap; }
    [[nodiscard]] static SharedMap* findMap(const S_String& filename, const S_String& alphaFilename) noexcept;
    [[nodiscard]] static bool findFileFromGlobalPathList(S_String& directory, const S_String& filename);
    [[nodiscard]] static S_String locateFile(const S_String& filename);
    static void loadMap(SharedMap& shared);
    [[nodiscard]] static SharedMap* createMap(const CreateInfo& info);

    bool m_bConstructed;
    S_String m_strName;
    SharedMap* m_pSharedMap;

    static S_Vector<S_String> s_vecTexturePathList;
    static S_List<SharedMap*> s_lstTextureList;
    static TW_TextureCallback* sm_pTextureCallback;
    static bool sm_bMissingFilesAllowed;
};

/// Sees every new engine map before it is validated. A host derives from it and owns it.
class TW2_API TW_TextureCallback
{
public:
    /// `info` has its directories filled in. An exception ends the construction of the texture.
    virtual void operator()(P_Map* map, const TW_Texture::CreateInfo& info) = 0;
    virtual ~TW_TextureCallback() = default;
};
}  // namespace TW2
