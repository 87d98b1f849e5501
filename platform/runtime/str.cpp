#include <platform/runtime/format_list.h>
#include <platform/runtime/str.h>

S_STR::S_STR(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const S_ListEnd end(arguments);
    m_strText = S_formatList<S_String>(format, arguments);
}
