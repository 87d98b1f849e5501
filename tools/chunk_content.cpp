#include "tools/chunk_content.h"

#include "json/writer.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/chunk_kind.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/skin/skin_chunk.h>

#include <algorithm>
#include <cstdio>

namespace tools
{
namespace
{
using namespace TW2;
using Facts = std::vector<Fact>;

Fact text(const char* name, std::string_view value)
{
    return {name, std::string(value)};
}

Fact number(const char* name, double value)
{
    return {name, value};
}

template <typename T>
Fact count(const char* name, T value)
{
    return {name, static_cast<long long>(value)};
}

Fact list(const char* name, const S_Vector<S_String>& values)
{
    return {name, std::vector<std::string>(values.begin(), values.end())};
}

void append(Facts& facts, Facts&& more)
{
    facts.insert(facts.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

Facts describe(const NodeChunk& node)
{
    Facts facts = {text("name", node.name)};
    if (node.hasParent)
    {
        facts.push_back(text("parent", node.parentName));
    }
    if (!node.extraString.empty())
    {
        facts.push_back(text("extra", node.extraString));
    }
    return facts;
}

Facts describe(const CameraChunk& camera)
{
    Facts facts = describe(static_cast<const NodeChunk&>(camera));
    append(facts,
           {number("value0", static_cast<double>(camera.value0)), number("value1", static_cast<double>(camera.value1)),
            number("value2", static_cast<double>(camera.value2))});
    return facts;
}

template <typename Light>
requires requires(Light light)
{
    light.brightness;
}
Facts describe(const Light& light)
{
    Facts facts = describe(static_cast<const NodeChunk&>(light));
    facts.push_back(number("brightness", static_cast<double>(light.brightness)));
    return facts;
}

Facts describe(const HelperChunk& helper)
{
    Facts facts = describe(static_cast<const NodeChunk&>(helper));
    facts.push_back(text("text", helper.helperString));
    return facts;
}

Facts describe(const EnvironmentChunk& environment)
{
    const auto color = [](const char* name, unsigned int value)
    {
        char digits[16];
        std::snprintf(digits, sizeof digits, "#%08X", value);
        return text(name, digits);
    };
    return {color("first color", environment.firstColor), color("second color", environment.secondColor)};
}

Facts describe(const MeshVertexChunk& vertices)
{
    return {count("vertices", vertices.positions.size()), count("groups", vertices.groupCounts.size())};
}

Facts describe(const MeshFaceChunk& faces)
{
    return {count("triangles", std::max(faces.polygons.size(), faces.indices.size() / 3)),
            count("groups", faces.groupCounts.size())};
}

Facts describe(const PolygonChunk& polygon)
{
    return {count("corners", polygon.vertexCount)};
}

Facts describe(const MeshSmoothingGroupChunk& smoothingGroups)
{
    return {count("masks", smoothingGroups.masks.size())};
}

Facts describe(const MeshMaterialChunk& materials)
{
    return {list("names", materials.names)};
}

Facts describe(const TextureChannelChunk& channel)
{
    return {count("channel", channel.channel), count("coordinates", channel.coordinates.size()),
            count("groups", channel.groupCounts.size())};
}

Facts describe(const MeshChunk& mesh)
{
    Facts facts = describe(static_cast<const NodeChunk&>(mesh));
    if (mesh.hasInstance)
    {
        facts.push_back(text("instance of", mesh.instanceOf));
    }
    append(facts, {count("vertices", mesh.vertices.positions.size()), count("triangles", mesh.faces.indices.size() / 3),
                   count("channels", std::count(mesh.channelUsed.begin(), mesh.channelUsed.end(), true)),
                   list("materials", mesh.materials.names)});
    return facts;
}

Facts describe(const MaterialTextureChunk& texture)
{
    return {text("name", texture.name), list("files", texture.frameFiles)};
}

Facts describe(const TWMaterialChunk& material)
{
    const bool slots[] = {material.hasDiffuseTexture(), material.hasReflectionTexture(), material.hasSpecularTexture(),
                          material.hasOpacityTexture(), material.hasGlossTexture()};
    return {text("name", material.name), count("textures", std::count(std::begin(slots), std::end(slots), true))};
}

Facts describe(const MaterialListChunk& materials)
{
    return {text("texture path", materials.texturePath), count("materials", materials.materials.size())};
}

Facts describe(const AnimationHeader& header)
{
    return {
        text("target", header.targetName), count("frames per second", header.frameRate), {"looping", header.looping}};
}

Facts describe(const KeyframeAnimationChunk& animation)
{
    Facts facts = describe(animation.header);
    append(facts, {count("frames", animation.totalFrameCount), count("keys", animation.keys.size()),
                   count("visibility keys", animation.visibilityKeys.size())});
    return facts;
}

template <typename Animation>
requires requires(Animation animation)
{
    animation.brightnessKeys;
}
Facts describe(const Animation& animation)
{
    Facts facts = describe(animation.header);
    append(facts, {count("frames", animation.totalFrameCount), count("color keys", animation.colorKeys.size()),
                   count("brightness keys", animation.brightnessKeys.size())});
    return facts;
}

Facts describe(const SkinChunk& skin)
{
    return {list("objects", skin.objectNames), count("bones", skin.boneNames.size()),
            count("vertices", skin.vertexBoneCounts.size()), count("influences", skin.influenceBones.size()),
            count("primitives", skin.primitiveVertexCounts.size())};
}

/// The name of an instance stands in a chunk without a record of its own.
struct MeshInstanceName
{
    S_String name;
};

S_MemoryFile& operator>>(S_MemoryFile& file, MeshInstanceName& instance)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, CHUNK_MESH_INSTANCE);
    return chunk.getMemoryFile() >> instance.name;
}

Facts describe(const MeshInstanceName& instance)
{
    return {text("instance of", instance.name)};
}

struct Kind
{
    unsigned int id;
    const char* name;
    Facts (*read)(S_MemoryFile& file);
};

template <typename Record>
Facts read(S_MemoryFile& file)
{
    Record record;
    file >> record;
    return describe(record);
}

// Names of what stands at top level come from the library.
constexpr Kind kindNames[] = {
    {CHUNK_NODE, nullptr, read<NodeChunk>},
    {CHUNK_CAMERA, nullptr, read<CameraChunk>},
    {CHUNK_POINT_LIGHT, nullptr, read<PointLightChunk>},
    {CHUNK_DIRECTIONAL_LIGHT, nullptr, read<DirectionalLightChunk>},
    {CHUNK_SPOT_LIGHT, nullptr, read<SpotLightChunk>},
    {CHUNK_MESH, nullptr, read<MeshChunk>},
    {CHUNK_MESH_VERTICES, "Vertices", read<MeshVertexChunk>},
    {CHUNK_MESH_FACES, "Faces", read<MeshFaceChunk>},
    {CHUNK_POLYGON, "Polygon", read<PolygonChunk>},
    {CHUNK_MESH_SMOOTHING_GROUPS, "Smoothing groups", read<MeshSmoothingGroupChunk>},
    {CHUNK_MESH_MATERIALS, "Material names", read<MeshMaterialChunk>},
    {CHUNK_TEXTURE_CHANNEL, "Texture channel", read<TextureChannelChunk>},
    {CHUNK_MATERIAL_LIST, nullptr, read<MaterialListChunk>},
    {CHUNK_MATERIAL, "Material", read<TWMaterialChunk>},
    {CHUNK_MATERIAL_TEXTURE, "Texture", read<MaterialTextureChunk>},
    {CHUNK_KEYFRAME_ANIMATION, nullptr, read<KeyframeAnimationChunk>},
    {CHUNK_ANIMATION_HEADER, "Animation header", read<AnimationHeader>},
    {CHUNK_SKIN, nullptr, read<SkinChunk>},
    {CHUNK_ENVIRONMENT, nullptr, read<EnvironmentChunk>},
    {CHUNK_HELPER, nullptr, read<HelperChunk>},
    {CHUNK_POINT_LIGHT_ANIMATION, nullptr, read<PointLightAnimationChunk>},
    {CHUNK_DIRECTIONAL_LIGHT_ANIMATION, nullptr, read<DirectionalLightAnimationChunk>},
    {CHUNK_SPOT_LIGHT_ANIMATION, nullptr, read<SpotLightAnimationChunk>},
    {CHUNK_MESH_INSTANCE, "Instance", read<MeshInstanceName>},
};

const Kind* findKind(unsigned int id)
{
    const Kind* found =
        std::find_if(std::begin(kindNames), std::end(kindNames), [id](const Kind& k) { return k.id == id; });
    return found == std::end(kindNames) ? nullptr : found;
}

struct ValueText
{
    std::string operator()(long long value) const { return std::to_string(value); }
    std::string operator()(bool value) const { return value ? "yes" : "no"; }
    std::string operator()(const std::string& value) const { return TW2::json::Writer::quote(value); }
    std::string operator()(double value) const
    {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%g", value);
        return digits;
    }
    std::string operator()(const std::vector<std::string>& values) const
    {
        if (values.empty())
        {
            return "none";
        }
        std::string all;
        for (const std::string& value : values)
        {
            all += (all.empty() ? "" : " ") + TW2::json::Writer::quote(value);
        }
        return all;
    }
};
}  // namespace

const char* getKind(unsigned int id)
{
    const Kind* kind = findKind(id);
    return kind && kind->name ? kind->name : getChunkKind(id);
}

std::vector<Fact> readFacts(S_MemoryFile& file, unsigned int id)
{
    const Kind* kind = findKind(id);
    return kind ? kind->read(file) : std::vector<Fact>();
}

std::string toText(const Fact& fact)
{
    return std::string(fact.name) + ' ' + std::visit(ValueText(), fact.value);
}
}  // namespace tools
