#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/counter.h>
#include <platform/runtime/handle.h>

/// The part of a scene object that belongs to its user: the name. Copies share it until one is renamed.
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

    /// The text is copied; null is taken as empty.
    void setName(const char* name);
    void setName(const S_String& name);
    /// Names a copy of `source`. Copies that get the same name one after the other share it as long as one of them has
    /// it.
    void setNameOfCopy(const S_String& name, const P_UserData& source);
    /// Empty until one is set.
    [[nodiscard]] const S_String& getName() const noexcept { return m_pName ? m_pName->m_strText : sm_strEmpty; }
    /// @}

private:
    struct Name : S_Allocated
    {
        Name() = default;
        Name(const Name&) = delete;
        Name& operator=(const Name&) = delete;
        ~Name();

        S_String m_strText;
        /// The name that the last copy got, for the next one, and the name of which this is that. Neither is held.
        Name* m_pOfCopies = nullptr;
        Name* m_pOfSource = nullptr;
        S_Counter<int> m_iReferenceCount{1};
    };

    static const S_String sm_strEmpty;

    /// Null for the empty name.
    S_Handle<Name> m_pName;
};
