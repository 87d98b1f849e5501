#include "bench/yardstick.h"
#include "render/offscreen_context.h"
#include "render/picture_target.h"
#include "render/render_exception.h"
#include "render/scene_renderer.h"
#include "render/studio.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/material.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <array>
#include <cmath>
#include <memory>
#include <vector>

namespace TW2::bench
{
namespace
{
using Matrix = M_Matrix4x3Template<float>;

constexpr unsigned int rings = 40;
constexpr unsigned int corners = 20;
constexpr unsigned int bones = 30;

/// Columns of 800 vertices and 1520 triangles in a square, each bent by bones of its own; they share their geometry.
class Columns
{
public:
    Columns(P_Scene& scene, unsigned int count)
    {
        m_material.addShadingLayer(P_Material::SHADING_MODE::Gouraud, false);
        m_material.enableLighting(true);
        build(*m_vecObjects.emplace_back(std::make_unique<P_VirtualObject>(1)));
        while (m_vecObjects.size() < count)
        {
            m_vecObjects.push_back(std::make_unique<P_VirtualObject>(*m_vecObjects.front()));
        }
        m_vecBones.resize(std::size_t{count} * bones);
        const auto side = static_cast<unsigned int>(std::ceil(std::sqrt(static_cast<float>(count))));
        for (unsigned int i = 0; i < count; ++i)
        {
            S_Vector<const Matrix*> list;
            for (unsigned int bone = 0; bone < bones; ++bone)
            {
                list.push_back(&m_vecBones[std::size_t{i} * bones + bone]);
            }
            m_vecObjects[i]->setBoneMatrices(list);
            m_vecObjects[i]->setPosition(2.0F * static_cast<float>(i % side), 0.0F,
                                         2.0F * static_cast<float>(i / side));
            m_vecObjects[i]->addTo(&scene);
        }
    }

    /// Bends each column a little differently.
    void bend(unsigned int frame)
    {
        for (std::size_t i = 0; i < m_vecBones.size(); ++i)
        {
            const float phase = 0.1F * static_cast<float>(frame) + 0.2F * static_cast<float>(i);
            m_vecBones[i].setTranslation({0.2F * std::sin(phase), 0.0F, 0.2F * std::cos(phase)});
        }
    }

private:
    void build(P_VirtualObject& object)
    {
        P_VertexFormat format;
        format.constructFromOldVertexFormat(P_VertexFormat::POSITION | P_VertexFormat::NORMAL |
                                            2U << P_VertexFormat::boneCountShift);
        P_SkinMesh& mesh = *object.createSkinMesh(0, &m_material, format);
        mesh.allocate(2 * (rings - 1) * corners, rings * corners, false);
        mesh.lock();
        for (unsigned int vertex = 0; vertex < rings * corners; ++vertex)
        {
            const float angle = 6.2831853F * static_cast<float>(vertex % corners) / corners;
            const float height = static_cast<float>(vertex / corners) / (rings - 1);
            const M_Vector3Template<float> outwards{std::cos(angle), 0.0F, std::sin(angle)};
            mesh.getVertexBuffer().setPosition(vertex, outwards * 0.4F + M_Vector3Template<float>{0, 3.0F * height, 0});
            mesh.getVertexBuffer().setNormal(vertex, outwards);
            const float bone = height * (bones - 1);
            const auto below = static_cast<unsigned int>(std::min(bone, bones - 2.0F));
            const std::array<float, 2> weights{1.0F - (bone - static_cast<float>(below)),
                                               bone - static_cast<float>(below)};
            for (unsigned int slot = 0; slot < 2; ++slot)
            {
                mesh.setBoneIndex(vertex, slot, below + slot);
                mesh.setBoneWeight(vertex, slot, weights[slot]);
            }
        }
        unsigned int triangle = 0;
        for (unsigned int ring = 0; ring + 1 < rings; ++ring)
        {
            for (unsigned int corner = 0; corner < corners; ++corner)
            {
                const unsigned int a = ring * corners + corner;
                const unsigned int b = ring * corners + (corner + 1) % corners;
                mesh.getIndexBuffer().setTriangle(triangle++, a, a + corners, b);
                mesh.getIndexBuffer().setTriangle(triangle++, b, a + corners, b + corners);
            }
        }
        mesh.unlock();
    }

    P_Material m_material;
    std::vector<std::unique_ptr<P_VirtualObject>> m_vecObjects;
    std::vector<Matrix> m_vecBones;
};

/// Whole pictures of 800 x 600 pixels, without samples: the scene's frame, drawing, and reading the picture back.
void drawCrowd(benchmark::State& state)
try
{
    const render::OffscreenContext driver;
    P_Context context;
    P_Scene scene(&context);
    P_Camera camera;
    context.setCurrentCamera(&camera);
    const auto count = static_cast<unsigned int>(state.range(0));
    Columns columns(scene, count);
    const float extent = 2.0F * std::sqrt(static_cast<float>(count));
    camera.lookAt({0.5F * extent, 0.6F * extent + 2.0F, -0.9F * extent - 3.0F}, {0.5F * extent, 1.0F, 0.3F * extent},
                  {0.0F, 1.0F, 0.0F});
    camera.setPerspective(50.0F, 800.0F / 600.0F, 0.1F, 1000.0F);
    const render::StudioLights lights(scene, camera, 1.0F);
    render::SceneRenderer renderer;
    const render::PictureTarget target(800, 600, 0);
    unsigned int frame = 0;
    for (auto _ : state)
    {
        columns.bend(++frame);
        scene.executeFrame();
        target.bind();
        renderer.draw(scene, camera, {});
        benchmark::DoNotOptimize(target.read().getPixels());
    }
    report(state, {.items = count, .bytes = std::size_t{800} * 600 * 4});
}
catch (const render::RenderException& exception)
{
    state.SkipWithError(exception.getErrorMessage());
}
BENCHMARK(drawCrowd)->Name("render/crowd")->Arg(1)->Arg(100);
}  // namespace
}  // namespace TW2::bench
