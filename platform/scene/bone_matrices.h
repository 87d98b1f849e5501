#pragma once

#include <platform/math/matrix4x3.h>

#include <cstddef>

/// The bone matrices that a skin is looked at under: side by side, or each where a pointer says. Not owned.
class P_BoneMatrices
{
public:
    /// Of a bone.
    using Matrix = M_Matrix4x3Template<float>;

    /// None.
    P_BoneMatrices() noexcept = default;
    /// Side by side.
    P_BoneMatrices(const Matrix* first, std::size_t count) noexcept : m_pFirst(first), m_uiCount(count) {}
    /// Each where its pointer says; the pointers are read in place, too.
    P_BoneMatrices(const Matrix* const* pointers, std::size_t count) noexcept : m_ppEach(pointers), m_uiCount(count) {}

    /// Number of bones.
    [[nodiscard]] std::size_t size() const noexcept { return m_uiCount; }
    /// Whether there are none.
    [[nodiscard]] bool empty() const noexcept { return m_uiCount == 0; }
    /// Null past the count, and where the pointer is null.
    [[nodiscard]] const Matrix* operator[](std::size_t bone) const noexcept
    {
        if (bone >= m_uiCount)
        {
            return nullptr;
        }
        return m_pFirst ? m_pFirst + bone : m_ppEach[bone];
    }

private:
    const Matrix* m_pFirst = nullptr;
    const Matrix* const* m_ppEach = nullptr;
    std::size_t m_uiCount = 0;
};
