#include "bench/yardstick.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/object_files.h"

#include <tw2/motion/animation_clock.h>
#include <tw2/motion/root_motion.h>

#include <cstddef>
#include <memory>
#include <string>

namespace
{
using TW2::KeyframeAnimationChunk;

// A walk of a second with two steps and a travel; the work is 256 steps of a clock of a 60th of a second.
constexpr std::size_t stepCount = 256;

std::unique_ptr<TW2::TW_ObjectAnimation> makeWalk()
{
    support::ObjectFiles files;
    files.addMesh("hips");
    KeyframeAnimationChunk pose = support::makeTrack("hips", 0.0F, 31, 30);
    pose.header.looping = true;
    KeyframeAnimationChunk travel = support::makeTrack("travel", 0.0F, 31, 30);
    travel.keys.back().matrix = M_Matrix4x3Template<float>::translation({0.0F, 0.0F, 1.5F});
    const std::string file = files.writeAnimation("travel.tw", {travel});
    files.addAnimation(1, {pose},
                       "rootmotion \"" + file + "\" event { time 0.25 name left } event { time 0.75 name right }");
    return files.build();
}

void goThroughEvents(benchmark::State& state)
{
    const auto walk = makeWalk();
    TW2::TW_AnimationClock clock(*walk, 1);
    std::size_t heard = 0;
    for (auto _ : state)
    {
        for (std::size_t step = 0; step < stepCount; ++step)
        {
            clock.advance(1.0 / 60.0);
            for (TW2::TW_EventIterator events = clock.getEvents(); events.next() != nullptr;)
            {
                ++heard;
            }
        }
        benchmark::DoNotOptimize(heard);
    }
    TW2::bench::report(state, {.items = stepCount, .bytes = stepCount * sizeof(TW2::TW_ClockStep)});
}
BENCHMARK(goThroughEvents)->Name("motion/clock_and_events");

void travel(benchmark::State& state)
{
    const auto walk = makeWalk();
    const TW2::TW_RootMotion motion(*walk, 1);
    TW2::TW_AnimationClock clock(*walk, 1);
    TW2::TW_Travel place;
    for (auto _ : state)
    {
        for (std::size_t step = 0; step < stepCount; ++step)
        {
            clock.advance(1.0 / 60.0);
            place = motion.getTravel(clock.getLastStep()) * place;
        }
        benchmark::DoNotOptimize(place);
    }
    TW2::bench::report(state, {.items = stepCount, .bytes = stepCount * sizeof(TW2::TW_Travel)});
}
BENCHMARK(travel)->Name("motion/travel");
}  // namespace
