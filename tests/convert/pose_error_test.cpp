#include "convert/pose_error.h"

#include "convert/skeleton.h"
#include "tests/convert/model_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace
{
using namespace convert_test;
using TW2::convert::ErrorLimit;
using TW2::convert::PoseDifference;
using TW2::convert::PoseError;

PoseError compare(const Matrixd& is, const Matrixd& shouldBe, double reach)
{
    PoseDifference difference;
    difference.add(is, shouldBe, reach);
    return difference.get();
}
}  // namespace

TEST(PoseError, IsWhatIsOffAtTheEndsOfTheAxesAndByHowMuchTheyTurn)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    for (const double degrees : {0.5, 30.0, 89.0, 91.0, 150.0, 180.0})
    {
        const Matrixd before = turnZ(170.0 * number(random)) * move(number(random), number(random), number(random));
        const Matrixd after = turnZ(degrees) * before * move(number(random), number(random), number(random));
        const double reach = 2.0 + number(random);
        double farthest = 0.0;
        for (int axis = 0; axis < 3; ++axis)
        {
            for (const double end : {-reach, reach})
            {
                const Vector3d point(axis == 0 ? end : 0.0, axis == 1 ? end : 0.0, axis == 2 ? end : 0.0);
                farthest = std::max(farthest, (after.transformPoint(point) - before.transformPoint(point)).length());
            }
        }
        const PoseError error = compare(after, before, reach);
        EXPECT_NEAR(error.m_dDistance, farthest, 1e-9) << degrees;
        EXPECT_NEAR(error.m_dDegrees, degrees, 1e-5);
        // A limit agrees, just above and just below.
        for (const double part : {0.99, 1.01})
        {
            const bool allowed = part > 1.0 && degrees < 90.0;
            EXPECT_EQ(ErrorLimit({part * farthest, 180.0}).allows(after, before, reach), allowed)
                << degrees << ": what points the other way is never the same";
            if (degrees < 89.0)
            {
                EXPECT_EQ(ErrorLimit({1e9, part * degrees}).allows(after, before, reach), part > 1.0) << degrees;
            }
        }
        EXPECT_EQ(ErrorLimit({1e9, 89.5}).allows(after, before, reach), degrees < 90.0) << degrees;
    }
    Matrixd lost = turnZ(10.0);
    lost.setRow(1, {});
    EXPECT_NEAR(compare(lost, turnZ(10.0), 1.0).m_dDegrees, 90.0, 1e-9) << "an axis that is lost";
}

TEST(PoseError, LooksAsFarAsAnythingHangsOnANode)
{
    Model model = makeChain(3);  // each a unit from the one before
    model.m_vecMeshes.push_back(makeSkin({{0, Matrixd()}, {1, move(-1, 0, 0)}}));
    Mesh& skin = model.m_vecMeshes[0];
    skin.m_vecPositions = {{5, 0, 0}, {0, 50, 0}, {0, 0, 2}};
    skin.m_vecBones[0].m_vecWeights = {{0U, 0.5F}, {1U, 0.01F}, {2U, 1.0F}};
    skin.m_vecBones[1].m_vecWeights = {{0U, 0.5F}};
    model.m_vecMeshes.push_back(makeSkin({}));
    model.m_vecMeshes[1].m_vecPositions[1] = {0, 7, 0};
    model.m_vecNodes[2].m_vecMeshes = {1};
    std::vector<std::string> warnings;
    const std::vector<double> reach = TW2::convert::measureReach(model, TW2::convert::makeSkeleton(model, warnings));
    ASSERT_EQ(reach.size(), 3U);
    EXPECT_NEAR(reach[0], 5.0, 1e-9) << "the farthest vertex that it moves by more than a little";
    EXPECT_NEAR(reach[1], 4.0, 1e-9) << "farther than its child";
    EXPECT_NEAR(reach[2], 7.0, 1e-9) << "the mesh that it shows";
}
