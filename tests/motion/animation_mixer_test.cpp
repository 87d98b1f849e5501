#include "tests/motion/mixer_fixture.h"

#include <tw2/core/exceptions.h>

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace TW2;
using support::getDifference;
using support::isSame;
using support::MovingFiles;
using support::takePose;
using AnimationMixer = support::MixerFixture;

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
    mixer.update(0.1);
    EXPECT_NEAR(mixer.getWeight(run), 0.25f, 1e-6f);
    EXPECT_EQ(mixer.crossFade("run", {.fade = 0.4f}), run) << "asked again every frame";
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
    const auto first = mixer.play("run", {.fade = 0.1F});
    const auto second = mixer.play("run", {.fade = 0.1F});
    mixer.stop(first, 1.0F);
    mixer.stop(second, 1.0F);
    EXPECT_EQ(mixer.crossFade("run", {.fade = 0.1F}), second) << "of what goes the last";
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
    for (const float standing : {0.0f, 1.0f})
    {
        const auto spin = mixer.play("spin");
        mixer.play("hold", {.weight = standing, .keepOthers = true});
        mixer.update(0.5);
        const TW_Rotation turned = TW_Rotation::aboutAxis({0, 1, 0}, 45.0 * static_cast<double>(mixer.getWeight(spin)));
        EXPECT_LT((mixer.getTravel().m_rotation * turned.inverse()).getDegrees(), 1e-3);
    }
}

TEST_F(AnimationMixer, WhatEndsFadesOutBeforeItsEndAndGoes)
{
    TW_AnimationMixer mixer(*m_object);
    const int layer = mixer.addLayer({});
    mixer.play("walk");
    struct Case
    {
        const char* m_szName;
        int m_iLoops;
        float m_fSpeed;
        double m_dSeconds;
        const char* m_szHeard;
    };
    // Backwards the rounds count below the one in which playing begins.
    for (const Case& each :
         {Case{"wave", 0, 1.0f, 1.0, "waved"}, Case{"wave", 0, -1.0f, 1.0, "waved"},
          Case{"walk", 2, 1.0f, 2.0, "stepstepstepstep"}, Case{"walk", 1, 1.0f, 1.0, "stepstep"},
          Case{"walk", 2, -1.0f, 3.0, "stepstepstepstepstepstep"}, Case{"walk", 1, -2.0f, 1.0, "stepstepstepstep"}})
    {
        SCOPED_TRACE(testing::Message() << each.m_szName << " x " << each.m_iLoops << " at " << each.m_fSpeed);
        const auto played = mixer.play(each.m_szName, {.fade = 0.2f,
                                                       .speed = each.m_fSpeed,
                                                       .start = each.m_fSpeed < 0.0f ? 1.0f : 0.0f,
                                                       .loops = each.m_iLoops,
                                                       .layer = layer,
                                                       .fadeOut = 0.25f});
        float most = 0.0f;
        std::string heard;
        for (double time = 0.01; time < each.m_dSeconds + 0.1; time += 0.01)
        {
            mixer.update(0.01);
            const float weight = mixer.getWeight(played);
            const double expected = std::max(0.0, std::min({time / 0.2, 1.0, (each.m_dSeconds - time) / 0.25}));
            EXPECT_NEAR(static_cast<double>(weight), expected, 0.05) << time;
            most = std::max(most, weight);
            for (TW_MixerEvent event; mixer.nextEvent(event);)
            {
                heard += event.play == played ? event.event->m_strName.c_str() : "";
            }
        }
        EXPECT_EQ(most, 1.0f);
        EXPECT_EQ(heard, each.m_szHeard);
        EXPECT_FALSE(mixer.isPlaying(played));
    }
    const auto leaving = mixer.play("wave", {.layer = layer, .fadeOut = 0.3f});
    mixer.update(0.5);
    mixer.play("walk", {.fade = 2.0f, .layer = layer});
    mixer.update(0.3);
    mixer.update(0.1);
    EXPECT_NEAR(mixer.getWeight(leaving), 0.8f, 1e-3f) << "what already leaves does not hurry at its end";
    const auto held = mixer.play("wave", {.layer = layer});
    mixer.update(30.0);
    EXPECT_TRUE(mixer.isFinished(held));
    EXPECT_EQ(mixer.getFrame(held), 30.0f) << "it holds its last frame";
    mixer.seek(held, 0.5f);
    EXPECT_FALSE(mixer.isFinished(held));
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
    unsigned int refused = 0;
    for (std::size_t byte = 40; byte < state.size(); byte += 8)
    {
        S_Bytes damaged = state;
        const double below = -1.0;
        std::memcpy(&damaged[byte], &below, sizeof(below));
        try
        {
            other->restoreState(damaged);
        }
        catch (const TW_Exception_InvalidMotion&)
        {
            ++refused;
        }
    }
    EXPECT_EQ(refused, 11U) << "frames, weights, targets, what is left of fades, and identities";
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

TEST_F(AnimationMixer, PlacesRunOutGracefully)
{
    TW_AnimationMixer mixer(*m_object, 3);
    const int mask = mixer.addMask(TW_BoneMask::below(*m_object, "bone2", 1));
    const int over = mixer.addLayer({.mask = mask});
    const int added = mixer.addLayer({.additive = true});
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
                EXPECT_TRUE(support::isFinite(bone)) << what << odd;
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
