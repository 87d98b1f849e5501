#pragma once

#include "io/shared_bits.h"

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

#include <array>
#include <cstdint>

namespace TW2
{
/// First set of work lists of the conversion of old meshes: the mesh while it is taken apart.
///
/// Vertices are numbered through the conversion: first those of the file, then the copies in the order of their making.
struct LegacyMeshLists : S_Allocated
{
    LegacyMeshLists();

    S_Vector<M_Vector3Template<float>> positions;
    S_Vector<M_Vector3Template<float>> normals;
    S_Vector<unsigned int> corners;  ///< vertex of each polygon corner, three per polygon
    S_Vector<unsigned int> sources;  ///< for each copy the vertex that it was made from
    std::size_t fileVertices = 0;    ///< vertices of the file; `sources` begins with the vertex of this number

    S_Vector<unsigned int> textureCorners;                                  ///< coordinate of each polygon corner
    std::array<S_Vector<M_Vector3Template<float>>, 10> channelCoordinates;  ///< per converted channel, by vertex
    std::size_t channelCount = 0;                                           ///< channels converted so far
    S_Vector<unsigned char> hasCoordinate;                                  ///< per vertex, in the channel at hand
    S_Vector<unsigned int> copyTable;                                       ///< hash table of the copies of the channel

    S_Vector<unsigned int> materialStarts;     ///< per material its first entry in `materialPolygons`, and the end
    S_Vector<unsigned int> materialPolygons;   ///< polygons, material by material
    S_Vector<unsigned int> groupOfVertex;      ///< last group that numbered a vertex, plus one
    S_Vector<unsigned int> numberInGroup;      ///< its number there
    S_Vector<unsigned int> groupVertices;      ///< vertices of all groups, group by group
    S_Vector<unsigned int> groupVertexCounts;  ///< per group
    S_Vector<unsigned int> groupTriangleCounts;
    S_Vector<std::uint16_t> groupIndices;  ///< triangles of all groups, group by group

    /// Appends a copy of `vertex` and returns its number. Normals and coordinates are the caller's.
    unsigned int appendCopy(unsigned int vertex);
    /// The vertex of the file that `vertex` was made from.
    [[nodiscard]] unsigned int getFileVertex(unsigned int vertex) const
    {
        while (vertex >= fileVertices)
        {
            vertex = sources[vertex - fileVertices];
        }
        return vertex;
    }
};

/// Second set: what the smoothing needs beside.
struct LegacyMeshSmoothingLists : S_Allocated
{
    LegacyMeshSmoothingLists();

    S_Vector<M_Vector3Template<float>> triangleNormals;
    S_Vector<unsigned int> triangles;       ///< triangles around each vertex, vertex by vertex
    S_Vector<unsigned int> triangleStarts;  ///< per vertex its first entry in `triangles`, and the end

    // Of the vertex that is being split.
    S_Vector<unsigned int> around;           ///< masks of the triangles left around it
    S_Vector<SharedBitCounter::Mask> masks;  ///< the different ones
    SharedBitCounter counter;
};

/// @name Life
/// The sets live from mesh to mesh. They are made when they are needed and go on request or with the library.
/// @{

/// The sets, made when they are not there.
LegacyMeshLists& getLegacyMeshLists();
LegacyMeshSmoothingLists& getLegacyMeshSmoothingLists();
/// Releases both sets; sets that are not there are skipped.
void releaseLegacyMeshLists() noexcept;
/// @}
}  // namespace TW2
