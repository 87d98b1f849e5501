#include "bench/yardstick.h"
#include "tests/support/keyframe_tracks.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <cstddef>
#include <random>
#include <vector>

namespace
{
using Matrix = M_Matrix4x3Template<float>;
using TW2::TW_KeyframeAnimation;

constexpr std::size_t bones = 64;

// A character's animation: two seconds, a key at every third frame on average.
struct Tracks
{
    std::vector<TW_KeyframeAnimation> animations;
    std::vector<const TW_KeyframeAnimation*> pointers;

    explicit Tracks(int mode, bool scaled = false)
    {
        std::mt19937 random(1);
        animations.reserve(bones);
        for (std::size_t bone = 0; bone < bones; ++bone)
        {
            const auto chunk = support::makeTrack(
                random, {.frames = 61, .keys = 20, .looping = true, .interpolationMode = mode, .scaled = scaled});
            pointers.push_back(&animations.emplace_back(chunk, false));
        }
    }
};

// Objects that play the same animation, each at a time of its own.
struct Objects
{
    std::vector<int> hints;
    std::vector<Matrix> matrices;

    explicit Objects(std::size_t count) : hints(count * bones), matrices(count * bones) {}
};

// Plays at 60 pictures a second an animation of 30 frames a second; `sample` takes the first bone and the frame.
template <typename Sample>
void play(benchmark::State& state, std::size_t objects, Sample sample)
{
    float frame = 0.0F;
    for (auto _ : state)
    {
        for (std::size_t object = 0; object < objects; ++object)
        {
            sample(object * bones, frame + static_cast<float>(object % 60));
        }
        frame = frame < 60.0F ? frame + 0.5F : 0.0F;
        benchmark::ClobberMemory();
    }
    const std::size_t items = objects * bones;
    TW2::bench::report(state, {.items = items, .bytes = items * sizeof(Matrix)});
}

void evaluate(benchmark::State& state, int mode, bool scaled)
{
    const auto objects = static_cast<std::size_t>(state.range(0));
    const Tracks tracks(mode, scaled);
    Objects crowd(objects);
    play(state, objects,
         [&](std::size_t first, float frame)
         {
             for (std::size_t bone = 0; bone < bones; ++bone)
             {
                 int& hint = crowd.hints[first + bone];
                 hint = tracks.pointers[bone]->animateFrameWithLastFrame(crowd.matrices[first + bone], frame, hint);
             }
         });
}
BENCHMARK_CAPTURE(evaluate, linear, 0, false)->Name("keyframe/evaluate_one_by_one")->Arg(1)->Arg(1000);
BENCHMARK_CAPTURE(evaluate, full, 0, true)->Name("keyframe/evaluate_one_by_one_scaled")->Arg(1);
}  // namespace
