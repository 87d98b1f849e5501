#include "render/scene_renderer.h"

#include "render/material_uniforms.h"
#include "render/shaders.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/light.h>
#include <platform/scene/material.h>
#include <platform/scene/point_light.h>
#include <platform/scene/scene.h>
#include <platform/scene/spot_light.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

namespace TW2::render
{
namespace
{
constexpr int boneUnit = 8;
constexpr int mapUnits = 8;
constexpr int mostLights = 16;

using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

/// The lights of a scene as the program takes them.
struct LightUniforms
{
    int m_iCount = 0;
    std::array<float, std::size_t{4} * mostLights> m_colors{};
    std::array<float, std::size_t{4} * mostLights> m_positions{};
    std::array<float, std::size_t{4} * mostLights> m_directions{};
    std::array<float, std::size_t{4} * mostLights> m_cones{};

    static void put(std::array<float, std::size_t{4} * mostLights>& list, int index, const Vector& xyz, float w)
    {
        float* place = list.data() + std::ptrdiff_t{4} * index;
        place[0] = xyz.x;
        place[1] = xyz.y;
        place[2] = xyz.z;
        place[3] = w;
    }
};

float cosineOfHalf(float degrees)
{
    return std::cos(degrees * std::numbers::pi_v<float> / 360.0F);
}
}  // namespace

SceneRenderer::SceneRenderer()
    : m_program(materialVertexShader, materialFragmentShader),
      m_boneBuffer(GLBuffer::create()),
      m_boneTexture(GLTexture::create())
{
    m_program.use();
    std::array<int, mapUnits> units{};
    for (int unit = 0; unit < mapUnits; ++unit)
    {
        units[static_cast<std::size_t>(unit)] = unit;
        m_textures.bind(static_cast<unsigned int>(unit), nullptr, P_Material::FILTER_MODE::Point,
                        P_Material::TEXTURE_ADDRESS_MODE::Wrap);
    }
    m_program.setInts("maps", units.data(), mapUnits);
    m_program.set("boneMatrices", boneUnit);
    const Matrix none;
    glBindBuffer(GL_TEXTURE_BUFFER, m_boneBuffer.get());
    glBufferData(GL_TEXTURE_BUFFER, sizeof(none), &none, GL_STREAM_DRAW);
    glActiveTexture(GL_TEXTURE0 + boneUnit);
    glBindTexture(GL_TEXTURE_BUFFER, m_boneTexture.get());
    glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32F, m_boneBuffer.get());
}

void SceneRenderer::draw(const P_Scene& scene, const P_Camera& camera, const View& view)
{
    m_textures.sweep();
    m_meshes.sweep();
    collect(scene, camera);

    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    m_lines.drawBackground(view.m_topColor, view.m_bottomColor);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    // Front faces run clockwise, seen in the picture.
    glFrontFace(GL_CW);
    glCullFace(GL_BACK);

    m_program.use();
    setFrame(camera, view);
    setLights(scene);
    m_pBonesOf = nullptr;
    for (const Item& item : m_vecItems)
    {
        drawItem(item, view);
    }

    glDepthMask(GL_TRUE);
    glDisable(GL_CULL_FACE);
    const M_Matrix4Template<float> viewProjection =
        M_Matrix4Template<float>(camera.getViewMatrix()) * camera.getProjectionMatrix();
    m_lines.draw(view.m_vecLines, viewProjection);
    if (const P_Context* context = scene.getContext())
    {
        const auto& lines = context->getDebugLines();
        m_lines.draw({lines.data(), lines.size()}, viewProjection);
    }
    glDisable(GL_DEPTH_TEST);
    m_lines.draw(view.m_vecOverlayLines, viewProjection);
}

void SceneRenderer::collect(const P_Scene& scene, const P_Camera& camera)
{
    m_vecItems.clear();
    for (P_VirtualObject* mesh : scene.getVisibleMeshes())
    {
        const Vector center = mesh->getObjectToWorldMatrix().getTranslation();
        const float depth = camera.getViewMatrix().transformPoint(center).z;
        for (int i = 0; i < mesh->getPrimitiveCount(); ++i)
        {
            const P_PrimitiveInstance& instance = *mesh->getPrimitiveInstance(i);
            if (!instance.isVisible() || !instance.getGeometry())
            {
                continue;
            }
            const P_Material* material = instance.getMaterial();
            m_vecItems.push_back({mesh, i, material ? material->getSortPriority() : P_Material::defaultSortPriority,
                                  material && material->isBlended(), depth});
        }
    }
    std::ranges::stable_sort(
        m_vecItems, {},
        [](const Item& item)
        { return std::tuple(item.m_uiPriority, item.m_bBlended, item.m_bBlended ? -item.m_fDepth : 0.0F); });
}

void SceneRenderer::setFrame(const P_Camera& camera, const View& view)
{
    m_program.set("view", camera.getViewMatrix());
    m_program.set("projection", camera.getProjectionMatrix());
    m_program.set("eye", camera.getObjectToWorldMatrix().getTranslation());
    m_program.setColor("ambientSky", view.m_ambientSky);
    m_program.setColor("ambientGround", view.m_ambientGround);
    const Vector fog = view.m_fogColor.getRGB() * (1.0F / 255.0F);
    const std::array<float, 4> fogColor{fog.x, fog.y, fog.z, view.m_fFogEnd};
    m_program.setFloat4s("fogColor", fogColor.data(), 1);
    m_program.set("fogStart", view.m_fFogStart);
}

void SceneRenderer::setLights(const P_Scene& scene)
{
    LightUniforms lights;
    for (const P_Light* light : scene.getLights())
    {
        if (lights.m_iCount == mostLights)
        {
            break;
        }
        const int i = lights.m_iCount++;
        const Matrix& world = light->getObjectToWorldMatrix();
        float range = 0.0F;
        if (light->getLightKind() == P_Light::Kind::Point)
        {
            range = static_cast<const P_PointLight*>(light)->getFalloffRange();
        }
        else if (light->getLightKind() == P_Light::Kind::Spot)
        {
            const auto* spot = static_cast<const P_SpotLight*>(light);
            range = spot->getFalloffRange();
            LightUniforms::put(lights.m_cones, i,
                               {cosineOfHalf(spot->getHotspotAngle()), cosineOfHalf(spot->getFalloffAngle()), 0.0F},
                               0.0F);
        }
        LightUniforms::put(lights.m_colors, i, light->getColor().getRGB() * (1.0F / 255.0F),
                           static_cast<float>(light->getLightKind()));
        LightUniforms::put(lights.m_positions, i, world.getTranslation(), range);
        LightUniforms::put(lights.m_directions, i, world.getRow(2).normalized(), 0.0F);
    }
    m_program.set("lightCount", lights.m_iCount);
    m_program.setFloat4s("lightColors", lights.m_colors.data(), mostLights);
    m_program.setFloat4s("lightPositions", lights.m_positions.data(), mostLights);
    m_program.setFloat4s("lightDirections", lights.m_directions.data(), mostLights);
    m_program.setFloat4s("lightCones", lights.m_cones.data(), mostLights);
}

void SceneRenderer::setBones(const P_VirtualObject& mesh)
{
    if (m_pBonesOf == &mesh)
    {
        return;
    }
    m_pBonesOf = &mesh;
    const std::size_t count = mesh.getBoneMatrixCount();
    m_program.set("boneCount", static_cast<int>(count));
    if (count == 0)
    {
        return;
    }
    // The owner usually keeps its matrices in one row: then they go over as they lie.
    const Matrix* first = &mesh.getBoneMatrix(0);
    bool inRow = true;
    for (std::size_t bone = 1; bone < count && inRow; ++bone)
    {
        inRow = &mesh.getBoneMatrix(bone) == first + bone;
    }
    if (!inRow)
    {
        m_vecBones.clear();
        for (std::size_t bone = 0; bone < count; ++bone)
        {
            m_vecBones.push_back(mesh.getBoneMatrix(bone));
        }
        first = m_vecBones.data();
    }
    glBindBuffer(GL_TEXTURE_BUFFER, m_boneBuffer.get());
    glBufferData(GL_TEXTURE_BUFFER, static_cast<GLsizeiptr>(count * sizeof(Matrix)), first, GL_STREAM_DRAW);
}

void SceneRenderer::drawItem(const Item& item, const View& view)
{
    const P_PrimitiveInstance& instance = *item.m_pMesh->getPrimitiveInstance(item.m_iPrimitive);
    P_TriangleMesh& geometry = *instance.getGeometry();
    const P_SkinMesh* skin = geometry.asSkinMesh();
    const Matrix& world = item.m_pMesh->getObjectToWorldMatrix();
    m_program.set("world", world);
    m_program.set("boneSlots", skin ? static_cast<int>(skin->getSlotCount()) : 0);
    if (skin)
    {
        setBones(*item.m_pMesh);
    }
    setMaterial(m_program, m_textures, instance.getMaterial(), instance);
    if (!view.m_bFog)
    {
        m_program.set("fogged", 0);
    }
    // A mirrored object shows its triangles the other way round.
    glFrontFace(world.determinant() < 0.0F ? GL_CCW : GL_CW);
    glDepthMask(item.m_bBlended ? GL_FALSE : GL_TRUE);
    m_meshes.draw(geometry);
}
}  // namespace TW2::render
