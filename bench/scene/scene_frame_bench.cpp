#include "bench/object/crowd.h"
#include "bench/yardstick.h"

#include <tw2/object/object_animation.h>

#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <cstddef>

namespace TW2::bench
{
namespace
{
/// Hangs characters into a scene; as meshes of a triangle each, or as bones that nobody sees.
void show(Crowd& crowd, P_Scene& scene, bool bones)
{
    crowd.step(
        [&](TW_ObjectAnimation& object, float)
        {
            object.addTo(&scene);
            for (unsigned int i = 0; bones && i < object.getTotalMeshes(); ++i)
            {
                object.getMesh(i)->enable(false);
            }
        });
}

/// Whole frames of a crowd in a scene: every character is played, visited, and asked for all its world matrices.
template <bool bones>
void playCrowd(benchmark::State& state)
{
    P_Scene scene;
    Crowd crowd(static_cast<std::size_t>(state.range(0)));
    show(crowd, scene, bones);
    for (auto _ : state)
    {
        crowd.step([](TW_ObjectAnimation& object, float frame) { object.animateObjectFrame(1, frame, nullptr); });
        scene.executeFrame();
        crowd.step([](TW_ObjectAnimation& object, float) { object.accessMeshTransforms().updateWorldMatrices(); });
        benchmark::ClobberMemory();
    }
    report(state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(M_Matrix4x3Template<float>)});
}
BENCHMARK(playCrowd<true>)->Name("scene/play_bones")->Arg(1)->Arg(1000);
BENCHMARK(playCrowd<false>)->Name("scene/play_meshes")->Arg(1)->Arg(1000);

/// The frame of the scene alone.
template <bool bones>
void walkCrowd(benchmark::State& state)
{
    P_Scene scene;
    Crowd crowd(static_cast<std::size_t>(state.range(0)));
    show(crowd, scene, bones);
    for (auto _ : state)
    {
        scene.executeFrame();
        benchmark::DoNotOptimize(scene.getVisibleMeshes().data());
    }
    report(state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(M_Matrix4x3Template<float>)});
}
BENCHMARK(walkCrowd<true>)->Name("scene/walk_bones")->Arg(1)->Arg(1000);
BENCHMARK(walkCrowd<false>)->Name("scene/walk_meshes")->Arg(1)->Arg(1000);
}  // namespace
}  // namespace TW2::bench
