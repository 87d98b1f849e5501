#include "render/scene_renderer.h"

#include "render/offscreen_context.h"
#include "render/picture_target.h"
#include "render/render_exception.h"
#include "render/studio.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/map.h>
#include <platform/scene/material.h>
#include <platform/scene/material_helpers.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace
{
using TW2::render::View;
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

constexpr unsigned int side = 64;  // pixels of a test picture; a unit of the z = 0 plane is 16 of them

/// A camera at z = -4 that sees 4 x 4 units of the plane z = 0, and a driver to draw with.
class RendererTest : public testing::Test
{
protected:
    void SetUp() override
    {
        try
        {
            m_driver.emplace();
        }
        catch (const TW2::render::RenderException& exception)
        {
            GTEST_SKIP() << exception.getErrorMessage();
        }
        m_renderer.emplace();
        m_target.emplace(side, side, 4);
        m_camera.lookAt({0.0F, 0.0F, -4.0F}, {}, {0.0F, 1.0F, 0.0F});
        m_camera.setPerspective(2.0F * std::atan(0.5F) * 180.0F / 3.14159265F, 1.0F, 0.1F, 100.0F);
        m_context.setCurrentCamera(&m_camera);
        m_view.m_topColor = m_view.m_bottomColor = G_FColor(0.0F, 0.0F, 255.0F);
        m_view.m_ambientSky = m_view.m_ambientGround = G_FColor(255.0F, 255.0F, 255.0F);
    }

    /// Adds a square of one unit with its corner at (x, y), facing the camera or, with `turned`, away from it.
    P_VirtualObject& addSquare(float x, float y, P_Material* material, bool turned = false, float z = 0.0F)
    {
        auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(1));
        P_VertexFormat format;
        format.constructFromOldVertexFormat(0x31);
        fill(*object.createTriangleMesh(0, material, format), turned);
        object.setMatrix(Matrix::translation({x, y, z}));
        object.addTo(&m_scene);
        return object;
    }

    static void fill(P_TriangleMesh& mesh, bool turned)
    {
        mesh.allocate(2, 4, false);
        mesh.lock();
        for (unsigned int i = 0; i < 4; ++i)
        {
            const auto u = static_cast<float>(i % 2);
            const auto v = static_cast<float>(i / 2);
            mesh.getVertexBuffer().setPosition(i, {u, v, 0.0F});
            mesh.getVertexBuffer().setNormal(i, {0.0F, 0.0F, -1.0F});
            mesh.getVertexBuffer().setTextureCoordinate(i, 0, u, 1.0F - v);
        }
        mesh.getIndexBuffer().setTriangle(0, 0, turned ? 1 : 2, turned ? 2 : 1);
        mesh.getIndexBuffer().setTriangle(1, 1, turned ? 3 : 2, turned ? 2 : 3);
        mesh.unlock();
    }

    /// A plain colour, whatever the light.
    P_Material& addColor(const G_FColor& color)
    {
        P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
        material.init(1, 1);
        material.setEmissiveColor(color);
        material.addTextureLayer(0, 0, P_Material::BLENDING_MODE::Opaque, P_Material::FILTER_MODE::Point,
                                 P_Material::TEXTURE_ADDRESS_MODE::Wrap);
        material.setTexture(0, &addMap(1, 1, {255, 255, 255, 255}));
        return material;
    }

    /// A map whose pixels are given row by row.
    P_Map& addMap(unsigned int width, unsigned int height, const std::vector<unsigned char>& bytes)
    {
        G_Image& image = *m_images.emplace_back(std::make_unique<G_Image>(width, height));
        std::memcpy(image.accessPixels(), bytes.data(), bytes.size());
        P_Map& map = *m_maps.emplace_back(std::make_unique<P_Map>(&image, nullptr));
        map.validate();
        return map;
    }

    G_Image draw()
    {
        m_scene.executeFrame();
        m_target->bind();
        m_renderer->draw(m_scene, m_camera, m_view);
        return m_target->read();
    }

    /// Colour at a place of the plane z = 0.
    static std::array<int, 3> at(const G_Image& picture, float x, float y)
    {
        const auto column = static_cast<unsigned int>((x + 2.0F) * 16.0F);
        const auto row = static_cast<unsigned int>((2.0F - y) * 16.0F);
        const unsigned char* pixel = picture.getPixel(column, row);
        return {pixel[0], pixel[1], pixel[2]};
    }

    static constexpr std::array<int, 3> background{0, 0, 255};
    static constexpr std::array<int, 3> red{255, 0, 0};
    static constexpr std::array<int, 3> green{0, 255, 0};

    std::optional<TW2::render::OffscreenContext> m_driver;
    std::optional<TW2::render::SceneRenderer> m_renderer;
    std::optional<TW2::render::PictureTarget> m_target;
    View m_view;
    P_Context m_context;
    P_Scene m_scene{&m_context};
    P_Camera m_camera;
    std::vector<std::unique_ptr<G_Image>> m_images;
    std::vector<std::unique_ptr<P_Map>> m_maps;
    std::vector<std::unique_ptr<P_Material>> m_materials;
    std::vector<std::unique_ptr<P_VirtualObject>> m_objects;
};
}  // namespace

TEST_F(RendererTest, ShowsXToTheRightYUpAndOnlyWhatFacesTheCamera)
{
    P_Material& color = addColor({255.0F, 0.0F, 0.0F});
    addSquare(0.5F, 0.5F, &color);
    addSquare(-1.5F, -1.5F, &color, true);
    const G_Image picture = draw();
    EXPECT_EQ(at(picture, 1.0F, 1.0F), red);
    EXPECT_EQ(at(picture, -1.0F, -1.0F), background) << "a square that faces away";
    EXPECT_EQ(at(picture, -1.0F, 1.0F), background);
    EXPECT_EQ(at(picture, 1.0F, -1.0F), background);

    color.setBackfaceCullingMode(P_Material::CullingMode::None);
    EXPECT_EQ(at(draw(), -1.0F, -1.0F), red) << "two-sided";
    m_objects[0]->enable(false);
    EXPECT_EQ(at(draw(), 1.0F, 1.0F), background) << "disabled";
}

TEST_F(RendererTest, ShowsTexturesUprightAndTheNearerOfTwoSurfaces)
{
    // Red at the top, green at the bottom.
    P_Material& textured = *m_materials.emplace_back(std::make_unique<P_Material>());
    textured.init(1, 1);
    textured.addTextureLayer(0, 0, P_Material::BLENDING_MODE::Opaque, P_Material::FILTER_MODE::Point,
                             P_Material::TEXTURE_ADDRESS_MODE::Clamp);
    textured.setTexture(0, &addMap(1, 2, {255, 0, 0, 255, 0, 255, 0, 255}));
    addSquare(0.0F, 0.0F, &textured);
    addSquare(0.0F, 0.0F, &addColor({255.0F, 255.0F, 0.0F}), false, 1.0F);
    const G_Image picture = draw();
    EXPECT_EQ(at(picture, 0.5F, 0.8F), red);
    EXPECT_EQ(at(picture, 0.5F, 0.2F), green);
}

TEST_F(RendererTest, JoinsLayersAsTheirBlendingModesSay)
{
    struct Case
    {
        P_Material::BLENDING_MODE m_eBlending;
        std::array<int, 3> m_expected;
    };
    // A first layer (100, 200, 50) and a second one (100, 100, 100) with alpha 51.
    const std::array<Case, 4> cases{Case{P_Material::BLENDING_MODE::Opaque, {100, 100, 100}},
                                    Case{P_Material::BLENDING_MODE::Add, {200, 255, 150}},
                                    Case{P_Material::BLENDING_MODE::Modulate, {39, 78, 20}},
                                    Case{P_Material::BLENDING_MODE::TextureAlpha, {100, 180, 60}}};
    P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
    addSquare(0.0F, 0.0F, &material);
    P_Map& first = addMap(1, 1, {100, 200, 50, 255});
    P_Map& second = addMap(1, 1, {100, 100, 100, 51});
    for (const Case& step : cases)
    {
        material.init(2, 1);
        material.addTextureLayer(0, 0, P_Material::BLENDING_MODE::Opaque, P_Material::FILTER_MODE::Point,
                                 P_Material::TEXTURE_ADDRESS_MODE::Wrap);
        material.addTextureLayer(1, 0, step.m_eBlending, P_Material::FILTER_MODE::Point,
                                 P_Material::TEXTURE_ADDRESS_MODE::Wrap);
        material.setTexture(0, &first);
        material.setTexture(1, &second);
        const std::array<int, 3> is = at(draw(), 0.5F, 0.5F);
        for (std::size_t i = 0; i < 3; ++i)
        {
            EXPECT_NEAR(is[i], step.m_expected[i], 1)
                << "blending 0x" << std::hex << static_cast<unsigned int>(step.m_eBlending) << ", channel " << i;
        }
    }
}

TEST_F(RendererTest, ReadyMadeSetUpsDoubleTheLightAndTestTheAlpha)
{
    P_Map& map = addMap(2, 1, {100, 50, 20, 255, 100, 50, 20, 0});
    P_Material& doubled = *m_materials.emplace_back(std::make_unique<P_Material>());
    ASSERT_TRUE(P_MaterialHelpers::makeTexture(&doubled, P_Material::FILTER_MODE::Point));
    doubled.setTexture(0, &map);
    doubled.enableLighting(true);
    addSquare(0.0F, 0.0F, &doubled);
    P_Material& cutOut = *m_materials.emplace_back(std::make_unique<P_Material>());
    ASSERT_TRUE(P_MaterialHelpers::makeTextureTransparent(&cutOut, P_Material::FILTER_MODE::Point, false, true, true));
    cutOut.setTexture(0, &map);
    cutOut.setAlphaReference(128);
    cutOut.enableLighting(true);
    addSquare(-1.5F, 0.0F, &cutOut);
    // Ambient light at full strength, times white: the texture twice.
    const G_Image picture = draw();
    EXPECT_EQ(at(picture, 0.75F, 0.5F), (std::array<int, 3>{200, 100, 40}));
    EXPECT_EQ(at(picture, -1.25F, 0.5F), (std::array<int, 3>{200, 100, 40}));
    EXPECT_EQ(at(picture, -0.75F, 0.5F), background) << "below the alpha reference";
}

TEST_F(RendererTest, DrawsBlendedSurfacesOverWhatIsBehindThem)
{
    P_Material& glass = *m_materials.emplace_back(std::make_unique<P_Material>());
    glass.init(1, 1);
    glass.addTextureLayer(0, 0, P_Material::BLENDING_MODE::TextureAlpha, P_Material::FILTER_MODE::Point,
                          P_Material::TEXTURE_ADDRESS_MODE::Wrap);
    glass.setTexture(0, &addMap(1, 1, {255, 255, 255, 128}));
    // Added first, so that only sorting draws it last.
    addSquare(0.0F, 0.0F, &glass, false, -0.5F);
    addSquare(0.0F, 0.0F, &addColor({255.0F, 0.0F, 0.0F}));
    const std::array<int, 3> is = at(draw(), 0.5F, 0.5F);
    EXPECT_EQ(is[0], 255);
    EXPECT_NEAR(is[1], 128, 2);
    EXPECT_NEAR(is[2], 128, 2);
}

TEST_F(RendererTest, SkinsFollowTheirBoneMatricesFromFrameToFrame)
{
    P_Material& color = addColor({255.0F, 0.0F, 0.0F});
    auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(1));
    P_VertexFormat format;
    format.constructFromOldVertexFormat(0x31 | 2 << P_VertexFormat::BONE_COUNT_SHIFT);
    P_SkinMesh& mesh = *object.createSkinMesh(0, &color, format);
    fill(mesh, false);
    mesh.lock();
    for (unsigned int vertex = 0; vertex < 4; ++vertex)
    {
        mesh.setBoneIndex(vertex, 0, 0);
        mesh.setBoneWeight(vertex, 0, 0.5F);
        mesh.setBoneIndex(vertex, 1, 1);
        mesh.setBoneWeight(vertex, 1, 0.5F);
    }
    mesh.unlock();
    std::array<Matrix, 2> bones;
    S_Vector<const Matrix*> list;
    list.push_back(&bones[0]);
    list.push_back(&bones[1]);
    object.setBoneMatrices(list);
    object.addTo(&m_scene);
    EXPECT_EQ(at(draw(), 0.5F, 0.5F), red);

    bones[1].setTranslation({-2.0F, 0.0F, 0.0F});  // half of it: one unit to the left
    const G_Image moved = draw();
    EXPECT_EQ(at(moved, 0.5F, 0.5F), background);
    EXPECT_EQ(at(moved, -0.5F, 0.5F), red);
}

TEST_F(RendererTest, ForgetsGeometryAndMapsThatAreGone)
{
    addSquare(0.0F, 0.0F, &addColor({255.0F, 0.0F, 0.0F}));
    P_TriangleMesh* mesh = m_objects[0]->getPrimitive(0);
    draw();
    EXPECT_EQ(mesh->getReferenceCount(), 2) << "the renderer holds what it has a copy of";
    mesh->addReference();
    m_objects.clear();
    draw();
    draw();
    EXPECT_EQ(mesh->getReferenceCount(), 2);
    mesh->releaseReference();  // only the renderer's hold is left
    addSquare(0.0F, 0.0F, &addColor({0.0F, 255.0F, 0.0F}));
    EXPECT_EQ(at(draw(), 0.5F, 0.5F), green);
}

TEST(Framing, BringsEveryPointIntoThePictureAndTouchesTwoOppositeEdges)
{
    const std::array<TW2::render::Viewpoint, 3> viewpoints{TW2::render::Viewpoint{},
                                                           TW2::render::Viewpoint{-120.0F, 60.0F, 20.0F, 1.0F},
                                                           TW2::render::Viewpoint{90.0F, -10.0F, 90.0F, 1.0F}};
    std::vector<Vector> points;
    for (int i = 0; i < 60; ++i)
    {
        const auto t = static_cast<float>(i);
        points.push_back({100.0F + 7.0F * std::sin(t), 3.0F * std::cos(2.0F * t), -20.0F + 11.0F * std::sin(3.0F * t)});
    }
    for (const auto& viewpoint : viewpoints)
    {
        P_Camera camera;
        TW2::render::frameCamera(camera, points, viewpoint, 1.5F);
        const M_Matrix4Template<float> toPicture =
            M_Matrix4Template<float>(camera.getViewMatrix()) * camera.getProjectionMatrix();
        float widest = 0.0F;
        for (const Vector& point : points)
        {
            const Vector p = toPicture.projectPoint(point);
            widest = std::max({widest, std::abs(p.x), std::abs(p.y)});
            EXPECT_GT(p.z, 0.0F);
            EXPECT_LT(p.z, 1.0F);
        }
        EXPECT_NEAR(widest * viewpoint.m_fMargin, 1.0F, 1e-3F);
    }
}
