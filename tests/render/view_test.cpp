#include "tests/render/renderer_fixture.h"

#include <platform/scene/directional_light.h>
#include <platform/scene/material_helpers.h>

namespace
{
using namespace support;

class ViewOptions : public RendererFixture
{
};
TW2_IN_BOTH_CONTEXTS(ViewOptions);
}  // namespace

TEST_P(ViewOptions, TransparentBackgroundsGiveCoverageAsAlpha)
{
    addSquare(0.0F, 0.0F, &addColor({255.0F, 0.0F, 0.0F}));
    addSquare(-1.0F, 0.0F, &addGlass({200, 100, 50}));
    m_view.m_bTransparent = true;
    const G_Image picture = draw();
    const auto alphaAt = [&picture](float x, float y)
    {
        return static_cast<int>(picture.getPixel(static_cast<unsigned int>((x + 2.0F) * 16.0F),
                                                 static_cast<unsigned int>((2.0F - y) * 16.0F))[3]);
    };
    EXPECT_EQ(alphaAt(0.5F, 0.5F), 255);
    EXPECT_EQ(at(picture, 0.5F, 0.5F), red);
    EXPECT_NEAR(alphaAt(-0.5F, 0.5F), 128, 1);
    expectColor(picture, -0.5F, 0.5F, {200, 100, 50}, "glass, whose colour is not darkened by what is not there");
    EXPECT_EQ(alphaAt(-0.5F, -0.5F), 0);
    m_view.m_bTransparent = false;
    EXPECT_EQ(draw().getPixel(2, 60)[3], 255) << "opaque otherwise";
}

TEST_P(ViewOptions, ShowUnlitSurfacesAndNormals)
{
    P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
    ASSERT_TRUE(P_MaterialHelpers::makeTexture(&material, P_Material::FILTER_MODE::Point));
    material.enableLighting(true);
    material.setTexture(0, &addMap(1, 1, {200, 100, 30, 255}));
    P_VirtualObject& square = addSquare(-0.5F, -0.5F, &material);
    m_view.m_ambientSky = m_view.m_ambientGround = G_FColor();
    EXPECT_EQ(at(draw(), 0.0F, 0.0F), (std::array<int, 3>{0, 0, 0})) << "no light";
    m_view.m_eSurface = View::Surface::Unlit;
    expectColor(draw(), 0.0F, 0.0F, {200, 100, 30}, "unlit");
    P_Material& plain = *m_materials.emplace_back(std::make_unique<P_Material>());
    plain.addShadingLayer(P_Material::SHADING_MODE::Gouraud, false);
    plain.setDiffuseColor({90.0F, 60.0F, 30.0F});
    plain.setEmissiveColor({10.0F, 0.0F, 0.0F});
    square.getPrimitiveInstance(0)->setMaterial(&plain);
    expectColor(draw(), 0.0F, 0.0F, {100, 60, 30}, "unlit, without a texture");
    m_view.m_eSurface = View::Surface::Normals;
    m_view.m_bFog = true;
    m_view.m_fFogEnd = 1.0F;
    expectColor(draw(), 0.0F, 0.0F, {128, 128, 0}, "a normal along negative z, whatever the fog");
    Matrix turned;  // by 30 degrees around y: the normal (0, 0, -1) becomes (-0.5, 0, -0.866)
    turned.setRow(0, {std::sqrt(0.75F), 0.0F, -0.5F});
    turned.setRow(2, {0.5F, 0.0F, std::sqrt(0.75F)});
    square.setMatrix(turned);
    expectColor(draw(), 0.1F, 0.2F, {64, 128, 17}, "a turned normal");
}

TEST_P(ViewOptions, ShowWhatThePickedBoneMoves)
{
    std::array<Matrix, 2> bones;
    P_VirtualObject& skin = addSkin(&addColor({0.0F, 0.0F, 255.0F}), bones.data());
    skin.setMatrix(Matrix::translation({-0.5F, -0.5F, 0.0F}));
    P_VirtualObject& rigid = addSquare(-1.5F, -0.5F, &addColor({0.0F, 0.0F, 255.0F}));
    m_view.m_eSurface = View::Surface::BoneWeights;
    const std::array<int, 3> none{0, 0, 255};
    expectColor(draw(), 0.0F, 0.0F, none, "no bone is picked");
    m_view.m_iPickedBone = 1;
    const G_Image half = draw();
    expectColor(half, 0.0F, 0.0F, {0, 255, 0}, "half its weight");
    EXPECT_GT(at(half, -1.0F, 0.0F)[2], 200) << "a rigid mesh has no weights";
    m_view.m_pPickedMesh = &rigid;
    P_VirtualObject& twin = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(rigid));
    twin.setMatrix(Matrix::translation({-1.5F, 0.75F, 0.0F}));
    twin.addTo(&m_scene);
    const G_Image picked = draw();
    EXPECT_GT(at(picked, -1.0F, 0.0F)[0], 200) << "a mesh that is the bone";
    EXPECT_LT(at(picked, -1.0F, 1.25F)[0], 50) << "its copy is not";

    m_view.m_eSurface = View::Surface::Materials;
    m_view.m_bHighlight = true;
    m_view.m_highlightColor = G_FColor(255.0F, 0.0F, 0.0F);
    const G_Image lit = draw();
    expectColor(lit, 0.0F, 0.0F, {96, 0, 159}, "0.75 x 0.5 of the highlight");
    expectColor(lit, -1.0F, 0.0F, {191, 0, 64}, "0.75 of the highlight");
}

TEST_P(ViewOptions, DrawTrianglesAsLines)
{
    Matrix large;
    large.m[0][0] = large.m[1][1] = 2.0F;
    large.setTranslation({-1.0F, -1.0F, 0.0F});
    addSquare(-1.0F, -1.0F, &addColor({255.0F, 0.0F, 0.0F})).setMatrix(large);
    m_view.m_wireColor = G_FColor(0.0F, 255.0F, 0.0F);
    m_view.m_eWireframe = View::Wireframe::Only;
    // How many pixels of a row, or of a column, have about a colour: either meets two sides and the diagonal.
    const auto countAlong = [](const G_Image& picture, const std::array<int, 3>& color, bool down)
    {
        int found = 0;
        for (int i = 0; i < 64; ++i)
        {
            const float along = -2.0F + static_cast<float>(i) / 16.0F + 0.01F;
            const std::array<int, 3> is = down ? at(picture, -0.5F, along) : at(picture, along, 0.5F);
            found += std::abs(is[0] - color[0]) + std::abs(is[1] - color[1]) + std::abs(is[2] - color[2]) < 60 ? 1 : 0;
        }
        return found;
    };
    const auto count = [&](const G_Image& picture, const std::array<int, 3>& color)
    { return countAlong(picture, color, false); };
    const auto countDown = [&](const G_Image& picture) { return countAlong(picture, background, true); };
    const G_Image only = draw();
    EXPECT_EQ(count(only, red), 0);
    EXPECT_GE(count(only, background), 54);
    EXPECT_LE(count(only, background), 61) << "two sides and the diagonal";
    EXPECT_EQ(at(only, -0.5F, -0.5F), background) << "the diagonal runs from the upper left to the lower right";
    const int between = countDown(only);
    EXPECT_LE(between, 61);
    P_TriangleMesh& mesh = *m_objects[0]->getPrimitive(0);
    mesh.setDrawnRange(1, 1);
    EXPECT_GT(countDown(draw()), between) << "the second triangle has no lower side";
    mesh.setDrawnRange(0, 0);
    EXPECT_EQ(countDown(draw()), between);
    mesh.lock();
    mesh.getIndexBuffer().setTriangle(0, 0, 0, 0);
    mesh.unlock();
    EXPECT_GT(countDown(draw()), between) << "a triangle without sides";
    mesh.lock();
    mesh.getIndexBuffer().setTriangle(0, 0, 2, 1);
    mesh.unlock();
    m_view.m_wireColor.alpha = 0.0F;
    EXPECT_GE(count(draw(), background), 64) << "lines that are clear";
    m_view.m_wireColor.alpha = 255.0F;
    m_view.m_eWireframe = View::Wireframe::Over;
    const G_Image over = draw();
    EXPECT_GE(count(over, red), 25);
    EXPECT_LT(count(over, red), 32) << "lines lie over the surface";
}

TEST_P(ViewOptions, ThrowAShadowWhereTheLightDoesNotReachTheGround)
{
    // Two level plates, one of them where its bones bring it. Each pixel's ray tells what it shows.
    const std::array<Vector, 2> corners{Vector{3.3F, 1.0F, -2.2F}, Vector{1.6F, 0.8F, -2.6F}};
    const Vector eye{3.5F, 3.0F, -8.0F};
    m_camera.lookAt(eye, {3.0F, 0.0F, -2.0F}, {0.0F, 1.0F, 0.0F});
    P_Material& color = addColor({255.0F, 0.0F, 0.0F});
    P_Material& glass = addGlass({255, 0, 0});
    color.setBackfaceCullingMode(P_Material::CullingMode::None);
    glass.setBackfaceCullingMode(P_Material::CullingMode::None);
    Matrix plate;
    plate.setRow(1, {0.0F, 0.0F, 1.0F});
    plate.setRow(2, {0.0F, 1.0F, 0.0F});
    plate.setTranslation(corners[0]);
    addSquare(0.0F, 0.0F, &color).setMatrix(plate);
    std::array<Matrix, 2> bones;
    bones[1].setTranslation({2.0F, 0.0F, 0.0F});  // half of it
    plate.setTranslation(corners[1] - Vector{1.0F, 0.0F, 0.0F});
    addSkin(&color, bones.data()).setMatrix(plate);
    P_DirectionalLight sun;
    sun.addTo(&m_scene);
    m_view.m_topColor = m_view.m_bottomColor = G_FColor(200.0F, 200.0F, 200.0F);
    // Whether a line from a place meets a plate.
    const auto meets = [&corners](const Vector& from, const Vector& along)
    {
        return std::ranges::any_of(corners,
                                   [&](const Vector& corner)
                                   {
                                       const float away = (corner.y - from.y) / along.y;
                                       const Vector in = from + along * away - corner;
                                       return away > 0.0F && in.x > 0.0F && in.x < 1.0F && in.z > 0.0F && in.z < 1.0F;
                                   });
    };
    View::Shadow shadow;
    const auto compare = [&](const Vector& light, int shade, int plates, const char* what)
    {
        Matrix place;
        place.setRow(1, {0.0F, 0.0F, 1.0F});
        place.setRow(2, light.normalized());
        sun.setMatrix(place);
        const G_Image picture = draw();
        const Matrix& camera = m_camera.getObjectToWorldMatrix();
        const TW2::render::GroundPlane& ground = shadow.m_ground;
        std::array<int, side * side> expected{};
        for (unsigned int i = 0; i < side * side; ++i)
        {
            const float x = (static_cast<float>(i % side) + 0.5F) / side - 0.5F;
            const float y = 0.5F - (static_cast<float>(i / side) + 0.5F) / side;
            const Vector ray = camera.getRow(2) + camera.getRow(0) * x + camera.getRow(1) * y;
            const float away =
                (ground.getHeight(eye) - eye.y) / (ray.y - ground.m_fRiseX * ray.x - ground.m_fRiseZ * ray.z);
            const bool shadowed = away > 0.0F && meets(eye + ray * away, light * -1.0F);
            expected[i] = meets(eye, ray) ? plates : shadowed ? shade : 200;
        }
        for (unsigned int i = side + 1; i < side * (side - 1) - 1; ++i)
        {
            bool edge = false;
            for (unsigned int k = 0; k < 9; ++k)
            {
                edge |= expected[i + k / 3 * side + k % 3 - side - 1] != expected[i];
            }
            const int is = picture.getPixel(i % side, i / side)[1];
            ASSERT_TRUE(edge || std::abs(is - expected[i]) <= 2)
                << what << ": " << is << " instead of " << expected[i] << " at " << i % side << ", " << i / side;
        }
    };
    compare({0.0F, -1.0F, 0.0F}, 200, 0, "no shadow is asked for");
    shadow.m_fStrength = 0.25F;
    for (const Vector& corner : corners)
    {
        shadow.m_casters.add(corner);
        shadow.m_casters.add(corner + Vector{1.0F, 0.0F, 1.0F});
    }
    const auto compareOn = [&](const TW2::render::GroundPlane& ground, const Vector& light, const char* what)
    {
        shadow.m_ground = ground;
        m_view.m_shadow = shadow;
        compare(light, 150, 0, what);
    };
    compareOn({.m_fHeight = -0.5F, .m_fRiseX = 0.3F, .m_fRiseZ = 0.2F}, {-0.6F, -1.0F, -0.2F}, "on a slope");
    compareOn({.m_fRiseZ = 0.1F}, {2.0F, -1.0F, 0.1F}, "in the evening");
    compareOn({.m_fHeight = -0.3F}, {0.5F, -1.0F, 0.4F}, "somewhat lower");
    compareOn({}, {0.0F, -1.0F, 0.0F}, "at noon");
    compare({0.0F, -0.1F, 1.0F}, 200, 0, "a shadow without an end");
    for (P_Material* each : {&glass, &color})
    {
        m_objects[0]->getPrimitiveInstance(0)->setMaterial(each);
        m_objects[1]->getPrimitiveInstance(0)->setMaterial(each);
        const bool shines = each == &glass;
        compare({0.0F, -1.0F, 0.0F}, shines ? 200 : 150, shines ? 100 : 0, "what shines through throws none");
    }
    sun.enable(false);
    compare({0.0F, -1.0F, 0.0F}, 200, 0, "no light, no shadow");
}
