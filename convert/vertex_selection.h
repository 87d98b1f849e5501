#pragma once

#include "convert/model.h"

#include <vector>

namespace TW2::convert
{
/// Gives the mesh new vertices, each a copy of the old one that `origins` names, in all of its lists but the indices.
void selectVertices(Mesh& mesh, const std::vector<unsigned int>& origins);
}  // namespace TW2::convert
