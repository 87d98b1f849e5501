#pragma once

#include <arm_neon.h>

#include <cstddef>

/// M_Float4 in the four-float registers of 64-bit ARM processors. (Those of 32-bit ones flush the smallest numbers to
/// zero and would not give the same bits.)
class M_Float4Neon
{
public:
    static constexpr std::size_t laneCount = 4;

    /// One answer per lane.
    struct Mask
    {
        uint32x4_t m_lanes;

        [[nodiscard]] friend Mask both(Mask a, Mask b) noexcept { return {vandq_u32(a.m_lanes, b.m_lanes)}; }
        [[nodiscard]] friend bool any(const Mask& mask) noexcept { return vmaxvq_u32(mask.m_lanes) != 0; }
    };

    M_Float4Neon() noexcept : m_lanes(vdupq_n_f32(0.0F)) {}
    explicit M_Float4Neon(float value) noexcept : m_lanes(vdupq_n_f32(value)) {}
    M_Float4Neon(float lane0, float lane1, float lane2, float lane3) noexcept
        : m_lanes(float32x4_t{lane0, lane1, lane2, lane3})
    {
    }

    [[nodiscard]] static M_Float4Neon load(const float* from) noexcept { return M_Float4Neon(vld1q_f32(from)); }
    void store(float* to) const noexcept { vst1q_f32(to, m_lanes); }

    friend M_Float4Neon operator+(M_Float4Neon a, M_Float4Neon b) noexcept
    {
        return M_Float4Neon(vaddq_f32(a.m_lanes, b.m_lanes));
    }
    friend M_Float4Neon operator-(M_Float4Neon a, M_Float4Neon b) noexcept
    {
        return M_Float4Neon(vsubq_f32(a.m_lanes, b.m_lanes));
    }
    friend M_Float4Neon operator*(M_Float4Neon a, M_Float4Neon b) noexcept
    {
        return M_Float4Neon(vmulq_f32(a.m_lanes, b.m_lanes));
    }
    friend M_Float4Neon operator/(M_Float4Neon a, M_Float4Neon b) noexcept
    {
        return M_Float4Neon(vdivq_f32(a.m_lanes, b.m_lanes));
    }
    [[nodiscard]] friend M_Float4Neon sqrt(M_Float4Neon a) noexcept { return M_Float4Neon(vsqrtq_f32(a.m_lanes)); }
    [[nodiscard]] friend Mask isEqual(M_Float4Neon a, M_Float4Neon b) noexcept
    {
        return {vceqq_f32(a.m_lanes, b.m_lanes)};
    }
    [[nodiscard]] friend Mask isLess(M_Float4Neon a, M_Float4Neon b) noexcept
    {
        return {vcltq_f32(a.m_lanes, b.m_lanes)};
    }
    [[nodiscard]] friend M_Float4Neon select(Mask mask, M_Float4Neon value, M_Float4Neon otherwise) noexcept
    {
        return M_Float4Neon(vbslq_f32(mask.m_lanes, value.m_lanes, otherwise.m_lanes));
    }
    [[nodiscard]] friend M_Float4Neon whereNotZero(M_Float4Neon test, M_Float4Neon value,
                                                   M_Float4Neon otherwise) noexcept
    {
        return select(isEqual(test, M_Float4Neon()), otherwise, value);
    }

    friend void transpose(M_Float4Neon& a, M_Float4Neon& b, M_Float4Neon& c, M_Float4Neon& d) noexcept
    {
        const float32x4x2_t ab = vtrnq_f32(a.m_lanes, b.m_lanes);
        const float32x4x2_t cd = vtrnq_f32(c.m_lanes, d.m_lanes);
        a.m_lanes = vcombine_f32(vget_low_f32(ab.val[0]), vget_low_f32(cd.val[0]));
        b.m_lanes = vcombine_f32(vget_low_f32(ab.val[1]), vget_low_f32(cd.val[1]));
        c.m_lanes = vcombine_f32(vget_high_f32(ab.val[0]), vget_high_f32(cd.val[0]));
        d.m_lanes = vcombine_f32(vget_high_f32(ab.val[1]), vget_high_f32(cd.val[1]));
    }

private:
    explicit M_Float4Neon(float32x4_t lanes) noexcept : m_lanes(lanes) {}

    float32x4_t m_lanes;
};
