#include <platform/scene/driver_exception.h>

P_DriverException::P_DriverException(const char* message)
{
    setError("%s", message);
}
P_DriverException::~P_DriverException() = default;

const CRuntimeClass* P_DriverException::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"P_DriverException"};
    return &runtimeClass;
}

P_DriverException_TooManyBonesPerVertex::P_DriverException_TooManyBonesPerVertex()
    : P_DriverException("DirectX allows only 4 bones per vertex")
{
}
P_DriverException_TooManyBonesPerVertex::~P_DriverException_TooManyBonesPerVertex() = default;

const CRuntimeClass* P_DriverException_TooManyBonesPerVertex::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"P_DriverException_TooManyBonesPerVertex"};
    return &runtimeClass;
}
