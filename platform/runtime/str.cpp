#include <platform/runtime/str.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>

S_STR::S_STR(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    try
    {
        m_strText.resize(static_cast<std::size_t>(std::max(length, 0)));
    }
    catch (...)
    {
        va_end(again);
        throw;
    }
    std::vsnprintf(m_strText.data(), m_strText.size() + 1, format, again);
    va_end(again);
}
