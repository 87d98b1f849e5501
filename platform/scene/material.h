#pragma once

#include <platform/export.h>
#include <platform/image/fcolor.h>
#include <platform/runtime/allocator.h>

class P_Map;
class P_MaterialSwitchObject;

/// How a surface looks: texture layers and shading layers laid over one another, colours and states.
///
/// A material is a description; a renderer reads it back and draws. The colour of a pixel is built from the layers in
/// the order in which they were added (`getLayer`):
///
/// - a texture layer brings the colour of its map at its texture coordinates, and its blending mode says how that joins
///   what the layers before it gave;
/// - a gouraud shading layer brings the light that falls on the vertex: emissive + ambient light x ambient colour + sum
///   over the lights of light colour x diffuse colour; it multiplies what is there, or is the colour when it comes
///   first;
/// - a specular shading layer adds the highlights of the lights (specular colour, exponent).
///
/// A layer whose map is one plain colour, in a material with an emissive colour and without a gouraud layer, shows the
/// emissive colour. The ready-made set-ups say in `SetUp` how their layers join. Colours are on the scale 0 to 255.
///
/// Maps and switch objects are referred to, not owned. Copies are independent of the original.
class TW2_PLATFORM_API P_Material : public S_Allocated
{
public:
    /// How a texture layer joins the layers before it. For layer 0 an alpha mode blends the whole material with the
    /// picture behind it; a later layer covers the layers before it by its alpha.
    enum class BLENDING_MODE : unsigned int
    {
        Opaque = 0,                       ///< replaces them
        Add = 0x200000,                   ///< is added
        Modulate = 0x400000,              ///< is multiplied
        VertexAlpha = 0x600000,           ///< covers by the alpha of the vertex colour
        TextureAlpha = 0x800000,          ///< covers by the alpha of the map
        TextureAndVertexAlpha = 0xA00000  ///< covers by the product of both
    };

    /// How a map is sampled between its pixels and its mip levels.
    enum class FILTER_MODE : unsigned int
    {
        Point = 0x1000000,              ///< nearest pixel, no mip levels
        PointMipMapped = 0x2000000,     ///< nearest pixel of the nearest mip level
        PointMipLinear = 0x3000000,     ///< nearest pixel, between two mip levels
        Bilinear = 0x4000000,           ///< between pixels, no mip levels
        BilinearMipMapped = 0x5000000,  ///< between pixels of the nearest mip level
        Trilinear = 0x6000000,          ///< between pixels and mip levels
        Anisotropic = 0x7000000         ///< trilinear, sharp at flat angles as well
    };

    /// What lies outside 0 to 1.
    enum class TEXTURE_ADDRESS_MODE : unsigned int
    {
        Wrap = 0,
        Mirror = 1,
        Clamp = 2
    };

    /// Kinds of shading layer.
    enum class SHADING_MODE : unsigned int
    {
        Gouraud = 0x40000,
        Specular = 0x100000
    };

    /// Where a texture coordinate set comes from.
    enum class TextureCoordinateSource : int
    {
        Mesh = 0,                  ///< the mesh's coordinates of that layer
        CameraSpacePosition = 2,   ///< the vertex in camera space
        CameraSpaceNormal = 3,     ///< the normal in camera space
        CameraSpaceReflection = 4  ///< the line of sight reflected at the vertex, in camera space, length 1
    };

    /// Which side of a triangle is left out.
    enum class CullingMode : int
    {
        None = 0,
        BackFaces = 1
    };

    /// Who put the layers together. `modulate 2x` doubles the product and cuts it at white.
    enum class SetUp : int
    {
        Layers,              ///< the caller, layer by layer
        Texture,             ///< texture layer 0 x gouraud, 2x
        TextureEnvironment,  ///< texture layer 0 x (gouraud + texture layer 1), 2x
        TextureTransparent   ///< texture layer 0 x gouraud, 2x, with alpha test and perhaps blending by the map's alpha
    };

    /// A picture on the surface.
    struct TextureLayer
    {
        unsigned int m_uiCoordinateSet = 0;                            ///< which coordinates it lies on
        BLENDING_MODE m_eBlending = BLENDING_MODE::Opaque;             ///< how it joins the layers before it
        FILTER_MODE m_eFilter = FILTER_MODE::Point;                    ///< between and beyond its pixels
        TEXTURE_ADDRESS_MODE m_eAddress = TEXTURE_ADDRESS_MODE::Wrap;  ///< outside of 0 to 1
        P_Map* m_pMap = nullptr;                                       ///< not owned; null: no picture
        bool m_bUsed = false;                                          ///< `addTextureLayer` was called for it
        friend bool operator==(const TextureLayer&, const TextureLayer&) noexcept = default;
    };

    /// Light on the surface.
    struct ShadingLayer
    {
        SHADING_MODE m_eMode = SHADING_MODE::Gouraud;  ///< which part of the light
        bool m_bCombine = false;                       ///< joins the layers before it; false: the first layer
        friend bool operator==(const ShadingLayer&, const ShadingLayer&) noexcept = default;
    };

    /// One layer in the order of adding: `m_uiIndex` counts texture layers by their number, shading layers as added.
    struct Layer
    {
        bool m_bShading = false;     ///< shading layer, else texture layer
        unsigned int m_uiIndex = 0;  ///< its number among those of its kind
        friend bool operator==(const Layer&, const Layer&) noexcept = default;
    };

    /// Where texture coordinates come from and what is done to them.
    struct CoordinateSet
    {
        TextureCoordinateSource m_eSource = TextureCoordinateSource::Mesh;  ///< before they are transformed
        bool m_bTransformed = false;  ///< multiplied by the primitive's texture matrix of this set
        bool m_bProjected = false;    ///< divided by its last component afterwards
        friend bool operator==(const CoordinateSet&, const CoordinateSet&) noexcept = default;
    };

    /// How far the material is on its way to being drawn.
    enum State : int
    {
        STATE_CREATED = 0,
        STATE_INITIALIZED = 1,  ///< `init` was called
        STATE_LAYERED = 2,      ///< it has a layer
        STATE_PREPARED = 3      ///< checked and ready
    };

    /// What the library asks about a material.
    struct InfoBlock
    {
        int m_iState = STATE_CREATED;         ///< a State
        unsigned int m_uiTextureLayers = 0;   ///< as `init` was told
        unsigned int m_uiCoordinateSets = 0;  ///< as `init` was told
    };

    static constexpr unsigned int maximumTextureLayers = 16;  ///< layers and coordinate sets have numbers below this

    P_Material();
    /// An independent copy with the same layers, maps, colours and states.
    P_Material(const P_Material& other);
    P_Material& operator=(const P_Material&) = delete;
    virtual ~P_Material();

    /// Makes the material ready to be drawn. Throws P_DriverException when it has more texture layers than the driver
    /// takes; materials with a pixel shader count what the shader samples.
    virtual void prepare();
    /// How far the material is, and how much room `init` made.
    [[nodiscard]] const InfoBlock& getInfoBlock() const noexcept { return m_infoBlock; }

    /// @name Layers
    /// @{

    /// Starts over with room for `textureLayers` layers and `coordinateSets` sets, no layer yet.
    void init(unsigned int textureLayers, unsigned int coordinateSets);
    /// Adds texture layer `layer`, after the layers added so far; one that exists is set anew in its place. Numbers
    /// past what `init` was told make room. Throws P_DriverException from `maximumTextureLayers` on.
    void addTextureLayer(unsigned int layer, unsigned int coordinateSet, BLENDING_MODE blending, FILTER_MODE filter,
                         TEXTURE_ADDRESS_MODE address);
    /// Binds a map (null: none). A number that is no texture layer is ignored.
    void setTexture(unsigned int layer, P_Map* map) noexcept;
    /// Adds a shading layer after the layers added so far; `combine` is false for the first layer.
    void addShadingLayer(SHADING_MODE mode, bool combine);

    /// Layers of both kinds.
    [[nodiscard]] unsigned int getLayerCount() const noexcept { return static_cast<unsigned int>(m_vecLayers.size()); }
    /// Layers of both kinds in the order of adding.
    [[nodiscard]] const Layer& getLayer(unsigned int index) const { return m_vecLayers.at(index); }
    /// Texture layers by number; those with `m_bUsed` false were never added.
    [[nodiscard]] unsigned int getTextureLayerCount() const noexcept
    {
        return static_cast<unsigned int>(m_vecTextureLayers.size());
    }
    /// One of `getTextureLayerCount()` layers; another number throws std::out_of_range.
    [[nodiscard]] const TextureLayer& getTextureLayer(unsigned int layer) const { return m_vecTextureLayers.at(layer); }
    /// The map bound to a layer; null for none and for a number that is no layer.
    [[nodiscard]] P_Map* getTexture(unsigned int layer) const noexcept;
    /// A shading layer in the order of adding; another number throws std::out_of_range.
    [[nodiscard]] const ShadingLayer& getShadingLayer(unsigned int index) const { return m_vecShadingLayers.at(index); }
    /// Whether a shading layer of that kind was added.
    [[nodiscard]] bool hasShadingLayer(SHADING_MODE mode) const noexcept;
    /// Who put the layers together.
    [[nodiscard]] SetUp getSetUp() const noexcept { return m_eSetUp; }
    void setSetUp(SetUp setUp) noexcept { m_eSetUp = setUp; }
    /// @}

    /// @name Texture coordinate sets, by number; one that was never touched takes the mesh's coordinates
    /// A negative number, or one from `maximumTextureLayers` on, throws P_DriverException.
    /// @{

    /// Where the coordinates of a set come from.
    void setTextureCoordinateSource(int set, TextureCoordinateSource source);
    /// Whether they are multiplied by the primitive's texture matrix of that set.
    void enableTextureTransformation(int set, bool on);
    /// Whether they are divided by their last component afterwards.
    void enableTextureProjection(int set, bool on);
    /// What is set of a set, or what holds for one that was never touched.
    [[nodiscard]] CoordinateSet getCoordinateSet(unsigned int set) const noexcept;
    /// Sets with numbers below this were touched, or made by `init`.
    [[nodiscard]] unsigned int getCoordinateSetCount() const noexcept
    {
        return static_cast<unsigned int>(m_vecCoordinateSets.size());
    }
    /// @}

    /// @name Colours: ambient and diffuse are white, emissive and specular black until set
    /// @{

    /// Multiplies the light from everywhere; components 0 to 255.
    void setAmbientColor(const G_FColor& color) noexcept { m_ambientColor = color; }
    /// Multiplies the light of lamps; components 0 to 255.
    void setDiffuseColor(const G_FColor& color) noexcept { m_diffuseColor = color; }
    /// Is added, also without any light; components 0 to 255.
    void setEmissiveColor(const G_FColor& color) noexcept
    {
        m_emissiveColor = color;
        m_bEmissive = true;
    }
    /// Multiplies the highlights; components 0 to 255.
    void setSpecularColor(const G_FColor& color) noexcept { m_specularColor = color; }
    /// The larger, the smaller the highlights.
    void setSpecularExponent(float exponent) noexcept { m_fSpecularExponent = exponent; }
    /// Components 0 to 255.
    [[nodiscard]] const G_FColor& getAmbientColor() const noexcept { return m_ambientColor; }
    /// Components 0 to 255.
    [[nodiscard]] const G_FColor& getDiffuseColor() const noexcept { return m_diffuseColor; }
    /// Components 0 to 255.
    [[nodiscard]] const G_FColor& getEmissiveColor() const noexcept { return m_emissiveColor; }
    /// Whether an emissive colour was set.
    [[nodiscard]] bool hasEmissiveColor() const noexcept { return m_bEmissive; }
    /// Components 0 to 255.
    [[nodiscard]] const G_FColor& getSpecularColor() const noexcept { return m_specularColor; }
    /// The larger, the smaller the highlights; 0 until set.
    [[nodiscard]] float getSpecularExponent() const noexcept { return m_fSpecularExponent; }
    /// @}

    /// @name States
    /// @{

    /// Off until switched on.
    void enableSpecular(bool on) noexcept { m_bSpecular = on; }
    /// Off until switched on.
    void enableLighting(bool on) noexcept { m_bLighting = on; }
    /// Off until switched on.
    void enableFogging(bool on) noexcept { m_bFogging = on; }
    /// Back faces until set.
    void setBackfaceCullingMode(CullingMode mode) noexcept { m_eCulling = mode; }
    /// Off until switched on: draws a pixel only when its alpha is not below the reference.
    void enableAlphaTest(bool on) noexcept { m_bAlphaTest = on; }
    /// 0 to 255; 0 until set.
    void setAlphaReference(unsigned char reference) noexcept { m_alphaReference = reference; }
    /// Never blends with the picture behind, whatever the layers say.
    void forceBlendingOff() noexcept { m_bBlendingForcedOff = true; }
    /// Materials with a lower priority are drawn first; `defaultSortPriority` until set.
    void setSortPriority(unsigned int priority) noexcept { m_uiSortPriority = priority; }
    /// Whether highlights are computed.
    [[nodiscard]] bool isSpecularEnabled() const noexcept { return m_bSpecular; }
    /// Whether lights count.
    [[nodiscard]] bool isLightingEnabled() const noexcept { return m_bLighting; }
    /// Whether fog covers it.
    [[nodiscard]] bool isFoggingEnabled() const noexcept { return m_bFogging; }
    /// Which side is left out.
    [[nodiscard]] CullingMode getBackfaceCullingMode() const noexcept { return m_eCulling; }
    /// Whether pixels below the reference are left out.
    [[nodiscard]] bool isAlphaTestEnabled() const noexcept { return m_bAlphaTest; }
    /// 0 to 255.
    [[nodiscard]] unsigned char getAlphaReference() const noexcept { return m_alphaReference; }
    /// Whether `forceBlendingOff` was called.
    [[nodiscard]] bool isBlendingForcedOff() const noexcept { return m_bBlendingForcedOff; }
    /// Lower ones are drawn first.
    [[nodiscard]] unsigned int getSortPriority() const noexcept { return m_uiSortPriority; }
    /// Whether the material is blended with the picture behind it: layer 0 has an alpha mode, nothing forbids it.
    [[nodiscard]] bool isBlended() const noexcept;
    static constexpr unsigned int defaultSortPriority = 3;  ///< of materials that were given none
    /// @}

    /// @name Pixel shader and switch object
    /// @{

    /// Replaces the joining of the layers by a shader given as text; `name` identifies equal shaders.
    void setPixelShader(const S_String& name, const S_String& code);
    /// Empty for none.
    [[nodiscard]] const S_String& getPixelShaderName() const noexcept { return m_strPixelShaderName; }
    /// Assembler text of shader version 1.0; empty for none.
    [[nodiscard]] const S_String& getPixelShaderCode() const noexcept { return m_strPixelShaderCode; }
    /// Called before the material is drawn with; null for none. Not owned.
    void setMaterialSwitchObjectBefore(P_MaterialSwitchObject* object) noexcept { m_pSwitchBefore = object; }
    [[nodiscard]] P_MaterialSwitchObject* getMaterialSwitchObjectBefore() const noexcept { return m_pSwitchBefore; }
    /// @}

    /// @name The filter of layers that ask for the default; trilinear until set
    /// @{

    /// For all materials of the process.
    [[nodiscard]] static FILTER_MODE getDefaultFilter() noexcept;
    static void setDefaultFilter(FILTER_MODE filter) noexcept;
    /// @}

private:
    CoordinateSet& accessCoordinateSet(int set);

    InfoBlock m_infoBlock;
    SetUp m_eSetUp = SetUp::Layers;
    S_Vector<Layer> m_vecLayers;
    S_Vector<TextureLayer> m_vecTextureLayers;
    S_Vector<ShadingLayer> m_vecShadingLayers;
    S_Vector<CoordinateSet> m_vecCoordinateSets;
    G_FColor m_ambientColor{255.0F, 255.0F, 255.0F};
    G_FColor m_diffuseColor{255.0F, 255.0F, 255.0F};
    G_FColor m_emissiveColor;
    G_FColor m_specularColor;
    float m_fSpecularExponent = 0.0F;
    unsigned int m_uiSortPriority = defaultSortPriority;
    CullingMode m_eCulling = CullingMode::BackFaces;
    unsigned char m_alphaReference = 0;
    bool m_bEmissive = false;
    bool m_bSpecular = false;
    bool m_bLighting = false;
    bool m_bFogging = false;
    bool m_bAlphaTest = false;
    bool m_bBlendingForcedOff = false;
    S_String m_strPixelShaderName;
    S_String m_strPixelShaderCode;
    P_MaterialSwitchObject* m_pSwitchBefore = nullptr;
};
