#include "render/shadow_map.h"

#include "render/matrix_texture.h"
#include "render/render_exception.h"
#include "render/shaders.h"

#include <platform/scene/light.h>
#include <platform/scene/scene.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>

namespace TW2::render
{
namespace
{
using Vector = M_Vector3Template<float>;

constexpr GLuint shadowUnit = 9;
constexpr float flattest = 0.15F;  // how far onto the ground a light must shine, of 1: flatter shadows never end

const P_Light* findLight(const P_Scene& scene)
{
    for (const P_Light* light : scene.getLights())
    {
        if (light->getLightKind() == P_Light::Kind::Directional)
        {
            return light;
        }
    }
    return nullptr;
}

/// How fine a map is to be for a picture: what the picture cannot show costs as much as what it can.
int chooseSide(const std::array<GLint, 4>& viewport)
{
    constexpr unsigned int least = 512;
    constexpr unsigned int most = 2048;
    const auto longer = static_cast<unsigned int>(std::max({viewport[2], viewport[3], 1}));
    return static_cast<int>(std::clamp(std::bit_ceil(longer * 3 / 4), least, most));
}

std::array<Vector, 8> getCorners(const Bounds& bounds)
{
    const std::array<Vector, 2> ends{bounds.m_vMinimum, bounds.m_vMaximum};
    std::array<Vector, 8> corners;
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        corners[i] = {ends[i & 1U].x, ends[i >> 1U & 1U].y, ends[i >> 2U].z};
    }
    return corners;
}
}  // namespace

ShadowMap::Caster::Caster(unsigned int slots)
    : m_program("#define mostSlots " + std::to_string(slots) + "\n" + placeSource + casterVertexSource,
                casterFragmentSource),
      m_iToShadow(m_program.find("toShadow"))
{
    m_program.use();
    GLProgram::set(m_program.find("matrices"), static_cast<int>(MatrixTexture::unit));
}

ShadowMap::ShadowMap()
    : m_texture(GLTexture::create()),
      m_target(GLFramebuffer::create()),
      m_ground(groundVertexSource, groundFragmentSource),
      m_noArray(GLVertexArray::create())
{
    glActiveTexture(GL_TEXTURE0 + shadowUnit);
    glBindTexture(GL_TEXTURE_2D, m_texture.get());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void ShadowMap::resize(int side)
{
    if (side == m_iSide)
    {
        return;
    }
    m_iSide = side;
    glActiveTexture(GL_TEXTURE0 + shadowUnit);
    glBindTexture(GL_TEXTURE_2D, m_texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, side, side, 0, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, nullptr);
    GLint target = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &target);
    glBindFramebuffer(GL_FRAMEBUFFER, m_target.get());
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, m_texture.get(), 0);
    const GLenum none = GL_NONE;
    glDrawBuffers(1, &none);
    glReadBuffer(GL_NONE);
    const bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(target));
    if (!complete)
    {
        m_iSide = 0;
        throw RenderException("The driver cannot draw a shadow map");
    }
}

bool ShadowMap::update(const P_Scene& scene, const View::Shadow& shadow, const DrawList& list, MeshCache& meshes)
{
    const P_Light* light = findLight(scene);
    if (!light || shadow.m_casters.isEmpty() || list.getBatches().empty())
    {
        return false;
    }
    const Vector direction = light->getObjectToWorldMatrix().getRow(2).normalized();
    if (direction.dot(shadow.m_ground.getNormal()) > -flattest)
    {
        return false;
    }
    look(direction, shadow);
    GLint target = 0;
    std::array<GLint, 4> viewport{};
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &target);
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    resize(chooseSide(viewport));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_target.get());
    glViewport(0, 0, m_iSide, m_iSide);
    drawCasters(list, meshes);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(target));
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    return true;
}

void ShadowMap::look(const Vector& direction, const View::Shadow& shadow)
{
    const Vector away = std::abs(direction.x) < 0.9F ? Vector{1.0F, 0.0F, 0.0F} : Vector{0.0F, 0.0F, 1.0F};
    const Vector right = away.cross(direction).normalized();
    M_Matrix4x3Template<float> axes;
    axes.setRow(0, right);
    axes.setRow(1, direction.cross(right));
    axes.setRow(2, direction);
    const M_Matrix4x3Template<float> toLight = axes.inverse();
    // What throws, and the ground that its shadow reaches, as the light sees them.
    const Vector normal = shadow.m_ground.getNormal();
    Bounds seen;
    Bounds ground;
    for (const Vector& corner : getCorners(shadow.m_casters))
    {
        const float above = (corner.y - shadow.m_ground.getHeight(corner)) * normal.y;
        const Vector below = corner - direction * (above / direction.dot(normal));
        seen.add(toLight.transformPoint(corner));
        seen.add(toLight.transformPoint(below));
        ground.add(below);
    }
    const float margin = 0.02F * seen.getSize() + 1e-6F;
    m_area = {ground.m_vMinimum.x - margin, ground.m_vMinimum.z - margin, ground.m_vMaximum.x + margin,
              ground.m_vMaximum.z + margin};
    const Vector size = seen.m_vMaximum - seen.m_vMinimum + Vector{2.0F * margin, 2.0F * margin, 2.0F * margin};
    const Vector middle = seen.getCenter();
    M_Matrix4Template<float> toUnit;
    toUnit.m[0][0] = 2.0F / size.x;
    toUnit.m[1][1] = 2.0F / size.y;
    toUnit.m[2][2] = 2.0F / size.z;
    toUnit.m[3][0] = -middle.x * toUnit.m[0][0];
    toUnit.m[3][1] = -middle.y * toUnit.m[1][1];
    toUnit.m[3][2] = -middle.z * toUnit.m[2][2];
    m_toShadow = M_Matrix4Template<float>(toLight) * toUnit;
}

void ShadowMap::drawCasters(const DrawList& list, MeshCache& meshes)
{
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    const float farthest = 1.0F;
    glClearBufferfv(GL_DEPTH, 0, &farthest);
    const Caster* used = nullptr;
    for (const DrawList::Batch& batch : list.getBatches())
    {
        std::optional<Caster>& caster = m_casters.at(batch.m_uiSlots);
        if (!caster)
        {
            caster.emplace(batch.m_uiSlots);
        }
        if (used != &*caster)
        {
            used = &*caster;
            used->m_program.use();
            GLProgram::set(used->m_iToShadow, m_toShadow);
        }
        if (!batch.m_bBlended)
        {
            meshes.draw(batch, list.getFirstMatrices());
        }
    }
}

void ShadowMap::drawGround(const View::Shadow& shadow, const M_Matrix4Template<float>& viewProjection)
{
    glActiveTexture(GL_TEXTURE0 + shadowUnit);
    glBindTexture(GL_TEXTURE_2D, m_texture.get());
    glBindSampler(shadowUnit, 0);
    m_ground.use();
    GLProgram::set(m_ground.find("viewProjection"), viewProjection);
    GLProgram::set(m_ground.find("toShadow"), m_toShadow);
    GLProgram::set(m_ground.find("shadow"), static_cast<int>(shadowUnit));
    GLProgram::set(m_ground.find("strength"), shadow.m_fStrength);
    glUniform3f(m_ground.find("ground"), shadow.m_ground.m_fHeight, shadow.m_ground.m_fRiseX, shadow.m_ground.m_fRiseZ);
    glUniform4f(m_ground.find("area"), m_area[0], m_area[1], m_area[2], m_area[3]);
    glBindVertexArray(m_noArray.get());
    glEnable(GL_BLEND);
    glDepthMask(GL_FALSE);
    glDisable(GL_CULL_FACE);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glBindTexture(GL_TEXTURE_2D, 0);
}
}  // namespace TW2::render
