#pragma once

#include <platform/runtime/exception.h>

class P_DriverException : public S_Exception
{
};

class P_DriverException_TooManyBonesPerVertex : public P_DriverException
{
public:
    P_DriverException_TooManyBonesPerVertex();
};
