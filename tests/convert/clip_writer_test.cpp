#include "convert/clip_writer.h"

#include "convert/skeleton.h"
#include "tests/convert/model_builder.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <gtest/gtest.h>

#include <algorithm>
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
    convert_test::Matrixd same;
    std::copy_n(played.data(), 12, same.data());
    EXPECT_LT(convert_test::largestDifference(same, mirror), 3e-5);
}
}  // namespace
