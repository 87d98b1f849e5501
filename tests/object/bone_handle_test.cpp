#include "tests/object/character.h"
#include "tests/support/expectations.h"

#include <tw2/core/exceptions.h>
#include <tw2/object/object_animation_state.h>

#include <gmock/gmock.h>

namespace
{
using TW2::TW_BoneGroupHandle;
using TW2::TW_BoneHandle;

TEST(BoneHandle, IsFoundWhateverTheCaseAndCarriesTheMeshesOwnName)
{
    Character character;
    TW_BoneHandle handle = character->getBoneHandle("BONE4");
    EXPECT_TRUE(handle.isConstructed());
    EXPECT_EQ(handle.getBoneName(), "Bone4");
    EXPECT_EQ(handle.getBoneIndex(), 4U);
    EXPECT_EQ(handle.getBoneObject(), nullptr);
    handle.attach(character.get());
    EXPECT_EQ(handle.getBoneObject(), character->getMesh(4));
    EXPECT_EQ(handle.getTWParentObject(), character.get());
    const TW_BoneHandle copy = handle;
    handle.detach();
    EXPECT_EQ(handle.getTWParentObject(), nullptr);
    EXPECT_EQ(copy.getBoneObject(), character->getMesh(4));
    character->setName("soldier");
    EXPECT_EQ(support::messageOf([&] { (void)character->getBoneHandle("tail"); }),
              "TW2: Bone \"tail\" not found from object \"soldier\"");
    EXPECT_THROW((void)character->getBoneHandle("tail"), TW2::TW_Exception_BoneNotFound);
}

TEST(BoneHandle, AnUnknownNameIsToldWithThoseThatAreLikeIt)
{
    Character character;
    character->setName("soldier");
    character->getMesh(5)->setName("Hand_L");
    character->getMesh(6)->setName("Hand_R");
    const auto complain = [&](const char* name)
    { return support::complaintOf<TW2::TW_Exception_BoneNotFound>([&] { (void)character->getBoneHandle(name); }); };
    EXPECT_EQ(complain("hand_m"), R"(TW2: Bone "hand_m" not found from object "soldier" (it has "Hand_L", "Hand_R"))");
    EXPECT_EQ(complain("handr"), R"(TW2: Bone "handr" not found from object "soldier" (it has "Hand_R", "Hand_L"))");
    const std::string hands = R"((it has "Hand_L", "Hand_R"))";
    const std::string first = R"((it has "Bone0", "Bone1", "Bone2", "Bone3", "Bone4", ...))";
    // Like are names that half the letters of the longer one make equal: put in, taken out or exchanged.
    for (const auto& [name, expected] :
         {std::pair{"xyz", first}, {"ha_l", hands}, {"hand_lwwwwww", R"((it has "Hand_L"))"}, {"wwwwwwwhand_l", first}})
    {
        EXPECT_EQ(complain(name),
                  std::string("TW2: Bone \"") + name + "\" not found from object \"soldier\" " + expected);
    }
    for (const auto& [mesh, name] : {std::pair{2U, "Hand_1"}, {3U, "Hand_2"}, {4U, "Hand_3"}})
    {
        character->getMesh(mesh)->setName(name);
    }
    EXPECT_THAT(complain("hand_x"), testing::EndsWith(R"("Hand_L", "Hand_R"))")) << "five are all";
    // Names so long are not compared.
    const std::string longer(101, 'n');
    character->getMesh(7)->setName(longer.c_str());
    EXPECT_THAT(complain(longer.substr(1).c_str()), testing::HasSubstr(R"("Bone0", "Bone1", "Hand_1")"));
    EXPECT_EQ(support::complaintOf([] { (void)TW2::TW_ObjectAnimation().getBoneHandle("tail"); }),
              R"(TW2: Bone "tail" not found from object "" (it has none))");
}

#if GTEST_HAS_DEATH_TEST
TEST(BoneHandleDeathTest, DebugBuildsAssertThatAHandleIsAttached)
{
    TW_BoneHandle handle("bone", 1);
    EXPECT_DEBUG_DEATH(static_cast<void>(handle.getMatrix()), "attach the handle first");
    EXPECT_DEBUG_DEATH(static_cast<void>(handle.accessMatrix()), "attach the handle first");
    EXPECT_DEBUG_DEATH(static_cast<void>(handle.getWorldMatrix()), "attach the handle first");
}
#endif

TEST(BoneHandle, IsThatOfTheFirstMeshWhichHasTheNameNow)
{
    Character character;
    character->getMesh(6)->setName("helmet");
    character->getMesh(2)->setName("HELMET");
    const TW_BoneHandle handle = character->getBoneHandle("Helmet");
    EXPECT_EQ(handle.getBoneIndex(), 2U);
    EXPECT_EQ(handle.getBoneName(), "HELMET");
    EXPECT_THROW((void)character->getBoneHandle("bone6"), TW2::TW_Exception_BoneNotFound);
}

TEST(BoneHandle, GivesTheBonesMatricesAndMarksWhatIsWritten)
{
    Character character;
    TW_BoneHandle handle = character->getBoneHandle("bone2");
    handle.attach(character.get());
    const P_VirtualObject& hand = *character->getMesh(6);  // four bones below
    const Character::Matrix before = hand.getObjectToWorldMatrix();
    EXPECT_EQ(&handle.getMatrix(), &character.getMatrix(2));
    handle.accessMatrix().m[3][0] += 10.0F;
    EXPECT_EQ(hand.getObjectToWorldMatrix().m[3][0], before.m[3][0] + 10.0F);
    EXPECT_EQ(handle.getWorldMatrix(), character->getMesh(2)->getObjectToWorldMatrix());
}

TEST(BoneHandle, WithoutABoneItShowsIdentitiesAndKeepsNothing)
{
    Character character;
    TW_BoneHandle beyond("ghost", 99);
    beyond.attach(character.get());
    TW_BoneHandle negative("ghost", -1);
    negative.attach(character.get());
    for (TW_BoneHandle* handle : {&beyond, &negative})
    {
        EXPECT_EQ(handle->getBoneObject(), nullptr);
        handle->accessMatrix().m[0][0] = 5.0F;
        EXPECT_EQ(handle->getMatrix(), Character::Matrix::identity());
        EXPECT_EQ(handle->getWorldMatrix(), Character::Matrix::identity());
    }
    TW_BoneGroupHandle group(1, &beyond);
    group.attach(character.get());
    EXPECT_FALSE(group.hasMesh(nullptr));
    beyond.destruct();
    EXPECT_FALSE(beyond.isConstructed());
    EXPECT_EQ(beyond.getBoneName(), "");
}

TEST(BoneGroupHandle, ContainsMeshesFromAttachUntilDetachOnly)
{
    Character character;
    TW_BoneHandle handles[] = {character->getBoneHandle("bone7"), character->getBoneHandle("bone1")};
    handles[0].attach(character.get());
    TW_BoneGroupHandle group(2, handles);
    const auto pose = character.getPose();
    EXPECT_TRUE(character->animateObjectFrame(2, 3.0F, &group));
    EXPECT_EQ(character.getPose(), pose);

    group.attach(character.get());
    ASSERT_EQ(group.getTotalHandles(), 2);
    EXPECT_EQ(group.getHandle(1).getBoneObject(), character->getMesh(1));
    EXPECT_TRUE(group.hasMesh(character->getMesh(7)));
    EXPECT_FALSE(group.hasMesh(character->getMesh(0)));
    const TW_BoneGroupHandle copy = group;
    EXPECT_TRUE(copy.hasMesh(character->getMesh(7)));

    group.detach();
    EXPECT_EQ(group.getHandle(0).getBoneObject(), nullptr);
    EXPECT_TRUE(character->animateObjectFrame(2, 3.0F, &group));
    EXPECT_EQ(character.getPose(), pose);
    group.construct(-5, nullptr);
    EXPECT_EQ(group.getTotalHandles(), 0);
    group.construct(2, nullptr);
    EXPECT_TRUE(group.isConstructed());
    EXPECT_EQ(group.getTotalHandles(), 0);
}

TEST(BoneGroupHandle, IsConstructedAnewFromItsOwnHandlesOrNotAtAll)
{
    Character character;
    const auto group = character.group({7, 1});
    group->construct(1, &group->getHandle(1));
    ASSERT_EQ(group->getTotalHandles(), 1);
    EXPECT_EQ(group->getHandle(0).getBoneName(), "Bone1");
    EXPECT_FALSE(group->hasMesh(character->getMesh(1)));
    TW_BoneHandle handle = group->getHandle(0);
    TW_BoneGroupHandle dropped(*group);
    dropped.destruct();
    EXPECT_EQ(dropped.getTotalHandles(), 0);
    handle.construct(handle.getBoneName(), 4);
    EXPECT_EQ(handle.getBoneName(), "Bone1");
    EXPECT_EQ(handle.getBoneIndex(), 4U);
    EXPECT_EQ(handle.getBoneObject(), nullptr);

    const S_String longName(50, 'x');
    S_Memory::failAllocation(1);
    EXPECT_THROW(handle.construct(longName, 3), S_MemoryException_Allocation);
    S_Memory::failAllocation(1);
    EXPECT_THROW(group->construct(1, &handle), S_MemoryException_Allocation);
    S_Memory::failAllocation(0);
    EXPECT_FALSE(handle.isConstructed());
    EXPECT_EQ(handle.getBoneName(), "");
    EXPECT_FALSE(group->isConstructed());
    EXPECT_EQ(group->getTotalHandles(), 0);
}

// Moves with the group and reports which meshes moved.
std::vector<unsigned int> movedBy(TW2::TW_ObjectAnimation& object, TW_BoneGroupHandle& group)
{
    std::vector<unsigned int> moved;
    for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
    {
        object.getMesh(mesh)->setPosition(-1.0F, -1.0F, -1.0F);
    }
    object.animateObjectFrame(2, 3.0F, &group);
    for (unsigned int mesh = 0; mesh < object.getTotalMeshes(); ++mesh)
    {
        if (object.getMesh(mesh)->getPosition() != M_Vector3Template<float>{-1.0F, -1.0F, -1.0F})
        {
            moved.push_back(mesh);
        }
    }
    return moved;
}

// A group remembers which meshes of an object it has; the memory must follow every change of either.
TEST(BoneGroupHandle, ServesSeveralObjectsAndFollowsTheirMeshes)
{
    Character first;
    Character second;
    const auto group = first.group({2, 5});
    EXPECT_EQ(movedBy(*first, *group), (std::vector<unsigned int>{2, 5}));
    EXPECT_EQ(movedBy(*second, *group), (std::vector<unsigned int>{}));
    group->attach(second.get());
    EXPECT_EQ(movedBy(*second, *group), (std::vector<unsigned int>{2, 5}));
    EXPECT_EQ(movedBy(*first, *group), (std::vector<unsigned int>{2, 5}));  // until it is detached
    group->attach(nullptr);
    group->detach();
    group->attach(second.get());
    EXPECT_EQ(movedBy(*first, *group), (std::vector<unsigned int>{}));

    // More meshes than the group has met: it is asked mesh by mesh.
    auto* prop = new P_VirtualObject();
    prop->setName("prop");
    second->addMesh(prop);
    EXPECT_EQ(movedBy(*second, *group), (std::vector<unsigned int>{2, 5}));
    group->attach(second.get());
    EXPECT_EQ(movedBy(*second, *group), (std::vector<unsigned int>{2, 5}));
}

TEST(BoneGroupHandle, AFailedAllocationLeavesNothingBehind)
{
    Character character;
    const TW_BoneHandle handles[] = {character->getBoneHandle("bone7"), TW_BoneHandle(S_String(50, 'x').c_str(), 3)};
    support::expectNothingLeftByFailedAllocations(
        [&]
        {
            TW_BoneGroupHandle group(2, handles);
            group.attach(character.get());
            TW_BoneGroupHandle copy;
            copy = group;
            const TW2::TW_ObjectAnimationState state(*character);
            const TW2::TW_ObjectAnimationState stateCopy(state);
        });
}
}  // namespace
