#pragma once

#include <platform/math/vector3.h>

class P_BaseObject;

namespace TW2::render
{
/// Axis-aligned box in world space that grows; empty at first.
struct Bounds
{
    M_Vector3Template<float> m_vMinimum{1.0F, 1.0F, 1.0F};
    M_Vector3Template<float> m_vMaximum{-1.0F, -1.0F, -1.0F};

    [[nodiscard]] bool isEmpty() const noexcept { return m_vMinimum.x > m_vMaximum.x; }
    [[nodiscard]] M_Vector3Template<float> getCenter() const noexcept { return (m_vMinimum + m_vMaximum) * 0.5F; }
    /// Length of the diagonal; 0 when empty.
    [[nodiscard]] float getSize() const noexcept { return isEmpty() ? 0.0F : (m_vMaximum - m_vMinimum).length(); }
    void add(const M_Vector3Template<float>& point) noexcept;
    /// Takes in every vertex, as it stands now, of the enabled meshes in `root`'s subtree; of a level-of-detail object
    /// those of the level in use. Points that are not finite are left out.
    void addMeshes(const P_BaseObject& root);
};
}  // namespace TW2::render
