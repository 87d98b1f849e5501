#pragma once

#include <atomic>

/// A whole number that any number of threads may count up, count down and read: holders of what is shared, objects that
/// are alive, records made so far. It converts from and to T, so that it is used as a T would be.
///
/// Whoever counts down to zero sees everything that the other holders did before they counted down: it may delete what
/// they held.
template <typename T>
class S_Counter
{
public:
    constexpr S_Counter() noexcept : S_Counter(T()) {}
    /// Begins with a value.
    constexpr explicit S_Counter(T value) noexcept : m_value(value) {}
    /// A count of its own that begins with the other's value.
    S_Counter(const S_Counter& other) noexcept : m_value(T(other)) {}
    /// Takes the value over in one step.
    S_Counter& operator=(const S_Counter& other) noexcept { return *this = T(other); }
    S_Counter& operator=(T value) noexcept
    {
        m_value.store(value, std::memory_order_release);
        return *this;
    }
    ~S_Counter() = default;

    /// The present value; another thread may have changed it by the time that it is looked at.
    operator T() const noexcept  // NOLINT(google-explicit-constructor): is a number
    {
        return m_value.load(std::memory_order_acquire);
    }
    /// Count, and give the new value.
    T operator++() noexcept { return m_value.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// One less, in one step; the new value.
    T operator--() noexcept { return m_value.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    /// Counts by `step` and gives the new value.
    T operator+=(T step) noexcept { return m_value.fetch_add(step, std::memory_order_relaxed) + step; }

private:
    std::atomic<T> m_value;
};
