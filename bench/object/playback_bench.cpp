#include "bench/object/crowd.h"
#include "bench/yardstick.h"

#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation_state.h>

#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

namespace
{
using TW2::TW_ObjectAnimation;
using TW2::bench::Crowd;

constexpr int WALK = 0;
constexpr int RUN = 1;
constexpr int WAVE = 2;

// One object, and a crowd whose matrices do not fit into the nearest caches.
void oneAndCrowd(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1)->Arg(1000);
}

template <typename Action>
void run(benchmark::State& state, Action&& action, int mode = 0)
{
    Crowd crowd(static_cast<std::size_t>(state.range(0)), mode);
    for (auto _ : state)
    {
        crowd.step(action);
        benchmark::ClobberMemory();
    }
    if (crowd.getBytesPerBone() > 0.0)
    {
        state.counters["heap bytes/bone"] = crowd.getBytesPerBone();
    }
    TW2::bench::report(
        state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(M_Matrix4x3Template<float>)});
}

void play(benchmark::State& state)
{
    run(state, [](TW_ObjectAnimation& object, float frame) { object.animateObjectFrame(WALK, frame, nullptr); });
}
BENCHMARK(play)->Name("object/play")->Apply(oneAndCrowd);

void playNormalizedTracks(benchmark::State& state)
{
    run(
        state, [](TW_ObjectAnimation& object, float frame) { object.animateObjectFrame(WALK, frame, nullptr); }, 1);
}
BENCHMARK(playNormalizedTracks)->Name("object/play_normalized_tracks")->Apply(oneAndCrowd);

void playWithWorldMatrices(benchmark::State& state)
{
    run(state,
        [](TW_ObjectAnimation& object, float frame)
        {
            object.animateObjectFrame(WALK, frame, nullptr);
            object.accessMeshTransforms().updateWorldMatrices();
        });
}
BENCHMARK(playWithWorldMatrices)->Name("object/play_world")->Apply(oneAndCrowd);

void crossTwo(benchmark::State& state)
{
    run(state,
        [](TW_ObjectAnimation& object, float frame)
        {
            object.crossAnimateObjectFrame(WALK, frame, 0.3F, RUN, frame, nullptr);
            object.accessMeshTransforms().updateWorldMatrices();
        });
}
BENCHMARK(crossTwo)->Name("object/cross_two_world")->Apply(oneAndCrowd);

void crossThree(benchmark::State& state)
{
    run(state,
        [](TW_ObjectAnimation& object, float frame)
        {
            object.crossAnimateObjectFrame(WALK, frame, 0.3F, RUN, frame, 0.5F, WAVE, frame, nullptr);
            object.accessMeshTransforms().updateWorldMatrices();
        });
}
BENCHMARK(crossThree)->Name("object/cross_three_world")->Apply(oneAndCrowd);

// A third of the bones play another animation on top.
void playWithGroup(benchmark::State& state)
{
    Crowd crowd(1);
    TW2::TW_BoneGroupHandle group;
    crowd.step(
        [&group](TW_ObjectAnimation& object, float)
        {
            std::vector<TW2::TW_BoneHandle> handles;
            for (unsigned int bone = 0; bone < Crowd::BONES; bone += 3)
            {
                handles.push_back(object.getBoneHandle(object.getMesh(bone)->getName().c_str()));
            }
            group.construct(static_cast<int>(handles.size()), handles.data());
            group.attach(&object);
        });
    for (auto _ : state)
    {
        crowd.step([&group](TW_ObjectAnimation& object, float frame)
                   { object.animateObjectFrame(WAVE, frame, &group); });
        benchmark::ClobberMemory();
    }
    const auto bones = static_cast<std::size_t>(group.getTotalHandles());
    TW2::bench::report(state, {.items = bones, .bytes = bones * sizeof(M_Matrix4x3Template<float>)});
}
BENCHMARK(playWithGroup)->Name("object/play_group");

void freeze(benchmark::State& state)
{
    TW2::TW_ObjectAnimationState pose(Crowd::BONES);
    run(state, [&pose](TW_ObjectAnimation& object, float) { object.freezeAnimationState(&pose, nullptr); });
}
BENCHMARK(freeze)->Name("object/freeze")->Apply(oneAndCrowd);

void restore(benchmark::State& state)
{
    TW2::TW_ObjectAnimationState pose(Crowd::BONES);
    pose.accessStateFrozenVector().assign(Crowd::BONES, true);
    run(state, [&pose](TW_ObjectAnimation& object, float) { object.restoreAnimationState(&pose); });
}
BENCHMARK(restore)->Name("object/restore")->Apply(oneAndCrowd);

void crossFromState(benchmark::State& state)
{
    TW2::TW_ObjectAnimationState pose(Crowd::BONES);
    pose.accessStateFrozenVector().assign(Crowd::BONES, true);
    run(state,
        [&pose](TW_ObjectAnimation& object, float frame)
        {
            object.crossAnimateObjectFrame(&pose, 0.4F, RUN, frame, nullptr);
            object.accessMeshTransforms().updateWorldMatrices();
        });
}
BENCHMARK(crossFromState)->Name("object/cross_state_world")->Apply(oneAndCrowd);
}  // namespace
