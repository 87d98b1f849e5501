#pragma once

#include <platform/compiler.h>
#include <platform/export.h>
#include <platform/runtime/allocator.h>

/// Text formatted printf-style; a temporary of it stands where a C string is asked for.
///
///     throw TW_Exception_BoneNotFound(S_STR("%s.%i", name, index), object);
class TW2_PLATFORM_API S_STR
{
public:
    /// As printf would print it. Throws S_MemoryException_Allocation when there is no memory.
    S_FORMAT_LIKE_PRINTF(2, 3) explicit S_STR(const char* format, ...);

    /// The text; valid as long as this object.
    operator const char*() const noexcept { return m_strText.c_str(); }  // NOLINT(google-explicit-constructor)
    /// The text; valid as long as this object.
    [[nodiscard]] const char* c_str() const noexcept { return m_strText.c_str(); }
    /// The text; valid as long as this object.
    [[nodiscard]] const S_String& str() const noexcept { return m_strText; }

private:
    S_String m_strText;
};
