#pragma once

#include <platform/export.h>
#include <platform/image/image.h>
#include <platform/runtime/allocator.h>

/// A texture map: one picture, optionally with the alpha of a second one.
///
/// Creating a map only notes where the picture comes from; `validate` decodes it, and everything that needs the picture
/// is valid from then on. The alpha picture gives its own alpha channel where that is not opaque everywhere, else its
/// brightness; it is scaled to the size of the colour picture.
class TW2_PLATFORM_API P_Map : public S_Allocated
{
public:
    /// @name Life
    /// @{

    /// From files; `alphaFileName` may be null.
    P_Map(const char* fileName, const char* alphaFileName);
    /// From images, of which `alpha` may be null. They stay the caller's and are copied by `validate`.
    P_Map(const G_Image* color, const G_Image* alpha);
    /// Renderers forget their copies by themselves.
    ~P_Map();
    P_Map(const P_Map&) = delete;
    P_Map& operator=(const P_Map&) = delete;

    /// Decodes the picture; does nothing once done. Throws S_FileException or G_ImageException with the file's name,
    /// also for a picture with a side longer than the driver takes; the map is then still without picture.
    void validate();
    /// Whether the picture is decoded.
    [[nodiscard]] bool isValid() const noexcept { return !m_image.isEmpty(); }
    /// @}

    /// @name Description: a text for people
    /// @{

    /// Any text; null is not allowed.
    void setDescription(const char* text) { m_strDescription = text; }
    [[nodiscard]] const S_String& getDescription() const noexcept { return m_strDescription; }
    /// @}

    /// @name Mip levels
    /// @{

    /// 0: as many as the picture's size allows.
    void setMipLevelCount(int count) noexcept { m_iMipLevels = count; }
    [[nodiscard]] int getMipLevelCount() const noexcept { return m_iMipLevels; }
    /// How many levels a renderer makes: at least 1, at most what the picture's size allows.
    [[nodiscard]] int getUsedMipLevelCount() const noexcept;
    /// @}

    /// @name Texture memory
    /// @{

    /// Asks for the map to be in texture memory before it is first drawn; validates it first.
    void addToTextureMemory();
    /// Gives the memory back until the map is drawn again.
    void removeFromTextureMemory() noexcept { m_bInTextureMemory = false; }
    /// Whether it was asked for and not given back since.
    [[nodiscard]] bool isInTextureMemory() const noexcept { return m_bInTextureMemory; }
    /// @}

    /// @name Picture and sources
    /// @{

    /// Colour and alpha in one picture; empty until `validate`.
    [[nodiscard]] const G_Image& getImage() const noexcept { return m_image; }
    /// Whether any pixel is not opaque.
    [[nodiscard]] bool hasAlpha() const noexcept { return m_bAlpha; }
    /// Whether all pixels are the same, as in the map of a plain colour.
    [[nodiscard]] bool isUniform() const noexcept { return m_bUniform; }
    /// File names as given; empty for a map from images.
    [[nodiscard]] const S_String& getFilename() const noexcept { return m_strFileName; }
    /// Empty without a picture for the alpha.
    [[nodiscard]] const S_String& getAlphaFilename() const noexcept { return m_strAlphaFileName; }
    /// A number no other map of the process has; a renderer finds its copy by it.
    [[nodiscard]] unsigned long long getId() const noexcept { return m_uiId; }
    /// @}

private:
    S_String m_strFileName;
    S_String m_strAlphaFileName;
    S_String m_strDescription;
    const G_Image* m_pColorImage = nullptr;
    const G_Image* m_pAlphaImage = nullptr;
    G_Image m_image;
    unsigned long long m_uiId;
    int m_iMipLevels = 0;
    bool m_bInTextureMemory = false;
    bool m_bAlpha = false;
    bool m_bUniform = false;
};
