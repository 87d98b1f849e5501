#pragma once

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
    TW_Texture() noexcept = default;
    explicit TW_Texture(const CreateInfo& info);
    /// Shares the other's map.
    TW_Texture(const TW_Texture& other);
    TW_Texture& operator=(const TW_Texture& other);
    ~TW_Texture();

    /// Finds the map of the two files among those in use, or loads it: looks the files up, calls the callback with the
    /// new map, validates it. Throws TW_Exception_TextureNotFound with the file name for a file in none of the search
    /// directories, S_FileException or G_ImageException for one that cannot be read as a picture. The texture is then
    /// unconstructed, and no map was added.
    void construct(const CreateInfo& info);
    void construct(const TW_Texture& other);
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Asking a constructed texture
    /// @{
    [[nodiscard]] const S_String& getName() const noexcept { return m_strName; }
    [[nodiscard]] const S_String& getFilename() const noexcept;
    [[nodiscard]] const S_String& getAlphaFilename() const noexcept;
    /// Directory of the file, absolute, with its closing separator.
    [[nodiscard]] const S_String& getPath() const noexcept;
    /// The same of the alpha file; empty without one.
    [[nodiscard]] const S_String& getAlphaPath() const noexcept;
    [[nodiscard]] P_Map* getMap() const noexcept;
    /// @}

    /// @name Texture memory of a constructed texture
    /// @{
    void addToTextureMemory();
    void removeFromTextureMemory() noexcept;
    /// @}

    /// @name Search path
    /// @{

    /// Appends the directories of a text separated by ';', without the blanks around them. They are relative to the
    /// directory that is current when a texture is built, or absolute; both separators and either letter case work.
    /// When memory runs out the list is as before.
    static void addTexturePath(const S_String& directories);
    static void clearTexturePathList() noexcept;
    [[nodiscard]] static int getTexturePathCount() noexcept;
    /// An entry, ending in a backslash or '/'. `index` is below the count.
    [[nodiscard]] static const S_String& getTexturePath(int index) noexcept;
    /// @}

    /// @name Callback (not owned; null: none)
    /// @{
    static void setCallback(TW_TextureCallback* callback) noexcept { sm_pTextureCallback = callback; }
    [[nodiscard]] static TW_TextureCallback* getCallback() noexcept { return sm_pTextureCallback; }
    /// @}

private:
    struct SharedMap;

    void initializeMembers() noexcept;
    [[nodiscard]] SharedMap* safeSharedMapPointer() const noexcept { return m_pSharedMap; }
    [[nodiscard]] static SharedMap* findMap(const S_String& filename, const S_String& alphaFilename) noexcept;
    [[nodiscard]] static bool findFileFromGlobalPathList(S_String& directory, const S_String& filename);
    [[nodiscard]] static S_String locateFile(const S_String& filename);
    [[nodiscard]] static SharedMap* createMap(const CreateInfo& info);

    bool m_bConstructed = false;
    S_String m_strName;
    SharedMap* m_pSharedMap = nullptr;

    static S_Vector<S_String> s_vecTexturePathList;
    static S_List<SharedMap*> s_lstTextureList;
    static TW_TextureCallback* sm_pTextureCallback;
};

/// Sees every new engine map before it is validated. A host derives from it and owns it.
class TW2_API TW_TextureCallback
{
public:
    virtual ~TW_TextureCallback();
    /// `info` has its directories filled in. An exception ends the construction of the texture.
    virtual void operator()(P_Map* map, const TW_Texture::CreateInfo& info) = 0;
};
}  // namespace TW2
