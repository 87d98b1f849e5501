#include "render/material_uniforms.h"

#include <platform/scene/driver.h>
#include <platform/scene/map.h>
#include <platform/scene/material.h>
#include <platform/scene/material_switch_object.h>
#include <platform/scene/primitive_instance.h>

#include <algorithm>
#include <array>

namespace TW2::render
{
namespace
{
constexpr int mostLayers = 24;
constexpr int mostUnits = 8;
constexpr unsigned int mostSets = 8;

/// What the program tells apart; see shaders.cpp.
enum LayerKind : int
{
    LAYER_TEXTURE = 0,
    LAYER_GOURAUD = 1,
    LAYER_SPECULAR = 2
};
enum SetUpKind : int
{
    SETUP_LAYERS = 0,
    SETUP_TEXTURE = 1,
    SETUP_ENVIRONMENT = 2,
    SETUP_SPECULAR_SHADER = 3
};

/// Blending modes are multiples of this number.
constexpr unsigned int blendingStep = 0x200000;

struct Layers
{
    int m_iCount = 0;
    std::array<int, std::size_t{4} * mostLayers> m_values{};
    int m_iUnits = 0;
    std::array<int, mostUnits> m_uniformMaps{};

    void add(int kind, int blending, int unit, int set)
    {
        const std::array<int, 4> layer{kind, blending, unit, set};
        std::copy(layer.begin(), layer.end(), m_values.begin() + std::ptrdiff_t{4} * m_iCount);
        ++m_iCount;
    }

    void addTexture(TextureCache& textures, const P_Material::TextureLayer& layer)
    {
        if (m_iUnits == mostUnits)
        {
            return;
        }
        textures.bind(static_cast<unsigned int>(m_iUnits), layer.m_pMap, layer.m_eFilter, layer.m_eAddress);
        m_uniformMaps[static_cast<std::size_t>(m_iUnits)] = layer.m_pMap && layer.m_pMap->isUniform();
        add(LAYER_TEXTURE, static_cast<int>(static_cast<unsigned int>(layer.m_eBlending) / blendingStep), m_iUnits,
            static_cast<int>(std::min(layer.m_uiCoordinateSet, mostSets - 1)));
        ++m_iUnits;
    }
};

SetUpKind translate(const P_Material& material)
{
    if (!material.getPixelShaderName().empty())
    {
        return SETUP_SPECULAR_SHADER;
    }
    switch (material.getSetUp())
    {
        case P_Material::SetUp::Texture:
        case P_Material::SetUp::TextureTransparent:
            return SETUP_TEXTURE;
        case P_Material::SetUp::TextureEnvironment:
            return SETUP_ENVIRONMENT;
        case P_Material::SetUp::Layers:
            break;
    }
    return SETUP_LAYERS;
}

Layers collectLayers(TextureCache& textures, const P_Material& material, SetUpKind setUp)
{
    Layers layers;
    for (unsigned int i = 0; i < material.getLayerCount() && layers.m_iCount < mostLayers; ++i)
    {
        const P_Material::Layer& layer = material.getLayer(i);
        if (!layer.m_bShading)
        {
            layers.addTexture(textures, material.getTextureLayer(layer.m_uiIndex));
        }
        else if (setUp == SETUP_LAYERS)
        {
            const bool gouraud = material.getShadingLayer(layer.m_uiIndex).m_eMode == P_Material::SHADING_MODE::Gouraud;
            layers.add(gouraud ? LAYER_GOURAUD : LAYER_SPECULAR, 0, 0, 0);
        }
    }
    return layers;
}

void setCoordinates(GLProgram& program, const P_Material& material, const P_PrimitiveInstance& instance)
{
    std::array<int, std::size_t{4} * mostSets> sets{};
    std::array<M_Matrix4Template<float>, mostSets> matrices{};
    for (unsigned int set = 0; set < mostSets; ++set)
    {
        const P_Material::CoordinateSet description = material.getCoordinateSet(set);
        sets[std::size_t{4} * set] = static_cast<int>(description.m_eSource);
        sets[std::size_t{4} * set + 1] = description.m_bTransformed;
        sets[std::size_t{4} * set + 2] = description.m_bProjected;
        if (const auto* matrix = instance.getTextureMatrix(static_cast<int>(set)))
        {
            matrices[set] = *matrix;
        }
    }
    program.set("setCount", static_cast<int>(mostSets));
    program.setInt4s("sets", sets.data(), static_cast<int>(mostSets));
    program.setMatrices("textureMatrices", matrices.data(), static_cast<int>(mostSets));
}

void setLayers(GLProgram& program, const Layers& layers, SetUpKind setUp)
{
    program.set("layerCount", layers.m_iCount);
    program.setInt4s("layers", layers.m_values.data(), mostLayers);
    program.setInts("uniformMaps", layers.m_uniformMaps.data(), mostUnits);
    program.set("setUp", static_cast<int>(setUp));
}

void setColors(GLProgram& program, const P_Material& material)
{
    program.setColor("ambientColor", material.getAmbientColor());
    program.setColor("diffuseColor", material.getDiffuseColor());
    program.setColor("emissiveColor", material.getEmissiveColor());
    program.setColor("specularColor", material.getSpecularColor());
    program.set("specularExponent", material.getSpecularExponent());
}

void setStates(const P_Material& material)
{
    if (material.getBackfaceCullingMode() == P_Material::CullingMode::BackFaces)
    {
        glEnable(GL_CULL_FACE);
    }
    else
    {
        glDisable(GL_CULL_FACE);
    }
    if (material.isBlended())
    {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
    else
    {
        glDisable(GL_BLEND);
    }
}
}  // namespace

void setMaterial(GLProgram& program, TextureCache& textures, P_Material* material, const P_PrimitiveInstance& instance)
{
    static const P_Material s_plain = []
    {
        P_Material plain;
        plain.init(0, 0);
        plain.addShadingLayer(P_Material::SHADING_MODE::Gouraud, false);
        plain.enableLighting(true);
        return plain;
    }();
    const P_Material& used = material ? *material : s_plain;

    P_Driver::m_initializedDriver->clearRenderStates();
    if (P_MaterialSwitchObject* before = used.getMaterialSwitchObjectBefore())
    {
        before->switchMaterial(material);
    }
    const SetUpKind setUp = translate(used);
    const bool specularState =
        P_Driver::m_initializedDriver->getRenderState(P_Driver::RENDER_STATE_SPECULAR_ENABLE) != 0;

    setLayers(program, collectLayers(textures, used, setUp), setUp);
    setCoordinates(program, used, instance);
    setColors(program, used);
    if (setUp == SETUP_SPECULAR_SHADER && !specularState)
    {
        program.setColor("specularColor", G_FColor());
    }
    const bool gouraud = used.hasShadingLayer(P_Material::SHADING_MODE::Gouraud);
    program.set("emissiveShown", static_cast<int>(used.hasEmissiveColor() && !gouraud));
    program.set("lit", static_cast<int>(used.isLightingEnabled()));
    program.set("blended", static_cast<int>(used.isBlended()));
    program.set("alphaReference",
                used.isAlphaTestEnabled() ? static_cast<float>(used.getAlphaReference()) / 255.0F : -1.0F);
    program.set("fogged", static_cast<int>(used.isFoggingEnabled()));
    setStates(used);
}
}  // namespace TW2::render
