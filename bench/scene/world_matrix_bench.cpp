#include "bench/yardstick.h"

#include <platform/math/matrix4x3_product.h>
#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

constexpr std::size_t bonesPerCharacter = 64;

/// A skeleton of 64 bones: a spine with limbs, each bone a child of the one before it or of one of the first eight.
struct Character
{
    Character() : m_bones(bonesPerCharacter)
    {
        m_root.setPosition(1.0F, 2.0F, 3.0F);
        for (std::size_t i = 0; i < bonesPerCharacter; ++i)
        {
            m_pointers.push_back(&m_bones[i]);
            if (i == 0)
            {
                m_bones[i].addTo(&m_root);
            }
            else
            {
                m_bones[i].addTo(&m_bones[i % 8 == 0 ? i / 8 : i - 1]);
            }
            Matrix local = Matrix::translation({0.1F, 0.2F, 0.0F});
            local.m[0][1] = 0.01F * static_cast<float>(i);
            m_bones[i].setMatrix(local);
        }
    }

    P_VirtualObject m_root;
    std::vector<P_VirtualObject> m_bones;
    std::vector<P_BaseObject*> m_pointers;
    P_TransformBlock m_block;
};

std::vector<std::unique_ptr<Character>> makeCrowd(std::size_t characters)
{
    std::vector<std::unique_ptr<Character>> crowd;
    for (std::size_t i = 0; i < characters; ++i)
    {
        crowd.push_back(std::make_unique<Character>());
    }
    return crowd;
}

void reportBones(benchmark::State& state)
{
    const std::size_t bones = static_cast<std::size_t>(state.range(0)) * bonesPerCharacter;
    TW2::bench::report(state, {.items = bones, .bytes = bones * sizeof(Matrix)});
}

// What playback does with a whole pose: mark the block, compute every world matrix in one pass.
void updateBlocks(benchmark::State& state)
{
    const auto crowd = makeCrowd(static_cast<std::size_t>(state.range(0)));
    for (const auto& character : crowd)
    {
        character->m_block.adopt(character->m_pointers.data(), character->m_pointers.size());
    }
    for (auto _ : state)
    {
        for (const auto& character : crowd)
        {
            character->m_block.invalidateAll();
            character->m_block.updateWorldMatrices();
            benchmark::DoNotOptimize(character->m_block.getWorldMatrices());
        }
        benchmark::ClobberMemory();
    }
    reportBones(state);
}
BENCHMARK(updateBlocks)->Name("scene/world_matrices_in_blocks")->Arg(1)->Arg(1000);

// A crowd that walks: each character's root moves as well, which marks its bones from outside of the block.
void walkCrowd(benchmark::State& state)
{
    const auto crowd = makeCrowd(static_cast<std::size_t>(state.range(0)));
    for (const auto& character : crowd)
    {
        character->m_block.adopt(character->m_pointers.data(), character->m_pointers.size());
    }
    float step = 0.0F;
    for (auto _ : state)
    {
        step += 0.1F;
        for (const auto& character : crowd)
        {
            character->m_root.setPosition(step, 0.0F, 0.0F);
            character->m_block.invalidateAll();
            character->m_block.updateWorldMatrices();
        }
        benchmark::ClobberMemory();
    }
    reportBones(state);
}
BENCHMARK(walkCrowd)->Name("scene/walking_crowd_in_blocks")->Arg(1000);

// The same skeletons without a block: each object is marked and asked on its own.
void updateObjects(benchmark::State& state)
{
    const auto crowd = makeCrowd(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
    {
        for (const auto& character : crowd)
        {
            character->m_root.invalidateMatrices();
            for (const P_VirtualObject& bone : character->m_bones)
            {
                benchmark::DoNotOptimize(&bone.getObjectToWorldMatrix());
            }
        }
        benchmark::ClobberMemory();
    }
    reportBones(state);
}
BENCHMARK(updateObjects)->Name("scene/world_matrices_of_objects")->Arg(1)->Arg(1000);

// Only one bone near the end has moved: the pass looks at every state and multiplies one chain.
void updateOneBone(benchmark::State& state)
{
    const auto crowd = makeCrowd(static_cast<std::size_t>(state.range(0)));
    for (const auto& character : crowd)
    {
        character->m_block.adopt(character->m_pointers.data(), character->m_pointers.size());
    }
    const unsigned int moved = bonesPerCharacter - 4;
    for (auto _ : state)
    {
        for (const auto& character : crowd)
        {
            character->m_block.invalidate(&moved, 1);
            character->m_block.updateWorldMatrices();
        }
        benchmark::ClobberMemory();
    }
    reportBones(state);
}
BENCHMARK(updateOneBone)->Name("scene/one_bone_moved_in_blocks")->Arg(100);

void moveDeepChain(benchmark::State& state)
{
    const auto depth = static_cast<std::size_t>(state.range(0));
    std::vector<P_VirtualObject> chain(depth);
    for (std::size_t i = 1; i < depth; ++i)
    {
        chain[i].addTo(&chain[i - 1]);
    }
    for (auto _ : state)
    {
        chain.front().invalidateMatrices();
        benchmark::DoNotOptimize(&chain.back().getObjectToWorldMatrix());
    }
    TW2::bench::report(state, {.items = depth, .bytes = depth * sizeof(Matrix)});
}
BENCHMARK(moveDeepChain)->Name("scene/deep_chain")->Arg(10'000);

// Objects three levels deep, none of them with a volume to test.
void walkScene(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    P_Scene scene;
    std::vector<P_VirtualObject> objects(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        P_ObjectContainer* const parents[] = {&scene, i > 0 ? &objects[i - 1] : nullptr,
                                              i > 1 ? &objects[i - 1] : nullptr};
        objects[i].addTo(parents[i % 3]);
    }
    for (auto _ : state)
    {
        scene.executeFrame();
        benchmark::DoNotOptimize(scene.getVisibleMeshes().data());
    }
    TW2::bench::report(state, {.items = count, .bytes = count * sizeof(P_VirtualObject*)});
}
BENCHMARK(walkScene)->Name("scene/execute_frame")->Arg(10'000);
}  // namespace
