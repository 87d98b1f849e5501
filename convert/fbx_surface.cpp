#include "convert/fbx_surface.h"

#include "convert/fbx_geometry.h"
#include "convert/fbx_properties.h"
#include "convert/surface_alpha.h"
#include "convert/unique_names.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
/// A colour times its factor, on the scale that pictures have.
std::optional<G_FColor> findColor(const FbxProperties& properties, std::string_view color, std::string_view factor)
{
    if (!properties.has(color))
    {
        return std::nullopt;
    }
    const Vector3d rgb = properties.getVector(color, {});
    const double scale = 255.0 * (factor.empty() ? 1.0 : properties.getNumber(factor, 1.0));
    return G_FColor(static_cast<float>(rgb.x * scale), static_cast<float>(rgb.y * scale),
                    static_cast<float>(rgb.z * scale));
}

/// Text of an element inside another.
std::string_view findText(const FbxElement& element, std::string_view name)
{
    const FbxElement* found = element.find(name);
    return found ? found->getText(0) : std::string_view();
}

/// What a renderer of its own calls its colours and textures, besides the names that all files have.
struct Names
{
    std::string_view m_color;
    std::string_view m_texture;
};
constexpr Names baseNames[]{{"Maya|base_color", "Maya|TEX_color_map"},
                            {"Maya|baseColor", "Maya|baseColor"},
                            {"3dsMax|Parameters|base_color", "3dsMax|Parameters|base_color_map"},
                            {"3dsMax|main|basecolor", "3dsMax|main|base_color_map"},
                            {"3dsMax|main|baseColor", "3dsMax|main|baseColorMap"}};
}  // namespace

FbxSurfaces::FbxSurfaces(const FbxScene& scene, PictureCollector& pictures, Warnings& warnings)
    : m_scene(scene), m_pictures(pictures), m_warnings(warnings)
{
}

std::vector<int> FbxSurfaces::getSurfaces(std::size_t place)
{
    std::vector<int> surfaces;
    for (const FbxObject* material : m_scene.getObjects().getChildren(m_scene.getPlaces()[place].m_iId, "Material"))
    {
        const auto [known, fresh] = m_mapSurfaces.try_emplace(material->m_iId, static_cast<int>(m_vecSurfaces.size()));
        if (fresh)
        {
            m_vecSurfaces.push_back(read(*material));
        }
        surfaces.push_back(known->second);
    }
    if (surfaces.empty())
    {
        if (!m_plain)
        {
            m_plain = static_cast<int>(m_vecSurfaces.size());
            m_vecSurfaces.emplace_back().m_strName = "plain";
        }
        surfaces.push_back(*m_plain);
    }
    return surfaces;
}

std::vector<Surface> FbxSurfaces::take()
{
    UniqueNames names("material");
    for (Surface& surface : m_vecSurfaces)
    {
        surface.m_strName = names.make(surface.m_strName);
    }
    return std::move(m_vecSurfaces);
}

Surface FbxSurfaces::read(const FbxObject& material)
{
    const FbxObjects& objects = m_scene.getObjects();
    const FbxProperties properties(material.m_pElement, objects.getTemplate("Material"));
    Surface surface;
    surface.m_strName = material.m_name;
    const std::string part = "material \"" + surface.m_strName + "\"";
    const FbxObject* diffuse = findTexture(material.m_iId, "DiffuseColor");
    std::optional<G_FColor> color = findColor(properties, "DiffuseColor", "DiffuseFactor");
    for (const Names& names : baseNames)
    {
        diffuse = diffuse ? diffuse : findTexture(material.m_iId, names.m_texture);
        if (const std::optional<G_FColor> base = findColor(properties, names.m_color, {}))
        {
            color = base;
        }
    }
    surface.m_diffuseTexture = readTexture(diffuse, part);
    surface.m_diffuse = color.value_or(surface.m_diffuse);
    if (surface.m_diffuseTexture.isUsed())
    {
        surface.m_diffuse = G_FColor(255.0F, 255.0F, 255.0F);  // the texture takes the colour's place
    }
    const FbxObject* opacity = findTexture(material.m_iId, "TransparentColor");
    surface.m_opacityTexture = readTexture(opacity ? opacity : findTexture(material.m_iId, "TransparencyFactor"), part);
    surface.m_emissiveTexture = readTexture(findTexture(material.m_iId, "EmissiveColor"), part);
    surface.m_specular = findColor(properties, "SpecularColor", "SpecularFactor").value_or(surface.m_specular);
    surface.m_emissive = findColor(properties, "EmissiveColor", "EmissiveFactor").value_or(surface.m_emissive);
    if (surface.m_emissiveTexture.isUsed())
    {
        surface.m_emissive = G_FColor(255.0F, 255.0F, 255.0F);
    }
    surface.m_fShininess =
        static_cast<float>(properties.getNumber("ShininessExponent", properties.getNumber("Shininess", 0.0)));
    // Programs disagree on what the factor means; most write the opacity itself besides.
    const Vector3d clear = properties.getVector("TransparentColor", {});
    const double factor = properties.has("TransparentColor") ? properties.getNumber("TransparencyFactor", 1.0) : 0.0;
    surface.m_fOpacity =
        static_cast<float>(properties.getNumber("Opacity", 1.0 - factor * (clear.x + clear.y + clear.z) / 3.0));
    decideAlpha(part, m_pictures, surface, m_warnings);
    for (const auto& [property, what] : {std::pair("NormalMap", "the normal map"),
                                         {"Bump", "the bump map"},
                                         {"SpecularColor", "the map of its highlights"},
                                         {"SpecularFactor", "the map of its highlights"},
                                         {"ShininessExponent", "the map of its shininess"},
                                         {"AmbientColor", "the map of its ambient colour"},
                                         {"ReflectionColor", "the reflection map"},
                                         {"DisplacementColor", "the displacement map"}})
    {
        if (findTexture(material.m_iId, property))
        {
            m_warnings.addLeftOut(part, what);
        }
    }
    return surface;
}

const FbxObject* FbxSurfaces::findTexture(std::int64_t id, std::string_view property) const
{
    for (const FbxObjects::Link& link : m_scene.getObjects().getChildren(id))
    {
        if (link.m_property != property)
        {
            continue;
        }
        if (link.m_pObject->m_kind == "Texture")
        {
            return link.m_pObject;
        }
        if (link.m_pObject->m_kind == "LayeredTexture")
        {
            const std::vector<const FbxObject*> layers =
                m_scene.getObjects().getChildren(link.m_pObject->m_iId, "Texture");
            return layers.empty() ? nullptr : layers.front();
        }
    }
    return nullptr;
}

Texture FbxSurfaces::readTexture(const FbxObject* source, const std::string& part)
{
    Texture texture;
    if (!source)
    {
        return texture;
    }
    const FbxElement& element = *source->m_pElement;
    const FbxObjects& objects = m_scene.getObjects();
    std::string_view name = findText(element, "RelativeFilename");
    const std::string_view full = findText(element, "FileName");
    Picture picture;
    for (const FbxObject* video : objects.getChildren(source->m_iId, "Video"))
    {
        if (name.empty() && full.empty())
        {
            name = findText(*video->m_pElement, "RelativeFilename");
        }
        if (const FbxElement* content = video->m_pElement->find("Content"))
        {
            picture.m_vecBytes = m_scene.getDocument().getBytes(*content);
        }
    }
    picture.m_strName = name.empty() ? full : name;
    if (picture.m_strName.empty() && picture.m_vecBytes.empty())
    {
        return texture;
    }
    const std::string called = picture.m_strName;
    std::string reason;
    texture.m_iPicture = m_pictures.add(std::move(picture), reason);
    if (!texture.isUsed() && !full.empty() && full != called)
    {
        Picture other;
        other.m_strName = full;
        texture.m_iPicture = m_pictures.add(std::move(other), reason);
    }
    if (!texture.isUsed())
    {
        m_warnings.add(part + ": texture \"" + called + "\" is left out: " + reason);
    }
    const FbxProperties properties(source->m_pElement, objects.getTemplate("Texture"));
    texture.m_iSet = findFbxCoordinates(objects, properties.getText("UVSet"));
    texture.m_eWrapU = properties.getInteger("WrapModeU", 0) == 1 ? Wrap::Clamp : Wrap::Repeat;
    texture.m_eWrapV = properties.getInteger("WrapModeV", 0) == 1 ? Wrap::Clamp : Wrap::Repeat;
    // FBX counts v upwards.
    const Vector3d scale = properties.getVector("Scaling", {1.0, 1.0, 1.0});
    const Vector3d move = properties.getVector("Translation", {});
    texture.m_transform = {{{scale.x, 0.0}, {0.0, scale.y}, {move.x, 1.0 - scale.y - move.y}}};
    if (properties.getVector("Rotation", {}) != Vector3d())
    {
        m_warnings.addLeftOut(part, "the rotation of its texture");
    }
    return texture;
}
}  // namespace TW2::convert
