#include "bench/yardstick.h"
#include "tests/support/character_files.h"

#include <tw2/object/object_animation.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/math/matrix4x3.h>
#include <platform/runtime/script.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <vector>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

constexpr unsigned int boneCount = 64;

/// A character whose frame can be executed without a scene around it.
class Character : public TW2::TW_VertexAnimation
{
public:
    using TW_VertexAnimation::executeAlways;
    using TW_VertexAnimation::TW_VertexAnimation;
};

/// Characters of 64 bones, all copies of one, each at a place and a time of its own.
class Crowd
{
public:
    explicit Crowd(std::size_t size)
        : m_files({.bones = boneCount, .vertices = 300, .primitives = 1, .frames = 100}),
          m_script(m_files.write().c_str())
    {
        m_characters.push_back(std::make_unique<Character>(&m_script, 0, &m_script, 1));
        while (m_characters.size() < size)
        {
            m_characters.push_back(std::make_unique<Character>(*m_characters.front()));
        }
        for (std::size_t i = 0; i < size; ++i)
        {
            m_characters[i]->addTo(&m_scene);
            m_characters[i]->setPosition(static_cast<float>(i % 32), 0.0F, static_cast<float>(i / 32));
        }
    }

    [[nodiscard]] const std::vector<std::unique_ptr<Character>>& getCharacters() const { return m_characters; }
    [[nodiscard]] std::size_t getBoneCount() const { return m_characters.size() * boneCount; }

private:
    support::CharacterFiles m_files;
    S_Script m_script;
    P_Scene m_scene;
    std::vector<std::unique_ptr<Character>> m_characters;
};

/// What is done with each character of a crowd every frame.
enum class Frame
{
    Still,          ///< nothing moves
    Bones,          ///< everything moved: bone matrices
    Play,           ///< play: local matrices
    PlayBones,      ///< play, bone matrices
    PlayWorldBones  ///< play, world matrices, bone matrices
};

template <Frame frame>
void executeFrames(benchmark::State& state)
{
    const Crowd crowd(static_cast<std::size_t>(state.range(0)));
    float time = 0.0F;
    for (auto _ : state)
    {
        time += 1.0F / 60.0F;
        float offset = 0.0F;
        for (const auto& character : crowd.getCharacters())
        {
            P_TransformBlock& bones = character->getSkeleton()->accessMeshTransforms();
            if constexpr (frame == Frame::Bones)
            {
                bones.invalidateAll();
            }
            else if constexpr (frame != Frame::Still)
            {
                character->animateObject(1, time + offset, nullptr);
            }
            if constexpr (frame == Frame::PlayWorldBones)
            {
                bones.updateWorldMatrices();
            }
            if constexpr (frame != Frame::Play)
            {
                character->executeAlways();
            }
            offset += 0.01F;
        }
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(Matrix)});
}
BENCHMARK(executeFrames<Frame::Still>)->Name("skin/still")->Arg(1000);
BENCHMARK(executeFrames<Frame::Bones>)->Name("skin/bone_matrices")->Arg(1)->Arg(1000);
BENCHMARK(executeFrames<Frame::Play>)->Name("skin/play")->Arg(1)->Arg(1000);
BENCHMARK(executeFrames<Frame::PlayBones>)->Name("skin/play_bones")->Arg(1)->Arg(1000);
BENCHMARK(executeFrames<Frame::PlayWorldBones>)->Name("skin/play_world_bones")->Arg(1)->Arg(1000);

/// Whole frames of characters without volumes of their own, as a file gives them: cross-faded, their skins' volumes
/// computed and tested against a camera.
void crossFadeInScene(benchmark::State& state)
{
    const Crowd crowd(static_cast<std::size_t>(state.range(0)));
    P_Context context;
    P_Camera camera;
    context.setCurrentCamera(&camera);
    P_Scene scene(&context);
    for (const auto& character : crowd.getCharacters())
    {
        character->addTo(&scene);
    }
    float time = 0.0F;
    for (auto _ : state)
    {
        time += 1.0F / 60.0F;
        float offset = 0.0F;
        for (const auto& character : crowd.getCharacters())
        {
            character->crossAnimateObject(0, time + offset, 0.5F, 1, time, nullptr);
            offset += 0.01F;
        }
        scene.executeFrame();
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(Matrix)});
}
BENCHMARK(crossFadeInScene)->Name("skin/cross_fade_in_scene")->Arg(1)->Arg(500);

/// One more character, with its skin.
void copyCharacter(benchmark::State& state)
{
    const Crowd crowd(1);
    for (auto _ : state)
    {
        const Character copy(*crowd.getCharacters().front());
        benchmark::DoNotOptimize(copy.getBoneMatrixCount());
    }
    TW2::bench::report(state, {.items = boneCount, .bytes = boneCount * sizeof(Matrix)});
}
BENCHMARK(copyCharacter)->Name("skin/copy");

void loadCharacter(benchmark::State& state)
{
    const support::CharacterFiles files({.bones = boneCount, .vertices = 3000, .primitives = 1, .frames = 100});
    S_Script script(files.write().c_str());
    std::size_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(files.getDirectory().getPath()))
    {
        bytes += entry.file_size();
    }
    for (auto _ : state)
    {
        const TW2::TW_VertexAnimation character(&script, 0, &script, 1);
        benchmark::DoNotOptimize(character.getBoneMatrixCount());
    }
    TW2::bench::report(state, {.items = 1, .bytes = bytes, .showThroughput = true});
}
BENCHMARK(loadCharacter)->Name("skin/load");
}  // namespace
