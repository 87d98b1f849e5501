#include "render/surface_kind.h"

#include <platform/scene/map.h>

#include <algorithm>

namespace TW2::render
{
namespace
{
/// Blending modes are multiples of this number.
constexpr unsigned int blendingStep = 0x200000;

SurfaceKind::Join chooseJoin(const P_Material& material, bool gouraud)
{
    if (!material.getPixelShaderName().empty())
    {
        return SurfaceKind::Join::SpecularShader;
    }
    switch (material.getSetUp())
    {
        case P_Material::SetUp::Texture:
        case P_Material::SetUp::TextureTransparent:
            return gouraud ? SurfaceKind::Join::Texture : SurfaceKind::Join::Layers;
        case P_Material::SetUp::TextureEnvironment:
            return SurfaceKind::Join::Environment;
        case P_Material::SetUp::Layers:
            break;
    }
    return SurfaceKind::Join::Layers;
}

void addTextureLayer(SurfaceKind& kind, const P_Material& material, const P_Material::TextureLayer& layer,
                     bool emissive)
{
    if (kind.m_uiUnits == SurfaceKind::mostUnits)
    {
        return;
    }
    const unsigned int set = std::min(layer.m_uiCoordinateSet, SurfaceKind::mostSets - 1);
    kind.m_sets[set] = material.getCoordinateSet(set);
    kind.m_layers[kind.m_uiLayers++] = {
        SurfaceKind::LayerKind::Texture,
        static_cast<SurfaceKind::Blending>(static_cast<unsigned int>(layer.m_eBlending) / blendingStep),
        kind.m_uiUnits++, static_cast<std::uint8_t>(set), emissive && layer.m_pMap && layer.m_pMap->isUniform()};
}

void addLayers(SurfaceKind& kind, const P_Material& material, bool gouraud)
{
    const bool emissive = material.hasEmissiveColor() && !gouraud;
    for (unsigned int i = 0; i < material.getLayerCount() && kind.m_uiLayers < SurfaceKind::mostLayers; ++i)
    {
        const P_Material::Layer& layer = material.getLayer(i);
        if (!layer.m_bShading)
        {
            addTextureLayer(kind, material, material.getTextureLayer(layer.m_uiIndex), emissive);
        }
        else if (kind.m_eJoin == SurfaceKind::Join::Layers)
        {
            const bool light = material.getShadingLayer(layer.m_uiIndex).m_eMode == P_Material::SHADING_MODE::Gouraud;
            kind.m_layers[kind.m_uiLayers++].m_eKind =
                light ? SurfaceKind::LayerKind::Gouraud : SurfaceKind::LayerKind::Specular;
        }
    }
}
}  // namespace

SurfaceKind describeSurface(const P_Material* material, unsigned int slots, const View& view)
{
    // Without a material: plain white under the lights.
    const bool lit = view.m_eSurface == View::Surface::Materials && (!material || material->isLightingEnabled());
    SurfaceKind kind{view.m_eSurface, static_cast<std::uint8_t>(slots), view.m_bHighlight, lit};
    const bool shown = view.m_eSurface == View::Surface::Materials || view.m_eSurface == View::Surface::Unlit;
    if (!material || !shown)
    {
        kind.m_layers[kind.m_uiLayers++].m_eKind = SurfaceKind::LayerKind::Gouraud;
        return kind;
    }
    const bool gouraud = material->hasShadingLayer(P_Material::SHADING_MODE::Gouraud);
    kind.m_eJoin = chooseJoin(*material, gouraud);
    kind.m_bBlended = material->isBlended();
    kind.m_bAlphaTested = material->isAlphaTestEnabled();
    kind.m_bFogged = view.m_bFog && material->isFoggingEnabled();
    addLayers(kind, *material, gouraud);
    return kind;
}
}  // namespace TW2::render
