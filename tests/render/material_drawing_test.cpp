#include "tests/render/renderer_fixture.h"

#include <platform/runtime/str.h>
#include <platform/scene/material_helpers.h>

#include <algorithm>

namespace
{
using namespace support;

class MaterialDrawing : public RendererFixture
{
};
TW2_IN_BOTH_CONTEXTS(MaterialDrawing);
}  // namespace

TEST_P(MaterialDrawing, ShowsTexturesUprightAndTheNearerOfTwoSurfaces)
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

TEST_P(MaterialDrawing, ReadyMadeSetUpsDoubleTheLightAndTestTheAlpha)
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

TEST_P(MaterialDrawing, AlphaComesFromVertexAndMapAndIsTestedAgainstTheReference)
{
    P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
    auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(1));
    P_VertexFormat format;
    format.constructFromOldVertexFormat(0x71);
    P_TriangleMesh& mesh = *object.createTriangleMesh(0, &material, format);
    fill(mesh, false);
    mesh.lock();
    for (unsigned int vertex = 0; vertex < 4; ++vertex)
    {
        mesh.getVertexBuffer().setColorAlpha(vertex, 102.0F);
    }
    mesh.unlock();
    object.addTo(&m_scene);
    P_Map& map = addMap(1, 1, {255, 0, 0, 128});
    struct Case
    {
        P_Material::BLENDING_MODE m_eBlending;
        int m_iReference;  ///< -1: no test
        bool m_bForcedOff;
        std::array<int, 3> m_expected;
    };
    const std::array<Case, 7> cases{Case{P_Material::BLENDING_MODE::VertexAlpha, -1, false, {102, 0, 153}},
                                    Case{P_Material::BLENDING_MODE::TextureAlpha, -1, false, {128, 0, 127}},
                                    Case{P_Material::BLENDING_MODE::TextureAndVertexAlpha, -1, false, {51, 0, 204}},
                                    Case{P_Material::BLENDING_MODE::TextureAlpha, 128, false, {128, 0, 127}},
                                    Case{P_Material::BLENDING_MODE::TextureAlpha, 129, false, {0, 0, 255}},
                                    Case{P_Material::BLENDING_MODE::TextureAlpha, 128, true, {255, 0, 0}},
                                    Case{P_Material::BLENDING_MODE::VertexAlpha, 103, true, {0, 0, 255}}};
    for (const Case& step : cases)
    {
        P_Material& fresh = *m_materials.emplace_back(std::make_unique<P_Material>());
        fresh.init(1, 1);
        fresh.addTextureLayer(0, 0, step.m_eBlending, P_Material::FILTER_MODE::Point,
                              P_Material::TEXTURE_ADDRESS_MODE::Wrap);
        fresh.setTexture(0, &map);
        fresh.enableAlphaTest(step.m_iReference >= 0);
        fresh.setAlphaReference(static_cast<unsigned char>(std::max(step.m_iReference, 0)));
        if (step.m_bForcedOff)
        {
            fresh.forceBlendingOff();
        }
        object.getPrimitiveInstance(0)->setMaterial(&fresh);
        expectColor(
            draw(), 0.5F, 0.5F, step.m_expected,
            S_STR("blending 0x%x, reference %d", static_cast<unsigned int>(step.m_eBlending), step.m_iReference));
    }
}

TEST_P(MaterialDrawing, UnshadedTransparentSetUpsShowTheirMapAsItIs)
{
    P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
    ASSERT_TRUE(
        P_MaterialHelpers::makeTextureTransparent(&material, P_Material::FILTER_MODE::Point, false, true, false));
    material.setTexture(0, &addMap(1, 1, {100, 150, 20, 255}));
    P_VirtualObject& square = addSquare(-0.5F, -0.5F, &material);
    expectColor(draw(), 0.0F, 0.0F, {100, 150, 20});
    // A mesh without colours has opaque vertices.
    P_Material& byVertex = *m_materials.emplace_back(std::make_unique<P_Material>());
    byVertex.init(1, 1);
    byVertex.addTextureLayer(0, 0, P_Material::BLENDING_MODE::VertexAlpha, P_Material::FILTER_MODE::Point,
                             P_Material::TEXTURE_ADDRESS_MODE::Wrap);
    byVertex.setTexture(0, &addMap(1, 1, {100, 150, 20, 255}));
    square.getPrimitiveInstance(0)->setMaterial(&byVertex);
    expectColor(draw(), 0.0F, 0.0F, {100, 150, 20}, "vertices without alpha");
}
