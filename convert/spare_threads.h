#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>

namespace TW2::convert
{
/// The processors that a conversion may use. Who works on one says so as long as that takes; what is left helps those
/// whose work comes in parts. May be used on all threads at once.
class SpareThreads
{
public:
    /// `most`: threads that work at a time.
    explicit SpareThreads(unsigned int most) noexcept : m_iSpare(static_cast<int>(most)) {}
    SpareThreads(const SpareThreads&) = delete;
    SpareThreads& operator=(const SpareThreads&) = delete;

    /// The thread that makes it works for as long as it lives.
    class Working
    {
    public:
        explicit Working(SpareThreads& threads) noexcept : m_threads(threads) { --m_threads.m_iSpare; }
        ~Working() { ++m_threads.m_iSpare; }
        Working(const Working&) = delete;
        Working& operator=(const Working&) = delete;

    private:
        SpareThreads& m_threads;
    };

    /// Calls `work` with each number below `count`, on this thread and on those that nobody uses: in order where there
    /// are none. Returns when all is done, or when nothing of it runs any more; then it throws what `work` has thrown.
    void share(std::size_t count, const std::function<void(std::size_t)>& work);

private:
    /// A thread that nobody uses; null where there is none.
    [[nodiscard]] std::unique_ptr<Working> take();

    std::atomic<int> m_iSpare;  ///< below 0 where more work than may
};
}  // namespace TW2::convert
