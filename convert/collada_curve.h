#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TW2::convert
{
/// One or more numbers over time, as COLLADA has them: each key says how its value goes on to the next. Before the
/// first key it is the first key's, behind the last one the last one's.
struct ColladaCurve
{
    enum class Kind : std::uint8_t
    {
        Step,
        Linear,
        Bezier,  ///< with control points
        Hermite  ///< with slopes, per span
    };
    std::vector<double> m_vecTimes;   ///< seconds, ascending
    std::vector<double> m_vecValues;  ///< `m_uiStride` per time
    std::size_t m_uiStride = 1;
    std::vector<Kind> m_vecKinds;  ///< one per time
    /// What the cubics have on both sides of each key: per time and number a value, or a time and a value; may be
    /// empty.
    std::vector<double> m_vecArriving;
    std::vector<double> m_vecLeaving;

    /// One of the numbers.
    [[nodiscard]] double at(double seconds, std::size_t number) const;
    /// The last key that is not behind a time.
    [[nodiscard]] std::size_t findKey(double seconds) const;

private:
    struct Handle
    {
        double m_dTime;  ///< part of the span, 0 to 1
        double m_dValue;
    };
    [[nodiscard]] Handle getHandle(const std::vector<double>& list, std::size_t key, std::size_t number,
                                   std::size_t from, double usual) const;
};
}  // namespace TW2::convert
