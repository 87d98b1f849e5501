#include <tw2/object/object_animation_callbacks.h>

namespace TW2
{
TW_LoadMeshCallback::~TW_LoadMeshCallback() = default;
TW_MeshLoadedCallback::~TW_MeshLoadedCallback() = default;
TW_MeshParentNotFoundCallback::~TW_MeshParentNotFoundCallback() = default;
TW_ObjectKeyframeAnimationCallback::~TW_ObjectKeyframeAnimationCallback() = default;
}  // namespace TW2
