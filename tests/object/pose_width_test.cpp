#include "src/keyframe/pose_batch.h"
#include "tests/support/pose_hash.h"

#include <gtest/gtest.h>

using TW2::PoseWidth;

namespace
{
// Plays with each number of matrices at a time that the machine has.
class PoseWidths : public testing::TestWithParam<PoseWidth>
{
protected:
    void SetUp() override
    {
        if (!TW2::setPoseWidth(GetParam()))
        {
            GTEST_SKIP() << "not on this machine";
        }
    }
    void TearDown() override { TW2::setPoseWidth(m_usual); }

private:
    PoseWidth m_usual = TW2::getPoseWidth();
};
INSTANTIATE_TEST_SUITE_P(, PoseWidths, testing::Values(PoseWidth::One, PoseWidth::Four, PoseWidth::Eight),
                         [](const auto& width) {
                             return width.param == PoseWidth::One    ? "One"
                                    : width.param == PoseWidth::Four ? "Four"
                                                                     : "Eight";
                         });
}  // namespace

TEST_P(PoseWidths, GiveTheSameBitsOnEveryMachine)
{
    EXPECT_EQ(support::PoseHash::run(20), 0x40eac732c4ec0feaULL);
}
