#pragma once

#include <tw2/material/material.h>

#include <platform/scene/material.h>

#include <memory>

namespace TW2
{
/// One construction of a material from its record.
///
/// A record equal to one that a material was built from before gives a copy of that engine material, on which only the
/// material's own values are set; the layer operations therefore come in pairs, one that adds the layer and one that
/// sets the values.
class TW_Material::Builder
{
public:
    Builder(TW_Material& material, const TWMaterialChunk& chunk) noexcept : m_material(material), m_chunk(chunk) {}

    /// Leaves the template caches as they were when an exception passes.
    void build();

    /// The picture of the map of solid layers, as large as the driver's smallest texture.
    [[nodiscard]] static std::unique_ptr<G_Image> createWhiteImage();

private:
    class TemplateEntry;

    /// Coordinate sets of a material with a gloss texture.
    struct GlossCoordinateSets
    {
        unsigned int m_uGloss;
        unsigned int m_uReflection;
        unsigned int m_uSolid;
    };

    void buildEngineMaterial();
    void createTextures();
    void createTexture(TextureSlot& slot, const MaterialTextureChunk& texture, const char* slotName,
                       const MaterialTextureChunk* alpha = nullptr);
    void requireFiles(const MaterialTextureChunk& texture, const char* slotName) const;
    void buildLayers();
    void finish();

    [[nodiscard]] bool needsSolidLayer() const noexcept;
    [[nodiscard]] bool usesSpecularTexture() const noexcept;
    [[nodiscard]] bool isReadyMade() const noexcept;
    [[nodiscard]] P_Material::BLENDING_MODE getDiffuseLayerBlending() const noexcept;
    [[nodiscard]] P_Material::BLENDING_MODE getSolidLayerBlending() const noexcept;
    [[nodiscard]] static P_Material::FILTER_MODE selectFilter(int selector) noexcept;
    [[nodiscard]] static M_Matrix4Template<float> getEnvironmentMatrix() noexcept;
    [[nodiscard]] GlossCoordinateSets getGlossCoordinateSets() const noexcept;

    /// @name The set-ups
    /// @{
    void buildTransparent();
    void buildTextured();
    void buildEnvironment();
    void buildSpecular();
    void buildGloss();
    void buildGeneral();
    void bindReadyMadeDiffuse() noexcept;
    void initLayers();
    /// @}

    /// @name The layers: each function adds or sets, as the material is new or a copy of a template
    /// @{
    void diffuseTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void glossTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void reflectionTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void specularTextureLayers(P_Map* diffuse, P_Map* specular);
    void diffuseSolidLayer(unsigned int layer, unsigned int set, const G_FColor& color);
    void shadingLayers(unsigned int layer);
    /// @}

    TW_Material& m_material;
    const TWMaterialChunk& m_chunk;
    P_Material* m_pEngine = nullptr;
    bool m_bNew = true;
    int m_iLayers = 0;
    int m_iCoordinateSets = 0;
};
}  // namespace TW2
