#pragma once

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
        ATTRIBUTE_COORDINATES = 5  ///< and the numbers after it, one per layer
    };

    MeshCache() = default;
    ~MeshCache();
    MeshCache(const MeshCache&) = delete;
    MeshCache& operator=(const MeshCache&) = delete;

    /// Draws the mesh's triangles with the program in use.
    void draw(P_TriangleMesh& mesh);
    /// Lets go of the copies of meshes that nobody else holds any more.
    void sweep();

private:
    struct Entry
    {
        unsigned int m_uiRevision = 0;
        GLVertexArray m_array;
        GLBuffer m_vertices;
        GLBuffer m_indices;
        GLBuffer m_bones;
        GLBuffer m_weights;
    };
    static void upload(Entry& entry, const P_TriangleMesh& mesh);
    static void uploadBones(Entry& entry, const P_SkinMesh& mesh);

    std::unordered_map<P_TriangleMesh*, Entry> m_mapMeshes;
};
}  // namespace TW2::render
