#include "tests/object/character.h"

#include <tw2/object/object_animation_state.h>

namespace
{
using TW2::TW_BoneHandle;
using TW2::TW_ObjectAnimationState;
using Matrix = Character::Matrix;

TEST(ObjectAnimationState, RestoresWhatWasFrozenAndNothingElse)
{
    Character character;
    TW_ObjectAnimationState state(*character);
    EXPECT_TRUE(state.isConstructed());
    ASSERT_EQ(state.accessMatrixVector().size(), Character::MESHES);
    character->animateObjectFrame(2, 4.5F, nullptr);
    const auto frozen = character.getPose();
    character->restoreAnimationState(&state);  // new: nothing is frozen
    EXPECT_EQ(character.getPose(), frozen);

    character->freezeAnimationState(&state, nullptr);
    character->animateObjectFrame(2, 20.5F, nullptr);
    const auto later = character.getPose();
    character->freezeAnimationState(&state, character.group({1, 6}).get());  // forgets all others
    character->animateObjectFrame(1, 9.0F, nullptr);
    const auto last = character.getPose();
    character->accessMeshTransforms().updateWorldMatrices();
    character->restoreAnimationState(&state);
    for (std::size_t mesh = 0; mesh < Character::MESHES; ++mesh)
    {
        EXPECT_EQ(character.getMatrix(mesh), mesh == 1 || mesh == 6 ? later[mesh] : last[mesh]) << mesh;
    }
    EXPECT_FALSE(character->getMesh(6)->isObjectToWorldMatrixValid());
    EXPECT_TRUE(character->getMesh(0)->isObjectToWorldMatrixValid());
    EXPECT_EQ(state.accessMatrixVector()[0], frozen[0]);

    const TW_ObjectAnimationState copy = state;
    state.destruct();
    EXPECT_FALSE(state.isConstructed());
    EXPECT_TRUE(state.accessMatrixVector().empty());
    EXPECT_EQ(TW_ObjectAnimationState(copy).accessMatrixVector()[6], later[6]);
}

TEST(ObjectAnimationState, WithoutAStateNothingHappens)
{
    Character character("orthonormalized");
    TW_ObjectAnimationState state(*character);
    character->animateObjectFrame(2, 4.5F, nullptr);
    character->freezeAnimationState(&state, nullptr);
    character->animateObjectFrame(2, 20.5F, nullptr);
    const auto pose = character.getPose();
    const auto group = character.group({3, 4});
    TW_ObjectAnimationState* const none = nullptr;
    character->freezeAnimationState(none, nullptr);
    character->restoreAnimationState(none);
    EXPECT_FALSE(character->crossAnimateObject(none, 0.5F, 1, 0.2F, nullptr));
    EXPECT_FALSE(character->crossAnimateObject(none, 0.5F, 1, 0.2F, 0.3F, 2, 0.4F, 0.2F, nullptr));
    EXPECT_FALSE(character->crossAnimateObjectFrame(none, 0.5F, 1, 2.0F, nullptr));
    EXPECT_FALSE(character->crossAnimateObjectFrame(none, 0.5F, 1, 2.0F, 0.3F, 2, 4.0F, 0.2F, nullptr));
    EXPECT_FALSE(character->crossAnimateObject(none, 0.5F, &state, nullptr));
    EXPECT_FALSE(character->crossAnimateObject(&state, 0.5F, none, nullptr));
    EXPECT_FALSE(character->crossAnimateObject(none, 0.5F, &state, TW_BoneHandle("x", 4), group.get()));
    EXPECT_FALSE(character->crossAnimateObject(&state, 0.5F, none, TW_BoneHandle("x", 4), group.get()));
    EXPECT_EQ(character.getPose(), pose);
}

TEST(ObjectAnimationState, OfAnotherLengthWorksOnTheMeshesThatBothHave)
{
    Character character;
    TW_ObjectAnimationState longer(40);
    TW_ObjectAnimationState shorter(3);
    character->freezeAnimationState(&longer, nullptr);
    character->freezeAnimationState(&shorter, nullptr);
    EXPECT_TRUE(longer.accessStateFrozenVector()[10]);
    EXPECT_FALSE(longer.accessStateFrozenVector()[11]);
    const auto pose = character.getPose();
    longer.accessStateFrozenVector().assign(40, true);
    character->animateObjectFrame(2, 4.5F, nullptr);
    const auto played = character.getPose();
    character->restoreAnimationState(&shorter);
    EXPECT_EQ(character.getMatrix(2), pose[2]);
    EXPECT_EQ(character.getMatrix(3), played[3]);
    character->restoreAnimationState(&longer);
    EXPECT_EQ(character.getPose(), pose);
}

// Two poses blended after the second was moved so that the reference bones coincide.
class ReferenceBoneBlend : public testing::TestWithParam<const char*>
{
protected:
    ReferenceBoneBlend() : character(GetParam()), first(*character), second(*character)
    {
        character->animateObjectFrame(1, 4.0F, nullptr);
        character->freezeAnimationState(&second, nullptr);
        character->animateObjectFrame(2, 17.0F, nullptr);
        character->freezeAnimationState(&first, character.group({2, 4, 5}).get());
        for (std::size_t mesh = 0; mesh < Character::MESHES; ++mesh)
        {
            first.accessMatrixVector()[mesh] = character.getMatrix(mesh);  // read, frozen or not
        }
        character->animateObjectFrame(0, 0.0F, nullptr);
        character.takePose();
    }

    // What must come out for the bones of the group, `aligned` saying whether the second pose is moved.
    void expectBlend(const std::vector<std::size_t>& bones, bool aligned, std::size_t reference)
    {
        const auto pose1 = [this](std::size_t bone) { return support::toDouble(first.accessMatrixVector()[bone]); };
        const auto pose2 = [this](std::size_t bone) { return support::toDouble(second.accessMatrixVector()[bone]); };
        const PoseModel::Matrix move =
            aligned ? pose2(reference).inverse() * pose1(reference) : PoseModel::Matrix::identity();
        character.model.group = std::set<std::size_t>(bones.begin(), bones.end());
        character.model.restore(first.accessMatrixVector(), first.accessStateFrozenVector(), 1.0, false);
        for (const std::size_t bone : bones)
        {
            PoseModel::Matrix blend = pose1(bone);
            PoseModel::Matrix other = pose2(bone) * move;
            blend *= 0.3;
            other *= 0.7;
            character.model.pose[bone] = blend += other;
        }
        character.model.correct();
        character.expectModelPose("reference bone blend");
    }

    Character character;
    TW_ObjectAnimationState first;
    TW_ObjectAnimationState second;
};

TEST_P(ReferenceBoneBlend, AlignsTheSecondPoseOnTheFirst)
{
    const std::vector<std::size_t> bones = {3, 4, 5, 9};
    const auto group = character.group(bones);
    const long long allocations = S_Memory::sm_iNewCount;
    EXPECT_TRUE(character->crossAnimateObject(&first, 0.3F, &second, TW_BoneHandle("x", 4), group.get()));
    EXPECT_EQ(S_Memory::sm_iNewCount, allocations);
    expectBlend(bones, true, 4);
}

TEST_P(ReferenceBoneBlend, LeavesTheSecondPoseWhereItIsWhenTheReferenceGivesNoAlignment)
{
    const std::vector<std::size_t> bones = {3, 4, 5, 9};
    const auto group = character.group(bones);
    for (const int outside : {-1, 11, 1000})
    {
        EXPECT_TRUE(character->crossAnimateObject(&first, 0.3F, &second, TW_BoneHandle("x", outside), group.get()));
        expectBlend(bones, false, 0);
    }
    second.accessMatrixVector()[4] *= 0.0F;  // singular
    EXPECT_TRUE(character->crossAnimateObject(&first, 0.3F, &second, TW_BoneHandle("x", 4), group.get()));
    expectBlend(bones, false, 0);
}

TEST_P(ReferenceBoneBlend, WithoutAGroupRestoresTheFirstPose)
{
    EXPECT_TRUE(character->crossAnimateObject(&first, 0.3F, &second, TW_BoneHandle("x", 4), nullptr));
    character.model.restore(first.accessMatrixVector(), first.accessStateFrozenVector(), 1.0, false);
    character.expectModelPose("without a group");
    // A bone that neither state reaches is left alone.
    TW_ObjectAnimationState few(2);
    const auto pose = character.getPose();
    EXPECT_TRUE(character->crossAnimateObject(&few, 0.3F, &few, TW_BoneHandle("x", 0), character.group({9}).get()));
    Character::expectNear(support::toDouble(pose[8]), character.getMatrix(8), "outside the group");
    EXPECT_EQ(character.getMatrix(9).getTranslation(), pose[9].getTranslation());
}

INSTANTIATE_TEST_SUITE_P(CrossModes, ReferenceBoneBlend, testing::Values("linear", "normalized", "orthonormalized"),
                         [](const auto& mode) { return std::string(mode.param); });
}  // namespace
