#include "render/studio.h"

#include "render/scene_walk.h"

#include <platform/scene/camera.h>
#include <platform/scene/material.h>
#include <platform/scene/scene.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace TW2::render
{
namespace
{
using Vector = M_Vector3Template<float>;

constexpr float degree = std::numbers::pi_v<float> / 180.0F;

/// 1, 2 or 5 times a power of ten, not above `length`.
float roundDown(float length)
{
    const float power = std::pow(10.0F, std::floor(std::log10(length)));
    const float leading = length / power;
    return power * (leading >= 5.0F ? 5.0F : leading >= 2.0F ? 2.0F : 1.0F);
}
}  // namespace

void frameCamera(P_Camera& camera, std::span<const Vector> points, const Viewpoint& viewpoint, float aspect)
{
    const float azimuth = viewpoint.m_fAzimuth * degree;
    const float elevation = std::clamp(viewpoint.m_fElevation, -89.0F, 89.0F) * degree;
    const Vector away{std::cos(elevation) * std::sin(azimuth), std::sin(elevation),
                      -std::cos(elevation) * std::cos(azimuth)};
    Bounds bounds;
    for (const Vector& point : points)
    {
        bounds.add(point);
    }
    const Vector middle = bounds.getCenter();
    const float size = std::max(bounds.getSize(), 1e-3F);
    camera.lookAt(middle + away * size, middle, {0.0F, 1.0F, 0.0F});

    // A point is in the picture when it lies right of the left edge's plane, and so on: |x - center| <= (z + distance)
    // x half the width at distance 1. Each edge's plane touches the outermost point; center and distance follow from
    // two opposite edges.
    const float halfHeight = std::tan(viewpoint.m_fVerticalAngle * degree * 0.5F) / viewpoint.m_fMargin;
    const float halfWidth = halfHeight * aspect;
    float right = -std::numeric_limits<float>::max();
    float left = right;
    float up = right;
    float down = right;
    float nearest = std::numeric_limits<float>::max();
    for (const Vector& point : points)
    {
        const Vector p = camera.getViewMatrix().transformDirection(point - middle);
        right = std::max(right, p.x - halfWidth * p.z);
        left = std::max(left, -p.x - halfWidth * p.z);
        up = std::max(up, p.y - halfHeight * p.z);
        down = std::max(down, -p.y - halfHeight * p.z);
        nearest = std::min(nearest, p.z);
    }
    const float distance =
        std::max({0.5F * (right + left) / halfWidth, 0.5F * (up + down) / halfHeight, 0.05F * size - nearest});
    const M_Matrix4x3Template<float>& world = camera.getObjectToWorldMatrix();
    const Vector target = middle + world.getRow(0) * (0.5F * (right - left)) + world.getRow(1) * (0.5F * (up - down));
    camera.lookAt(target + away * distance, target, {0.0F, 1.0F, 0.0F});
    camera.setPerspective(viewpoint.m_fVerticalAngle, aspect, std::max(distance * 0.02F, size * 0.002F),
                          distance + 20.0F * size);
}

StudioLights::StudioLights(P_Scene& scene, const P_Camera& camera, float strength)
{
    struct Lamp
    {
        Vector m_vDirection;  // in camera space
        G_FColor m_color;
    };
    const std::array<Lamp, 3> lamps{Lamp{{0.55F, -0.65F, 0.75F}, {214.0F, 207.0F, 196.0F}},
                                    Lamp{{-0.9F, -0.1F, 0.45F}, {64.0F, 70.0F, 82.0F}},
                                    Lamp{{0.1F, -0.5F, -0.9F}, {80.0F, 84.0F, 92.0F}}};
    const M_Matrix4x3Template<float>& view = camera.getObjectToWorldMatrix();
    for (std::size_t i = 0; i < lamps.size(); ++i)
    {
        const Vector forward = view.transformDirection(lamps[i].m_vDirection).normalized();
        const Vector side = (std::abs(forward.y) < 0.99F ? Vector{0.0F, 1.0F, 0.0F} : Vector{1.0F, 0.0F, 0.0F})
                                .cross(forward)
                                .normalized();
        M_Matrix4x3Template<float> matrix;
        matrix.setRow(0, side);
        matrix.setRow(1, forward.cross(side));
        matrix.setRow(2, forward);
        m_lights[i].setMatrix(matrix);
        m_lights[i].setColor(lamps[i].m_color * strength);
        m_lights[i].addTo(&scene);
    }
}

float chooseLightStrength(const P_BaseObject& root)
{
    constexpr float doubled = 0.5F;
    bool anyDoubled = false;
    forEachShownMesh(root,
                     [&anyDoubled](const P_VirtualObject& mesh)
                     {
                         for (int i = 0; i < mesh.getPrimitiveCount(); ++i)
                         {
                             const P_Material* material = mesh.getPrimitiveInstance(i)->getMaterial();
                             anyDoubled |= material && material->getSetUp() != P_Material::SetUp::Layers;
                         }
                     });
    return anyDoubled ? doubled : 1.0F;
}

void addGroundGrid(View& view, const Bounds& bounds)
{
    addGroundGrid(view, bounds, {.m_fHeight = bounds.m_vMinimum.y});
}

void addGroundGrid(View& view, const Bounds& bounds, const GroundPlane& ground)
{
    const float size = bounds.getSize();
    if (size <= 0.0F)
    {
        return;
    }
    const float step = roundDown(size * 0.25F);
    const Vector center = bounds.getCenter();
    const float extent = 0.9F * size + 0.5F * std::max(bounds.m_vMaximum.x - bounds.m_vMinimum.x,
                                                       bounds.m_vMaximum.z - bounds.m_vMinimum.z);
    const int count = static_cast<int>(std::ceil(extent / step));
    const float originX = std::round(center.x / step) * step;
    const float originZ = std::round(center.z / step) * step;
    const auto place = [&](float x, float z)
    {
        const Vector level{originX + x, 0.0F, originZ + z};
        return Vector{level.x, ground.getHeight(level), level.z};
    };
    const auto tint = [extent](float x, float z)
    {
        const float fade = std::clamp(1.0F - std::sqrt(x * x + z * z) / extent, 0.0F, 1.0F);
        return G_FColor(120.0F, 128.0F, 138.0F, 150.0F * fade);
    };
    // Each square's side is a line of its own, so that the grid fades out towards its edge.
    for (int i = -count; i <= count; ++i)
    {
        for (int j = -count; j < count; ++j)
        {
            const float across = static_cast<float>(i) * step;
            const float from = static_cast<float>(j) * step;
            const float to = from + step;
            const float length = extent;
            if (across * across + std::min(from * from, to * to) > length * length)
            {
                continue;
            }
            view.m_vecLines.push_back({place(from, across), place(to, across), tint(0.5F * (from + to), across)});
            view.m_vecLines.push_back({place(across, from), place(across, to), tint(across, 0.5F * (from + to))});
        }
    }
}

void addSkeleton(View& view, const P_BaseObject& root, const G_FColor& color)
{
    forEachShownMesh(root,
                     [&view, &color](const P_VirtualObject& mesh)
                     {
                         if (const P_VirtualObject* parent = mesh.getParent() ? mesh.getParent()->asMesh() : nullptr)
                         {
                             view.m_vecOverlayLines.push_back({parent->getObjectToWorldMatrix().getTranslation(),
                                                               mesh.getObjectToWorldMatrix().getTranslation(), color});
                         }
                     });
}
}  // namespace TW2::render
