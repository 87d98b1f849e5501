#include "render/shaders.h"

namespace TW2::render
{
const char* const materialVertexShader = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 color;
layout(location = 3) in uvec4 bones;
layout(location = 4) in vec4 weights;
layout(location = 5) in vec2 coordinates[4];

uniform mat4 world;
uniform mat4 view;
uniform mat4 projection;
uniform int boneSlots;               // bones per vertex, 0 for a rigid mesh
uniform int boneCount;
uniform samplerBuffer boneMatrices;  // three texels per bone: twelve floats, row by row
uniform int setCount;
uniform ivec4 sets[8];               // source, transformed, projected
uniform mat4 textureMatrices[8];

out vec3 worldPosition;
out vec3 worldNormal;
out float vertexAlpha;
out float depth;
out vec2 layerCoordinates[8];

void skin(inout vec3 point, inout vec3 direction)
{
    vec3 skinnedPoint = vec3(0.0);
    vec3 skinnedDirection = vec3(0.0);
    float total = 0.0;
    for (int slot = 0; slot < boneSlots; ++slot)
    {
        float weight = weights[slot];
        int bone = int(bones[slot]);
        if (weight == 0.0)
        {
            continue;
        }
        total += weight;
        if (bone >= boneCount)
        {
            skinnedPoint += weight * point;
            skinnedDirection += weight * direction;
            continue;
        }
        vec4 a = texelFetch(boneMatrices, 3 * bone);
        vec4 b = texelFetch(boneMatrices, 3 * bone + 1);
        vec4 c = texelFetch(boneMatrices, 3 * bone + 2);
        mat3 rows = mat3(a.xyz, vec3(a.w, b.xy), vec3(b.zw, c.x));
        skinnedPoint += weight * (rows * point + c.yzw);
        skinnedDirection += weight * (rows * direction);
    }
    if (total != 0.0)
    {
        point = skinnedPoint;
        direction = skinnedDirection;
    }
}

void main()
{
    vec3 point = position;
    vec3 direction = normal;
    skin(point, direction);

    vec4 inWorld = world * vec4(point, 1.0);
    vec4 inView = view * inWorld;
    worldPosition = inWorld.xyz;
    // The inverse transpose keeps normals upright under uneven scales.
    worldNormal = transpose(inverse(mat3(world))) * direction;
    vertexAlpha = color.a / 255.0;
    depth = inView.z;

    vec3 viewNormal = normalize(mat3(view) * worldNormal);
    for (int set = 0; set < setCount; ++set)
    {
        vec4 value = vec4(0.0, 0.0, 0.0, 1.0);
        if (sets[set].x == 0)
        {
            if (set < 4)
            {
                value.xy = coordinates[set];
            }
        }
        else if (sets[set].x == 2)
        {
            value.xyz = inView.xyz;
        }
        else if (sets[set].x == 3)
        {
            value.xyz = viewNormal;
        }
        else
        {
            value.xyz = reflect(normalize(inView.xyz), viewNormal);
        }
        if (sets[set].y != 0)
        {
            value = textureMatrices[set] * value;
        }
        if (sets[set].z != 0 && value.w != 0.0)
        {
            value.xy /= value.w;
        }
        layerCoordinates[set] = value.xy;
    }

    // Depth runs from 0 to w in the camera's projection, from -w to w here.
    gl_Position = projection * inView;
    gl_Position.z = 2.0 * gl_Position.z - gl_Position.w;
}
)";

const char* const materialFragmentShader = R"(#version 330 core
in vec3 worldPosition;
in vec3 worldNormal;
in float vertexAlpha;
in float depth;
in vec2 layerCoordinates[8];
out vec4 pixel;

uniform sampler2D maps[8];
uniform int layerCount;
uniform ivec4 layers[24];   // kind, blending, unit, coordinate set
uniform int uniformMaps[8]; // 1: the unit's map is one plain colour
uniform int setUp;          // 0 layers, 1 texture, 2 texture and environment, 3 shader with specular map
uniform int emissiveShown;  // plain maps show the emissive colour
uniform int blended;
uniform float alphaReference;  // below 0: no alpha test

uniform vec3 eye;
uniform int lit;
uniform vec3 ambientSky;
uniform vec3 ambientGround;
uniform vec3 ambientColor;
uniform vec3 diffuseColor;
uniform vec3 emissiveColor;
uniform vec3 specularColor;
uniform float specularExponent;
uniform int lightCount;
uniform vec4 lightColors[16];      // colour, kind: 0 point, 1 directional, 2 spot
uniform vec4 lightPositions[16];   // position, range
uniform vec4 lightDirections[16];  // direction of the light
uniform vec4 lightCones[16];       // cosines of the inner and the outer half angle

uniform int fogged;
uniform vec4 fogColor;  // colour, depth at which nothing else is seen
uniform float fogStart;

vec4 sampleMap(int unit, vec2 at)
{
    vec4 value;
    switch (unit)
    {
        case 0: value = texture(maps[0], at); break;
        case 1: value = texture(maps[1], at); break;
        case 2: value = texture(maps[2], at); break;
        case 3: value = texture(maps[3], at); break;
        case 4: value = texture(maps[4], at); break;
        case 5: value = texture(maps[5], at); break;
        case 6: value = texture(maps[6], at); break;
        default: value = texture(maps[7], at); break;
    }
    if (emissiveShown != 0 && uniformMaps[unit] != 0)
    {
        value.rgb = emissiveColor;
    }
    return value;
}

vec4 sampleLayer(int layer)
{
    return sampleMap(layers[layer].z, layerCoordinates[layers[layer].w]);
}

void shade(out vec3 diffuse, out vec3 specular)
{
    diffuse = vec3(1.0);
    specular = vec3(0.0);
    if (lit == 0 || worldNormal == vec3(0.0))
    {
        return;
    }
    vec3 n = normalize(gl_FrontFacing ? worldNormal : -worldNormal);
    vec3 toEye = normalize(eye - worldPosition);
    diffuse = emissiveColor + ambientColor * mix(ambientGround, ambientSky, 0.5 + 0.5 * n.y);
    for (int i = 0; i < lightCount; ++i)
    {
        vec3 toLight = -lightDirections[i].xyz;
        float strength = 1.0;
        if (lightColors[i].a != 1.0)
        {
            vec3 away = lightPositions[i].xyz - worldPosition;
            float distance = length(away);
            toLight = away / max(distance, 1e-6);
            strength = clamp(1.0 - distance / max(lightPositions[i].w, 1e-6), 0.0, 1.0);
        }
        if (lightColors[i].a == 2.0)
        {
            float inside = dot(-toLight, lightDirections[i].xyz);
            strength *= smoothstep(lightCones[i].y, max(lightCones[i].x, lightCones[i].y + 1e-4), inside);
        }
        vec3 light = lightColors[i].rgb * strength;
        float facing = dot(n, toLight);
        diffuse += light * diffuseColor * max(facing, 0.0);
        if (facing > 0.0)
        {
            float highlight = max(dot(n, normalize(toLight + toEye)), 0.0);
            specular += light * specularColor * pow(highlight, max(specularExponent, 1.0));
        }
    }
    diffuse = clamp(diffuse, 0.0, 1.0);
    specular = clamp(specular, 0.0, 1.0);
}

// How much a texture layer covers, by its blending mode.
float coverage(int blending, vec4 texel)
{
    if (blending == 3)
    {
        return vertexAlpha;
    }
    if (blending == 4)
    {
        return texel.a;
    }
    return blending == 5 ? texel.a * vertexAlpha : 1.0;
}

vec4 join(vec3 diffuse, vec3 specular)
{
    vec4 joined = vec4(1.0);
    for (int i = 0; i < layerCount; ++i)
    {
        if (layers[i].x == 1)
        {
            joined.rgb = i == 0 ? diffuse : joined.rgb * diffuse;
        }
        else if (layers[i].x == 2)
        {
            joined.rgb = i == 0 ? specular : joined.rgb + specular;
        }
        else
        {
            vec4 texel = sampleLayer(i);
            int blending = layers[i].y;
            float cover = coverage(blending, texel);
            if (i == 0)
            {
                joined = vec4(texel.rgb, cover);
            }
            else if (blending == 0)
            {
                joined.rgb = texel.rgb;
            }
            else if (blending == 1)
            {
                joined.rgb += texel.rgb;
            }
            else if (blending == 2)
            {
                joined.rgb *= texel.rgb;
            }
            else
            {
                joined.rgb = mix(joined.rgb, texel.rgb, cover);
            }
        }
    }
    return joined;
}

void main()
{
    vec3 diffuse;
    vec3 specular;
    shade(diffuse, specular);
    vec4 color;
    if (setUp == 0)
    {
        color = join(diffuse, specular);
    }
    else
    {
        vec4 base = sampleLayer(0);
        if (setUp == 1)
        {
            color = vec4(2.0 * base.rgb * diffuse, base.a);
        }
        else if (setUp == 2)
        {
            color = vec4(2.0 * base.rgb * (diffuse + sampleLayer(1).rgb), base.a);
        }
        else
        {
            color = vec4(diffuse * base.rgb + specular * sampleLayer(1).rgb, base.a);
        }
    }
    if (alphaReference >= 0.0 && color.a < alphaReference)
    {
        discard;
    }
    color = clamp(color, 0.0, 1.0);
    if (fogged != 0)
    {
        float clear = clamp((fogColor.a - depth) / max(fogColor.a - fogStart, 1e-6), 0.0, 1.0);
        color.rgb = mix(fogColor.rgb, color.rgb, clear);
    }
    pixel = vec4(color.rgb, blended != 0 ? color.a : 1.0);
}
)";

const char* const lineVertexShader = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 color;
uniform mat4 viewProjection;
out vec4 lineColor;
void main()
{
    lineColor = color / 255.0;
    gl_Position = viewProjection * vec4(position, 1.0);
    gl_Position.z = 2.0 * gl_Position.z - gl_Position.w;
}
)";

const char* const lineFragmentShader = R"(#version 330 core
in vec4 lineColor;
out vec4 pixel;
void main()
{
    pixel = lineColor;
}
)";
}  // namespace TW2::render
