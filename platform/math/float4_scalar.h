#pragma once

#include <cmath>
#include <cstddef>

/// M_Float4 in plain C++, for processors without four-float registers; what the others are compared with.
class M_Float4Scalar
{
public:
    static constexpr std::size_t laneCount = 4;

    /// One answer per lane.
    struct Mask
    {
        bool m_lanes[4];

        [[nodiscard]] friend Mask both(const Mask& a, const Mask& b) noexcept
        {
            return {{a.m_lanes[0] && b.m_lanes[0], a.m_lanes[1] && b.m_lanes[1], a.m_lanes[2] && b.m_lanes[2],
                     a.m_lanes[3] && b.m_lanes[3]}};
        }
        [[nodiscard]] friend bool any(const Mask& mask) noexcept
        {
            return mask.m_lanes[0] || mask.m_lanes[1] || mask.m_lanes[2] || mask.m_lanes[3];
        }
    };

    M_Float4Scalar() noexcept : M_Float4Scalar(0.0F) {}
    explicit M_Float4Scalar(float value) noexcept : m_lanes{value, value, value, value} {}
    M_Float4Scalar(float lane0, float lane1, float lane2, float lane3) noexcept : m_lanes{lane0, lane1, lane2, lane3} {}

    [[nodiscard]] static M_Float4Scalar load(const float* from) noexcept
    {
        return {from[0], from[1], from[2], from[3]};
    }
    void store(float* to) const noexcept
    {
        for (std::size_t i = 0; i < 4; ++i)
        {
            to[i] = m_lanes[i];
        }
    }

    friend M_Float4Scalar operator+(const M_Float4Scalar& a, const M_Float4Scalar& b) noexcept
    {
        return combine(a, b, [](float x, float y) { return x + y; });
    }
    friend M_Float4Scalar operator-(const M_Float4Scalar& a, const M_Float4Scalar& b) noexcept
    {
        return combine(a, b, [](float x, float y) { return x - y; });
    }
    friend M_Float4Scalar operator*(const M_Float4Scalar& a, const M_Float4Scalar& b) noexcept
    {
        return combine(a, b, [](float x, float y) { return x * y; });
    }
    friend M_Float4Scalar operator/(const M_Float4Scalar& a, const M_Float4Scalar& b) noexcept
    {
        return combine(a, b, [](float x, float y) { return x / y; });
    }
    [[nodiscard]] friend M_Float4Scalar sqrt(const M_Float4Scalar& a) noexcept
    {
        return combine(a, a, [](float x, float) { return std::sqrt(x); });
    }
    [[nodiscard]] friend Mask isEqual(const M_Float4Scalar& a, const M_Float4Scalar& b) noexcept
    {
        return compare(a, b, [](float x, float y) { return x == y; });
    }
    [[nodiscard]] friend Mask isLess(const M_Float4Scalar& a, const M_Float4Scalar& b) noexcept
    {
        return compare(a, b, [](float x, float y) { return x < y; });
    }
    [[nodiscard]] friend M_Float4Scalar select(const Mask& mask, const M_Float4Scalar& value,
                                               const M_Float4Scalar& otherwise) noexcept
    {
        M_Float4Scalar result;
        for (std::size_t i = 0; i < 4; ++i)
        {
            result.m_lanes[i] = mask.m_lanes[i] ? value.m_lanes[i] : otherwise.m_lanes[i];
        }
        return result;
    }
    [[nodiscard]] friend M_Float4Scalar whereNotZero(const M_Float4Scalar& test, const M_Float4Scalar& value,
                                                     const M_Float4Scalar& otherwise) noexcept
    {
        return select(isEqual(test, M_Float4Scalar(0.0F)), otherwise, value);
    }

    friend void transpose(M_Float4Scalar& a, M_Float4Scalar& b, M_Float4Scalar& c, M_Float4Scalar& d) noexcept
    {
        const M_Float4Scalar rows[4] = {a, b, c, d};
        M_Float4Scalar* const columns[4] = {&a, &b, &c, &d};
        for (std::size_t i = 0; i < 4; ++i)
        {
            for (std::size_t j = 0; j < 4; ++j)
            {
                columns[i]->m_lanes[j] = rows[j].m_lanes[i];
            }
        }
    }

private:
    template <typename Operation>
    static M_Float4Scalar combine(const M_Float4Scalar& a, const M_Float4Scalar& b, Operation operation) noexcept
    {
        return {operation(a.m_lanes[0], b.m_lanes[0]), operation(a.m_lanes[1], b.m_lanes[1]),
                operation(a.m_lanes[2], b.m_lanes[2]), operation(a.m_lanes[3], b.m_lanes[3])};
    }
    template <typename Comparison>
    static Mask compare(const M_Float4Scalar& a, const M_Float4Scalar& b, Comparison comparison) noexcept
    {
        return {{comparison(a.m_lanes[0], b.m_lanes[0]), comparison(a.m_lanes[1], b.m_lanes[1]),
                 comparison(a.m_lanes[2], b.m_lanes[2]), comparison(a.m_lanes[3], b.m_lanes[3])}};
    }

    float m_lanes[4];
};
