#pragma once

#include <immintrin.h>

#include <cstddef>

/// Eight floats that are worked on together, in the words of M_Float4 and with the same bits in each lane. For source
/// files that are compiled for AVX2 only, which nothing calls before the processor was asked.
///
/// Such a file keeps to this class and to templates of it: an inline function that other files use as well might be
/// kept in the form that was compiled here, and stop a processor that does not know it.
class M_Float8Avx2
{
public:
    static constexpr std::size_t laneCount = 8;

    /// One answer per lane.
    struct Mask
    {
        __m256 m_lanes;

        [[nodiscard]] friend Mask both(Mask a, Mask b) noexcept { return {_mm256_and_ps(a.m_lanes, b.m_lanes)}; }
        [[nodiscard]] friend bool any(const Mask& mask) noexcept { return _mm256_movemask_ps(mask.m_lanes) != 0; }
    };

    M_Float8Avx2() noexcept : m_lanes(_mm256_setzero_ps()) {}
    explicit M_Float8Avx2(float value) noexcept : m_lanes(_mm256_set1_ps(value)) {}

    [[nodiscard]] static M_Float8Avx2 load(const float* from) noexcept { return M_Float8Avx2(_mm256_loadu_ps(from)); }
    void store(float* to) const noexcept { _mm256_storeu_ps(to, m_lanes); }

    friend M_Float8Avx2 operator+(M_Float8Avx2 a, M_Float8Avx2 b) noexcept
    {
        return M_Float8Avx2(_mm256_add_ps(a.m_lanes, b.m_lanes));
    }
    friend M_Float8Avx2 operator-(M_Float8Avx2 a, M_Float8Avx2 b) noexcept
    {
        return M_Float8Avx2(_mm256_sub_ps(a.m_lanes, b.m_lanes));
    }
    friend M_Float8Avx2 operator*(M_Float8Avx2 a, M_Float8Avx2 b) noexcept
    {
        return M_Float8Avx2(_mm256_mul_ps(a.m_lanes, b.m_lanes));
    }
    friend M_Float8Avx2 operator/(M_Float8Avx2 a, M_Float8Avx2 b) noexcept
    {
        return M_Float8Avx2(_mm256_div_ps(a.m_lanes, b.m_lanes));
    }
    [[nodiscard]] friend M_Float8Avx2 sqrt(M_Float8Avx2 a) noexcept { return M_Float8Avx2(_mm256_sqrt_ps(a.m_lanes)); }
    [[nodiscard]] friend Mask isEqual(M_Float8Avx2 a, M_Float8Avx2 b) noexcept
    {
        return {_mm256_cmp_ps(a.m_lanes, b.m_lanes, _CMP_EQ_OQ)};
    }
    [[nodiscard]] friend Mask isLess(M_Float8Avx2 a, M_Float8Avx2 b) noexcept
    {
        return {_mm256_cmp_ps(a.m_lanes, b.m_lanes, _CMP_LT_OQ)};
    }
    [[nodiscard]] friend M_Float8Avx2 select(Mask mask, M_Float8Avx2 value, M_Float8Avx2 otherwise) noexcept
    {
        return M_Float8Avx2(_mm256_blendv_ps(otherwise.m_lanes, value.m_lanes, mask.m_lanes));
    }

    /// See M_loadLanes.
    friend void M_loadLanes(const float* const* from, std::size_t offset, M_Float8Avx2 (&values)[4]) noexcept
    {
        __m256 rows[4];
        for (std::size_t i = 0; i < 4; ++i)
        {
            rows[i] = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from[i] + offset)),
                                           _mm_loadu_ps(from[i + 4] + offset), 1);
        }
        transposeHalves(rows);
        for (std::size_t i = 0; i < 4; ++i)
        {
            values[i].m_lanes = rows[i];
        }
    }
    /// See M_storeLanes.
    friend void M_storeLanes(const M_Float8Avx2 (&values)[4], float* const* to, std::size_t offset,
                             std::size_t count) noexcept
    {
        __m256 rows[4] = {values[0].m_lanes, values[1].m_lanes, values[2].m_lanes, values[3].m_lanes};
        transposeHalves(rows);
        if (count == laneCount) [[likely]]
        {
            for (std::size_t i = 0; i < 4; ++i)
            {
                _mm_storeu_ps(to[i] + offset, _mm256_castps256_ps128(rows[i]));
                _mm_storeu_ps(to[i + 4] + offset, _mm256_extractf128_ps(rows[i], 1));
            }
            return;
        }
        for (std::size_t i = 0; i < count; ++i)
        {
            const __m256 row = rows[i % 4];
            _mm_storeu_ps(to[i] + offset, i < 4 ? _mm256_castps256_ps128(row) : _mm256_extractf128_ps(row, 1));
        }
    }

private:
    explicit M_Float8Avx2(__m256 lanes) noexcept : m_lanes(lanes) {}

    // Exchanges rows and columns of the square of the four lower halves and of that of the four upper ones.
    static void transposeHalves(__m256 (&rows)[4]) noexcept
    {
        const __m256 ab = _mm256_unpacklo_ps(rows[0], rows[1]);
        const __m256 abHigh = _mm256_unpackhi_ps(rows[0], rows[1]);
        const __m256 cd = _mm256_unpacklo_ps(rows[2], rows[3]);
        const __m256 cdHigh = _mm256_unpackhi_ps(rows[2], rows[3]);
        rows[0] = _mm256_shuffle_ps(ab, cd, _MM_SHUFFLE(1, 0, 1, 0));
        rows[1] = _mm256_shuffle_ps(ab, cd, _MM_SHUFFLE(3, 2, 3, 2));
        rows[2] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(1, 0, 1, 0));
        rows[3] = _mm256_shuffle_ps(abHigh, cdHigh, _MM_SHUFFLE(3, 2, 3, 2));
    }

    __m256 m_lanes;
};
