#pragma once

#include "render/gl_program.h"
#include "render/surface_kind.h"
#include "render/texture_cache.h"

#include <array>
#include <deque>

class P_PrimitiveInstance;

namespace TW2::render
{
/// The programs that draw surfaces, one for each kind, made when the kind is first drawn.
class SurfacePrograms
{
public:
    /// Makes the next drawing show a primitive's material: program, maps, texture matrices, colours and states.
    /// `pickedMesh`: the mesh is the view's picked one. May throw: RenderException, and what validating a map throws.
    void use(const P_PrimitiveInstance& instance, unsigned int slots, const View& view, bool pickedMesh);
    /// Forgets what was set last: somebody else has used the driver.
    void forget() noexcept { m_pUsed = nullptr; }
    /// Lets go of the maps that were not drawn since the last call.
    void sweep() { m_textures.sweep(); }
    /// Maps that the driver has a copy of.
    [[nodiscard]] std::size_t getMapCount() const noexcept { return m_textures.getMapCount(); }

private:
    struct Program
    {
        explicit Program(const SurfaceKind& kind);

        SurfaceKind m_kind;
        GLProgram m_program;
        std::array<GLint, SurfaceKind::mostSets> m_textureMatrices{};
        GLint m_iAmbient;
        GLint m_iDiffuse;
        GLint m_iEmissive;
        GLint m_iSpecular;
        GLint m_iAlphaReference;
        GLint m_iHighlight;
        GLint m_iPickedBone;
        GLint m_iPickedMesh;
    };
    Program& find(const SurfaceKind& kind);
    void bindMaps(const SurfaceKind& kind, const P_Material& material);

    std::deque<Program> m_lstPrograms;  ///< a scene has a handful
    TextureCache m_textures;
    const Program* m_pUsed = nullptr;
};
}  // namespace TW2::render
