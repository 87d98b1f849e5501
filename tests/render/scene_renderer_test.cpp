#include "render/draw_list.h"
#include "render/gl.h"
#include "tests/render/renderer_fixture.h"

#include <platform/scene/directional_light.h>

namespace
{
using namespace support;

class SceneRenderer : public RendererFixture
{
};
TW2_IN_BOTH_CONTEXTS(SceneRenderer);
}  // namespace

TEST_P(SceneRenderer, ShowsXToTheRightYUpAndOnlyWhatFacesTheCamera)
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
    m_objects[1]->getPrimitiveInstance(0)->setVisible(false);
    const G_Image none = draw();
    EXPECT_EQ(at(none, 1.0F, 1.0F), background) << "disabled";
    EXPECT_EQ(at(none, -1.0F, -1.0F), background) << "hidden";
}

TEST_P(SceneRenderer, DrawsBlendedSurfacesFromFarToNearOverWhatIsBehindThem)
{
    P_Material& redGlass = addGlass({255, 0, 0});
    P_Material& greenGlass = addGlass({0, 255, 0});
    // Added first, so that only sorting draws them last and in the right order.
    P_VirtualObject& first = addSquare(0.0F, 0.0F, &redGlass, false, -0.2F);
    P_VirtualObject& second = addSquare(0.0F, 0.0F, &greenGlass, false, -0.1F);
    P_Material& white = addColor({255.0F, 255.0F, 255.0F});
    addSquare(0.0F, 0.0F, &white);
    expectColor(draw(), 0.5F, 0.5F, {191, 127, 63}, "red before green before white");
    first.setMatrix(Matrix::translation({0.0F, 0.0F, -0.1F}));
    second.setMatrix(Matrix::translation({0.0F, 0.0F, -0.2F}));
    expectColor(draw(), 0.5F, 0.5F, {127, 191, 63}, "green before red before white");
    // A priority comes before the depth.
    redGlass.setSortPriority(P_Material::defaultSortPriority + 1);
    expectColor(draw(), 0.5F, 0.5F, {191, 127, 63}, "red last");
    white.setSortPriority(P_Material::defaultSortPriority + 2);
    expectColor(draw(), 0.5F, 0.5F, {255, 255, 255}, "and before what is blended");
}

TEST_P(SceneRenderer, SkinsFollowTheirBoneMatricesFromFrameToFrame)
{
    std::array<Matrix, 2> bones;
    addSkin(&addColor({255.0F, 0.0F, 0.0F}), bones.data());
    EXPECT_EQ(at(draw(), 0.5F, 0.5F), red);

    bones[1].setTranslation({-2.0F, 0.0F, 0.0F});  // half of it: one unit to the left
    const G_Image moved = draw();
    EXPECT_EQ(at(moved, 0.5F, 0.5F), background);
    EXPECT_EQ(at(moved, -0.5F, 0.5F), red);
    // A bone without a matrix does not move.
    S_Vector<const Matrix*> one;
    one.push_back(&bones[1]);
    m_objects[0]->setBoneMatrices(one);
    EXPECT_EQ(at(draw(), -0.5F, 0.5F), red);
}

TEST_P(SceneRenderer, EveryCopyInACrowdStandsInItsOwnPlaceAndPose)
{
    std::array<Matrix, 6> bones;
    P_Material& color = addColor({255.0F, 0.0F, 0.0F});
    addSkin(&color, bones.data()).setMatrix(Matrix::translation({-2.0F, -2.0F, 0.0F}));
    for (std::size_t copy = 1; copy < 3; ++copy)
    {
        auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(*m_objects[0]));
        S_Vector<const Matrix*> list;
        list.push_back(&bones[2 * copy]);
        list.push_back(&bones[2 * copy + 1]);
        object.setBoneMatrices(list);
        object.addTo(&m_scene);
        // Each copy lies a unit to the right of the one before, and its bones lift it by as many units.
        const auto number = static_cast<float>(copy);
        object.setMatrix(Matrix::translation({number - 2.0F, -2.0F, 0.0F}));
        bones[2 * copy].setTranslation({0.0F, 2.0F * number, 0.0F});
    }
    const G_Image picture = draw();
    for (int column = 0; column < 3; ++column)
    {
        for (int row = 0; row < 3; ++row)
        {
            EXPECT_EQ(at(picture, static_cast<float>(column) - 1.5F, static_cast<float>(row) - 1.5F),
                      column == row ? red : background)
                << "column " << column << ", row " << row;
        }
    }
    EXPECT_EQ(m_renderer->getKeptMeshCount(), 1U) << "copies share one geometry";
}

TEST_P(SceneRenderer, ManyCopiesHaveTheirOwnMatricesAndCoordinates)
{
    // A square whose texture is red on the left and green on the right; copies bring their coordinates to one of them.
    P_Material& material = addTextured(addMap(2, 1, {255, 0, 0, 255, 0, 255, 0, 255}));
    material.enableTextureTransformation(0, true);
    P_VirtualObject& first = addSquare(0.5F, 0.5F, &material);
    const auto shift = [](P_VirtualObject& object, float by)
    {
        M_Matrix4Template<float> matrix;
        matrix.m[0][0] = 0.25F;
        matrix.m[3][0] = by;
        object.getPrimitiveInstance(0)->setTextureMatrix(0, matrix);
    };
    shift(first, 0.0F);
    EXPECT_EQ(at(draw(), 1.0F, 1.0F), red);
    // More than a row of the texture of matrices holds: all but the last stand behind the first.
    constexpr int copies = 1100;
    for (int copy = 0; copy < copies; ++copy)
    {
        auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(first));
        const bool last = copy + 1 == copies;
        shift(object, last ? 0.5F : 0.0F);
        object.setMatrix(Matrix::translation(last ? Vector{-1.5F, -1.5F, 0.0F} : Vector{0.5F, 0.5F, 0.01F}));
        object.addTo(&m_scene);
    }
    const G_Image picture = draw();
    EXPECT_EQ(at(picture, 1.0F, 1.0F), red);
    EXPECT_EQ(at(picture, -1.0F, -1.0F), green);
    EXPECT_EQ(at(picture, 0.0F, 0.0F), background);
    TW2::render::DrawList list;
    const auto batches = [&]
    {
        m_scene.executeFrame();
        list.collect(m_scene, m_camera, m_view);
        return list.getBatches().size();
    };
    EXPECT_EQ(batches(), 3U) << "from near to far those that show the same part of the map are drawn by one call";
    m_objects.back()->enable(false);
    EXPECT_EQ(batches(), 1U);
    m_objects[1]->getPrimitiveInstance(0)->setMaterial(&addColor({0.0F, 255.0F, 0.0F}));
    EXPECT_EQ(batches(), 2U) << "another material";
    Matrix mirror = m_objects[2]->getMatrix();
    mirror.m[0][0] = -1.0F;
    m_objects[2]->setMatrix(mirror);
    EXPECT_EQ(batches(), 3U) << "the other side of the triangles";
}

TEST_P(SceneRenderer, AMapIsSampledAsItsFilterAndItsLevelsSay)
{
    // Stripes as wide as two pixels, in rows that are an eighth of one high: on two levels they are seen, then mixed.
    std::vector<unsigned char> stripes;
    for (unsigned int i = 0; i < 16 * 128; ++i)
    {
        const unsigned char first = i % 4 < 2 ? 255 : 0;
        stripes.insert(stripes.end(), {first, static_cast<unsigned char>(255 - first), 0, 255});
    }
    struct Case
    {
        P_Material::FILTER_MODE m_eFilter;
        int m_iLevels;
        bool m_bMixed;
        bool m_bSmooth;
    };
    using Filter = P_Material::FILTER_MODE;
    addSquare(0.0F, 0.0F, nullptr);
    addSquare(-1.0F, 0.0F, nullptr);
    P_Map& wide = addMap(2, 1, {255, 0, 0, 255, 0, 255, 0, 255});
    for (const Case& each : {Case{Filter::Point, 0, false, false},
                             {Filter::PointMipMapped, 0, true, false},
                             {Filter::PointMipMapped, 1, false, false},
                             {Filter::PointMipMapped, 2, false, false},
                             {Filter::PointMipLinear, 0, true, false},
                             {Filter::Bilinear, 0, false, true},
                             {Filter::BilinearMipMapped, 0, true, true},
                             {Filter::Trilinear, 0, true, true},
                             {Filter::Anisotropic, 0, false, true}})
    {
        P_Map& map = addMap(16, 128, stripes);
        map.setMipLevelCount(each.m_iLevels);
        m_objects[0]->getPrimitiveInstance(0)->setMaterial(
            &addTextured(map, P_Material::BLENDING_MODE::Opaque, each.m_eFilter));
        m_objects[1]->getPrimitiveInstance(0)->setMaterial(
            &addTextured(wide, P_Material::BLENDING_MODE::Opaque, each.m_eFilter));
        const G_Image picture = draw();
        const std::array<int, 3> color = at(picture, 0.5F, 0.5F);
        EXPECT_EQ(std::abs(at(picture, -0.45F, 0.5F)[0] - 128) < 64, each.m_bSmooth)
            << static_cast<int>(each.m_eFilter);
        EXPECT_EQ(std::abs(color[0] - color[1]) < 20, each.m_bMixed)
            << static_cast<int>(each.m_eFilter) << ", " << each.m_iLevels << ": " << testing::PrintToString(color);
    }
}

TEST_P(SceneRenderer, CoordinatesThatAMeshLacksAreNought)
{
    P_Map& map = addMap(2, 1, {255, 0, 0, 255, 0, 255, 0, 255});
    for (const unsigned int set : {1U, 8U, P_Material::maximumTextureLayers - 1})
    {
        addSquare(0.0F, 0.0F,
                  &addTextured(map, P_Material::BLENDING_MODE::Opaque, P_Material::FILTER_MODE::Point, set));
        const G_Image picture = draw();
        EXPECT_EQ(at(picture, 0.2F, 0.5F), red) << set;
        EXPECT_EQ(at(picture, 0.8F, 0.5F), red) << set;
        m_objects.clear();
    }
}

TEST_P(SceneRenderer, TakesAsManyLightsAsItCanAndNoMore)
{
    m_view.m_ambientSky = m_view.m_ambientGround = G_FColor();
    addSquare(0.0F, 0.0F, nullptr);
    std::vector<std::unique_ptr<P_DirectionalLight>> lamps;
    for (int i = 0; i < 40; ++i)
    {
        lamps.push_back(std::make_unique<P_DirectionalLight>());
        lamps.back()->setColor(G_FColor(10.0F, 0.0F, 0.0F));
        lamps.back()->addTo(&m_scene);
    }
    expectColor(draw(), 0.5F, 0.5F, {160, 0, 0}, "sixteen of forty");
}

TEST_P(SceneRenderer, APictureHasAtLeastAPixelEachWayAndNoMoreThanTheDriverDraws)
{
    constexpr unsigned int most = 1U << 30U;
    for (const auto& [width, height] : {std::pair(0U, 1U), {1U, 0U}, {most, 1U}, {1U, most}})
    {
        EXPECT_THROW(TW2::render::PictureTarget(width, height, 1), TW2::render::RenderException) << width;
    }
    GLint largest = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
    EXPECT_NO_THROW(TW2::render::PictureTarget(static_cast<unsigned int>(largest), 1, 1));
    EXPECT_NO_THROW(TW2::render::PictureTarget(1, 1, 1000)) << "of samples as many as the driver has";
}

TEST_P(SceneRenderer, TheFirstEightMapsOfAMaterialCount)
{
    P_Material& material = addTextured(addMap(1, 1, {10, 0, 0, 255}));
    for (unsigned int layer = 1; layer < P_Material::maximumTextureLayers; ++layer)
    {
        material.addTextureLayer(layer, 0, P_Material::BLENDING_MODE::Add, P_Material::FILTER_MODE::Point,
                                 P_Material::TEXTURE_ADDRESS_MODE::Wrap);
        material.setTexture(layer, m_maps[0].get());
    }
    addSquare(0.0F, 0.0F, &material);
    expectColor(draw(), 0.5F, 0.5F, {80, 0, 0});
    material.setTexture(0, nullptr);
    expectColor(draw(), 0.5F, 0.5F, {255, 255, 255}, "a layer without a map is white");
}

TEST_P(SceneRenderer, AnAlphaAsLargeAsTheReferencePassesTheTest)
{
    P_Material& glass = addGlass({255, 0, 0});
    addSquare(0.0F, 0.0F, &glass);
    glass.enableAlphaTest(true);
    glass.setAlphaReference(128);
    expectColor(draw(), 0.5F, 0.5F, {128, 0, 127});
    glass.setAlphaReference(129);
    expectColor(draw(), 0.5F, 0.5F, background);
}

TEST_P(SceneRenderer, DrawsWhatHasChangedAndOnlyTheRangeAskedFor)
{
    addSquare(0.0F, 0.0F, &addColor({255.0F, 0.0F, 0.0F}));
    P_TriangleMesh& mesh = *m_objects[0]->getPrimitive(0);
    draw();
    mesh.setDrawnRange(1, 1);
    const G_Image second = draw();
    EXPECT_EQ(at(second, 0.2F, 0.2F), background) << "the first triangle";
    EXPECT_EQ(at(second, 0.8F, 0.8F), red) << "the second triangle";
    mesh.setDrawnRange(0, 0);
    mesh.lock();
    for (unsigned int vertex = 0; vertex < 4; ++vertex)
    {
        mesh.getVertexBuffer().setPosition(vertex,
                                           mesh.getVertexBuffer().getPosition(vertex) + Vector{-1.5F, 0.0F, 0.0F});
    }
    mesh.unlock();
    const G_Image moved = draw();
    EXPECT_EQ(at(moved, 0.5F, 0.5F), background);
    EXPECT_EQ(at(moved, -1.0F, 0.5F), red);
}

TEST_P(SceneRenderer, ForgetsGeometryAndMapsThatAreGone)
{
    addSquare(0.0F, 0.0F, &addColor({255.0F, 0.0F, 0.0F}));
    P_TriangleMesh* mesh = m_objects[0]->getPrimitive(0);
    draw();
    EXPECT_EQ(mesh->getReferenceCount(), 2) << "the renderer holds what it has a copy of";
    EXPECT_EQ(m_renderer->getKeptMapCount(), 1U);
    mesh->addReference();
    m_objects.clear();
    draw();
    draw();
    EXPECT_EQ(mesh->getReferenceCount(), 2);
    EXPECT_EQ(m_renderer->getKeptMapCount(), 0U) << "a map that is not drawn";
    EXPECT_EQ(m_renderer->getKeptMeshCount(), 1U);
    mesh->releaseReference();  // only the renderer's hold is left
    draw();
    EXPECT_EQ(m_renderer->getKeptMeshCount(), 0U);
    P_TriangleMesh* another = addSquare(0.0F, 0.0F, &addColor({0.0F, 255.0F, 0.0F})).getPrimitive(0);
    EXPECT_EQ(at(draw(), 0.5F, 0.5F), green);
    EXPECT_EQ(another->getReferenceCount(), 2);
    m_renderer.reset();
    EXPECT_EQ(another->getReferenceCount(), 1) << "nothing is held by a renderer that is gone";
    GLuint name = 0;
    {
        const auto buffer = TW2::render::GLBuffer::create();
        glBindBuffer(GL_ARRAY_BUFFER, name = buffer.get());
        EXPECT_TRUE(glIsBuffer(name));
    }
    EXPECT_FALSE(glIsBuffer(name)) << "nor by the driver";
}

TEST_P(SceneRenderer, DrawsLinesAlongTheirLengthHiddenOrOverEverything)
{
    addSquare(0.0F, 0.0F, &addColor({255.0F, 255.0F, 0.0F}));
    m_scene.executeFrame();
    const G_FColor color(255.0F, 0.0F, 0.0F);
    m_view.m_fLineWidth = 4.0F;
    m_context.addDebugLine({-1.0F, -1.0F, 0.0F}, {1.0F, -1.0F, 0.0F}, color);
    m_view.m_vecLines.push_back({{-1.0F, 0.25F, 0.1F}, {1.0F, 0.25F, 0.1F}, color});
    m_view.m_vecOverlayLines.push_back({{-1.0F, 0.75F, 0.1F}, {1.0F, 0.75F, 0.1F}, color});
    const G_Image picture = drawAsItStands();
    for (const float x : {-0.9F, 0.0F, 0.9F})
    {
        EXPECT_EQ(at(picture, x, -1.0F), red) << "debug line at " << x;
    }
    EXPECT_EQ(at(picture, 0.5F, 0.24F), (std::array<int, 3>{255, 255, 0})) << "hidden by the square";
    EXPECT_EQ(at(picture, -0.5F, 0.24F), red) << "beside the square";
    EXPECT_EQ(at(picture, 0.5F, 0.74F), red) << "over the square";
}

TEST_P(SceneRenderer, LinesAreAsLongAndAsWideAsTheyAreInPixels)
{
    // In a picture twice as wide as high; how far a pixel's middle is from a line tells what it shows.
    constexpr float width = 7.0F;
    m_target.emplace(2 * side, side, 4);
    m_camera.setPerspective(m_camera.getVerticalAngle(), 2.0F, 0.1F, 100.0F);
    m_view.m_fLineWidth = width;
    for (const auto& [from, to] : {std::pair(Vector{-3.0F, 0.5F, 0.0F}, Vector{2.0F, 0.5F, 0.0F}),
                                   {Vector{1.0F, 1.5F, 0.0F}, Vector{1.0F, -1.0F, 0.0F}},
                                   {Vector{-2.0F, -1.5F, 0.0F}, Vector{2.0F, 1.0F, 3.0F}},
                                   {Vector{1.0F, -1.0F, 0.0F}, Vector{-0.1F, 0.2F, -4.5F}},
                                   {Vector{0.2F, -0.1F, -9.0F}, Vector{-1.0F, 1.0F, 1.0F}}})
    {
        m_view.m_vecLines = {{from, to, {255.0F, 0.0F, 0.0F, 127.5F}}};
        const G_Image picture = draw();
        // What lies nearer than a tenth before the eyes is cut off.
        const auto place = [](const Vector& end, const Vector& other)
        {
            const float share = std::max(0.0F, (-3.9F - end.z) / (other.z - end.z));
            const Vector seen = end.z < -3.9F ? end + (other - end) * share : end;
            return Vector{side + side * seen.x / (seen.z + 4.0F), side / 2 - side * seen.y / (seen.z + 4.0F), 0.0F};
        };
        const Vector begin = place(from, to);
        const Vector whole = place(to, from) - begin;
        const Vector along = whole.normalized();
        for (unsigned int i = 0; i < 2 * side * side; ++i)
        {
            const auto column = static_cast<float>(i % (2 * side));
            const Vector way = Vector{column + 0.5F, static_cast<float>(i / (2 * side)) + 0.5F, 0.0F} - begin;
            const float beside = std::abs(way.cross(along).z) - 0.5F * width;
            const float beyond = std::max(-way.dot(along), way.dot(along) - whole.length());
            const float outside = std::max(beside, beyond);
            const unsigned char* pixel = picture.getPixel(i % (2 * side), i / (2 * side));
            ASSERT_TRUE(std::abs(outside) < 1.0F || std::abs(pixel[0] - (outside < 0.0F ? 128 : 0)) <= 2)
                << "from " << from.x << ", pixel " << column << ", " << i / (2 * side) << ": " << int{pixel[0]};
        }
    }
}

TEST_P(SceneRenderer, DrawsTheSameIntoItsViewportWhateverTheStateAndLeavesTheRestAlone)
{
    P_Material& striped = addTextured(addMap(1, 4, {0, 255, 0, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255}));
    addSquare(-0.5F, -0.5F, &striped);
    addSquare(-0.7F, -0.7F, nullptr, false, 0.3F);
    P_Material& glass = addGlass({200, 100, 50});
    addSquare(0.0F, 0.0F, &glass, false, -0.2F);
    P_DirectionalLight sun;
    sun.setMatrix(makeDown());
    sun.addTo(&m_scene);
    m_view.m_ambientSky = m_view.m_ambientGround = G_FColor(90.0F, 60.0F, 30.0F);
    m_view.m_vecLines.push_back({{-2.0F, -0.6F, 0.1F}, {2.0F, -0.6F, 0.1F}, {255.0F, 0.0F, 0.0F, 99.0F}});
    m_view.m_vecOverlayLines = m_view.m_vecLines;
    const auto sampler = TW2::render::GLSampler::create();
    View::Shadow shadow{{}, {.m_fHeight = -1.5F}};
    shadow.m_casters.add({-1.0F, -1.0F, -0.5F});
    shadow.m_casters.add({1.0F, 1.0F, 0.5F});
    m_target.emplace(side - 1, side, 4);
    for (const std::optional<View::Shadow>& each : {std::optional<View::Shadow>(shadow), {}})
    {
        m_view.m_shadow = each;
        m_scene.executeFrame();
        // The middle of the right half of a green picture.
        const auto drawBeside = [this]
        {
            m_target->bind();
            glClearColor(0.0F, 1.0F, 0.0F, 1.0F);
            glClear(GL_COLOR_BUFFER_BIT);
            glViewport(side / 2, side / 4, side / 2 - 1, side / 2);
        };
        const auto finish = [this]
        {
            m_renderer->draw(m_scene, m_camera, m_view);
            return m_target->read();
        };
        drawBeside();
        const G_Image expected = finish();
        expectColor(expected, 0.9F, 0.1F, red, "its middle, with the second row of the map");
        for (const auto& [x, y] : {std::pair(-1.0F, 0.0F), {1.0F, 1.5F}, {1.0F, -1.5F}})
        {
            EXPECT_EQ(at(expected, x, y), green) << "beside the viewport";
        }
        drawBeside();
        for (const GLenum state : std::initializer_list<GLenum>{GL_SCISSOR_TEST, GL_CULL_FACE, GL_STENCIL_TEST,
                                                                GL_POLYGON_OFFSET_FILL, GL_BLEND, GL_DEPTH_TEST})
        {
            glEnable(state);
        }
        glScissor(0, 0, 1, 1);
        glColorMask(GL_FALSE, GL_TRUE, GL_TRUE, GL_TRUE);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_NEVER);
        glCullFace(GL_FRONT);
        glPolygonOffset(0.0F, -1e9F);
        glBlendEquation(GL_FUNC_REVERSE_SUBTRACT);
        glActiveTexture(GL_TEXTURE8);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
        for (GLuint unit = 0; unit < 10; ++unit)
        {
            glBindSampler(unit, sampler.get());
            glVertexAttrib4f(unit, 3.0F, 3.0F, 3.0F, 3.0F);
        }
        // New ones, so that their maps are handed over in that state as well.
        striped.setTexture(0, &addMap(1, 4, {0, 255, 0, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255}));
        const G_Image is = finish();
        EXPECT_EQ(std::memcmp(is.getPixels(), expected.getPixels(), is.getSize()), 0) << each.has_value();
    }

    // A picture that cannot be finished, behind glass that was drawn, leaves no state behind either.
    glass.setSortPriority(P_Material::defaultSortPriority - 1);
    P_Map missing("/nowhere/missing.png", nullptr);
    striped.setTexture(0, &missing);
    m_scene.executeFrame();
    EXPECT_THROW(m_renderer->draw(m_scene, m_camera, m_view), S_Exception);
    for (const GLenum state :
         std::initializer_list<GLenum>{GL_DEPTH_TEST, GL_CULL_FACE, GL_BLEND, GL_SCISSOR_TEST, GL_STENCIL_TEST})
    {
        EXPECT_EQ(glIsEnabled(state), GL_FALSE) << state;
    }
    struct State
    {
        GLenum m_eName;
        GLint m_iValue;
    };
    for (const State& state : {State{GL_CURRENT_PROGRAM, 0},
                               {GL_VERTEX_ARRAY_BINDING, 0},
                               {GL_ARRAY_BUFFER_BINDING, 0},
                               {GL_UNIFORM_BUFFER_BINDING, 0},
                               {GL_ACTIVE_TEXTURE, GL_TEXTURE0},
                               {GL_SAMPLER_BINDING, 0},
                               {GL_UNPACK_ALIGNMENT, 4},
                               {GL_DEPTH_FUNC, GL_LESS},
                               {GL_DEPTH_WRITEMASK, GL_TRUE},
                               {GL_FRONT_FACE, GL_CCW},
                               {GL_BLEND_SRC_RGB, GL_ONE},
                               {GL_BLEND_DST_RGB, GL_ZERO},
                               {GL_BLEND_SRC_ALPHA, GL_ONE},
                               {GL_BLEND_DST_ALPHA, GL_ZERO}})
    {
        GLint value = -1;
        glGetIntegerv(state.m_eName, &value);
        EXPECT_EQ(value, state.m_iValue) << state.m_eName;
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
