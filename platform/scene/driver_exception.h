#pragma once

#include <platform/export.h>
#include <platform/runtime/exception.h>

/// The graphics driver cannot do what is asked of it.
class TW2_PLATFORM_API P_DriverException : public S_Exception
{
public:
    /// `message`: what the driver cannot do.
    explicit P_DriverException(const char* message);
    ~P_DriverException() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};

/// A skin mesh vertex is bound to more than 4 bones.
class TW2_PLATFORM_API P_DriverException_TooManyBonesPerVertex : public P_DriverException
{
public:
    P_DriverException_TooManyBonesPerVertex();
    ~P_DriverException_TooManyBonesPerVertex() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};
