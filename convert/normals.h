#pragma once

#include "convert/model.h"

namespace TW2::convert
{
/// @name Normals for meshes whose file has none, on the side from which the corners run clockwise (left-handed)
/// @{

/// One normal per triangle; vertices whose triangles lie in different planes are split.
void addFlatNormals(Mesh& mesh);
/// At each place the mean of the triangles around it, the larger ones counting more.
void addSmoothNormals(Mesh& mesh);
/// @}
}  // namespace TW2::convert
