#pragma once

#include <platform/runtime/allocator.h>

#include <string>
#include <string_view>
#include <type_traits>

/// What a host may give where a name is taken.
///
/// The operations take C strings (`const char*`) or the library's strings (S_String). Each also has a form for a host's
/// own strings, std::string and those with other allocators; it never competes with the others: literals, null and 0
/// mean what they mean without it.
namespace TW2
{
/// Whether T is std::string, S_String or one with another allocator.
template <typename T>
inline constexpr bool isString = false;
/// One with any allocator is.
template <typename Allocator>
inline constexpr bool isString<std::basic_string<char, std::char_traits<char>, Allocator>> = true;

/// A C string, literals included; null is none.
template <typename T>
inline constexpr bool isCString = std::is_convertible_v<const T&, const char*> && !std::is_null_pointer_v<T>;

/// std::string, S_String and those with other allocators.
template <typename T>
concept TW_String = isString<T>;
/// Several texts, at least one of which is a string.
template <typename... T>
concept TW_Texts = ((isString<T> || isCString<T>)&&...) && (isString<T> || ...);
/// A string of another type than S_String.
template <typename T>
concept TW_ForeignString = isString<T> && !std::is_same_v<T, S_String>;
/// The same, a C string or a view.
template <typename T>
concept TW_ForeignText = TW_ForeignString<T> || isCString<T> || std::is_same_v<T, std::string_view>;

/// The text without a copy, as long as `text` is.
[[nodiscard]] inline const char* asCString(const char* text) noexcept
{
    return text;
}
/// The same of a string.
template <typename Allocator>
[[nodiscard]] const char* asCString(const std::basic_string<char, std::char_traits<char>, Allocator>& text) noexcept
{
    return text.c_str();
}
/// The same with its length; null is empty.
template <typename Text>
[[nodiscard]] std::string_view asView(const Text& text) noexcept
{
    if constexpr (isCString<Text>)
    {
        const char* const characters = text;
        return characters ? std::string_view(characters) : std::string_view();
    }
    else
    {
        return text;
    }
}
/// A copy.
template <typename Text>
[[nodiscard]] S_String asString(const Text& text)
{
    return S_String(asView(text));
}
}  // namespace TW2
