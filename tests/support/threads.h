#pragma once

#include <thread>
#include <vector>

namespace support
{
/// Runs `work(i)` for every i below `count`, each on a thread of its own, beside `meanwhile` on this one.
template <typename Work, typename Meanwhile>
void runOnThreads(unsigned int count, const Work& work, const Meanwhile& meanwhile)
{
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i)
    {
        threads.emplace_back([&work, i] { work(i); });
    }
    meanwhile();
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}
template <typename Work>
void runOnThreads(unsigned int count, const Work& work)
{
    runOnThreads(count, work, [] {});
}
}  // namespace support
