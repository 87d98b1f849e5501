#pragma once

#include <tw2/export.h>
#include <tw2/material/material_texture_chunk.h>

#include <platform/image/fcolor.h>
#include <platform/runtime/allocator.h>

#include <memory>
#include <utility>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// One material of a file: flags, colours, selectors and up to five textures.
///
/// Colours are on the scale 0 to 255. Selectors are kept as the file has them; one outside its range is no error. A
/// texture slot is a record of its own that this record owns, and a flag that says whether it is part of the material.
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
    bool alphaTest = false;          ///< pixels whose alpha is below the reference are not drawn; for diffuse textures
    bool alphaBlend = false;         ///< blending stays on beside the alpha test
    int alphaReference = 240;        ///< of the alpha test, 0 to 255
    G_FColor ambientColor;           ///< of the light from everywhere
    G_FColor diffuseColor;           ///< of the solid colour layer
    G_FColor specularColor;          ///< of the highlight
    int shading = SHADING_CONSTANT;  ///< a Shading value
    int specular = 0;                ///< 1: a specular shading layer
    int reflectionMapping = 0;       ///< 0, 1: the reflection is generated; 2: it lies on the mesh's coordinates
    int glossChannel = 0;            ///< 1: the gloss texture has coordinates of its own; 0: the diffuse texture's
    int diffuseBlend = 0;            ///< blending of the diffuse layer: 0 replace, 1 add, 2 multiply
    int reflectionBlend = 0;         ///< of the reflection layer: 1 add; 0, 2 multiply what lies below
    float vertexAlphaValue = 0.0F;   ///< 0 to 1
    float specularExponent = 0.0F;   ///< size of the highlight: the larger, the smaller

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

    /// Meshes refer to the material by it.
    [[nodiscard]] const S_String& getName() const noexcept { return name; }
    /// No back-face culling.
    [[nodiscard]] bool getTwoSided() const noexcept { return twoSided; }
    /// The material is fogged.
    [[nodiscard]] bool getFog() const noexcept { return fog; }
    /// Kept and compared, without effect.
    [[nodiscard]] bool getReservedFlag() const noexcept { return reservedFlag; }
    /// Geometry with this material is not drawn.
    [[nodiscard]] bool getInvisibleGeometry() const noexcept { return invisibleGeometry; }
    /// Drawn with the constant alpha `getVertexAlphaValue`.
    [[nodiscard]] bool getVertexAlpha() const noexcept { return vertexAlpha; }
    /// Shading layers come after the reflection layer.
    [[nodiscard]] bool getShadeReflection() const noexcept { return shadeReflection; }
    /// Pixels whose alpha is below the reference are not drawn.
    [[nodiscard]] bool getAlphaTest() const noexcept { return alphaTest; }
    /// Blending stays on beside the alpha test.
    [[nodiscard]] bool getAlphaBlend() const noexcept { return alphaBlend; }
    /// 0 to 255.
    [[nodiscard]] int getAlphaReference() const noexcept { return alphaReference; }
    /// Components 0 to 255.
    [[nodiscard]] const G_FColor& getAmbientColor() const noexcept { return ambientColor; }
    /// Of the solid colour layer, components 0 to 255.
    [[nodiscard]] const G_FColor& getDiffuseColor() const noexcept { return diffuseColor; }
    /// Of the highlight, components 0 to 255.
    [[nodiscard]] const G_FColor& getSpecularColor() const noexcept { return specularColor; }
    /// A Shading value.
    [[nodiscard]] int getShading() const noexcept { return shading; }
    /// 1: a specular shading layer.
    [[nodiscard]] int getSpecular() const noexcept { return specular; }
    /// 0, 1: the reflection is generated; 2: it lies on the mesh's coordinates.
    [[nodiscard]] int getReflectionMapping() const noexcept { return reflectionMapping; }
    /// 1: the gloss texture has coordinates of its own; 0: the diffuse texture's.
    [[nodiscard]] int getGlossChannel() const noexcept { return glossChannel; }
    /// 0 replace, 1 add, 2 multiply.
    [[nodiscard]] int getDiffuseBlend() const noexcept { return diffuseBlend; }
    /// 0 replace, 1 add, 2 multiply.
    [[nodiscard]] int getReflectionBlend() const noexcept { return reflectionBlend; }
    /// 0 to 1.
    [[nodiscard]] float getVertexAlphaValue() const noexcept { return vertexAlphaValue; }
    /// The larger, the smaller the highlight.
    [[nodiscard]] float getSpecularExponent() const noexcept { return specularExponent; }
    /// @}

    /// @name Texture slots
    /// The getters give null for a slot that is not present; `access` makes it present.
    /// @{

    /// The picture on the surface; without one its layer is the solid colour.
    [[nodiscard]] bool hasDiffuseTexture() const noexcept { return diffuseTexture.m_bPresent; }
    /// What is mirrored.
    [[nodiscard]] bool hasReflectionTexture() const noexcept { return reflectionTexture.m_bPresent; }
    /// Colour of the highlight.
    [[nodiscard]] bool hasSpecularTexture() const noexcept { return specularTexture.m_bPresent; }
    /// Where the surface is transparent: the alpha of the diffuse texture comes from here.
    [[nodiscard]] bool hasOpacityTexture() const noexcept { return opacityTexture.m_bPresent; }
    /// Where the surface mirrors.
    [[nodiscard]] bool hasGlossTexture() const noexcept { return glossTexture.m_bPresent; }
    /// The picture on the surface.
    [[nodiscard]] const MaterialTextureChunk* getDiffuseTexture() const noexcept { return getSlot(diffuseTexture); }
    /// What is mirrored.
    [[nodiscard]] const MaterialTextureChunk* getReflectionTexture() const noexcept
    {
        return getSlot(reflectionTexture);
    }
    /// Colour of the highlight.
    [[nodiscard]] const MaterialTextureChunk* getSpecularTexture() const noexcept { return getSlot(specularTexture); }
    /// Where the surface is transparent.
    [[nodiscard]] const MaterialTextureChunk* getOpacityTexture() const noexcept { return getSlot(opacityTexture); }
    /// Where the surface mirrors.
    [[nodiscard]] const MaterialTextureChunk* getGlossTexture() const noexcept { return getSlot(glossTexture); }
    /// The picture on the surface.
    MaterialTextureChunk& accessDiffuseTexture() { return accessSlot(diffuseTexture); }
    /// What is mirrored.
    MaterialTextureChunk& accessReflectionTexture() { return accessSlot(reflectionTexture); }
    /// Colour of the highlight.
    MaterialTextureChunk& accessSpecularTexture() { return accessSlot(specularTexture); }
    /// Where the surface is transparent.
    MaterialTextureChunk& accessOpacityTexture() { return accessSlot(opacityTexture); }
    /// Where the surface mirrors.
    MaterialTextureChunk& accessGlossTexture() { return accessSlot(glossTexture); }
    /// @}

    /// Whether the two give engine materials that differ only in colours and textures. Not compared: name, colours,
    /// `vertexAlphaValue`, `specularExponent`, names and files of the textures; of a slot only filter and mip levels.
    TW2_API friend bool operator==(const TWMaterialChunk& a, const TWMaterialChunk& b) noexcept;

private:
    struct SlotRecord : MaterialTextureChunk, S_Allocated
    {
    };

    /// A copy has a record of its own when the slot is present, else none. What is moved from is not present.
    struct TW2_API Slot
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

    [[nodiscard]] static const MaterialTextureChunk* getSlot(const Slot& slot) noexcept
    {
        return slot.m_bPresent ? slot.m_pTexture.get() : nullptr;
    }
    static MaterialTextureChunk& accessSlot(Slot& slot);

    Slot diffuseTexture;
    Slot reflectionTexture;
    Slot specularTexture;
    Slot opacityTexture;
    Slot glossTexture;

    static constexpr Slot TWMaterialChunk::*slots[] = {
        &TWMaterialChunk::diffuseTexture, &TWMaterialChunk::reflectionTexture, &TWMaterialChunk::specularTexture,
        &TWMaterialChunk::opacityTexture, &TWMaterialChunk::glossTexture};
};

/// Reads a material chunk of any version. Fields that the version does not carry, and slots that the file says are
/// absent, are left as they are: `reset` the record first.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, TWMaterialChunk& material);
/// Writes a chunk in the newest version. Throws S_MemoryException_Allocation.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const TWMaterialChunk& material);
}  // namespace TW2
