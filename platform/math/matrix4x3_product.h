#pragma once

#include <platform/math/matrix4x3.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// `a` * `b` with the bits of the operator, in vector registers where the processor has them. `result` may be `a` or
/// `b`.
///
/// The twelve values of a matrix are taken as three vectors of four, so that values are loaded and stored as they lie
/// in memory: each result vector is the sum over k of (a's column k, spread to the four places) x (b's row k, turned so
/// that it starts at the place's column).
inline void M_multiply(const M_Matrix4x3Template<float>& a, const M_Matrix4x3Template<float>& b,
                       M_Matrix4x3Template<float>& result) noexcept
{
#if defined(__SSE2__)
    const float* p = a.data();
    const float* q = b.data();
    const __m128 row0 = _mm_loadu_ps(q);                                        // 00 01 02 10
    const __m128 middle = _mm_loadu_ps(q + 4);                                  // 11 12 20 21
    const __m128 last = _mm_loadu_ps(q + 8);                                    // 22 30 31 32
    const __m128 row1 = _mm_shuffle_ps(row0, middle, _MM_SHUFFLE(1, 0, 3, 3));  // 10 10 11 12
    const __m128 row2 = _mm_shuffle_ps(middle, last, _MM_SHUFFLE(0, 0, 3, 2));  // 20 21 22 22

    // Places 00 01 02 10: columns 0 1 2 0.
    const auto spread0 = [p](int k)
    {
        const __m128 v = _mm_loadu_ps(p + k);
        return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 0, 0, 0));
    };
    // Places 11 12 20 21: columns 1 2 0 1.
    const auto spread1 = [p](int k)
    {
        const __m128 v = _mm_loadu_ps(p + 3 + k);
        return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 3, 0, 0));
    };
    // Places 22 30 31 32: columns 2 0 1 2.
    const auto spread2 = [p](int k)
    {
        const __m128 v = _mm_loadu_ps(p + 6 + k);
        return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 3, 3, 0));
    };

    __m128 out0 = _mm_mul_ps(spread0(0), _mm_shuffle_ps(row0, row0, _MM_SHUFFLE(0, 2, 1, 0)));
    __m128 out1 = _mm_mul_ps(spread1(0), _mm_shuffle_ps(row0, row0, _MM_SHUFFLE(1, 0, 2, 1)));
    __m128 out2 = _mm_mul_ps(spread2(0), _mm_shuffle_ps(row0, row0, _MM_SHUFFLE(2, 1, 0, 2)));
    out0 = _mm_add_ps(out0, _mm_mul_ps(spread0(1), _mm_shuffle_ps(row1, row1, _MM_SHUFFLE(0, 3, 2, 0))));
    out1 = _mm_add_ps(out1, _mm_mul_ps(spread1(1), _mm_shuffle_ps(row1, row1, _MM_SHUFFLE(2, 0, 3, 2))));
    out2 = _mm_add_ps(out2, _mm_mul_ps(spread2(1), _mm_shuffle_ps(row1, row1, _MM_SHUFFLE(3, 2, 0, 3))));
    out0 = _mm_add_ps(out0, _mm_mul_ps(spread0(2), _mm_shuffle_ps(row2, row2, _MM_SHUFFLE(0, 2, 1, 0))));
    out1 = _mm_add_ps(out1, _mm_mul_ps(spread1(2), _mm_shuffle_ps(row2, row2, _MM_SHUFFLE(1, 0, 2, 1))));
    out2 = _mm_add_ps(out2, _mm_mul_ps(spread2(2), _mm_shuffle_ps(row2, row2, _MM_SHUFFLE(2, 1, 0, 2))));
    // b's translation; adding -0 leaves every value as it is.
    out2 = _mm_add_ps(out2, _mm_move_ss(last, _mm_set_ss(-0.0F)));

    _mm_storeu_ps(result.data(), out0);
    _mm_storeu_ps(result.data() + 4, out1);
    _mm_storeu_ps(result.data() + 8, out2);
#else
    result = a * b;
#endif
}
