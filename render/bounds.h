#pragma once

#include <platform/math/vector3.h>

#include <limits>
#include <vector>

class P_BaseObject;

namespace TW2::render
{
/// Axis-aligned box in world space that grows; empty at first.
struct Bounds
{
    static constexpr float none = std::numeric_limits<float>::infinity();  ///< no place is beyond it
    M_Vector3Template<float> m_vMinimum{none, none, none};     ///< larger than the maximum while the box is empty
    M_Vector3Template<float> m_vMaximum{-none, -none, -none};  ///< the other corner

    /// Whether nothing was added yet.
    [[nodiscard]] bool isEmpty() const noexcept { return m_vMinimum.x > m_vMaximum.x; }
    /// Middle of a box that is not empty.
    [[nodiscard]] M_Vector3Template<float> getCenter() const noexcept { return (m_vMinimum + m_vMaximum) * 0.5F; }
    /// Length of the diagonal; 0 when empty.
    [[nodiscard]] float getSize() const noexcept { return isEmpty() ? 0.0F : (m_vMaximum - m_vMinimum).length(); }
    /// Takes in a point; one that is not finite is left out.
    void add(const M_Vector3Template<float>& point) noexcept;
};

/// Appends every vertex, as it stands now in world space, of the enabled meshes in `root`'s subtree; of a
/// level-of-detail object those of the level in use.
void collectVertices(const P_BaseObject& root, std::vector<M_Vector3Template<float>>& vertices);
}  // namespace TW2::render
