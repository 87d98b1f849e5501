#include "convert/surface_import.h"

#include "convert/surface_alpha.h"

#include <platform/image/image.h>

#include <assimp/commonMetaData.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace TW2::convert
{
namespace
{
G_FColor toColor(const aiColor4D& color)
{
    return G_FColor(color.r, color.g, color.b, 1.0F) * 255.0F;
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

Picture importEmbedded(const aiTexture& texture, const std::string& name)
{
    Picture picture;
    picture.m_strName = name;
    if (texture.mHeight == 0)
    {
        // A whole picture file; its width is its size in bytes.
        const auto* bytes = reinterpret_cast<const unsigned char*>(texture.pcData);
        picture.m_vecBytes.assign(bytes, bytes + texture.mWidth);
    }
    else if (texture.mWidth > 0)
    {
        picture.m_vecBytes = encodeTexels(texture);
    }
    return picture;
}

Wrap toWrap(int mode)
{
    switch (mode)
    {
        case aiTextureMapMode_Mirror:
            return Wrap::Mirror;
        case aiTextureMapMode_Clamp:
        case aiTextureMapMode_Decal:
            return Wrap::Clamp;
        default:
            return Wrap::Repeat;
    }
}

/// Reads the textures of one material.
class Textures
{
public:
    Textures(const aiScene& scene, const aiMaterial& material, PictureCollector& pictures, Warnings& warnings,
             const std::string& part)
        : m_scene(scene), m_material(material), m_pictures(pictures), m_warnings(warnings), m_strPart(part)
    {
    }

    /// The first picture of a kind, found and decodable; else none.
    Texture import(aiTextureType type)
    {
        Texture texture;
        aiString path;
        if (m_material.GetTexture(type, 0, &path) != AI_SUCCESS || path.length == 0)
        {
            return texture;
        }
        Picture picture;
        if (const aiTexture* embedded = m_scene.GetEmbeddedTexture(path.C_Str()))
        {
            picture = importEmbedded(*embedded, path.C_Str());
        }
        picture.m_strName = path.C_Str();
        std::string reason;
        texture.m_iPicture = m_pictures.add(std::move(picture), reason);
        if (!texture.isUsed())
        {
            m_warnings.add(m_strPart + ": texture \"" + path.C_Str() + "\" is left out: " + reason);
        }
        m_material.Get(AI_MATKEY_UVWSRC(type, 0), texture.m_iSet);
        texture.m_iSet = std::max(texture.m_iSet, 0);
        int mode = aiTextureMapMode_Wrap;
        m_material.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), mode);
        texture.m_eWrapU = toWrap(mode);
        mode = aiTextureMapMode_Wrap;
        m_material.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), mode);
        texture.m_eWrapV = toWrap(mode);
        return texture;
    }

    [[nodiscard]] bool has(aiTextureType type) const { return m_material.GetTextureCount(type) > 0; }

private:
    const aiScene& m_scene;
    const aiMaterial& m_material;
    PictureCollector& m_pictures;
    Warnings& m_warnings;
    std::string m_strPart;
};

/// Whether the texture of such a file multiplies the colour of the material; in others it takes the colour's place.
bool multipliesColor(const aiScene& scene)
{
    aiString format;
    return scene.mMetaData && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format) &&
           std::string(format.C_Str()).find("Wavefront") != std::string::npos;
}

void importColors(const aiScene& scene, const aiMaterial& material, Surface& surface)
{
    aiColor4D color;
    if (material.Get(AI_MATKEY_BASE_COLOR, color) == AI_SUCCESS ||
        material.Get(AI_MATKEY_COLOR_DIFFUSE, color) == AI_SUCCESS)
    {
        surface.m_diffuse = toColor(color);
    }
    if (surface.m_diffuseTexture.isUsed() && !multipliesColor(scene))
    {
        surface.m_diffuse = G_FColor(255.0F, 255.0F, 255.0F);
    }
    if (material.Get(AI_MATKEY_COLOR_SPECULAR, color) == AI_SUCCESS)
    {
        // FBX keeps the strength of highlights apart from their colour.
        float strength = 1.0F;
        material.Get(AI_MATKEY_SHININESS_STRENGTH, strength);
        surface.m_specular = toColor(color) * std::clamp(strength, 0.0F, 1.0F);
    }
    if (material.Get(AI_MATKEY_COLOR_EMISSIVE, color) == AI_SUCCESS)
    {
        surface.m_emissive = toColor(color);
    }
    if (surface.m_emissiveTexture.isUsed())
    {
        surface.m_emissive = G_FColor(255.0F, 255.0F, 255.0F);
    }
    material.Get(AI_MATKEY_SHININESS, surface.m_fShininess);
}

}  // namespace

Surface importSurface(const aiScene& scene, const aiMaterial& material, PictureCollector& pictures, Warnings& warnings)
{
    Surface surface;
    surface.m_strName = material.GetName().C_Str();
    const std::string part = "material \"" + surface.m_strName + "\"";
    Textures textures(scene, material, pictures, warnings, part);
    surface.m_diffuseTexture = textures.import(aiTextureType_DIFFUSE);
    if (!surface.m_diffuseTexture.isUsed())
    {
        surface.m_diffuseTexture = textures.import(aiTextureType_BASE_COLOR);
    }
    surface.m_opacityTexture = textures.import(aiTextureType_OPACITY);
    surface.m_emissiveTexture = textures.import(aiTextureType_EMISSIVE);
    importColors(scene, material, surface);
    material.Get(AI_MATKEY_OPACITY, surface.m_fOpacity);
    decideAlpha(part, pictures, surface, warnings);
    int flag = 0;
    material.Get(AI_MATKEY_TWOSIDED, flag);
    surface.m_bTwoSided = flag != 0;
    int shading = 0;
    surface.m_bUnlit =
        material.Get(AI_MATKEY_SHADING_MODEL, shading) == AI_SUCCESS && shading == aiShadingMode_NoShading;
    for (const auto& [type, what] : {std::pair(aiTextureType_NORMALS, "the normal map"),
                                     {aiTextureType_HEIGHT, "the bump map"},
                                     {aiTextureType_SPECULAR, "the map of its highlights"},
                                     {aiTextureType_SHININESS, "the map of its shininess"},
                                     {aiTextureType_AMBIENT, "the map of its ambient colour"},
                                     {aiTextureType_LIGHTMAP, "the light map"},
                                     {aiTextureType_REFLECTION, "the reflection map"},
                                     {aiTextureType_DISPLACEMENT, "the displacement map"}})
    {
        if (textures.has(type))
        {
            warnings.addLeftOut(part, what);
        }
    }
    return surface;
}
}  // namespace TW2::convert
