#include "tests/support/expectations.h"
#include "tests/support/object_files.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/bone_mask.h>
#include <tw2/object/bone_group_handle.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace TW2;
using testing::ElementsAre;

namespace
{
/// hip > spine > neck > head, spine > arm_left > Hand_Left; hip > leg. Animation 1 moves arm and hand.
struct BoneMask : testing::Test
{
    BoneMask()
    {
        m_files.addMesh("hip");
        m_files.addMesh("spine", "hip");
        m_files.addMesh("neck", "spine");
        m_files.addMesh("head", "neck");
        m_files.addMesh("arm_left", "spine");
        m_files.addMesh("Hand_Left", "arm_left");
        m_files.addMesh("leg", "hip");
        m_files.addAnimation(1, {support::makeTrack("arm_left", 1.0f), support::makeTrack("Hand_Left", 1.0f)});
        m_object = m_files.build();
        m_object->setName("guard");
    }

    static std::vector<float> list(const TW_BoneMask& mask)
    {
        std::vector<float> weights;
        for (unsigned int bone = 0; bone < mask.getBoneCount(); ++bone)
        {
            weights.push_back(mask.getWeight(bone));
        }
        return weights;
    }

    support::ObjectFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST_F(BoneMask, BonesAreChosenByPlaceNameGroupAndAnimation)
{
    EXPECT_THAT(list(TW_BoneMask::below(*m_object, "SPINE")), ElementsAre(0, 1, 1, 1, 1, 1, 0));
    const float third = 1.0f / 3.0f;
    EXPECT_THAT(list(TW_BoneMask::below(*m_object, "spine", 2)), ElementsAre(0, third, 2 * third, 1, 2 * third, 1, 0));
    EXPECT_THAT(list(TW_BoneMask::matching(*m_object, "*_left|he?d")), ElementsAre(0, 0, 0, 1, 1, 1, 0));
    EXPECT_THAT(list(TW_BoneMask::matching(*m_object, "")), ElementsAre(0, 0, 0, 0, 0, 0, 0));
    EXPECT_THAT(list(TW_BoneMask::movedBy(*m_object, 1)), ElementsAre(0, 0, 0, 0, 1, 1, 0));
    EXPECT_THAT(list(TW_BoneMask::movedBy(*m_object, 5)), ElementsAre(0, 0, 0, 0, 0, 0, 0));
    const TW_BoneGroupHandle arm = TW_BoneGroupHandle::below(*m_object, "ARM_left");
    EXPECT_EQ(arm.getTotalHandles(), 2);
    EXPECT_TRUE(arm.hasMesh(m_object->getMesh(5)));
    EXPECT_THAT(list(TW_BoneMask::ofGroup(*m_object, arm)), ElementsAre(0, 0, 0, 0, 1, 1, 0));
    EXPECT_THROW((void)TW_BoneMask::below(*m_object, "tail"), TW_Exception_BoneNotFound);
    EXPECT_THROW((void)TW_BoneGroupHandle::below(*m_object, "tail"), TW_Exception_BoneNotFound);
}

TEST_F(BoneMask, MasksAreMultipliedAndTurnedAround)
{
    TW_BoneMask half(*m_object, 0.5f);
    half.setWeight(3, 7.0f);
    half.setWeight(2, -7.0f);
    half.setWeight(99, 1.0f);
    EXPECT_THAT(list(half * TW_BoneMask::below(*m_object, "neck").complement()),
                ElementsAre(0.5f, 0.5f, 0, 0, 0.5f, 0.5f, 0.5f));
    EXPECT_THAT(list(half), ElementsAre(0.5f, 0.5f, 0, 1, 0.5f, 0.5f, 0.5f));
    EXPECT_EQ(half.getWeight(99), 0.0f);
}

TEST_F(BoneMask, AMaskFitsEveryObjectOfTheSameBonesAndNoOther)
{
    const TW_BoneMask mask = TW_BoneMask::below(*m_object, "spine");
    TW_ObjectAnimation twin(*m_object);
    mask.checkFits(twin);
    support::ObjectFiles files;
    files.addMesh("hip");
    files.addMesh("tail");
    const auto other = files.build();
    other->setName("lizard");
    const std::string message =
        "TW2: A bone mask of \"guard\" (7 bones) does not fit \"lizard\" (2 bones); expected the "
        "same bone names in the same order";
    EXPECT_EQ(support::messageOf([&] { mask.checkFits(*other); }), message);
    EXPECT_EQ(support::messageOf([&] { (void)(TW_BoneMask(*other) * mask); }), message);
    support::ObjectFiles renamed;
    for (const char* name : {"hip", "spine", "neck", "head", "arm_right", "Hand_Left", "leg"})
    {
        renamed.addMesh(name);
    }
    EXPECT_THROW(mask.checkFits(*renamed.build()), TW_Exception_BoneMaskMismatch);
}
