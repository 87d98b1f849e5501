#include "convert/material_builder.h"

#include "convert/unique_names.h"

#include <platform/runtime/file.h>

#include <cctype>
#include <map>
#include <string_view>

namespace TW2::convert
{
namespace
{
constexpr const char* textureFolder = "textures";
constexpr int trilinearFilter = 3;
constexpr int halfAlpha = 128;
constexpr float shiny = 1.5F;  // exponents below it give no highlight that could be told from plain light

/// The ending that the content of a picture file calls for.
const char* findEnding(const std::vector<unsigned char>& bytes)
{
    const std::string_view head(reinterpret_cast<const char*>(bytes.data()), std::min<std::size_t>(bytes.size(), 4));
    if (head.starts_with("\x89PNG"))
    {
        return ".png";
    }
    if (head.starts_with("\xFF\xD8"))
    {
        return ".jpg";
    }
    return head.starts_with("BM") ? ".bmp" : ".tga";
}

std::string makeFileName(const std::string& wanted)
{
    std::string name = wanted.substr(wanted.find_last_of("/\\") + 1);
    for (char& c : name)
    {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '-')
        {
            c = '_';
        }
    }
    return name;
}

/// Adds each picture once, under a name of its own.
class TextureFiles
{
public:
    explicit TextureFiles(OutputFiles& files) : m_files(files) {}

    std::string add(const TextureSource& source)
    {
        const std::string key = source.m_strFile.empty() ? "*" + source.m_strName : source.m_strFile;
        if (const auto known = m_mapNames.find(key); known != m_mapNames.end())
        {
            return known->second;
        }
        std::vector<unsigned char> bytes = source.m_vecBytes;
        std::string base = makeFileName(source.m_strFile.empty() ? source.m_strName : source.m_strFile);
        if (!source.m_strFile.empty())
        {
            const auto content = File.read(source.m_strFile);
            bytes.assign(content.begin(), content.end());
        }
        std::string ending;
        if (const std::size_t dot = base.find_last_of('.'); dot != std::string::npos && !source.m_strFile.empty())
        {
            ending = base.substr(dot);
            base.resize(dot);
        }
        else
        {
            base.resize(std::min(dot, base.size()));
            ending = findEnding(bytes);
        }
        const std::string name = m_names.make(base) + ending;
        m_files.add(std::string(textureFolder) + "/" + name, bytes.data(), bytes.size());
        return m_mapNames.emplace(key, name).first->second;
    }

private:
    OutputFiles& m_files;
    UniqueNames m_names{"texture"};
    std::map<std::string, std::string> m_mapNames;
};

void fillTexture(MaterialTextureChunk& slot, const std::string& name, const std::string& file)
{
    slot.name = name.c_str();
    slot.frameFiles.emplace_back(file.c_str());
    slot.filter = trilinearFilter;
}

TWMaterialChunk buildMaterial(const Surface& surface, TextureFiles& files)
{
    TWMaterialChunk material;
    material.name = surface.m_strName.c_str();
    material.twoSided = surface.m_bTwoSided;
    material.shading = TWMaterialChunk::SHADING_GOURAUD;
    material.diffuseColor = surface.m_diffuse;
    material.specularColor = surface.m_specular;
    material.specularExponent = surface.m_fShininess;
    const bool textured = !surface.m_diffuseTexture.m_strName.empty();
    material.ambientColor = textured ? G_FColor(255.0F, 255.0F, 255.0F) : surface.m_diffuse;
    if (textured)
    {
        fillTexture(material.accessDiffuseTexture(), surface.m_strName, files.add(surface.m_diffuseTexture));
        if (!surface.m_opacityTexture.m_strName.empty())
        {
            fillTexture(material.accessOpacityTexture(), surface.m_strName, files.add(surface.m_opacityTexture));
        }
        material.alphaTest = surface.m_bCutOut;
        material.alphaReference = halfAlpha;
    }
    else if (surface.m_fShininess > shiny && surface.m_specular.getRGB() != Vector3())
    {
        material.specular = 1;
    }
    if (surface.m_fOpacity < 1.0F)
    {
        material.vertexAlpha = true;
        material.vertexAlphaValue = surface.m_fOpacity;
    }
    return material;
}
}  // namespace

MaterialListChunk buildMaterials(const Model& model, OutputFiles& files)
{
    MaterialListChunk list;
    list.texturePath = textureFolder;
    TextureFiles textures(files);
    for (const Surface& surface : model.m_vecSurfaces)
    {
        list.materials.push_back(buildMaterial(surface, textures));
    }
    return list;
}
}  // namespace TW2::convert
