#pragma once

#include <platform/runtime/allocator.h>

class P_UserData
{
public:
    virtual ~P_UserData();
    virtual void dump(bool details) const;
    virtual void duplicate(const P_UserData& other);

    void setName(const char* name);
    void setName(const S_String& name);
    void setNameOfCopy(const S_String& name, const P_UserData& source);
    const S_String& getName() const noexcept;
};
