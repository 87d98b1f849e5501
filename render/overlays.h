#pragma once

#include "render/view.h"

class P_BaseObject;

namespace TW2::render
{
/// @name Lines that show what cannot be seen
/// Each adds lines in world space, for the scene as it stands, to a view. Axes lie over everything; the others are
/// hidden by what is before them. Of a level-of-detail object the level in use is shown.
/// @{

/// The axes of every mesh in `root`'s subtree, bones included: x red, y green, z blue, `length` long in world space.
void addAxes(View& view, const P_BaseObject& root, float length);
/// The box of an object, as the object gives it; asking may compute it.
void addBoundingBox(View& view, P_BaseObject& object, const G_FColor& color);
/// The sphere of an object, as three circles.
void addBoundingSphere(View& view, P_BaseObject& object, const G_FColor& color);
/// A line of `length` from each drawn vertex of `root`'s subtree along its normal. Meshes without normals have none.
void addVertexNormals(View& view, const P_BaseObject& root, float length, const G_FColor& color);
/// @}
}  // namespace TW2::render
