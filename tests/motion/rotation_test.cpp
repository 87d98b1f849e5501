#include "src/motion/angles.h"

#include <tw2/motion/rotation.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace TW2;
using Vector = M_Vector3Template<double>;

namespace
{
Vector anyVector(std::mt19937& random)
{
    std::normal_distribution<double> any;
    return {any(random), any(random), any(random)};
}
}  // namespace

TEST(Angles, AgreeWithTheStandardLibrary)
{
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i)
    {
        const double x = std::uniform_real_distribution<double>(-50.0, 50.0)(random);
        double sine = 0.0;
        double cosine = 0.0;
        getSineAndCosine(x, sine, cosine);
        EXPECT_NEAR(sine, std::sin(x), 4e-15) << x;
        EXPECT_NEAR(cosine, std::cos(x), 4e-15) << x;
        const Vector p = anyVector(random);
        EXPECT_NEAR(getAngle(p.x, p.y), std::atan2(p.x, p.y), 2e-15);
    }
    EXPECT_EQ(getAngle(0.0, 0.0), 0.0);
    EXPECT_NEAR(getAngle(0.0, -1.0), pi, 1e-15);
    EXPECT_NEAR(getAngle(-1.0, 0.0), -pi / 2, 1e-15);
    EXPECT_NEAR(getArcCosine(-1.5), pi, 1e-15);
    EXPECT_NEAR(getArcCosine(0.5), pi / 3, 1e-15);
}

TEST(Rotation, TurnsAsItsMatrixDoesAndComposesAsMatricesDo)
{
    std::mt19937 random(4);
    for (int i = 0; i < 500; ++i)
    {
        const TW_Travel a{TW_Rotation::aboutAxis(anyVector(random), 170.0 * std::sin(i)), anyVector(random)};
        const TW_Travel b{TW_Rotation::aboutAxis(anyVector(random), 100.0 * std::cos(i)), anyVector(random)};
        const M_Matrix4x3Template<float> product = a.toMatrix() * b.toMatrix();
        const M_Matrix4x3Template<float> composed = (a * b).toMatrix();
        const M_Matrix4x3Template<float> again = TW_Travel::ofMatrix(composed).toMatrix();
        for (int e = 0; e < 12; ++e)
        {
            EXPECT_NEAR(composed.data()[e], product.data()[e], 2e-6f);
            EXPECT_NEAR(again.data()[e], composed.data()[e], 1e-6f);
        }
        const TW_Travel none = a * a.inverse();
        EXPECT_LT(none.m_vTranslation.length() + none.m_rotation.getDegrees(), 1e-9);
    }
    // A quarter turn about z takes x to y.
    const Vector y = TW_Rotation::aboutAxis({0, 0, 3}, 90.0).turn({1, 0, 0});
    EXPECT_NEAR(y.y, 1.0, 1e-15);
}

TEST(Rotation, PartsOfAnAngleAddUpToIt)
{
    std::mt19937 random(6);
    for (int i = 0; i < 200; ++i)
    {
        const TW_Rotation whole = TW_Rotation::aboutAxis(anyVector(random), 179.0 * i / 200.0);
        const double part = std::uniform_real_distribution<double>(0.0, 1.0)(random);
        EXPECT_LT((whole.scaled(part) * whole.scaled(1.0 - part) * whole.inverse()).getDegrees(), 1e-6);
        EXPECT_NEAR(whole.scaled(part).getDegrees(), part * whole.getDegrees(), 1e-9);
        const Vector from = anyVector(random);
        const Vector to = anyVector(random);
        const TW_Rotation shortest = TW_Rotation::between(from, to);
        EXPECT_LT((shortest.turn(from.normalized()) - to.normalized()).length(), 1e-14);
        const Vector axis = anyVector(random).normalized();
        const TW_Rotation twist = whole.getTwist(axis);
        const TW_Rotation swing = whole * twist.inverse();
        EXPECT_NEAR(swing.m_vAxis.dot(axis), 0.0, 1e-12) << "what is left turns about an axis at right angles";
    }
    EXPECT_EQ(TW_Rotation::between({}, {1, 0, 0}), TW_Rotation());
    EXPECT_NEAR(TW_Rotation::between({1, 2, 3}, {-1, -2, -3}).getDegrees(), 180.0, 1e-9);
}

TEST(Rotation, DegenerateAndMirroredBlocksHaveOne)
{
    M_Matrix4x3Template<float> flat;
    flat.setRow(0, {0, 1, 0});
    flat.setRow(1, {0, 2, 0});
    EXPECT_EQ(TW_Rotation::ofMatrix(flat), TW_Rotation());
    EXPECT_EQ(TW_Rotation::ofMatrix(M_Matrix4x3Template<float>::zero()), TW_Rotation());
    M_Matrix4x3Template<float> mirrored;
    mirrored.setRow(2, {0, 0, -3});
    EXPECT_LT(TW_Rotation::ofMatrix(mirrored).getDegrees(), 1e-9);
}

TEST(Travel, ATravelIsRepeatedAsOftenAsItIsMade)
{
    const TW_Travel step{TW_Rotation::aboutAxis({0.1, 1, 0}, 13.0), {0.3, 0.01, 1.0}};
    TW_Travel there;
    for (int i = 0; i < 37; ++i)
    {
        there = step * there;
    }
    const TW_Travel power = step.repeated(37);
    EXPECT_LT((power.m_vTranslation - there.m_vTranslation).length(), 1e-12);
    const TW_Travel none = power * step.repeated(-37);
    EXPECT_LT(none.m_vTranslation.length(), 1e-12);
}

TEST(Rotation, ALimitKeepsTheAxisAndCutsTheAngle)
{
    const TW_Rotation turn = TW_Rotation::aboutAxis({0.3, -1, 0.2}, 80.0);
    EXPECT_EQ(turn.limited(90.0), turn);
    EXPECT_NEAR(turn.limited(15.0).getDegrees(), 15.0, 1e-9);
    EXPECT_LT((turn.limited(15.0) * TW_Rotation::aboutAxis({0.3, -1, 0.2}, 65.0) * turn.inverse()).getDegrees(), 1e-6);
    EXPECT_EQ(TW_Rotation().limited(0.0), TW_Rotation());
    // The same turn the other way round in the sphere of quaternions.
    EXPECT_NEAR((TW_Rotation{-turn.m_dW, -turn.m_vAxis}).limited(15.0).getDegrees(), 15.0, 1e-9);
}

TEST(Travel, TurnsTowardsAPointAboutTheUprightAxisAlone)
{
    for (int heading = -175; heading <= 180; heading += 5)
    {
        for (int bearing = -180; bearing < 180; bearing += 15)
        {
            // Turned about y from negative z: a heading of 90 degrees looks along negative x.
            const TW_Rotation there = TW_Rotation::aboutAxis({0, 1, 0}, bearing);
            const TW_Travel place{TW_Rotation::aboutAxis({0, 1, 0}, heading), {3.0, 1.0, -2.0}};
            const M_Vector3Template<double> point =
                place.m_vTranslation + there.turn({0, 0, -4.0}) + M_Vector3Template<double>(0, 7.0, 0);
            const double left = std::abs(std::remainder(bearing - heading, 360.0));
            for (const double most : {20.0, 180.0})
            {
                const TW_Travel turned = place.turnedTowards(point, most);
                EXPECT_EQ(turned.m_vTranslation, place.m_vTranslation);
                EXPECT_NEAR((turned.m_rotation * there.inverse()).getDegrees(), std::max(left - most, 0.0), 1e-5)
                    << heading << " to " << bearing;
                EXPECT_LT((turned.m_rotation.turn({0, 1, 0}) - M_Vector3Template<double>(0, 1, 0)).length(), 1e-12);
            }
        }
    }
    const TW_Travel place{TW_Rotation::aboutAxis({0, 1, 0}, 30.0), {1, 0, 0}};
    EXPECT_EQ(place.turnedTowards({1, 5, 0}, 180.0), place) << "straight above";
    EXPECT_LT((TW_Travel().turnedTowards({4, 0, 0}, 180.0, {0, 0, 1}).m_rotation.turn({0, 0, 1}) -
               M_Vector3Template<double>(1, 0, 0))
                  .length(),
              1e-9);
}
