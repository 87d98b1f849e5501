#pragma once

#include <tw2/material/material.h>

#include <platform/scene/material.h>

namespace TW2
{
/// One construction of a material from its record.
///
/// A record equal to one that a material was built from before gives a copy of that engine material, on which only the
/// material's own values are set. The layer operations therefore come in pairs: one adds the layer to a new engine
/// material, with the values, the other sets the values alone.
class TW_Material::Builder
{
public:
    Builder(TW_Material& material, const TWMaterialChunk& chunk) noexcept : m_material(material), m_chunk(chunk) {}

    /// Leaves the template caches as they were when an exception passes.
    void build();

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
    void requireFiles(const MaterialTextureChunk& texture, const char* slotName) const;
    void buildLayers();
    void finish();

    [[nodiscard]] bool needsSolidLayer() const noexcept;
    [[nodiscard]] bool usesSpecularTexture() const noexcept;
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

    /// @name The layers
    /// @{

    /// Calls the first operation of a pair for a new engine material, the second for a copy of a template.
    template <typename... Parameters, typename... Arguments>
    void addOrSet(void (Builder::*add)(Parameters...), void (Builder::*set)(Parameters...),
                  const Arguments&... arguments)
    {
        (this->*(m_bNew ? add : set))(static_cast<Parameters>(arguments)...);
    }
    void addDiffuseTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void setDiffuseTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void addGlossTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void setGlossTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void addReflectionTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void setReflectionTextureLayer(unsigned int layer, unsigned int set, P_Map* map);
    void addSpecularTextureLayer(P_Map* diffuse, P_Map* specular);
    void setSpecularTextureLayer(P_Map* diffuse, P_Map* specular);
    void addDiffuseSolidLayer(unsigned int layer, unsigned int set, const G_FColor& color);
    void setDiffuseSolidLayer(unsigned int layer, unsigned int set, const G_FColor& color);
    void addShadingLayers(unsigned int layer);
    void setShadingLayers(unsigned int layer);
    [[nodiscard]] bool isReflectionGenerated() const noexcept;
    [[nodiscard]] bool hasHighlights() const noexcept;
    /// @}

    TW_Material& m_material;
    const TWMaterialChunk& m_chunk;
    P_Material* m_pEngine = nullptr;
    bool m_bNew = true;
    int m_iLayers = 0;
    int m_iCoordinateSets = 0;
};
}  // namespace TW2
