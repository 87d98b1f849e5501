#include "tests/object/character.h"

#include <tw2/object/object_animation_state.h>

#include <functional>
#include <utility>

namespace
{
using TW2::TW_BoneGroupHandle;
using TW2::TW_ObjectAnimation;
using TW2::TW_ObjectAnimationState;

// What the calls of the table below work with: two frozen poses, the second of a few meshes only.
struct Poses
{
    explicit Poses(Character& character) : whole(*character), partial(*character)
    {
        character->animateObjectFrame(1, 11.0F, nullptr);
        character->freezeAnimationState(&whole, nullptr);
        character->animateObjectFrame(2, 5.0F, nullptr);
        character->freezeAnimationState(&partial, character.group({1, 4, 9, 10}).get());
    }

    TW_ObjectAnimationState whole;
    TW_ObjectAnimationState partial;
};

// A call, and the same in the model's steps; each gives the call's result.
struct Call
{
    const char* name;
    std::function<bool(TW_ObjectAnimation&, Poses&, TW_BoneGroupHandle*)> play;
    std::function<bool(PoseModel&, Poses&)> model;
};

void restore(PoseModel& model, TW_ObjectAnimationState& state, double weight, bool add)
{
    model.restore(state.accessMatrixVector(), state.accessStateFrozenVector(), weight, add);
}

bool corrected(PoseModel& model, bool result)
{
    model.correct();
    return result;
}

const Call CALLS[] = {
    {"an animation at a frame", [](auto& o, auto&, auto* g) { return o.animateObjectFrame(0, 7.3F, g); },
     [](auto& m, auto&) { return m.evaluate(0, 7.3F, 1.0, false); }},
    {"an animation that moves some meshes, past its end",
     [](auto& o, auto&, auto* g) { return o.animateObjectFrame(1, 47.6F, g); },
     [](auto& m, auto&) { return m.evaluate(1, 47.6F, 1.0, false); }},
    {"an animation of one mesh, at a time before 0",
     [](auto& o, auto&, auto* g) { return o.animateObject(-3, -0.3F, g); },
     [](auto& m, auto&) { return m.evaluate(-3, 25.0F * -0.3F, 1.0, false); }},
    {"an animation that moves nothing", [](auto& o, auto&, auto* g) { return o.animateObjectFrame(4, 2.5F, g); },
     [](auto& m, auto&) { return m.evaluate(4, 2.5F, 1.0, false); }},
    {"no animation", [](auto& o, auto&, auto* g) { return o.animateObject(7, 0.3F, g); },
     [](auto&, auto&) { return false; }},
    {"two animations", [](auto& o, auto&, auto* g) { return o.crossAnimateObjectFrame(0, 3.5F, 0.3F, 1, 12.25F, g); },
     [](auto& m, auto&) { return corrected(m, m.evaluate(0, 3.5F, 0.3, false) && m.evaluate(1, 12.25F, 0.7, true)); }},
    {"two animations at times, the first alone",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObject(2, 0.5F, 1.0F, 1, 0.9F, g); },
     [](auto& m, auto&) { return corrected(m, m.evaluate(2, 12.5F, 1.0, false) && m.evaluate(1, 22.5F, 0.0, true)); }},
    {"an animation and one that moves nothing",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObjectFrame(2, 2.0F, 0.5F, 4, 25.5F, g); },
     [](auto& m, auto&) { return corrected(m, m.evaluate(2, 2.0F, 0.5, false) && m.evaluate(4, 25.5F, 0.5, true)); }},
    {"the same animation twice",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObjectFrame(2, 2.0F, 0.5F, 2, 25.5F, g); },
     [](auto& m, auto&) { return corrected(m, m.evaluate(2, 2.0F, 0.5, false) && m.evaluate(2, 25.5F, 0.5, true)); }},
    {"three animations",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObjectFrame(0, 3.5F, 0.25F, 1, 12.25F, 0.25F, 2, 29.5F, g); },
     [](auto& m, auto&)
     {
         return corrected(m, m.evaluate(0, 3.5F, 0.25, false) && m.evaluate(1, 12.25F, 0.25, true) &&
                                 m.evaluate(2, 29.5F, 0.5, true));
     }},
    {"three animations at times, weights that do not add up",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObject(2, 0.5F, 1.5F, 1, 1.0F, 0.25F, 0, 0.1F, g); },
     [](auto& m, auto&)
     {
         return corrected(m, m.evaluate(2, 12.5F, 1.5, false) && m.evaluate(1, 25.0F, 0.25, true) &&
                                 m.evaluate(0, 2.5F, -0.75, true));
     }},
    {"a pose and an animation",
     [](auto& o, auto& p, auto* g) { return o.crossAnimateObjectFrame(&p.whole, 0.6F, 1, 8.5F, g); },
     [](auto& m, auto& p)
     {
         restore(m, p.whole, 0.6, false);
         return corrected(m, m.evaluate(1, 8.5F, 0.4, true));
     }},
    {"a partial pose and an animation at a time",
     [](auto& o, auto& p, auto* g) { return o.crossAnimateObject(&p.partial, 0.6F, 1, 0.5F, g); },
     [](auto& m, auto& p)
     {
         restore(m, p.partial, 0.6, false);
         return corrected(m, m.evaluate(1, 12.5F, 0.4, true));
     }},
    {"a pose and two animations",
     [](auto& o, auto& p, auto* g)
     { return o.crossAnimateObjectFrame(&p.whole, 0.5F, 0, 8.5F, 0.25F, 2, 9.75F, 0.5F, g); },
     [](auto& m, auto& p)
     {
         restore(m, p.whole, 0.5, false);
         return corrected(m, m.evaluate(0, 8.5F, 0.25, true) && m.evaluate(2, 9.75F, 0.5, true));
     }},
    {"a pose and two animations at times",
     [](auto& o, auto& p, auto* g) { return o.crossAnimateObject(&p.whole, 0.2F, 0, 0.3F, 0.3F, 1, 0.7F, 0.5F, g); },
     [](auto& m, auto& p)
     {
         restore(m, p.whole, 0.2, false);
         return corrected(m, m.evaluate(0, 7.5F, 0.3, true) && m.evaluate(1, 17.5F, 0.5, true));
     }},
    {"two poses", [](auto& o, auto& p, auto* g) { return o.crossAnimateObject(&p.whole, 0.75F, &p.partial, g); },
     [](auto& m, auto& p)
     {
         restore(m, p.whole, 0.75, false);
         restore(m, p.partial, 0.25, true);
         return corrected(m, true);
     }},
    {"a first animation that does not exist",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObjectFrame(9, 3.5F, 0.3F, 1, 12.25F, g); },
     [](auto& m, auto&) { return corrected(m, false); }},
    {"a second animation that does not exist",
     [](auto& o, auto&, auto* g) { return o.crossAnimateObjectFrame(0, 3.5F, 0.3F, 9, 2.0F, 0.3F, 1, 2.0F, g); },
     [](auto& m, auto&)
     {
         m.evaluate(0, 3.5F, 0.3, false);
         return corrected(m, false);
     }},
    {"a pose and an animation that does not exist",
     [](auto& o, auto& p, auto* g) { return o.crossAnimateObject(&p.whole, 0.5F, 9, 1.0F, 0.2F, 0, 1.0F, 0.3F, g); },
     [](auto& m, auto& p)
     {
         restore(m, p.whole, 0.5, false);
         return corrected(m, false);
     }},
};

class PlaybackInEveryCrossMode : public testing::TestWithParam<const char*>
{
};

// Every call twice, so that the second one starts from hints that the first has left, with all meshes and with some.
TEST_P(PlaybackInEveryCrossMode, EachCallGivesTheModelsPoseAndAllocatesNothing)
{
    Character character(GetParam());
    Poses poses(character);
    const auto some = character.group({0, 3, 5, 6, 8, 9, 10});
    for (const Call& call : CALLS)
    {
        for (TW_BoneGroupHandle* group : {static_cast<TW_BoneGroupHandle*>(nullptr), some.get()})
        {
            for (int round = 0; round < 2; ++round)
            {
                character->animateObjectFrame(2, 7.5F, nullptr);
                character->accessMeshTransforms().updateWorldMatrices();
                character.takePose();
                character.model.group.reset();
                if (group)
                {
                    character.model.group = {0, 3, 5, 6, 8, 9, 10};
                }
                const long long allocations = S_Memory::sm_iNewCount;
                const bool result = call.play(*character, poses, group);
                EXPECT_EQ(S_Memory::sm_iNewCount, allocations) << call.name;
                EXPECT_EQ(result, call.model(character.model, poses)) << call.name;
                character.expectModelPose(call.name + std::string(group ? ", some meshes" : ", all meshes"));
            }
        }
    }
}

TEST_P(PlaybackInEveryCrossMode, SubAnimationMovesTheMeshesThatHaveATrackPartOfTheWay)
{
    Character character(GetParam());
    const std::pair<int, float> cases[] = {{1, 0.3F}, {1, 0.0F}, {0, 1.0F}, {1, 2.0F}, {-3, -0.5F}, {9, 0.5F}};
    for (const auto& [index, weight] : cases)
    {
        character->animateObjectFrame(2, 7.5F, nullptr);
        character->accessMeshTransforms().updateWorldMatrices();
        character.takePose();
        const long long allocations = S_Memory::sm_iNewCount;
        const bool result = character->subAnimateObject(index, 0.5F, weight);
        EXPECT_EQ(S_Memory::sm_iNewCount, allocations);
        EXPECT_EQ(result, character.model.approach(index, 12.5F, static_cast<double>(weight))) << index;
        character.expectModelPose("animation " + std::to_string(index) + ", weight " + std::to_string(weight));
    }
}

INSTANTIATE_TEST_SUITE_P(CrossModes, PlaybackInEveryCrossMode,
                         testing::Values("linear", "normalized", "orthonormalized"),
                         [](const auto& mode) { return std::string(mode.param); });

TEST(Playback, RowsWithoutADirectionStayAndNothingIsProjectedOnThem)
{
    Character character("orthonormalized");
    character->getMesh(0)->setMatrix({{{0, 0, 0}, {0, 2, 0}, {0, 0, 0}, {1, 2, 3}}});
    EXPECT_FALSE(character->crossAnimateObjectFrame(99, 0.0F, 0.5F, 1, 0.0F, nullptr));
    EXPECT_EQ(character.getMatrix(0), (Character::Matrix{{{0, 0, 0}, {0, 1, 0}, {0, 0, 0}, {1, 2, 3}}}));
}

TEST(Playback, AnUnknownAnimationLeavesEverythingValid)
{
    Character character;
    character->accessMeshTransforms().updateWorldMatrices();
    const auto pose = character.getPose();
    EXPECT_FALSE(character->animateObject(77, 0.5F, nullptr));
    EXPECT_FALSE(character->updateVisibility(77, 0.5F));
    EXPECT_EQ(character.getPose(), pose);
    EXPECT_TRUE(character->getMesh(3)->isObjectToWorldMatrixValid());
}

TEST(Playback, OnlyWhatMovesIsOutOfDateAfterwards)
{
    Character character;
    character->deleteAnimation(0);
    character->accessMeshTransforms().updateWorldMatrices();
    EXPECT_TRUE(character->animateObjectFrame(-3, 3.0F, nullptr));  // mesh 3; 4 to 7 hang below
    for (unsigned int mesh = 0; mesh < Character::MESHES; ++mesh)
    {
        EXPECT_EQ(character->getMesh(mesh)->isObjectToWorldMatrixValid(), mesh < 3 || mesh > 7) << mesh;
    }
}

TEST(Playback, AMeshWhoseMatrixAnotherOwnerHoldsIsPlayedAllTheSame)
{
    Character character("normalized");
    P_BaseObject* taken = character->getMesh(5);
    P_TransformBlock elsewhere;
    elsewhere.adopt(&taken, 1);
    const auto some = character.group({0, 4, 5, 9});
    for (TW_BoneGroupHandle* group : {static_cast<TW_BoneGroupHandle*>(nullptr), some.get()})
    {
        character.takePose();
        if (group)
        {
            character.model.group = {0, 4, 5, 9};
        }
        EXPECT_TRUE(character->crossAnimateObjectFrame(1, 4.25F, 0.5F, 2, 8.5F, group));
        character.model.evaluate(1, 4.25F, 0.5, false);
        character.model.evaluate(2, 8.5F, 0.5, true);
        character.model.correct();
        character.expectModelPose(group ? "some meshes" : "all meshes");
    }
}

TEST(Playback, AMeshAddedLaterStaysWhereItIsUntilAnAnimationMovesIt)
{
    Character character;
    auto* prop = new P_VirtualObject();
    prop->setName("prop");
    prop->setPosition(1.0F, 2.0F, 3.0F);
    prop->addTo(character->getMesh(4));
    character->addMesh(prop);
    const auto hold = character.group({4});
    EXPECT_TRUE(character->animateObjectFrame(1, 4.0F, nullptr));
    EXPECT_EQ(prop->getPosition(), (M_Vector3Template<float>{1.0F, 2.0F, 3.0F}));
    character.model.evaluate(1, 4.0F, 1.0, false);
    character.expectModelPose("after a mesh was added");
    EXPECT_EQ(prop->getObjectToWorldMatrix(), prop->getMatrix() * character->getMesh(4)->getObjectToWorldMatrix());
}

TEST(Playback, MoreMeshesThanAnyInternalListAreAllPlayed)
{
    constexpr unsigned int COUNT = 301;
    support::ObjectFiles files;
    std::vector<TW2::KeyframeAnimationChunk> everySecond;
    for (unsigned int i = 0; i < COUNT; ++i)
    {
        files.addMesh(Character::name(i));
        if (i % 2 == 0)
        {
            everySecond.push_back(support::makeTrack(Character::name(i), 1.0F + static_cast<float>(i)));
        }
    }
    files.addAnimation(0, everySecond);
    const auto object = files.build();
    std::vector<std::size_t> some;
    for (unsigned int i = 0; i < COUNT; i += 1 + i % 3 / 2)
    {
        some.push_back(i);
    }
    const auto group = support::makeGroup(*object, some);
    for (TW_BoneGroupHandle* chosen : {group.get(), static_cast<TW_BoneGroupHandle*>(nullptr)})
    {
        object->accessMeshTransforms().updateWorldMatrices();
        EXPECT_TRUE(object->animateObjectFrame(0, 10.0F, chosen));
        for (unsigned int i = 0; i < COUNT; ++i)
        {
            const bool moves = i % 2 == 0 && (!chosen || group->hasMesh(object->getMesh(i)));
            EXPECT_EQ(object->getMesh(i)->getPosition().x, moves ? 1.0F + static_cast<float>(i) : 0.0F) << i;
            EXPECT_EQ(object->getMesh(i)->isObjectToWorldMatrixValid(), !moves) << i;
        }
    }
}
}  // namespace
