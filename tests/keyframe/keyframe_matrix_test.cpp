#include "tests/support/keyframe_tracks.h"
#include "tests/support/track_oracle.h"

#include <tw2/keyframe/keyframe_matrix.h>

#include <gtest/gtest.h>

#include <numbers>
#include <random>

using TW2::TW_KeyframeMatrix;
using Matrix = M_Matrix4x3Template<float>;

TEST(KeyframeMatrix, EveryRotationComesBackFromSevenFloats)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> axis(-1, 1);
    std::uniform_real_distribution<double> angle(-7, 7);
    for (int round = 0; round < 20000; ++round)
    {
        Matrix matrix = support::rotation(axis(random), axis(random), axis(random), angle(random));
        matrix.setTranslation({static_cast<float>(axis(random)), -4.0F, 1e6F});
        const Matrix back = TW_KeyframeMatrix(matrix).toMatrix();
        EXPECT_LT(support::relativeError(back, support::toDouble(matrix)), 1e-6);
        EXPECT_EQ(back.getTranslation(), matrix.getTranslation());
    }
    // Half turns have trace -1, where one of the other three formulas is used.
    for (const auto& [x, y, z] :
         {std::array<double, 3>{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 2, 3}})
    {
        const Matrix matrix = support::rotation(x, y, z, std::numbers::pi);
        EXPECT_LT(support::relativeError(TW_KeyframeMatrix(matrix).toMatrix(), support::toDouble(matrix)), 1e-6);
    }
}

TEST(KeyframeMatrix, TheQuaternionIsTheOneOfTheRotation)
{
    const TW_KeyframeMatrix identity{Matrix()};
    EXPECT_EQ(identity.m_fRotationW, 1.0F);
    EXPECT_EQ(identity.m_vRotation, M_Vector3Template<float>());
    Matrix halfTurn;
    halfTurn.m[1][1] = halfTurn.m[2][2] = -1.0F;
    const TW_KeyframeMatrix aboutX(halfTurn);
    EXPECT_EQ(aboutX.m_fRotationW, 0.0F);
    EXPECT_EQ(aboutX.m_vRotation, (M_Vector3Template<float>{1.0F, 0.0F, 0.0F}));
    // A quarter turn about z takes x to y: row 0 is (0, 1, 0).
    const TW_KeyframeMatrix aboutZ(support::rotation(0, 0, 1, std::numbers::pi / 2));
    EXPECT_NEAR(aboutZ.m_fRotationW, std::sqrt(0.5F), 1e-7F);
    EXPECT_NEAR(aboutZ.m_vRotation.z, std::sqrt(0.5F), 1e-7F);
}

TEST(KeyframeMatrix, TheLengthOfTheQuaternionDoesNotMatterAndItsArithmeticIsPlain)
{
    TW_KeyframeMatrix key;
    EXPECT_EQ(key.toMatrix(), Matrix()) << "no rotation at all";
    key.m_fRotationW = 2.0F;
    EXPECT_EQ(key.toMatrix(), Matrix());
    key.m_fRotationW = 1e-30F;
    EXPECT_EQ(key.toMatrix(), Matrix()) << "too short to have a squared length";

    key.m_vTranslation = {1.0F, 2.0F, 3.0F};
    key.m_fRotationW = 4.0F;
    key.m_vRotation = {5.0F, 6.0F, 7.0F};
    TW_KeyframeMatrix sum = key;
    sum += key;
    sum -= TW_KeyframeMatrix();
    EXPECT_EQ(sum.m_vRotation, (M_Vector3Template<float>{10.0F, 12.0F, 14.0F}));
    EXPECT_NE(sum, key);
    sum *= 0.5F;
    EXPECT_EQ(sum, key);
    sum -= key;
    EXPECT_EQ(sum, TW_KeyframeMatrix());
}
