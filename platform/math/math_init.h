#pragma once

#include <platform/export.h>

/// Starts the math layer for the source unit that holds one, and stops it with the last.
///
/// The layer's tables are constants, so a unit that has none finds them too; hosts that bring a math layer of their own
/// set its tables up here.
class TW2_PLATFORM_API M_MathInit
{
public:
    M_MathInit();
    ~M_MathInit();
    M_MathInit(const M_MathInit&) = delete;
    M_MathInit& operator=(const M_MathInit&) = delete;

    /// Number of living init objects; the layer runs while it is above 0.
    [[nodiscard]] static int getUserCount() noexcept;
};
