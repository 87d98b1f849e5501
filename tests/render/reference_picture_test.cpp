#include "tests/render/reference_picture.h"

#include "tests/render/renderer_fixture.h"

#include <platform/scene/directional_light.h>
#include <platform/scene/driver.h>
#include <platform/scene/material_helpers.h>
#include <platform/scene/material_switch_object.h>
#include <platform/scene/point_light.h>
#include <platform/scene/spot_light.h>

#include <deque>
#include <random>

namespace
{
using namespace support;
using reference::Color;
using reference::Join;
using reference::Layer;
using Blending = P_Material::BLENDING_MODE;

/// Squares, materials and lights by chance, the same for the same seed: once for the renderer, once for the reference.
class ReferencePicture : public RendererFixture
{
protected:
    void begin(unsigned int seed)
    {
        m_random.seed(seed);
        m_reference = {};
        const Vector eye{number(-1.0F, 1.0F), number(-1.0F, 1.0F), number(-5.0F, -4.0F)};
        const Vector target{number(-0.3F, 0.3F), number(-0.3F, 0.3F), 0.0F};
        m_camera.lookAt(eye, target, {0.0F, 1.0F, 0.0F});
        m_reference.m_vEye = toDouble(eye);
        m_reference.m_vTarget = toDouble(target);
        m_view = {};
        m_view.m_topColor = color(m_reference.m_top);
        m_view.m_bottomColor = color(m_reference.m_bottom);
        m_view.m_ambientSky = color(m_reference.m_sky);
        m_view.m_ambientGround = color(m_reference.m_ground);
        m_view.m_fogColor = color(m_reference.m_fog);
        m_view.m_bFog = chance(0.7);
        m_view.m_fFogStart = number(2.0F, 4.0F);
        m_view.m_fFogEnd = number(5.0F, 8.0F);
        m_reference.m_dFogStart = static_cast<double>(m_view.m_fFogStart);
        m_reference.m_dFogEnd = static_cast<double>(m_view.m_fFogEnd);
        const int lights = pick(5);
        for (int i = 0; i < lights; ++i)
        {
            addLight();
        }
        // Far enough behind one another that none is before another one in one place and behind it in another.
        const int squares = 1 + pick(4);
        for (int i = 0; i < squares; ++i)
        {
            addRandomSquare(1.2F * static_cast<float>(squares / 2 - i));
        }
    }

    void end()
    {
        m_objects.clear();
        m_lights.clear();
        m_bones.clear();
        m_materials.clear();
        m_maps.clear();
        m_images.clear();
    }

    /// Compares the picture with the reference wherever no edge is near; returns how many pixels that were.
    int compare(unsigned int seed)
    {
        const G_Image picture = draw();
        reference::Painter painter(m_reference);
        std::vector<reference::Pixel> expected;
        for (unsigned int i = 0; i < side * side; ++i)
        {
            expected.push_back(
                painter.paint((2.0 * (i % side) + 1.0) / side - 1.0, 1.0 - (2.0 * (i / side) + 1.0) / side));
        }
        int compared = 0;
        int wrong = 0;
        for (unsigned int y = 1; y + 1 < side; ++y)
        {
            for (unsigned int x = 1; x + 1 < side; ++x)
            {
                const reference::Pixel& pixel = expected[y * side + x];
                bool edge = false;
                for (unsigned int k = 0; k < 9; ++k)
                {
                    edge |= expected[(y + k / 3 - 1) * side + x + k % 3 - 1].m_uiSignature != pixel.m_uiSignature;
                }
                for (std::size_t c = 0; c < 3 && !edge; ++c)
                {
                    const double is = picture.getPixel(x, y)[c];
                    if (std::abs(is - 255.0 * pixel.m_color[c]) > 3.0 && ++wrong < 4)
                    {
                        ADD_FAILURE() << "seed " << seed << ", pixel (" << x << ", " << y << "), channel " << c << ": "
                                      << is << " instead of " << 255.0 * pixel.m_color[c];
                    }
                }
                compared += edge ? 0 : 1;
            }
        }
        return compared;
    }

private:
    static reference::Vector toDouble(const Vector& v)
    {
        return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
    }
    static reference::Matrix toDouble(const Matrix& matrix)
    {
        reference::Matrix result;
        std::copy_n(matrix.data(), 12, result.data());
        return result;
    }

    float number(float from, float to) { return std::uniform_real_distribution<float>(from, to)(m_random); }
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }
    bool chance(double share) { return std::bernoulli_distribution(share)(m_random); }

    /// A colour of whole numbers, which the reference has from 0 to 1.
    G_FColor color(Color& expected, int most = 255)
    {
        float values[3];
        for (std::size_t c = 0; c < 3; ++c)
        {
            values[c] = static_cast<float>(pick(most + 1));
            expected[c] = static_cast<double>(values[c]) / 255.0;
        }
        return {values[0], values[1], values[2]};
    }

    /// A turn of up to `most` radians about some axis.
    Matrix turn(float most)
    {
        const float angle = number(-most, most);
        const Vector axis = Vector{number(-1.0F, 1.0F), number(-1.0F, 1.0F), number(-1.0F, 1.0F)}.normalized();
        Matrix result;
        for (int row = 0; row < 3; ++row)
        {
            const Vector v = Matrix().getRow(row);
            result.setRow(row, v * std::cos(angle) + axis.cross(v) * std::sin(angle) +
                                   axis * (axis.dot(v) * (1.0F - std::cos(angle))));
        }
        return result;
    }

    void addLight()
    {
        reference::Light expected;
        const int kind = pick(3);
        Matrix place = turn(0.7F);
        place.setTranslation({number(-2.0F, 2.0F), number(-2.0F, 2.0F), number(-4.0F, -2.0F)});
        expected.m_place = toDouble(place);
        expected.m_bDirectional = kind == 0;
        expected.m_bCone = kind == 2;
        const float range = number(4.0F, 9.0F);
        expected.m_dRange = static_cast<double>(range);
        std::unique_ptr<P_Light> light;
        if (kind == 0)
        {
            light = std::make_unique<P_DirectionalLight>();
        }
        else if (kind == 1)
        {
            auto point = std::make_unique<P_PointLight>();
            point->setFalloffRange(range);
            light = std::move(point);
        }
        else
        {
            auto spot = std::make_unique<P_SpotLight>();
            const float outer = number(40.0F, 90.0F);
            const float inner = outer - number(10.0F, 30.0F);
            spot->setFalloffRange(range);
            spot->setFalloffAngle(outer, inner);
            expected.m_dOuter = static_cast<double>(outer);
            expected.m_dInner = static_cast<double>(inner);
            light = std::move(spot);
        }
        light->setColor(color(expected.m_color));
        light->setMatrix(place);
        light->addTo(&m_scene);
        m_lights.push_back(std::move(light));
        m_reference.m_vecLights.push_back(expected);
    }

    /// A map of four texels, or of one colour.
    P_Map& addTexture(reference::Texture& texture, bool uniform = false)
    {
        std::vector<unsigned char> bytes;
        for (std::size_t texel = 0; texel < 4; ++texel)
        {
            texture.m_texels[texel] = texture.m_texels[0];
            if (texel == 0 || !uniform)
            {
                color(texture.m_texels[texel]);
                texture.m_texels[texel][3] = pick(256) / 255.0;
            }
            for (const double value : texture.m_texels[texel])
            {
                bytes.push_back(static_cast<unsigned char>(std::lround(255.0 * value)));
            }
        }
        return addMap(2, 2, bytes);
    }

    void addRandomSquare(float z)
    {
        reference::Square expected;
        P_Material& material = *m_materials.emplace_back(std::make_unique<P_Material>());
        std::array<std::optional<M_Matrix4Template<float>>, 2> matrices;
        switch (m_iSquares++ % 6)
        {
            case 0:
                makeReadyMade(material, expected);
                break;
            case 1:
                makeShader(material, expected);
                break;
            default:
                makeLayers(material, expected, matrices);
        }
        material.setAmbientColor(color(expected.m_ambient));
        material.setDiffuseColor(color(expected.m_diffuse));
        expected.m_bLit = chance(0.8);
        material.enableLighting(expected.m_bLit);
        const bool fogged = chance(0.4);
        expected.m_bFogged = fogged && m_view.m_bFog;
        material.enableFogging(fogged);
        expected.m_bTwoSided = chance(0.5);
        material.setBackfaceCullingMode(expected.m_bTwoSided ? P_Material::CullingMode::None
                                                             : P_Material::CullingMode::BackFaces);
        if (chance(0.3))
        {
            expected.m_iAlphaReference = pick(200);
            material.enableAlphaTest(true);
            material.setAlphaReference(static_cast<unsigned char>(expected.m_iAlphaReference));
        }
        expected.m_bBlended = material.isBlended();
        if (expected.m_bBlended && chance(0.2))
        {
            material.forceBlendingOff();
            expected.m_bBlended = false;
        }
        P_VirtualObject& object = addObject(material, expected, z);
        for (int set = 0; set < 2; ++set)
        {
            if (matrices[static_cast<std::size_t>(set)])
            {
                object.getPrimitiveInstance(0)->setTextureMatrix(set, *matrices[static_cast<std::size_t>(set)]);
            }
        }
        m_reference.m_vecSquares.push_back(std::move(expected));
    }

    P_VirtualObject& addObject(P_Material& material, reference::Square& expected, float z)
    {
        auto& object = *m_objects.emplace_back(std::make_unique<P_VirtualObject>(1));
        Matrix world = turn(0.3F);
        world.setRow(0, world.getRow(0) * (number(1.0F, 2.5F) * (chance(0.3) ? -1.0F : 1.0F)));
        world.setRow(1, world.getRow(1) * number(1.0F, 2.5F) + world.getRow(0) * number(-0.2F, 0.2F));
        world.setRow(2, world.getRow(2) * (number(0.5F, 3.0F) * (chance(0.3) ? -1.0F : 1.0F)));
        world.setTranslation(
            {number(-1.0F, 1.0F) - 0.5F * world.m[0][0], number(-1.0F, 1.0F) - 0.5F * world.m[1][1], z});
        const bool skinned = chance(0.3);
        P_VertexFormat format;
        constexpr unsigned int colored = 0x40U;
        const bool hasAlpha = chance(0.7);
        format.constructFromOldVertexFormat(0x32U | (hasAlpha ? colored : 0U) |
                                            (skinned ? 2U << P_VertexFormat::boneCountShift : 0U));
        P_TriangleMesh& mesh =
            skinned ? *object.createSkinMesh(0, &material, format) : *object.createTriangleMesh(0, &material, format);
        fill(mesh, false);
        mesh.lock();
        const auto alpha = static_cast<float>(hasAlpha ? pick(256) : 255);
        expected.m_dVertexAlpha = static_cast<double>(alpha) / 255.0;
        const float share = number(0.1F, 0.9F);
        for (unsigned int vertex = 0; vertex < 4; ++vertex)
        {
            if (hasAlpha)
            {
                mesh.getVertexBuffer().setColorAlpha(vertex, alpha);
            }
            mesh.getVertexBuffer().setTextureCoordinate(vertex, 1, static_cast<float>(vertex % 2),
                                                        1.0F - static_cast<float>(vertex / 2));
            for (unsigned int slot = 0; slot < 2 && skinned; ++slot)
            {
                static_cast<P_SkinMesh&>(mesh).setBoneIndex(vertex, slot, 1 - slot);
                static_cast<P_SkinMesh&>(mesh).setBoneWeight(vertex, slot, slot == 0 ? share : 1.0F - share);
            }
        }
        mesh.unlock();
        object.setMatrix(world);
        expected.m_world = toDouble(world);
        if (skinned)
        {
            addBones(object, expected, share);
        }
        object.addTo(&m_scene);
        return object;
    }

    /// Slot 0 holds bone 1, whose share is given.
    void addBones(P_VirtualObject& object, reference::Square& expected, float share)
    {
        std::array<Matrix, 2>& bones = m_bones.emplace_back();
        S_Vector<const Matrix*> list;
        reference::Matrix moved;
        std::fill_n(moved.data(), 12, 0.0);
        for (std::size_t bone = 0; bone < 2; ++bone)
        {
            bones[bone] = turn(0.2F);
            bones[bone].setTranslation({number(-0.2F, 0.2F), number(-0.2F, 0.2F), number(-0.02F, 0.02F)});
            list.push_back(&bones[bone]);
            const reference::Matrix product = toDouble(bones[bone]) * expected.m_world;
            for (int i = 0; i < 12; ++i)
            {
                moved.data()[i] += static_cast<double>(bone == 1 ? share : 1.0F - share) * product.data()[i];
            }
        }
        expected.m_world = moved;
        object.setBoneMatrices(list);
    }

    void makeReadyMade(P_Material& material, reference::Square& expected)
    {
        constexpr P_Material::FILTER_MODE point = P_Material::FILTER_MODE::Point;
        const int kind = m_iReadyMade++ % 5;  // environment, plain, transparent with and without shading
        const bool environment = kind == 0;
        const bool shaded = kind < 4;
        const bool blended = chance(0.5);
        ASSERT_TRUE(environment ? P_MaterialHelpers::makeTextureEnv(&material, point)
                    : kind == 1 ? P_MaterialHelpers::makeTexture(&material, point)
                                : P_MaterialHelpers::makeTextureTransparent(&material, point, blended, false, shaded));
        expected.m_eJoin = environment ? Join::Environment : shaded ? Join::Doubled : Join::Layers;
        for (unsigned int i = 0; i < (environment ? 2U : 1U); ++i)
        {
            Layer& layer = expected.m_vecLayers.emplace_back();
            layer.m_eBlending = blended && !shaded ? Blending::TextureAlpha : Blending::Opaque;
            material.setTexture(i, &addTexture(layer.m_texture, i == 1));
        }
        material.setEmissiveColor(color(expected.m_emissive, 60));
    }

    void makeShader(P_Material& material, reference::Square& expected)
    {
        struct Switch : P_MaterialSwitchObject
        {
            void switchMaterial(P_Material*) override
            {
                P_Driver::m_initializedDriver->setRenderState(P_Driver::RENDER_STATE_SPECULAR_ENABLE, 1);
            }
        };
        static Switch s_shines;
        material.init(2, 1);
        expected.m_eJoin = Join::Shader;
        for (unsigned int i = 0; i < 2; ++i)
        {
            material.addTextureLayer(i, 0, Blending::Opaque, P_Material::FILTER_MODE::Point,
                                     P_Material::TEXTURE_ADDRESS_MODE::Wrap);
            material.setTexture(i, &addTexture(expected.m_vecLayers.emplace_back().m_texture));
        }
        material.setPixelShader("specular", "ps.1.0\ntex t0\ntex t1\nmul r1, v1, t1\nmad r0, v0, t0, r1\n");
        setSpecular(material, expected);
        if (chance(0.5))
        {
            material.setMaterialSwitchObjectBefore(&s_shines);
        }
        else
        {
            expected.m_specular = {};
        }
    }

    void setSpecular(P_Material& material, reference::Square& expected)
    {
        const float exponent = number(1.0F, 20.0F);
        expected.m_dExponent = static_cast<double>(exponent);
        material.setSpecularColor(color(expected.m_specular));
        material.setSpecularExponent(exponent);
    }

    void makeLayers(P_Material& material, reference::Square& expected,
                    std::array<std::optional<M_Matrix4Template<float>>, 2>& matrices)
    {
        const unsigned int textures = 1U + static_cast<unsigned int>(pick(3));
        const int gouraud = chance(0.6) ? pick(static_cast<int>(textures) + 1) : -1;
        const bool emissive = gouraud >= 0 || chance(0.5);
        material.init(textures, 2);
        if (emissive)
        {
            material.setEmissiveColor(color(expected.m_emissive, 60));
        }
        for (unsigned int i = 0; i <= textures; ++i)
        {
            if (gouraud == static_cast<int>(i))
            {
                material.addShadingLayer(P_Material::SHADING_MODE::Gouraud, !expected.m_vecLayers.empty());
                expected.m_vecLayers.emplace_back().m_eKind = Layer::Kind::Gouraud;
            }
            if (i < textures)
            {
                addLayer(material, expected, i, emissive && gouraud < 0);
            }
        }
        if (chance(0.4))
        {
            material.addShadingLayer(P_Material::SHADING_MODE::Specular, true);
            expected.m_vecLayers.emplace_back().m_eKind = Layer::Kind::Specular;
            setSpecular(material, expected);
        }
        for (int set = 0; set < 2; ++set)
        {
            describeSet(material, set, expected.m_sets[static_cast<std::size_t>(set)],
                        matrices[static_cast<std::size_t>(set)]);
        }
    }

    void addLayer(P_Material& material, reference::Square& expected, unsigned int number, bool glows)
    {
        Layer& layer = expected.m_vecLayers.emplace_back();
        layer.m_eBlending = static_cast<Blending>(0x200000 * pick(6));
        layer.m_texture.m_eAddress = static_cast<P_Material::TEXTURE_ADDRESS_MODE>(pick(3));
        layer.m_texture.m_bBilinear = chance(0.3);
        layer.m_uiSet = static_cast<unsigned int>(pick(2));
        const bool uniform = chance(0.2);
        material.addTextureLayer(
            number, layer.m_uiSet, layer.m_eBlending,
            layer.m_texture.m_bBilinear ? P_Material::FILTER_MODE::Bilinear : P_Material::FILTER_MODE::Point,
            layer.m_texture.m_eAddress);
        material.setTexture(number, &addTexture(layer.m_texture, uniform));
        for (Color& texel : layer.m_texture.m_texels)
        {
            // A plain colour shows the emissive colour instead, where no light is added to that.
            if (uniform && glows)
            {
                std::copy_n(expected.m_emissive.begin(), 3, texel.begin());
            }
        }
    }

    void describeSet(P_Material& material, int set, reference::CoordinateSet& expected,
                     std::optional<M_Matrix4Template<float>>& matrix)
    {
        constexpr P_Material::TextureCoordinateSource sources[] = {
            P_Material::TextureCoordinateSource::Mesh, P_Material::TextureCoordinateSource::CameraSpacePosition,
            P_Material::TextureCoordinateSource::CameraSpaceNormal,
            P_Material::TextureCoordinateSource::CameraSpaceReflection};
        expected.m_eSource = sources[chance(0.5) ? 0 : pick(4)];
        material.setTextureCoordinateSource(set, expected.m_eSource);
        if (chance(0.6))
        {
            matrix.emplace();
            reference::Matrix4& same = expected.m_matrix.emplace();
            for (int row = 0; row < 4; ++row)
            {
                for (int column = 0; column < 4; ++column)
                {
                    const float more = column == 3 ? number(0.0F, 0.1F) : number(-0.5F, 0.5F);
                    matrix->m[row][column] += more;
                    same.m[row][column] = static_cast<double>(matrix->m[row][column]);
                }
            }
            material.enableTextureTransformation(set, true);
        }
        expected.m_bProjected = chance(0.3);
        material.enableTextureProjection(set, expected.m_bProjected);
    }

    std::mt19937 m_random;
    int m_iSquares = 0;
    int m_iReadyMade = 0;
    reference::Scene m_reference;
    std::vector<std::unique_ptr<P_Light>> m_lights;
    std::deque<std::array<Matrix, 2>> m_bones;
};
TW2_IN_BOTH_CONTEXTS(ReferencePicture);
}  // namespace

TEST_P(ReferencePicture, IsWhatMaterialsAndLightsOfEveryKindShow)
{
    constexpr unsigned int scenes = 12;
    const unsigned int first = GetParam() == TW2::render::OffscreenContext::Kind::Desktop ? 0 : scenes;
    int compared = 0;
    for (unsigned int seed = first; seed < first + scenes; ++seed)
    {
        begin(seed);
        compared += compare(seed);
        end();
    }
    EXPECT_GT(compared, static_cast<int>(scenes * side * side / 2));
}
