#include "tests/support/material_records.h"

#include <tw2/material/material_callback.h>

#include <platform/image/fcolor.h>
#include <platform/scene/map.h>

#include <map>
#include <sstream>
#include <string>

namespace support
{
namespace
{
/// What descriptions call the values of the engine's enumerations, by the numbers that its interface gives them.
using Names = std::map<unsigned int, const char*>;
const Names blendings = {{0, "opaque"},
                         {0x200000, "add"},
                         {0x400000, "modulate"},
                         {0x600000, "vertex-alpha"},
                         {0x800000, "texture-alpha"},
                         {0xA00000, "both-alphas"}};
const Names filters = {{0x1000000, "point"},      {0x2000000, "point-mip-mapped"},    {0x3000000, "point-mip-linear"},
                       {0x4000000, "bilinear"},   {0x5000000, "bilinear-mip-mapped"}, {0x6000000, "trilinear"},
                       {0x7000000, "anisotropic"}};
const Names shadings = {{0x40000, "gouraud"}, {0x100000, "specular"}};
const Names sources = {{0, "mesh"}, {2, "position"}, {3, "normal"}, {4, "reflection"}};
const Names setUps = {{0, "layers"}, {1, "texture"}, {2, "texture-environment"}, {3, "texture-transparent"}};

template <typename Enumeration>
std::string nameOf(Enumeration value, const Names& names)
{
    const auto found = names.find(static_cast<unsigned int>(value));
    return found != names.end() ? found->second : "unknown " + std::to_string(static_cast<unsigned int>(value));
}

std::string text(const G_FColor& color)
{
    std::ostringstream stream;
    stream << color.red << ' ' << color.green << ' ' << color.blue << ' ' << color.alpha;
    return stream.str();
}

std::string nameOf(const P_Map* map)
{
    if (!map)
    {
        return "none";
    }
    const auto name = [](const S_String& file) { return std::string(File.getFilename(file)); };
    if (map->getFilename().empty())
    {
        const unsigned char* pixel = map->getImage().getPixel(0, 0);
        const bool isWhite = map->isUniform() && pixel[0] == 255 && pixel[1] == 255 && pixel[2] == 255;
        return isWhite ? "white" : "image";
    }
    return name(map->getFilename()) +
           (map->getAlphaFilename().empty() ? std::string() : "+" + name(map->getAlphaFilename()));
}

void describeLayers(std::ostream& out, const P_Material& material)
{
    for (unsigned int i = 0; i < material.getLayerCount(); ++i)
    {
        const P_Material::Layer& layer = material.getLayer(i);
        if (layer.m_bShading)
        {
            const P_Material::ShadingLayer& shading = material.getShadingLayer(layer.m_uiIndex);
            out << "shading " << nameOf(shading.m_eMode, shadings) << (shading.m_bCombine ? " combined" : " first")
                << '\n';
            continue;
        }
        const P_Material::TextureLayer& texture = material.getTextureLayer(layer.m_uiIndex);
        out << "layer " << layer.m_uiIndex << ' ' << nameOf(texture.m_pMap) << " set " << texture.m_uiCoordinateSet
            << " blend " << nameOf(texture.m_eBlending, blendings) << " filter " << nameOf(texture.m_eFilter, filters);
        out << (texture.m_eAddress == P_Material::TEXTURE_ADDRESS_MODE::Wrap ? "\n" : " not wrapped\n");
    }
    for (unsigned int set = 0; set < material.getCoordinateSetCount(); ++set)
    {
        const P_Material::CoordinateSet coordinates = material.getCoordinateSet(set);
        if (coordinates != P_Material::CoordinateSet())
        {
            out << "set " << set << " source " << nameOf(coordinates.m_eSource, sources)
                << (coordinates.m_bTransformed ? " transformed" : "") << (coordinates.m_bProjected ? " projected" : "")
                << '\n';
        }
    }
}

void describeStates(std::ostream& out, const P_Material& material)
{
    const P_Material fresh;
    const auto colorLine = [&](const char* name, const G_FColor& color, const G_FColor& usual)
    { out << (color == usual ? std::string() : std::string(name) + ' ' + text(color) + '\n'); };
    colorLine("ambient", material.getAmbientColor(), fresh.getAmbientColor());
    colorLine("diffuse", material.getDiffuseColor(), fresh.getDiffuseColor());
    colorLine("emissive", material.getEmissiveColor(), fresh.getEmissiveColor());
    colorLine("specular", material.getSpecularColor(), fresh.getSpecularColor());
    if (material.getSpecularExponent() != 0)
    {
        out << "exponent " << material.getSpecularExponent() << '\n';
    }
    const auto line = [&](bool shown, const char* name) { out << (shown ? std::string(name) + '\n' : std::string()); };
    line(!material.isLightingEnabled(), "unlit");
    line(material.isSpecularEnabled(), "highlights");
    line(material.isFoggingEnabled(), "fog");
    line(material.getBackfaceCullingMode() == P_Material::CullingMode::None, "two-sided");
    line(material.isBlendingForcedOff(), "blending forced off");
    if (material.isAlphaTestEnabled())
    {
        out << "alpha test " << static_cast<int>(material.getAlphaReference()) << '\n';
    }
    if (material.getSortPriority() != P_Material::defaultSortPriority)
    {
        out << "priority " << material.getSortPriority() << '\n';
    }
    if (material.getSetUp() != P_Material::SetUp::Layers)
    {
        out << "set-up " << nameOf(material.getSetUp(), setUps) << '\n';
    }
    if (!material.getPixelShaderName().empty())
    {
        out << "shader " << material.getPixelShaderName().c_str() << '\n' << material.getPixelShaderCode().c_str();
        line(material.getMaterialSwitchObjectBefore() == nullptr, "no switch object");
    }
}
}  // namespace

TextureFolder::TextureFolder() : m_pPreviousDriver(P_Driver::m_initializedDriver)
{
    TW2::TW_Texture::clearTexturePathList();
    TW2::TW_Texture::addTexturePath(m_directory.getPath().string().c_str());
}

TextureFolder::~TextureFolder()
{
    TW2::TW_Texture::clearTexturePathList();
    TW2::TW_Texture::setCallback(nullptr);
    TW2::TW_Material::setCallback(nullptr);
    P_Driver::m_initializedDriver = m_pPreviousDriver;
}

void TextureFolder::add(std::initializer_list<const char*> names)
{
    for (const char* name : names)
    {
        ++m_shade;
        writePicture(m_directory, name, {m_shade, 100, 50, 255});
    }
}

void TextureFolder::useDriver(const P_DriverCaps& caps)
{
    m_driver.setDriverCaps(caps);
    P_Driver::m_initializedDriver = &m_driver;
}

std::string describe(const P_Material& material)
{
    std::ostringstream out;
    describeLayers(out, material);
    describeStates(out, material);
    return out.str();
}

std::string describe(const TW2::TW_Material& material)
{
    std::ostringstream out;
    out << describe(*material.getMaterial());
    if (material.hasSolidLayer())
    {
        out << "solid at " << material.getSolidLayerIndex() << ": " << text(material.getSolidColor()) << '\n';
    }
    if (material.hasVertexAlpha())
    {
        out << "vertex alpha " << material.getVertexAlpha() << '\n';
    }
    if (material.hasInvisibleGeometry())
    {
        out << "invisible\n";
    }
    for (int i = 0; i < material.getTextureMatrixCount(); ++i)
    {
        out << "matrix of layer " << material.getTextureMatrixTextureLayer(i) << ':';
        for (int element = 0; element < 16; ++element)
        {
            out << ' ' << material.getTextureMatrix(i).data()[element];
        }
        out << '\n';
    }
    out << "coordinates " << material.getTextureCoordinateLayerCount() << '\n';
    return out.str();
}
}  // namespace support
