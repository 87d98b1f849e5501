#include "render/frame_block.h"

#include <platform/scene/camera.h>
#include <platform/scene/light.h>
#include <platform/scene/point_light.h>
#include <platform/scene/scene.h>
#include <platform/scene/spot_light.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TW2::render
{
namespace
{
using Vector = M_Vector3Template<float>;

std::array<float, 4> pack(const Vector& xyz, float w = 0.0F)
{
    return {xyz.x, xyz.y, xyz.z, w};
}

std::array<float, 4> pack(const G_FColor& color, float w = 0.0F)
{
    return pack(color.getRGB() * (1.0F / 255.0F), w);
}

float cosineOfHalf(float degrees)
{
    return std::cos(degrees * std::numbers::pi_v<float> / 360.0F);
}
}  // namespace

M_Matrix4Template<float> convertDepth(const M_Matrix4Template<float>& projection) noexcept
{
    M_Matrix4Template<float> result = projection;
    for (auto& row : result.m)
    {
        row[2] = 2.0F * row[2] - row[3];
    }
    return result;
}

FrameBlock::FrameBlock() : m_buffer(GLBuffer::create()) {}

void FrameBlock::upload(const P_Scene& scene, const P_Camera& camera, const View& view)
{
    m_values.m_view = M_Matrix4Template<float>(camera.getViewMatrix());
    m_values.m_viewProjection = m_values.m_view * convertDepth(camera.getProjectionMatrix());
    m_values.m_eye = pack(camera.getObjectToWorldMatrix().getTranslation());
    m_values.m_ambientSky = pack(view.m_ambientSky);
    m_values.m_ambientGround = pack(view.m_ambientGround);
    m_values.m_fogColor = pack(view.m_fogColor, view.m_fFogEnd);
    m_values.m_fog = {view.m_fFogStart, 0.0F, 0.0F, 0.0F};
    setLights(scene);
    glBindBuffer(GL_UNIFORM_BUFFER, m_buffer.get());
    glBufferData(GL_UNIFORM_BUFFER, sizeof(m_values), &m_values, GL_STREAM_DRAW);
    glBindBufferBase(GL_UNIFORM_BUFFER, binding, m_buffer.get());
}

void FrameBlock::setLights(const P_Scene& scene)
{
    std::array<const P_Light*, mostLights> lights{};
    const auto& all = scene.getLights();
    const std::size_t count = std::min(all.size(), lights.size());
    std::copy_n(all.begin(), count, lights.begin());
    const auto end = lights.begin() + static_cast<std::ptrdiff_t>(count);
    const auto others = std::stable_partition(
        lights.begin(), end, [](const P_Light* light) { return light->getLightKind() == P_Light::Kind::Directional; });
    m_values.m_lightCounts = {static_cast<int>(others - lights.begin()), static_cast<int>(count), 0, 0};
    for (std::size_t i = 0; i < count; ++i)
    {
        const P_Light& light = *lights[i];
        const M_Matrix4x3Template<float>& world = light.getObjectToWorldMatrix();
        float range = 0.0F;
        const bool cone = light.getLightKind() == P_Light::Kind::Spot;
        if (light.getLightKind() == P_Light::Kind::Point)
        {
            range = static_cast<const P_PointLight&>(light).getFalloffRange();
        }
        else if (cone)
        {
            const auto& spot = static_cast<const P_SpotLight&>(light);
            range = spot.getFalloffRange();
            m_values.m_lightCones[i] = {cosineOfHalf(spot.getHotspotAngle()), cosineOfHalf(spot.getFalloffAngle()),
                                        0.0F, 0.0F};
        }
        m_values.m_lightColors[i] = pack(light.getColor());
        m_values.m_lightPositions[i] = pack(world.getTranslation(), range);
        m_values.m_lightDirections[i] = pack(world.getRow(2).normalized(), cone ? 1.0F : 0.0F);
    }
}
}  // namespace TW2::render
