// Builds a crowd of skinned characters by copying one, plays it on several threads, and prints where some of them have
// their hands.
//
//     example_crowd_on_threads [script]       without one, in the project's folder: the walker of its sample

#include <tw2/tw2.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

namespace
{
constexpr std::size_t crowdSize = 200;

/// Calls `work(i)` for every i below `count`, on as many threads as the machine has. A host hands the work to the
/// threads that it has anyway.
template <typename Work>
void forEachOnThreads(std::size_t count, const Work& work)
{
    const std::size_t threadCount = std::max(2U, std::thread::hardware_concurrency());
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < threadCount; ++t)
    {
        threads.emplace_back(
            [=, &work]
            {
                for (std::size_t i = t * count / threadCount; i < (t + 1) * count / threadCount; ++i)
                {
                    work(i);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}
}  // namespace

int main(int argc, char** argv)
{
    try
    {
        // Nobody plays the original: it may be copied at any time, on the thread that builds and loads.
        const TW2::TW_VertexAnimation original(argc > 1 ? argv[1] : "sample/walker.script", "skeleton", "skin");
        const int walk = original.findAnimation("walk");
        const int run = original.findAnimation("run");
        P_Scene scene;
        std::vector<std::unique_ptr<TW2::TW_VertexAnimation>> crowd;
        for (std::size_t i = 0; i < crowdSize; ++i)
        {
            crowd.push_back(std::make_unique<TW2::TW_VertexAnimation>(original));
            crowd.back()->setPosition(static_cast<float>(i % 20), 0.0F, static_cast<float>(i / 20));
            crowd.back()->addTo(&scene);
        }

        for (int step = 0; step <= 10; ++step)
        {
            const float time = 0.1F * static_cast<float>(step);
            // Each character on one thread at a time.
            forEachOnThreads(crowdSize,
                             [&crowd, walk, run, time](std::size_t i)
                             {
                                 const float own = time + 0.01F * static_cast<float>(i);
                                 crowd[i]->crossAnimateObject(walk, own, 1.0F - time, run, own);
                             });
            // The bone matrices, on the same threads.
            scene.executeFrame([](std::size_t count, const auto& body) { forEachOnThreads(count, body); });
        }

        for (std::size_t i = 0; i < crowdSize; i += 50)
        {
            const P_VirtualObject* const hand = crowd[i]->getSkeleton()->getMeshByName("hand_right");
            const auto position = hand->getObjectToWorldMatrix().getTranslation();
            std::printf("character %3zu has its hand at (%.3F, %.3F, %.3F)\n", i, static_cast<double>(position.x),
                        static_cast<double>(position.y), static_cast<double>(position.z));
        }
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
