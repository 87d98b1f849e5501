#include "tests/motion/mixer_fixture.h"

#include <tw2/lod/object_animation_lods.h>

#include <platform/runtime/script.h>
#include <platform/scene/transform_block.h>

using namespace TW2;
using support::getDifference;
using support::isSame;
using support::takePose;
using MixerLayers = support::MixerFixture;

TEST_F(MixerLayers, ALayerTakesThePlaceOfTheBonesOfItsMask)
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

TEST_F(MixerLayers, BonesThatAHostHasTakenIntoABlockOfItsOwnArePlayedAsAllOthers)
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

TEST_F(MixerLayers, AddingAnAnimationToItselfChangesNothing)
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

TEST_F(MixerLayers, AnAdditiveLayerAddsPartOfATurnAsATurn)
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

TEST_F(MixerLayers, EveryLevelOfDetailTakesThePose)
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
