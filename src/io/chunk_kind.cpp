#include <tw2/io/chunk_id.h>
#include <tw2/io/chunk_kind.h>

#include <utility>

namespace TW2
{
namespace
{
constexpr std::pair<unsigned int, const char*> kinds[] = {
    {CHUNK_NODE, "Node"},
    {CHUNK_CAMERA, "Camera"},
    {CHUNK_POINT_LIGHT, "Point light"},
    {CHUNK_DIRECTIONAL_LIGHT, "Directional light"},
    {CHUNK_SPOT_LIGHT, "Spot light"},
    {CHUNK_MESH, "Mesh"},
    {CHUNK_MATERIAL_LIST, "Material list"},
    {CHUNK_KEYFRAME_ANIMATION, "Keyframe animation"},
    {CHUNK_SKIN, "Skin"},
    {CHUNK_ENVIRONMENT, "Environment"},
    {CHUNK_HELPER, "Helper"},
    {CHUNK_POINT_LIGHT_ANIMATION, "Point light animation"},
    {CHUNK_DIRECTIONAL_LIGHT_ANIMATION, "Directional light animation"},
    {CHUNK_SPOT_LIGHT_ANIMATION, "Spot light animation"}};
}  // namespace

const char* getChunkKind(unsigned int id) noexcept
{
    for (const auto& [kind, name] : kinds)
    {
        if (kind == id)
        {
            return name;
        }
    }
    return "Unknown";
}
}  // namespace TW2
