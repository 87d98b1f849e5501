#include "tests/support/expectations.h"
#include "tests/support/material_records.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_callback.h>

#include <platform/scene/driver_exception.h>
#include <platform/scene/map.h>
#include <platform/scene/material_switch_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <stdexcept>
#include <tuple>
#include <utility>

using namespace TW2;

namespace
{
using testing::HasSubstr;
using Change = std::function<void(TWMaterialChunk&)>;

enum Slots : unsigned int
{
    DIFFUSE = 1,
    REFLECTION = 2,
    SPECULAR = 4,
    OPACITY = 8,
    GLOSS = 16
};

const struct
{
    unsigned int bit;
    bool (TWMaterialChunk::*has)() const;
    MaterialTextureChunk& (TWMaterialChunk::*access)();
    const char* file;
} s_slots[] = {
    {DIFFUSE, &TWMaterialChunk::hasDiffuseTexture, &TWMaterialChunk::accessDiffuseTexture, "diffuse.png"},
    {REFLECTION, &TWMaterialChunk::hasReflectionTexture, &TWMaterialChunk::accessReflectionTexture, "sky.png"},
    {SPECULAR, &TWMaterialChunk::hasSpecularTexture, &TWMaterialChunk::accessSpecularTexture, "shine.png"},
    {OPACITY, &TWMaterialChunk::hasOpacityTexture, &TWMaterialChunk::accessOpacityTexture, "holes.png"},
    {GLOSS, &TWMaterialChunk::hasGlossTexture, &TWMaterialChunk::accessGlossTexture, "gloss.png"},
};

/// A record with these slots; each has the file of its name, nearest-pixel filter and mip levels.
TWMaterialChunk makeRecord(unsigned int slots, int shading, const Change& change = {})
{
    TWMaterialChunk record;
    record.name = "stone";
    record.shading = shading;
    record.ambientColor = {11, 12, 13};
    record.diffuseColor = {21, 22, 23};
    record.specularColor = {31, 32, 33};
    record.specularExponent = 8;
    for (const auto& slot : s_slots)
    {
        if (slots & slot.bit)
        {
            support::fillTexture((record.*slot.access)(), slot.file, {slot.file});
        }
    }
    if (change)
    {
        change(record);
    }
    return record;
}

/// The same material with other colours and files: equal to it for the template cache.
TWMaterialChunk makeVariant(TWMaterialChunk record)
{
    record.name = "variant";
    record.ambientColor = {1, 2, 3, 4};
    record.diffuseColor = {5, 6, 7, 8};
    record.specularColor = {9, 10, 11, 12};
    record.specularExponent = 99;
    record.vertexAlphaValue = 0.75f;
    for (const auto& slot : s_slots)
    {
        if ((record.*slot.has)())
        {
            support::fillTexture((record.*slot.access)(), "other", {"other.png"});
        }
    }
    return record;
}

/// Builds what it is called for, and changes the material when it is complete.
class Spy : public TW_MaterialCallback
{
public:
    void operator()(P_Material* material, const TWMaterialChunk&) override
    {
        if (m_onComplete)
        {
            m_onComplete(*material);
        }
    }
    void operator()(int& layerCount, int& textureCoordinateCount, const TWMaterialChunk&) override
    {
        m_iLayers = layerCount;
        m_iCoordinateSets = textureCoordinateCount;
        layerCount += m_iMoreLayers;
        textureCoordinateCount += m_iMoreLayers;
    }

    std::function<void(P_Material&)> m_onComplete;
    int m_iMoreLayers = 0;
    int m_iLayers = -1;
    int m_iCoordinateSets = -1;
};

class Material : public testing::Test
{
protected:
    Material() { m_folder.add({"diffuse.png", "sky.png", "shine.png", "holes.png", "gloss.png", "other.png"}); }

    static std::string build(const TWMaterialChunk& record) { return support::describe(TW_Material(record)); }

    support::TextureFolder m_folder;
};

constexpr const char* s_szEnvironmentMatrix = ": 0.5 0 0 0 0 -0.5 0 0 0 0 0 0 0.5 0.5 1 1\n";
constexpr const char* s_szShader = "shader specular\nps.1.0\ntex t0\ntex t1\nmul r1, v1, t1\nmad r0, v0, t0, r1\n";
}  // namespace

TEST_F(Material, EveryKindOfRecordGivesItsLayersStatesAndCoordinates)
{
    const std::string ambient = "ambient 11 12 13 255\n";
    const std::string solidAt = "solid at ";
    const std::string solidColor = ": 21 22 23 255\n";
    const std::string environment = s_szEnvironmentMatrix;
    const std::string highlights = "specular 31 32 33 255\nexponent 8\n";
    const std::tuple<const char*, TWMaterialChunk, std::string> cases[] = {
        {"transparent", makeRecord(DIFFUSE, 2, [](auto& r) { r.alphaTest = true; }),
         "layer 0 diffuse.png set 0 blend opaque filter point\nshading gouraud combined\n" + ambient +
             "alpha test 240\npriority 6\nset-up texture-transparent\ncoordinates 1\n"},
        {"transparent and blended",
         makeRecord(DIFFUSE | OPACITY, 2,
                    [](auto& r)
                    {
                        r.alphaTest = r.alphaBlend = r.fog = true;
                        r.alphaReference = 256 + 17;
                        r.accessDiffuseTexture().filter = 1;
                    }),
         "layer 0 diffuse.png+holes.png set 0 blend texture-alpha filter bilinear\nshading gouraud combined\n" +
             ambient + "fog\nalpha test 17\npriority 6\nset-up texture-transparent\ncoordinates 1\n"},
        {"textured", makeRecord(DIFFUSE, 2, [](auto& r) { r.twoSided = r.invisibleGeometry = true; }),
         "layer 0 diffuse.png set 0 blend opaque filter point\nshading gouraud combined\n" + ambient +
             "two-sided\nset-up texture\ninvisible\ncoordinates 1\n"},
        {"environment; gloss has no layer",
         makeRecord(DIFFUSE | REFLECTION | GLOSS, 2, [](auto& r) { r.alphaTest = true; }),
         "layer 0 diffuse.png set 0 blend opaque filter point\nshading gouraud combined\n"
         "layer 1 sky.png set 1 blend add filter point\nset 1 source reflection transformed projected\n" +
             ambient + "set-up texture-environment\nmatrix of layer 1" + environment + "coordinates 1\n"},
        {"specular",
         makeRecord(DIFFUSE | REFLECTION | SPECULAR | GLOSS, 1, [](auto& r) { r.accessSpecularTexture().filter = 1; }),
         "layer 0 diffuse.png set 0 blend opaque filter bilinear-mip-mapped\nlayer 1 shine.png set 0 blend add filter "
         "bilinear-mip-mapped\n" +
             ambient + highlights + s_szShader + "coordinates 1\n"},
        {"specular without diffuse, one level",
         makeRecord(SPECULAR, 2,
                    [](auto& r)
                    {
                        r.specular = 1;
                        r.accessSpecularTexture().mipLevels = 1;
                    }),
         "layer 0 none set 0 blend opaque filter point\nlayer 1 shine.png set 0 blend add filter point\n" + ambient +
             highlights + s_szShader + "coordinates 1\n"},
        {"gloss over reflection, diffuse, solid", makeRecord(DIFFUSE | REFLECTION | GLOSS, 1),
         "layer 0 sky.png set 1 blend opaque filter point\nlayer 1 gloss.png set 0 blend modulate filter "
         "point-mip-mapped\n"
         "layer 2 diffuse.png set 0 blend opaque filter point-mip-mapped\nlayer 3 white set 3 blend add filter point\n"
         "set 1 source reflection transformed projected\n" +
             ambient + "emissive 21 22 23 255\n" + solidAt + "3" + solidColor + "matrix of layer 1" + environment +
             "coordinates 2\n"},
        {"gloss with coordinates of its own, reflection on the mesh's, shaded early and late",
         makeRecord(DIFFUSE | REFLECTION | GLOSS, 1,
                    [](auto& r)
                    {
                        r.glossChannel = 1;
                        r.reflectionMapping = 2;
                        r.shadeReflection = true;
                        r.specular = 1;
                        r.reflectionBlend = 1;
                    }),
         "layer 0 sky.png set 2 blend add filter point\nshading specular combined\n"
         "layer 1 gloss.png set 1 blend modulate filter point-mip-mapped\n"
         "layer 2 diffuse.png set 0 blend opaque filter point-mip-mapped\nlayer 3 white set 3 blend add filter point\n"
         "shading specular combined\n" +
             ambient + "emissive 21 22 23 255\n" + highlights + "highlights\n" + solidAt + "3" + solidColor +
             "coordinates 3\n"},
        {"gloss alone, shaded", makeRecord(GLOSS, 2),
         "layer 0 gloss.png set 0 blend modulate filter point-mip-mapped\nlayer 1 white set 2 blend opaque filter "
         "point\n"
         "shading gouraud combined\n" +
             ambient + "diffuse 21 22 23 255\n" + solidAt + "2" + solidColor + "coordinates 1\n"},
        {"nothing", makeRecord(0, 0), ambient + "coordinates 0\n"},
        {"highlights alone", makeRecord(0, 0, [](auto& r) { r.specular = 1; }),
         "shading specular first\n" + ambient + highlights + "highlights\ncoordinates 0\n"},
        {"plain colour, shaded, with highlights and alpha test",
         makeRecord(0, 2,
                    [](auto& r)
                    {
                        r.specular = 1;
                        r.alphaTest = true;
                        r.diffuseBlend = 2;
                    }),
         "layer 0 white set 0 blend modulate filter point\nshading gouraud combined\nshading specular combined\n" +
             ambient + "diffuse 21 22 23 255\n" + highlights + "highlights\nblending forced off\nalpha test 240\n" +
             solidAt + "0" + solidColor + "coordinates 1\n"},
        {"diffuse, solid, then the reflection", makeRecord(DIFFUSE | REFLECTION, 1),
         "layer 0 diffuse.png set 0 blend opaque filter point-mip-mapped\nlayer 1 white set 1 blend add filter point\n"
         "layer 2 sky.png set 2 blend modulate filter point\nset 2 source reflection transformed projected\n" +
             ambient + "emissive 21 22 23 255\n" + solidAt + "1" + solidColor + "matrix of layer 2" + environment +
             "coordinates 2\n"},
        {"plain colour, reflection, then the highlights", makeRecord(REFLECTION, 1, [](auto& r) { r.specular = 1; }),
         "layer 0 white set 0 blend opaque filter point\nlayer 1 sky.png set 1 blend modulate filter point\n"
         "shading specular combined\nset 1 source reflection transformed projected\n" +
             ambient + "emissive 21 22 23 255\n" + highlights + "highlights\n" + solidAt + "0" + solidColor +
             "matrix of layer 1" + environment + "coordinates 1\n"},
        {"constant alpha takes the ready-made set-up away",
         makeRecord(DIFFUSE, 2,
                    [](auto& r)
                    {
                        r.vertexAlpha = r.alphaTest = r.alphaBlend = true;
                        r.vertexAlphaValue = 0.5f;
                    }),
         "layer 0 diffuse.png set 0 blend vertex-alpha filter point-mip-mapped\nshading gouraud combined\n" + ambient +
             "alpha test 240\nvertex alpha 0.5\ncoordinates 1\n"},
        {"both alphas, shaded before the reflection, which is not generated",
         makeRecord(DIFFUSE | OPACITY | REFLECTION, 2,
                    [](auto& r)
                    {
                        r.vertexAlpha = true;
                        r.reflectionMapping = 5;
                    }),
         "layer 0 diffuse.png+holes.png set 0 blend both-alphas filter point-mip-mapped\nshading gouraud combined\n"
         "layer 1 sky.png set 1 blend modulate filter point\n" +
             ambient + "vertex alpha 0\ncoordinates 1\n"},
        {"solid with constant alpha, shaded after the reflection",
         makeRecord(REFLECTION, 2, [](auto& r) { r.vertexAlpha = r.shadeReflection = true; }),
         "layer 0 white set 0 blend vertex-alpha filter point\nlayer 1 sky.png set 1 blend modulate filter point\n"
         "shading gouraud combined\nset 1 source reflection transformed projected\n" +
             ambient + "diffuse 21 22 23 255\n" + solidAt + "0" + solidColor + "vertex alpha 0\nmatrix of layer 1" +
             environment + "coordinates 1\n"},
    };
    for (const auto& [what, record, expected] : cases)
    {
        EXPECT_EQ(build(record), expected) << what;
    }
}

TEST_F(Material, SelectorsChooseFilterAndBlendingAndFallBackToTheFirst)
{
    P_Material::setDefaultFilter(P_Material::FILTER_MODE::BilinearMipMapped);
    const std::tuple<int, const char*, const char*> filters[] = {{0, "point", "point-mip-mapped"},
                                                                 {1, "bilinear", "bilinear-mip-mapped"},
                                                                 {2, "bilinear-mip-mapped", "bilinear-mip-mapped"},
                                                                 {3, "trilinear", "trilinear"},
                                                                 {4, "anisotropic", "anisotropic"},
                                                                 {5, "point", "point-mip-mapped"},
                                                                 {-1, "point", "point-mip-mapped"}};
    for (const auto& [selector, plain, mipMapped] : filters)
    {
        for (const int levels : {0, 1, 2})
        {
            const TWMaterialChunk record = makeRecord(DIFFUSE, 0,
                                                      [&, number = selector](auto& r)
                                                      {
                                                          r.accessDiffuseTexture().filter = number;
                                                          r.accessDiffuseTexture().mipLevels = levels;
                                                      });
            EXPECT_THAT(build(record), HasSubstr(std::string("filter ") + (levels == 1 ? plain : mipMapped) + '\n'))
                << selector << ", levels " << levels;
        }
    }
    P_Material::setDefaultFilter(P_Material::FILTER_MODE::Trilinear);
    const std::tuple<int, const char*> blendings[] = {
        {0, "opaque "}, {1, "add "}, {2, "modulate "}, {3, "opaque "}, {-7, "opaque "}};
    for (const auto& [selector, blending] : blendings)
    {
        const TWMaterialChunk record =
            makeRecord(DIFFUSE, 0, [number = selector](auto& r) { r.diffuseBlend = number; });
        EXPECT_THAT(build(record), HasSubstr(std::string("blend ") + blending)) << selector;
    }
}

TEST_F(Material, ADriverWithoutPixelShadersIgnoresTheSpecularTexture)
{
    P_DriverCaps caps;
    Spy spy;
    TW_Material::setCallback(&spy);
    for (const unsigned int version : {0x0000u, 0xFFFF00FFu, 0xFFFF0000u})
    {
        caps.m_uiPixelShaderVersion = version;
        m_folder.useDriver(caps);
        TW_Material material(makeRecord(SPECULAR, 1, [](auto& r) { r.specular = 1; }));
        EXPECT_EQ(spy.m_iLayers, 1);  // the solid one
        EXPECT_FALSE(material.animateTexture(TW_Material::TEXTURE_SPECULAR, 0));
        EXPECT_FALSE(material.getMaterial()->isSpecularEnabled());
        EXPECT_TRUE(material.getMaterial()->getPixelShaderName().empty());
    }
    caps.m_uiPixelShaderVersion = 0xFFFF0104;
    m_folder.useDriver(caps);
    const TW_Material material(makeRecord(SPECULAR, 1));
    P_MaterialSwitchObject* object = material.getMaterial()->getMaterialSwitchObjectBefore();
    ASSERT_NE(object, nullptr);
    object->switchMaterial(material.getMaterial());
    EXPECT_EQ(P_Driver::m_initializedDriver->getRenderState(29), 1u);
}

TEST_F(Material, ACopyOfATemplateLooksLikeAMaterialBuiltFromScratch)
{
    std::mt19937 random(7);
    const auto pick = [&](int count) { return static_cast<int>(random() % static_cast<unsigned int>(count)); };
    for (int round = 0; round < 400; ++round)
    {
        const TWMaterialChunk record = makeRecord(static_cast<unsigned int>(pick(32)), pick(3),
                                                  [&](TWMaterialChunk& r)
                                                  {
                                                      r.twoSided = pick(2) != 0;
                                                      r.fog = pick(2) != 0;
                                                      r.vertexAlpha = pick(3) == 0;
                                                      r.shadeReflection = pick(2) != 0;
                                                      r.alphaTest = pick(2) != 0;
                                                      r.alphaBlend = pick(2) != 0;
                                                      r.specular = pick(2);
                                                      r.reflectionMapping = pick(4);
                                                      r.glossChannel = pick(2);
                                                      r.diffuseBlend = pick(3);
                                                      r.reflectionBlend = pick(3);
                                                  });
        const TWMaterialChunk variant = makeVariant(record);
        ASSERT_TRUE(record == variant);
        const std::string fromScratch = build(variant);
        const TW_Material first(record);
        const TW_Material second(variant);
        ASSERT_EQ(support::describe(second), fromScratch) << "round " << round;
        EXPECT_NE(first.getMaterial(), second.getMaterial());
        EXPECT_EQ(second.getName(), "variant");
    }
}

TEST_F(Material, TheCallbackSeesTheCountsAndWhatItChangesStaysInTheTemplate)
{
    Spy spy;
    spy.m_onComplete = [](P_Material& material) { material.setSortPriority(42); };
    spy.m_iMoreLayers = 2;
    TW_Material::setCallback(&spy);
    const std::tuple<TWMaterialChunk, int, int> table[] = {
        {makeRecord(DIFFUSE | REFLECTION | GLOSS | SPECULAR, 1), 5, 3},
        {makeRecord(DIFFUSE | GLOSS, 2, [](auto& r) { r.glossChannel = 1; }), 2, 2},
        {makeRecord(OPACITY, 2), 1, 1},
        {makeRecord(0, 0), 0, 0}};
    for (const auto& [record, layers, sets] : table)
    {
        const TW_Material material(record);
        EXPECT_EQ(spy.m_iLayers, layers);
        EXPECT_EQ(spy.m_iCoordinateSets, sets);
    }
    const TWMaterialChunk record = makeRecord(DIFFUSE, 0);
    auto withCallback = std::make_unique<TW_Material>(record);
    EXPECT_EQ(withCallback->getMaterial()->getInfoBlock().m_uiTextureLayers, 3u);
    TW_Material::setCallback(nullptr);
    auto copy = std::make_unique<TW_Material>(record);
    EXPECT_EQ(copy->getMaterial()->getSortPriority(), 42u);
    withCallback.reset();
    EXPECT_EQ(TW_Material(record).getMaterial()->getSortPriority(), 42u);
    copy.reset();  // the last material takes the templates along
    EXPECT_EQ(TW_Material(record).getMaterial()->getSortPriority(), +P_Material::defaultSortPriority);

    // Built with a callback it is never a copy; a later material without callback copies the older template.
    const TW_Material plain(record);
    TW_Material::setCallback(&spy);
    spy.m_iMoreLayers = -9;
    EXPECT_EQ(TW_Material(record).getMaterial()->getSortPriority(), 42u);
    EXPECT_EQ(TW_Material(makeRecord(0, 0)).getMaterial()->getInfoBlock().m_uiTextureLayers, 0u) << "not -9";
    TW_Material::setCallback(nullptr);
    EXPECT_EQ(TW_Material(record).getMaterial()->getSortPriority(), +P_Material::defaultSortPriority);
}

TEST_F(Material, AFailedOrNestedConstructionDoesNotMixUpTheTemplates)
{
    const TWMaterialChunk shaded = makeRecord(DIFFUSE, 2);
    const TWMaterialChunk constant = makeRecord(DIFFUSE, 1);
    const TWMaterialChunk environment = makeRecord(DIFFUSE | REFLECTION, 2);
    const std::string shadedText = build(shaded);
    const std::string constantText = build(constant);
    const std::string environmentText = build(environment);

    const TW_Material keeper(makeRecord(0, 0));
    P_DriverCaps caps;
    caps.m_bModulate2X = caps.m_bAddThenModulate2X = false;
    m_folder.useDriver(caps);
    EXPECT_EQ(support::messageOf([&] { TW_Material{shaded}; }),
              "TW2: Unable to use texture * gouraud^2 for material 'stone'");
    EXPECT_EQ(support::messageOf([&] { TW_Material(makeRecord(DIFFUSE, 2, [](auto& r) { r.alphaTest = true; })); }),
              "TW2: Unable to use texture * gouraud^2 for material 'stone'");
    EXPECT_EQ(support::messageOf([&] { TW_Material{environment}; }),
              "TW2: Unable to use texture * (gouraud+env)^2 for material 'stone'");
    caps = P_DriverCaps();
    caps.m_uiTextureLayers = 1;
    m_folder.useDriver(caps);
    EXPECT_THROW(TW_Material{constant}, P_DriverException);
    m_folder.useDriver(P_DriverCaps());

    // A callback that builds a material of its own while another is being built, and then gives up on that one.
    Spy spy;
    std::unique_ptr<TW_Material> nested;
    bool isNested = false;
    spy.m_onComplete = [&](P_Material&)
    {
        if (!std::exchange(isNested, true))
        {
            nested = std::make_unique<TW_Material>(environment);
            throw std::runtime_error("host");
        }
    };
    TW_Material::setCallback(&spy);
    EXPECT_THROW(TW_Material{shaded}, std::runtime_error);

    // One that removes itself: the material being built is no template yet.
    spy.m_onComplete = [&](P_Material&)
    {
        TW_Material::setCallback(nullptr);
        EXPECT_EQ(build(constant), constantText);
    };
    EXPECT_EQ(build(constant), constantText);

    const TW_Material materials[] = {TW_Material(constant), TW_Material(shaded), TW_Material(environment)};
    EXPECT_EQ(support::describe(*nested), environmentText);
    EXPECT_EQ(build(constant), constantText);
    EXPECT_EQ(build(shaded), shadedText);
    EXPECT_EQ(build(environment), environmentText);
}

TEST_F(Material, ASlotThatNamesNoFileOrAMissingOneIsAnErrorThatSaysWhich)
{
    const std::tuple<unsigned int, Change, const char*> table[] = {
        {DIFFUSE, [](auto& r) { r.accessDiffuseTexture().frameFiles.clear(); }, "diffuse texture of material 'stone'"},
        {DIFFUSE, [](auto& r) { r.accessOpacityTexture(); }, "opacity texture of material 'stone'"},
        {DIFFUSE, [](auto& r) { r.accessReflectionTexture(); }, "reflection texture of material 'stone'"},
        {DIFFUSE, [](auto& r) { r.accessGlossTexture(); }, "gloss texture of material 'stone'"},
        {DIFFUSE, [](auto& r) { r.accessSpecularTexture(); }, "specular texture of material 'stone'"},
        {DIFFUSE, [](auto& r) { r.accessDiffuseTexture().frameFiles[0] = "no.png"; }, "Texture \"no.png\" not found"}};
    TW_Material material;
    for (const auto& [slots, change, expected] : table)
    {
        const TWMaterialChunk record = makeRecord(slots, 2, change);
        const long long live = S_Memory::getLiveCount();
        EXPECT_THAT(support::messageOf([&] { material.construct(record); }), HasSubstr(expected));
        EXPECT_EQ(material.getMaterial(), nullptr);
        EXPECT_EQ(S_Memory::getLiveCount(), live);
    }
    // An opacity slot is only looked at beside a diffuse one.
    EXPECT_NO_THROW(TW_Material(makeRecord(0, 2, [](auto& r) { r.accessOpacityTexture(); })));
}

TEST_F(Material, CopiesShareTheEngineMaterialUnlessATextureIsAnimated)
{
    auto still = std::make_unique<TW_Material>(makeRecord(DIFFUSE | REFLECTION, 1));
    const std::string text = support::describe(*still);
    P_Material* engine = still->getMaterial();
    auto copy = std::make_unique<TW_Material>(*still);
    TW_Material third;
    third = *copy;
    EXPECT_EQ(third.getMaterial(), engine);
    still.reset();
    copy.reset();
    EXPECT_EQ(support::describe(third), text);
    third = *&third;
    EXPECT_EQ(third.getMaterial(), engine);

    const TWMaterialChunk record =
        makeRecord(DIFFUSE, 1, [](auto& r) { r.accessDiffuseTexture().frameFiles.emplace_back("other.png"); });
    auto animated = std::make_unique<TW_Material>(record);
    TW_Material independent(*animated);
    TW_Material copyOfCopy(independent);
    EXPECT_NE(independent.getMaterial(), animated->getMaterial());
    EXPECT_NE(independent.getMaterial(), copyOfCopy.getMaterial());
    EXPECT_TRUE(animated->animateTextureFrame(TW_Material::TEXTURE_DIFFUSE, 1));
    EXPECT_THAT(support::describe(*animated), HasSubstr("layer 0 other.png"));
    EXPECT_THAT(support::describe(independent), HasSubstr("layer 0 diffuse.png"));
    animated.reset();
    EXPECT_TRUE(independent.animateTextureFrame(TW_Material::TEXTURE_DIFFUSE, 5));
    EXPECT_THAT(support::describe(independent), HasSubstr("layer 0 other.png"));
    EXPECT_THAT(support::describe(copyOfCopy), HasSubstr("layer 1 white"));
}

TEST_F(Material, ASlotWithoutALayerIsAnimatedWithoutBeingBound)
{
    TW_Material material(makeRecord(DIFFUSE | REFLECTION | GLOSS, 2,
                                    [](auto& r) { r.accessGlossTexture().frameFiles.emplace_back("other.png"); }));
    const std::string text = support::describe(material);
    EXPECT_TRUE(material.animateTextureFrame(TW_Material::TEXTURE_GLOSS, 1));
    EXPECT_EQ(support::describe(material), text);
    EXPECT_EQ(material.getTextureAnimationFrames(TW_Material::TEXTURE_GLOSS), 2u);
    TW_Material shining(
        makeRecord(SPECULAR, 1, [](auto& r) { r.accessSpecularTexture().frameFiles.emplace_back("other.png"); }));
    EXPECT_TRUE(shining.animateTextureFrame(TW_Material::TEXTURE_SPECULAR, 1));
    EXPECT_THAT(support::describe(shining), HasSubstr("layer 1 other.png"));
}

TEST_F(Material, TheFirstTextureMatrixOfALayerCountsAndTheListKeepsAll)
{
    TW_Material material(makeRecord(REFLECTION, 0));
    ASSERT_EQ(material.getTextureMatrixCount(), 1);
    M_Matrix4Template<float> matrix;
    material.setTextureMatrix(0, matrix);
    material.setTextureMatrix(7, matrix);
    EXPECT_TRUE(material.hasTextureMatrix(0) && material.hasTextureMatrix(7));
    EXPECT_FALSE(material.hasTextureMatrix(1));
    EXPECT_EQ(material.getTextureMatrixCount(), 3);
    EXPECT_EQ(material.getTextureMatrixTextureLayer(2), 7);
    // An entry of the list may be given to another layer.
    material.setTextureMatrix(8, material.getTextureMatrix(0));
    EXPECT_EQ(material.getTextureMatrix(3), material.getTextureMatrix(0));
    EXPECT_EQ(TW_Material(material).getTextureMatrixCount(), 4);
    material.destruct();
    EXPECT_FALSE(material.hasTextureMatrix(0));
    EXPECT_EQ(material.getSolidLayerIndex(), -1);
}

TEST_F(Material, TexturesGoToTextureMemoryAndThePlainWhiteMapDoesNot)
{
    TW_Material material(makeRecord(DIFFUSE | REFLECTION | OPACITY, 1));
    const auto isInMemory = [&](unsigned int layer)
    { return material.getMaterial()->getTexture(layer)->isInTextureMemory(); };
    material.addToTextureMemory();
    EXPECT_TRUE(isInMemory(0) && isInMemory(2));
    EXPECT_FALSE(isInMemory(1));
    EXPECT_EQ(material.getMaterial()->getTexture(1)->getMipLevelCount(), 1);
    EXPECT_EQ(material.getMaterial()->getTexture(1)->getImage().getWidth(),
              P_Driver::m_initializedDriver->getDriverCaps().m_uiMinimumTextureWidth);
    material.removeFromTextureMemory();
    EXPECT_FALSE(isInMemory(0) || isInMemory(2));
}

TEST_F(Material, TheLastMaterialTakesMapsTemplatesAndTheWhiteMapAlong)
{
    const long long live = S_Memory::getLiveCount();
    {
        auto first = std::make_unique<TW_Material>(makeRecord(DIFFUSE, 1));
        const P_Map* white = first->getMaterial()->getTexture(1);
        const unsigned long long id = white->getId();
        const TW_Material second(makeRecord(0, 2));
        auto copy = std::make_unique<TW_Material>(*first);
        EXPECT_EQ(second.getMaterial()->getTexture(0), white);
        first.reset();
        copy.reset();
        EXPECT_EQ(second.getMaterial()->getTexture(0)->getId(), id);
    }
    EXPECT_EQ(S_Memory::getLiveCount(), live);
}

TEST_F(Material, EveryFailedAllocationOfAConstructionIsSurvived)
{
    const TWMaterialChunk records[] = {
        makeRecord(DIFFUSE | OPACITY, 2, [](auto& r) { r.alphaTest = true; }), makeRecord(DIFFUSE | REFLECTION, 2),
        makeRecord(DIFFUSE | SPECULAR, 2, [](auto& r) { r.vertexAlpha = true; }),
        makeRecord(DIFFUSE | REFLECTION | GLOSS, 1, [](auto& r) { r.specular = 1; }),
        makeRecord(DIFFUSE | REFLECTION, 1,
                   [](auto& r) { r.accessDiffuseTexture().frameFiles.emplace_back("other.png"); })};
    for (const TWMaterialChunk& record : records)
    {
        const std::string expected = build(record);
        support::expectNothingLeftByFailedAllocations(
            [&]
            {
                TW_Material material;
                try
                {
                    material.construct(record);
                    const TW_Material copyOfTemplate(makeVariant(record));
                    const TW_Material copy(material);
                }
                catch (const S_MemoryException_Allocation&)
                {
                    EXPECT_TRUE(material.getMaterial() != nullptr || material.getName().empty());
                    material.construct(record);
                    EXPECT_EQ(support::describe(material), expected);
                    throw;
                }
            });
    }
}
