#pragma once

#include <platform/export.h>

#include <charconv>

/// Reads a number from the beginning of a text as std::from_chars does, the same in every locale, also where the
/// standard library has that for whole numbers only.
TW2_PLATFORM_API std::from_chars_result S_fromChars(const char* begin, const char* end, float& value) noexcept;
TW2_PLATFORM_API std::from_chars_result S_fromChars(const char* begin, const char* end, double& value) noexcept;

/// The same for whole numbers.
template <typename T>
std::from_chars_result S_fromChars(const char* begin, const char* end, T& value) noexcept
{
    return std::from_chars(begin, end, value);
}
