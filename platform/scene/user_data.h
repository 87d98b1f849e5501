#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

/// The part of a scene object that belongs to its user: the name.
class TW2_PLATFORM_API P_UserData
{
public:
    P_UserData() noexcept = default;
    P_UserData(const P_UserData&) = default;
    P_UserData& operator=(const P_UserData&) = delete;
    virtual ~P_UserData();

    /// Writes a description to the verbose log; `details` adds what takes more than a line.
    virtual void dump(bool details) const;
    /// Takes over the other's user data.
    virtual void duplicate(const P_UserData& other);

    /// @name Name
    /// @{
    void setName(const char* name);
    void setName(const S_String& name);
    /// Empty until one is set.
    [[nodiscard]] const S_String& getName() const noexcept { return m_strName; }
    /// @}

private:
    S_String m_strName;
};
