#pragma once

#include <platform/runtime/allocator.h>

class P_Context;

class P_ObjectContainer : public S_Allocated
{
public:
    virtual ~P_ObjectContainer();
    virtual P_Context* getContext() const = 0;
};
