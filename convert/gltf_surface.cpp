#include "convert/gltf_surface.h"

#include "convert/color_space.h"
#include "convert/gltf_value.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace TW2::convert
{
namespace
{
/// glTF's factors are light.
G_FColor toColor(const std::vector<double>& factors)
{
    return {static_cast<float>(255.0 * toStored(factors[0])), static_cast<float>(255.0 * toStored(factors[1])),
            static_cast<float>(255.0 * toStored(factors[2]))};
}

Wrap toWrap(int mode)
{
    switch (mode)
    {
        case TINYGLTF_TEXTURE_WRAP_CLAMP_TO_EDGE:
            return Wrap::Clamp;
        case TINYGLTF_TEXTURE_WRAP_MIRRORED_REPEAT:
            return Wrap::Mirror;
        default:
            return Wrap::Repeat;
    }
}

class Importer
{
public:
    Importer(const GltfFile& file, PictureCollector& pictures, Warnings& warnings)
        : m_file(file), m_pictures(pictures), m_warnings(warnings)
    {
    }

    Surface import(const tinygltf::Material& source, const std::string& place)
    {
        Surface surface;
        surface.m_strName = source.name;
        m_strPart = "material \"" + source.name + "\"";
        m_strPlace = place;
        setColors(source, surface);
        setAlpha(source, surface);
        surface.m_bTwoSided = source.doubleSided;
        surface.m_bUnlit = source.extensions.contains("KHR_materials_unlit");
        nameLeftOut(source, surface);
        return surface;
    }

private:
    void setColors(const tinygltf::Material& source, Surface& surface)
    {
        std::vector<double> factor = source.pbrMetallicRoughness.baseColorFactor;
        factor.resize(4, 1.0);
        const tinygltf::TextureInfo& base = source.pbrMetallicRoughness.baseColorTexture;
        Reference diffuse{base.index, base.texCoord, &base.extensions};
        const auto old = source.extensions.find("KHR_materials_pbrSpecularGlossiness");
        if (old != source.extensions.end())
        {
            factor = getNumbers(old->second, "diffuseFactor", {1.0, 1.0, 1.0, 1.0});
            diffuse = getReference(old->second, "diffuseTexture");
        }
        surface.m_diffuse = toColor(factor);
        surface.m_fOpacity = static_cast<float>(std::clamp(factor[3], 0.0, 1.0));
        surface.m_diffuseTexture = importTexture(diffuse);

        std::vector<double> emissive = source.emissiveFactor;
        emissive.resize(3, 0.0);
        if (const auto strong = source.extensions.find("KHR_materials_emissive_strength");
            strong != source.extensions.end())
        {
            for (double& value : emissive)
            {
                value *= getNumber(strong->second, "emissiveStrength", 1.0);
            }
        }
        surface.m_emissive = toColor(emissive);
        if (std::any_of(emissive.begin(), emissive.end(), [](double value) { return value > 0.0; }))
        {
            const tinygltf::TextureInfo& glow = source.emissiveTexture;
            surface.m_emissiveTexture = importTexture({glow.index, glow.texCoord, &glow.extensions});
            if (glow.index >= 0 && !surface.m_emissiveTexture.isUsed())
            {
                surface.m_emissive = G_FColor(0.0F, 0.0F, 0.0F);  // most of such a picture is black
            }
        }
    }

    static void setAlpha(const tinygltf::Material& source, Surface& surface)
    {
        surface.m_eAlpha = source.alphaMode == "MASK"    ? Surface::Alpha::Mask
                           : source.alphaMode == "BLEND" ? Surface::Alpha::Blend
                                                         : Surface::Alpha::Opaque;
        surface.m_fCutOff = static_cast<float>(source.alphaCutoff);
    }

    void nameLeftOut(const tinygltf::Material& source, const Surface& surface)
    {
        if (surface.m_bUnlit)
        {
            return;
        }
        if (source.normalTexture.index >= 0)
        {
            m_warnings.addLeftOut(m_strPart, "the normal map");
        }
        if (source.occlusionTexture.index >= 0)
        {
            m_warnings.addLeftOut(m_strPart, "the occlusion map");
        }
        const tinygltf::PbrMetallicRoughness& finish = source.pbrMetallicRoughness;
        if (finish.metallicRoughnessTexture.index >= 0 || finish.metallicFactor > 0.0 || finish.roughnessFactor < 1.0)
        {
            m_warnings.addLeftOut(m_strPart, "metalness and roughness");
        }
        for (const auto& [name, value] : source.extensions)
        {
            if (name == "KHR_materials_pbrSpecularGlossiness")
            {
                m_warnings.addLeftOut(m_strPart, "glossiness");
            }
        }
    }

    /// What a material says about one of its textures.
    struct Reference
    {
        int m_iTexture = -1;
        int m_iSet = 0;
        const tinygltf::ExtensionMap* m_pExtensions = nullptr;
    };

    Reference getReference(const tinygltf::Value& object, const char* key)
    {
        if (!object.IsObject() || !object.Has(key))
        {
            return {};
        }
        const tinygltf::Value& reference = object.Get(key);
        m_mapExtensions.clear();
        if (reference.IsObject() && reference.Has("extensions") && reference.Get("extensions").IsObject())
        {
            for (const std::string& name : reference.Get("extensions").Keys())
            {
                m_mapExtensions.emplace(name, reference.Get("extensions").Get(name));
            }
        }
        return {getIndex(reference, "index"), std::max(getIndex(reference, "texCoord"), 0), &m_mapExtensions};
    }

    Texture importTexture(const Reference& reference)
    {
        Texture texture;
        if (reference.m_iTexture < 0)
        {
            return texture;
        }
        const tinygltf::Texture& source =
            m_file.at(m_file.getModel().textures, reference.m_iTexture, "textures", m_strPlace);
        texture.m_iPicture = addPicture(source, reference.m_iTexture);
        texture.m_iSet = std::max(reference.m_iSet, 0);
        if (source.sampler >= 0)
        {
            const tinygltf::Sampler& sampler = m_file.at(m_file.getModel().samplers, source.sampler, "samplers",
                                                         "textures[" + std::to_string(reference.m_iTexture) + "]");
            texture.m_eWrapU = toWrap(sampler.wrapS);
            texture.m_eWrapV = toWrap(sampler.wrapT);
            texture.m_bCoarse = sampler.magFilter == TINYGLTF_TEXTURE_FILTER_NEAREST;
        }
        if (const auto transform = reference.m_pExtensions->find("KHR_texture_transform");
            transform != reference.m_pExtensions->end())
        {
            setTransform(transform->second, texture);
        }
        return texture;
    }

    static void setTransform(const tinygltf::Value& transform, Texture& texture)
    {
        const std::vector<double> offset = getNumbers(transform, "offset", {0.0, 0.0});
        const std::vector<double> scale = getNumbers(transform, "scale", {1.0, 1.0});
        const double rotation = getNumber(transform, "rotation", 0.0);
        const double c = std::cos(rotation);
        const double s = std::sin(rotation);
        texture.m_transform = {{{scale[0] * c, -scale[0] * s}, {scale[1] * s, scale[1] * c}, {offset[0], offset[1]}}};
        if (const int set = getIndex(transform, "texCoord"); set >= 0)
        {
            texture.m_iSet = set;
        }
    }

    int addPicture(const tinygltf::Texture& source, int index)
    {
        int image = source.source;
        if (const auto webP = source.extensions.find("EXT_texture_webp"); webP != source.extensions.end())
        {
            const int other = getIndex(webP->second, "source");
            image = other >= 0 ? other : image;
        }
        const std::string place = "textures[" + std::to_string(index) + "]";
        if (image < 0)
        {
            m_warnings.add(m_strPart + ": " + place + " is left out: it has no picture that is known here");
            return -1;
        }
        if (static_cast<std::size_t>(image) >= m_file.getImageCount())
        {
            m_file.fail(place, "names images[" + std::to_string(image) + "], the file has " +
                                   std::to_string(m_file.getImageCount()));
        }
        const auto [known, isNew] = m_mapPictures.try_emplace(image, -1);
        if (isNew)
        {
            std::string reason;
            Picture picture = m_file.getImage(static_cast<std::size_t>(image));
            const std::string name = picture.m_strName;
            known->second = m_pictures.add(std::move(picture), reason);
            if (known->second < 0)
            {
                m_warnings.add(m_strPart + ": texture \"" + name + "\" is left out: " + reason);
            }
        }
        return known->second;
    }

    const GltfFile& m_file;
    PictureCollector& m_pictures;
    Warnings& m_warnings;
    std::string m_strPart;
    std::string m_strPlace;
    tinygltf::ExtensionMap m_mapExtensions;
    std::map<int, int> m_mapPictures;  // by image
};
}  // namespace

std::vector<Surface> importSurfaces(const GltfFile& file, PictureCollector& pictures, Warnings& warnings)
{
    Importer importer(file, pictures, warnings);
    std::vector<Surface> surfaces;
    for (std::size_t i = 0; i < file.getModel().materials.size(); ++i)
    {
        surfaces.push_back(importer.import(file.getModel().materials[i], "materials[" + std::to_string(i) + "]"));
    }
    Surface plain;
    plain.m_strName = "plain";
    plain.m_diffuse = G_FColor(255.0F, 255.0F, 255.0F);
    surfaces.push_back(plain);
    return surfaces;
}
}  // namespace TW2::convert
