#include "convert/surface_import.h"

#include <platform/image/image.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace TW2::convert
{
namespace
{
G_FColor toColor(const aiColor4D& color)
{
    return G_FColor(color.r, color.g, color.b, 1.0F) * 255.0F;
}

std::string baseName(const std::string& path)
{
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

/// The file that a model means by `name`: as written, then by its last part beside the model or in a folder of
/// textures. Empty when there is none.
std::string findPicture(const std::string& name, const std::string& modelFile)
{
    const std::string folder = std::filesystem::path(modelFile).parent_path().string();
    const std::string beside = folder.empty() ? std::string() : folder + "/";
    const std::string last = baseName(name);
    for (const std::string& candidate :
         {name, beside + name, beside + last, beside + "textures/" + last, beside + "../textures/" + last})
    {
        if (!candidate.empty() && File.exists(candidate.c_str()))
        {
            const S_String found = File.findOnDisk(candidate);
            return {found.begin(), found.end()};
        }
    }
    return {};
}

/// Whether the picture can be decoded; the reason is put into `reason` when not. `transparent`: any pixel is clear.
bool decode(const TextureSource& source, bool& transparent, std::string& reason)
{
    try
    {
        const G_Image image =
            source.m_vecBytes.empty()
                ? G_Image(source.m_strFile.c_str())
                : G_Image::decode(source.m_vecBytes.data(), source.m_vecBytes.size(), source.m_strName.c_str());
        transparent = false;
        for (std::size_t i = 3; i < image.getSize() && !transparent; i += G_Image::bytesPerPixel)
        {
            transparent = image.getPixels()[i] < 128;
        }
        return true;
    }
    catch (const S_Exception& exception)
    {
        reason = exception.getErrorMessage();
        return false;
    }
}

std::vector<unsigned char> encodeTexels(const aiTexture& texture)
{
    G_Image image(texture.mWidth, texture.mHeight);
    for (std::size_t i = 0; i < std::size_t{texture.mWidth} * texture.mHeight; ++i)
    {
        const aiTexel& texel = texture.pcData[i];
        const unsigned char pixel[] = {texel.r, texel.g, texel.b, texel.a};
        std::memcpy(image.accessPixels() + i * G_Image::bytesPerPixel, pixel, sizeof pixel);
    }
    const auto bytes = image.encodePNG();
    return {bytes.begin(), bytes.end()};
}

TextureSource importEmbedded(const aiTexture& texture, const std::string& name)
{
    TextureSource source;
    source.m_strName = name;
    if (texture.mHeight == 0)
    {
        // A whole picture file; its width is its size in bytes.
        const auto* bytes = reinterpret_cast<const unsigned char*>(texture.pcData);
        source.m_vecBytes.assign(bytes, bytes + texture.mWidth);
    }
    else if (texture.mWidth > 0)
    {
        source.m_vecBytes = encodeTexels(texture);
    }
    return source;
}

/// The first picture of a kind, found and decodable; else empty.
TextureSource importTexture(const aiScene& scene, const aiMaterial& material, aiTextureType type,
                            const std::string& modelFile, const std::string& surfaceName, bool& transparent,
                            std::vector<std::string>& warnings)
{
    aiString path;
    if (material.GetTexture(type, 0, &path) != AI_SUCCESS || path.length == 0)
    {
        return {};
    }
    TextureSource source;
    if (const aiTexture* embedded = scene.GetEmbeddedTexture(path.C_Str()))
    {
        source = importEmbedded(*embedded, path.C_Str());
    }
    else
    {
        source.m_strName = path.C_Str();
        source.m_strFile = findPicture(source.m_strName, modelFile);
    }
    std::string reason = "was not found";
    if ((!source.m_strFile.empty() || !source.m_vecBytes.empty()) && decode(source, transparent, reason))
    {
        return source;
    }
    warnings.push_back("material \"" + surfaceName + "\": texture \"" + path.C_Str() + "\" is left out: " + reason);
    return {};
}
}  // namespace

Surface importSurface(const aiScene& scene, const aiMaterial& material, const std::string& modelFile,
                      std::vector<std::string>& warnings)
{
    Surface surface;
    surface.m_strName = material.GetName().C_Str();
    aiColor4D color;
    if (material.Get(AI_MATKEY_BASE_COLOR, color) == AI_SUCCESS ||
        material.Get(AI_MATKEY_COLOR_DIFFUSE, color) == AI_SUCCESS)
    {
        surface.m_diffuse = toColor(color);
    }
    if (material.Get(AI_MATKEY_COLOR_SPECULAR, color) == AI_SUCCESS)
    {
        surface.m_specular = toColor(color);
    }
    material.Get(AI_MATKEY_SHININESS, surface.m_fShininess);
    material.Get(AI_MATKEY_OPACITY, surface.m_fOpacity);
    if (!(surface.m_fOpacity > 0.0F))
    {
        // Exporters disagree on which end of the scale is clear; nobody draws what cannot be seen.
        warnings.push_back("material \"" + surface.m_strName + "\": is fully transparent in the file, taken as opaque");
        surface.m_fOpacity = 1.0F;
    }
    surface.m_fOpacity = std::min(surface.m_fOpacity, 1.0F);
    int twoSided = 0;
    material.Get(AI_MATKEY_TWOSIDED, twoSided);
    surface.m_bTwoSided = twoSided != 0;

    bool transparent = false;
    for (const aiTextureType type : {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE})
    {
        surface.m_diffuseTexture =
            importTexture(scene, material, type, modelFile, surface.m_strName, transparent, warnings);
        if (!surface.m_diffuseTexture.m_strName.empty())
        {
            break;
        }
    }
    bool opacityTransparent = false;
    surface.m_opacityTexture = importTexture(scene, material, aiTextureType_OPACITY, modelFile, surface.m_strName,
                                             opacityTransparent, warnings);
    aiString alphaMode;
    const bool opaque = material.Get(AI_MATKEY_GLTF_ALPHAMODE, alphaMode) == AI_SUCCESS &&
                        std::strcmp(alphaMode.C_Str(), "OPAQUE") == 0;
    const bool hasDiffuse = !surface.m_diffuseTexture.m_strName.empty();
    surface.m_bCutOut = hasDiffuse && !opaque && (transparent || !surface.m_opacityTexture.m_strName.empty());
    return surface;
}
}  // namespace TW2::convert
