#pragma once

namespace TW2
{
class TW_VirtualObject;
}

namespace TW2::viewer
{
/// Shows and hides the meshes of an object as the visibility tracks of an animation say; -1 shows all. Skins have none.
void followVisibility(TW_VirtualObject& object, int animation, float time);
}  // namespace TW2::viewer
