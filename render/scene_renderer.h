#pragma once

#include "render/view.h"

#include <cstddef>
#include <memory>

class P_Camera;
class P_Scene;

namespace TW2::render
{
/// Draws a scene as it stands after `P_Scene::executeFrame`: its visible meshes with their materials, rigid and
/// skinned, under its lights, with the level of detail that the scene chose, and the context's debug lines.
///
/// Copies of maps, meshes and programs stay with the driver from picture to picture. Primitives are drawn by sort
/// priority; of equal priority the opaque ones first, then the blended ones from far to near. Opaque primitives that
/// share geometry and material, as the copies of a crowd do, are drawn in one call. All matrices of a picture go to the
/// driver at once. At most 16 lights shine.
///
/// **The driver.** OpenGL 3.3 core or OpenGL ES 3.0 (WebGL 2), the same code for both. One renderer belongs to one
/// context. A call may find any state of the driver; it leaves OpenGL's defaults behind, but for the target and
/// viewport, which stay as they were, and for textures that stay bound to units 0 to 9.
class SceneRenderer
{
public:
    /// Needs a current context, now, for every call and when it goes. Throws RenderException.
    SceneRenderer();
    ~SceneRenderer();
    SceneRenderer(const SceneRenderer&) = delete;
    SceneRenderer& operator=(const SceneRenderer&) = delete;

    /// Draws into the bound target, all of its viewport. Maps that are drawn for the first time are validated, which
    /// may throw.
    void draw(const P_Scene& scene, const P_Camera& camera, const View& view);

    /// @name What the driver keeps for this renderer
    /// What was no longer drawn goes with the next picture, a map with the one after that.
    /// @{

    /// Pieces of geometry that lie in the driver.
    [[nodiscard]] std::size_t getKeptMeshCount() const noexcept;
    /// Pictures that lie in the driver.
    [[nodiscard]] std::size_t getKeptMapCount() const noexcept;
    /// @}

private:
    class Drawing;
    std::unique_ptr<Drawing> m_pDrawing;
};
}  // namespace TW2::render
