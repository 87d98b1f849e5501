#include <platform/scene/driver.h>
#include <platform/scene/material_helpers.h>

namespace
{
using Blending = P_Material::BLENDING_MODE;

constexpr P_Material::TEXTURE_ADDRESS_MODE addressMode = P_Material::TEXTURE_ADDRESS_MODE::Wrap;

const P_DriverCaps& getCaps() noexcept
{
    return P_Driver::m_initializedDriver->getDriverCaps();
}
}  // namespace

bool P_MaterialHelpers::makeTexture(P_Material* material, P_Material::FILTER_MODE filter)
{
    if (!getCaps().m_bModulate2X)
    {
        return false;
    }
    material->init(1, 1);
    material->addTextureLayer(0, 0, Blending::Opaque, filter, addressMode);
    material->addShadingLayer(P_Material::SHADING_MODE::Gouraud, true);
    material->setSetUp(P_Material::SetUp::Texture);
    return true;
}

bool P_MaterialHelpers::makeTextureEnv(P_Material* material, P_Material::FILTER_MODE filter)
{
    constexpr int environmentSet = 1;
    if (!getCaps().m_bAddThenModulate2X)
    {
        return false;
    }
    material->init(2, 2);
    material->addTextureLayer(0, 0, Blending::Opaque, filter, addressMode);
    material->addShadingLayer(P_Material::SHADING_MODE::Gouraud, true);
    material->addTextureLayer(1, environmentSet, Blending::Add, filter, addressMode);
    material->setTextureCoordinateSource(environmentSet, P_Material::TextureCoordinateSource::CameraSpaceReflection);
    material->enableTextureTransformation(environmentSet, true);
    material->enableTextureProjection(environmentSet, true);
    material->setSetUp(P_Material::SetUp::TextureEnvironment);
    return true;
}

bool P_MaterialHelpers::makeTextureTransparent(P_Material* material, P_Material::FILTER_MODE filter, bool blend,
                                               bool alphaTest, bool gouraud)
{
    if (gouraud && !getCaps().m_bModulate2X)
    {
        return false;
    }
    material->init(1, 1);
    material->addTextureLayer(0, 0, blend ? Blending::TextureAlpha : Blending::Opaque, filter, addressMode);
    if (gouraud)
    {
        material->addShadingLayer(P_Material::SHADING_MODE::Gouraud, true);
    }
    material->enableAlphaTest(alphaTest);
    material->setSetUp(P_Material::SetUp::TextureTransparent);
    return true;
}
