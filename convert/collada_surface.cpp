#include "convert/collada_surface.h"

#include "convert/surface_alpha.h"
#include "convert/unique_names.h"

#include <algorithm>
#include <optional>

namespace TW2::convert
{
namespace
{
/// The first element with one of the names.
pugi::xml_node findFirst(const pugi::xml_node& parent, std::initializer_list<const char*> names)
{
    for (const char* name : names)
    {
        if (const pugi::xml_node child = parent.child(name))
        {
            return child;
        }
    }
    return {};
}
}  // namespace

/// Reads the effect of one material. `binding`: the names that its textures call coordinates by, with the mesh's sets.
class ColladaSurfaces::EffectReader
{
public:
    EffectReader(ColladaSurfaces& owner, const pugi::xml_node& material, const std::map<std::string, int>& binding)
        : m_owner(owner),
          m_document(owner.m_document),
          m_profile(m_document.follow(material.child("instance_effect"), "url").child("profile_COMMON")),
          m_mapBinding(binding)
    {
        const char* name = material.attribute("name").value();
        m_surface.m_strName = *name != '\0' ? name : material.attribute("id").value();
        m_strPart = "material \"" + m_surface.m_strName + "\"";
        m_bTwoSided = isTwoSided(m_profile) || isTwoSided(m_profile.child("technique")) || isTwoSided(material);
    }

    Surface read()
    {
        const pugi::xml_node technique = m_profile.child("technique");
        const pugi::xml_node shader = findFirst(technique, {"phong", "blinn", "lambert", "constant"});
        m_surface.m_bTwoSided = m_bTwoSided;
        if (!shader)
        {
            return std::move(m_surface);
        }
        m_surface.m_bUnlit = std::string_view(shader.name()) == "constant";
        const pugi::xml_node diffuse = shader.child("diffuse");
        m_surface.m_diffuse = readColor(diffuse).value_or(m_surface.m_diffuse);
        m_surface.m_diffuseTexture = readTexture(diffuse);
        m_surface.m_specular = readColor(shader.child("specular")).value_or(m_surface.m_specular);
        m_surface.m_fShininess = readFloat(shader.child("shininess"), m_surface.m_fShininess);
        m_surface.m_emissive = readColor(shader.child("emission")).value_or(m_surface.m_emissive);
        m_surface.m_emissiveTexture = readTexture(shader.child("emission"));
        if (m_surface.m_diffuseTexture.isUsed())
        {
            m_surface.m_diffuse = G_FColor(255.0F, 255.0F, 255.0F);  // the texture takes the colour's place
        }
        if (m_surface.m_emissiveTexture.isUsed())
        {
            m_surface.m_emissive = G_FColor(255.0F, 255.0F, 255.0F);
        }
        if (m_surface.m_bUnlit && !diffuse)
        {
            std::swap(m_surface.m_diffuse, m_surface.m_emissive);
            std::swap(m_surface.m_diffuseTexture, m_surface.m_emissiveTexture);
            m_surface.m_emissive = G_FColor(0.0F, 0.0F, 0.0F);
        }
        readOpacity(shader);
        decideAlpha(m_strPart, m_owner.m_pictures, m_surface, m_owner.m_warnings);
        for (const auto& [element, what] : {std::pair("specular", "the map of its highlights"),
                                            {"ambient", "the map of its ambient colour"},
                                            {"reflective", "the reflection map"}})
        {
            if (shader.child(element).child("texture") && !isSameTexture(shader.child(element), diffuse))
            {
                m_owner.m_warnings.addLeftOut(m_strPart, what);
            }
        }
        if (technique.child("extra").child("technique").child("bump") ||
            m_profile.child("extra").child("technique").child("bump"))
        {
            m_owner.m_warnings.addLeftOut(m_strPart, "the bump map");
        }
        return std::move(m_surface);
    }

private:
    static bool isTwoSided(const pugi::xml_node& element)
    {
        for (const pugi::xml_node& extra : element.children("extra"))
        {
            for (const pugi::xml_node& technique : extra.children("technique"))
            {
                if (technique.child("double_sided").text().as_int(0) == 1)
                {
                    return true;
                }
            }
        }
        return false;
    }

    static bool isSameTexture(const pugi::xml_node& a, const pugi::xml_node& b)
    {
        return std::string_view(a.child("texture").attribute("texture").value()) ==
               b.child("texture").attribute("texture").value();
    }

    [[nodiscard]] pugi::xml_node findParameter(const std::string& sid) const
    {
        for (const pugi::xml_node& parent : {m_profile, m_profile.parent(), m_profile.child("technique")})
        {
            for (const pugi::xml_node& parameter : parent.children("newparam"))
            {
                if (sid == parameter.attribute("sid").value())
                {
                    return parameter;
                }
            }
        }
        return {};
    }

    /// The numbers of a colour or parameter.
    [[nodiscard]] std::vector<double> readValue(const pugi::xml_node& element) const
    {
        if (const pugi::xml_node value = findFirst(element, {"color", "float"}))
        {
            return m_document.readNumbers(value);
        }
        const pugi::xml_node parameter = findParameter(element.child("param").attribute("ref").value());
        const pugi::xml_node value = findFirst(parameter, {"float4", "float3", "float"});
        return value ? m_document.readNumbers(value) : std::vector<double>();
    }

    [[nodiscard]] std::optional<G_FColor> readColor(const pugi::xml_node& element) const
    {
        const std::vector<double> values = readValue(element);
        if (values.size() < 3)
        {
            return std::nullopt;
        }
        return G_FColor(static_cast<float>(values[0]), static_cast<float>(values[1]), static_cast<float>(values[2])) *
               255.0F;
    }

    [[nodiscard]] float readFloat(const pugi::xml_node& element, float otherwise) const
    {
        const std::vector<double> values = readValue(element);
        return values.empty() ? otherwise : static_cast<float>(values.front());
    }

    void readOpacity(const pugi::xml_node& shader)
    {
        const pugi::xml_node transparent = shader.child("transparent");
        const float transparency = readFloat(shader.child("transparency"), 1.0F);
        const std::string_view mode = transparent.attribute("opaque").as_string("A_ONE");
        const bool zero = mode == "A_ZERO" || mode == "RGB_ZERO";  // what means opaque
        std::vector<double> color = readValue(transparent);
        color.resize(std::max<std::size_t>(color.size(), 3), 1.0);
        color.resize(4, 1.0);
        // The brightness that the format takes for a colour's.
        const double light = 0.212671 * color[0] + 0.715160 * color[1] + 0.072169 * color[2];
        const double alpha = mode == "RGB_ZERO" || mode == "RGB_ONE" ? light : color[3];
        if (transparent || shader.child("transparency"))
        {
            const double amount = alpha * static_cast<double>(transparency);
            m_surface.m_fOpacity = static_cast<float>(zero ? 1.0 - amount : amount);
        }
        if (!zero)
        {
            m_surface.m_opacityTexture = readTexture(transparent);
        }
        else if (transparent.child("texture"))
        {
            m_owner.m_warnings.addLeftOut(m_strPart, "the map of its transparency, which means its opposite");
            m_surface.m_fOpacity = 1.0F;
        }
    }

    Texture readTexture(const pugi::xml_node& element)
    {
        Texture texture;
        const pugi::xml_node source = element.child("texture");
        if (!source)
        {
            return texture;
        }
        const std::string called = source.attribute("texture").value();
        const pugi::xml_node sampler = findFirst(findParameter(called), {"sampler2D", "samplerRECT", "samplerCUBE"});
        pugi::xml_node image = m_document.follow(sampler.child("instance_image"), "url");
        if (!image)
        {
            const pugi::xml_node surface = findParameter(sampler.child("source").text().get()).child("surface");
            image = m_document.findId(ColladaDocument::decode(surface.child("init_from").text().get()));
        }
        if (!image)
        {
            image = m_document.findId(ColladaDocument::decode(called.c_str()));
        }
        const pugi::xml_node from = image.child("init_from");
        std::string name = ColladaDocument::decode((from.child("ref") ? from.child("ref") : from).text().get());
        for (const std::string_view scheme : {"file:///", "file://"})
        {
            if (name.starts_with(scheme))
            {
                // "file:///C:/..." has a letter of a drive, "file:///home" the first folder of a path.
                const bool drive = name.size() > scheme.size() + 1 && name[scheme.size() + 1] == ':';
                name.erase(0, scheme.size() - (scheme.size() == 8 && !drive ? 1 : 0));
                break;
            }
        }
        Picture picture;
        picture.m_strName = name;
        std::string reason = "its image is not there";
        texture.m_iPicture = name.empty() ? -1 : m_owner.m_pictures.add(std::move(picture), reason);
        if (!texture.isUsed())
        {
            m_owner.m_warnings.add(m_strPart + ": texture \"" + (name.empty() ? called : name) +
                                   "\" is left out: " + reason);
        }
        const auto set = m_mapBinding.find(source.attribute("texcoord").value());
        texture.m_iSet = set == m_mapBinding.end() ? 0 : set->second;
        texture.m_eWrapU = toWrap(sampler.child("wrap_s").text().get());
        texture.m_eWrapV = toWrap(sampler.child("wrap_t").text().get());
        texture.m_bCoarse = std::string_view(sampler.child("magfilter").text().get()) == "NEAREST";
        readPlacement(source, texture);
        return texture;
    }

    static Wrap toWrap(std::string_view word)
    {
        return word == "MIRROR"                                        ? Wrap::Mirror
               : word == "CLAMP" || word == "BORDER" || word == "NONE" ? Wrap::Clamp
                                                                       : Wrap::Repeat;
    }

    /// What some programs add to say how often a picture is repeated, and where it begins.
    static void readPlacement(const pugi::xml_node& source, Texture& texture)
    {
        for (const pugi::xml_node& technique : source.child("extra").children("technique"))
        {
            const auto number = [&technique](const char* name, double otherwise)
            { return technique.child(name).text().as_double(otherwise); };
            const double u = number("repeatU", 1.0);
            const double v = number("repeatV", 1.0);
            if (!(u > 0.0) || !(v > 0.0))
            {
                continue;
            }
            // v is counted downwards here.
            texture.m_transform = {{{u, 0.0}, {0.0, v}, {number("offsetU", 0.0), 1.0 - v - number("offsetV", 0.0)}}};
            for (const auto& [wrap, mirror, result] :
                 {std::tuple("wrapU", "mirrorU", &texture.m_eWrapU), {"wrapV", "mirrorV", &texture.m_eWrapV}})
            {
                if (number(mirror, 0.0) == 1.0)
                {
                    *result = Wrap::Mirror;
                }
                else if (number(wrap, 1.0) == 0.0)
                {
                    *result = Wrap::Clamp;
                }
            }
        }
    }

    ColladaSurfaces& m_owner;
    const ColladaDocument& m_document;
    pugi::xml_node m_profile;
    const std::map<std::string, int>& m_mapBinding;
    Surface m_surface;
    std::string m_strPart;
    bool m_bTwoSided = false;
};

ColladaSurfaces::ColladaSurfaces(const ColladaDocument& document, PictureCollector& pictures, Warnings& warnings)
    : m_document(document), m_pictures(pictures), m_warnings(warnings)
{
}

int ColladaSurfaces::getSurface(const pugi::xml_node& instance, const std::string& symbol, const std::vector<int>& sets)
{
    pugi::xml_node material = m_document.findId(symbol);  // when it is bound to nothing
    std::map<std::string, int> binding;
    std::string bound;
    for (const pugi::xml_node& each :
         instance.child("bind_material").child("technique_common").children("instance_material"))
    {
        if (symbol != each.attribute("symbol").value())
        {
            continue;
        }
        material = m_document.follow(each, "target");
        for (const pugi::xml_node& input : each.children("bind_vertex_input"))
        {
            const auto set = std::find(sets.begin(), sets.end(), input.attribute("input_set").as_int(0));
            const int index = set == sets.end() ? 0 : static_cast<int>(set - sets.begin());
            binding[input.attribute("semantic").value()] = index;
            bound += std::string(input.attribute("semantic").value()) + "=" + std::to_string(index) + " ";
        }
    }
    const bool known = std::string_view(material.name()) == "material";
    const auto [found, fresh] = m_mapSurfaces.try_emplace({known ? material.attribute("id").value() : "", bound},
                                                          static_cast<int>(m_vecSurfaces.size()));
    if (fresh)
    {
        Surface plain;
        plain.m_strName = "plain";
        m_vecSurfaces.push_back(known ? EffectReader(*this, material, binding).read() : std::move(plain));
    }
    return found->second;
}

std::vector<Surface> ColladaSurfaces::take()
{
    UniqueNames names("material");
    for (Surface& surface : m_vecSurfaces)
    {
        surface.m_strName = names.make(surface.m_strName);
    }
    return std::move(m_vecSurfaces);
}
}  // namespace TW2::convert
