#include "test_object.h"

#include <platform/scene/camera.h>
#include <platform/scene/scene_exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
/// Where a point lies after projection: largest of |x|, |y| and the depth's excess over its range, each over w. Not
/// above 1 inside of the view volume.
float getClipExtent(const P_Camera& camera, const Vector& world)
{
    const Vector p = camera.getViewMatrix().transformPoint(world);
    if (p.z <= 0.0f)
    {
        return 2.0f;
    }
    const Vector clip = camera.getProjectionMatrix().projectPoint(p);
    return std::max({std::abs(clip.x), std::abs(clip.y), std::abs(2.0f * clip.z - 1.0f)});
}

class CameraTest : public ::testing::Test
{
protected:
    /// Anywhere, of any opening, below a scaled parent.
    void shuffle()
    {
        m_camera.addTo(&m_parent);
        m_parent.setMatrix(m_dice.matrix(5.0f));
        m_camera.setPerspective(m_dice.number(20.0f, 120.0f), m_dice.number(0.5f, 2.0f), m_dice.number(0.5f, 1.0f),
                                m_dice.number(5.0f, 20.0f));
        m_camera.lookAt(m_dice.vector(5.0f), m_dice.vector(5.0f), m_dice.vector(1.0f));
    }

    Dice m_dice{11};
    TestObject m_parent;
    P_Camera m_camera;
};
}  // namespace

TEST_F(CameraTest, PointsAreInViewWhereTheyProjectIntoThePicture)
{
    int inView = 0;
    for (int i = 0; i < 5000; ++i)
    {
        shuffle();
        const Vector p = m_dice.vector(10.0f);
        const float extent = getClipExtent(m_camera, p);
        if (std::abs(extent - 1.0f) > 1e-3f)
        {
            ASSERT_EQ(m_camera.isSphereInView(p, 0.0f), extent < 1.0f) << "extent " << extent;
            inView += extent < 1.0f;
        }
    }
    EXPECT_GT(inView, 200);
}

TEST_F(CameraTest, ASphereOrBoxWithAVisiblePointIsNeverLeftOut)
{
    for (int i = 0; i < 3000; ++i)
    {
        shuffle();
        const Matrix toWorld = m_dice.matrix(8.0f);
        const Vector a = m_dice.vector(3.0f);
        const Vector b = m_dice.vector(3.0f);
        const Vector minimum{std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
        const Vector maximum{std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
        const Vector inside{m_dice.number(minimum.x, maximum.x), m_dice.number(minimum.y, maximum.y),
                            m_dice.number(minimum.z, maximum.z)};
        if (getClipExtent(m_camera, toWorld.transformPoint(inside)) < 0.999f)
        {
            ASSERT_TRUE(m_camera.isBoxInView(minimum, maximum, toWorld));
            ASSERT_TRUE(m_camera.isSphereInView(toWorld.getTranslation(), 1.3f * inside.length()));
        }
    }
}

TEST_F(CameraTest, WhatLiesBehindBesideOrBeyondIsLeftOut)
{
    const Vector unit{1.0f, 1.0f, 1.0f};
    m_camera.setPerspective(90.0f, 1.0f, 1.0f, 100.0f);
    const auto isBoxInView = [&](float x, float y, float z) {
        return m_camera.isBoxInView(-unit, unit, Matrix::translation({x, y, z}));
    };
    EXPECT_TRUE(isBoxInView(0.0f, 0.0f, 50.0f));
    EXPECT_TRUE(isBoxInView(50.5f, 0.0f, 50.0f));
    EXPECT_FALSE(isBoxInView(53.0f, 0.0f, 50.0f));
    EXPECT_FALSE(isBoxInView(0.0f, -53.0f, 50.0f));
    EXPECT_FALSE(isBoxInView(0.0f, 0.0f, -0.5f));
    EXPECT_FALSE(isBoxInView(0.0f, 0.0f, 102.0f));
    EXPECT_TRUE(m_camera.isSphereInView({0.0f, 0.0f, -5.0f}, 6.5f));
    EXPECT_FALSE(m_camera.isSphereInView({0.0f, 0.0f, -5.0f}, 5.5f));
    EXPECT_FALSE(m_camera.isSphereInView({60.0f, 0.0f, 50.0f}, 7.0f));
    EXPECT_TRUE(m_camera.isSphereInView({60.0f, 0.0f, 50.0f}, 7.2f));
    EXPECT_TRUE(m_camera.isSphereInView({0.0f, 0.0f, -1e30f}, 3.4028235e38f));
}

TEST_F(CameraTest, LooksWhereItIsToldToWithASensibleUp)
{
    using Case = std::pair<Vector, Vector>;
    for (const auto& [target, up] :
         {Case{{0.0f, 0.0f, 9.0f}, {0.0f, 1.0f, 0.0f}}, Case{{3.0f, -2.0f, 1.0f}, {0.0f, 5.0f, 0.0f}},
          Case{{0.0f, 7.0f, 0.0f}, {0.0f, 1.0f, 0.0f}}, Case{{1.0f, 2.0f, 3.0f}, {}}, Case{{}, {0.0f, 1.0f, 0.0f}},
          Case{{}, {0.0f, 0.0f, 1.0f}}})
    {
        m_camera.lookAt({}, target, up);
        const Matrix& matrix = m_camera.getMatrix();
        EXPECT_NEAR(matrix.determinant(), 1.0f, 1e-5f);
        for (int row = 0; row < 3; ++row)
        {
            EXPECT_NEAR(matrix.getRow(row).length(), 1.0f, 1e-5f);
        }
        EXPECT_NEAR(matrix.getRow(2).dot(target), target.length(), 1e-5f);
        EXPECT_GE(matrix.getRow(1).dot(up), -1e-5f);
        EXPECT_NEAR(matrix.getRow(0).dot(up), 0.0f, 1e-5f);
    }
}

TEST_F(CameraTest, ImpossiblePerspectivesAreRefused)
{
    EXPECT_THROW(m_camera.setPerspective(180.0f, 1.0f, 1.0f, 2.0f), P_SceneException);
    EXPECT_THROW(m_camera.setPerspective(60.0f, 0.0f, 1.0f, 2.0f), P_SceneException);
    EXPECT_THROW(m_camera.setPerspective(60.0f, 1.0f, 0.0f, 2.0f), P_SceneException);
    EXPECT_THROW(m_camera.setPerspective(60.0f, 1.0f, 2.0f, 2.0f), P_SceneException);
    EXPECT_EQ(m_camera.getVerticalAngle(), 60.0f);
}
