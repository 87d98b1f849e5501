#include "io/chunk_values.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/node_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

namespace TW2
{
namespace
{
constexpr unsigned int versionExtraString = 1;

constexpr auto describeNode = [](auto& chunk, auto& node)
{
    chunk.values(node.name, node.parentName, node.transform, node.hasParent);
    if (chunk.has(versionExtraString))
    {
        chunk.values(node.extraString);
    }
};

constexpr auto describeCamera = [](auto& chunk, auto& camera)
{
    chunk.template record<NodeChunk>(camera);
    chunk.values(camera.value0, camera.value1, camera.value2);
};

constexpr auto describeHelper = [](auto& chunk, auto& helper)
{
    chunk.template record<NodeChunk>(helper);
    chunk.values(helper.helperString);
};

/// What the kinds of lights have in common comes first.
constexpr auto describeLight = [](auto& chunk, auto& light)
{
    chunk.template record<NodeChunk>(light);
    chunk.color(light.color);
    chunk.values(light.brightness);
    if constexpr (requires { light.hotSpot; })
    {
        chunk.values(light.hotSpot, light.fallOff);
    }
    if constexpr (requires { light.hotSpotAngle; })
    {
        chunk.values(light.hotSpotAngle, light.fallOffAngle);
    }
};

constexpr auto describeEnvironment = [](auto& chunk, auto& environment)
{
    chunk.packedColor(environment.firstColor);
    chunk.packedColor(environment.secondColor);
};
}  // namespace

S_MemoryFile& operator>>(S_MemoryFile& file, NodeChunk& node)
{
    return readRecord(file, CHUNK_NODE, node, describeNode);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const NodeChunk& node)
{
    return writeRecord(writer, CHUNK_NODE, versionExtraString, node, describeNode);
}

S_MemoryFile& operator>>(S_MemoryFile& file, CameraChunk& camera)
{
    return readRecord(file, CHUNK_CAMERA, camera, describeCamera);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const CameraChunk& camera)
{
    return writeRecord(writer, CHUNK_CAMERA, 0, camera, describeCamera);
}

S_MemoryFile& operator>>(S_MemoryFile& file, HelperChunk& helper)
{
    return readRecord(file, CHUNK_HELPER, helper, describeHelper);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const HelperChunk& helper)
{
    return writeRecord(writer, CHUNK_HELPER, 0, helper, describeHelper);
}

S_MemoryFile& operator>>(S_MemoryFile& file, PointLightChunk& light)
{
    return readRecord(file, CHUNK_POINT_LIGHT, light, describeLight);
}

S_MemoryFile& operator>>(S_MemoryFile& file, DirectionalLightChunk& light)
{
    return readRecord(file, CHUNK_DIRECTIONAL_LIGHT, light, describeLight);
}

S_MemoryFile& operator>>(S_MemoryFile& file, SpotLightChunk& light)
{
    return readRecord(file, CHUNK_SPOT_LIGHT, light, describeLight);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const PointLightChunk& light)
{
    return writeRecord(writer, CHUNK_POINT_LIGHT, 0, light, describeLight);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const DirectionalLightChunk& light)
{
    return writeRecord(writer, CHUNK_DIRECTIONAL_LIGHT, 0, light, describeLight);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SpotLightChunk& light)
{
    return writeRecord(writer, CHUNK_SPOT_LIGHT, 0, light, describeLight);
}

S_MemoryFile& operator>>(S_MemoryFile& file, EnvironmentChunk& environment)
{
    return readRecord(file, CHUNK_ENVIRONMENT, environment, describeEnvironment);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const EnvironmentChunk& environment)
{
    return writeRecord(writer, CHUNK_ENVIRONMENT, 0, environment, describeEnvironment);
}
}  // namespace TW2
