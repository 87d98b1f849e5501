#include "render/studio.h"

#include <platform/scene/camera.h>
#include <platform/scene/directional_light.h>
#include <platform/scene/material.h>
#include <platform/scene/material_helpers.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

using Vector = M_Vector3Template<float>;
using Matrix = M_Matrix4x3Template<float>;

TEST(Framing, BringsEveryPointIntoThePictureAndTouchesTwoOppositeEdges)
{
    const std::array<TW2::render::Viewpoint, 3> viewpoints{TW2::render::Viewpoint{},
                                                           TW2::render::Viewpoint{-120.0F, 60.0F, 20.0F, 1.0F},
                                                           TW2::render::Viewpoint{90.0F, -10.0F, 90.0F, 1.0F}};
    std::vector<Vector> points;
    for (int i = 0; i < 60; ++i)
    {
        const auto t = static_cast<float>(i);
        points.push_back({100.0F + 7.0F * std::sin(t), 3.0F * std::cos(2.0F * t), -20.0F + 11.0F * std::sin(3.0F * t)});
    }
    const float degree = std::acos(-1.0F) / 180.0F;
    for (const auto& viewpoint : viewpoints)
    {
        P_Camera camera;
        TW2::render::frameCamera(camera, points, viewpoint, 1.5F);
        const float level = std::cos(viewpoint.m_fElevation * degree);
        const Vector forward{-level * std::sin(viewpoint.m_fAzimuth * degree),
                             -std::sin(viewpoint.m_fElevation * degree),
                             level * std::cos(viewpoint.m_fAzimuth * degree)};
        EXPECT_LT((camera.getObjectToWorldMatrix().getRow(2) - forward).length(), 1e-5F) << viewpoint.m_fAzimuth;
        EXPECT_EQ(camera.getVerticalAngle(), viewpoint.m_fVerticalAngle);
        const M_Matrix4Template<float> toPicture =
            M_Matrix4Template<float>(camera.getViewMatrix()) * camera.getProjectionMatrix();
        float widest = 0.0F;
        const float slope = std::tan(viewpoint.m_fVerticalAngle * degree * 0.5F) / viewpoint.m_fMargin;
        float beyond[] = {-1e9F, -1e9F, -1e9F, -1e9F};  // the left, right, lower and upper edge
        for (const Vector& point : points)
        {
            const Vector p = toPicture.projectPoint(point);
            widest = std::max({widest, std::abs(p.x), std::abs(p.y)});
            EXPECT_GT(p.z, 0.0F);
            EXPECT_LT(p.z, 1.0F);
            const Vector seen = camera.getViewMatrix().transformPoint(point);
            const float across[] = {-seen.x, seen.x, -seen.y, seen.y};
            for (int edge = 0; edge < 4; ++edge)
            {
                beyond[edge] = std::max(beyond[edge], across[edge] - seen.z * slope * (edge < 2 ? 1.5F : 1.0F));
            }
        }
        EXPECT_NEAR(widest * viewpoint.m_fMargin, 1.0F, 1e-3F);
        EXPECT_NEAR(beyond[0], beyond[1], 1e-3F) << "as far from the left as from the right";
        EXPECT_NEAR(beyond[2], beyond[3], 1e-3F) << "and from below as from above";
    }
    // What stands in one line before the eyes needs no width, but lies before them all the same.
    P_Camera camera;
    const std::array<Vector, 2> line{Vector{1.0F, 2.0F, -5.0F}, Vector{1.0F, 2.0F, 5.0F}};
    TW2::render::frameCamera(camera, line, {0.0F, 0.0F}, 1.0F);
    EXPECT_NEAR(camera.getViewMatrix().transformPoint(line[0]).z, 0.5F, 1e-4F) << "a twentieth of its size";
    EXPECT_LT(camera.getNearDistance(), 0.5F);
    TW2::render::frameCamera(camera, line, {0.0F, 120.0F}, 1.0F);
    EXPECT_NEAR(camera.getObjectToWorldMatrix().getRow(2).y, -1.0F, 1e-3F) << "no steeper than from straight above";
    EXPECT_GT(camera.getObjectToWorldMatrix().getRow(2).z, 0.0F);
}

TEST(Framing, LeavesOutWhatIsNotDrawn)
{
    P_VirtualObject object(2);
    P_VertexFormat format;
    format.constructFromOldVertexFormat(P_VertexFormat::POSITION);
    for (int primitive = 0; primitive < 2; ++primitive)
    {
        P_TriangleMesh& mesh = *object.createTriangleMesh(primitive, nullptr, format);
        mesh.allocate(1, 3, false);
        mesh.lock();
        mesh.getVertexBuffer().setPosition(0, {10.0F * static_cast<float>(primitive), 1.0F, 2.0F});
        mesh.unlock();
    }
    object.setMatrix(M_Matrix4x3Template<float>::translation({0.0F, 5.0F, 0.0F}));
    object.getPrimitiveInstance(0)->setVisible(false);
    std::vector<Vector> vertices;
    TW2::render::collectVertices(object, vertices);
    ASSERT_EQ(vertices.size(), 3U) << "those of the visible primitive";
    EXPECT_EQ(vertices[0], (Vector{10.0F, 6.0F, 2.0F})) << "in world space";
    object.enable(false);
    vertices.clear();
    TW2::render::collectVertices(object, vertices);
    EXPECT_TRUE(vertices.empty());
}

TEST(Framing, LeavesOutPointsThatAreNoPlaces)
{
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
    {
        TW2::render::Bounds bounds;
        for (const Vector& point : {Vector{1, 2, 3}, {bad, 0, 0}, {0, bad, 0}, {0, 0, bad}, Vector{4, 0, 5}})
        {
            bounds.add(point);
        }
        EXPECT_EQ(bounds.m_vMinimum, (Vector{1, 0, 3}));
        EXPECT_EQ(bounds.m_vMaximum, (Vector{4, 2, 5}));
    }
}

TEST(Studio, LightComesFromTheUpperLeftTheRightAndBehindAsTheCameraSees)
{
    for (const float azimuth : {0.0F, 80.0F, 200.0F})
    {
        P_Camera camera;
        const std::array<Vector, 2> points{Vector{-1, -1, -1}, Vector{1, 1, 1}};
        TW2::render::frameCamera(camera, points, {azimuth, 0.0F}, 1.0F);
        P_Scene scene;
        const TW2::render::StudioLights lights(scene, camera, 0.5F);
        Vector main;
        Vector side;
        Vector behind;
        float strength[3] = {};
        for (const P_BaseObject* child : scene.getChildren())
        {
            const auto& light = dynamic_cast<const P_DirectionalLight&>(*child);
            const Matrix& place = light.getObjectToWorldMatrix();
            EXPECT_NEAR(place.determinant(), 1.0F, 1e-5F);
            const Vector seen = camera.getViewMatrix().transformDirection(place.getRow(2));
            const int kind = seen.z < 0.0F ? 2 : seen.x < 0.0F ? 1 : 0;
            (kind == 2 ? behind : kind == 1 ? side : main) = seen;
            EXPECT_EQ(strength[kind], 0.0F) << "one of each";
            strength[kind] = light.getColor().red;
            EXPECT_LE(light.getColor().red, 127.5F) << "half the strength";
        }
        EXPECT_GT(main.x, 0.3F) << "from the left";
        EXPECT_LT(main.y, -0.3F) << "and above";
        EXPECT_LT(side.x, -0.3F) << "from the right";
        EXPECT_LT(side.y, -0.05F) << "a little from above";
        EXPECT_LT(behind.y, -0.3F);
        EXPECT_GT(strength[0], 2.0F * strength[1]);
        EXPECT_GT(strength[1], 0.0F);
        EXPECT_GT(strength[2], 0.0F);
    }
}

TEST(Studio, WhatDoublesItsLightIsLitByHalf)
{
    P_VirtualObject object(1);
    EXPECT_EQ(TW2::render::chooseLightStrength(object), 1.0F);
    P_Material material;
    object.getPrimitiveInstance(0)->setMaterial(&material);
    EXPECT_EQ(TW2::render::chooseLightStrength(object), 1.0F);
    ASSERT_TRUE(P_MaterialHelpers::makeTexture(&material, P_Material::FILTER_MODE::Point));
    EXPECT_EQ(TW2::render::chooseLightStrength(object), 0.5F);
}

TEST(Studio, TheGridLiesUnderTheObjectAndFadesOutEvenlyAroundIt)
{
    TW2::render::Bounds bounds;
    bounds.add({-2.0F, 1.0F, -2.0F});
    bounds.add({6.8F, 4.0F, 2.6F});
    TW2::render::View view;
    TW2::render::addGroundGrid(view, bounds);
    // Beyond the object by its diagonal less a tenth; a quarter of the diagonal, rounded down, from line to line.
    const float extent = 0.9F * std::sqrt(77.44F + 9.0F + 21.16F) + 4.4F;
    float farthest = 0.0F;
    ASSERT_GT(view.m_vecLines.size(), 100U);
    for (const auto& line : view.m_vecLines)
    {
        EXPECT_EQ(line.m_vFrom.y, 1.0F);
        EXPECT_EQ(std::remainder(line.m_vFrom.x, 2.0F), 0.0F) << "at whole steps";
        EXPECT_EQ(std::remainder(line.m_vFrom.z, 2.0F), 0.0F);
        EXPECT_NEAR((line.m_vTo - line.m_vFrom).length(), 2.0F, 1e-5F);
        const float away = ((line.m_vFrom + line.m_vTo) * 0.5F - Vector{2.0F, 1.0F, 0.0F}).length();
        EXPECT_NEAR(line.m_color.alpha, 150.0F * std::max(0.0F, 1.0F - away / extent), 0.01F) << away;
        farthest = std::max(farthest, away);
    }
    EXPECT_NEAR(farthest, extent, 1.0F);
    EXPECT_EQ(2U * static_cast<std::size_t>(std::ranges::count_if(
                       view.m_vecLines, [](const auto& line) { return line.m_vFrom.x == line.m_vTo.x; })),
              view.m_vecLines.size())
        << "as many across as along";
    const auto level = view.m_vecLines;
    view.m_vecLines.clear();
    TW2::render::addGroundGrid(view, bounds, {.m_fHeight = 0.5F, .m_fRiseX = 0.25F, .m_fRiseZ = -0.125F});
    ASSERT_EQ(view.m_vecLines.size(), level.size());
    for (std::size_t i = 0; i < level.size(); ++i)
    {
        const Vector& from = view.m_vecLines[i].m_vFrom;
        EXPECT_EQ(from, Vector(level[i].m_vFrom.x, 0.5F + 0.25F * from.x - 0.125F * from.z, level[i].m_vFrom.z));
        const TW2::render::GroundPlane slope{.m_fRiseX = 0.25F, .m_fRiseZ = -0.125F};
        EXPECT_NEAR(slope.getNormal().dot(view.m_vecLines[i].m_vTo - from), 0.0F, 1e-5F) << "a line lies in the plane";
    }
    for (const auto& [size, step] : {std::pair(0.025F, 0.005F), {0.9F, 0.2F}, {70.0F, 10.0F}, {81.0F, 20.0F}})
    {
        view.m_vecLines.clear();
        TW2::render::Bounds other;
        other.add({0.0F, 0.0F, 0.0F});
        other.add({0.0F, size, 0.0F});
        TW2::render::addGroundGrid(view, other);
        ASSERT_GT(view.m_vecLines.size(), 30U) << "however small it is";
        EXPECT_NEAR((view.m_vecLines[0].m_vTo - view.m_vecLines[0].m_vFrom).length() / step, 1.0F, 1e-4F) << size;
    }
    view.m_vecLines.clear();
    TW2::render::addGroundGrid(view, TW2::render::Bounds());
    EXPECT_TRUE(view.m_vecLines.empty());
}
