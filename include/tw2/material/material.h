#pragma once

#include <tw2/export.h>

#include <platform/image/fcolor.h>
#include <platform/image/image.h>
#include <platform/math/matrix4.h>
#include <platform/runtime/allocator.h>

class P_Map;
class P_Material;

namespace TW2
{
class TextureAnimation;
class TW_MaterialCallback;
struct MaterialTextureChunk;
struct TWMaterialChunk;

/// An engine material built from a material record, with its textures and what meshes must know about it.
///
/// Building is expensive and the materials of a file often differ only in colours and files, so every built material
/// leaves a template behind: a record that is equal to an earlier one (TWMaterialChunk's ==) gets a copy of that engine
/// material with its own colours and textures. Templates go when the last material goes. Copies of a material share the
/// engine material and the textures, unless a texture is animated; the last one to go deletes them. Texture files are
/// looked up by TW_Texture. One thread at a time.
class TW2_API TW_Material : public S_Allocated
{
public:
    /// Texture slots of a built material.
    enum TextureType : int
    {
        TEXTURE_DIFFUSE = 0,
        TEXTURE_REFLECTION = 1,
        TEXTURE_GLOSS = 2,
        TEXTURE_SPECULAR = 3
    };
    static constexpr int textureTypeCount = 4;  ///< slots that a material can have

    /// @name Life
    /// @{

    /// Not constructed: no engine material, no textures, an empty name.
    TW_Material() noexcept { initializeMembers(); }
    /// Builds the material of a record; see `construct`.
    explicit TW_Material(const TWMaterialChunk& chunk) : TW_Material() { construct(chunk); }
    /// Shares the engine material and the textures, those of animated slots excepted.
    TW_Material(const TW_Material& other) : TW_Material() { construct(other); }
    /// The same; a material assigned to itself stays as it is.
    TW_Material& operator=(const TW_Material& other);
    /// The last copy deletes the engine material and lets its textures go.
    ~TW_Material() { destruct(); }

    /// Builds the material; the texture search path must be set. Throws TW_Exception_TextureNotFound for a file that is
    /// not found or a slot that names none, and what TW_Texture throws for a damaged one;
    /// TW_Exception_UnableToUseTextureModulate2XMaterial or TW_Exception_UnableToUseTextureEnvModulate2XMaterial when
    /// the engine refuses; P_DriverException for more layers than the driver takes. The material is then unconstructed.
    void construct(const TWMaterialChunk& chunk);
    void construct(const TW_Material& other);
    /// Back to the state before the first `construct`.
    void destruct() noexcept;
    /// @}

    /// @name Asking
    /// @{

    /// The record's name, by which meshes find the material.
    [[nodiscard]] const S_String& getName() const noexcept { return m_strName; }
    /// Null on an unconstructed material.
    [[nodiscard]] P_Material* getMaterial() const noexcept { return m_pMaterial; }
    /// Whether geometry with this material is not to be drawn.
    [[nodiscard]] bool hasInvisibleGeometry() const noexcept { return m_bInvisibleGeometry; }
    /// Whether one layer is a plain colour.
    [[nodiscard]] bool hasSolidLayer() const noexcept { return m_bSolidLayer; }
    /// The colour of that layer, components 0 to 255.
    [[nodiscard]] const G_FColor& getSolidColor() const noexcept { return m_solidColor; }
    /// The texture coordinate layer that meshes fill with (0, 0) for it.
    [[nodiscard]] int getSolidLayerIndex() const noexcept { return m_iSolidLayer; }
    /// Whether meshes carry a constant vertex alpha, and which (0 to 1).
    [[nodiscard]] bool hasVertexAlpha() const noexcept { return m_bVertexAlpha; }
    [[nodiscard]] float getVertexAlpha() const noexcept { return m_fVertexAlpha; }
    /// Texture coordinate sets that meshes with this material carry.
    [[nodiscard]] unsigned int getTextureCoordinateLayerCount() const noexcept
    {
        return m_uTextureCoordinateLayerCount;
    }
    /// @}

    /// @name Texture matrices, to be set on primitives with this material
    /// @{

    /// The first matrix set for a layer is the one of the layer; every call adds to the list.
    void setTextureMatrix(int layer, const M_Matrix4Template<float>& matrix);
    [[nodiscard]] bool hasTextureMatrix(int layer) const noexcept { return m_mapTextureMatrices.contains(layer); }
    /// Number of calls of `setTextureMatrix`.
    [[nodiscard]] int getTextureMatrixCount() const noexcept { return static_cast<int>(m_vecTextureMatrices.size()); }
    /// The layer that entry `index`, below the count, was set for.
    [[nodiscard]] int getTextureMatrixTextureLayer(int index) const noexcept;
    /// The matrix of entry `index`, below the count.
    [[nodiscard]] const M_Matrix4Template<float>& getTextureMatrix(int index) const noexcept;
    /// @}

    /// @name Texture animation
    /// A slot that the material does not have, and a type outside TextureType, gives false, 0 or an empty text.
    /// @{

    /// Binds the frame for a time in seconds. Negative and not-a-number times show frame 0, those past the last
    /// countable frame show that one. True if the slot has an animation.
    bool animateTexture(TextureType type, float seconds);
    /// Binds the frame nearest to a frame number, halves to even; limits as above.
    bool animateTextureFrame(TextureType type, float frame);
    /// Entries in playing order; a ping-pong sequence counts both ways.
    [[nodiscard]] unsigned int getTextureAnimationFrames(TextureType type) const noexcept;
    /// Frames per second.
    [[nodiscard]] float getTextureAnimationFPS(TextureType type) const noexcept;
    /// Rounds to the nearest whole number, halves to even, within the range of int; not-a-number changes nothing.
    void setTextureAnimationFPS(TextureType type, float rate) noexcept;
    /// Seconds; infinite for a rate of 0.
    [[nodiscard]] float getTextureAnimationLength(TextureType type) const noexcept;
    /// Name of the texture shown at a frame number, counted from the start frame.
    [[nodiscard]] S_String getTextureName(TextureType type, int frame) const;
    /// @}

    /// @name Texture memory: of the slots' textures; the plain white map of solid layers is not included
    /// @{

    /// Has them ready before they are first drawn; validates them first, and throws what that throws.
    void addToTextureMemory();
    /// Gives their memory back until they are needed again.
    void removeFromTextureMemory() noexcept;
    /// @}

    /// @name Callback (not owned; null: none)
    /// While one is installed, materials are built from scratch; what the callback changes stays in the template.
    /// @{

    /// Called for every engine material that is made, before it is prepared; the host keeps it alive while it is set.
    static void setCallback(TW_MaterialCallback* callback) noexcept { sm_pMaterialCallback = callback; }
    [[nodiscard]] static TW_MaterialCallback* getCallback() noexcept { return sm_pMaterialCallback; }
    /// @}

private:
    class Builder;

    /// Where a material keeps a slot's animation and the engine layer on which its map is bound.
    struct TextureSlot
    {
        int TW_Material::*m_pLayer;
        TextureAnimation* TW_Material::*m_pAnimation;
    };
    /// The slots in the order of `TextureType`.
    static const TextureSlot sm_aTextureSlots[textureTypeCount];

    void initializeMembers() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    [[nodiscard]] const TextureSlot* selectSlot(TextureType type) const noexcept;
    [[nodiscard]] bool canBeShared() const noexcept;
    void build(const TWMaterialChunk& chunk);
    void copy(const TW_Material& other, bool shareTextures);
    void copyValues(const TW_Material& other);
    void shareEngineMaterial(const TW_Material& other) noexcept;
    void copyEngineMaterial(const TW_Material& other);
    /// @name The white map of solid layers: made for the first material that has one, gone with the last
    /// @{
    P_Map* acquireSolidMap();
    void releaseSolidMap() noexcept;
    /// @}
    bool bindFrame(TextureType type, float position) noexcept;
    static void freeStaticData() noexcept;

    bool m_bConstructed;
    S_String m_strName;
    P_Material* m_pMaterial;
    S_OwnCounter* m_piReferenceCount;  // of copies that share engine material and animations; null: none do
    bool m_bInvisibleGeometry;
    bool m_bSpecularEnabled;
    S_Map<int, M_Matrix4Template<float>> m_mapTextureMatrices;
    S_Vector<int> m_vecTextureMatrixLayers;
    S_Vector<M_Matrix4Template<float>> m_vecTextureMatrices;
    int m_iDiffuseLayer;  // -1: none, as of the other slots
    TextureAnimation* m_pDiffuseAnimation;
    int m_iReflectionLayer;
    TextureAnimation* m_pReflectionAnimation;
    int m_iGlossLayer;
    TextureAnimation* m_pGlossAnimation;
    int m_iSpecularLayer;
    TextureAnimation* m_pSpecularAnimation;
    int m_iSolidLayer;
    bool m_bSolidLayer;
    G_FColor m_solidColor;
    bool m_bVertexAlpha;
    float m_fVertexAlpha;
    unsigned int m_uTextureCoordinateLayerCount;

    static S_Vector<TWMaterialChunk> sm_vecCreatedMaterials;
    static S_Vector<P_Material*> sm_vecTemplateMaterials;
    static S_Counter<int> sm_iTemplateMaterial;
    static P_Map* sm_pSolidMap;
    static G_Image* sm_pSolidImage;
    static S_Counter<int> sm_iSolidMapReferenceCnt;
    static TW_MaterialCallback* sm_pMaterialCallback;
};
}  // namespace TW2
