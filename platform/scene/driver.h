#pragma once

#include <platform/export.h>
#include <platform/scene/driver_caps.h>

#include <array>

/// The graphics driver as materials see it: what it can do, and the render states it is in.
class TW2_PLATFORM_API P_Driver
{
public:
    /// Render states that have a name here; the numbers are the driver's.
    enum RenderState : unsigned int
    {
        RENDER_STATE_SPECULAR_ENABLE = 29  ///< 1: the specular vertex colour is computed and reaches the pixel
    };
    static constexpr unsigned int renderStateCount = 256;  ///< states from 0 on that the driver keeps

    /// The driver in use; a built-in one until a host puts its own here. Never null.
    static P_Driver* m_initializedDriver;

    constexpr P_Driver() noexcept = default;
    /// A driver that can do what is said.
    explicit P_Driver(const P_DriverCaps& caps) noexcept : m_caps(caps) {}

    /// @name Capabilities
    /// @{

    /// What materials ask before they choose how to be drawn; materials that are there already do not hear of a
    /// change.
    [[nodiscard]] const P_DriverCaps& getDriverCaps() const noexcept { return m_caps; }
    void setDriverCaps(const P_DriverCaps& caps) noexcept { m_caps = caps; }
    /// @}

    /// @name Render states; all 0 at first
    /// A number from `renderStateCount` on throws P_DriverException.
    /// @{

    /// Values are kept, and the renderer reads those that it knows; all are 0 at first.
    void setRenderState(unsigned int state, unsigned int value);
    [[nodiscard]] unsigned int getRenderState(unsigned int state) const;
    /// Sets all to 0.
    void clearRenderStates() noexcept { m_renderStates.fill(0); }
    /// @}

private:
    P_DriverCaps m_caps;
    std::array<unsigned int, renderStateCount> m_renderStates{};
};
