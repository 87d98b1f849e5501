#include "tests/motion/moving_files.h"
#include "tests/support/expectations.h"

#include <tw2/core/exceptions.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/transform_block.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace TW2;
using support::getDifference;
using support::isSame;
using support::MovingFiles;
using support::takePose;

namespace
{
/// Animations 0 rest, 1 walk (1 s, steps at 0.25 s and 0.75 s), 2 run (0.667 s, the same steps), 3 wave (once, 1 s), 4
/// hold (twice the turns of walk).
struct AnimationMixer : testing::Test
{
    AnimationMixer()
    {
        m_files.addMotion(0, 11, "name rest", false);
        const std::string travel = m_files.writeAnimation("travel.tw", {makeTravel(31, 1.5f)});
        const std::string fast = m_files.writeAnimation("fast.tw", {makeTravel(21, 3.0f)});
        m_files.addMotion(1, 31, "name walk rootmotion \"" + travel + "\"" + makeSteps(0.25) + makeSteps(0.75));
        m_files.addMotion(2, 21, "name run rootmotion \"" + fast + "\"" + makeSteps(1.0 / 6.0) + makeSteps(0.5));
        m_files.addMotion(3, 31, "name wave event { time 0.9 name waved }", false);
        m_files.addMotion(4, 31, "name hold", true, 80.0f);
        m_object = m_files.build("orthonormalized");
        m_object->setName("guard");
    }
    static KeyframeAnimationChunk makeTravel(unsigned int frames, float distance)
    {
        KeyframeAnimationChunk track = support::makeTrack("travel", 0.0f, frames, 30);
        track.keys.back().matrix = support::Matrix::translation({0, 0, distance});
        return track;
    }
    static std::string makeSteps(double time) { return " event { time " + std::to_string(time) + " name step }"; }

    /// The pose of an operation on a copy of the object.
    template <typename Animate>
    std::vector<support::Matrix> poseOf(const Animate& animate)
    {
        TW_ObjectAnimation other(*m_object);
        animate(other);
        return takePose(other);
    }

    MovingFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace

TEST_F(AnimationMixer, OneToThreeAnimationsGiveTheBitsOfCrossAnimation)
{
    for (const char* crossMode : {"linear", "normalized", "orthonormalized"})
    {
        const auto object = m_files.build(crossMode);
        TW_ObjectAnimation other(*object);
        TW_AnimationMixer mixer(*object);
        const auto walk = mixer.play("walk");
        mixer.update(0.123);
        ASSERT_TRUE(other.animateObjectFrame(1, mixer.getFrame(walk), nullptr));
        EXPECT_LT(getDifference(takePose(*object), takePose(other)), 2e-7f) << "one: only corrected again";
        const auto run = mixer.play("run", {.fade = 1.0f});
        for (int i = 0; i < 20; ++i)
        {
            mixer.update(0.031);
            ASSERT_TRUE(other.crossAnimateObjectFrame(1, mixer.getFrame(walk), mixer.getWeight(walk), 2,
                                                      mixer.getFrame(run), nullptr));
            ASSERT_TRUE(isSame(takePose(*object), takePose(other))) << crossMode << " step " << i;
        }
        const auto hold = mixer.play("hold", {.fade = 1.0f});
        for (int i = 0; i < 20; ++i)
        {
            mixer.update(0.031);
            ASSERT_TRUE(other.crossAnimateObjectFrame(1, mixer.getFrame(walk), mixer.getWeight(walk), 2,
                                                      mixer.getFrame(run), mixer.getWeight(run), 4,
                                                      mixer.getFrame(hold), nullptr));
            ASSERT_TRUE(isSame(takePose(*object), takePose(other))) << crossMode << " step " << i;
        }
    }
}

TEST_F(AnimationMixer, WeightsAddUpAtEveryStepHoweverFadesOverlap)
{
    TW_AnimationMixer mixer(*m_object, 40);
    std::mt19937 random(11);
    std::uniform_real_distribution<float> any(0.0f, 1.0f);
    const char* names[] = {"walk", "run", "hold", "rest", "wave"};
    std::vector<TW_AnimationMixer::PlayId> played;
    for (int i = 0; i < 3000; ++i)
    {
        if (i % 7 == 0)
        {
            const char* name = names[random() % 5];
            const TW_PlayOptions options{.fade = any(random) * 0.5f};
            played.push_back(random() % 2 != 0 ? mixer.play(name, options) : mixer.crossFade(name, options));
        }
        mixer.update(static_cast<double>(any(random)) * 0.05);
        double sum = 0.0;
        std::vector<TW_AnimationMixer::PlayId> alive;
        for (const auto id : played)
        {
            sum += std::find(alive.begin(), alive.end(), id) == alive.end() ? static_cast<double>(mixer.getWeight(id))
                                                                            : 0.0;
            if (mixer.isPlaying(id))
            {
                alive.push_back(id);
            }
        }
        played = alive;
        ASSERT_NEAR(sum, 1.0, 1e-6) << "step " << i;
    }
    mixer.play("rest");
    mixer.update(0.0);
    mixer.update(0.0);
    EXPECT_EQ(mixer.getPlayCount(), 1u) << "what has faded out is gone";
}

TEST_F(AnimationMixer, AFadeIsStraightAndACrossFadeTakesUpWhatStillPlays)
{
    TW_AnimationMixer mixer(*m_object);
    const auto walk = mixer.play("walk");
    mixer.update(0.1);
    const auto run = mixer.crossFade("run", {.fade = 0.4f});
    EXPECT_EQ(mixer.crossFade("run", {.fade = 0.4f}), run) << "asked again every frame";
    mixer.update(0.1);
    EXPECT_NEAR(mixer.getWeight(run), 0.25f, 1e-6f);
    mixer.update(0.2);
    EXPECT_NEAR(mixer.getWeight(run), 0.75f, 1e-6f);
    EXPECT_EQ(mixer.crossFade("walk", {.fade = 0.1f}), walk);
    mixer.update(0.05);
    EXPECT_NEAR(mixer.getWeight(walk), 0.625f, 1e-6f);
    mixer.update(0.06);
    EXPECT_EQ(mixer.getWeight(walk), 1.0f);
    EXPECT_NEAR(mixer.getMoment(walk).m_dFrame, 0.51 * 30.0, 1e-5) << "its clock went on";
    EXPECT_EQ(mixer.findPlay("WALK"), walk);
    EXPECT_EQ(mixer.findPlay("run"), 0u);
    EXPECT_NE(mixer.play("walk"), walk) << "playing begins anew";
}

TEST_F(AnimationMixer, AWeightTakesBackThatSomethingIsStopped)
{
    TW_AnimationMixer mixer(*m_object);
    const auto walk = mixer.play("walk");
    const auto run = mixer.play("run", {.keepOthers = true});
    mixer.update(0.1);
    mixer.stop(run, 0.4f);
    mixer.update(0.1);
    EXPECT_EQ(mixer.findPlay("run"), 0u);
    mixer.setWeight(run, 0.0f, 0.3f);
    EXPECT_EQ(mixer.findPlay("run"), 0u) << "it is on its way out still";
    mixer.setWeight(run, 1.0f, 0.2f);
    EXPECT_EQ(mixer.findPlay("run"), run);
    mixer.update(0.3);
    EXPECT_NEAR(mixer.getWeight(run), 0.5f, 1e-6f);
    EXPECT_NEAR(mixer.getWeight(walk), 0.5f, 1e-6f);
    mixer.stop(run);
    mixer.update(0.1);
    mixer.setWeight(run, 1.0f);
    mixer.update(0.1);
    EXPECT_FALSE(mixer.isPlaying(run)) << "what has gone is gone";
    EXPECT_EQ(mixer.getWeight(walk), 1.0f);
}

TEST_F(AnimationMixer, WalkAndRunKeepTheirStepsTogether)
{
    TW_AnimationMixer mixer(*m_object);
    const auto walk = mixer.play("walk", {.start = 0.3f, .sync = 1});
    mixer.update(0.1);
    const auto run = mixer.play("run", {.fade = 1.0f, .sync = 1});
    double phase = 0.4;
    for (int i = 0; i < 70; ++i)
    {
        mixer.update(0.0125);
        // Rounds per second, by weight: the walk's 1, the run's 1.5.
        const double w = std::min(1.0, (i + 1) * 0.0125);
        phase = std::fmod(phase + 0.0125 * (1.0 * (1.0 - w) + 1.5 * w), 1.0);
        ASSERT_NEAR(mixer.getMoment(walk).m_dFrame / 30.0, phase, 1e-6) << i;
        ASSERT_NEAR(mixer.getMoment(run).m_dFrame / 20.0, phase, 1e-6) << i;
        std::vector<double> times;
        for (TW_MixerEvent event; mixer.nextEvent(event);)
        {
            times.push_back(event.seconds);
        }
        ASSERT_TRUE(times.empty() || times.size() == 2) << "both step at once";
        ASSERT_TRUE(times.empty() || std::abs(times[0] - times[1]) < 1e-6);
    }
}

TEST_F(AnimationMixer, EventsOfAllAnimationsComeOnceAndInTheOrderOfTime)
{
    std::mt19937 random(23);
    std::uniform_real_distribution<double> any(0.0, 1.0);
    TW_AnimationMixer mixer(*m_object);
    const auto walk = mixer.play("walk", {.keepOthers = true});
    const auto run = mixer.play("run", {.speed = -1.7f, .weight = 3.0f, .keepOthers = true});
    int walked = 0;
    int ran = 0;
    for (int i = 0; i < 5000; ++i)
    {
        const double step = i % 100 == 0 ? 5.0 * any(random) : 0.05 * any(random);
        mixer.update(step);
        double before = 0.0;
        for (TW_MixerEvent event; mixer.nextEvent(event);)
        {
            ASSERT_GE(event.seconds, before);
            ASSERT_LE(event.seconds, step + 1e-12);
            before = event.seconds;
            EXPECT_EQ(event.event->m_strName, "step");
            EXPECT_NEAR(event.weight, event.play == walk ? 0.25f : 0.75f, 1e-6f);
            ++(event.play == walk ? walked : ran);
        }
    }
    const auto passed = [](double frames, double length, double first, double second)
    { return std::floor((frames - first) / length) + std::floor((frames - second) / length) + 2; };
    const TW_ClockMoment w = mixer.getMoment(walk);
    const TW_ClockMoment r = mixer.getMoment(run);
    EXPECT_EQ(walked, passed(w.m_dFrame + 30.0 * static_cast<double>(w.m_iLoop), 30.0, 7.5, 22.5));
    EXPECT_EQ(ran, passed(-(r.m_dFrame + 20.0 * static_cast<double>(r.m_iLoop)), 20.0, 5.0, 15.0));
    mixer.seek(walk, 0.2f);
    mixer.seek(walk, 0.3f);
    mixer.setSpeed(run, 0.0f);
    mixer.update(0.0);
    TW_MixerEvent none;
    EXPECT_FALSE(mixer.nextEvent(none));
}

TEST_F(AnimationMixer, TravelIsBlendedByWeightAndAddsUp)
{
    TW_AnimationMixer mixer(*m_object);
    mixer.play("walk");
    TW_Travel place;
    for (int i = 0; i < 60000; ++i)
    {
        mixer.update(1.0 / 60.0);
        place = mixer.getTravel() * place;
    }
    EXPECT_NEAR(place.m_vTranslation.z, 1500.0, 1e-4 * 1500.0) << "a thousand loops";
    mixer.play("hold", {.fade = 1.0f});
    mixer.update(0.5);
    EXPECT_NEAR(mixer.getTravel().m_vTranslation.z, 0.5 * 0.75, 1e-5) << "half of it stands";
    mixer.play("run");
    mixer.update(0.5);
    EXPECT_NEAR(mixer.getTravel().m_vTranslation.z, 0.5 * 4.5, 1e-5);
}

TEST_F(AnimationMixer, ALayerTakesThePlaceOfTheBonesOfItsMask)
{
    TW_AnimationMixer mixer(*m_object);
    const int upper = mixer.addMask(TW_BoneMask::below(*m_object, "bone3"));
    const int soft = mixer.addMask(TW_BoneMask::below(*m_object, "bone2", 3));
    const int layer = mixer.addLayer({.mask = upper});
    mixer.play("walk");
    mixer.update(0.4);
    const std::vector<support::Matrix> below = takePose(*m_object);
    const auto wave = mixer.play("wave", {.layer = layer});
    mixer.update(0.0);
    std::vector<support::Matrix> both = takePose(*m_object);
    const auto waving = poseOf([&](TW_ObjectAnimation& o) { o.animateObjectFrame(3, mixer.getFrame(wave), nullptr); });
    for (std::size_t bone = 0; bone < both.size(); ++bone)
    {
        EXPECT_LT(getDifference({both[bone]}, {bone < 3 ? below[bone] : waving[bone]}), 2e-7f) << bone;
    }
    // By weight: the rows of the cross mode's blend.
    mixer.setLayerWeight(layer, 0.5f);
    mixer.update(0.0);
    for (std::size_t bone = 3; bone < both.size(); ++bone)
    {
        const M_Vector3Template<float> row = (below[bone].getRow(0) + waving[bone].getRow(0)).normalized();
        EXPECT_LT((takePose(*m_object)[bone].getRow(0) - row).length(), 1e-6f) << bone;
    }
    mixer.setLayerWeight(layer, 0.0f);
    mixer.update(0.0);
    EXPECT_LT(getDifference(takePose(*m_object), below), 1e-7f);
    // Something with a mask of its own goes over what its layer plays: a quarter per bone from bone2 on.
    const auto masked = mixer.play("hold", {.mask = soft});
    mixer.update(0.0);
    both = takePose(*m_object);
    const auto holding =
        poseOf([&](TW_ObjectAnimation& o) { o.animateObjectFrame(4, mixer.getFrame(masked), nullptr); });
    for (std::size_t bone = 0; bone < both.size(); ++bone)
    {
        const float weight = bone < 2 ? 0.0f : 0.25f * static_cast<float>(bone - 1);
        const M_Vector3Template<float> row =
            (below[bone].getRow(0) * (1.0f - weight) + holding[bone].getRow(0) * weight).normalized();
        EXPECT_LT((both[bone].getRow(0) - row).length(), 1e-6f) << bone;
    }
    EXPECT_NEAR(mixer.getTravel().m_vTranslation.length(), 0.0, 1e-12);
    mixer.play("run", {.mask = upper});
    mixer.update(0.1);
    EXPECT_NEAR(mixer.getTravel().m_vTranslation.z, 0.15, 1e-6) << "what some bones play carries nobody away";
    // Without something for all bones nothing is touched.
    TW_ObjectAnimation still(*m_object);
    TW_AnimationMixer partly(still);
    partly.play("hold", {.mask = partly.addMask(TW_BoneMask::below(still, "bone3"))});
    partly.update(0.4);
    EXPECT_TRUE(isSame(takePose(still), takePose(*m_object)));
    partly.play("walk");
    partly.update(0.0);
    still.animateObjectFrame(4, 12.0f, nullptr);
    TW_ObjectAnimation walking(*m_object);
    walking.animateObjectFrame(1, 0.0f, nullptr);
    const auto held = takePose(still);
    partly.update(0.0);
    for (std::size_t bone = 0; bone < held.size(); ++bone)
    {
        EXPECT_LT(getDifference({takePose(still)[bone]}, {bone < 3 ? takePose(walking)[bone] : held[bone]}), 2e-7f)
            << bone;
    }
}

TEST_F(AnimationMixer, BonesThatAHostHasTakenIntoABlockOfItsOwnArePlayedAsAllOthers)
{
    const auto play = [](TW_ObjectAnimation& object)
    {
        TW_AnimationMixer mixer(object);
        const int arms = mixer.addLayer({.mask = mixer.addMask(TW_BoneMask::below(object, "bone3"))});
        const int added = mixer.addLayer({.additive = true, .weight = 0.5f});
        mixer.play("walk", {.weight = 0.7f});
        mixer.play("run", {.weight = 0.3f, .keepOthers = true});
        mixer.play("wave", {.layer = arms});
        mixer.play("hold", {.layer = added});
        mixer.update(0.37);
        return takePose(object);
    };
    TW_ObjectAnimation other(*m_object);
    const auto expected = play(other);
    TW_ObjectAnimation taken(*m_object);
    P_TransformBlock own;
    P_BaseObject* const bones[] = {taken.getMesh(2), taken.getMesh(4)};
    own.adopt(bones, 2);
    EXPECT_TRUE(isSame(play(taken), expected)) << getDifference(takePose(taken), expected);
    own.release();
}

TEST_F(AnimationMixer, AddingAnAnimationToItselfChangesNothing)
{
    TW_AnimationMixer mixer(*m_object);
    const int layer = mixer.addLayer({.additive = true, .reference = "walk", .referenceTime = 0.25f});
    mixer.play("run");
    mixer.update(0.2);
    const auto before = takePose(*m_object);
    const auto added = mixer.play("walk", {.speed = 0.0f, .start = 0.25f, .layer = layer});
    mixer.update(0.0);
    EXPECT_LT(getDifference(takePose(*m_object), before), 1e-7f);
    mixer.seek(added, 0.7f);
    mixer.update(0.0);
    EXPECT_GT(getDifference(takePose(*m_object), before), 0.1f);
}

TEST_F(AnimationMixer, AnAdditiveLayerAddsPartOfATurnAsATurn)
{
    // Over its own reference the whole is the animation, the half turns by half the angle.
    TW_AnimationMixer mixer(*m_object);
    const int layer = mixer.addLayer({.additive = true});
    const auto hold = mixer.play("hold", {.speed = 0.0f});
    mixer.update(0.0);
    const auto reference = takePose(*m_object);
    const auto added = mixer.play("hold", {.speed = 0.0f, .start = 0.3f, .layer = layer});
    mixer.update(0.0);
    const auto whole = takePose(*m_object);
    const auto target = poseOf([&](TW_ObjectAnimation& o) { o.animateObjectFrame(4, mixer.getFrame(added), nullptr); });
    EXPECT_LT(getDifference(whole, target), 1e-6f);
    mixer.setLayerWeight(layer, 0.5f);
    mixer.update(0.0);
    const auto half = takePose(*m_object);
    for (std::size_t bone = 0; bone < half.size(); ++bone)
    {
        const TW_Rotation from = TW_Rotation::ofMatrix(reference[bone]);
        const TW_Rotation there = TW_Rotation::ofMatrix(target[bone]) * from.inverse();
        const TW_Rotation now = TW_Rotation::ofMatrix(half[bone]) * from.inverse();
        EXPECT_NEAR(now.getDegrees(), 0.5 * there.getDegrees(), 1e-3) << bone;
        EXPECT_LT((now * now * there.inverse()).getDegrees(), 1e-3) << bone;
        for (int row = 0; row < 3; ++row)
        {
            EXPECT_NEAR(half[bone].getRow(row).length(), 1.0f, 1e-6f) << "rigid stays rigid";
        }
    }
    (void)hold;
}

TEST_F(AnimationMixer, SomethingPlayedOnceFadesOutBeforeItsEndAndGoes)
{
    TW_AnimationMixer mixer(*m_object);
    const int layer = mixer.addLayer({});
    mixer.play("walk");
    const auto wave = mixer.play("wave", {.fade = 0.2f, .layer = layer, .fadeOut = 0.25f});
    float most = 0.0f;
    std::string heard;
    for (int i = 0; i < 110; ++i)
    {
        mixer.update(0.01);
        const float weight = mixer.getWeight(wave);
        const double time = (i + 1) * 0.01;
        const double expected = std::max(0.0, std::min({time / 0.2, 1.0, (1.0 - time) / 0.25}));
        EXPECT_NEAR(static_cast<double>(weight), expected, 0.05) << time;
        most = std::max(most, weight);
        for (TW_MixerEvent event; mixer.nextEvent(event);)
        {
            heard += event.event->m_strName == "waved" ? "waved" : "";
        }
    }
    EXPECT_EQ(most, 1.0f);
    EXPECT_EQ(heard, "waved");
    EXPECT_FALSE(mixer.isPlaying(wave));
    const auto held = mixer.play("wave", {.layer = layer});
    mixer.update(30.0);
    EXPECT_TRUE(mixer.isFinished(held));
    EXPECT_EQ(mixer.getFrame(held), 30.0f) << "it holds its last frame";
}

TEST_F(AnimationMixer, AStateIsRestoredToTheSameBits)
{
    const auto prepare = [&](TW_ObjectAnimation& object)
    {
        auto mixer = std::make_unique<TW_AnimationMixer>(object);
        mixer->addLayer({.additive = true, .mask = mixer->addMask(TW_BoneMask::below(object, "bone3"))});
        return mixer;
    };
    TW_ObjectAnimation twin(*m_object);
    const auto mixer = prepare(*m_object);
    const auto other = prepare(twin);
    mixer->play("walk", {.sync = 1});
    mixer->update(0.37);
    mixer->play("run", {.fade = 0.5f, .sync = 1});
    mixer->play("wave", {.fade = 0.3f, .speed = -1.0f, .start = 1.0f, .layer = 1, .fadeOut = 0.1f});
    mixer->update(0.05);
    S_Bytes state;
    mixer->saveState(state);
    other->restoreState(state);
    for (int i = 0; i < 200; ++i)
    {
        mixer->update(0.017);
        other->update(0.017);
        ASSERT_TRUE(isSame(takePose(*m_object), takePose(twin))) << i;
        ASSERT_EQ(mixer->getTravel(), other->getTravel());
        if (i == 50)
        {
            EXPECT_EQ(mixer->play("hold", {.fade = 0.2f}), other->play("hold", {.fade = 0.2f}));
        }
    }
    S_Bytes again;
    mixer->saveState(state);
    other->saveState(again);
    EXPECT_EQ(state, again);

    const auto messageOf = [&](const S_Bytes& bytes)
    { return support::messageOf([&] { other->restoreState(bytes); }); };
    EXPECT_THAT(messageOf({1, 2, 3}), testing::HasSubstr("\"guard (clone)\": mixer state: expected bytes that"));
    EXPECT_THAT(messageOf({state.begin(), state.end() - 8}), testing::HasSubstr(" bytes, found "));
    for (std::size_t size = 0; size < state.size(); ++size)
    {
        EXPECT_THROW(other->restoreState({state.data(), state.data() + size}), TW_Exception_InvalidMotion) << size;
    }
    TW_AnimationMixer plain(twin);
    EXPECT_THAT(support::messageOf([&] { plain.restoreState(state); }),
                testing::HasSubstr("expected 1 layers and 0 masks, found 2 and 1"));
    for (const bool longer : {false, true})
    {
        MovingFiles files;
        files.addMotion(0, 11, "name rest", false);
        files.addMotion(1, longer ? 51 : 31, longer ? "name walk" : "name limp");
        const auto stranger = files.build("orthonormalized");
        TW_AnimationMixer from(*m_object);
        TW_AnimationMixer to(*stranger);
        from.play("walk");
        from.saveState(again);
        EXPECT_THAT(support::messageOf([&] { to.restoreState(again); }), testing::HasSubstr("entry 0 is animation 1"));
        EXPECT_EQ(to.getPlayCount(), 0u) << "an animation of another character of the same number";
    }
    for (std::size_t byte = 40; byte < state.size(); byte += 8)
    {
        S_Bytes damaged = state;
        damaged[byte + 7] = 0xFF;  // a number that is none, or far outside
        try
        {
            other->restoreState(damaged);
        }
        catch (const TW_Exception_InvalidMotion&)
        {
        }
        other->update(0.01);  // whatever was taken can be played
    }
}

TEST_F(AnimationMixer, PlayingAllocatesNothingAndPlacesRunOutGracefully)
{
    TW_AnimationMixer mixer(*m_object, 3);
    const int mask = mixer.addMask(TW_BoneMask::below(*m_object, "bone2", 1));
    const int over = mixer.addLayer({.mask = mask});
    const int added = mixer.addLayer({.additive = true});
    S_Bytes state;
    mixer.saveState(state);
    state.reserve(4096);
    const long long before = S_Memory::sm_iNewCount;
    const auto first = mixer.play("walk");
    for (int i = 0; i < 300; ++i)
    {
        if (i % 10 == 0)
        {
            mixer.play(i % 20 == 0 ? "run" : "walk", {.fade = 0.2f, .sync = 1});
            mixer.play("wave", {.fade = 0.1f, .layer = i % 30 == 0 ? over : added, .fadeOut = 0.1f});
            mixer.crossFade("hold", {.fade = 0.1f, .mask = mask});
        }
        mixer.update(0.02);
        for (TW_MixerEvent event; mixer.nextEvent(event);)
        {
        }
        mixer.saveState(state);
        ASSERT_LE(mixer.getPlayCount(), 3u);
    }
    EXPECT_EQ(S_Memory::sm_iNewCount, before);
    EXPECT_FALSE(mixer.isPlaying(first));
}

TEST_F(AnimationMixer, WhatCannotBePlayedIsSaid)
{
    TW_AnimationMixer mixer(*m_object);
    EXPECT_THROW(mixer.play("jump"), TW_Exception_AnimationNotFound);
    EXPECT_EQ(mixer.play(99), 0u);
    EXPECT_EQ(support::messageOf([&] { mixer.play("walk", {.layer = 2}); }),
              "TW2: Motion of \"guard\": expected a layer number from 0 to 0, not 2");
    EXPECT_EQ(support::messageOf([&] { mixer.addLayer({.mask = 0}); }),
              "TW2: Motion of \"guard\": expected a mask number from 0 to -1, or "
              "-1 for none, not 0");
    mixer.stop(17);
    mixer.setWeight(17, 1.0f);
    const auto before = takePose(*m_object);
    mixer.update(1.0);
    EXPECT_TRUE(isSame(takePose(*m_object), before)) << "nothing plays, nothing moves";
    const auto walk = mixer.play("walk");
    mixer.update(std::nan(""));
    EXPECT_EQ(mixer.getFrame(walk), 0.0f);
    m_object->deleteAnimation(1);
    mixer.update(0.1);
    EXPECT_FALSE(mixer.isPlaying(walk)) << "an animation that the object has no more";
}

TEST_F(AnimationMixer, NumbersThatAreNoneOrEndlessLeavePoseAndTravelFinite)
{
    for (const float odd : {std::nanf(""), HUGE_VALF, -HUGE_VALF, 1e30f, -1e30f})
    {
        const auto object = m_files.build("orthonormalized");
        TW_AnimationMixer mixer(*object);
        const int layers[] = {mixer.addLayer({.additive = true, .weight = odd}), mixer.addLayer({.additive = true}),
                              mixer.addLayer({.mask = mixer.addMask(TW_BoneMask(*object, odd))})};
        mixer.setLayerWeight(layers[1], odd);
        for (const int layer : layers)
        {
            mixer.play("hold", {.layer = layer});
        }
        const auto walk = mixer.play("walk", {.sync = 1, .weight = odd});
        const auto run = mixer.play("run", {.fade = odd, .speed = odd, .start = odd, .keepOthers = true});
        mixer.setWeight(run, odd);
        double shares = -1.0;
        const auto expectFinite = [&](const char* what)
        {
            mixer.update(0.1);
            for (const support::Matrix& bone : takePose(*object))
            {
                EXPECT_TRUE(std::isfinite(bone.getRow(0).length() + bone.getTranslation().length())) << what << odd;
            }
            const auto& travel = mixer.getTravel();
            EXPECT_TRUE(std::isfinite(travel.m_vTranslation.length() + travel.m_rotation.m_dW)) << what << odd;
            shares = static_cast<double>(mixer.getWeight(walk)) + static_cast<double>(mixer.getWeight(run));
        };
        expectFinite("as played ");
        EXPECT_NEAR(shares, odd > 0.0f ? 1.0 : 0.0, 1e-6) << odd;
        S_Bytes state;
        mixer.saveState(state);
        EXPECT_NO_THROW(mixer.restoreState(state)) << odd;
        mixer.setWeight(walk, 1.0f);
        const auto still = mixer.play("run", {.speed = std::nanf(""), .sync = 1, .keepOthers = true});
        const float before = mixer.getFrame(walk);
        expectFinite("in step with what stands ");
        EXPECT_NE(mixer.getFrame(walk), before);
        mixer.setSpeed(still, odd);
        mixer.seek(walk, odd);
        expectFinite("after a seek ");
        mixer.update(static_cast<double>(odd));
        expectFinite("after a step ");
    }
}

TEST_F(AnimationMixer, EveryLevelOfDetailTakesThePose)
{
    const std::string name = m_files.writeScript();
    S_Script script(name.c_str());
    const int blocks[] = {0, 0};
    TW_ObjectAnimationLODs levels(&script, 2, blocks, false);
    TW_AnimationMixer mixer(levels);
    const int layer = mixer.addLayer({.additive = true, .mask = mixer.addMask(TW_BoneMask::below(levels, "bone1"))});
    mixer.play("walk");
    mixer.play("hold", {.start = 0.5f, .layer = layer});
    mixer.update(0.3);
    EXPECT_TRUE(isSame(takePose(*levels.getLODObject(0)), takePose(*levels.getLODObject(1))));
    EXPECT_GT(getDifference(takePose(*levels.getLODObject(1)), takePose(*m_object)), 0.01f);
}
