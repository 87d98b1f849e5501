#pragma once

#include <array>
#include <csignal>
#include <cstddef>

namespace TW2::viewer
{
/// As long as there is one, being asked to end (Ctrl+C in the terminal, a session that ends) is noted instead of
/// obeyed: the window closes then, and clears up as it always does.
class ClosingSignals
{
public:
    ClosingSignals() noexcept
    {
        s_iAsked = 0;
        for (std::size_t i = 0; i < signals.size(); ++i)
        {
            m_before[i] = std::signal(signals[i], [](int) { s_iAsked = 1; });
        }
    }
    ~ClosingSignals()
    {
        for (std::size_t i = 0; i < signals.size(); ++i)
        {
            std::signal(signals[i], m_before[i]);
        }
    }
    ClosingSignals(const ClosingSignals&) = delete;
    ClosingSignals& operator=(const ClosingSignals&) = delete;

    [[nodiscard]] bool areThere() const noexcept { return s_iAsked != 0; }

private:
    using Handler = void (*)(int);
    static constexpr std::array<int, 2> signals{SIGINT, SIGTERM};
    static inline volatile std::sig_atomic_t s_iAsked = 0;
    std::array<Handler, 2> m_before{};
};
}  // namespace TW2::viewer
