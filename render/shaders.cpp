#include "render/shaders.h"

namespace TW2::render
{
const char* const placeSource = R"(
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 color;
layout(location = 3) in uvec4 bones;
layout(location = 4) in vec4 weights;
layout(location = 5) in vec2 coordinates0;
layout(location = 6) in vec2 coordinates1;
layout(location = 7) in vec2 coordinates2;
layout(location = 8) in vec2 coordinates3;
layout(location = 9) in uint firstMatrix;  // of the object: its own; behind it one per bone

uniform sampler2D matrices;

mat3x4 fetchMatrix(uint number)
{
    ivec2 at = ivec2(3U * (number & 511U), number >> 9U);
    return mat3x4(texelFetch(matrices, at, 0), texelFetch(matrices, at + ivec2(1, 0), 0),
                  texelFetch(matrices, at + ivec2(2, 0), 0));
}

mat3x4 findPlace()
{
#if mostSlots > 0
    mat3x4 place = mat3x4(0.0);
    float total = 0.0;
    for (int slot = 0; slot < mostSlots; ++slot)
    {
        if (weights[slot] != 0.0)
        {
            total += weights[slot];
            place += weights[slot] * fetchMatrix(firstMatrix + 1U + bones[slot]);
        }
    }
    if (total != 0.0)
    {
        return place;
    }
#endif
    return fetchMatrix(firstMatrix);
}

// Upright under uneven scales and mirroring: the cofactors are the inverse transpose times the determinant.
vec3 placeNormal(mat3x4 place)
{
    vec3 x = cross(place[1].xyz, place[2].xyz);
    float side = dot(place[0].xyz, x) < 0.0 ? -1.0 : 1.0;
    return side * (normal * mat3(x, cross(place[2].xyz, place[0].xyz), cross(place[0].xyz, place[1].xyz)));
}
)";

const char* const frameSource = R"(
layout(std140) uniform Frame
{
    mat4 view;
    mat4 viewProjection;
    vec4 eye;
    vec4 ambientSky;
    vec4 ambientGround;
    vec4 fogColor;    // colour, depth at which nothing else is seen
    vec4 fog;         // depth at which it begins
    ivec4 lightCounts;          // directional ones, which come first; all
    vec4 lightColors[16];
    vec4 lightPositions[16];    // position, range
    vec4 lightDirections[16];   // direction; 1: has a cone
    vec4 lightCones[16];        // cosines of the inner and the outer half angle
};
)";

const char* const shadeSource = R"(
uniform vec4 ambientColor;
uniform vec4 diffuseColor;
uniform vec4 emissiveColor;
uniform vec4 specularColor;  // colour, exponent

#ifdef LIT
void addLight(vec3 n, vec3 toEye, vec3 toLight, vec3 light, inout vec3 diffuse, inout vec3 specular)
{
    float facing = dot(n, toLight);
    diffuse += light * diffuseColor.rgb * max(facing, 0.0);
#ifdef SPECULAR
    if (facing > 0.0)
    {
        float highlight = max(dot(n, normalize(toLight + toEye)), 0.0);
        specular += light * specularColor.rgb * pow(highlight, max(specularColor.a, 1.0));
    }
#endif
}
#endif

void shade(out vec3 diffuse, out vec3 specular)
{
    diffuse = vec3(1.0);
    specular = vec3(0.0);
#ifdef LIT
    if (worldNormal == vec3(0.0))
    {
        return;
    }
    vec3 n = normalize(gl_FrontFacing ? worldNormal : -worldNormal);
    vec3 toEye = normalize(eye.xyz - worldPosition);
    diffuse = emissiveColor.rgb + ambientColor.rgb * mix(ambientGround.rgb, ambientSky.rgb, 0.5 + 0.5 * n.y);
    for (int i = 0; i < lightCounts.x; ++i)
    {
        addLight(n, toEye, -lightDirections[i].xyz, lightColors[i].rgb, diffuse, specular);
    }
    for (int i = lightCounts.x; i < lightCounts.y; ++i)
    {
        vec3 away = lightPositions[i].xyz - worldPosition;
        float distance = length(away);
        vec3 toLight = away / max(distance, 1e-6);
        float strength = clamp(1.0 - distance / max(lightPositions[i].w, 1e-6), 0.0, 1.0);
        if (lightDirections[i].w != 0.0)
        {
            float inside = dot(-toLight, lightDirections[i].xyz);
            strength *= smoothstep(lightCones[i].y, max(lightCones[i].x, lightCones[i].y + 1e-4), inside);
        }
        addLight(n, toEye, toLight, strength * lightColors[i].rgb, diffuse, specular);
    }
    diffuse = clamp(diffuse, 0.0, 1.0);
    specular = clamp(specular, 0.0, 1.0);
#endif
#ifdef UNLIT
    diffuse = clamp(emissiveColor.rgb + diffuseColor.rgb, 0.0, 1.0);
#endif
}
)";

const char* const wireVertexSource = R"(
void main()
{
    gl_Position = viewProjection * vec4(vec4(position, 1.0) * findPlace(), 1.0);
    // A little nearer than the surface that they lie on.
    gl_Position.z -= 2e-4 * gl_Position.w;
}
)";

const char* const wireFragmentSource = R"(
uniform vec4 wireColor;
out vec4 pixel;
void main()
{
    pixel = wireColor;
}
)";

const char* const casterVertexSource = R"(
uniform mat4 toShadow;
void main()
{
    gl_Position = toShadow * vec4(vec4(position, 1.0) * findPlace(), 1.0);
}
)";

const char* const casterFragmentSource = R"(
void main()
{
}
)";

const char* const groundVertexSource = R"(
uniform mat4 viewProjection;
uniform mat4 toShadow;
uniform vec4 area;  // x and z from, x and z to
uniform vec3 ground;  // height at the origin, what it rises along x and z
out vec3 inShadow;
void main()
{
    vec4 point = vec4(gl_VertexID % 2 == 0 ? area.x : area.z, 0.0, gl_VertexID / 2 == 0 ? area.y : area.w, 1.0);
    point.y = ground.x + ground.y * point.x + ground.z * point.z;
    inShadow = 0.5 + 0.5 * (toShadow * point).xyz;
    gl_Position = viewProjection * point;
}
)";

const char* const groundFragmentSource = R"(
uniform sampler2DShadow shadow;
uniform float strength;
in vec3 inShadow;
out vec4 pixel;
void main()
{
    vec2 texel = 1.5 / vec2(textureSize(shadow, 0));
    float lit = 0.0;
    for (int x = -1; x <= 1; ++x)
    {
        for (int y = -1; y <= 1; ++y)
        {
            lit += texture(shadow, vec3(inShadow.xy + vec2(x, y) * texel, min(inShadow.z, 1.0)));
        }
    }
    pixel = vec4(0.0, 0.0, 0.0, strength * (1.0 - lit / 9.0));
}
)";

const char* const backgroundVertexSource = R"(
uniform vec4 topColor;
uniform vec4 bottomColor;
out vec4 lineColor;  // as lines have it
void main()
{
    vec2 corner = vec2(gl_VertexID % 2, gl_VertexID / 2);
    lineColor = mix(bottomColor, topColor, corner.y);
    gl_Position = vec4(2.0 * corner - 1.0, 0.0, 1.0);
}
)";

const char* const lineVertexSource = R"(
layout(location = 0) in vec3 from;
layout(location = 1) in vec3 to;
layout(location = 2) in vec4 color;
uniform mat4 viewProjection;
uniform vec4 picture;  // half its width and height in pixels, half the width of a line
out vec4 lineColor;

void main()
{
    lineColor = color / 255.0;
    vec4 a = viewProjection * vec4(from, 1.0);
    vec4 b = viewProjection * vec4(to, 1.0);
    // What lies before the near plane is cut off: it has no place in the picture.
    float nearA = a.z + a.w;
    float nearB = b.z + b.w;
    if (nearA < 0.0 && nearB > 0.0)
    {
        a = mix(a, b, nearA / (nearA - nearB));
    }
    else if (nearB < 0.0 && nearA > 0.0)
    {
        b = mix(b, a, nearB / (nearB - nearA));
    }
    vec4 end = gl_VertexID < 2 ? a : b;
    vec2 along = picture.xy * (b.xy / b.w - a.xy / a.w);
    float size = length(along);
    along = size > 1e-4 ? along / size : vec2(1.0, 0.0);
    vec2 across = vec2(-along.y, along.x) * (gl_VertexID % 2 == 0 ? picture.z : -picture.z);
    gl_Position = end + vec4(across / picture.xy * end.w, 0.0, 0.0);
}
)";

const char* const lineFragmentSource = R"(
in vec4 lineColor;
out vec4 pixel;
void main()
{
    pixel = lineColor;
}
)";
}  // namespace TW2::render
