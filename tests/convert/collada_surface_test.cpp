#include "tests/convert/collada_builder.h"

#include <platform/image/image.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace
{
using namespace convert_test;

/// A triangle with the material "cloth", and one without. Beside the file lies a picture, "flag.png".
Model readCloth(const std::string& shader, const std::string& parameters = {},
                const std::string& image = "<init_from>flag.png</init_from>")
{
    const support::TemporaryDirectory directory;
    directory.write("flag.png", G_Image(2, 2).encodePNG());
    const std::string libraries =
        "<library_images><image id='i'>" + image + "</image></library_images><library_effects>" +
        "<effect id='fx'><profile_COMMON>" + parameters + "<technique>" + shader +
        "</technique></profile_COMMON></effect></library_effects>"
        "<library_materials><material id='m' name='cloth'><instance_effect url='#fx'/></material></library_materials>"
        "<library_geometries><geometry id='g'><mesh>" +
        makeSource("gp", floats("0 0 0 4 0 0 4 4 0"), 3) +
        "<vertices id='gv'><input semantic='POSITION' source='#gp'/></vertices><triangles material='m' count='1'>"
        "<input semantic='VERTEX' source='#gv' offset='0'/><p>0 1 2</p></triangles><triangles count='1'>"
        "<input semantic='VERTEX' source='#gv' offset='0'/><p>0 2 1</p></triangles></mesh></geometry>"
        "</library_geometries>";
    // Some programs write a reference's letters by their numbers.
    const std::string text = makeCollada({}, libraries, "<node><instance_geometry url='#%67'/></node>");
    return TW2::convert::readModel(directory.write("cloth.dae", text), {});
}
}  // namespace

TEST(Collada, ASurfaceIsWhatItsShaderSays)
{
    const auto color = [](const std::string& name, const std::string& rgb)
    { return "<" + name + "><color>" + rgb + " 1</color></" + name + ">"; };
    const auto extra = [](const std::string& says)
    { return "<extra><technique profile='x'>" + says + "</technique></extra>"; };
    const std::string gray = "diffuse 204 204 204";
    const std::string rest = ", specular 0 0 0, emissive 0 0 0, shininess 0, opacity 1";
    const std::string glowing = "<emission><texture texture='i'/></emission>";
    const std::string glow = color("emission", "0.2 0.4 0.6");
    for (const auto& [shader, expected, parameters] :
         {std::tuple{glow, gray + rest, std::string()},  // of no shader
          {"<phong>" + color("diffuse", "1 0.8 0.4") + color("specular", "0.4 0.6 0.8") +
               "<shininess><float>20</float></shininess>" + glow + "</phong>",
           "diffuse 255 204 102, specular 102 153 204, emissive 51 102 153, shininess 20, opacity 1", ""},
          {"<blinn><diffuse><param ref='p'/></diffuse></blinn>", "diffuse 51 0 255" + rest,
           "<newparam sid='q'><float4>0 0 0 0</float4></newparam><newparam sid='p'><float4>0.2 0 1 "
           "1</float4></newparam>"},
          {"<constant>" + glow + "</constant>", "diffuse 51 102 153" + rest + ", unlit", ""},
          {"<constant>" + glowing + "</constant>", "diffuse 255 255 255" + rest + ", unlit, diffuse map", ""},
          {"<constant>" + color("diffuse", "1 0 0") + glow + "</constant>",
           "diffuse 255 0 0, specular 0 0 0, emissive 51 102 153, shininess 0, opacity 1, unlit", ""},
          {"<lambert>" + glowing + "</lambert>",
           gray + ", specular 0 0 0, emissive 255 255 255, shininess 0, opacity 1, emissive map", ""},
          {"<lambert/>" + extra("<bump/>"), gray + rest + "; the bump map", ""},
          {"<lambert/>", gray + rest + "; the bump map", extra("<bump/>")},
          {"<lambert/>", gray + rest + ", of two sides", extra("<double_sided>1</double_sided>")},
          {"<lambert/>", gray + rest, extra("<double_sided>0</double_sided>")}})
    {
        EXPECT_EQ(describeSurface(readCloth(shader, parameters)), expected) << shader << parameters;
    }
}

TEST(Collada, HowClearASurfaceIsStandsInOneOfFourWays)
{
    const std::string color = "><color>0.2 0.4 0.8 0.25</color></transparent>";
    const std::string half = "<transparency><float>0.5</float></transparency>";
    const double light = 0.212671 * 0.2 + 0.71516 * 0.4 + 0.072169 * 0.8;
    for (const auto& [says, opacity] :
         {std::pair(std::string(), 1.0),
          {half, 0.5},
          {"<transparent" + color, 0.25},
          {"<transparent opaque='A_ONE'" + color + half, 0.125},
          {"<transparent opaque='A_ZERO'" + color + half, 0.875},
          {"<transparent opaque='RGB_ONE'" + color + half, light * 0.5},
          {"<transparent opaque='RGB_ZERO'" + color + half, 1.0 - light * 0.5},
          {"<transparent><param ref='p'/></transparent>" + half, 0.5},
          {"<transparent opaque='RGB_ONE'><param ref='p'/></transparent>", 0.5},
          {"<transparent><texture texture='i'/></transparent>", 1.0},
          {"<transparent opaque='A_ZERO'><texture texture='i'/></transparent>" + half, 1.0}})
    {
        const Model model =
            readCloth("<lambert>" + says + "</lambert>", "<newparam sid='p'><float3>0.5 0.5 0.5</float3></newparam>");
        const TW2::convert::Surface& surface = model.m_vecSurfaces.at(0);
        EXPECT_NEAR(surface.m_fOpacity, opacity, 1e-6) << says;
        const bool zero = says.find("ZERO'><tex") != std::string::npos;
        EXPECT_EQ(surface.m_opacityTexture.isUsed(), !zero && says.find("texture") != std::string::npos) << says;
        EXPECT_THAT(model.m_vecWarnings, testing::SizeIs(zero ? 1 : 0)) << says;
    }
}

TEST(Collada, PicturesAreFoundHoweverTheyAreReferredTo)
{
    const auto readWith = [](const std::string& image, const std::string& sampler)
    {
        return readCloth(
            "<phong><diffuse><texture texture='" + std::string(sampler.empty() ? "i" : "s") + "'/></diffuse></phong>",
            "<newparam sid='s'><sampler2D>" + sampler + "</sampler2D></newparam>", image);
    };
    for (const auto& [image, sampler] :
         {std::pair("<init_from>flag.png</init_from>", "<instance_image url='#i'/>"),
          {"<init_from><ref>file://flag.png</ref></init_from>", "<magfilter>NEAREST</magfilter>"},
          {"<init_from>./fl%61g.png</init_from>", ""}})
    {
        const Model model = readWith(image, sampler);
        const bool found = std::string_view(sampler).find("NEAREST") == std::string_view::npos;
        EXPECT_EQ(model.m_vecPictures.size(), found ? 1U : 0U) << image << sampler;
    }
    for (const auto& [image, name] : {std::pair("file:///C:/none.png", "C:/none.png"),
                                      {"file:///maps/none.png", "/maps/none.png"},
                                      {"file://none.png", "none.png"},
                                      {"file:///C", "/C"},
                                      {"", "i"}})
    {
        EXPECT_THAT(readWith(std::string("<init_from>") + image + "</init_from>", "").m_vecWarnings,
                    testing::ElementsAre(testing::StartsWith(std::string("material \"cloth\": texture \"") + name +
                                                             "\" is left out: ")));
    }
}

TEST(Collada, APictureLiesAsTheFileSaysAndMapsWithoutAPlaceAreTold)
{
    const auto readPlaced = [](const std::string& placed)
    {
        return readCloth(
            "<phong><diffuse><texture texture='s'><extra><technique profile='x'>" + placed +
                "</technique></extra></texture></diffuse><specular><texture texture='other'/></specular>"
                "<ambient><texture texture='s'/></ambient></phong>",
            "<newparam sid='f'><surface type='2D'><init_from>i</init_from></surface></newparam>"
            "<newparam sid='s'><sampler2D><source>f</source><wrap_t>CLAMP</wrap_t></sampler2D></newparam>");
    };
    const Model model = readPlaced("<repeatU>2</repeatU><offsetV>0.25</offsetV>");
    const TW2::convert::Texture& texture = model.m_vecSurfaces.at(0).m_diffuseTexture;
    EXPECT_TRUE(texture.isUsed());
    EXPECT_EQ(model.m_vecMeshes.at(1).m_iMaterial, 1);
    EXPECT_EQ(texture.m_eWrapU, TW2::convert::Wrap::Repeat);
    EXPECT_EQ(texture.m_eWrapV, TW2::convert::Wrap::Clamp);
    const std::array<std::array<double, 2>, 3> lies{{{2.0, 0.0}, {0.0, 1.0}, {0.0, -0.25}}};
    EXPECT_EQ(texture.m_transform, lies) << "v counts downwards";
    const TW2::convert::Texture other =
        readPlaced("<repeatV>3</repeatV><offsetU>0.5</offsetU><mirrorU>1</mirrorU><wrapV>0</wrapV>")
            .m_vecSurfaces.at(0)
            .m_diffuseTexture;
    EXPECT_EQ(other.m_eWrapU, TW2::convert::Wrap::Mirror);
    EXPECT_EQ(other.m_eWrapV, TW2::convert::Wrap::Clamp);
    const std::array<std::array<double, 2>, 3> otherLies{{{1.0, 0.0}, {0.0, 3.0}, {0.5, -2.0}}};
    EXPECT_EQ(other.m_transform, otherLies);
    EXPECT_THAT(model.m_vecWarnings, testing::ElementsAre(testing::HasSubstr("the map of its highlights")));
}
