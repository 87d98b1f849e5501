#pragma once

#include <emmintrin.h>

#include <cstddef>

/// M_Float4 in the four-float registers of every x86-64 processor.
class M_Float4Sse2
{
public:
    static constexpr std::size_t laneCount = 4;

    /// One answer per lane.
    struct Mask
    {
        __m128 m_lanes;

        [[nodiscard]] friend Mask both(Mask a, Mask b) noexcept { return {_mm_and_ps(a.m_lanes, b.m_lanes)}; }
        [[nodiscard]] friend bool any(const Mask& mask) noexcept { return _mm_movemask_ps(mask.m_lanes) != 0; }
    };

    M_Float4Sse2() noexcept : m_lanes(_mm_setzero_ps()) {}
    explicit M_Float4Sse2(float value) noexcept : m_lanes(_mm_set1_ps(value)) {}
    M_Float4Sse2(float lane0, float lane1, float lane2, float lane3) noexcept
        : m_lanes(_mm_setr_ps(lane0, lane1, lane2, lane3))
    {
    }

    [[nodiscard]] static M_Float4Sse2 load(const float* from) noexcept { return M_Float4Sse2(_mm_loadu_ps(from)); }
    void store(float* to) const noexcept { _mm_storeu_ps(to, m_lanes); }

    friend M_Float4Sse2 operator+(M_Float4Sse2 a, M_Float4Sse2 b) noexcept
    {
        return M_Float4Sse2(_mm_add_ps(a.m_lanes, b.m_lanes));
    }
    friend M_Float4Sse2 operator-(M_Float4Sse2 a, M_Float4Sse2 b) noexcept
    {
        return M_Float4Sse2(_mm_sub_ps(a.m_lanes, b.m_lanes));
    }
    friend M_Float4Sse2 operator*(M_Float4Sse2 a, M_Float4Sse2 b) noexcept
    {
        return M_Float4Sse2(_mm_mul_ps(a.m_lanes, b.m_lanes));
    }
    friend M_Float4Sse2 operator/(M_Float4Sse2 a, M_Float4Sse2 b) noexcept
    {
        return M_Float4Sse2(_mm_div_ps(a.m_lanes, b.m_lanes));
    }
    [[nodiscard]] friend M_Float4Sse2 sqrt(M_Float4Sse2 a) noexcept { return M_Float4Sse2(_mm_sqrt_ps(a.m_lanes)); }
    [[nodiscard]] friend Mask isEqual(M_Float4Sse2 a, M_Float4Sse2 b) noexcept
    {
        return {_mm_cmpeq_ps(a.m_lanes, b.m_lanes)};
    }
    [[nodiscard]] friend Mask isLess(M_Float4Sse2 a, M_Float4Sse2 b) noexcept
    {
        return {_mm_cmplt_ps(a.m_lanes, b.m_lanes)};
    }
    [[nodiscard]] friend M_Float4Sse2 select(Mask mask, M_Float4Sse2 value, M_Float4Sse2 otherwise) noexcept
    {
        return M_Float4Sse2(
            _mm_or_ps(_mm_and_ps(mask.m_lanes, value.m_lanes), _mm_andnot_ps(mask.m_lanes, otherwise.m_lanes)));
    }
    [[nodiscard]] friend M_Float4Sse2 whereNotZero(M_Float4Sse2 test, M_Float4Sse2 value,
                                                   M_Float4Sse2 otherwise) noexcept
    {
        return select(isEqual(test, M_Float4Sse2()), otherwise, value);
    }

    friend void transpose(M_Float4Sse2& a, M_Float4Sse2& b, M_Float4Sse2& c, M_Float4Sse2& d) noexcept
    {
        _MM_TRANSPOSE4_PS(a.m_lanes, b.m_lanes, c.m_lanes, d.m_lanes);
    }

private:
    explicit M_Float4Sse2(__m128 lanes) noexcept : m_lanes(lanes) {}

    __m128 m_lanes;
};
