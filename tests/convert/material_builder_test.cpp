#include "convert/material_builder.h"

#include "convert/output_files.h"
#include "convert/pictures.h"
#include "convert/surface_plan.h"
#include "convert/texture_files.h"
#include "tests/convert/model_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace
{
using TW2::TWMaterialChunk;
using TW2::convert::Model;
using TW2::convert::Surface;

constexpr G_FColor white(255.0F, 255.0F, 255.0F);
constexpr G_FColor dark(10.0F, 20.0F, 30.0F);

/// A model whose surface `i` is on a triangle of its own; picture 0 has an alpha, picture 1 has none.
class WrittenMaterials : public testing::Test
{
protected:
    WrittenMaterials()
    {
        for (const int alpha : {64, 255})
        {
            G_Image image(2, 2);
            image.accessPixel(0, 0)[3] = static_cast<unsigned char>(alpha);
            TW2::convert::Picture picture;
            picture.m_strName = alpha == 64 ? "leaf.png" : "bark.png";
            picture.m_vecBytes = TW2::convert::encodePicture(image);
            picture.m_uiWidth = picture.m_uiHeight = 2;
            picture.m_bAlpha = picture.m_bClear = alpha == 64;
            m_model.m_vecPictures.push_back(picture);
        }
    }

    Surface& addSurface()
    {
        m_model.m_vecMeshes.push_back(convert_test::makeSkin({}));
        m_model.m_vecMeshes.back().m_iMaterial = static_cast<int>(m_model.m_vecSurfaces.size());
        Surface& surface = m_model.m_vecSurfaces.emplace_back();
        surface.m_strName = "s" + std::to_string(m_model.m_vecSurfaces.size());
        surface.m_diffuse = dark;
        return surface;
    }

    /// The material that the last surface becomes.
    TWMaterialChunk build()
    {
        TW2::convert::OutputFiles files;
        TW2::convert::Warnings warnings;
        TW2::convert::TextureFiles textures(m_model.m_vecPictures, files, warnings);
        m_vecPlans = TW2::convert::planSurfaces(m_model, textures, warnings);
        m_vecWarnings = warnings.makeLines();
        const TW2::MaterialListChunk list = TW2::convert::buildMaterials(m_model, m_vecPlans);
        EXPECT_EQ(list.materials.size(), m_model.m_vecSurfaces.size());
        EXPECT_EQ(list.materials.back().name, m_model.m_vecSurfaces.back().m_strName.c_str());
        return list.materials.back();
    }

    Model m_model;
    std::vector<TW2::convert::SurfacePlan> m_vecPlans;
    std::vector<std::string> m_vecWarnings;
};
}  // namespace

TEST_F(WrittenMaterials, APlainSurfaceKeepsItsColoursItsShineAndItsSides)
{
    Surface& surface = addSurface();
    surface.m_specular = {40.0F, 50.0F, 60.0F};
    surface.m_fShininess = 20.0F;
    surface.m_bTwoSided = true;
    TWMaterialChunk material = build();
    EXPECT_EQ(material.diffuseColor.getRGB(), dark.getRGB());
    EXPECT_EQ(material.ambientColor.getRGB(), dark.getRGB());
    EXPECT_EQ(material.specularColor.getRGB(), surface.m_specular.getRGB());
    EXPECT_EQ(material.specularExponent, 20.0F);
    EXPECT_EQ(material.specular, 1);
    EXPECT_TRUE(material.twoSided);
    EXPECT_FALSE(material.vertexAlpha || material.alphaTest || material.invisibleGeometry);
    EXPECT_EQ(material.vertexAlphaValue, 1.0F);
    EXPECT_EQ(material.shading, TWMaterialChunk::SHADING_GOURAUD);
    EXPECT_FALSE(material.hasDiffuseTexture());
    surface.m_fShininess = 1.0F;
    EXPECT_EQ(build().specular, 0) << "a highlight as wide as the surface is none";
    surface.m_fShininess = 20.0F;
    surface.m_specular = {};
    EXPECT_EQ(build().specular, 0) << "nor is a black one";
    surface.m_bUnlit = true;
    EXPECT_EQ(build().shading, TWMaterialChunk::SHADING_CONSTANT);
    surface.m_bTwoSided = false;
    EXPECT_FALSE(build().twoSided);
}

TEST_F(WrittenMaterials, AlphaMeansWhatTheSurfaceSays)
{
    struct Case
    {
        Surface::Alpha m_eAlpha;
        int m_iPicture;  ///< of the texture; -1: none
        float m_fOpacity;
        float m_fCutOff;
        bool m_bBlended;
        bool m_bTested;
        int m_iReference;
        float m_fValue;
        bool m_bInvisible;
        bool m_bOpacityTexture;
    };
    using Alpha = Surface::Alpha;
    for (const Case& each : {Case{Alpha::Opaque, -1, 0.25F, 0.5F, false, false, 0, 1.0F, false, false},
                             {Alpha::Blend, -1, 0.25F, 0.5F, true, false, 0, 0.25F, false, false},
                             {Alpha::Blend, -1, 1.0F, 0.5F, false, false, 0, 1.0F, false, false},
                             {Alpha::Mask, -1, 0.25F, 0.5F, false, false, 128, 0.25F, true, false},
                             {Alpha::Mask, -1, 0.75F, 0.5F, false, false, 128, 0.75F, false, false},
                             {Alpha::Opaque, 0, 0.25F, 0.5F, true, true, 0, 1.0F, false, false},
                             {Alpha::Blend, 0, 0.25F, 0.5F, true, false, 0, 0.25F, false, true},
                             {Alpha::Blend, 1, 0.25F, 0.5F, true, false, 0, 0.25F, false, false},
                             {Alpha::Mask, 0, 0.25F, 0.4F, true, true, 102, 0.25F, false, true},
                             {Alpha::Mask, 0, 1.0F, 1.5F, true, true, 255, 1.0F, true, true}})
    {
        Surface& surface = addSurface();
        surface.m_eAlpha = each.m_eAlpha;
        surface.m_fOpacity = each.m_fOpacity;
        surface.m_fCutOff = each.m_fCutOff;
        surface.m_diffuseTexture.m_iPicture = each.m_iPicture;
        const TWMaterialChunk material = build();
        EXPECT_EQ(material.vertexAlpha, each.m_bBlended) << surface.m_strName;
        EXPECT_EQ(material.alphaTest, each.m_bTested) << surface.m_strName;
        EXPECT_EQ(material.alphaReference, each.m_iReference) << surface.m_strName;
        EXPECT_EQ(material.vertexAlphaValue, each.m_fValue) << surface.m_strName;
        EXPECT_EQ(material.invisibleGeometry, each.m_bInvisible) << surface.m_strName;
        EXPECT_EQ(material.hasOpacityTexture(), each.m_bOpacityTexture) << surface.m_strName;
    }
}

TEST_F(WrittenMaterials, TexturesAreThoseOfTheSurfaceWithTheirFilters)
{
    Surface& surface = addSurface();
    surface.m_bUnlit = true;
    surface.m_emissive = dark;  // part of what it shows already
    surface.m_diffuseTexture.m_iPicture = 1;
    TWMaterialChunk material = build();
    ASSERT_TRUE(material.hasDiffuseTexture());
    EXPECT_FALSE(material.hasReflectionTexture());
    EXPECT_EQ(material.accessDiffuseTexture().frameFiles.at(0), "bark.png");
    EXPECT_EQ(material.accessDiffuseTexture().filter, 3) << "smooth close by and far away";
    EXPECT_EQ(material.accessDiffuseTexture().mipLevels, 0) << "as many as there are";
    EXPECT_EQ(material.ambientColor.getRGB(), white.getRGB());
    EXPECT_EQ(material.shading, TWMaterialChunk::SHADING_NONE);
    surface.m_diffuseTexture.m_bCoarse = true;
    surface.m_bUnlit = false;
    surface.m_emissiveTexture.m_iPicture = 0;
    material = build();
    EXPECT_EQ(material.accessDiffuseTexture().filter, 0);
    ASSERT_TRUE(material.hasReflectionTexture());
    EXPECT_EQ(material.accessReflectionTexture().filter, 3) << "each texture has its own";
    EXPECT_EQ(material.reflectionBlend, 1) << "light adds up";
    EXPECT_EQ(material.reflectionMapping, 2);

    // A picture of the opacity alone lies over a plain colour; colours of vertices are a picture of their own.
    Surface& cut = addSurface();
    cut.m_eAlpha = Surface::Alpha::Blend;
    cut.m_opacityTexture.m_iPicture = 0;
    cut.m_opacityTexture.m_bCoarse = true;
    cut.m_emissive = dark;
    material = build();
    EXPECT_EQ(material.accessDiffuseTexture().frameFiles.at(0), "s2.png");
    EXPECT_EQ(material.accessOpacityTexture().frameFiles.at(0), "leaf_2.png") << "the first is tinted by a glow";
    EXPECT_EQ(material.accessOpacityTexture().filter, 0);
    Surface& painted = addSurface();
    painted.m_diffuseTexture.m_iPicture = 1;
    m_model.m_vecMeshes.back().m_vecColors = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}};
    material = build();
    EXPECT_EQ(material.reflectionBlend, 2) << "colours multiply";
    EXPECT_EQ(material.accessReflectionTexture().filter, 1);
    EXPECT_EQ(material.accessReflectionTexture().mipLevels, 1);
    painted.m_emissive = dark;
    EXPECT_EQ(build().reflectionBlend, 2);
    EXPECT_THAT(m_vecWarnings, testing::ElementsAre(testing::HasSubstr("\"s3\": left out: light of its own, beside")));
}

TEST_F(WrittenMaterials, ThePictureOfTheOpacityIsNotTinted)
{
    Surface& surface = addSurface();
    surface.m_eAlpha = Surface::Alpha::Blend;
    surface.m_diffuseTexture.m_iPicture = 0;
    surface.m_opacityTexture.m_iPicture = 0;
    TWMaterialChunk material = build();
    EXPECT_NE(material.accessOpacityTexture().frameFiles.at(0), material.accessDiffuseTexture().frameFiles.at(0));
    surface.m_diffuse = white;
    material = build();
    EXPECT_EQ(material.accessOpacityTexture().frameFiles.at(0), material.accessDiffuseTexture().frameFiles.at(0));
}

TEST_F(WrittenMaterials, WhiteStandsForADamagedPictureThatHasToBeChanged)
{
    addSurface().m_diffuseTexture.m_iPicture = 1;
    std::vector<unsigned char>& bytes = m_model.m_vecPictures[1].m_vecBytes;
    bytes.resize(bytes.size() / 2);
    EXPECT_EQ(build().accessDiffuseTexture().frameFiles.at(0), "bark.png");
    ASSERT_EQ(m_vecWarnings.size(), 1U);
    EXPECT_TRUE(m_vecWarnings[0].starts_with("texture \"bark.png\" is left out: ")) << m_vecWarnings[0];
}

TEST_F(WrittenMaterials, APictureIsMirroredOnlyWhereCoordinatesLeaveIt)
{
    Surface& surface = addSurface();
    surface.m_diffuseTexture.m_iPicture = 1;
    surface.m_diffuseTexture.m_eWrapU = surface.m_diffuseTexture.m_eWrapV = TW2::convert::Wrap::Mirror;
    TW2::convert::Mesh& mesh = m_model.m_vecMeshes.back();
    for (const bool down : {false, true})
    {
        mesh.m_vecCoordinates = {
            {{0.0F, 0.0F, 0.0F}, {1.0F, 1.0F, 0.0F}, {down ? 0.5F : -0.5F, down ? 1.5F : 0.5F, 0.0F}}};
        static_cast<void>(build());
        EXPECT_EQ(m_vecPlans[0].m_vecLayers.at(0).m_bMirrorU, !down);
        EXPECT_EQ(m_vecPlans[0].m_vecLayers.at(0).m_bMirrorV, down);
    }
}

TEST_F(WrittenMaterials, ColoursThatMeshesDifferInAreAPictureAndClearOnesBesideATextureAreTold)
{
    addSurface();
    m_model.m_vecMeshes.push_back(m_model.m_vecMeshes.back());
    m_model.m_vecMeshes[0].m_vecColors.assign(3, {255, 0, 0, 255});
    m_model.m_vecMeshes[1].m_vecColors.assign(3, {255, 0, 0, 255});
    EXPECT_FALSE(build().hasDiffuseTexture()) << "one colour for all";
    Surface& surface = m_model.m_vecSurfaces.back();
    surface.m_eAlpha = Surface::Alpha::Blend;
    for (const unsigned char alpha : std::array<unsigned char, 2>{255, 128})
    {
        m_model.m_vecMeshes[1].m_vecColors.assign(3, {0, 0, 255, alpha});
        EXPECT_TRUE(build().hasDiffuseTexture());
        EXPECT_EQ(build().hasOpacityTexture(), alpha == 128) << "nothing is blended that cannot be seen through";
    }
    surface.m_eAlpha = Surface::Alpha::Opaque;
    surface.m_diffuseTexture.m_iPicture = 1;
    static_cast<void>(build());
    EXPECT_TRUE(m_vecWarnings.empty()) << "an opaque surface has none to lose";
    surface.m_eAlpha = Surface::Alpha::Blend;
    static_cast<void>(build());
    ASSERT_EQ(m_vecWarnings.size(), 1U);
    EXPECT_NE(m_vecWarnings[0].find("the transparency of its vertices"), std::string::npos) << m_vecWarnings[0];
}

TEST(PictureEncoding, WhateverRunsThroughAPictureComesBack)
{
    // Along x, along y, both, their product, and noise: each is smallest behind another filter.
    for (const std::array<unsigned int, 4>& part : std::array<std::array<unsigned int, 4>, 5>{
             {{7, 0, 0, 0}, {0, 5, 0, 0}, {3, 5, 0, 0}, {1, 0, 2, 0}, {0, 0, 0, 0x9E3779B1}}})
    {
        for (const bool opaque : {true, false})
        {
            G_Image image(37, 23);
            for (unsigned int i = 0; i < image.getSize(); ++i)
            {
                const unsigned int x = i / 4 % 37;
                const unsigned int y = i / 148;
                const unsigned int value =
                    (part[0] * x + part[1] * y + part[2] * x * y + (part[3] * i >> 16U)) * (i % 4 + 1);
                image.accessPixel(x, y)[i % 4] = i % 4 == 3 && opaque ? 255 : static_cast<unsigned char>(value);
            }
            TW2::convert::Picture picture;
            picture.m_vecBytes = TW2::convert::encodePicture(image);
            const G_Image read = TW2::convert::decodePicture(picture);
            EXPECT_TRUE(std::equal(image.getPixels(), image.getPixels() + image.getSize(), read.getPixels()))
                << testing::PrintToString(part) << opaque;
        }
    }
}
