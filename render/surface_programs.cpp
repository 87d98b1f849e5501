#include "render/surface_programs.h"

#include "render/frame_block.h"
#include "render/matrix_texture.h"
#include "render/surface_source.h"

#include <platform/scene/driver.h>
#include <platform/scene/material_switch_object.h>
#include <platform/scene/primitive_instance.h>

#include <algorithm>
#include <string>

namespace TW2::render
{
namespace
{
/// What a surface without material shows.
const P_Material& getPlainMaterial()
{
    static const P_Material s_plain;
    return s_plain;
}

void setStates(const P_Material& material)
{
    if (material.getBackfaceCullingMode() == P_Material::CullingMode::BackFaces)
    {
        glEnable(GL_CULL_FACE);
    }
    else
    {
        glDisable(GL_CULL_FACE);
    }
}

/// Whether the material's switch object asks for the specular colour. A material is switched each time it is used.
bool switchMaterial(P_Material* material)
{
    P_Driver& driver = *P_Driver::m_initializedDriver;
    driver.clearRenderStates();
    if (P_MaterialSwitchObject* before = material ? material->getMaterialSwitchObjectBefore() : nullptr)
    {
        before->switchMaterial(material);
    }
    return driver.getRenderState(P_Driver::RENDER_STATE_SPECULAR_ENABLE) != 0;
}
}  // namespace

SurfacePrograms::Program::Program(const SurfaceKind& kind)
    : m_kind(kind),
      m_program(writeVertexSource(kind), writeFragmentSource(kind)),
      m_iAmbient(m_program.find("ambientColor")),
      m_iDiffuse(m_program.find("diffuseColor")),
      m_iEmissive(m_program.find("emissiveColor")),
      m_iSpecular(m_program.find("specularColor")),
      m_iAlphaReference(m_program.find("alphaReference")),
      m_iHighlight(m_program.find("highlightColor")),
      m_iPickedBone(m_program.find("pickedBone")),
      m_iPickedMesh(m_program.find("pickedMesh"))
{
    m_program.use();
    m_program.bindBlock("Frame", FrameBlock::binding);
    GLProgram::set(m_program.find("matrices"), static_cast<int>(MatrixTexture::unit));
    for (int unit = 0; unit < static_cast<int>(SurfaceKind::mostUnits); ++unit)
    {
        GLProgram::set(m_program.find(("map" + std::to_string(unit)).c_str()), unit);
    }
    for (std::size_t set = 0; set < m_textureMatrices.size(); ++set)
    {
        m_textureMatrices[set] = m_program.find(("textureMatrix" + std::to_string(set)).c_str());
    }
}

SurfacePrograms::Program& SurfacePrograms::find(const SurfaceKind& kind)
{
    const auto found = std::find_if(m_lstPrograms.begin(), m_lstPrograms.end(),
                                    [&kind](const Program& program) { return program.m_kind == kind; });
    return found != m_lstPrograms.end() ? *found : m_lstPrograms.emplace_back(kind);
}

void SurfacePrograms::bindMaps(const SurfaceKind& kind, const P_Material& material)
{
    unsigned int unit = 0;
    for (unsigned int i = 0; i < material.getLayerCount() && unit < kind.m_uiUnits; ++i)
    {
        if (!material.getLayer(i).m_bShading)
        {
            const P_Material::TextureLayer& layer = material.getTextureLayer(material.getLayer(i).m_uiIndex);
            m_textures.bind(unit++, layer.m_pMap, layer.m_eFilter, layer.m_eAddress);
        }
    }
}

void SurfacePrograms::use(const P_PrimitiveInstance& instance, unsigned int slots, const View& view, bool pickedMesh)
{
    P_Material* material = instance.getMaterial();
    const P_Material& used = material ? *material : getPlainMaterial();
    const bool specularState = switchMaterial(material);
    const SurfaceKind kind = describeSurface(material, slots, view);
    bindMaps(kind, used);

    const Program& program = find(kind);
    if (m_pUsed != &program)
    {
        m_pUsed = &program;
        program.m_program.use();
        GLProgram::setColor(program.m_iHighlight, view.m_highlightColor);
        GLProgram::set(program.m_iPickedBone, view.m_iPickedBone);
    }
    const bool highlights = kind.m_eJoin != SurfaceKind::Join::SpecularShader || specularState;
    GLProgram::setColor(program.m_iAmbient, used.getAmbientColor());
    GLProgram::setColor(program.m_iDiffuse, used.getDiffuseColor());
    GLProgram::setColor(program.m_iEmissive, used.getEmissiveColor());
    GLProgram::setColor(program.m_iSpecular, highlights ? used.getSpecularColor() : G_FColor(),
                        used.getSpecularExponent());
    GLProgram::set(program.m_iAlphaReference, static_cast<float>(used.getAlphaReference()) / 255.0F);
    GLProgram::set(program.m_iPickedMesh, pickedMesh ? 1.0F : 0.0F);
    for (std::size_t set = 0; set < SurfaceKind::mostSets; ++set)
    {
        if (kind.m_sets[set] && kind.m_sets[set]->m_bTransformed)
        {
            const M_Matrix4Template<float>* matrix = instance.getTextureMatrix(static_cast<int>(set));
            GLProgram::set(program.m_textureMatrices[set], matrix ? *matrix : M_Matrix4Template<float>());
        }
    }
    setStates(used);
}
}  // namespace TW2::render
