#pragma once

#include "render/gl_program.h"
#include "render/line_renderer.h"
#include "render/mesh_cache.h"
#include "render/texture_cache.h"
#include "render/view.h"

#include <vector>

class P_Camera;
class P_PrimitiveInstance;
class P_Scene;
class P_VirtualObject;

namespace TW2::render
{
/// Draws a scene as it stands after `P_Scene::executeFrame`: its visible meshes with their materials, rigid and
/// skinned, under its lights, with the level of detail that the scene chose, and the context's debug lines.
///
/// Copies of maps and meshes stay with the driver from picture to picture. Primitives are drawn by sort priority; of
/// equal priority the opaque ones first, then the blended ones from far to near. Bone matrices are handed to the driver
/// as they lie in memory. At most 16 lights shine.
class SceneRenderer
{
public:
    /// Needs a current OpenGL 3.3 context, now and for every call. Throws RenderException.
    SceneRenderer();

    /// Draws into the bound target, all of it. Maps that are drawn for the first time are validated, which may throw.
    void draw(const P_Scene& scene, const P_Camera& camera, const View& view);

private:
    struct Item
    {
        P_VirtualObject* m_pMesh;
        int m_iPrimitive;
        unsigned int m_uiPriority;
        bool m_bBlended;
        float m_fDepth;
    };
    void collect(const P_Scene& scene, const P_Camera& camera);
    void setFrame(const P_Camera& camera, const View& view);
    void setLights(const P_Scene& scene);
    void setBones(const P_VirtualObject& mesh);
    void drawItem(const Item& item, const View& view);

    GLProgram m_program;
    TextureCache m_textures;
    MeshCache m_meshes;
    LineRenderer m_lines;
    GLBuffer m_boneBuffer;
    GLTexture m_boneTexture;
    std::vector<Item> m_vecItems;
    std::vector<M_Matrix4x3Template<float>> m_vecBones;
    const P_VirtualObject* m_pBonesOf = nullptr;
};
}  // namespace TW2::render
