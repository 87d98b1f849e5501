#pragma once

#include <tw2/io/mesh_chunk.h>

namespace TW2
{
struct LegacyMeshLists;
struct LegacyMeshSmoothingLists;

/// Turns a mesh of the old layout into the current one: polygons with smoothing groups, texture polygons and a material
/// each become vertices with normals and coordinates and triangles, in groups by material.
///
/// The mesh has vertices and faces, and its indices have been checked. A mesh without material names becomes a single
/// group and stays without them. Returns what does not fit, as `findFault` does; the mesh is then as it was.
S_String convertLegacyMesh(MeshChunk& mesh);

/// @name Steps of the conversion
/// @{

/// Gives every vertex its normal, with copies of vertices where smoothing groups meet: first the largest set of
/// triangles around a vertex that share a bit with one of them gets a copy, then the largest of what is left, until all
/// that are left share a bit with one of them.
void smoothLegacyMesh(const S_Vector<unsigned int>& masks, LegacyMeshLists& lists, LegacyMeshSmoothingLists& work);

/// Gives every vertex its coordinate in one more channel, with copies of vertices that have several.
void splitByTexture(const TextureChannelChunk& channel, LegacyMeshLists& lists);

/// Sorts the polygons into one group per material, with the vertices that each needs; returns what does not fit.
S_String groupByMaterial(const MeshChunk& mesh, LegacyMeshLists& lists);
/// @}
}  // namespace TW2
