#pragma once

#include "render/draw_list.h"
#include "render/gl_handle.h"

#include <unordered_map>

class P_SkinMesh;
class P_TriangleMesh;

namespace TW2::render
{
/// The renderer's copies of triangle meshes, made when a mesh is first drawn and again when it has changed.
///
/// A copy holds a reference on its mesh, so that no other mesh can take its place in memory; `sweep` lets go of meshes
/// that nobody else holds.
class MeshCache
{
public:
    /// Vertex attributes of the programs that draw meshes.
    enum Attribute : GLuint
    {
        ATTRIBUTE_POSITION = 0,
        ATTRIBUTE_NORMAL = 1,
        ATTRIBUTE_COLOR = 2,
        ATTRIBUTE_BONES = 3,
        ATTRIBUTE_WEIGHTS = 4,
        ATTRIBUTE_COORDINATES = 5,  ///< and the numbers after it, one per layer
        ATTRIBUTE_FIRST_MATRIX = 9  ///< of the object: one value an object, not a vertex
    };

    MeshCache() = default;
    ~MeshCache();
    MeshCache(const MeshCache&) = delete;
    MeshCache& operator=(const MeshCache&) = delete;

    /// Draws a batch's triangles, for each of its objects once, with the program in use. `lines`: their sides as lines.
    void draw(const DrawList::Batch& batch, const GLBuffer& firstMatrices, bool lines = false);
    /// Lets go of the copies of meshes that nobody else holds any more.
    void sweep();
    /// Meshes there is a copy of.
    [[nodiscard]] std::size_t getCount() const noexcept { return m_mapMeshes.size(); }

private:
    struct Entry
    {
        unsigned int m_uiRevision = 0;
        GLVertexArray m_array;
        GLBuffer m_vertices;
        GLBuffer m_indices;
        GLBuffer m_bones;
        GLBuffer m_weights;
        GLBuffer m_lines;  ///< three lines a triangle; made when they are first drawn
        bool m_bLinesCurrent = false;
    };
    static void uploadLines(Entry& entry, const P_TriangleMesh& mesh);
    static void upload(Entry& entry, const P_TriangleMesh& mesh);
    static void uploadBones(Entry& entry, const P_SkinMesh& mesh);

    std::unordered_map<P_TriangleMesh*, Entry> m_mapMeshes;
};
}  // namespace TW2::render
