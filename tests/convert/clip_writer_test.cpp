#include "convert/clip_writer.h"

#include "convert/skeleton.h"
#include "tests/convert/model_builder.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
TEST(PoseAtRest, AMirroredNodeStaysMirroredWhenItIsPlayed)
{
    convert_test::Model model;
    convert_test::Matrixd mirror = convert_test::turnZ(30.0);
    mirror.setRow(2, {0.0, 0.0, -1.0});
    convert_test::addNode(model, "mirror", -1, mirror);
    std::vector<std::string> warnings;
    const auto records = TW2::convert::makeRestRecords(TW2::convert::makeSkeleton(model, warnings));
    ASSERT_EQ(records.size(), 1U);
    const TW2::TW_KeyframeAnimation animation(records[0], false);
    M_Matrix4x3Template<float> played;
    animation.animate(played, 0.0F);
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            EXPECT_NEAR(played.m[row][column], mirror.m[row][column], 2e-5) << row << ", " << column;
        }
    }
}
}  // namespace
