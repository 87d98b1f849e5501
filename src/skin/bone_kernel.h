#pragma once

#include <platform/math/matrix4x3.h>

#include <cstddef>

namespace TW2
{
/// A skeleton whose parents stand before their children, on its way into skin space.
struct BoneBatch
{
    /// Floats of a bone in skin space: four rows of four, the fourth float of each means nothing.
    static constexpr std::size_t boneFloats = 16;

    const M_Matrix4x3Template<float>* m_pLocal;
    const int* m_piParents;  ///< below 0: the bone is in `m_pBones` already
    const M_Matrix4x3Template<float>* m_pReferences;
    float* m_pBones;                         ///< in skin space, on a 32-byte boundary
    M_Matrix4x3Template<float>* m_pResults;  ///< bone matrices
    std::size_t m_uiCount;

    /// Bytes of results that are on their way into the near cache while one is worked on.
    static constexpr std::size_t bytesAhead = 10 * sizeof(M_Matrix4x3Template<float>);
};

/// Multiplies a skeleton out: bone = local x parent, result = reference x bone. The bits are those of the products of
/// matrices, whatever the processor has.
void multiplyBones(const BoneBatch& batch) noexcept;
}  // namespace TW2
