#include "bench/object/crowd.h"
#include "bench/yardstick.h"

#include <tw2/motion/foot_planter.h>
#include <tw2/motion/reaching.h>

#include <array>
#include <cmath>
#include <memory>
#include <vector>

namespace
{
using Matrix = M_Matrix4x3Template<float>;
using Vector = M_Vector3Template<float>;

constexpr std::size_t s_chains = 64;

// Chains of bones a unit long, each bent a little otherwise: nothing is straight, nothing is in a plane.
std::vector<Matrix> makeChains(std::size_t bones)
{
    std::vector<Matrix> chains;
    for (std::size_t chain = 0; chain < s_chains; ++chain)
    {
        Vector place;
        for (std::size_t bone = 0; bone < bones; ++bone)
        {
            const float turn = 0.4F * static_cast<float>(bone) + 0.1F * static_cast<float>(chain);
            chains.push_back(Matrix::translation(place));
            place += Vector{0.3F * std::sin(turn), 0.9F, 0.3F * std::cos(turn)}.normalized();
        }
    }
    return chains;
}

// Solves all chains from the same pose again and again, towards targets that go round.
template <typename Solve>
void reach(benchmark::State& state, std::size_t bones, const Solve& solve)
{
    const std::vector<Matrix> pose = makeChains(bones);
    std::vector<Matrix> chains;
    float turn = 0.0F;
    for (auto _ : state)
    {
        chains = pose;
        turn += 0.01F;
        const float length = 0.7F * static_cast<float>(bones - 1);
        const Vector target{length * std::sin(turn), 0.3F * length, length * std::cos(turn)};
        for (std::size_t chain = 0; chain < s_chains; ++chain)
        {
            solve(chains.data() + chain * bones, target);
        }
        benchmark::DoNotOptimize(chains.data());
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = chains.size(), .bytes = chains.size() * sizeof(Matrix)});
}

void reachTwoBones(benchmark::State& state)
{
    reach(
        state, 3,
        [](Matrix* bones, const Vector& target) {
            TW2::reachTwoBones(bones[0], bones[1], bones[2], {.target = target, .pole = {0, 0, 1}, .softness = 0.05F});
        });
}
BENCHMARK(reachTwoBones)->Name("motion/reach_two_bones");

void aim(benchmark::State& state)
{
    reach(state, 4,
          [](Matrix* bones, const Vector& target) { TW2::aimChain(bones, 4, {.target = target, .limit = 40.0F}); });
}
BENCHMARK(aim)->Name("motion/aim_four_bones");

void reachEightBones(benchmark::State& state)
{
    reach(state, 8,
          [](Matrix* bones, const Vector& target) { TW2::reachChain(bones, 8, {.target = target, .iterations = 10}); });
}
BENCHMARK(reachEightBones)->Name("motion/reach_eight_bones");

class Waves : public TW2::TW_GroundCallback
{
public:
    TW2::TW_GroundPoint operator()(const Vector& foot) override
    {
        return {.height = 0.05F * std::sin(3.0F * foot.x + foot.z)};
    }
};

// Two legs of the crowd's character: its bones form a binary tree.
void plantFeet(benchmark::State& state)
{
    TW2::bench::Crowd crowd(1, 2);
    constexpr std::array<TW2::TW_Leg, 2> legs{{{"bone1", "bone7", 0.02F}, {"bone2", "bone11", 0.02F}}};
    std::unique_ptr<TW2::TW_FootPlanter> feet;
    TW2::TW_ObjectAnimation* object = nullptr;
    crowd.step(
        [&](TW2::TW_ObjectAnimation& first, float)
        {
            object = &first;
            feet = std::make_unique<TW2::TW_FootPlanter>(first, "bone0", legs.data(), legs.size());
        });
    Waves ground;
    float frame = 0.0F;
    for (auto _ : state)
    {
        // Taking the pose belongs to every frame: compare with object/animate.
        frame = frame > 50.0F ? 0.0F : frame + 0.3F;
        object->animateObjectFrame(0, frame, nullptr);
        feet->plant(ground, {});
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(Matrix)});
}
BENCHMARK(plantFeet)->Name("motion/animate_and_plant_two_feet");
}  // namespace
