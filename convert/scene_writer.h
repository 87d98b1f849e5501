#pragma once

#include "convert/geometry_builder.h"
#include "convert/model.h"
#include "convert/skeleton.h"
#include "convert/surface_plan.h"

#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/memory_file_writer.h>

namespace TW2::convert
{
/// @name Parts of an animation file
/// Everything stands as in the skeleton's pose at rest.
/// @{

/// A mesh record without geometry per joint.
void writeSkeleton(S_MemoryFileWriter& writer, const Skeleton& skeleton);
/// A mesh record per node, with the geometry that hangs on it. A node that shows exactly the meshes of an earlier one
/// is written as a copy of it. Returns what was written.
struct GeometrySize
{
    std::size_t m_uiVertices = 0;
    std::size_t m_uiTriangles = 0;
    std::size_t m_uiGroups = 0;
};
GeometrySize writeGeometry(S_MemoryFileWriter& writer, const Model& model, const std::vector<SurfacePlan>& plans,
                           const Skeleton& skeleton);
/// Cameras and lights where they stand, and a helper per node that the model has notes about.
///
/// A camera's three values are its horizontal field of view in degrees, its near and its far distance.
void writeStage(S_MemoryFileWriter& writer, const Model& model, const Skeleton& skeleton);
/// @}
}  // namespace TW2::convert
