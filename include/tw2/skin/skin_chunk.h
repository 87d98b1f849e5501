#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>

class S_MemoryFile;
class S_MemoryFileWriter;

namespace TW2
{
/// Which bones move which vertex of a skin, and how strongly: the content of a skin data file.
///
/// A skin's meshes are made of primitives, one per material; the vertices of all primitives stand one after the other.
/// Vertex v of primitive p is entry `primitiveFirstVertices[p] + v` of the two per-vertex lists, and its influence k is
/// entry `vertexInfluenceStarts[...] + k` of the two influence lists.
///
/// Primitive p holds the data of primitive p of *every* mesh of the skin: the number of a primitive counts within its
/// mesh. Skins of several meshes therefore either keep the bindings of each mesh's first primitive in step, or, which
/// is what exporters do, store all vertices as primitive 0 and let the meshes' vertex maps name them: a mesh vertex
/// with a vertex map entry m takes its influences from vertex m of primitive 0.
struct TW2_API SkinChunk
{
    S_Vector<S_String> objectNames;                 ///< the skin's meshes, in their order
    S_Vector<S_String> boneNames;                   ///< the skeleton's objects that influence vertices
    S_Vector<int> vertexInfluenceStarts;            ///< per vertex: its first influence
    S_Vector<int> vertexBoneCounts;                 ///< per vertex: how many influences it has (at most 4 can be drawn)
    S_Vector<int> influenceBones;                   ///< per influence: index into `boneNames`
    S_Vector<float> influenceWeights;               ///< per influence: weight; those of a vertex add up to 1
    bool sortedByPrimitive = true;                  ///< false for data of version 0, which know no primitives
    S_Vector<unsigned int> primitiveVertexCounts;   ///< per primitive: number of its vertices
    S_Vector<unsigned int> primitiveFirstVertices;  ///< per primitive: its first vertex

    /// Back to the defaults.
    void reset() { *this = SkinChunk(); }
    /// Empty when every index of the record lies inside the list that it points into and every weight is a number; else
    /// the first value that is wrong, by name. A record that passes can be asked for every vertex of its primitives
    /// without further checks.
    [[nodiscard]] S_String findInvalidValue() const;
    friend bool operator==(const SkinChunk&, const SkinChunk&) = default;
};

/// Fills a record from the skin chunk at the file's position. Data of version 0 become one primitive that holds all
/// vertices, the influences of a vertex in the order in which they stand in the file.
///
/// Throws S_MemoryFileException for a damaged file and for values that `findInvalidValue` finds; the record is partly
/// filled then.
TW2_API S_MemoryFile& operator>>(S_MemoryFile& file, SkinChunk& chunk);

/// Writes the record as a skin chunk of the newest version. Not every record of version 0 data reads back equal:
/// `sortedByPrimitive` becomes true.
TW2_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const SkinChunk& chunk);
}  // namespace TW2
