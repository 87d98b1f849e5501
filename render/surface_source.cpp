#include "render/surface_source.h"

#include "render/shaders.h"

#include <platform/scene/vertex_format.h>

namespace TW2::render
{
namespace
{
using Kind = SurfaceKind;
using Source = P_Material::TextureCoordinateSource;

bool usesSpecular(const Kind& kind)
{
    bool used = kind.m_eJoin == Kind::Join::SpecularShader;
    for (unsigned int i = 0; i < kind.m_uiLayers; ++i)
    {
        used |= kind.m_layers[i].m_eKind == Kind::LayerKind::Specular;
    }
    return used;
}

bool usesWeight(const Kind& kind)
{
    return kind.m_bHighlighted || kind.m_eSurface == View::Surface::BoneWeights;
}

/// "out" of the vertex side is "in" of the fragment side.
std::string declareVaryings(const Kind& kind, const std::string& direction)
{
    std::string text =
        direction + " vec3 worldPosition;\n" + direction + " vec3 worldNormal;\n" + direction + " float vertexAlpha;\n";
    if (kind.m_bFogged)
    {
        text += direction + " float depth;\n";
    }
    if (usesWeight(kind))
    {
        text += direction + " float picked;\n";
    }
    for (unsigned int set = 0; set < Kind::mostSets; ++set)
    {
        if (kind.m_sets[set])
        {
            text += direction + " vec2 at" + std::to_string(set) + ";\n";
        }
    }
    return text;
}

std::string writeCoordinates(const P_Material::CoordinateSet& set, const std::string& number, bool carried)
{
    std::string value;
    switch (set.m_eSource)
    {
        case Source::Mesh:
            value = carried ? "vec4(coordinates" + number + ", 0.0, 1.0)" : "vec4(0.0, 0.0, 0.0, 1.0)";
            break;
        case Source::CameraSpacePosition:
            value = "vec4(inView, 1.0)";
            break;
        case Source::CameraSpaceNormal:
            value = "vec4(viewNormal, 1.0)";
            break;
        case Source::CameraSpaceReflection:
            value = "vec4(reflect(normalize(inView), viewNormal), 1.0)";
            break;
    }
    if (set.m_bTransformed)
    {
        value = "textureMatrix" + number + " * " + value;
    }
    std::string text = "    value = " + value + ";\n";
    if (set.m_bProjected)
    {
        text += "    value.xy /= value.w != 0.0 ? value.w : 1.0;\n";
    }
    return text + "    at" + number + " = value.xy;\n";
}

std::string sampleLayer(const Kind::Layer& layer)
{
    std::string text =
        "    texel = texture(map" + std::to_string(layer.m_uiUnit) + ", at" + std::to_string(layer.m_uiSet) + ");\n";
    return layer.m_bEmissive ? text + "    texel.rgb = emissiveColor.rgb;\n" : text;
}

/// How much a texture layer covers.
const char* findCoverage(Kind::Blending blending)
{
    switch (blending)
    {
        case Kind::Blending::VertexAlpha:
            return "vertexAlpha";
        case Kind::Blending::TextureAlpha:
            return "texel.a";
        case Kind::Blending::TextureAndVertexAlpha:
            return "texel.a * vertexAlpha";
        default:
            return "1.0";
    }
}

std::string joinTexture(const Kind::Layer& layer, bool first)
{
    const std::string coverage = findCoverage(layer.m_eBlending);
    std::string text = sampleLayer(layer);
    if (first)
    {
        return text + "    color = vec4(texel.rgb, " + coverage + ");\n";
    }
    switch (layer.m_eBlending)
    {
        case Kind::Blending::Opaque:
            return text + "    color.rgb = texel.rgb;\n";
        case Kind::Blending::Add:
            return text + "    color.rgb += texel.rgb;\n";
        case Kind::Blending::Modulate:
            return text + "    color.rgb *= texel.rgb;\n";
        default:
            return text + "    color.rgb = mix(color.rgb, texel.rgb, " + coverage + ");\n";
    }
}

std::string joinLayers(const Kind& kind)
{
    std::string text;
    for (unsigned int i = 0; i < kind.m_uiLayers; ++i)
    {
        switch (kind.m_layers[i].m_eKind)
        {
            case Kind::LayerKind::Texture:
                text += joinTexture(kind.m_layers[i], i == 0);
                break;
            case Kind::LayerKind::Gouraud:
                text += i == 0 ? "    color.rgb = diffuse;\n" : "    color.rgb *= diffuse;\n";
                break;
            case Kind::LayerKind::Specular:
                text += i == 0 ? "    color.rgb = specular;\n" : "    color.rgb += specular;\n";
                break;
        }
    }
    return text;
}

/// The ready-made set-ups. Light alone decides whether a product is doubled: without it there is nothing to make up
/// for.
std::string joinSetUp(const Kind& kind)
{
    const char* const doubled = kind.m_eSurface == View::Surface::Unlit ? "" : "2.0 * ";
    const std::string second = kind.m_uiLayers > 1 ? sampleLayer(kind.m_layers[1]) : "    texel = vec4(1.0);\n";
    std::string text = (kind.m_uiLayers > 0 ? sampleLayer(kind.m_layers[0]) : "    texel = vec4(1.0);\n") +
                       "    vec4 base = texel;\n    color.a = base.a;\n";
    switch (kind.m_eJoin)
    {
        case Kind::Join::Texture:
            return text + "    color.rgb = " + doubled + "base.rgb * diffuse;\n";
        case Kind::Join::Environment:
            return text + second + "    color.rgb = " + doubled + "base.rgb * (diffuse + texel.rgb);\n";
        default:
            return text + second + "    color.rgb = diffuse * base.rgb + specular * texel.rgb;\n";
    }
}

std::string writeSurface(const Kind& kind)
{
    switch (kind.m_eSurface)
    {
        case View::Surface::Normals:
            return "    vec3 n = worldNormal == vec3(0.0) ? worldNormal : normalize(worldNormal);\n"
                   "    color.rgb = 0.5 + 0.5 * n;\n";
        case View::Surface::BoneWeights:
            // Blue over green to red, a little darker where the surface turns away.
            return "    color.rgb = clamp(vec3(2.0 * picked - 1.0, 1.0 - abs(2.0 * picked - 1.0), 1.0 - 2.0 * "
                   "picked), 0.0, 1.0);\n"
                   "    if (worldNormal != vec3(0.0))\n"
                   "    {\n"
                   "        vec3 toEye = normalize(eye.xyz - worldPosition);\n"
                   "        color.rgb *= 0.5 + 0.5 * abs(dot(normalize(worldNormal), toEye));\n"
                   "    }\n";
        default:
            break;
    }
    return "    vec3 diffuse;\n    vec3 specular;\n    shade(diffuse, specular);\n    vec4 texel;\n" +
           (kind.m_eJoin == Kind::Join::Layers ? joinLayers(kind) : joinSetUp(kind));
}
}  // namespace

std::string writeVertexSource(const SurfaceKind& kind)
{
    std::string sets;
    std::string matrices;
    for (unsigned int set = 0; set < Kind::mostSets; ++set)
    {
        if (kind.m_sets[set])
        {
            const std::string number = std::to_string(set);
            sets += writeCoordinates(*kind.m_sets[set], number, set < P_VertexFormat::maximumTextureLayers);
            matrices += kind.m_sets[set]->m_bTransformed ? "uniform mat4 textureMatrix" + number + ";\n" : "";
        }
    }
    std::string text = "#define mostSlots " + std::to_string(kind.m_uiSlots) + "\n" + placeSource + frameSource +
                       matrices + declareVaryings(kind, "out");
    if (usesWeight(kind))
    {
        text += "uniform int pickedBone;\nuniform float pickedMesh;\n";
    }
    text +=
        "void main()\n{\n"
        "    mat3x4 place = findPlace();\n"
        "    worldPosition = vec4(position, 1.0) * place;\n"
        "    worldNormal = placeNormal(place);\n"
        "    vertexAlpha = color.a / 255.0;\n"
        "    vec3 inView = (view * vec4(worldPosition, 1.0)).xyz;\n"
        "    vec3 viewNormal = normalize(mat3(view) * worldNormal);\n"
        "    vec4 value;\n";
    text += sets;
    if (kind.m_bFogged)
    {
        text += "    depth = inView.z;\n";
    }
    if (usesWeight(kind))
    {
        text +=
            "    picked = pickedMesh;\n"
            "    for (int slot = 0; slot < mostSlots; ++slot)\n    {\n"
            "        picked += int(bones[slot]) == pickedBone ? weights[slot] : 0.0;\n    }\n";
    }
    return text + "    gl_Position = viewProjection * vec4(worldPosition, 1.0);\n}\n";
}

std::string writeFragmentSource(const SurfaceKind& kind)
{
    std::string text = kind.m_bLit ? "#define LIT\n" : "";
    text += kind.m_eSurface == View::Surface::Unlit ? "#define UNLIT\n" : "";
    text += usesSpecular(kind) ? "#define SPECULAR\n" : "";
    for (unsigned int unit = 0; unit < kind.m_uiUnits; ++unit)
    {
        text += "uniform sampler2D map" + std::to_string(unit) + ";\n";
    }
    text += declareVaryings(kind, "in") + frameSource + shadeSource +
            "uniform float alphaReference;\nuniform vec4 highlightColor;\nout vec4 pixel;\n"
            "void main()\n{\n    vec4 color = vec4(1.0);\n" +
            writeSurface(kind);
    if (kind.m_bAlphaTested)
    {
        text += "    if (color.a < alphaReference)\n    {\n        discard;\n    }\n";
    }
    text += "    color = clamp(color, 0.0, 1.0);\n";
    if (kind.m_bHighlighted)
    {
        text += "    color.rgb = mix(color.rgb, highlightColor.rgb, 0.75 * clamp(picked, 0.0, 1.0));\n";
    }
    if (kind.m_bFogged)
    {
        text +=
            "    float clear = clamp((fogColor.a - depth) / max(fogColor.a - fog.x, 1e-6), 0.0, 1.0);\n"
            "    color.rgb = mix(fogColor.rgb, color.rgb, clear);\n";
    }
    return text + "    pixel = vec4(color.rgb, " + (kind.m_bBlended ? "color.a" : "1.0") + ");\n}\n";
}
}  // namespace TW2::render
