#include "material/material_builder.h"

#include <tw2/material/material_chunk.h>

#include <platform/scene/driver.h>
#include <platform/scene/material_switch_object.h>

#include <cstddef>

namespace TW2
{
namespace
{
using Blending = P_Material::BLENDING_MODE;
using Filter = P_Material::FILTER_MODE;

constexpr P_Material::TEXTURE_ADDRESS_MODE s_eAddress = P_Material::TEXTURE_ADDRESS_MODE::Wrap;

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

constexpr const char* s_szSpecularShaderName = "specular";
/// Diffuse vertex colour x diffuse texture + specular vertex colour x specular texture.
constexpr const char* s_szSpecularShaderCode =
    "ps.1.0\n"
    "tex t0\n"
    "tex t1\n"
    "mul r1, v1, t1\n"
    "mad r0, v0, t0, r1\n";

/// Filter of the textures that have mip levels.
Filter withMipLevels(Filter filter, const MaterialTextureChunk& texture) noexcept
{
    if (texture.mipLevels == 1)
    {
        return filter;
    }
    switch (filter)
    {
        case Filter::Point:
            return Filter::PointMipMapped;
        case Filter::Bilinear:
            return Filter::BilinearMipMapped;
        default:
            return filter;
    }
}

Blending selectBlending(int selector) noexcept
{
    switch (selector)
    {
        case 1:
            return Blending::Add;
        case 2:
            return Blending::Modulate;
        default:
            return Blending::Opaque;
    }
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
    matrix.m[0][0] = 0.5f;
    matrix.m[1][1] = -0.5f;
    matrix.m[2][2] = 0.0f;
    matrix.m[3][0] = 0.5f;
    matrix.m[3][1] = 0.5f;
    matrix.m[3][2] = 1.0f;
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

void TW_Material::Builder::diffuseTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    if (m_bNew)
    {
        const MaterialTextureChunk& texture = *m_chunk.getDiffuseTexture();
        m_pEngine->addTextureLayer(layer, set, getDiffuseLayerBlending(),
                                   withMipLevels(selectFilter(texture.filter), texture), s_eAddress);
    }
    m_pEngine->setTexture(layer, map);
    ++m_material.m_uTextureCoordinateLayerCount;
}

void TW_Material::Builder::glossTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    if (m_bNew)
    {
        const MaterialTextureChunk& texture = *m_chunk.getGlossTexture();
        m_pEngine->addTextureLayer(layer, set, Blending::Modulate, withMipLevels(selectFilter(texture.filter), texture),
                                   s_eAddress);
    }
    m_pEngine->setTexture(layer, map);
}

void TW_Material::Builder::reflectionTextureLayer(unsigned int layer, unsigned int set, P_Map* map)
{
    const int coordinateSet = static_cast<int>(set);
    const bool isGenerated = m_chunk.reflectionMapping == 0 || m_chunk.reflectionMapping == REFLECTION_GENERATED;
    if (m_bNew)
    {
        const Blending selected = selectBlending(m_chunk.reflectionBlend);
        const Blending blending = selected == Blending::Opaque && layer > 0 ? Blending::Modulate : selected;
        m_pEngine->addTextureLayer(layer, set, blending, selectFilter(m_chunk.getReflectionTexture()->filter),
                                   s_eAddress);
        if (isGenerated)
        {
            m_pEngine->setTextureCoordinateSource(coordinateSet,
                                                  P_Material::TextureCoordinateSource::CameraSpaceReflection);
            m_pEngine->enableTextureTransformation(coordinateSet, true);
            m_pEngine->enableTextureProjection(coordinateSet, true);
        }
    }
    m_pEngine->setTexture(layer, map);
    if (isGenerated)
    {
        m_material.setTextureMatrix(coordinateSet, getEnvironmentMatrix());
    }
    else if (m_chunk.reflectionMapping == REFLECTION_OF_MESH)
    {
        ++m_material.m_uTextureCoordinateLayerCount;
    }
}

void TW_Material::Builder::specularTextureLayers(P_Map* diffuse, P_Map* specular)
{
    if (m_bNew)
    {
        const MaterialTextureChunk& texture = *m_chunk.getSpecularTexture();
        const Filter filter = withMipLevels(selectFilter(texture.filter), texture);
        m_pEngine->addTextureLayer(0, 0, Blending::Opaque, filter, s_eAddress);
        m_pEngine->addTextureLayer(1, 0, Blending::Add, filter, s_eAddress);
        m_pEngine->setPixelShader(s_szSpecularShaderName, s_szSpecularShaderCode);
    }
    m_pEngine->setMaterialSwitchObjectBefore(&s_specularMaterialSwitch);
    m_pEngine->setTexture(0, diffuse);
    m_pEngine->setTexture(1, specular);
    m_pEngine->setSpecularColor(m_chunk.specularColor);
    m_pEngine->setSpecularExponent(m_chunk.specularExponent);
    ++m_material.m_uTextureCoordinateLayerCount;
}

void TW_Material::Builder::diffuseSolidLayer(unsigned int layer, unsigned int set, const G_FColor& color)
{
    P_Map* map = acquireSolidMap();
    m_material.m_bSolidLayer = true;
    m_material.m_solidColor = color;
    if (m_chunk.shading == TWMaterialChunk::SHADING_CONSTANT)
    {
        m_pEngine->setEmissiveColor(color);
    }
    else
    {
        m_pEngine->setDiffuseColor(color);
    }
    if (m_bNew)
    {
        m_pEngine->addTextureLayer(layer, set, getSolidLayerBlending(), Filter::Point, s_eAddress);
    }
    m_pEngine->setTexture(layer, map);
    ++m_material.m_uTextureCoordinateLayerCount;
}

/// Adds the layers to a new material; a copy of a template has them and only gets its own highlights.
void TW_Material::Builder::shadingLayers(unsigned int layer)
{
    if (m_bNew && m_chunk.shading == TWMaterialChunk::SHADING_GOURAUD)
    {
        m_pEngine->addShadingLayer(P_Material::SHADING_MODE::Gouraud, layer != 0);
        ++layer;
    }
    if (m_chunk.specular != 1 || m_chunk.hasSpecularTexture())
    {
        return;
    }
    if (m_bNew)
    {
        m_pEngine->addShadingLayer(P_Material::SHADING_MODE::Specular, layer != 0);
        m_pEngine->enableSpecular(true);
    }
    m_pEngine->setSpecularColor(m_chunk.specularColor);
    m_pEngine->setSpecularExponent(m_chunk.specularExponent);
    m_material.m_bSpecularEnabled = true;
}

std::unique_ptr<G_Image> TW_Material::Builder::createWhiteImage()
{
    constexpr unsigned int alphaByte = 3;
    const P_DriverCaps& caps = P_Driver::m_initializedDriver->getDriverCaps();
    auto image = std::make_unique<G_Image>(caps.m_uiMinimumTextureWidth, caps.m_uiMinimumTextureHeight);
    unsigned char* pixels = image->accessPixels();
    for (std::size_t byte = 0; byte < image->getSize(); ++byte)
    {
        if (byte % G_Image::bytesPerPixel != alphaByte)
        {
            pixels[byte] = 255;
        }
    }
    return image;
}
}  // namespace TW2
