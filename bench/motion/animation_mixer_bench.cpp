#include "bench/object/crowd.h"
#include "bench/yardstick.h"

#include <tw2/motion/animation_mixer.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{
using TW2::TW_ObjectAnimation;
using TW2::bench::Crowd;

// How many times as long the mixer takes for two animations as crossAnimateObject does.
double compareWithCross(TW2::TW_AnimationMixer& mixer)
{
    constexpr int frames = 200;
    TW2::TW_VirtualObject& object = mixer.getObject();
    const auto mix = [&]
    {
        for (int i = 0; i < frames; ++i)
        {
            mixer.update(1.0 / 60.0);
        }
    };
    const auto cross = [&]
    {
        for (int i = 0; i < frames; ++i)
        {
            const float frame = 0.5F * static_cast<float>(i % 120);
            object.crossAnimateObjectFrame(0, frame, 0.6F, 1, frame, nullptr);
        }
    };
    // In turn, several times: the machine's speed changes.
    double mixing = TW2::bench::measureBest(mix);
    double crossing = TW2::bench::measureBest(cross);
    for (int i = 0; i < 3; ++i)
    {
        mixing = std::min(mixing, TW2::bench::measureBest(mix));
        crossing = std::min(crossing, TW2::bench::measureBest(cross));
    }
    return mixing / crossing;
}

// Two animations of one object; with `layered` a layer for half of the bones.
void mix(benchmark::State& state, bool layered, bool additive)
{
    Crowd crowd(1, 0);
    std::unique_ptr<TW2::TW_AnimationMixer> mixer;
    crowd.step(
        [&](TW_ObjectAnimation& object, float)
        {
            mixer = std::make_unique<TW2::TW_AnimationMixer>(object);
            mixer->play(0, {.weight = 0.6F, .keepOthers = true});
            mixer->play(1, {.weight = 0.4F, .keepOthers = true});
            if (layered)
            {
                TW2::TW_BoneMask half(object);
                for (unsigned int bone = 0; bone < half.getBoneCount() / 2; ++bone)
                {
                    half.setWeight(bone, 0.0F);
                }
                const int layer = mixer->addLayer({.additive = additive, .mask = mixer->addMask(half)});
                mixer->play(2, {.layer = layer});
            }
        });
    for (auto _ : state)
    {
        mixer->update(1.0 / 60.0);
        benchmark::ClobberMemory();
    }
    if (!layered)
    {
        state.counters["x cross"] = compareWithCross(*mixer);
    }
    TW2::bench::report(
        state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(M_Matrix4x3Template<float>)});
}

void mixTwo(benchmark::State& state)
{
    mix(state, false, false);
}
BENCHMARK(mixTwo)->Name("motion/mix_two");

void mixTwoAndReplaceHalf(benchmark::State& state)
{
    mix(state, true, false);
}
BENCHMARK(mixTwoAndReplaceHalf)->Name("motion/mix_two_replace_half");

void mixTwoAndAddHalf(benchmark::State& state)
{
    mix(state, true, true);
}
BENCHMARK(mixTwoAndAddHalf)->Name("motion/mix_two_add_half");
}  // namespace
