#pragma once

#include <platform/math/matrix4.h>
#include <platform/math/matrix4x3.h>
#include <platform/scene/material.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace support
{
/// What a picture of squares must show, told pixel by pixel in double precision: a ray through the pixel's middle, what
/// it meets from far to near, and for each of that the colour by the definition of materials and lights.
namespace reference
{
using Vector = M_Vector3Template<double>;
using Matrix = M_Matrix4x3Template<double>;
using Matrix4 = M_Matrix4Template<double>;
using Color = std::array<double, 4>;  // 0 to 1

struct Texture
{
    std::array<Color, 4> m_texels;  ///< two rows of two
    P_Material::TEXTURE_ADDRESS_MODE m_eAddress = P_Material::TEXTURE_ADDRESS_MODE::Wrap;
    bool m_bBilinear = false;
};

struct Layer
{
    enum class Kind
    {
        Texture,
        Gouraud,
        Specular
    };
    Kind m_eKind = Kind::Texture;
    P_Material::BLENDING_MODE m_eBlending = P_Material::BLENDING_MODE::Opaque;
    Texture m_texture;
    unsigned int m_uiSet = 0;
};

struct CoordinateSet
{
    P_Material::TextureCoordinateSource m_eSource = P_Material::TextureCoordinateSource::Mesh;
    std::optional<Matrix4> m_matrix;
    bool m_bProjected = false;
};

enum class Join
{
    Layers,
    Doubled,      ///< 2 x texture x light
    Environment,  ///< 2 x texture x (light + second texture)
    Shader        ///< texture x light + second texture x highlight
};

/// A square from (0, 0) to (1, 1) of its own space that shows its front to negative z, or, blended by bones, what
/// `m_world` is after that.
struct Square
{
    Matrix m_world;
    Join m_eJoin = Join::Layers;
    std::vector<Layer> m_vecLayers;
    std::array<CoordinateSet, 2> m_sets;
    Color m_emissive{};
    Color m_ambient{};
    Color m_diffuse{};
    Color m_specular{};
    double m_dExponent = 1.0;
    double m_dVertexAlpha = 1.0;
    int m_iAlphaReference = -1;  ///< -1: no test
    bool m_bLit = false;
    bool m_bFogged = false;
    bool m_bTwoSided = false;
    bool m_bBlended = false;
};

struct Light
{
    bool m_bDirectional = false;
    bool m_bCone = false;
    Matrix m_place;
    Color m_color{};
    double m_dRange = 0.0;
    double m_dInner = 0.0;  ///< whole angles in degrees
    double m_dOuter = 0.0;
};

struct Scene
{
    std::vector<Square> m_vecSquares;
    std::vector<Light> m_vecLights;
    Vector m_vEye;
    Vector m_vTarget;
    double m_dHalfHeight = 0.5;  ///< of the picture, at distance 1
    Color m_top{};
    Color m_bottom{};
    Color m_sky{};
    Color m_ground{};
    Color m_fog{};
    double m_dFogStart = 0.0;
    double m_dFogEnd = 0.0;
};

struct Pixel
{
    Color m_color{};
    std::uint64_t m_uiSignature =
        0;  ///< of what it shows: squares, halves of them, texels. Edges lie where it changes.
};

class Painter
{
public:
    explicit Painter(const Scene& scene) : m_scene(scene)
    {
        m_vForward = (scene.m_vTarget - scene.m_vEye).normalized();
        m_vRight = Vector{0.0, 1.0, 0.0}.cross(m_vForward).normalized();
        m_vUp = m_vForward.cross(m_vRight);
    }

    /// `x` from left to right and `y` from bottom to top, -1 to 1.
    Pixel paint(double x, double y)
    {
        m_pixel = {};
        const double height = 0.5 + 0.5 * y;
        for (std::size_t c = 0; c < 3; ++c)
        {
            m_pixel.m_color[c] = mix(m_scene.m_bottom[c], m_scene.m_top[c], height);
        }
        const Vector ray = m_vForward + (m_vRight * x + m_vUp * y) * m_scene.m_dHalfHeight;
        std::vector<Hit> hits;
        for (const Square& square : m_scene.m_vecSquares)
        {
            meet(square, ray, hits);
        }
        std::sort(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) { return a.m_dAway > b.m_dAway; });
        for (const Hit& hit : hits)
        {
            draw(hit);
        }
        return m_pixel;
    }

private:
    struct Hit
    {
        const Square* m_pSquare;
        double m_dAway;
        double m_u, m_v;
        Vector m_vPlace;
        Vector m_vNormal;  ///< of length 1, on the side that is seen
    };

    static double mix(double a, double b, double share) { return a + (b - a) * share; }
    void note(std::uint64_t what) { m_pixel.m_uiSignature = m_pixel.m_uiSignature * 1000003U + what + 1; }

    void meet(const Square& square, const Vector& ray, std::vector<Hit>& hits)
    {
        const Vector edgeU = square.m_world.getRow(0);
        const Vector edgeV = square.m_world.getRow(1);
        const Vector normal = edgeU.cross(edgeV);
        const Vector corner = square.m_world.getTranslation();
        const double away = normal.dot(corner - m_scene.m_vEye) / normal.dot(ray);
        const Vector place = m_scene.m_vEye + ray * away;
        const Vector inside = place - corner;
        const double u = inside.cross(edgeV).dot(normal) / normal.dot(normal);
        const double v = edgeU.cross(inside).dot(normal) / normal.dot(normal);
        // Its front is where its own negative z axis points to.
        const double frontSide = normal.dot(square.m_world.getRow(2)) < 0.0 ? 1.0 : -1.0;
        const double eyeSide = normal.dot(ray) < 0.0 ? 1.0 : -1.0;
        if (away <= 0.0 || u < 0.0 || u > 1.0 || v < 0.0 || v > 1.0 || (frontSide != eyeSide && !square.m_bTwoSided))
        {
            return;
        }
        hits.push_back({&square, away, u, v, place, normal.normalized() * eyeSide});
    }

    /// Coordinates are found at the corners; in between they change evenly over each of the two triangles.
    std::array<double, 2> findCoordinates(const Hit& hit, unsigned int number)
    {
        const CoordinateSet& set = hit.m_pSquare->m_sets[number];
        std::array<std::array<double, 2>, 4> corners{};
        for (unsigned int corner = 0; corner < 4; ++corner)
        {
            corners[corner] = findAtCorner(*hit.m_pSquare, set, hit.m_vNormal, corner % 2, corner / 2);
        }
        const bool lower = hit.m_u + hit.m_v < 1.0;
        note(lower ? 1 : 0);
        const auto& base = corners[lower ? 0 : 3];
        const auto& alongU = corners[lower ? 1 : 2];
        const auto& alongV = corners[lower ? 2 : 1];
        const double u = lower ? hit.m_u : 1.0 - hit.m_u;
        const double v = lower ? hit.m_v : 1.0 - hit.m_v;
        std::array<double, 2> result{};
        for (std::size_t c = 0; c < 2; ++c)
        {
            result[c] = base[c] + u * (alongU[c] - base[c]) + v * (alongV[c] - base[c]);
        }
        return result;
    }

    Vector toCamera(const Vector& direction) const
    {
        return {direction.dot(m_vRight), direction.dot(m_vUp), direction.dot(m_vForward)};
    }

    std::array<double, 2> findAtCorner(const Square& square, const CoordinateSet& set, const Vector& seenNormal,
                                       unsigned int u, unsigned int v) const
    {
        const Vector inView = toCamera(square.m_world.transformPoint({double(u), double(v), 0.0}) - m_scene.m_vEye);
        // Seen from behind, coordinates are those of the front all the same.
        const bool behind = seenNormal.dot(square.m_world.getRow(2)) > 0.0;
        const Vector normal = toCamera(seenNormal * (behind ? -1.0 : 1.0));
        Vector value{double(u), 1.0 - double(v), 0.0};
        switch (set.m_eSource)
        {
            case P_Material::TextureCoordinateSource::Mesh:
                break;
            case P_Material::TextureCoordinateSource::CameraSpacePosition:
                value = inView;
                break;
            case P_Material::TextureCoordinateSource::CameraSpaceNormal:
                value = normal;
                break;
            case P_Material::TextureCoordinateSource::CameraSpaceReflection:
            {
                const Vector sight = inView.normalized();
                value = sight - normal * (2.0 * sight.dot(normal));
                break;
            }
        }
        double w = 1.0;
        if (set.m_matrix)
        {
            const auto& m = set.m_matrix->m;
            w = value.x * m[0][3] + value.y * m[1][3] + value.z * m[2][3] + m[3][3];
            value = {value.x * m[0][0] + value.y * m[1][0] + value.z * m[2][0] + m[3][0],
                     value.x * m[0][1] + value.y * m[1][1] + value.z * m[2][1] + m[3][1], 0.0};
        }
        const double by = set.m_bProjected && w != 0.0 ? w : 1.0;
        return {value.x / by, value.y / by};
    }

    static int address(int texel, P_Material::TEXTURE_ADDRESS_MODE mode)
    {
        switch (mode)
        {
            case P_Material::TEXTURE_ADDRESS_MODE::Clamp:
                return std::clamp(texel, 0, 1);
            case P_Material::TEXTURE_ADDRESS_MODE::Mirror:
                return ((texel % 4 + 4) % 4 == 1 || (texel % 4 + 4) % 4 == 2) ? 1 : 0;
            default:
                return (texel % 2 + 2) % 2;
        }
    }

    Color sample(const Hit& hit, const Layer& layer)
    {
        const Texture& texture = layer.m_texture;
        const std::array<double, 2> at = findCoordinates(hit, layer.m_uiSet);
        const auto texel = [&texture](int column, int row) -> const Color&
        {
            return texture.m_texels[static_cast<std::size_t>(2 * address(row, texture.m_eAddress) +
                                                             address(column, texture.m_eAddress))];
        };
        const double shift = texture.m_bBilinear ? 0.5 : 0.0;
        const double x = 2.0 * at[0] - shift;
        const double y = 2.0 * at[1] - shift;
        const int column = static_cast<int>(std::floor(x));
        const int row = static_cast<int>(std::floor(y));
        if (!texture.m_bBilinear)
        {
            note(static_cast<std::uint64_t>(column + 1000) * 2000U + static_cast<std::uint64_t>(row + 1000));
            return texel(column, row);
        }
        Color result{};
        for (std::size_t c = 0; c < 4; ++c)
        {
            result[c] = mix(mix(texel(column, row)[c], texel(column + 1, row)[c], x - column),
                            mix(texel(column, row + 1)[c], texel(column + 1, row + 1)[c], x - column), y - row);
        }
        return result;
    }

    void addLight(const Square& square, const Vector& normal, const Vector& toEye, const Vector& toLight,
                  const Color& color, double strength)
    {
        const double facing = normal.dot(toLight);
        const double highlight = std::max(normal.dot((toLight + toEye).normalized()), 0.0);
        for (std::size_t c = 0; c < 3 && facing > 0.0; ++c)
        {
            m_diffuse[c] += strength * color[c] * square.m_diffuse[c] * facing;
            m_specular[c] += strength * color[c] * square.m_specular[c] * std::pow(highlight, square.m_dExponent);
        }
    }

    void shade(const Hit& hit)
    {
        const Square& square = *hit.m_pSquare;
        m_diffuse = {1.0, 1.0, 1.0, 1.0};
        m_specular = {};
        if (!square.m_bLit)
        {
            return;
        }
        const Vector toEye = (m_scene.m_vEye - hit.m_vPlace).normalized();
        for (std::size_t c = 0; c < 3; ++c)
        {
            m_diffuse[c] = square.m_emissive[c] + square.m_ambient[c] * mix(m_scene.m_ground[c], m_scene.m_sky[c],
                                                                            0.5 + 0.5 * hit.m_vNormal.y);
        }
        for (const Light& light : m_scene.m_vecLights)
        {
            const Vector forward = light.m_place.getRow(2).normalized();
            if (light.m_bDirectional)
            {
                addLight(square, hit.m_vNormal, toEye, forward * -1.0, light.m_color, 1.0);
                continue;
            }
            const Vector away = light.m_place.getTranslation() - hit.m_vPlace;
            double strength = std::clamp(1.0 - away.length() / light.m_dRange, 0.0, 1.0);
            if (light.m_bCone)
            {
                const auto cosine = [](double degrees) { return std::cos(degrees * std::acos(-1.0) / 360.0); };
                const double inside = -away.normalized().dot(forward);
                const double t = std::clamp(
                    (inside - cosine(light.m_dOuter)) / (cosine(light.m_dInner) - cosine(light.m_dOuter)), 0.0, 1.0);
                strength *= t * t * (3.0 - 2.0 * t);
            }
            addLight(square, hit.m_vNormal, toEye, away.normalized(), light.m_color, strength);
        }
        for (std::size_t c = 0; c < 3; ++c)
        {
            m_diffuse[c] = std::clamp(m_diffuse[c], 0.0, 1.0);
            m_specular[c] = std::clamp(m_specular[c], 0.0, 1.0);
        }
    }

    static double findCoverage(const Square& square, const Layer& layer, const Color& texel)
    {
        switch (layer.m_eBlending)
        {
            case P_Material::BLENDING_MODE::VertexAlpha:
                return square.m_dVertexAlpha;
            case P_Material::BLENDING_MODE::TextureAlpha:
                return texel[3];
            case P_Material::BLENDING_MODE::TextureAndVertexAlpha:
                return texel[3] * square.m_dVertexAlpha;
            default:
                return 1.0;
        }
    }

    Color joinLayers(const Hit& hit)
    {
        Color color{1.0, 1.0, 1.0, 1.0};
        bool first = true;
        for (const Layer& layer : hit.m_pSquare->m_vecLayers)
        {
            const Color texel = layer.m_eKind == Layer::Kind::Texture   ? sample(hit, layer)
                                : layer.m_eKind == Layer::Kind::Gouraud ? m_diffuse
                                                                        : m_specular;
            const double coverage = findCoverage(*hit.m_pSquare, layer, texel);
            for (std::size_t c = 0; c < 3; ++c)
            {
                if (layer.m_eKind == Layer::Kind::Gouraud ||
                    (layer.m_eKind == Layer::Kind::Texture && layer.m_eBlending == P_Material::BLENDING_MODE::Modulate))
                {
                    color[c] = first ? texel[c] : color[c] * texel[c];
                }
                else if (layer.m_eKind == Layer::Kind::Specular || layer.m_eBlending == P_Material::BLENDING_MODE::Add)
                {
                    color[c] = first ? texel[c] : color[c] + texel[c];
                }
                else
                {
                    color[c] = first ? texel[c] : mix(color[c], texel[c], coverage);
                }
            }
            color[3] = first && layer.m_eKind == Layer::Kind::Texture ? coverage : color[3];
            first = false;
        }
        return color;
    }

    Color joinReadyMade(const Hit& hit)
    {
        std::vector<Color> texels;
        for (const Layer& layer : hit.m_pSquare->m_vecLayers)
        {
            texels.push_back(sample(hit, layer));
        }
        Color color = texels[0];
        for (std::size_t c = 0; c < 3; ++c)
        {
            color[c] = hit.m_pSquare->m_eJoin == Join::Doubled ? 2.0 * texels[0][c] * m_diffuse[c]
                       : hit.m_pSquare->m_eJoin == Join::Environment
                           ? 2.0 * texels[0][c] * (m_diffuse[c] + texels[1][c])
                           : texels[0][c] * m_diffuse[c] + texels[1][c] * m_specular[c];
        }
        return color;
    }

    void draw(const Hit& hit)
    {
        const Square& square = *hit.m_pSquare;
        note(static_cast<std::uint64_t>(&square - m_scene.m_vecSquares.data()));
        shade(hit);
        const Color color = square.m_eJoin == Join::Layers ? joinLayers(hit) : joinReadyMade(hit);
        // A reference is a whole number, alpha as it is compared is not: what lies at the edge is no pixel to look at.
        const double alpha = 255.0 * color[3];
        note(static_cast<std::uint64_t>(
            std::abs(alpha - square.m_iAlphaReference) < 0.1 ? 2 : alpha < square.m_iAlphaReference));
        if (alpha < square.m_iAlphaReference)
        {
            return;
        }
        const double depth = (hit.m_vPlace - m_scene.m_vEye).dot(m_vForward);
        const double clear =
            square.m_bFogged
                ? std::clamp((m_scene.m_dFogEnd - depth) / (m_scene.m_dFogEnd - m_scene.m_dFogStart), 0.0, 1.0)
                : 1.0;
        for (std::size_t c = 0; c < 3; ++c)
        {
            const double shown = mix(m_scene.m_fog[c], std::clamp(color[c], 0.0, 1.0), clear);
            m_pixel.m_color[c] = square.m_bBlended ? mix(m_pixel.m_color[c], shown, color[3]) : shown;
        }
    }

    const Scene& m_scene;
    Vector m_vForward;
    Vector m_vRight;
    Vector m_vUp;
    Color m_diffuse{};
    Color m_specular{};
    Pixel m_pixel;
};
}  // namespace reference
}  // namespace support
