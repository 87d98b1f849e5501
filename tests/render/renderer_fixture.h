#pragma once

#include "render/offscreen_context.h"
#include "render/picture_target.h"
#include "render/render_exception.h"
#include "render/scene_renderer.h"

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/map.h>
#include <platform/scene/material.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace support
{
using TW2::render::View;
using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

constexpr unsigned int side = 64;  // pixels of a test picture; a unit of the z = 0 plane is 16 of them

/// A camera at z = -4 that sees 4 x 4 units of the plane z = 0, and a driver to draw with.
class RendererFixture : public testing::TestWithParam<TW2::render::OffscreenContext::Kind>
{
protected:
    void SetUp() override
    {
        try
        {
            m_driver.emplace(GetParam());
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

    /// A light that comes straight down shines with this.
    static Matrix makeDown()
    {
        Matrix down;
        down.setRow(1, {0.0F, 0.0F, 1.0F});
        down.setRow(2, {0.0F, -1.0F, 0.0F});
        return down;
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
        P_Material& material = addTextured(addMap(1, 1, {255, 255, 255, 255}));
        material.setEmissiveColor(color);
        return material;
    }

    /// A map as it is, on the coordinates of a set.
    P_Material& addTextured(P_Map& map, P_Material::BLENDING_MODE blending = P_Material::BLENDING_MODE::Opaque,
                            P_Material::FILTER_MODE filter = P_Material::FILTER_MODE::Point, unsigned int set = 0)
    {
        P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
        material.init(1, set + 1);
        material.addTextureLayer(0, set, blending, filter, P_Material::TEXTURE_ADDRESS_MODE::Wrap);
        material.setTexture(0, &map);
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

    /// Half covers what is behind it.
    P_Material& addGlass(const std::array<unsigned char, 3>& rgb)
    {
        return addTextured(addMap(1, 1, {rgb[0], rgb[1], rgb[2], 128}), P_Material::BLENDING_MODE::TextureAlpha);
    }

    /// A square that bone 0 moves as much as bone 1. `bones`: two matrices, read in place.
    P_VirtualObject& addSkin(P_Material* material, const Matrix* bones)
    {
        auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(1));
        P_VertexFormat format;
        format.constructFromOldVertexFormat(0x31 | 2 << P_VertexFormat::boneCountShift);
        P_SkinMesh& mesh = *object.createSkinMesh(0, material, format);
        fill(mesh, false);
        mesh.lock();
        for (unsigned int vertex = 0; vertex < 4; ++vertex)
        {
            for (unsigned int slot = 0; slot < 2; ++slot)
            {
                mesh.setBoneIndex(vertex, slot, slot);
                mesh.setBoneWeight(vertex, slot, 0.5F);
            }
        }
        mesh.unlock();
        S_Vector<const Matrix*> list;
        list.push_back(bones);
        list.push_back(bones + 1);
        object.setBoneMatrices(list);
        object.addTo(&m_scene);
        return object;
    }

    G_Image draw()
    {
        m_scene.executeFrame();
        return drawAsItStands();
    }
    G_Image drawAsItStands()
    {
        m_target->bind();
        m_renderer->draw(m_scene, m_camera, m_view);
        return m_target->read(m_view.m_bTransparent);
    }

    /// Colour at a place of the plane z = 0.
    static std::array<int, 3> at(const G_Image& picture, float x, float y)
    {
        const auto column = static_cast<unsigned int>((x + 2.0F) * 16.0F);
        const auto row = static_cast<unsigned int>((2.0F - y) * 16.0F);
        const unsigned char* pixel = picture.getPixel(column, row);
        return {pixel[0], pixel[1], pixel[2]};
    }

    /// Expects a colour at a place of the plane z = 0, each channel within 2 of 255.
    static void expectColor(const G_Image& picture, float x, float y, const std::array<int, 3>& expected,
                            const char* what = "")
    {
        const std::array<int, 3> is = at(picture, x, y);
        for (std::size_t i = 0; i < 3; ++i)
        {
            EXPECT_NEAR(is[i], expected[i], 2) << what << " at (" << x << ", " << y << "), channel " << i;
        }
    }

    /// @name Colours that tests look for
    /// @{
    static constexpr std::array<int, 3> background{0, 0, 255};
    static constexpr std::array<int, 3> red{255, 0, 0};
    static constexpr std::array<int, 3> green{0, 255, 0};
    /// @}

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

/// Runs the tests of a suite in both kinds of context.
#define TW2_IN_BOTH_CONTEXTS(suite)                                                                                   \
    INSTANTIATE_TEST_SUITE_P(                                                                                         \
        In, suite,                                                                                                    \
        testing::Values(TW2::render::OffscreenContext::Kind::Desktop, TW2::render::OffscreenContext::Kind::Embedded), \
        [](const auto& kind)                                                                                          \
        { return kind.param == TW2::render::OffscreenContext::Kind::Desktop ? "Desktop" : "Embedded"; })
}  // namespace support
