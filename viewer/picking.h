#pragma once

class P_BaseObject;
class P_Camera;

namespace TW2
{
class TW_ObjectAnimation;
}

namespace TW2::viewer
{
/// The mesh index of the bone at a place of the picture: that which pulls most at the vertex nearest to where the line
/// of sight first meets a triangle of `drawn`; of a mesh that follows no bones the mesh itself. Where the line meets
/// nothing, the bone of `skeleton` whose origin is seen within a fortieth of the picture's height. -1: none.
///
/// `x` and `y`: from -1 (left, bottom) to 1 (right, top). Goes over every triangle as it stands now.
[[nodiscard]] int pickBone(TW_ObjectAnimation& drawn, TW_ObjectAnimation& skeleton, const P_Camera& camera, float x,
                           float y);
}  // namespace TW2::viewer
