#include "tests/motion/moving_files.h"
#include "tests/support/sanitized.h"
#include "tests/viewer/showing.h"

#include <tw2/object/virtual_object.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace
{
using support::boxOf;
using support::project;
using support::Showing;
using TW2::viewer::OrbitCamera;

TEST(Viewer, ACrowdFillsASquareBehindTheObjectAndIsPosedLaterAndLater)
{
    Showing viewer({"seek 0"});
    const TW2::render::Bounds bounds = boxOf(viewer);
    // One and a fifth of the object's longer side on the ground, or of a quarter of its height.
    const auto size = bounds.m_vMaximum - bounds.m_vMinimum;
    const float spacing = 1.2F * std::max({size.x, size.z, 0.25F * size.y});
    const float distance = viewer.getCamera().m_fDistance;
    viewer.run({"crowd 24", "seek 0.3"});
    EXPECT_GT(viewer.getCamera().m_fDistance, 2.0F * distance) << "all of it is looked at";
    if (!support::isSanitized)
    {
        EXPECT_GT(viewer.getCrowd().getCost().m_uiBytesPerCopy, 500U);
    }
    std::set<std::pair<long, long>> places{{0, 0}};
    for (const auto& copy : viewer.getCrowd().getCopies())
    {
        const float column = copy->getPosition().x / spacing;
        const float row = copy->getPosition().z / spacing;
        EXPECT_NEAR(column, std::round(column), 1e-3F);
        EXPECT_NEAR(row, std::round(row), 1e-3F);
        EXPECT_LE(std::abs(column), 2.01F);
        EXPECT_GE(row, 0.0F);
        EXPECT_LE(row, 4.01F);
        places.insert({std::lround(column), std::lround(row)});
    }
    EXPECT_EQ(places.size(), 25U);
    TW2::TW_VirtualObject& object = viewer.getObject()->getObject();
    const auto first = object.getMesh(5)->getMatrix();
    EXPECT_NE(viewer.getCrowd().getCopies()[0]->getMesh(5)->getMatrix(), first);
    for (const std::size_t i : {0U, 1U, 9U})
    {
        object.animateObject(1, static_cast<float>(std::fmod(0.3 + 0.137 * static_cast<double>(i + 1), 2.0)), nullptr);
        EXPECT_LT(
            support::getDifference(support::takePose(*viewer.getCrowd().getCopies()[i]), support::takePose(object)),
            1e-5F)
            << i;
    }
}

TEST(Viewer, ACrowdFillsThePictureWithTheBoxesOfItsCopies)
{
    for (const char* side : {"look front", "look back", "look left", "look right", "look top", "look corner"})
    {
        using Vector = M_Vector3Template<float>;
        Showing viewer({"seek 0"});
        const TW2::render::Bounds box = boxOf(viewer);
        viewer.run({"clip sprout_rest", "crowd 5", side});
        std::vector<Vector> points;
        TW2::render::collectVertices(viewer.getObject()->getObject(), points);
        for (const auto& copy : viewer.getCrowd().getCopies())
        {
            for (unsigned int i = 0; i < 8; ++i)
            {
                const auto pick = [i](unsigned int bit, float low, float high) { return i & bit ? high : low; };
                points.push_back(copy->getPosition() + Vector{pick(1, box.m_vMinimum.x, box.m_vMaximum.x),
                                                              pick(2, box.m_vMinimum.y, box.m_vMaximum.y),
                                                              pick(4, box.m_vMinimum.z, box.m_vMaximum.z)});
            }
        }
        OrbitCamera expected = viewer.getCamera();
        expected.frame(points, 4.0F / 3.0F);
        EXPECT_LT((viewer.getCamera().getEye() - expected.getEye()).length(), 1e-3F * expected.m_fDistance) << side;
    }
}

TEST(Viewer, ACrowdBlendsAsTheObjectDoes)
{
    const auto pose = [](const std::vector<std::string>& lines)
    { return support::takePose(*Showing(lines).getCrowd().getCopies().at(0)); };
    const auto before = pose({"seek 0.3", "blend 1 2", "crossmode linear", "crowd 24"});
    const auto behind = pose({"seek 0.3", "blend 1 2", "crowd 24", "crossmode linear"});
    EXPECT_TRUE(support::isSame(before, behind));
    EXPECT_FALSE(support::isSame(before, pose({"seek 0.3", "blend 1 2", "crowd 24"})));
}
}  // namespace
