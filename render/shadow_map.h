#pragma once

#include "render/draw_list.h"
#include "render/gl_handle.h"
#include "render/gl_program.h"
#include "render/mesh_cache.h"
#include "render/view.h"

#include <array>
#include <optional>

class P_Scene;

namespace TW2::render
{
/// The shadow that a directional light throws on the ground.
class ShadowMap
{
public:
    ShadowMap();

    /// Draws what throws the shadow into the map. The bound target and its viewport stay as they are. Does nothing, and
    /// returns false, when the scene has no directional light that shines down, or nothing throws.
    [[nodiscard]] bool update(const P_Scene& scene, const View::Shadow& shadow, const DrawList& list,
                              MeshCache& meshes);
    /// Darkens the ground where the map says. Blending is on afterwards no more.
    void drawGround(const View::Shadow& shadow, const M_Matrix4Template<float>& viewProjection);

private:
    static constexpr unsigned int mostSlots = 4;
    struct Caster
    {
        explicit Caster(unsigned int slots);
        GLProgram m_program;
        GLint m_iToShadow;
    };
    void resize(int side);
    void look(const M_Vector3Template<float>& direction, const View::Shadow& shadow);
    void drawCasters(const DrawList& list, MeshCache& meshes);

    GLTexture m_texture;
    GLFramebuffer m_target;
    GLProgram m_ground;
    GLVertexArray m_noArray;
    std::array<std::optional<Caster>, mostSlots + 1> m_casters;
    M_Matrix4Template<float> m_toShadow;
    std::array<float, 4> m_area{};  ///< of the ground: x and z from, x and z to
    int m_iSide = 0;                ///< pixels of the map
};
}  // namespace TW2::render
