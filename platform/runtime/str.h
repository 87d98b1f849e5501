#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

/// Text formatted printf-style; a temporary of it stands where a C string is asked for.
///
///     throw TW_Exception_BoneNotFound(S_STR("%s.%i", name, index), object);
class TW2_PLATFORM_API S_STR
{
public:
    [[gnu::format(printf, 2, 3)]] explicit S_STR(const char* format, ...);

    /// The text; valid as long as this object.
    operator const char*() const noexcept { return m_strText.c_str(); }  // NOLINT(google-explicit-constructor)
    [[nodiscard]] const char* c_str() const noexcept { return m_strText.c_str(); }
    [[nodiscard]] const S_String& str() const noexcept { return m_strText; }

private:
    S_String m_strText;
};
