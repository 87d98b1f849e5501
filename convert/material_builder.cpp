#include "convert/material_builder.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
constexpr int nearestFilter = 0;
constexpr int bilinearFilter = 1;
constexpr int trilinearFilter = 3;
constexpr int meshCoordinates = 2;
constexpr int blendAdd = 1;
constexpr int blendMultiply = 2;
constexpr float shiny = 1.5F;  // exponents below it give no highlight that could be told from plain light

void fillTexture(MaterialTextureChunk& slot, const std::string& name, const std::string& file,
                 const LayerCoordinates& layer)
{
    slot.name = name.c_str();
    slot.frameFiles.emplace_back(file.c_str());
    // The colours of vertices would run into each other in smaller copies of their picture.
    slot.filter = layer.m_pColors ? bilinearFilter : layer.m_texture.m_bCoarse ? nearestFilter : trilinearFilter;
    slot.mipLevels = layer.m_pColors ? 1 : 0;
}

/// The smallest of 256 steps of alpha that is not below the cut-off.
int toReference(float cutOff)
{
    constexpr float rounding = 1e-3F;
    return static_cast<int>(std::ceil(std::clamp(cutOff, 0.0F, 1.0F) * 255.0F - rounding));
}

void setAlpha(const Surface& surface, const SurfacePlan& plan, TWMaterialChunk& material)
{
    const bool textured = !plan.m_strBase.empty();
    const bool blended = surface.m_eAlpha == Surface::Alpha::Blend;
    material.vertexAlpha = textured || (blended && plan.m_fOpacity < 1.0F);
    material.vertexAlphaValue = plan.m_fOpacity;
    material.alphaTest = textured && !blended;
    material.alphaReference = surface.m_eAlpha == Surface::Alpha::Mask ? toReference(surface.m_fCutOff) : 0;
    material.invisibleGeometry = plan.m_bInvisible;
}

TWMaterialChunk buildMaterial(const Surface& surface, const SurfacePlan& plan)
{
    TWMaterialChunk material;
    material.name = surface.m_strName.c_str();
    material.twoSided = surface.m_bTwoSided;
    material.diffuseColor = plan.m_color;
    material.specularColor = surface.m_specular;
    material.specularExponent = surface.m_fShininess;
    const bool textured = !plan.m_strBase.empty();
    material.ambientColor = textured ? G_FColor(255.0F, 255.0F, 255.0F) : plan.m_color;
    material.shading = !surface.m_bUnlit ? TWMaterialChunk::SHADING_GOURAUD
                       : textured        ? TWMaterialChunk::SHADING_NONE
                                         : TWMaterialChunk::SHADING_CONSTANT;
    if (textured)
    {
        fillTexture(material.accessDiffuseTexture(), surface.m_strName, plan.m_strBase, plan.m_vecLayers.front());
    }
    if (!plan.m_strOpacity.empty())
    {
        fillTexture(material.accessOpacityTexture(), surface.m_strName, plan.m_strOpacity, plan.m_vecLayers.front());
    }
    if (plan.m_eSecond != SurfacePlan::Second::None)
    {
        fillTexture(material.accessReflectionTexture(), surface.m_strName, plan.m_strSecond, plan.m_vecLayers.back());
        material.reflectionMapping = meshCoordinates;
        material.reflectionBlend = plan.m_eSecond == SurfacePlan::Second::Add ? blendAdd : blendMultiply;
    }
    setAlpha(surface, plan, material);
    if (!surface.m_bUnlit && surface.m_fShininess > shiny && surface.m_specular.getRGB() != Vector3())
    {
        material.specular = 1;
    }
    return material;
}
}  // namespace

MaterialListChunk buildMaterials(const Model& model, const std::vector<SurfacePlan>& plans)
{
    MaterialListChunk list;
    list.texturePath = TextureFiles::folderName;
    for (std::size_t i = 0; i < plans.size(); ++i)
    {
        list.materials.push_back(buildMaterial(model.m_vecSurfaces[i], plans[i]));
    }
    return list;
}
}  // namespace TW2::convert
