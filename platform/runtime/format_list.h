#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstdio>

/// Ends a started list of arguments at the end of the scope, also when an exception passes.
class S_ListEnd
{
public:
    /// `arguments`: started by `va_start` or `va_copy`; outlives this.
    explicit S_ListEnd(std::va_list& arguments) noexcept : m_arguments(arguments) {}
    ~S_ListEnd() { va_end(m_arguments); }
    S_ListEnd(const S_ListEnd&) = delete;
    S_ListEnd& operator=(const S_ListEnd&) = delete;

private:
    std::va_list& m_arguments;
};

/// The text that `printf` would print, as a string of any kind.
template <typename Text>
Text S_formatList(const char* format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    const S_ListEnd end(again);
    Text text;
    text.resize(static_cast<std::size_t>(std::max(std::vsnprintf(nullptr, 0, format, arguments), 0)));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    return text;
}
