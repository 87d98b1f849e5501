#include "convert/surface_plan.h"

#include "convert/color_space.h"
#include "convert/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

namespace TW2::convert
{
namespace
{
bool isBlack(const G_FColor& color)
{
    constexpr float darkest = 0.5F;
    return color.red < darkest && color.green < darkest && color.blue < darkest;
}

/// Both are stored values, the product is that of their light.
float multiply(float a, float b)
{
    return static_cast<float>(
        255.0 * toStored(toLight(static_cast<double>(a) / 255.0) * toLight(static_cast<double>(b) / 255.0)));
}

G_Image makePlainImage(unsigned int width, unsigned int height, const G_FColor& color)
{
    G_Image image(width, height);
    const auto toByte = [](float value)
    { return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0F, 255.0F))); };
    const Color pixel{toByte(color.red), toByte(color.green), toByte(color.blue), 255};
    for (std::size_t i = 0; i < image.getSize(); i += G_Image::bytesPerPixel)
    {
        std::memcpy(image.accessPixels() + i, pixel.data(), pixel.size());
    }
    return image;
}

/// Plans one surface.
class Planner
{
public:
    Planner(const Model& model, int surface, TextureFiles& textures, Warnings& warnings)
        : m_model(model),
          m_surface(model.m_vecSurfaces[static_cast<std::size_t>(surface)]),
          m_textures(textures),
          m_warnings(warnings),
          m_strPart("material \"" + m_surface.m_strName + "\"")
    {
        for (const Mesh& mesh : model.m_vecMeshes)
        {
            if (mesh.m_iMaterial == surface && !mesh.m_vecIndices.empty())
            {
                m_vecMeshes.push_back(&mesh);
            }
        }
    }

    SurfacePlan plan()
    {
        collectColors();
        if (m_surface.m_diffuseTexture.isUsed())
        {
            planTexture();
        }
        else if (m_plan.m_pColors)
        {
            planColors();
        }
        else if (m_surface.m_opacityTexture.isUsed() && !isOpaque())
        {
            planOpacityAlone();
        }
        planSolid();
        planGlow();
        return std::move(m_plan);
    }

private:
    [[nodiscard]] const Picture& getPicture(const Texture& texture) const
    {
        return m_model.m_vecPictures[static_cast<std::size_t>(texture.m_iPicture)];
    }

    /// The colours of the vertices: one that all have joins the surface's own, others need a picture.
    void collectColors()
    {
        m_factor = m_surface.m_diffuse;
        std::optional<Color> common;
        bool varied = false;
        for (const Mesh* mesh : m_vecMeshes)
        {
            const Color first = mesh->m_vecColors.empty() ? plainColor : mesh->m_vecColors.front();
            common = common.value_or(first);
            varied |= first != *common;
            varied |= std::any_of(mesh->m_vecColors.begin(), mesh->m_vecColors.end(),
                                  [&common](const Color& color) { return color != *common; });
        }
        if (!varied)
        {
            const Color color = common.value_or(plainColor);
            m_factor.red = multiply(m_factor.red, static_cast<float>(color[0]));
            m_factor.green = multiply(m_factor.green, static_cast<float>(color[1]));
            m_factor.blue = multiply(m_factor.blue, static_cast<float>(color[2]));
            m_fCommonAlpha = static_cast<float>(color[3]) / 255.0F;
            return;
        }
        const auto colors = std::make_shared<ColorAtlas>();
        for (const Mesh* mesh : m_vecMeshes)
        {
            for (std::size_t i = 0; i + 2 < mesh->m_vecIndices.size(); i += 3)
            {
                colors->add(getCornerColors(*mesh, i));
            }
        }
        m_plan.m_pColors = colors;
    }

    void planTexture()
    {
        const Texture& texture = m_surface.m_diffuseTexture;
        Retouch retouch = addLayer(texture);
        retouch.m_factor = m_factor;
        m_plan.m_strBase = m_textures.add(texture.m_iPicture, retouch);
        if (!isOpaque())
        {
            if (m_surface.m_opacityTexture.isUsed())
            {
                retouch.m_factor = G_FColor(255.0F, 255.0F, 255.0F);
                m_plan.m_strOpacity = m_textures.add(m_surface.m_opacityTexture.m_iPicture, retouch);
            }
            else if (getPicture(texture).m_bAlpha)
            {
                m_plan.m_strOpacity = m_plan.m_strBase;
            }
        }
        if (m_plan.m_pColors)
        {
            m_plan.m_eSecond = SurfacePlan::Second::Multiply;
            m_plan.m_strSecond = addColors(G_FColor(255.0F, 255.0F, 255.0F));
            if (m_plan.m_pColors->hasAlpha() && !isOpaque())
            {
                m_warnings.addLeftOut(m_strPart, "the transparency of its vertices");
            }
        }
    }

    void planColors()
    {
        m_plan.m_strBase = addColors(m_factor);
        if (m_plan.m_pColors->hasAlpha() && !isOpaque())
        {
            m_plan.m_strOpacity = m_plan.m_strBase;
        }
    }

    /// The alpha takes the size of the picture that it belongs to.
    void planOpacityAlone()
    {
        const Texture& texture = m_surface.m_opacityTexture;
        const Retouch retouch = addLayer(texture);
        const Picture& picture = getPicture(texture);
        m_plan.m_strBase = m_textures.add(makePlainImage(picture.m_uiWidth * (retouch.m_bMirrorU ? 2U : 1U),
                                                         picture.m_uiHeight * (retouch.m_bMirrorV ? 2U : 1U), m_factor),
                                          m_surface.m_strName);
        m_plan.m_strOpacity = m_textures.add(texture.m_iPicture, retouch);
    }

    void planSolid()
    {
        m_plan.m_color = m_factor;
        m_plan.m_fOpacity = isOpaque() ? 1.0F : m_surface.m_fOpacity * m_fCommonAlpha;
        const bool masked = m_surface.m_eAlpha == Surface::Alpha::Mask;
        const float cutOff = m_surface.m_fCutOff;
        m_plan.m_bInvisible = masked && (m_plan.m_strOpacity.empty() ? m_plan.m_fOpacity < cutOff : cutOff > 1.0F);
    }

    /// Light of its own lies on top of everything else.
    void planGlow()
    {
        if (m_surface.m_bUnlit || isBlack(m_surface.m_emissive))
        {
            return;
        }
        if (m_plan.m_eSecond != SurfacePlan::Second::None)
        {
            m_warnings.addLeftOut(m_strPart, "light of its own, beside a texture and colours of vertices");
            return;
        }
        m_plan.m_eSecond = SurfacePlan::Second::Add;
        const Texture& texture = m_surface.m_emissiveTexture;
        if (texture.isUsed())
        {
            Retouch retouch = addLayer(texture);
            retouch.m_factor = m_surface.m_emissive;
            m_plan.m_strSecond = m_textures.add(texture.m_iPicture, retouch);
        }
        else
        {
            m_plan.m_vecLayers.emplace_back();
            m_plan.m_strSecond =
                m_textures.add(makePlainImage(1, 1, m_surface.m_emissive), m_surface.m_strName + "_glow");
        }
    }

    [[nodiscard]] bool isOpaque() const noexcept { return m_surface.m_eAlpha == Surface::Alpha::Opaque; }

    /// Returns what its picture needs so that it lies right.
    Retouch addLayer(const Texture& texture)
    {
        LayerCoordinates layer;
        layer.m_texture = texture;
        layer.m_uiWidth = getPicture(texture).m_uiWidth;
        layer.m_uiHeight = getPicture(texture).m_uiHeight;
        // Also where a picture ends: beside its mirror image its edges keep their colours in small copies of it.
        layer.m_bMirrorU = texture.m_eWrapU != Wrap::Repeat && anyReachesBeyond(texture, 0);
        layer.m_bMirrorV = texture.m_eWrapV != Wrap::Repeat && anyReachesBeyond(texture, 1);
        m_plan.m_vecLayers.push_back(layer);
        Retouch retouch;
        retouch.m_bMirrorU = layer.m_bMirrorU;
        retouch.m_bMirrorV = layer.m_bMirrorV;
        return retouch;
    }

    [[nodiscard]] bool anyReachesBeyond(const Texture& texture, int axis) const
    {
        return std::any_of(m_vecMeshes.begin(), m_vecMeshes.end(),
                           [&texture, axis](const Mesh* mesh)
                           { return reachesBeyond(makeCoordinates(*mesh, texture), axis); });
    }

    std::string addColors(const G_FColor& factor)
    {
        LayerCoordinates layer;
        layer.m_pColors = m_plan.m_pColors.get();
        m_plan.m_vecLayers.push_back(layer);
        return m_textures.add(m_plan.m_pColors->makePicture(factor), m_surface.m_strName + "_colors");
    }

    const Model& m_model;
    const Surface& m_surface;
    TextureFiles& m_textures;
    Warnings& m_warnings;
    std::string m_strPart;
    std::vector<const Mesh*> m_vecMeshes;
    SurfacePlan m_plan;
    G_FColor m_factor;
    float m_fCommonAlpha = 1.0F;
};
}  // namespace

std::vector<SurfacePlan> planSurfaces(const Model& model, TextureFiles& textures, Warnings& warnings)
{
    std::vector<SurfacePlan> plans;
    for (std::size_t i = 0; i < model.m_vecSurfaces.size(); ++i)
    {
        plans.push_back(Planner(model, static_cast<int>(i), textures, warnings).plan());
    }
    return plans;
}
}  // namespace TW2::convert
