#include "material/material_builder.h"

#include <tw2/material/material_chunk.h>

#include <platform/scene/driver.h>
#include <platform/scene/material_switch_object.h>

namespace TW2
{
namespace
{
using Blending = P_Material::BLENDING_MODE;
using Filter = P_Material::FILTER_MODE;

constexpr P_Material::TEXTURE_ADDRESS_MODE addressMode = P_Material::TEXTURE_ADDRESS_MODE::Wrap;

/// Values of TWMaterialChunk::reflectionMapping; 0 is the same as `REFLECTION_GENERATED`.
enum ReflectionMapping : int
{
    REFLECTION_GENERATED = 1,
    REFLECTION_OF_MESH = 2
};

/// The specular vertex colour must be computed for the pixel shader that reads it.
class SpecularMaterialSwitch final : public P_MaterialSwitchObject
{
public:
    void switchMaterial(P_Material*) override
    {
        P_Driver::m_initializedDriver->setRenderState(P_Driver::RENDER_STATE_SPECULAR_ENABLE, 1);
    }
};

SpecularMaterialSwitch s_specularMaterialSwitch;

constexpr const char* specularShaderName = "specular";
/// Diffuse vertex colour x diffuse texture + specular vertex colour x specular texture.
constexpr const char* specularShaderCode =
    "ps.1.0\n"
    "tex t0\n"
    "tex t1\n"
    "mul r1, v1, t1\n"
    "mad r0, v0, t0, r1\n";

/// Filter of the textures that have mip levels.
Filter withMipLevels(Filter filter, const MaterialTextureChunk& texture) noexcept
{
    if (texture.mipLevels != 1 && filter == Filter::Point)
    {
        return Filter::PointMipMapped;
    }
    return texture.mipLevels != 1 && filter == Filter::Bilinear ? Filter::BilinearMipMapped : filter;
}

Blending selectBlending(int selector) noexcept
{
    return selector == 1 ? Blending::Add : selector == 2 ? Blending::Modulate : Blending::Opaque;
}
}  // namespace

P_Material::FILTER_MODE TW_Material::Builder::selectFilter(int selector) noexcept
{
    switch (selector)
    {
        case 1:
            return Filter::Bilinear;
        case 2:
            return P_Material::getDefaultFilter();
        case 3:
            return Filter::Trilinear;
        case 4:
            return Filter::Anisotropic;
        default:
            return Filter::Point;
    }
}

/// Takes generated reflection coordinates from -1..1 to the texture's 0..1.
M_Matrix4Template<float> TW_Material::Builder::getEnvironmentMatrix() noexcept
{
    M_Matrix4Template<float> matrix;
    matrix.m[0][0] = 0.5F;
    matrix.m[1][1] = -0.5F;
    matrix.m[2][2] = 0.0F;
    matrix.m[3][0] = 0.5F;
    matrix.m[3][1] = 0.5F;
    matrix.m[3][2] = 1.0F;
    return matrix;
}

P_Material::BLENDING_MODE TW_Material::Builder::getDiffuseLayerBlending() const noexcept
{
    if (m_chunk.hasOpacityTexture())
    {
        return m_chunk.vertexAlpha ? Blending::TextureAndVertexAlpha : Blending::TextureAlpha;
    }
    return m_chunk.vertexAlpha ? Blending::VertexAlpha : selectBlending(m_chunk.diffuseBlend);
}

P_Material::BLENDING_MODE TW_Material::Builder::getSolidLayerBlending() const noexcept
{
    if (m_chunk.vertexAlpha)
    {
        return Blending::VertexAlpha;
    }
    return m_chunk.hasDiffuseTexture() ? Blending::Add : selectBlending(m_chunk.diffuseBlend);
}

void TW_Material::Builder::addDiffuseTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    const MaterialTextureChunk& texture = *m_chunk.getDiffuseTexture();
    m_pEngine->addTextureLayer(layer, set, getDiffuseLayerBlending(),
                               withMipLevels(selectFilter(texture.filter), texture), addressMode);
    setDiffuseTextureLayer(layer, set, map);
}

void TW_Material::Builder::setDiffuseTextureLayer(unsigned int layer, unsigned int, P_Map* map)
{
    m_pEngine->setTexture(layer, map);
    ++m_material.m_uTextureCoordinateLayerCount;
}

void TW_Material::Builder::addGlossTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    const MaterialTextureChunk& texture = *m_chunk.getGlossTexture();
    m_pEngine->addTextureLayer(layer, set, Blending::Modulate, withMipLevels(selectFilter(texture.filter), texture),
                               addressMode);
    setGlossTextureLayer(layer, set, map);
}

void TW_Material::Builder::setGlossTextureLayer(unsigned int layer, unsigned int, P_Map* map)
{
    m_pEngine->setTexture(layer, map);
}

void TW_Material::Builder::addReflectionTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    const Blending selected = selectBlending(m_chunk.reflectionBlend);
    const Blending blending = selected == Blending::Opaque && layer > 0 ? Blending::Modulate : selected;
    m_pEngine->addTextureLayer(layer, set, blending, selectFilter(m_chunk.getReflectionTexture()->filter), addressMode);
    if (isReflectionGenerated())
    {
        const int coordinateSet = static_cast<int>(set);
        m_pEngine->setTextureCoordinateSource(coordinateSet,
                                              P_Material::TextureCoordinateSource::CameraSpaceReflection);
        m_pEngine->enableTextureTransformation(coordinateSet, true);
        m_pEngine->enableTextureProjection(coordinateSet, true);
    }
    setReflectionTextureLayer(layer, set, map);
}

void TW_Material::Builder::setReflectionTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    m_pEngine->setTexture(layer, map);
    if (isReflectionGenerated())
    {
        m_material.setTextureMatrix(static_cast<int>(set), getEnvironmentMatrix());
    }
    else if (m_chunk.reflectionMapping == REFLECTION_OF_MESH)
    {
        ++m_material.m_uTextureCoordinateLayerCount;
    }
}

bool TW_Material::Builder::isReflectionGenerated() const noexcept
{
    return m_chunk.reflectionMapping == 0 || m_chunk.reflectionMapping == REFLECTION_GENERATED;
}

void TW_Material::Builder::addSpecularTextureLayer(P_Map* diffuse, P_Map* specular)
{
    const MaterialTextureChunk& texture = *m_chunk.getSpecularTexture();
    const Filter filter = withMipLevels(selectFilter(texture.filter), texture);
    m_pEngine->addTextureLayer(0, 0, Blending::Opaque, filter, addressMode);
    m_pEngine->addTextureLayer(1, 0, Blending::Add, filter, addressMode);
    m_pEngine->setPixelShader(specularShaderName, specularShaderCode);
    setSpecularTextureLayer(diffuse, specular);
}

void TW_Material::Builder::setSpecularTextureLayer(P_Map* diffuse, P_Map* specular)
{
    m_pEngine->setMaterialSwitchObjectBefore(&s_specularMaterialSwitch);
    m_pEngine->setTexture(0, diffuse);
    m_pEngine->setTexture(1, specular);
    m_pEngine->setSpecularColor(m_chunk.specularColor);
    m_pEngine->setSpecularExponent(m_chunk.specularExponent);
    ++m_material.m_uTextureCoordinateLayerCount;
}

void TW_Material::Builder::addDiffuseSolidLayer(unsigned int layer, unsigned int set, const G_FColor& color)
{
    m_pEngine->addTextureLayer(layer, set, getSolidLayerBlending(), Filter::Point, addressMode);
    setDiffuseSolidLayer(layer, set, color);
}

void TW_Material::Builder::setDiffuseSolidLayer(unsigned int layer, unsigned int, const G_FColor& color)
{
    P_Map* map = m_material.acquireSolidMap();
    m_material.m_solidColor = color;
    if (m_chunk.shading == TWMaterialChunk::SHADING_CONSTANT)
    {
        m_pEngine->setEmissiveColor(color);
    }
    else
    {
        m_pEngine->setDiffuseColor(color);
    }
    m_pEngine->setTexture(layer, map);
    ++m_material.m_uTextureCoordinateLayerCount;
}

void TW_Material::Builder::addShadingLayers(unsigned int layer)
{
    if (m_chunk.shading == TWMaterialChunk::SHADING_GOURAUD)
    {
        m_pEngine->addShadingLayer(P_Material::SHADING_MODE::Gouraud, layer != 0);
        ++layer;
    }
    if (hasHighlights())
    {
        m_pEngine->addShadingLayer(P_Material::SHADING_MODE::Specular, layer != 0);
        m_pEngine->enableSpecular(true);
    }
    setShadingLayers(layer);
}

/// A copy of a template gets its own highlights.
void TW_Material::Builder::setShadingLayers(unsigned int)
{
    if (hasHighlights())
    {
        m_pEngine->setSpecularColor(m_chunk.specularColor);
        m_pEngine->setSpecularExponent(m_chunk.specularExponent);
        m_material.m_bSpecularEnabled = true;
    }
}

bool TW_Material::Builder::hasHighlights() const noexcept
{
    return m_chunk.specular == 1 && !m_chunk.hasSpecularTexture();
}
}  // namespace TW2
