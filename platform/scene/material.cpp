#include <platform/runtime/str.h>
#include <platform/scene/driver.h>
#include <platform/scene/driver_exception.h>
#include <platform/scene/material.h>

#include <algorithm>

namespace
{
P_Material::FILTER_MODE s_eDefaultFilter = P_Material::FILTER_MODE::Trilinear;

void requireLayer(bool valid, const char* kind, long long number)
{
    if (!valid)
    {
        throw P_DriverException(
            S_STR("%s %lld lies outside 0 to %u", kind, number, P_Material::maximumTextureLayers - 1));
    }
}

/// How many maps a pixel shader samples: one per "tex" instruction.
unsigned int countSampledMaps(const S_String& code) noexcept
{
    constexpr const char* instruction = "tex ";
    unsigned int count = 0;
    for (std::size_t at = code.find(instruction); at != S_String::npos; at = code.find(instruction, at + 1))
    {
        const bool startsLine = at == 0 || code[at - 1] == '\n';
        count += startsLine ? 1 : 0;
    }
    return count;
}
}  // namespace

P_Material::P_Material() = default;
P_Material::P_Material(const P_Material& other) = default;
P_Material::~P_Material() = default;

void P_Material::prepare()
{
    const unsigned int limit = P_Driver::m_initializedDriver->getDriverCaps().m_uiTextureLayers;
    const auto layers = static_cast<unsigned int>(std::count_if(
        m_vecTextureLayers.begin(), m_vecTextureLayers.end(), [](const TextureLayer& layer) { return layer.m_bUsed; }));
    const unsigned int count = m_strPixelShaderCode.empty() ? layers : countSampledMaps(m_strPixelShaderCode);
    if (count > limit)
    {
        throw P_DriverException(S_STR("a material has %u texture layers, the driver takes %u", count, limit));
    }
    m_infoBlock.m_iState = STATE_PREPARED;
}

void P_Material::init(unsigned int textureLayers, unsigned int coordinateSets)
{
    m_vecLayers.clear();
    m_vecTextureLayers.clear();
    m_vecShadingLayers.clear();
    m_vecCoordinateSets.clear();
    m_vecTextureLayers.reserve(std::min(textureLayers, maximumTextureLayers));
    m_vecCoordinateSets.reserve(std::min(coordinateSets, maximumTextureLayers));
    m_eSetUp = SetUp::Layers;
    m_infoBlock = {STATE_INITIALIZED, textureLayers, coordinateSets};
}

void P_Material::addTextureLayer(unsigned int layer, unsigned int coordinateSet, BLENDING_MODE blending,
                                 FILTER_MODE filter, TEXTURE_ADDRESS_MODE address)
{
    requireLayer(layer < maximumTextureLayers, "texture layer", layer);
    requireLayer(coordinateSet < maximumTextureLayers, "texture coordinate set", coordinateSet);
    if (layer >= m_vecTextureLayers.size())
    {
        m_vecTextureLayers.resize(layer + 1);
    }
    TextureLayer& added = m_vecTextureLayers[layer];
    if (!added.m_bUsed)
    {
        m_vecLayers.push_back({false, layer});
    }
    added = {coordinateSet, blending, filter, address, added.m_pMap, true};
    m_infoBlock.m_iState = STATE_LAYERED;
}

void P_Material::setTexture(unsigned int layer, P_Map* map) noexcept
{
    if (layer < m_vecTextureLayers.size())
    {
        m_vecTextureLayers[layer].m_pMap = map;
    }
}

void P_Material::addShadingLayer(SHADING_MODE mode, bool combine)
{
    m_vecShadingLayers.reserve(m_vecShadingLayers.size() + 1);
    m_vecLayers.push_back({true, static_cast<unsigned int>(m_vecShadingLayers.size())});
    m_vecShadingLayers.push_back({mode, combine});
    m_infoBlock.m_iState = STATE_LAYERED;
}

P_Map* P_Material::getTexture(unsigned int layer) const noexcept
{
    return layer < m_vecTextureLayers.size() ? m_vecTextureLayers[layer].m_pMap : nullptr;
}

bool P_Material::hasShadingLayer(SHADING_MODE mode) const noexcept
{
    return std::any_of(m_vecShadingLayers.begin(), m_vecShadingLayers.end(),
                       [mode](const ShadingLayer& layer) { return layer.m_eMode == mode; });
}

P_Material::CoordinateSet& P_Material::accessCoordinateSet(int set)
{
    requireLayer(set >= 0 && static_cast<unsigned int>(set) < maximumTextureLayers, "texture coordinate set", set);
    const auto index = static_cast<std::size_t>(set);
    if (index >= m_vecCoordinateSets.size())
    {
        m_vecCoordinateSets.resize(index + 1);
    }
    return m_vecCoordinateSets[index];
}

void P_Material::setTextureCoordinateSource(int set, TextureCoordinateSource source)
{
    accessCoordinateSet(set).m_eSource = source;
}

void P_Material::enableTextureTransformation(int set, bool on)
{
    accessCoordinateSet(set).m_bTransformed = on;
}

void P_Material::enableTextureProjection(int set, bool on)
{
    accessCoordinateSet(set).m_bProjected = on;
}

P_Material::CoordinateSet P_Material::getCoordinateSet(unsigned int set) const noexcept
{
    return set < m_vecCoordinateSets.size() ? m_vecCoordinateSets[set] : CoordinateSet{};
}

bool P_Material::isBlended() const noexcept
{
    if (m_bBlendingForcedOff || m_vecTextureLayers.empty() || !m_vecTextureLayers[0].m_bUsed)
    {
        return false;
    }
    const BLENDING_MODE blending = m_vecTextureLayers[0].m_eBlending;
    return blending == BLENDING_MODE::VertexAlpha || blending == BLENDING_MODE::TextureAlpha ||
           blending == BLENDING_MODE::TextureAndVertexAlpha;
}

void P_Material::setPixelShader(const S_String& name, const S_String& code)
{
    S_String copiedName = name;
    m_strPixelShaderCode = code;
    m_strPixelShaderName.swap(copiedName);
}

P_Material::FILTER_MODE P_Material::getDefaultFilter() noexcept
{
    return s_eDefaultFilter;
}

void P_Material::setDefaultFilter(FILTER_MODE filter) noexcept
{
    s_eDefaultFilter = filter;
}
