#include "material/material_builder.h"

#include "material/material_set_up.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/texture.h>
#include <tw2/material/texture_animation.h>

#include <platform/runtime/rollback.h>
#include <platform/runtime/str.h>
#include <platform/scene/driver.h>
#include <platform/scene/material_helpers.h>

#include <algorithm>
#include <cstddef>

namespace TW2
{
namespace
{
using Filter = P_Material::FILTER_MODE;

bool runsPixelShaders() noexcept
{
    constexpr unsigned int versionMask = 0xFFFF;
    constexpr unsigned int version10 = 0x0100;
    return (P_Driver::m_initializedDriver->getDriverCaps().m_uiPixelShaderVersion & versionMask) >= version10;
}

P_Map* getFirstMap(const TextureAnimation* animation) noexcept
{
    return animation ? animation->getFrame(0)->getMap() : nullptr;
}
}  // namespace

/// Keeps a place for the material in both caches; without `fill` the place goes again.
class TW_Material::Builder::TemplateEntry
{
public:
    explicit TemplateEntry(const TWMaterialChunk& chunk) : m_uIndex(sm_vecCreatedMaterials.size())
    {
        sm_vecTemplateMaterials.resize(m_uIndex + 1);
        S_Rollback rollback([]() noexcept { sm_vecTemplateMaterials.pop_back(); });
        sm_vecCreatedMaterials.push_back(chunk);
        rollback.keep();
    }
    ~TemplateEntry()
    {
        if (!sm_vecTemplateMaterials[m_uIndex])
        {
            const auto place = static_cast<std::ptrdiff_t>(m_uIndex);
            sm_vecTemplateMaterials.erase(sm_vecTemplateMaterials.begin() + place);
            sm_vecCreatedMaterials.erase(sm_vecCreatedMaterials.begin() + place);
        }
    }
    TemplateEntry(const TemplateEntry&) = delete;
    TemplateEntry& operator=(const TemplateEntry&) = delete;

    void fill(const P_Material& material) { sm_vecTemplateMaterials[m_uIndex] = new P_Material(material); }

private:
    std::size_t m_uIndex;
};

void TW_Material::Builder::build()
{
    if (!sm_pMaterialCallback)
    {
        // A place without template belongs to a material that is still being built.
        for (std::size_t i = 0; i < sm_vecCreatedMaterials.size(); ++i)
        {
            if (sm_vecTemplateMaterials[i] && sm_vecCreatedMaterials[i] == m_chunk)
            {
                m_bNew = false;
                m_pEngine = m_material.m_pMaterial = new P_Material(*sm_vecTemplateMaterials[i]);
                buildEngineMaterial();
                return;
            }
        }
    }
    TemplateEntry entry(m_chunk);
    m_pEngine = m_material.m_pMaterial = new P_Material;
    buildEngineMaterial();
    if (m_pEngine->getInfoBlock().m_iState < P_Material::STATE_PREPARED)
    {
        m_pEngine->prepare();
    }
    entry.fill(*m_pEngine);
}

void TW_Material::Builder::buildEngineMaterial()
{
    m_pEngine->setAmbientColor(m_chunk.ambientColor);
    createTextures();
    if (needsSolidLayer())
    {
        ++m_iLayers;
        ++m_iCoordinateSets;
    }
    if (sm_pMaterialCallback)
    {
        (*sm_pMaterialCallback)(m_iLayers, m_iCoordinateSets, m_chunk);
    }
    buildLayers();
    finish();
    if (sm_pMaterialCallback)
    {
        (*sm_pMaterialCallback)(m_pEngine, m_chunk);
    }
}

/// Creates the textures of the slots that the material uses, and counts layers and coordinate sets.
void TW_Material::Builder::createTextures()
{
    if (m_chunk.hasDiffuseTexture() && m_chunk.hasOpacityTexture())
    {
        requireFiles(*m_chunk.getOpacityTexture(), "opacity");
    }
    const struct
    {
        const char* m_szName;
        const MaterialTextureChunk* m_pTexture;
        const MaterialTextureChunk* m_pAlpha;
        TextureAnimation*& m_pAnimation;
        int m_iCoordinateSets;
    } slots[] = {
        {"diffuse", m_chunk.getDiffuseTexture(), m_chunk.getOpacityTexture(), m_material.m_pDiffuseAnimation, 1},
        {"reflection", m_chunk.getReflectionTexture(), nullptr, m_material.m_pReflectionAnimation, 1},
        {"gloss", m_chunk.getGlossTexture(), nullptr, m_material.m_pGlossAnimation, m_chunk.glossChannel == 1 ? 1 : 0},
        {"specular", usesSpecularTexture() ? m_chunk.getSpecularTexture() : nullptr, nullptr,
         m_material.m_pSpecularAnimation, 0}};
    for (const auto& slot : slots)
    {
        if (slot.m_pTexture)
        {
            requireFiles(*slot.m_pTexture, slot.m_szName);
            try
            {
                slot.m_pAnimation = new TextureAnimation(*slot.m_pTexture, slot.m_pAlpha);
            }
            catch (TW_Exception_TextureNotFound& exception)
            {
                exception.addHint("%s texture of material \"%s\"", slot.m_szName, m_chunk.name.c_str());
                throw;
            }
            ++m_iLayers;
            m_iCoordinateSets += slot.m_iCoordinateSets;
        }
    }
}

void TW_Material::Builder::requireFiles(const MaterialTextureChunk& texture, const char* slotName) const
{
    if (texture.frameFiles.empty())
    {
        throw TW_Exception_TextureNotFound(
            S_STR("%s texture of material '%s', for which no file is named", slotName, m_chunk.name.c_str()));
    }
}

void TW_Material::Builder::buildLayers()
{
    switch (selectSetUp(m_chunk, runsPixelShaders()))
    {
        case MaterialSetUp::Transparent:
            return buildTransparent();
        case MaterialSetUp::Textured:
            return buildTextured();
        case MaterialSetUp::Environment:
            return buildEnvironment();
        case MaterialSetUp::Specular:
            return buildSpecular();
        case MaterialSetUp::Gloss:
            return buildGloss();
        case MaterialSetUp::General:
            return buildGeneral();
    }
}

void TW_Material::Builder::finish()
{
    m_material.m_bVertexAlpha = m_chunk.vertexAlpha;
    if (m_chunk.vertexAlpha)
    {
        m_material.m_fVertexAlpha = m_chunk.vertexAlphaValue;
    }
    if (!m_bNew)
    {
        return;
    }
    if (m_chunk.fog)
    {
        m_pEngine->enableFogging(true);
    }
    m_pEngine->setBackfaceCullingMode(m_chunk.twoSided ? P_Material::CullingMode::None
                                                       : P_Material::CullingMode::BackFaces);
    m_pEngine->enableLighting(true);
    if (m_material.m_bSpecularEnabled)
    {
        m_pEngine->enableSpecular(true);
    }
}

bool TW_Material::Builder::needsSolidLayer() const noexcept
{
    return m_chunk.shading == TWMaterialChunk::SHADING_CONSTANT ||
           (m_chunk.shading == TWMaterialChunk::SHADING_GOURAUD && !m_chunk.hasDiffuseTexture());
}

/// A driver without pixel shaders ignores the specular texture.
bool TW_Material::Builder::usesSpecularTexture() const noexcept
{
    return m_chunk.hasSpecularTexture() && runsPixelShaders();
}

void TW_Material::Builder::buildTransparent()
{
    constexpr unsigned int sortPriority = 6;
    const Filter filter = selectFilter(m_chunk.getDiffuseTexture()->filter);
    if (m_bNew && !P_MaterialHelpers::makeTextureTransparent(m_pEngine, filter, m_chunk.alphaBlend, true, true))
    {
        throw TW_Exception_UnableToUseTextureModulate2XMaterial(m_chunk.name.c_str());
    }
    bindReadyMadeDiffuse();
    m_pEngine->setAlphaReference(static_cast<unsigned char>(m_chunk.alphaReference));
    m_pEngine->setSortPriority(sortPriority);
}

void TW_Material::Builder::buildTextured()
{
    const Filter filter = selectFilter(m_chunk.getDiffuseTexture()->filter);
    if (m_bNew && !P_MaterialHelpers::makeTexture(m_pEngine, filter))
    {
        throw TW_Exception_UnableToUseTextureModulate2XMaterial(m_chunk.name.c_str());
    }
    bindReadyMadeDiffuse();
}

void TW_Material::Builder::buildEnvironment()
{
    constexpr int layer = 1;
    const Filter filter = selectFilter(m_chunk.getDiffuseTexture()->filter);
    if (m_bNew && !P_MaterialHelpers::makeTextureEnv(m_pEngine, filter))
    {
        throw TW_Exception_UnableToUseTextureEnvModulate2XMaterial(m_chunk.name.c_str());
    }
    m_material.setTextureMatrix(layer, getEnvironmentMatrix());
    bindReadyMadeDiffuse();
    m_pEngine->setTexture(layer, getFirstMap(m_material.m_pReflectionAnimation));
    m_material.m_iReflectionLayer = layer;
}

void TW_Material::Builder::bindReadyMadeDiffuse() noexcept
{
    m_pEngine->setTexture(0, getFirstMap(m_material.m_pDiffuseAnimation));
    m_material.m_iDiffuseLayer = 0;
    m_material.m_uTextureCoordinateLayerCount = 1;
}

void TW_Material::Builder::initLayers()
{
    if (m_bNew)
    {
        m_pEngine->init(static_cast<unsigned int>(std::max(m_iLayers, 0)),
                        static_cast<unsigned int>(std::max(m_iCoordinateSets, 0)));
    }
}

void TW_Material::Builder::buildSpecular()
{
    initLayers();
    addOrSet(&Builder::addSpecularTextureLayer, &Builder::setSpecularTextureLayer,
             getFirstMap(m_material.m_pDiffuseAnimation), getFirstMap(m_material.m_pSpecularAnimation));
    m_material.m_iDiffuseLayer = 0;
    m_material.m_iSpecularLayer = 1;
}

TW_Material::Builder::GlossCoordinateSets TW_Material::Builder::getGlossCoordinateSets() const noexcept
{
    if (!m_chunk.hasDiffuseTexture())
    {
        return {.m_uGloss = 0, .m_uReflection = 1, .m_uSolid = 2};
    }
    if (m_chunk.glossChannel == 0)
    {
        return {.m_uGloss = 0, .m_uReflection = 1, .m_uSolid = 3};
    }
    return {.m_uGloss = 1, .m_uReflection = 2, .m_uSolid = 3};
}

void TW_Material::Builder::buildGloss()
{
    initLayers();
    const GlossCoordinateSets sets = getGlossCoordinateSets();
    unsigned int layer = 0;
    if (m_chunk.hasReflectionTexture())
    {
        addOrSet(&Builder::addReflectionTextureLayer, &Builder::setReflectionTextureLayer, layer, sets.m_uReflection,
                 getFirstMap(m_material.m_pReflectionAnimation));
        m_material.m_iReflectionLayer = 0;
        ++layer;
        if (m_chunk.shadeReflection)
        {
            addOrSet(&Builder::addShadingLayers, &Builder::setShadingLayers, layer);
        }
    }
    addOrSet(&Builder::addGlossTextureLayer, &Builder::setGlossTextureLayer, layer, sets.m_uGloss,
             getFirstMap(m_material.m_pGlossAnimation));
    m_material.m_iGlossLayer = static_cast<int>(layer++);
    if (m_chunk.hasDiffuseTexture())
    {
        addOrSet(&Builder::addDiffuseTextureLayer, &Builder::setDiffuseTextureLayer, layer, 0,
                 getFirstMap(m_material.m_pDiffuseAnimation));
        m_material.m_iDiffuseLayer = static_cast<int>(layer++);
    }
    if (needsSolidLayer())
    {
        addOrSet(&Builder::addDiffuseSolidLayer, &Builder::setDiffuseSolidLayer, layer, sets.m_uSolid,
                 m_chunk.diffuseColor);
        m_material.m_iSolidLayer = static_cast<int>(sets.m_uSolid);
        ++layer;
    }
    addOrSet(&Builder::addShadingLayers, &Builder::setShadingLayers, layer);
}

void TW_Material::Builder::buildGeneral()
{
    initLayers();
    unsigned int layer = 0;
    bool shadingPending = false;
    if (m_chunk.hasDiffuseTexture())
    {
        addOrSet(&Builder::addDiffuseTextureLayer, &Builder::setDiffuseTextureLayer, layer, layer,
                 getFirstMap(m_material.m_pDiffuseAnimation));
        m_material.m_iDiffuseLayer = 0;
        ++layer;
        shadingPending = true;
    }
    if (needsSolidLayer())
    {
        addOrSet(&Builder::addDiffuseSolidLayer, &Builder::setDiffuseSolidLayer, layer, layer, m_chunk.diffuseColor);
        m_material.m_iSolidLayer = static_cast<int>(layer);
        ++layer;
        shadingPending = shadingPending || m_chunk.shading == TWMaterialChunk::SHADING_GOURAUD;
    }
    const bool shadeBeforeReflection = shadingPending && !m_chunk.shadeReflection;
    if (shadeBeforeReflection)
    {
        addOrSet(&Builder::addShadingLayers, &Builder::setShadingLayers, layer);
    }
    if (m_chunk.hasReflectionTexture())
    {
        addOrSet(&Builder::addReflectionTextureLayer, &Builder::setReflectionTextureLayer, layer, layer,
                 getFirstMap(m_material.m_pReflectionAnimation));
        m_material.m_iReflectionLayer = static_cast<int>(layer);
        ++layer;
    }
    if (!shadeBeforeReflection)
    {
        addOrSet(&Builder::addShadingLayers, &Builder::setShadingLayers, layer);
    }
    if (m_bNew && m_chunk.alphaTest)
    {
        m_pEngine->enableAlphaTest(true);
        m_pEngine->setAlphaReference(static_cast<unsigned char>(m_chunk.alphaReference));
        if (!m_chunk.alphaBlend)
        {
            m_pEngine->forceBlendingOff();
        }
    }
}
}  // namespace TW2
