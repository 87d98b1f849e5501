#pragma once

#include <platform/math/float4.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

/// A box along the axes, given by two corners; in a new one there is nothing.
struct P_Box
{
    /// Larger than the maximum while the box is empty.
    M_Vector3Template<float> m_vMinimum = M_Vector3Template<float>{1.0F, 1.0F, 1.0F} * farAway;
    /// The other corner.
    M_Vector3Template<float> m_vMaximum = M_Vector3Template<float>{1.0F, 1.0F, 1.0F} * -farAway;

    /// Whether nothing was added yet.
    [[nodiscard]] bool isEmpty() const noexcept { return m_vMinimum.x > m_vMaximum.x; }
    /// Grows around a point.
    void add(const M_Vector3Template<float>& p) noexcept { add({p, p}); }
    /// Grows around another box; an empty one changes nothing.
    void add(const P_Box& other) noexcept
    {
        m_vMinimum = {std::min(m_vMinimum.x, other.m_vMinimum.x), std::min(m_vMinimum.y, other.m_vMinimum.y),
                      std::min(m_vMinimum.z, other.m_vMinimum.z)};
        m_vMaximum = {std::max(m_vMaximum.x, other.m_vMaximum.x), std::max(m_vMaximum.y, other.m_vMaximum.y),
                      std::max(m_vMaximum.z, other.m_vMaximum.z)};
    }
    /// A box, not empty, around what the transform makes of every point in this one. Corners are rounded as the points
    /// are, so that none sticks out by a rounding error.
    [[nodiscard]] P_Box transformed(const M_Matrix4x3Template<float>& transform) const noexcept;
    /// The square of the distance from the origin to the farthest corner.
    [[nodiscard]] double getReachSquared() const noexcept;

    /// Where the corners of an empty box are.
    static constexpr float farAway = std::numeric_limits<float>::infinity();
};

inline P_Box P_Box::transformed(const M_Matrix4x3Template<float>& transform) const noexcept
{
    const float minimum[] = {m_vMinimum.x, m_vMinimum.y, m_vMinimum.z};
    const float maximum[] = {m_vMaximum.x, m_vMaximum.y, m_vMaximum.z};
    M_Float4 low;
    M_Float4 high;
    for (std::size_t r = 0; r < 3; ++r)
    {
        const M_Float4 row = M_Float4::load(transform.data() + 3 * r);  // and the first of what follows
        const M_Float4 atMinimum = M_Float4(minimum[r]) * row;
        const M_Float4 atMaximum = M_Float4(maximum[r]) * row;
        const M_Float4::Mask rises = isLess(atMinimum, atMaximum);
        const M_Float4 lowest = select(rises, atMinimum, atMaximum);
        const M_Float4 highest = select(rises, atMaximum, atMinimum);
        low = r == 0 ? lowest : low + lowest;
        high = r == 0 ? highest : high + highest;
    }
    const M_Float4 translation(transform.m[3][0], transform.m[3][1], transform.m[3][2], 0.0F);
    float lows[4];
    float highs[4];
    (low + translation).store(lows);
    (high + translation).store(highs);
    return {{lows[0], lows[1], lows[2]}, {highs[0], highs[1], highs[2]}};
}

inline double P_Box::getReachSquared() const noexcept
{
    const auto square = [](float a, float b)
    {
        const double reach = std::max(std::abs(static_cast<double>(a)), std::abs(static_cast<double>(b)));
        return reach * reach;
    };
    return square(m_vMinimum.x, m_vMaximum.x) + square(m_vMinimum.y, m_vMaximum.y) + square(m_vMinimum.z, m_vMaximum.z);
}

/// Grows around points and boxes: a sphere around the origin and a box that hold them all. Without any both have no
/// extent.
class P_Bounds
{
public:
    /// Grows around a point.
    void add(const M_Vector3Template<float>& p) noexcept
    {
        const double x = p.x;
        const double y = p.y;
        const double z = p.z;
        add({p, p}, x * x + y * y + z * z);
    }
    /// A box whose content lies within the root of `reachSquared` around the origin; an empty one is nothing.
    void add(const P_Box& box, double reachSquared) noexcept
    {
        m_box.add(box);
        m_fReachSquared = std::max(m_fReachSquared, reachSquared);
    }

    /// The square of the radius.
    [[nodiscard]] double getReachSquared() const noexcept { return m_fReachSquared; }
    /// Of the sphere around the origin; 0 when nothing was added.
    [[nodiscard]] float getRadius() const noexcept { return static_cast<float>(std::sqrt(m_fReachSquared)); }
    /// Corner of the box; the origin when nothing was added.
    [[nodiscard]] M_Vector3Template<float> getMinimum() const noexcept
    {
        return m_box.isEmpty() ? M_Vector3Template<float>() : m_box.m_vMinimum;
    }
    /// Corner of the box; the origin when nothing was added.
    [[nodiscard]] M_Vector3Template<float> getMaximum() const noexcept
    {
        return m_box.isEmpty() ? M_Vector3Template<float>() : m_box.m_vMaximum;
    }

private:
    double m_fReachSquared = 0.0;
    P_Box m_box;
};
