#pragma once

#include <platform/math/vector3.h>

#include <algorithm>
#include <cmath>

/// Grows around points: the smallest sphere around the origin and the smallest box that hold them all. Without a point
/// both have no extent.
class P_Bounds
{
public:
    void add(const M_Vector3Template<float>& p) noexcept
    {
        const double x = p.x;
        const double y = p.y;
        const double z = p.z;
        m_fRadiusSquared = std::max(m_fRadiusSquared, x * x + y * y + z * z);
        if (!m_bAny)
        {
            m_vMinimum = p;
            m_vMaximum = p;
            m_bAny = true;
            return;
        }
        m_vMinimum = {std::min(m_vMinimum.x, p.x), std::min(m_vMinimum.y, p.y), std::min(m_vMinimum.z, p.z)};
        m_vMaximum = {std::max(m_vMaximum.x, p.x), std::max(m_vMaximum.y, p.y), std::max(m_vMaximum.z, p.z)};
    }

    [[nodiscard]] float getRadius() const noexcept { return static_cast<float>(std::sqrt(m_fRadiusSquared)); }
    [[nodiscard]] const M_Vector3Template<float>& getMinimum() const noexcept { return m_vMinimum; }
    [[nodiscard]] const M_Vector3Template<float>& getMaximum() const noexcept { return m_vMaximum; }

private:
    double m_fRadiusSquared = 0.0;
    M_Vector3Template<float> m_vMinimum;
    M_Vector3Template<float> m_vMaximum;
    bool m_bAny = false;
};
