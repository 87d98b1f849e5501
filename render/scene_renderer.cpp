#include "render/scene_renderer.h"

#include "render/draw_list.h"
#include "render/frame_block.h"
#include "render/gl_program.h"
#include "render/line_renderer.h"
#include "render/matrix_texture.h"
#include "render/mesh_cache.h"
#include "render/shaders.h"
#include "render/shadow_map.h"
#include "render/surface_programs.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>

#include <array>
#include <optional>
#include <string>

namespace TW2::render
{
namespace
{
/// What a host before may have left, as this room wants it at the beginning of a picture.
void prepareStates()
{
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_POLYGON_OFFSET_FILL);
    glDisable(GL_BLEND);
    // Colours are mixed by the alpha of what is drawn; alpha itself adds up to how much of a pixel is covered.
    glBlendEquation(GL_FUNC_ADD);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

/// Clears the viewport, and nothing of the target beside it.
void clear(bool colors)
{
    std::array<GLint, 4> viewport{};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    glScissor(viewport[0], viewport[1], viewport[2], viewport[3]);
    glEnable(GL_SCISSOR_TEST);
    const float farthest = 1.0F;
    glClearBufferfv(GL_DEPTH, 0, &farthest);
    if (colors)
    {
        const std::array<float, 4> nothing{};
        glClearBufferfv(GL_COLOR, 0, nothing.data());
    }
    glDisable(GL_SCISSOR_TEST);
}

/// Leaves the driver as hosts expect it, also when a picture could not be finished.
struct DefaultsGuard
{
    DefaultsGuard() = default;
    ~DefaultsGuard() { restore(); }
    DefaultsGuard(const DefaultsGuard&) = delete;
    DefaultsGuard& operator=(const DefaultsGuard&) = delete;

private:
    static void restore();
};

void DefaultsGuard::restore()
{
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glDisable(GL_CULL_FACE);
    glFrontFace(GL_CCW);
    glDisable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ZERO);
    glBindVertexArray(0);
    glUseProgram(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    for (GLuint unit = 0; unit < SurfaceKind::mostUnits; ++unit)
    {
        glBindSampler(unit, 0);
    }
    glActiveTexture(GL_TEXTURE0);
}
}  // namespace

/// Everything that needs the headers of OpenGL.
class SceneRenderer::Drawing
{
public:
    void draw(const P_Scene& scene, const P_Camera& camera, const View& view);

    MeshCache m_meshes;
    SurfacePrograms m_surfaces;

private:
    static constexpr unsigned int mostSlots = 4;
    struct Wire
    {
        explicit Wire(unsigned int slots);
        GLProgram m_program;
        GLint m_iColor;
    };
    void drawBackground(const P_Scene& scene, const View& view);
    void drawSurfaces(const View& view);
    void drawWires(const View& view);
    void drawLines(const P_Scene& scene, const View& view);

    FrameBlock m_frame;
    DrawList m_list;
    LineRenderer m_lines;
    std::array<std::optional<Wire>, mostSlots + 1> m_wires;
    std::unique_ptr<ShadowMap> m_shadow;  ///< made when a shadow is first drawn
};

SceneRenderer::SceneRenderer() : m_pDrawing(std::make_unique<Drawing>()) {}
SceneRenderer::~SceneRenderer() = default;

void SceneRenderer::draw(const P_Scene& scene, const P_Camera& camera, const View& view)
{
    m_pDrawing->draw(scene, camera, view);
}

std::size_t SceneRenderer::getKeptMeshCount() const noexcept
{
    return m_pDrawing->m_meshes.getCount();
}

std::size_t SceneRenderer::getKeptMapCount() const noexcept
{
    return m_pDrawing->m_surfaces.getMapCount();
}

SceneRenderer::Drawing::Wire::Wire(unsigned int slots)
    : m_program("#define mostSlots " + std::to_string(slots) + "\n" + placeSource + frameSource + wireVertexSource,
                wireFragmentSource),
      m_iColor(m_program.find("wireColor"))
{
    m_program.use();
    m_program.bindBlock("Frame", FrameBlock::binding);
    GLProgram::set(m_program.find("matrices"), static_cast<int>(MatrixTexture::unit));
}

void SceneRenderer::Drawing::draw(const P_Scene& scene, const P_Camera& camera, const View& view)
{
    m_surfaces.sweep();
    m_surfaces.forget();
    m_meshes.sweep();
    m_list.collect(scene, camera, view);

    const DefaultsGuard guard;
    prepareStates();
    m_list.upload();
    m_frame.upload(scene, camera, view);
    drawBackground(scene, view);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    if (view.m_bSurfaces && view.m_eWireframe != View::Wireframe::Only)
    {
        drawSurfaces(view);
    }
    if (view.m_eWireframe != View::Wireframe::None)
    {
        drawWires(view);
    }
    drawLines(scene, view);
}

void SceneRenderer::Drawing::drawBackground(const P_Scene& scene, const View& view)
{
    bool shadowed = false;
    if (view.m_shadow)
    {
        if (!m_shadow)
        {
            m_shadow = std::make_unique<ShadowMap>();
        }
        shadowed = m_shadow->update(scene, *view.m_shadow, m_list, m_meshes);
    }
    clear(view.m_bTransparent);
    if (!view.m_bTransparent)
    {
        m_lines.drawBackground(view.m_topColor, view.m_bottomColor);
    }
    if (shadowed)
    {
        m_shadow->drawGround(*view.m_shadow, m_frame.getViewProjection());
    }
}

void SceneRenderer::Drawing::drawSurfaces(const View& view)
{
    glCullFace(GL_BACK);
    for (const DrawList::Batch& batch : m_list.getBatches())
    {
        m_surfaces.use(*batch.m_pInstance, batch.m_uiSlots, view, batch.m_bPicked);
        // Front faces run clockwise, seen in the picture; a mirrored object shows its triangles the other way round.
        glFrontFace(batch.m_bMirrored ? GL_CCW : GL_CW);
        const bool blended = batch.m_bBlended &&
                             (view.m_eSurface == View::Surface::Materials || view.m_eSurface == View::Surface::Unlit);
        if (blended)
        {
            glEnable(GL_BLEND);
        }
        else
        {
            glDisable(GL_BLEND);
        }
        glDepthMask(blended ? GL_FALSE : GL_TRUE);
        m_meshes.draw(batch, m_list.getFirstMatrices());
    }
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
}

void SceneRenderer::Drawing::drawWires(const View& view)
{
    glEnable(GL_BLEND);
    for (const DrawList::Batch& batch : m_list.getBatches())
    {
        std::optional<Wire>& wire = m_wires.at(batch.m_uiSlots);
        if (!wire)
        {
            wire.emplace(batch.m_uiSlots);
        }
        wire->m_program.use();
        GLProgram::setColor(wire->m_iColor, view.m_wireColor, view.m_wireColor.alpha / 255.0F);
        m_meshes.draw(batch, m_list.getFirstMatrices(), true);
    }
    glDisable(GL_BLEND);
}

void SceneRenderer::Drawing::drawLines(const P_Scene& scene, const View& view)
{
    const M_Matrix4Template<float>& viewProjection = m_frame.getViewProjection();
    m_lines.draw(view.m_vecLines, viewProjection, view.m_fLineWidth);
    if (const P_Context* context = scene.getContext())
    {
        const auto& lines = context->getDebugLines();
        m_lines.draw({lines.data(), lines.size()}, viewProjection, view.m_fLineWidth);
    }
    glDisable(GL_DEPTH_TEST);
    m_lines.draw(view.m_vecOverlayLines, viewProjection, view.m_fLineWidth);
}
}  // namespace TW2::render
