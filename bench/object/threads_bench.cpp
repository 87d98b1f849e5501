#include "bench/object/crowd.h"
#include "bench/yardstick.h"

#include <platform/scene/transform_block.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace
{
using TW2::TW_ObjectAnimation;
using TW2::bench::Crowd;

/// This thread and others that share work with it. They wait without sleeping, so that nothing but the work is
/// measured.
class Team
{
public:
    explicit Team(std::size_t count)
    {
        for (std::size_t i = 1; i < count; ++i)
        {
            m_threads.emplace_back([this, i] { serve(i); });
        }
    }
    ~Team()
    {
        m_bEnds = true;
        ++m_uRound;
        for (std::thread& thread : m_threads)
        {
            thread.join();
        }
    }
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;

    /// Calls `work(i)` for every member i, on a thread each, and returns when all are done.
    void run(const std::function<void(std::size_t)>& work)
    {
        m_pWork = &work;
        m_uBusy = m_threads.size();
        ++m_uRound;
        work(0);
        while (m_uBusy != 0)
        {
        }
    }

private:
    void serve(std::size_t member)
    {
        for (std::size_t round = 0; !m_bEnds;)
        {
            if (m_uRound == round)
            {
                continue;
            }
            round = m_uRound;
            if (!m_bEnds)
            {
                (*m_pWork)(member);
                --m_uBusy;
            }
        }
    }

    std::vector<std::thread> m_threads;
    std::atomic<const std::function<void(std::size_t)>*> m_pWork = nullptr;
    std::atomic<std::size_t> m_uRound = 0;
    std::atomic<std::size_t> m_uBusy = 0;
    std::atomic<bool> m_bEnds = false;
};

// A crowd with its world matrices, shared out among threads. The counter tells how many times as fast one step of the
// whole crowd is as on one thread; more threads than processors are of no use.
void playOnThreads(benchmark::State& state)
{
    const auto threads = static_cast<std::size_t>(state.range(0));
    Crowd crowd(1000, 2);
    Team team(threads);
    const auto play = [](TW_ObjectAnimation& object, float frame)
    {
        object.crossAnimateObjectFrame(0, frame, 0.3F, 1, frame, nullptr);
        object.accessMeshTransforms().updateWorldMatrices();
    };
    const std::function<void(std::size_t)> share = [&](std::size_t member) { crowd.stepShare(member, threads, play); };
    for (auto _ : state)
    {
        crowd.advance();
        team.run(share);
        benchmark::ClobberMemory();
    }
    const double alone = TW2::bench::measureBest([&] { crowd.step(play); });
    const double together = TW2::bench::measureBest(
        [&]
        {
            crowd.advance();
            team.run(share);
        });
    state.counters["x one thread"] = alone / together;
    TW2::bench::report(
        state, {.items = crowd.getBoneCount(), .bytes = crowd.getBoneCount() * sizeof(M_Matrix4x3Template<float>)});
}
BENCHMARK(playOnThreads)->Name("object/cross_two_world_on_threads")->Arg(1)->Arg(2);
}  // namespace
