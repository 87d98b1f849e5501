#include "convert/spare_threads.h"

#include <future>
#include <utility>
#include <vector>

namespace TW2::convert
{
std::unique_ptr<SpareThreads::Working> SpareThreads::take()
{
    auto working = std::make_unique<Working>(*this);
    return m_iSpare >= 0 ? std::move(working) : nullptr;
}

void SpareThreads::share(std::size_t count, const std::function<void(std::size_t)>& work)
{
    std::atomic<std::size_t> next = 0;
    const auto workOn = [&next, count, &work]
    {
        for (std::size_t i = next++; i < count; i = next++)
        {
            work(i);
        }
    };
    std::vector<std::future<void>> helping;  // those that are begun are waited for, whatever happens
    while (helping.size() + 1 < count)
    {
        std::unique_ptr<Working> working = take();
        if (!working)
        {
            break;
        }
        // Where no thread can be had, nothing is left to do when it is this one's turn.
        helping.push_back(std::async(std::launch::async | std::launch::deferred,
                                     [&workOn, working = std::move(working)]() mutable
                                     {
                                         const std::unique_ptr<Working> ended = std::move(working);
                                         workOn();
                                     }));
    }
    workOn();
    for (std::future<void>& one : helping)
    {
        one.get();
    }
}
}  // namespace TW2::convert
