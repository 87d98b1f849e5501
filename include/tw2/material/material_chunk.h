#pragma once

#include <tw2/export.h>
#include <tw2/material/material_texture_chunk.h>

#include <platform/image/fcolor.h>
#include <platform/runtime/allocator.h>

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// One material of a file: flags, colours, selectors and up to five textures.
///
/// Colours are on the scale 0 to 255. Selectors are kept as the file has them; TW_Material takes those outside their
/// range as 0. A texture slot is a record of its own that this record owns, and a flag that says whether it is part of
/// the material.
struct TW2_API TWMaterialChunk
{
    /// Values of `shading`.
    enum Shading : int
    {
        SHADING_NONE = 0,
        SHADING_CONSTANT = 1,
        SHADING_GOURAUD = 2
    };

    S_String name;                   ///< meshes refer to the material by it
    bool twoSided = false;           ///< no back-face culling
    bool fog = false;                ///< the material is fogged
    bool reservedFlag = false;       ///< kept and compared, without effect
    bool invisibleGeometry = false;  ///< geometry with this material is not drawn
    bool vertexAlpha = false;        ///< drawn with the constant alpha `vertexAlphaValue`
    bool shadeReflection = false;    ///< shading layers come after the reflection layer rather than before it
    bool alphaTest = false;
    bool alphaBlend = false;   ///< blending stays on beside the alpha test
    int alphaReference = 240;  ///< of the alpha test, 0 to 255
    G_FColor ambientColor;
    G_FColor diffuseColor;  ///< of the solid colour layer
    G_FColor specularColor;
    int shading = SHADING_CONSTANT;  ///< a Shading value
    int specular = 0;                ///< 1: a specular shading layer
    int reflectionMapping = 0;       ///< 0, 1: the reflection is generated; 2: it lies on the mesh's coordinates
    int glossChannel = 0;            ///< 1: the gloss texture has coordinates of its own; 0: the diffuse texture's
    int diffuseBlend = 0;            ///< blending of the diffuse layer: 0 replace, 1 add, 2 multiply
    int reflectionBlend = 0;         ///< blending of the reflection layer, the same values
    float vertexAlphaValue = 0.0f;   ///< 0 to 1
    float specularExponent = 0.0f;

    /// @name Life
    /// @{
    TWMaterialChunk() noexcept = default;
    /// Copies every field, and every present slot into a record of its own.
    TWMaterialChunk(const TWMaterialChunk& other) = default;
    /// The other record has no slot present afterwards; `reset` makes it usable again.
    TWMaterialChunk(TWMaterialChunk&& other) noexcept = default;
    /// Leaves the record as it was when memory runs out.
    TWMaterialChunk& operator=(const TWMaterialChunk& other);
    TWMaterialChunk& operator=(TWMaterialChunk&& other) noexcept = default;
    ~TWMaterialChunk() = default;

    /// Every field back to its default, no slot present. Colours become black and keep their alpha; slot records stay
    /// allocated for the next use.
    void reset() noexcept;
    /// @}

    /// @name Getters
    /// @{
    [[nodiscard]] const S_String& getName() const noexcept { return name; }
    [[nodiscard]] bool getTwoSided() const noexcept { return twoSided; }
    [[nodiscard]] bool getFog() const noexcept { return fog; }
    [[nodiscard]] bool getReservedFlag() const noexcept { return reservedFlag; }
    [[nodiscard]] bool getInvisibleGeometry() const noexcept { return invisibleGeometry; }
    [[nodiscard]] bool getVertexAlpha() const noexcept { return vertexAlpha; }
    [[nodiscard]] bool getShadeReflection() const noexcept { return shadeReflection; }
    [[nodiscard]] bool getAlphaTest() const noexcept { return alphaTest; }
    [[nodiscard]] bool getAlphaBlend() const noexcept { return alphaBlend; }
    [[nodiscard]] int getAlphaReference() const noexcept { return alphaReference; }
    [[nodiscard]] const G_FColor& getAmbientColor() const noexcept { return ambientColor; }
    [[nodiscard]] const G_FColor& getDiffuseColor() const noexcept { return diffuseColor; }
    [[nodiscard]] const G_FColor& getSpecularColor() const noexcept { return specularColor; }
    [[nodiscard]] int getShading() const noexcept { return shading; }
    [[nodiscard]] int getSpecular() const noexcept { return specular; }
    [[nodiscard]] int getReflectionMapping() const noexcept { return reflectionMapping; }
    [[nodiscard]] int getGlossChannel() const noexcept { return glossChannel; }
    [[nodiscard]] int getDiffuseBlend() const noexcept { return diffuseBlend; }
    [[nodiscard]] int getReflectionBlend() const noexcept { return reflectionBlend; }
    [[nodiscard]] float getVertexAlphaValue() const noexcept { return vertexAlphaValue; }
    [[nodiscard]] float getSpecularExponent() const noexcept { return specularExponent; }
    /// @}

    /// @name Texture slots
    /// The getters give null for a slot that is not present; `access` makes it present.
    /// @{
    [[nodiscard]] bool hasDiffuseTexture() const noexcept { return m_slots[SLOT_DIFFUSE].m_bPresent; }
    [[nodiscard]] bool hasReflectionTexture() const noexcept { return m_slots[SLOT_REFLECTION].m_bPresent; }
    [[nodiscard]] bool hasSpecularTexture() const noexcept { return m_slots[SLOT_SPECULAR].m_bPresent; }
    [[nodiscard]] bool hasOpacityTexture() const noexcept { return m_slots[SLOT_OPACITY].m_bPresent; }
    [[nodiscard]] bool hasGlossTexture() const noexcept { return m_slots[SLOT_GLOSS].m_bPresent; }
    [[nodiscard]] const MaterialTextureChunk* getDiffuseTexture() const noexcept { return getSlot(SLOT_DIFFUSE); }
    [[nodiscard]] const MaterialTextureChunk* getReflectionTexture() const noexcept { return getSlot(SLOT_REFLECTION); }
    [[nodiscard]] const MaterialTextureChunk* getSpecularTexture() const noexcept { return getSlot(SLOT_SPECULAR); }
    [[nodiscard]] const MaterialTextureChunk* getOpacityTexture() const noexcept { return getSlot(SLOT_OPACITY); }
    [[nodiscard]] const MaterialTextureChunk* getGlossTexture() const noexcept { return getSlot(SLOT_GLOSS); }
    MaterialTextureChunk& accessDiffuseTexture() { return accessSlot(SLOT_DIFFUSE); }
    MaterialTextureChunk& accessReflectionTexture() { return accessSlot(SLOT_REFLECTION); }
    MaterialTextureChunk& accessSpecularTexture() { return accessSlot(SLOT_SPECULAR); }
    MaterialTextureChunk& accessOpacityTexture() { return accessSlot(SLOT_OPACITY); }
    MaterialTextureChunk& accessGlossTexture() { return accessSlot(SLOT_GLOSS); }
    /// @}

    /// Whether the two give engine materials that differ only in colours and textures. Not compared: name, colours,
    /// `vertexAlphaValue`, `specularExponent`, names and files of the textures; of a slot only filter and mip levels.
    TW2_API friend bool operator==(const TWMaterialChunk& a, const TWMaterialChunk& b) noexcept;

private:
    enum SlotIndex : std::size_t
    {
        SLOT_DIFFUSE,
        SLOT_REFLECTION,
        SLOT_SPECULAR,
        SLOT_OPACITY,
        SLOT_GLOSS,
        SLOT_COUNT
    };

    struct SlotRecord : MaterialTextureChunk, S_Allocated
    {
    };

    /// A copy has a record of its own when the slot is present, else none. What is moved from is not present.
    struct Slot
    {
        std::unique_ptr<SlotRecord> m_pTexture;
        bool m_bPresent = false;

        Slot() noexcept = default;
        Slot(const Slot& other);
        Slot(Slot&& other) noexcept
            : m_pTexture(std::move(other.m_pTexture)), m_bPresent(std::exchange(other.m_bPresent, false))
        {
        }
        Slot& operator=(Slot&& other) noexcept
        {
            m_pTexture = std::move(other.m_pTexture);
            m_bPresent = std::exchange(other.m_bPresent, false);
            return *this;
        }
        ~Slot() = default;
    };

    [[nodiscard]] const MaterialTextureChunk* getSlot(SlotIndex slot) const noexcept
    {
        return m_slots[slot].m_bPresent ? m_slots[slot].m_pTexture.get() : nullptr;
    }
    MaterialTextureChunk& accessSlot(SlotIndex slot);

    std::array<Slot, SLOT_COUNT> m_slots;
};

/// Reads a material chunk of any version. Fields that the version does not carry, and slots that the file says are
/// absent, are left as they are: `reset` the record first.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, TWMaterialChunk& material);
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TWMaterialChunk& material);
}  // namespace TW2
