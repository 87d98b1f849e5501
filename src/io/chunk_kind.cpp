#include <tw2/io/chunk_id.h>
#include <tw2/io/chunk_kind.h>

namespace TW2
{
const char* getChunkKind(unsigned int id) noexcept
{
    switch (id)
    {
        case CHUNK_NODE:
            return "Node";
        case CHUNK_CAMERA:
            return "Camera";
        case CHUNK_POINT_LIGHT:
            return "Point light";
        case CHUNK_DIRECTIONAL_LIGHT:
            return "Directional light";
        case CHUNK_SPOT_LIGHT:
            return "Spot light";
        case CHUNK_MESH:
            return "Mesh";
        case CHUNK_MATERIAL_LIST:
            return "Material list";
        case CHUNK_KEYFRAME_ANIMATION:
            return "Keyframe animation";
        case CHUNK_SKIN:
            return "Skin";
        case CHUNK_ENVIRONMENT:
            return "Environment";
        case CHUNK_HELPER:
            return "Helper";
        case CHUNK_POINT_LIGHT_ANIMATION:
            return "Point light animation";
        case CHUNK_DIRECTIONAL_LIGHT_ANIMATION:
            return "Directional light animation";
        case CHUNK_SPOT_LIGHT_ANIMATION:
            return "Spot light animation";
        default:
            return "Unknown";
    }
}
}  // namespace TW2
