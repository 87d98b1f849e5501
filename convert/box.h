#pragma once

#include "convert/model.h"

#include <algorithm>
#include <limits>

namespace TW2::convert
{
/// The smallest box along the axes around points.
class Box
{
public:
    void add(const Vector3d& point) noexcept
    {
        m_vLow = {std::min(m_vLow.x, point.x), std::min(m_vLow.y, point.y), std::min(m_vLow.z, point.z)};
        m_vHigh = {std::max(m_vHigh.x, point.x), std::max(m_vHigh.y, point.y), std::max(m_vHigh.z, point.z)};
    }

    [[nodiscard]] bool isEmpty() const noexcept { return m_vLow.x > m_vHigh.x; }
    [[nodiscard]] const Vector3d& getLow() const noexcept { return m_vLow; }
    [[nodiscard]] const Vector3d& getHigh() const noexcept { return m_vHigh; }
    /// 0 of an empty box.
    [[nodiscard]] double getDiagonal() const noexcept { return isEmpty() ? 0.0 : (m_vHigh - m_vLow).length(); }
    [[nodiscard]] Vector3d getCorner(unsigned int index) const noexcept
    {
        return {(index & 1U) != 0 ? m_vHigh.x : m_vLow.x, (index & 2U) != 0 ? m_vHigh.y : m_vLow.y,
                (index & 4U) != 0 ? m_vHigh.z : m_vLow.z};
    }
    static constexpr unsigned int cornerCount = 8;

private:
    static constexpr double none = std::numeric_limits<double>::infinity();
    Vector3d m_vLow{none, none, none};
    Vector3d m_vHigh{-none, -none, -none};
};
}  // namespace TW2::convert
