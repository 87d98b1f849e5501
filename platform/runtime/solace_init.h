#pragma once

#include <platform/export.h>

/// Starts the runtime layer for the source unit that holds one, and stops it with the last.
///
/// Every source unit that uses the layer's global objects (`Sys`, `File`) before `main` has a static one; the objects
/// then exist from the first unit's initialisation to the last unit's destruction.
class TW2_PLATFORM_API S_SolaceInit
{
public:
    S_SolaceInit();
    ~S_SolaceInit();
    S_SolaceInit(const S_SolaceInit&) = delete;
    S_SolaceInit& operator=(const S_SolaceInit&) = delete;

    /// Number of living init objects; the layer runs while it is above 0.
    [[nodiscard]] static int getUserCount() noexcept;
};
