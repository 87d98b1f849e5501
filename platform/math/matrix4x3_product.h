#pragma once

#include <platform/compiler.h>
#include <platform/math/matrix4x3.h>

#if defined(S_HAS_SSE2)
#include <emmintrin.h>
#endif

/// A matrix made ready to be multiplied by from the left, as the parent of several children is.
///
/// Products have the bits of the operator * on every machine; where the processor has vector registers (SSE2) they are
/// made there. The twelve values of a matrix are taken as three vectors of four as they lie in memory: each result
/// vector is the sum over k of (the left matrix's column k, spread to the four places) x (this matrix's row k, turned
/// so that it begins at the first place's column).
class M_RightFactor
{
public:
    using Matrix = M_Matrix4x3Template<float>;

    explicit M_RightFactor(const Matrix& matrix) noexcept
#if defined(S_HAS_SSE2)
        : M_RightFactor(_mm_loadu_ps(matrix.data()), _mm_loadu_ps(matrix.data() + 4), _mm_loadu_ps(matrix.data() + 8))
#else
        : m_matrix(matrix)
#endif
    {
    }

    /// Writes `left` * this matrix into `result`, which may be `left`, and returns it as the next right factor: a
    /// chain of parents and children goes on without reading back what it wrote.
    M_RightFactor multiply(const Matrix& left, Matrix& result) const noexcept
    {
#if defined(S_HAS_SSE2)
        const float* p = left.data();
        __m128 out0 = _mm_mul_ps(spread0(p), _mm_shuffle_ps(m_row0, m_row0, _MM_SHUFFLE(0, 2, 1, 0)));
        __m128 out1 = _mm_mul_ps(spread1(p), _mm_shuffle_ps(m_row0, m_row0, _MM_SHUFFLE(1, 0, 2, 1)));
        __m128 out2 = _mm_mul_ps(spread2(p), _mm_shuffle_ps(m_row0, m_row0, _MM_SHUFFLE(2, 1, 0, 2)));
        ++p;
        out0 = _mm_add_ps(out0, _mm_mul_ps(spread0(p), _mm_shuffle_ps(m_row1, m_row1, _MM_SHUFFLE(0, 3, 2, 0))));
        out1 = _mm_add_ps(out1, _mm_mul_ps(spread1(p), _mm_shuffle_ps(m_row1, m_row1, _MM_SHUFFLE(2, 0, 3, 2))));
        out2 = _mm_add_ps(out2, _mm_mul_ps(spread2(p), _mm_shuffle_ps(m_row1, m_row1, _MM_SHUFFLE(3, 2, 0, 3))));
        ++p;
        out0 = _mm_add_ps(out0, _mm_mul_ps(spread0(p), _mm_shuffle_ps(m_row2, m_row2, _MM_SHUFFLE(0, 2, 1, 0))));
        out1 = _mm_add_ps(out1, _mm_mul_ps(spread1(p), _mm_shuffle_ps(m_row2, m_row2, _MM_SHUFFLE(1, 0, 2, 1))));
        out2 = _mm_add_ps(out2, _mm_mul_ps(spread2(p), _mm_shuffle_ps(m_row2, m_row2, _MM_SHUFFLE(2, 1, 0, 2))));
        out2 = _mm_add_ps(out2, m_translation);
        _mm_storeu_ps(result.data(), out0);
        _mm_storeu_ps(result.data() + 4, out1);
        _mm_storeu_ps(result.data() + 8, out2);
        return M_RightFactor(out0, out1, out2);
#else
        result = left * m_matrix;
        return M_RightFactor(result);
#endif
    }

private:
#if defined(S_HAS_SSE2)
    /// The values 00 01 02 10, 11 12 20 21 and 22 30 31 32.
    M_RightFactor(__m128 first, __m128 middle, __m128 last) noexcept
        : m_row0(first),
          m_row1(_mm_shuffle_ps(first, middle, _MM_SHUFFLE(1, 0, 3, 3))),
          m_row2(_mm_shuffle_ps(middle, last, _MM_SHUFFLE(0, 0, 3, 2))),
          m_translation(_mm_move_ss(last, _mm_set_ss(-0.0F)))
    {
    }

    /// Places 00 01 02 10 of a result take rows 0 0 0 1 of the left matrix's column, columns 0 1 2 0 of this one.
    static __m128 spread0(const float* column) noexcept
    {
        const __m128 v = _mm_loadu_ps(column);
        return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 0, 0, 0));
    }
    /// Places 11 12 20 21: rows 1 1 2 2, columns 1 2 0 1.
    static __m128 spread1(const float* column) noexcept
    {
        const __m128 v = _mm_loadu_ps(column + 3);
        return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 3, 0, 0));
    }
    /// Places 22 30 31 32: rows 2 3 3 3, columns 2 0 1 2.
    static __m128 spread2(const float* column) noexcept
    {
        const __m128 v = _mm_loadu_ps(column + 6);
        return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 3, 3, 0));
    }

    __m128 m_row0;         // 00 01 02 --
    __m128 m_row1;         // 10 -- 11 12
    __m128 m_row2;         // 20 21 22 --
    __m128 m_translation;  // -0 30 31 32: adding -0 leaves every value as it is
#else
    Matrix m_matrix;
#endif
};

/// `a` * `b` with the bits of the operator; `result` may be `a` or `b`.
inline void M_multiply(const M_Matrix4x3Template<float>& a, const M_Matrix4x3Template<float>& b,
                       M_Matrix4x3Template<float>& result) noexcept
{
    (void)M_RightFactor(b).multiply(a, result);
}
