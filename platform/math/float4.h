#pragma once

#include <cmath>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Four floats that are worked on together, lane by lane: one of each of four matrices, tracks or keys.
///
/// Every operation rounds each lane as the same operation on one float does, so the bits are those of scalar code, on
/// every machine; where the processor has four-float registers (SSE2) it takes one instruction.
class M_Float4
{
public:
    M_Float4() noexcept : M_Float4(0.0F) {}
    /// The same value in each lane.
    explicit M_Float4(float value) noexcept
    {
#if defined(__SSE2__)
        m_lanes = _mm_set1_ps(value);
#else
        m_lanes[0] = m_lanes[1] = m_lanes[2] = m_lanes[3] = value;
#endif
    }
    M_Float4(float lane0, float lane1, float lane2, float lane3) noexcept
    {
#if defined(__SSE2__)
        m_lanes = _mm_setr_ps(lane0, lane1, lane2, lane3);
#else
        m_lanes[0] = lane0;
        m_lanes[1] = lane1;
        m_lanes[2] = lane2;
        m_lanes[3] = lane3;
#endif
    }

    /// @name Memory: four floats in a row, on any boundary
    /// @{
    [[nodiscard]] static M_Float4 load(const float* from) noexcept
    {
#if defined(__SSE2__)
        return M_Float4(_mm_loadu_ps(from));
#else
        return {from[0], from[1], from[2], from[3]};
#endif
    }
    void store(float* to) const noexcept
    {
#if defined(__SSE2__)
        _mm_storeu_ps(to, m_lanes);
#else
        to[0] = m_lanes[0];
        to[1] = m_lanes[1];
        to[2] = m_lanes[2];
        to[3] = m_lanes[3];
#endif
    }
    /// @}

    /// @name Arithmetic, lane by lane
    /// @{
    friend M_Float4 operator+(M_Float4 a, M_Float4 b) noexcept
    {
#if defined(__SSE2__)
        return M_Float4(_mm_add_ps(a.m_lanes, b.m_lanes));
#else
        return combine(a, b, [](float x, float y) { return x + y; });
#endif
    }
    friend M_Float4 operator-(M_Float4 a, M_Float4 b) noexcept
    {
#if defined(__SSE2__)
        return M_Float4(_mm_sub_ps(a.m_lanes, b.m_lanes));
#else
        return combine(a, b, [](float x, float y) { return x - y; });
#endif
    }
    friend M_Float4 operator*(M_Float4 a, M_Float4 b) noexcept
    {
#if defined(__SSE2__)
        return M_Float4(_mm_mul_ps(a.m_lanes, b.m_lanes));
#else
        return combine(a, b, [](float x, float y) { return x * y; });
#endif
    }
    friend M_Float4 operator/(M_Float4 a, M_Float4 b) noexcept
    {
#if defined(__SSE2__)
        return M_Float4(_mm_div_ps(a.m_lanes, b.m_lanes));
#else
        return combine(a, b, [](float x, float y) { return x / y; });
#endif
    }
    [[nodiscard]] friend M_Float4 sqrt(M_Float4 a) noexcept
    {
#if defined(__SSE2__)
        return M_Float4(_mm_sqrt_ps(a.m_lanes));
#else
        return combine(a, a, [](float x, float) { return std::sqrt(x); });
#endif
    }
    /// `value` where `test` is not 0 (a NaN is not 0), else `otherwise`.
    [[nodiscard]] friend M_Float4 whereNotZero(M_Float4 test, M_Float4 value, M_Float4 otherwise) noexcept
    {
#if defined(__SSE2__)
        const __m128 isZero = _mm_cmpeq_ps(test.m_lanes, _mm_setzero_ps());
        return M_Float4(_mm_or_ps(_mm_and_ps(isZero, otherwise.m_lanes), _mm_andnot_ps(isZero, value.m_lanes)));
#else
        M_Float4 result;
        for (std::size_t i = 0; i < 4; ++i)
        {
            result.m_lanes[i] = test.m_lanes[i] == 0.0F ? otherwise.m_lanes[i] : value.m_lanes[i];
        }
        return result;
#endif
    }
    /// @}

    /// Exchanges rows and columns of the square that the four make: afterwards lane j of `a` is what lane 0 of the j-th
    /// was, and so on.
    friend void transpose(M_Float4& a, M_Float4& b, M_Float4& c, M_Float4& d) noexcept
    {
#if defined(__SSE2__)
        _MM_TRANSPOSE4_PS(a.m_lanes, b.m_lanes, c.m_lanes, d.m_lanes);
#else
        const M_Float4 rows[4] = {a, b, c, d};
        M_Float4* const columns[4] = {&a, &b, &c, &d};
        for (std::size_t i = 0; i < 4; ++i)
        {
            for (std::size_t j = 0; j < 4; ++j)
            {
                columns[i]->m_lanes[j] = rows[j].m_lanes[i];
            }
        }
#endif
    }

private:
#if defined(__SSE2__)
    explicit M_Float4(__m128 lanes) noexcept : m_lanes(lanes) {}

    __m128 m_lanes;
#else
    template <typename Operation>
    static M_Float4 combine(M_Float4 a, M_Float4 b, Operation operation) noexcept
    {
        M_Float4 result;
        for (std::size_t i = 0; i < 4; ++i)
        {
            result.m_lanes[i] = operation(a.m_lanes[i], b.m_lanes[i]);
        }
        return result;
    }

    float m_lanes[4];
#endif
};
