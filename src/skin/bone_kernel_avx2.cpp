// Compiled for AVX2, see CMakeLists.txt; empty where there is no such thing. Keeps to names of its own, see
// M_Float8Avx2.
#include "skin/bone_kernel_avx2.h"

#if defined(TW2_HAS_AVX2_KERNEL)
#include <immintrin.h>

namespace TW2
{
namespace
{
// A transform as two rows and two rows; the fourth lane of each row means nothing.
struct RowPairs
{
    __m256 m_first;
    __m256 m_last;
};

// left x (the transform of four rows of four floats at `right`), with the bits of the product of two matrices.
inline RowPairs multiply(const float* left, const float* right) noexcept
{
    const __m256 row0 = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(right));
    const __m256 row1 = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(right + 4));
    const __m256 row2 = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(right + 8));
    // Adding -0 leaves every value of the third row as it is.
    const __m256 translation = _mm256_insertf128_ps(_mm256_set1_ps(-0.0F), _mm_load_ps(right + 12), 1);
    const auto sum = [&](__m256 column0, __m256 column1, __m256 column2)
    {
        return _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(column0, row0), _mm256_mul_ps(column1, row1)),
                             _mm256_mul_ps(column2, row2));
    };
    // The last row is loaded one float early, so that nothing behind the matrix is read.
    const __m256 first = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(left)), _mm_loadu_ps(left + 3), 1);
    const __m256 last = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(left + 6)), _mm_loadu_ps(left + 8), 1);
    const auto spread = [&last](int lower, int upper)
    { return _mm256_permutevar_ps(last, _mm256_setr_epi32(lower, lower, lower, lower, upper, upper, upper, upper)); };
    return {sum(_mm256_permute_ps(first, 0x00), _mm256_permute_ps(first, 0x55), _mm256_permute_ps(first, 0xAA)),
            _mm256_add_ps(sum(spread(0, 1), spread(1, 2), spread(2, 3)), translation)};
}

inline void write(const RowPairs& rows, float* matrix) noexcept
{
    // Each row's fourth lane lands where the next row begins and is overwritten by it.
    _mm_storeu_ps(matrix, _mm256_castps256_ps128(rows.m_first));
    _mm_storeu_ps(matrix + 3, _mm256_extractf128_ps(rows.m_first, 1));
    _mm_storeu_ps(matrix + 6, _mm256_castps256_ps128(rows.m_last));
    const __m128 translation = _mm256_extractf128_ps(rows.m_last, 1);
    _mm_storel_pi(reinterpret_cast<__m64*>(matrix + 9), translation);
    _mm_store_ss(matrix + 11, _mm_shuffle_ps(translation, translation, 0xAA));
}
}  // namespace

void multiplyBonesAvx2(const BoneBatch& batch) noexcept
{
    const auto* const local = reinterpret_cast<const float*>(batch.m_pLocal);
    const auto* const references = reinterpret_cast<const float*>(batch.m_pReferences);
    auto* const results = reinterpret_cast<float*>(batch.m_pResults);
    for (std::size_t i = 0; i < batch.m_uiCount; ++i)
    {
        float* const bone = batch.m_pBones + i * BoneBatch::boneFloats;
        const int parent = batch.m_piParents[i];
        _mm_prefetch(reinterpret_cast<const char*>(results + 12 * i) + BoneBatch::bytesAhead, _MM_HINT_T0);
        if (parent >= 0)
        {
            const RowPairs rows =
                multiply(local + 12 * i, batch.m_pBones + static_cast<std::size_t>(parent) * BoneBatch::boneFloats);
            _mm256_store_ps(bone, rows.m_first);
            _mm256_store_ps(bone + 8, rows.m_last);
        }
        write(multiply(references + 12 * i, bone), results + 12 * i);
    }
}
}  // namespace TW2
#endif
