#include "tests/support/expectations.h"

#include <platform/scene/driver.h>
#include <platform/scene/driver_exception.h>
#include <platform/scene/map.h>
#include <platform/scene/material.h>
#include <platform/scene/material_helpers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
using Blending = P_Material::BLENDING_MODE;
using Filter = P_Material::FILTER_MODE;
constexpr auto s_eWrap = P_Material::TEXTURE_ADDRESS_MODE::Wrap;

void addLayers(P_Material& material, unsigned int count)
{
    for (unsigned int layer = 0; layer < count; ++layer)
    {
        material.addTextureLayer(layer, layer, Blending::Modulate, Filter::Bilinear, s_eWrap);
    }
}
}  // namespace

TEST(EngineMaterial, LayersOfBothKindsKeepTheOrderInWhichTheyWereAdded)
{
    P_Material material;
    material.init(1, 1);
    material.addTextureLayer(2, 1, Blending::Add, Filter::Point, s_eWrap);
    material.addShadingLayer(P_Material::SHADING_MODE::Specular, true);
    material.addTextureLayer(0, 0, Blending::Opaque, Filter::Point, s_eWrap);
    material.addTextureLayer(2, 3, Blending::Modulate, Filter::Point, s_eWrap);  // set anew in its place

    ASSERT_EQ(material.getLayerCount(), 3u);
    EXPECT_EQ(material.getLayer(0), (P_Material::Layer{false, 2}));
    EXPECT_EQ(material.getLayer(1), (P_Material::Layer{true, 0}));
    EXPECT_EQ(material.getLayer(2), (P_Material::Layer{false, 0}));
    EXPECT_EQ(material.getTextureLayer(2).m_uiCoordinateSet, 3u);
    EXPECT_EQ(material.getTextureLayer(2).m_eBlending, Blending::Modulate);
    EXPECT_FALSE(material.getTextureLayer(1).m_bUsed);

    material.init(4, 4);
    EXPECT_EQ(material.getLayerCount(), 0u);
    EXPECT_EQ(material.getTextureLayerCount(), 0u);
    EXPECT_EQ(material.getInfoBlock().m_iState, P_Material::STATE_INITIALIZED);
}

TEST(EngineMaterial, ACopyIsChangedWithoutTheOriginal)
{
    const G_Image image(2, 2);
    P_Map map(&image, nullptr);
    P_Material material;
    addLayers(material, 2);
    material.setTexture(1, &map);
    material.setPixelShader("plain", "ps.1.0\n");
    P_Material copy(material);
    EXPECT_EQ(copy.getTexture(1), &map);
    EXPECT_EQ(copy.getPixelShaderName(), "plain");
    copy.setTexture(1, nullptr);
    copy.setDiffuseColor({1, 2, 3});
    copy.addShadingLayer(P_Material::SHADING_MODE::Gouraud, true);
    EXPECT_EQ(material.getTexture(1), &map);
    EXPECT_EQ(material.getDiffuseColor(), G_FColor(255, 255, 255));
    EXPECT_FALSE(material.hasShadingLayer(P_Material::SHADING_MODE::Gouraud));
}

TEST(EngineMaterial, NumbersOutsideTheLimitsAreErrorsOrIgnored)
{
    P_Material material;
    EXPECT_THROW(addLayers(material, P_Material::maximumTextureLayers + 1), P_DriverException);
    EXPECT_THROW(material.enableTextureProjection(-1, true), P_DriverException);
    EXPECT_THROW(material.setTextureCoordinateSource(16, P_Material::TextureCoordinateSource::Mesh), P_DriverException);
    EXPECT_THROW(material.addTextureLayer(0, P_Material::maximumTextureLayers, P_Material::BLENDING_MODE::Modulate,
                                          P_Material::FILTER_MODE::Point, P_Material::TEXTURE_ADDRESS_MODE::Wrap),
                 P_DriverException);
    EXPECT_EQ(material.getTextureLayerCount(), +P_Material::maximumTextureLayers);
    const G_Image image(2, 2);
    P_Map map(&image, nullptr);
    material.setTexture(4'000'000'000u, &map);
    EXPECT_EQ(material.getTexture(4'000'000'000u), nullptr);
    EXPECT_EQ(material.getCoordinateSet(99), P_Material::CoordinateSet());

    P_Driver driver;
    EXPECT_THROW(driver.setRenderState(P_Driver::renderStateCount, 1), P_DriverException);
    EXPECT_THROW(static_cast<void>(driver.getRenderState(P_Driver::renderStateCount)), P_DriverException);
}

TEST(EngineMaterial, ADriverTakesSoManyLayersOrSampledMaps)
{
    const unsigned int limit = P_Driver::m_initializedDriver->getDriverCaps().m_uiTextureLayers;
    P_Material fitting;
    addLayers(fitting, limit);
    fitting.prepare();
    EXPECT_EQ(fitting.getInfoBlock().m_iState, P_Material::STATE_PREPARED);

    P_Material material;
    addLayers(material, limit + 1);
    EXPECT_THAT(support::messageOf([&] { material.prepare(); }), testing::HasSubstr("9 texture layers"));
    EXPECT_EQ(material.getInfoBlock().m_iState, P_Material::STATE_LAYERED);
    material.setPixelShader("two", "ps.1.0\ntex t0\ntex t1\nmul r0, t0, t1\n");
    material.prepare();
    EXPECT_EQ(material.getInfoBlock().m_iState, P_Material::STATE_PREPARED);
}

TEST(EngineMaterial, OnlyAnAlphaModeOfTheFirstLayerBlendsWithThePictureBehind)
{
    const std::pair<Blending, bool> table[] = {{Blending::Opaque, false},      {Blending::Add, false},
                                               {Blending::Modulate, false},    {Blending::VertexAlpha, true},
                                               {Blending::TextureAlpha, true}, {Blending::TextureAndVertexAlpha, true}};
    for (const auto& [blending, isBlended] : table)
    {
        P_Material material;
        EXPECT_FALSE(material.isBlended());
        material.addTextureLayer(1, 0, Blending::TextureAlpha, Filter::Point, s_eWrap);
        EXPECT_FALSE(material.isBlended());
        material.addTextureLayer(0, 0, blending, Filter::Point, s_eWrap);
        EXPECT_EQ(material.isBlended(), isBlended) << static_cast<unsigned int>(blending);
        material.forceBlendingOff();
        EXPECT_FALSE(material.isBlended());
    }
}

TEST(EngineMaterial, AReadyMadeSetUpThatTheDriverCannotDoLeavesTheMaterialAlone)
{
    P_DriverCaps caps;
    caps.m_bModulate2X = caps.m_bAddThenModulate2X = false;
    P_Driver poorDriver(caps);
    P_Driver* driver = P_Driver::m_initializedDriver;
    P_Driver::m_initializedDriver = &poorDriver;
    P_Material material;
    addLayers(material, 3);
    EXPECT_FALSE(P_MaterialHelpers::makeTexture(&material, Filter::Point));
    EXPECT_FALSE(P_MaterialHelpers::makeTextureEnv(&material, Filter::Point));
    EXPECT_FALSE(P_MaterialHelpers::makeTextureTransparent(&material, Filter::Point, true, true, true));
    EXPECT_EQ(material.getTextureLayerCount(), 3u);
    EXPECT_EQ(material.getSetUp(), P_Material::SetUp::Layers);
    // The plain texture needs no doubling.
    EXPECT_TRUE(P_MaterialHelpers::makeTextureTransparent(&material, Filter::Point, true, false, false));
    EXPECT_EQ(material.getLayerCount(), 1u);
    EXPECT_FALSE(material.isAlphaTestEnabled());
    EXPECT_TRUE(material.isBlended());
    P_Driver::m_initializedDriver = driver;
}
